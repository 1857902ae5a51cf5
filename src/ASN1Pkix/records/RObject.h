// The base of every record: the typed form of one ASN.1 type of the PKIX and CMS standards.
#pragma once

#include "ASN1/ASN1Object.h"
#include "base/Trail.h"

namespace vrno {

// A record holds its components as members in the order of the type and knows its own tags, counts and messages. It is
// decoded by fromASN1Object(ByteString&), which gives 0 or the code of the failing step, and encoded by toASN1Object(),
// which gives `m_bsOutput`, or with `m_nLastError` set an empty one. Every failure leaves a frame, and a record that
// failed to decode is half filled. An optional member has a bit in `m_ucBitMask`, set while it holds a value; a
// component of type ANY is the complete encoded element. Records are not copied: they move as encoded bytes.
class RObject : public Trailed {
public:
    void setImplicitTag(int tagNo, unsigned char tagClass);

    // The option tag of the record's outer element: noted from what was decoded, put on what is about to be encoded.
    void takeOptionTag(const ASN1Object& outer);
    void putOptionTag(ASN1Object& outer) const;

    ByteString m_bsOutput;
    int m_nOptionTagNo = 0;
    unsigned char m_ucTaggedType = notTagged;
    unsigned char m_ucOptionTagClass = 0; // the two top bits
};

} // namespace vrno
