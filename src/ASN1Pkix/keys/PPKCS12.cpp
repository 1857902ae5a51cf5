#include "ASN1Pkix/keys/PPKCS12.h"

#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNHash.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace vrno {

namespace {

constexpr std::size_t blockLength = 64, hashLength = 20; // v and u of the derivation

std::size_t filledUp(const ByteString& value)
{
    return (static_cast<std::size_t>(value.getLength()) + blockLength - 1) / blockLength * blockLength;
}

// Fills `length` octets with the value, over and over.
unsigned char* repeat(unsigned char* to, std::size_t length, Octets value)
{
    for (std::size_t i = 0; i < length; ++i) to[i] = value[i % value.size()];
    return to + length;
}

// Adds B + 1 to a block, modulo 2^512; B is the digest over and over.
void addToBlock(unsigned char* block, Octets digest)
{
    unsigned int carry = 1;
    for (std::size_t i = blockLength; i-- > 0;) {
        carry += block[i] + digest[i % hashLength];
        block[i] = static_cast<unsigned char>(carry & 0xFF);
        carry >>= 8;
    }
}

// D, S and P of the derivation behind each other, each of whole blocks; false when there is no memory.
bool joinInput(int id, const ByteString& salt, const ByteString& password, ByteString& input)
{
    const std::size_t total = blockLength + filledUp(salt) + filledUp(password);
    unsigned char* to = total < INT_MAX ? input.makeRoom(static_cast<int>(total)) : nullptr;
    if (!to) return false;
    std::memset(to, id, blockLength);
    to = repeat(to + blockLength, filledUp(salt), salt.octets());
    repeat(to, filledUp(password), password.octets());
    return true;
}

} // namespace

int PPKCS12::asc2uniWithByteString(ByteString& text, ByteString& out)
{
    const int length = text.getLength();
    unsigned char* const uni = length < INT_MAX / 2 - 2 ? out.makeRoom(2 * length + 2) : nullptr;
    if (!uni) return failMemory(*this, 1, "ucUni", "new failed.");
    std::memset(uni, 0, static_cast<std::size_t>(2 * length + 2));
    for (int i = 0; i < length; ++i) uni[2 * i + 1] = text.getBytes()[i];
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
                addToBlock(input.mutableBytes() + at, digest.octets());
            }
        }
        if (hash.DigestData(vnSha1, input, digest, iterations) > 0) return fail(*this, 1, "hash", hash);
        std::memcpy(result + done, digest.getBytes(), std::min(hashLength, wanted - done));
    }
    return 0;
}

} // namespace vrno
