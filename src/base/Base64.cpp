#include "base/Base64.h"

#include "base/Base64Kernels.h"
#include "base/wipe.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace vrno {

namespace {

using namespace base64;

int failMemory(ByteString& out)
{
    out.setOutOfMemory();
    return 1;
}

// All whole groups, up to the first that a decoder does not take. The count of bytes that were converted.
template <std::size_t kernels>
std::size_t convertGroups(const Kernel<Function> (&table)[kernels], Function portable, unsigned char* out, Octets in,
                          std::size_t inGroup, std::size_t outGroup)
{
    const std::size_t fast = pick(table)(out, in.data(), in.size());
    return fast + portable(out + fast / inGroup * outGroup, in.data() + fast, in.size() - fast);
}

// The last group, which is not whole: missing octets count as zero.
void encodeLast(unsigned char* out, Octets octets)
{
    SecretArea<octetsOfGroup> group;
    std::copy(octets.begin(), octets.end(), group.bytes);
    encodePortable(out, group.bytes, octetsOfGroup);
    std::fill(out + octets.size() + 1, out + charactersOfGroup, static_cast<unsigned char>('='));
}

// The same back. False for a character outside the alphabet.
bool decodeLast(unsigned char* out, Octets text)
{
    SecretArea<charactersOfGroup> group;
    SecretArea<octetsOfGroup> octets;
    std::fill_n(group.bytes, charactersOfGroup, static_cast<unsigned char>(alphabet[0]));
    std::copy(text.begin(), text.end(), group.bytes);
    if (decodePortable(octets.bytes, group.bytes, charactersOfGroup) == 0) return false;
    std::copy_n(octets.bytes, text.size() - 1, out);
    return true;
}

} // namespace

int base64Encode(Octets in, ByteString& out)
{
    if (in.empty()) {
        out.clear();
        return 0;
    }
    const std::uint64_t length = (std::uint64_t{in.size()} + 2) / 3 * 4;
    if (length >= INT_MAX) return 1;
    ByteString text;
    unsigned char* const to = text.makeRoom(static_cast<int>(length));
    if (!to) return failMemory(out);
    const std::size_t done = convertGroups(encodeKernels, encodePortable, to, in, octetsOfGroup, charactersOfGroup);
    if (done < in.size()) encodeLast(to + done / octetsOfGroup * charactersOfGroup, in.subspan(done));
    out.swap(text);
    return 0;
}

int base64Decode(Octets in, ByteString& out)
{
    Octets text = in;
    if (text.size() % 4 != 0) return 1;
    for (int padding = 0; padding < 2 && !text.empty() && text.back() == '='; ++padding) text = text.first(text.size() - 1);
    if (text.empty()) {
        out.clear();
        return 0;
    }
    ByteString octets;
    unsigned char* const to = octets.makeRoom(static_cast<int>(text.size() * 3 / 4));
    if (!to) return failMemory(out);
    const std::size_t done = convertGroups(decodeKernels, decodePortable, to, text, charactersOfGroup, octetsOfGroup);
    const Octets last = text.subspan(done);
    if (last.size() >= charactersOfGroup) return 1;
    if (!last.empty() && !decodeLast(to + done / charactersOfGroup * octetsOfGroup, last)) return 1;
    out.swap(octets);
    return 0;
}

} // namespace vrno
