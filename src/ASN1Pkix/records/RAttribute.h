// Attribute (RFC 5652, 5.3), a type with a set of values, in CMS messages and PKCS #8 private keys.
#pragma once

#include "ASN1/ASN1ObjectIdentifier.h"
#include "ASN1Pkix/records/Lists.h"

namespace vrno {

class RAttribute : public RObject {
public:
    static constexpr const char* className = "RAttribute";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();

    // Takes an identifier as ASN1ObjectIdentifier::setOID does; 1 on failure.
    int setAttrType(const char* oid);
    // Appends one encoded value; 1 on allocation failure.
    int addAttrValue(ByteString& encoded);
    // The text form with blanks.
    ByteString& getAttrType();

    template <class V> void walk(V& v);

    ASN1ObjectIdentifier m_attrType;
    ASN1Set m_attrValues;
};

// SET OF Attribute.
class RAttributes : public RSetOf<RAttributes> {
public:
    static constexpr const char* className = "RAttributes";
};

} // namespace vrno
