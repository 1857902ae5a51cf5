// CHOICE: records that hold the chosen alternative as an encoded element.
#pragma once

#include "ASN1Pkix/records/Walk.h"

namespace vrno {

// Decoding finds the alternative and keeps the data unchanged, so that it is written back octet for octet.
class RChoice : public RObject {
public:
    unsigned char getBitMask() const { return m_ucBitMask; }
    ByteString& getEncoded() { return m_bsEncoded; }

    unsigned char m_ucBitMask = 0; // the chosen alternative; 0: none
    ByteString m_bsEncoded;        // the complete element
};

// Keeps an element as the alternative `choice`. 1 on allocation failure, with no alternative chosen.
template <class Record> int keep(Record& record, unsigned char choice, const ByteString& encoded, Here at = Here::now())
{
    record.m_bsEncoded = encoded;
    const bool isKept = !record.m_bsEncoded.isOutOfMemory();
    record.m_ucBitMask = isKept ? choice : 0;
    return isKept ? 0 : failMemory(record, 1, "m_bsEncoded", memoryFailure, at);
}

// Keeps `data` if `Alternative` decodes it; if not, fails with `code`.
template <class Alternative, class Record>
int keepAs(Record& record, unsigned char choice, ByteString& data, const char* name, int code, Here at = Here::now())
{
    Alternative alternative;
    if (alternative.fromASN1Object(data) > 0) return fail(record, code, name, alternative, at);
    return keep(record, choice, data, at);
}

// The same for an alternative that is [n] IMPLICIT SEQUENCE with two components or more. The codec alone would read its tag as an
// explicit tag. An explicit tag around a complete SEQUENCE is accepted too.
template <class Alternative, class Record>
int keepAsTagged(Record& record, unsigned char choice, ByteString& data, const char* name, int code, Here at = Here::now())
{
    ByteString sequence = data;
    if (sequence.isOutOfMemory()) return failMemory(record, code, name, memoryFailure, at);
    sequence.setAt(0, ASN1_TAG_SEQUENCE | constructedBit);
    ASN1Sequence asnSeq;
    const bool wrapper = asnSeq.fromASN1Object(sequence) == 0 && asnSeq.getComponentCount() == 1 &&
                         asnSeq.getComponentUniversalTag(0) == ASN1_TAG_SEQUENCE;
    Alternative alternative;
    if (alternative.fromASN1Object(wrapper ? data : sequence) > 0) return fail(record, code, name, alternative, at);
    return keep(record, choice, data, at);
}

// The toASN1Object() of a CHOICE: returns the element; `m_nLastError` 1 if none is chosen.
template <class Record> ByteString& encodeChoice(Record& record, Here at = Here::now())
{
    if (record.m_ucBitMask == 0) return failOutput(record, 1, "m_ucBitMask", "Any component is not chosen.", at);
    record.m_nLastError = 0;
    return record.m_bsEncoded;
}

} // namespace vrno
