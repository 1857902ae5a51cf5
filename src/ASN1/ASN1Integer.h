// INTEGER: two's complement octets, big-endian (X.690, 8.3). Setters return 0, or 2 on allocation failure.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1Integer : public ASN1Typed<ASN1Integer> {
public:
    static constexpr const char* className = "ASN1Integer";
    static constexpr ASN1Type type{className, ASN1_TAG_INTEGER, "TagType(%d)is not ASN1_TAG_INTEGER"};

    // Sets the minimal form, 1 to 4 octets.
    int setIntValue(int value);
    // The value of up to 4 octets; 0 if there are none or more than 4.
    int getIntValue() const;

    // Sign 0: `data` is a magnitude, and a zero octet is put in front if the top bit is set. Sign -1: `data` is a negative number,
    // and 0xFF is put in front if the top bit is clear. Any other sign: the octets unchanged. Leading zeros stay.
    int setBytes(const unsigned char* data, int length, int sign);
    int setBytes(ByteString& data, int sign);
    // The octets; without `keepSign`, a first octet 0x00 or 0xFF is left out if others follow. -1 for a negative number, else 0.
    int getBytes(ByteString& out, bool keepSign) const;
};

} // namespace vrno
