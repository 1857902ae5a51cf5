// NULL (X.690, 8.8). Decoding does not test the contents. They stay in the value.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

class ASN1Null : public ASN1Typed<ASN1Null> {
public:
    static constexpr const char* className = "ASN1Null";
    static constexpr ASN1Type type{className, ASN1_TAG_NULLTAG, "TagType(%d)is not ASN1_TAG_NULLTAG"};
};

} // namespace vrno
