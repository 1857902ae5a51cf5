// SEQUENCE and SET: encoded components back to back, and a table of where each one lies.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

struct ComponentInfo {
    unsigned int nOffset; // of the first tag octet in the value
    unsigned int nLength; // with tag, length octets and, in the indefinite form, the two end octets
    int nTag;             // the number of an option tag, a universal number negated, or what addComponent was given
};

// A component is handed out by index as bytes and decoded by whoever asks for it. A component that claims more than the
// value holds is the last one, cut to what remains; its own decoding then fails.
class ASN1Sequence : public ASN1Object {
public:
    static constexpr const char* className = "ASN1Sequence";

    ASN1Sequence();
    ~ASN1Sequence() override;
    // Codes 1 and 2 of the tag, 3 when the components cannot be told apart: the object must not be read then.
    int fromASN1Object(ByteString& data) override;

    // How many components of what is decoded from now on are handed out; those behind them are counted. For readers that know
    // how many they look at, so that no table of the others is made.
    void keepOnly(int count) { m_nMaxKept = count; }

    int getComponentCount() const { return m_nComponentCount; }
    // The component's bytes with its header; empty with `m_nLastError` 1 for an index out of range.
    ByteString& getComponent(int index);
    // The last one, in the block of the value: one copy less. No component is handed out any more.
    ByteString& takeLastComponent();
    // ComponentInfo::nTag; -1 behind the last component. [APPLICATION 3] and [3] look alike.
    int getComponentTagNo(int index) const;
    // The universal tag number, -2 for a component with an option tag, -1 behind the last component.
    int getComponentUniversalTag(int index) const;
    // Appends in call order, in a SET too. 0, or 1 on allocation failure.
    int addComponent(ByteString& encoded, int tag);
    // The same with the tag -1. `encoded` is empty afterwards: the block of a large one becomes the value's.
    int takeComponent(ByteString& encoded);
    // As toASN1Object, but the result takes the components' block over, and the object has none then.
    ByteString& useUpAsASN1Object();
    void clearComponents();

    int m_nComponentCount = 0;
    int m_nComponentCapacity = 0;
    int m_nMaxKept = 0x7FFFFFFF;
    ComponentInfo* pComponentInfo = nullptr;

protected:
    explicit ASN1Sequence(unsigned char primitiveTag);
    int decodeComponents(ByteString& data, const ASN1Type& type, Here at = Here::now());

private:
    const ComponentInfo* entry(int index) const; // null for an index out of range
    int keep(const ComponentInfo& component);
    int makeEntry(int length, int tag, Here at);
    int ExtractComponentInfo();
    int ReallocCompontntInfo();
};

class ASN1Set : public ASN1Sequence {
public:
    static constexpr const char* className = "ASN1Set";

    ASN1Set();
    int fromASN1Object(ByteString& data) override;
};

} // namespace vrno
