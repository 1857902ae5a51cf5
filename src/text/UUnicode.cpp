#include "text/UUnicode.h"

#include "base/ByteBuilder.h"
#include "text/KscTable.h"

#include <utility>

namespace vrno {

int UUnicode::Unicode2KSC(ByteString& ucs2, ByteString& ksc)
{
    const Octets units = ucs2.octets();
    if (units.empty()) {
        ksc.clear();
        return 0;
    }
    ByteBuilder text;
    for (std::size_t at = 0; at + 1 < units.size(); at += 2) {
        const int unit = units[at] | units[at + 1] << 8;
        if (unit < 0x80) {
            text.add(static_cast<unsigned char>(unit));
        } else if (ksc::isSyllable(unit)) {
            const std::uint16_t code = ksc::code(unit);
            text.add(static_cast<unsigned char>(code >> 8));
            text.add(static_cast<unsigned char>(code & 0xFF));
        } else {
            text.add('?');
        }
    }
    return text.into(ksc) == 0 ? 0 : 3;
}

int UUnicode::SwapByteOrder(unsigned char* data, int length)
{
    if (length % 2 != 0) return 1;
    for (int at = 0; at + 1 < length; at += 2) std::swap(data[at], data[at + 1]);
    return 0;
}

} // namespace vrno
