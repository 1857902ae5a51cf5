// INTEGER: two's complement octets, big-endian (X.690, 8.3).
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1Integer : public ASN1Typed<ASN1Integer> {
public:
    static constexpr const char* className = "ASN1Integer";
    static constexpr ASN1Type type{className, ASN1_TAG_INTEGER, "TagType(%d)is not ASN1_TAG_INTEGER"};

    // The minimal form, 1 to 5 octets.
    int setIntValue(int value);
    // The value of up to 4 octets; 0 for none and for more.
    int getIntValue() const;

    // A magnitude (sign 0: a zero octet goes in front where the top bit is set), a negative number (sign -1: 0xFF goes
    // in front where it is clear), or with any other sign the octets as they are. Leading zeros stay.
    int setBytes(const unsigned char* data, int length, int sign);
    int setBytes(ByteString& data, int sign);
    // The octets, without keepSign less a first one of 0x00 or 0xFF that others follow. -1 for a negative number, else 0.
    int getBytes(ByteString& out, bool keepSign) const;
};

} // namespace vrno
