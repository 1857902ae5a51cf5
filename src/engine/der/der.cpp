#include "engine/der/der.h"

#include "base/wipe.h"

#include <cstdint>
#include <cstring>

namespace vrno {

namespace {

constexpr unsigned int tagInteger = 2, tagBitString = 3, tagSequence = 16;

bool refuse(DerReader& reader)
{
    reader.failed = true;
    return false;
}

// One octet of a header.
bool next(DerReader& reader, unsigned char& octet)
{
    if (reader.failed || reader.at == reader.end) return refuse(reader);
    octet = *reader.at++;
    return true;
}

// A tag number above 30: base 128, up to 28 bits of it.
bool readHighTag(DerReader& reader, unsigned int& tag)
{
    tag = 0;
    for (unsigned char octet = 0x80; octet & 0x80;) {
        if (!next(reader, octet) || tag >> 21 != 0) return refuse(reader);
        tag = tag << 7 | (octet & 0x7F);
    }
    return true;
}

bool derReadLength(DerReader& reader, DerHeader& header)
{
    unsigned char first = 0;
    if (!next(reader, first)) return false;
    header.indefinite = first == 0x80;
    header.length = first < 0x80 ? first : 0;
    for (int count = first > 0x80 ? first - 0x80 : 0; count > 0; --count) {
        unsigned char octet = 0;
        if (!next(reader, octet) || header.length > 0xFFFFFF) return refuse(reader);
        header.length = header.length << 8 | octet;
    }
    return header.length <= reader.left() ? true : refuse(reader);
}

// The contents of a primitive element with this universal tag; the reader moves behind them.
bool readPrimitive(DerReader& reader, unsigned int tag, const unsigned char*& contents, std::size_t& length)
{
    DerHeader header;
    if (!derReadHeader(reader, header)) return false;
    if (header.tag != tag || header.tagClass != 0 || header.indefinite || header.length == 0) return refuse(reader);
    contents = reader.at;
    length = header.length;
    reader.at += header.length;
    return true;
}

} // namespace

bool derReadHeader(DerReader& reader, DerHeader& header)
{
    unsigned char octet = 0;
    if (!next(reader, octet)) return false;
    header.tag = octet & 0x1F;
    header.tagClass = octet & 0xC0;
    header.constructed = (octet & 0x20) != 0;
    if (header.tag == 0x1F && !readHighTag(reader, header.tag)) return false;
    return derReadLength(reader, header);
}

DerSequence derReadSequence(DerReader& reader)
{
    const DerSequence outer{reader.end, false};
    DerHeader header;
    if (!derReadHeader(reader, header)) return outer;
    if (header.tag != tagSequence || header.tagClass != 0) refuse(reader);
    if (!header.indefinite) reader.end = reader.at + header.length;
    return {outer.outerEnd, header.indefinite};
}

bool derHasMore(const DerReader& reader, const DerSequence& sequence)
{
    if (reader.failed || reader.at == reader.end) return false;
    return !sequence.indefinite || reader.left() < 2 || reader.at[0] != 0 || reader.at[1] != 0;
}

void derFinish(DerReader& reader, const DerSequence& sequence)
{
    if (reader.failed) return;
    if (sequence.indefinite) {
        if (reader.left() < 2 || reader.at[0] != 0 || reader.at[1] != 0) {
            refuse(reader);
            return;
        }
        reader.at += 2;
    } else if (reader.at != reader.end) {
        refuse(reader);
    }
    reader.end = sequence.outerEnd;
}

void derReadInteger(DerReader& reader, ZIRC_BN& number)
{
    const unsigned char* octets = nullptr;
    std::size_t length = 0;
    if (!readPrimitive(reader, tagInteger, octets, length)) return;
    const bool negative = (octets[0] & 0x80) != 0;
    while (!negative && length > 1 && octets[0] == 0) {
        ++octets;
        --length;
    }
    if (length > derLongestNumber) {
        refuse(reader);
        return;
    }
    if (!negative) {
        bnFromBytes(number, octets, static_cast<int>(length));
        return;
    }
    SecretArea<derLongestNumber> area;
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
    if (!readPrimitive(reader, tagBitString, contents, length)) return;
    const unsigned char unused = contents[0];
    if (unused > 7 || length - 1 > derLongestNumber || (length == 1 && unused > 0)) {
        refuse(reader);
        return;
    }
    unsigned char bits[derLongestNumber] = {};
    octets = static_cast<int>(length - 1);
    if (octets > 0) {
        std::memcpy(bits, contents + 1, length - 1);
        bits[octets - 1] = static_cast<unsigned char>(bits[octets - 1] & 0xFF << unused);
    }
    bnFromBytes(number, bits, octets);
}

// ---- writing ----

static int lengthOctets(int length)
{
    int octets = 1;
    if (length >= 0x80) {
        for (int rest = length; rest > 0; rest >>= 8) ++octets;
    }
    return octets;
}

int derObjectSize(int contentLength, unsigned char tag)
{
    const int length = contentLength + (tag == tagBitString ? 1 : 0);
    return 1 + lengthOctets(length) + length;
}

static void put(DerWriter& writer, unsigned char octet)
{
    if (writer.length >= writer.room) writer.failed = true;
    if (!writer.failed) writer.out[writer.length++] = octet;
}

void derWriteHeader(DerWriter& writer, unsigned char tag, int contentLength)
{
    put(writer, tag);
    const int octets = lengthOctets(contentLength) - 1;
    put(writer, static_cast<unsigned char>(octets > 0 ? 0x80 + octets : contentLength));
    for (int i = octets; i-- > 0;) put(writer, static_cast<unsigned char>(contentLength >> 8 * i & 0xFF));
}

int derIntegerLength(const ZIRC_BN& number)
{
    return bnBits(number) / 8 + 1; // with the sign's bit, and one octet for zero
}

void derWriteInteger(DerWriter& writer, const ZIRC_BN& number)
{
    const int length = derIntegerLength(number);
    SecretArea<derLongestNumber + 1> area;
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
    // A negative number's own top bit may be sign enough.
    const bool shorter = length > 1 && octets[0] == 0xFF && (octets[1] & 0x80) != 0;
    derWriteHeader(writer, tagInteger, shorter ? length - 1 : length);
    for (int i = shorter ? 1 : 0; i < length; ++i) put(writer, octets[i]);
}

void derWriteBitString(DerWriter& writer, const unsigned char* octets, int count)
{
    derWriteHeader(writer, tagBitString, count + 1);
    put(writer, 0); // unused bits
    for (int i = 0; i < count; ++i) put(writer, octets[i]);
}

} // namespace vrno
