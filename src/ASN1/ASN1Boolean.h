// BOOLEAN: one octet, 0xFF or 0 (X.690, 8.2 and 11.1).
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1Boolean : public ASN1Typed<ASN1Boolean> {
public:
    static constexpr const char* className = "ASN1Boolean";
    static constexpr ASN1Type type{className, ASN1_TAG_BOOLEAN, "TagType(%d) is not ASN1_TAG_BOOLEAN"};

    // Sets 0xFF for any value except 0, else 0. Returns 0, or 2 on allocation failure.
    int setBoolValue(int value);
    // True only if the first octet is 0xFF.
    bool getBoolValue() const;
};

} // namespace vrno
