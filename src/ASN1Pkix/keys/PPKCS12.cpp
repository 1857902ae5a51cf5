#include "ASN1Pkix/keys/PPKCS12.h"

#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNHash.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace vrno {

namespace {

constexpr std::size_t blockLength = 64, hashLength = 20; // v and u of the derivation

// The length that a value has after it is repeated to whole blocks.
std::size_t wholeBlocks(const ByteString& value)
{
    return (static_cast<std::size_t>(value.getLength()) + blockLength - 1) / blockLength * blockLength;
}

// Writes the value, repeated to `length` bytes, and returns the end.
unsigned char* repeat(unsigned char* to, std::size_t length, Octets value)
{
    for (std::size_t i = 0; i < length; ++i) to[i] = value[i % value.size()];
    return to + length;
}

// Adds B + 1 to a block, modulo 2^512; B is the digest, repeated.
void addDigestPlusOne(unsigned char* block, Octets digest)
{
    unsigned int carry = 1;
    for (std::size_t i = blockLength; i-- > 0;) {
        const unsigned int sum = block[i] + digest[i % hashLength] + carry;
        block[i] = static_cast<unsigned char>(sum & 0xFF);
        carry = sum >> 8;
    }
}

// D, S and P of the derivation behind each other, each in whole blocks; false on allocation failure.
bool joinInput(int id, const ByteString& salt, const ByteString& password, ByteString& input)
{
    const std::size_t total = blockLength + wholeBlocks(salt) + wholeBlocks(password);
    unsigned char* to = total < INT_MAX ? input.makeRoom(static_cast<int>(total)) : nullptr;
    if (!to) return false;
    std::memset(to, id, blockLength);
    to = repeat(to + blockLength, wholeBlocks(salt), salt.octets());
    repeat(to, wholeBlocks(password), password.octets());
    return true;
}

} // namespace

int PPKCS12::asc2uniWithByteString(ByteString& text, ByteString& out)
{
    const Octets octets = text.octets();
    const std::size_t length = 2 * octets.size() + 2;
    unsigned char* uni = length < INT_MAX ? out.makeRoom(static_cast<int>(length)) : nullptr;
    if (!uni) return failMemory(*this, 1, "ucUni", "new failed.");
    std::memset(uni, 0, length);
    for (std::size_t i = 0; i < octets.size(); ++i) uni[2 * i + 1] = octets[i];
    return 0;
}

int PPKCS12::keyGenAsc(ByteString& password, ByteString& salt, int id, int iterations, int length, ByteString& out)
{
    ByteString wide, input, digest;
    if (password.getLength() > 0 && asc2uniWithByteString(password, wide) > 0) return fail(*this, 1, "this", *this);
    unsigned char* const result = joinInput(id, salt, wide, input) ? out.makeRoom(length) : nullptr;
    if (!result) return failMemory(*this, 1, "input");
    VNHash hash;
    const auto wanted = static_cast<std::size_t>(length), end = static_cast<std::size_t>(input.getLength());
    for (std::size_t done = 0; done < wanted; done += hashLength) {
        if (done > 0) {
            for (std::size_t at = blockLength; at < end; at += blockLength) {
                addDigestPlusOne(input.mutableBytes() + at, digest.octets());
            }
        }
        if (hash.DigestData(vnSha1, input, digest, iterations) > 0) return fail(*this, 1, "hash", hash);
        std::memcpy(result + done, digest.getBytes(), std::min(hashLength, wanted - done));
    }
    return 0;
}

} // namespace vrno
