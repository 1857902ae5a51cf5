#include "text/UUTF8String.h"

#include "base/ByteBuilder.h"
#include "text/KscTable.h"
#include "text/UUnicode.h"

namespace vrno {

// The code point of the syllable at the start of the octets, or 0.
static int syllableAt(Octets utf8)
{
    const auto continues = [](unsigned char octet) { return (octet & 0xC0) == 0x80; };
    if (utf8.size() < 3 || (utf8[0] & 0xF0) != 0xE0 || !continues(utf8[1]) || !continues(utf8[2])) return 0;
    const int point = (utf8[0] & 0x0F) << 12 | (utf8[1] & 0x3F) << 6 | (utf8[2] & 0x3F);
    return ksc::isSyllable(point) ? point : 0;
}

int UUTF8String::UTF8ToUnicode(ByteString& utf8, ByteString& ucs2)
{
    ByteBuilder units;
    for (Octets rest = utf8.octets(); !rest.empty();) {
        const int syllable = syllableAt(rest);
        const int unit = syllable ? syllable : rest[0] < 0x80 ? rest[0] : '?';
        units.add(static_cast<unsigned char>(unit & 0xFF));
        units.add(static_cast<unsigned char>(unit >> 8));
        rest = rest.subspan(syllable ? 3 : 1);
    }
    if (units.empty() && !units.failed()) {
        ucs2.clear();
        return 0;
    }
    return units.into(ucs2);
}

int UUTF8String::UTF8ToKSC(ByteString& utf8, ByteString& ksc)
{
    ByteString ucs2;
    if (UTF8ToUnicode(utf8, ucs2) > 0) return 1;
    return UUnicode::Unicode2KSC(ucs2, ksc) > 0 ? 2 : 0;
}

} // namespace vrno
