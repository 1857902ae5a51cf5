// As much of DER (X.690) as the engine's keys and signatures need. Reading also accepts the indefinite form and lengths that
// are not minimal. No read passes the end of the bytes. A reader or writer that has failed stays failed, so callers test
// `failed` once, at the end; after a failure, results of reading have no meaning.
#pragma once

#include "engine/bignum/bignum.h"

#include <cstddef>

namespace vrno {

inline constexpr int derMaxNumber = 600; // bytes of a magnitude that a ZIRC_BN holds

struct DerReader {
    const unsigned char* at;
    const unsigned char* end; // of the innermost SEQUENCE of definite length, or of all bytes
    bool failed = false;

    DerReader(const unsigned char* data, int length) : at(data), end(data + length) {}
    std::size_t remaining() const { return static_cast<std::size_t>(end - at); }
};

// A SEQUENCE between derReadSequence and derFinish.
struct DerSequence {
    const unsigned char* outerEnd;
    bool indefinite;
};

struct DerHeader {
    unsigned int tag;       // its number
    unsigned char tagClass; // two top bits of the tag octet
    bool constructed;
    bool indefinite;
    std::size_t length; // of the contents, at most what remains; 0 in the indefinite form
};

bool derReadHeader(DerReader& reader, DerHeader& header); // whether there is one
// Enters a SEQUENCE.
DerSequence derReadSequence(DerReader& reader);
// Leaves it. Fails unless it has been read exactly to its end or its end-of-contents octets.
void derFinish(DerReader& reader, const DerSequence& sequence);
// Whether the SEQUENCE that was entered last holds more.
bool derHasMore(const DerReader& reader, const DerSequence& sequence);
// The magnitude of an INTEGER, also of a negative one.
void derReadInteger(DerReader& reader, ZIRC_BN& number);
// The bits of a BIT STRING as a number, with the unused bits cleared; `octets` is the count of its octets.
void derReadBitString(DerReader& reader, ZIRC_BN& number, int& octets);

// ---- writing: minimal definite lengths ----

// Appends to a block of the caller. Output that does not fit is a failure; nothing is written behind the block.
struct DerWriter {
    unsigned char* out;
    int room;
    int length = 0;
    bool failed = false;
};

// The bytes of an object with so much content; one more for a BIT STRING's octet of unused bits.
int derObjectSize(int contentLength, unsigned char tag);
void derWriteHeader(DerWriter& writer, unsigned char tag, int contentLength);
void derWriteInteger(DerWriter& writer, const ZIRC_BN& number); // negative numbers in two's complement
void derWriteBitString(DerWriter& writer, const unsigned char* octets, int count);
int derIntegerLength(const ZIRC_BN& number); // content bytes

// SEQUENCE { INTEGER ... } of the given numbers.
template <class... Number> void derWriteNumbers(DerWriter& writer, const Number&... numbers)
{
    derWriteHeader(writer, 0x30, (derObjectSize(derIntegerLength(numbers), 2) + ...));
    (derWriteInteger(writer, numbers), ...);
}

} // namespace vrno
