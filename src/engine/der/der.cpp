#include "engine/der/der.h"

#include "base/wipe.h"

#include <cstdint>
#include <cstring>

namespace vrno {

namespace {

constexpr unsigned int tagInteger = 2, tagBitString = 3, tagSequence = 16;

bool derRefuse(DerReader& reader)
{
    reader.failed = true;
    return false;
}

// The next octet. Whether there is one.
bool derNext(DerReader& reader, unsigned char& octet)
{
    if (reader.failed || reader.at == reader.end) return derRefuse(reader);
    octet = *reader.at++;
    return true;
}

// A tag number above 30: base 128, at most 28 bits.
bool derReadHighTag(DerReader& reader, unsigned int& tag)
{
    tag = 0;
    for (unsigned char octet = 0x80; octet & 0x80;) {
        if (!derNext(reader, octet) || tag >> 21 != 0) return derRefuse(reader);
        tag = tag << 7 | (octet & 0x7F);
    }
    return true;
}

bool derReadLength(DerReader& reader, DerHeader& header)
{
    unsigned char first = 0;
    if (!derNext(reader, first)) return false;
    header.indefinite = first == 0x80;
    header.length = first < 0x80 ? first : 0;
    for (int count = first > 0x80 ? first - 0x80 : 0; count > 0; --count) {
        unsigned char octet = 0;
        if (!derNext(reader, octet) || header.length > 0xFFFFFF) return derRefuse(reader);
        header.length = header.length << 8 | octet;
    }
    return header.length <= reader.remaining() || derRefuse(reader);
}

// The contents of a primitive element with this universal tag. Whether there is one.
bool derReadPrimitive(DerReader& reader, unsigned int tag, const unsigned char*& contents, std::size_t& length)
{
    DerHeader header;
    if (!derReadHeader(reader, header)) return false;
    if (header.tag != tag || header.tagClass != 0 || header.indefinite || header.length == 0) return derRefuse(reader);
    contents = reader.at;
    length = header.length;
    reader.at += header.length;
    return true;
}

} // namespace

bool derReadHeader(DerReader& reader, DerHeader& header)
{
    unsigned char octet = 0;
    if (!derNext(reader, octet)) return false;
    header.tag = octet & 0x1F;
    header.tagClass = octet & 0xC0;
    header.constructed = (octet & 0x20) != 0;
    if (header.tag == 0x1F && !derReadHighTag(reader, header.tag)) return false;
    return derReadLength(reader, header);
}

DerSequence derReadSequence(DerReader& reader)
{
    const DerSequence outer{reader.end, false};
    DerHeader header;
    if (!derReadHeader(reader, header)) return outer;
    if (header.tag != tagSequence || header.tagClass != 0) derRefuse(reader);
    if (!header.indefinite) reader.end = reader.at + header.length;
    return {outer.outerEnd, header.indefinite};
}

bool derHasMore(const DerReader& reader, const DerSequence& sequence)
{
    if (reader.failed || reader.at == reader.end) return false;
    return !sequence.indefinite || reader.remaining() < 2 || reader.at[0] != 0 || reader.at[1] != 0;
}

void derFinish(DerReader& reader, const DerSequence& sequence)
{
    if (reader.failed) return;
    if (sequence.indefinite) {
        if (reader.remaining() < 2 || reader.at[0] != 0 || reader.at[1] != 0) {
            derRefuse(reader);
            return;
        }
        reader.at += 2;
    } else if (reader.at != reader.end) {
        derRefuse(reader);
    }
    reader.end = sequence.outerEnd;
}

void derReadInteger(DerReader& reader, ZIRC_BN& number)
{
    const unsigned char* octets = nullptr;
    std::size_t length = 0;
    if (!derReadPrimitive(reader, tagInteger, octets, length)) return;
    const bool negative = (octets[0] & 0x80) != 0;
    while (!negative && length > 1 && octets[0] == 0) {
        ++octets;
        --length;
    }
    if (length > derMaxNumber) {
        derRefuse(reader);
        return;
    }
    if (!negative) {
        bnFromBytes(number, octets, static_cast<int>(length));
        return;
    }
    SecretArea<derMaxNumber> area;
    unsigned char* const magnitude = area.bytes;
    unsigned int carry = 1; // the two's complement of the octets
    for (std::size_t i = length; i-- > 0;) {
        carry += static_cast<unsigned char>(~octets[i]);
        magnitude[i] = static_cast<unsigned char>(carry & 0xFF);
        carry >>= 8;
    }
    bnFromBytes(number, magnitude, static_cast<int>(length));
}

void derReadBitString(DerReader& reader, ZIRC_BN& number, int& octets)
{
    const unsigned char* contents = nullptr;
    std::size_t length = 0;
    if (!derReadPrimitive(reader, tagBitString, contents, length)) return;
    const unsigned char unused = contents[0];
    if (unused > 7 || length - 1 > derMaxNumber || (length == 1 && unused > 0)) {
        derRefuse(reader);
        return;
    }
    unsigned char bits[derMaxNumber] = {};
    octets = static_cast<int>(length - 1);
    if (octets > 0) {
        std::memcpy(bits, contents + 1, length - 1);
        bits[octets - 1] = static_cast<unsigned char>(bits[octets - 1] & 0xFF << unused);
    }
    bnFromBytes(number, bits, octets);
}

// ---- writing ----

static int derLengthOctets(int length)
{
    int octets = 1;
    if (length >= 0x80) {
        for (; length > 0; length >>= 8) ++octets;
    }
    return octets;
}

int derObjectSize(int contentLength, unsigned char tag)
{
    const int length = contentLength + (tag == tagBitString ? 1 : 0);
    return 1 + derLengthOctets(length) + length;
}

static void derPut(DerWriter& writer, unsigned char octet)
{
    if (writer.length >= writer.room) writer.failed = true;
    if (!writer.failed) writer.out[writer.length++] = octet;
}

void derWriteHeader(DerWriter& writer, unsigned char tag, int contentLength)
{
    derPut(writer, tag);
    const int octets = derLengthOctets(contentLength) - 1;
    derPut(writer, static_cast<unsigned char>(octets > 0 ? 0x80 + octets : contentLength));
    for (int i = octets; i-- > 0;) derPut(writer, static_cast<unsigned char>(contentLength >> 8 * i & 0xFF));
}

int derIntegerLength(const ZIRC_BN& number)
{
    return bnBits(number) / 8 + 1; // with the sign's bit, and one octet for zero
}

void derWriteInteger(DerWriter& writer, const ZIRC_BN& number)
{
    const int length = derIntegerLength(number);
    SecretArea<derMaxNumber + 1> area;
    unsigned char* const octets = area.bytes;
    bnToBytesFixed(octets, number, length);
    if (number.neg != 0 && bnBits(number) > 0) {
        unsigned int carry = 1;
        for (int i = length; i-- > 0;) {
            carry += static_cast<unsigned char>(~octets[i]);
            octets[i] = static_cast<unsigned char>(carry & 0xFF);
            carry >>= 8;
        }
    }
    // A negative number needs no octet 0xFF in front of a set top bit.
    const bool shorter = length > 1 && octets[0] == 0xFF && (octets[1] & 0x80) != 0;
    derWriteHeader(writer, tagInteger, shorter ? length - 1 : length);
    for (int i = shorter ? 1 : 0; i < length; ++i) derPut(writer, octets[i]);
}

void derWriteBitString(DerWriter& writer, const unsigned char* octets, int count)
{
    derWriteHeader(writer, tagBitString, count + 1);
    derPut(writer, 0); // unused bits
    for (int i = 0; i < count; ++i) derPut(writer, octets[i]);
}

} // namespace vrno
