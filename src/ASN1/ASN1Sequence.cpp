#include "ASN1/ASN1Sequence.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vrno {

static constexpr ASN1Type sequenceType{ASN1Sequence::className, ASN1_TAG_SEQUENCE, "TagType(%d)is not ASN1_TAG_SEQUENCE"};
static constexpr ASN1Type setType{ASN1Set::className, ASN1_TAG_SET, "TagType(%d)is not ASN1_TAG_SET"};

ASN1Sequence::ASN1Sequence(unsigned char primitiveTag) : ASN1Object(primitiveTag) {}

ASN1Sequence::ASN1Sequence() : ASN1Sequence(sequenceType.tag) {}

ASN1Set::ASN1Set() : ASN1Sequence(setType.tag) {}

ASN1Sequence::~ASN1Sequence() { releaseTable(); }

void ASN1Sequence::releaseTable()
{
    if (pComponentInfo != m_firstComponents) delete[] pComponentInfo;
}

int ASN1Sequence::fromASN1Object(ByteString& data) { return decodeComponents(data, sequenceType); }

int ASN1Set::fromASN1Object(ByteString& data) { return decodeComponents(data, setType); }

int ASN1Sequence::decodeComponents(ByteString& data, const ASN1Type& type, Here at)
{
    if (const int code = decodeTyped(data, type, at)) return code;
    if (ExtractComponentInfo() > 0) return failAs(*this, type.className, 3, "ExtractComponentInfo", *this, at);
    return 0;
}

int ASN1Sequence::ExtractComponentInfo()
{
    const Octets value = m_bsValue.octets();
    m_nComponentCount = 0;
    for (std::size_t offset = 0; offset < value.size();) {
        ElementTag tag;
        const TagRefusal refusal = readTag(value.subspan(offset), tag);
        if (refusal == tagNoMember) return fail(*this, 1, "checkASN1Member", *this);
        const int number = tag.taggedType == notTagged ? -tag.primitiveTag : tag.number;
        ComponentInfo component{static_cast<unsigned int>(offset), 0, number};
        if (refusal == tagTooLong) {
            return failAs(*this, ASN1Object::className, 3, "GetHighTag", *this, Here::now().in("fromASN1Object"));
        }
        offset += tag.octets;

        const Octets rest = value.subspan(offset);
        const Length size = readLength(rest);
        if (size.form == LengthForm::indefinite) {
            int contents = 0;
            if (findIndefiniteLengEnd(rest.data() + 1, static_cast<int>(rest.size() - 1), &contents) > 0) {
                return fail(*this, tag.isExplicit ? 4 : 5, "findIndefiniteLengEnd", *this);
            }
            offset += size.octets + static_cast<std::size_t>(contents) + 2;
        } else {
            offset = size.fit(rest.size()) ? offset + size.octets + size.value : value.size();
        }
        component.nLength = static_cast<unsigned int>(offset) - component.nOffset;
        if (keep(component) > 0) return fail(*this, 2, "ReallocCompontntInfo", *this);
    }
    return 0;
}

int ASN1Sequence::keep(const ComponentInfo& component)
{
    const bool isKept = m_nComponentCount < m_nMaxKept;
    if (isKept && m_nComponentCount == m_nComponentCapacity && ReallocCompontntInfo() > 0) return 1;
    if (isKept) pComponentInfo[m_nComponentCount] = component;
    ++m_nComponentCount;
    return 0;
}

const ComponentInfo* ASN1Sequence::entry(int index) const
{
    return index >= 0 && index < std::min(m_nComponentCount, m_nMaxKept) ? pComponentInfo + index : nullptr;
}

// The first table lies in the object. It grows by 20 entries while it is short and by half when it is long, so that a hostile value
// of hundreds of thousands of components takes linear time.
int ASN1Sequence::ReallocCompontntInfo()
{
    const int capacity = m_nComponentCapacity + (m_nComponentCapacity < 1000 ? 20 : m_nComponentCapacity / 2);
    auto* const table = new (std::nothrow) ComponentInfo[static_cast<std::size_t>(capacity)];
    if (!table) return failMemory(*this, 1, "pComponentInfo");
    if (m_nComponentCount > 0) std::memcpy(table, pComponentInfo, static_cast<std::size_t>(m_nComponentCount) * sizeof *table);
    releaseTable();
    pComponentInfo = table;
    m_nComponentCapacity = capacity;
    return 0;
}

ByteString& ASN1Sequence::getComponent(int index)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    const ComponentInfo* const component = entry(index);
    if (!component) {
        return failOutput(*this, 1, "index", formatted("Component No(%d) <= index(%d) Error", m_nComponentCount, index));
    }
    return giveOutput(m_bsValue.getBytes() + component->nOffset, component->nLength);
}

ByteString& ASN1Sequence::takeLastComponent()
{
    const int index = m_nComponentCount - 1;
    const ComponentInfo* const last = entry(index);
    if (!last) return getComponent(index);
    m_nLastError = 0;
    m_bsValue.dropFront(static_cast<int>(last->nOffset));
    m_bsOutput.swap(m_bsValue);
    m_bsValue.clear();
    m_nMaxKept = 0;
    return m_bsOutput;
}

int ASN1Sequence::getComponentTagNo(int index) const
{
    const ComponentInfo* const component = entry(index);
    return component ? component->nTag : -1;
}

int ASN1Sequence::getComponentUniversalTag(int index) const
{
    const ComponentInfo* const component = entry(index);
    if (!component) return -1;
    return component->nTag >= -31 && component->nTag <= -1 ? -component->nTag : -2;
}

// Writes the table entry of the component that the caller appends next. The caller then increments the count.
int ASN1Sequence::makeEntry(int length, int tag, Here at)
{
    const bool isFull = m_nComponentCount >= m_nMaxKept;
    if (isFull || (m_nComponentCount == m_nComponentCapacity && ReallocCompontntInfo() > 0))
        return fail(*this, 1, "ReallocCompontntInfo", *this, at);
    pComponentInfo[m_nComponentCount] = {static_cast<unsigned int>(m_bsValue.getLength()), static_cast<unsigned int>(length), tag};
    return 0;
}

int ASN1Sequence::addComponent(ByteString& encoded, int tag)
{
    if (const int code = makeEntry(encoded.getLength(), tag, Here::now())) return code;
    m_bsValue += encoded;
    if (m_bsValue.isOutOfMemory()) return failMemory(*this, 1, "m_bsValue");
    ++m_nComponentCount;
    return 0;
}

int ASN1Sequence::takeComponent(ByteString& encoded)
{
    const FailuresOf failed{*this, "addComponent"};
    if (const int code = makeEntry(encoded.getLength(), -1, Here::now().in("addComponent"))) return code;
    bool outOfMemory = false;
    if (encoded.getLength() > m_bsValue.getLength()) { // only the smaller of the two is copied
        outOfMemory = encoded.prepend(m_bsValue.octets()) > 0;
        if (!outOfMemory) m_bsValue.swap(encoded);
    } else {
        m_bsValue += encoded;
        outOfMemory = m_bsValue.isOutOfMemory();
    }
    encoded.clear();
    if (outOfMemory) return failed.memory(1, "m_bsValue");
    ++m_nComponentCount;
    return 0;
}

ByteString& ASN1Sequence::encodeInPlace()
{
    m_nComponentCount = 0;
    return ASN1Object::encodeInPlace();
}

void ASN1Sequence::clearComponents()
{
    m_bsValue.clear();
    m_ucTaggedType = notTagged;
    m_nComponentCount = 0;
}

} // namespace vrno
