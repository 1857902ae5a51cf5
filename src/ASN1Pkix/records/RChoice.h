// CHOICE: records that keep the chosen alternative as the element that it is.
#pragma once

#include "ASN1Pkix/records/Walk.h"

namespace vrno {

// Decoding tests the alternative and keeps the data as it came, so that it is written back octet for octet.
class RChoice : public RObject {
public:
    unsigned char getBitMask() const { return m_ucBitMask; }
    ByteString& getEncoded() { return m_bsEncoded; }

    unsigned char m_ucBitMask = 0; // which alternative; 0: none
    ByteString m_bsEncoded;        // the complete element
};

// Keeps an element as the alternative `choice`; on allocation failure there is none, and the code is 1.
template <class Record> int keep(Record& record, unsigned char choice, const ByteString& encoded, Here at = Here::now())
{
    record.m_bsEncoded = encoded;
    const bool isKept = !record.m_bsEncoded.isOutOfMemory();
    record.m_ucBitMask = isKept ? choice : 0;
    return isKept ? 0 : failMemory(record, 1, "m_bsEncoded", memoryFailure, at);
}

// Keeps `data` when `Alternative` decodes it, else fails with `code`.
template <class Alternative, class Record>
int keepAs(Record& record, unsigned char choice, ByteString& data, const char* name, int code, Here at = Here::now())
{
    Alternative alternative;
    if (alternative.fromASN1Object(data) > 0) return fail(record, code, name, alternative, at);
    return keep(record, choice, data, at);
}

// The same for an alternative that is [n] IMPLICIT SEQUENCE of two components or more, which the codec by itself takes for
// a wrapper. A wrapper around a whole SEQUENCE passes too.
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

// What toASN1Object of a CHOICE gives: the element, or with code 1 nothing where none is chosen.
template <class Record> ByteString& encodeChoice(Record& record, Here at = Here::now())
{
    if (record.m_ucBitMask == 0) return failOutput(record, 1, "m_ucBitMask", "Any component is not chosen.", at);
    record.m_nLastError = 0;
    return record.m_bsEncoded;
}

} // namespace vrno
