// The little DER that keys and signatures of the engine need (X.690). Reading also takes the indefinite form and lengths
// that are not minimal. Every read is bounded by the bytes that there are; a reader that has failed stays failed, and
// what it gives from then on means nothing.
#pragma once

#include "engine/bignum/bignum.h"

#include <cstddef>

namespace vrno {

inline constexpr int derLongestNumber = 600; // bytes of a magnitude that a ZIRC_BN holds

struct DerReader {
    const unsigned char* at;
    const unsigned char* end; // of the innermost SEQUENCE, or of all bytes where that is of indefinite length
    bool failed = false;

    DerReader(const unsigned char* data, int length) : at(data), end(data + length) {}
    std::size_t left() const { return static_cast<std::size_t>(end - at); }
};

// A SEQUENCE that has been entered and is yet to be finished.
struct DerSequence {
    const unsigned char* outerEnd;
    bool indefinite;
};

struct DerHeader {
    unsigned int tag;       // number
    unsigned char tagClass; // two top bits of the tag octet
    bool constructed;
    bool indefinite;
    std::size_t length; // of the contents, at most what is left; 0 in the indefinite form
};

bool derReadHeader(DerReader& reader, DerHeader& header);
// Enters a SEQUENCE, or fails.
DerSequence derReadSequence(DerReader& reader);
// Leaves it. Fails unless it has been read to its end: exactly, or up to its end-of-contents octets.
void derFinish(DerReader& reader, const DerSequence& sequence);
// Whether the SEQUENCE that was entered last holds more.
bool derHasMore(const DerReader& reader, const DerSequence& sequence);
// The magnitude of an INTEGER; a negative one counts by its magnitude too.
void derReadInteger(DerReader& reader, ZIRC_BN& number);
// The bits of a BIT STRING as a number, the unused ones cleared. The count of its octets goes to `octets`.
void derReadBitString(DerReader& reader, ZIRC_BN& number, int& octets);

// ---- writing: minimal definite lengths ----

// Appends to a block of the caller's; what does not fit makes it fail for good, with nothing written behind the block.
struct DerWriter {
    unsigned char* out;
    int room;
    int length = 0;
    bool failed = false;
};

// Bytes of an object with that much content; one more for a BIT STRING's octet of unused bits.
int derObjectSize(int contentLength, unsigned char tag);
void derWriteHeader(DerWriter& writer, unsigned char tag, int contentLength);
void derWriteInteger(DerWriter& writer, const ZIRC_BN& number); // of its sign: two's complement where it is negative
void derWriteBitString(DerWriter& writer, const unsigned char* octets, int count);
int derIntegerLength(const ZIRC_BN& number); // content bytes

// SEQUENCE { INTEGER ... } of the given numbers.
template <class... Number> void derWriteNumbers(DerWriter& writer, const Number&... numbers)
{
    derWriteHeader(writer, 0x30, (derObjectSize(derIntegerLength(numbers), 2) + ...));
    (derWriteInteger(writer, numbers), ...);
}

} // namespace vrno
