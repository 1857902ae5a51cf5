// SEQUENCE and SET (X.690, 8.9 to 8.12): the encoded components one after the other, and a table of their positions.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

struct ComponentInfo {
    unsigned int nOffset; // of the first tag octet in the value
    unsigned int nLength; // with tag, length octets and, in the indefinite form, the two end octets
    int nTag;             // number of an option tag; universal number, negated; or the argument of addComponent()
};

// A component is returned by index as encoded bytes, which the caller decodes. If a component is longer than the rest of the
// value, it is the last one and ends with the value; decoding it fails.
class ASN1Sequence : public ASN1Object {
public:
    static constexpr const char* className = "ASN1Sequence";

    ASN1Sequence();
    ~ASN1Sequence() override;
    // 1 and 2 as decodeTyped(); 3 if the value cannot be divided into components. The object must not be read after a failure.
    int fromASN1Object(ByteString& data) override;

    // Limits how many components of the next decoded values can be read; the others are only counted. It is for readers that know
    // how many they need: no table of the others is made.
    void keepOnly(int count) { m_nMaxKept = count; }

    int getComponentCount() const { return m_nComponentCount; }
    // The encoded component; empty with `m_nLastError` 1 for an index out of range.
    ByteString& getComponent(int index);
    // The last one, moved within the value's own block instead of copied. No component can be read or added afterwards.
    ByteString& takeLastComponent();
    // ComponentInfo::nTag; -1 for an index out of range. [APPLICATION 3] and [3] give the same number.
    int getComponentTagNo(int index) const;
    // The universal tag number; -2 for a component with an option tag, -1 for an index out of range.
    int getComponentUniversalTag(int index) const;
    // Appends, in a SET too in the order of the calls. 0, or 1 on allocation failure or at the limit of keepOnly().
    int addComponent(ByteString& encoded, int tag);
    // The same with the tag -1. If `encoded` is the larger part, its block becomes the value's. On success `encoded` is empty.
    int takeComponent(ByteString& encoded);
    // As toASN1Object(), but the result takes over the block of the components. The object has no components then.
    ByteString& encodeInPlace();
    void clearComponents();

    static constexpr int capacityAtFirst = 20;

    int m_nComponentCount = 0;
    int m_nComponentCapacity = capacityAtFirst;
    int m_nMaxKept = 0x7FFFFFFF;
    ComponentInfo* pComponentInfo = m_firstComponents; // or a longer table from the heap

protected:
    explicit ASN1Sequence(unsigned char primitiveTag);
    int decodeComponents(ByteString& data, const ASN1Type& type, Here at = Here::now());

private:
    const ComponentInfo* entry(int index) const; // null for an index out of range
    int keep(const ComponentInfo& component);
    int makeEntry(int length, int tag, Here at);
    int ExtractComponentInfo();
    int ReallocCompontntInfo();
    void releaseTable();

    ComponentInfo m_firstComponents[capacityAtFirst];
};

class ASN1Set : public ASN1Sequence {
public:
    static constexpr const char* className = "ASN1Set";

    ASN1Set();
    int fromASN1Object(ByteString& data) override;
};

} // namespace vrno
