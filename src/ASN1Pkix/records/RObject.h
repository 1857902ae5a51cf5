// The base of all records. A record is the typed form of one ASN.1 type of the PKIX, PKCS and CMS standards.
#pragma once

#include "ASN1/ASN1Object.h"
#include "base/Trail.h"

namespace vrno {

// A record owns its components as members, in the order of the type. fromASN1Object(ByteString&) decodes it and returns 0 or the
// code of the failed step; after a failure the members have no meaning. toASN1Object() encodes it and returns `m_bsOutput`, which
// is empty with `m_nLastError` set on failure. Each failure adds a frame. An optional member has a bit in `m_ucBitMask`, set while
// it has a value. A member of type ANY is one encoded element. Records are not copied but passed as encoded bytes.
class RObject : public Trailed {
public:
    void setImplicitTag(int tagNo, unsigned char tagClass);

    // The option tag of the outer element: takeOptionTag() stores that of a decoded one, putOptionTag() sets it before encoding.
    void takeOptionTag(const ASN1Object& outer);
    void putOptionTag(ASN1Object& outer) const;

    ByteString m_bsOutput;
    int m_nOptionTagNo = 0;
    unsigned char m_ucTaggedType = notTagged;
    unsigned char m_ucOptionTagClass = 0; // the top two bits
};

} // namespace vrno
