#include "ASN1Pkix/records/Walk.h"

namespace vrno {

// ---- decoding ----

Decoder::Decoder(RObject& record, const char* recordClass, unsigned char* mask, ByteString& data, Here at, const char* method)
    : m_record(record), m_class(recordClass), m_method(method), m_mask(mask)
{
    constexpr int maxRows = 16; // more than any record has
    if (m_mask) *m_mask = 0;
    m_asnSeq.keepOnly(maxRows);
    if (m_asnSeq.fromASN1Object(data) > 0) refuse(1, "asnSeq", m_asnSeq, at);
    if (m_code == 0) m_record.takeOptionTag(m_asnSeq);
    m_spare = m_code == 0 ? m_asnSeq.getComponentCount() : 0;
}

void Decoder::stop(int code)
{
    m_code = code;
    m_spare = 0;
}

void Decoder::refuse(int code, const char* name, const char* message, Here at)
{
    stop(failAs(m_record, m_class, code, name, message, at.in(m_method)));
}

void Decoder::refuse(int code, const char* name, const ByteString& message, Here at)
{
    stop(failAs(m_record, m_class, code, name, message, at.in(m_method)));
}

void Decoder::refuse(int code, const char* name, const Trailed& inner, Here at)
{
    stop(failAs(m_record, m_class, code, name, inner, at.in(m_method)));
}

void Decoder::refuseMemory(int code, const char* name, Here at)
{
    stop(failMemoryAs(m_record, m_class, code, name, memoryFailure, at.in(m_method)));
}

bool Decoder::countIs(int minimum, int maximum)
{
    if (m_code > 0) return true;
    const int count = m_asnSeq.getComponentCount();
    m_spare = count - minimum;
    return count >= minimum && count <= maximum;
}

void Decoder::exactly(int count, Here at)
{
    if (!countIs(count, count)) refuse(2, "asnSeq", formatted("The number of components is not %d.", count), at);
}

void Decoder::atLeast(int minimum, const char* message, Here at) { between(minimum, unlimited, "nCount", message, at); }

void Decoder::between(int minimum, int maximum, const char* name, const char* message, Here at)
{
    if (!countIs(minimum, maximum)) refuse(2, name, message, at);
}

void Decoder::rule(bool isMet, int code, const char* name, const char* message, Here at)
{
    if (m_code == 0 && !isMet) refuse(code, name, message, at);
}

bool Decoder::nextIs(const Tag& tag) const
{
    if (m_code > 0) return false;
    switch (tag.kind) {
    case Tag::universal:
        return m_asnSeq.getComponentUniversalTag(m_index) == tag.number;
    case Tag::option:
        return m_asnSeq.getComponentTagNo(m_index) == tag.number;
    default:
        return true;
    }
}

ByteString* Decoder::fetch(int code, Here at)
{
    if (m_code > 0) return nullptr;
    const bool isLast = m_index == m_asnSeq.getComponentCount() - 1; // may be large, so it is moved
    ByteString& component = isLast ? m_asnSeq.takeLastComponent() : m_asnSeq.getComponent(m_index);
    if (m_asnSeq.getLastError() > 0) {
        refuse(code, "asnSeq", m_asnSeq, at);
        return nullptr;
    }
    ++m_index;
    return &component;
}

static const char* nameOfUniversal(unsigned char tag)
{
    switch (tag) {
    case ASN1_TAG_BOOLEAN:
        return "ASN1_TAG_BOOLEAN";
    case ASN1_TAG_INTEGER:
        return "ASN1_TAG_INTEGER";
    case ASN1_TAG_BITSTRING:
        return "ASN1_TAG_BITSTRING";
    case ASN1_TAG_OCTETSTRING:
        return "ASN1_TAG_OCTETSTRING";
    case ASN1_TAG_OID:
        return "ASN1_TAG_OID";
    case ASN1_TAG_UTF8STRING:
        return "ASN1_TAG_UTF8STRING";
    default:
        return "ASN1_TAG_SEQUENCE";
    }
}

void Decoder::refuseTag(const Tag& tag, const char* member, int code, Here at)
{
    const char* const component = member + 2; // without "m_"
    if (tag.message) return refuse(code, tag.frame, tag.message, at);
    if (tag.kind == Tag::option)
        return refuse(code, tag.frame, formatted("%s component's option number is not %d.", component, tag.number), at);
    refuse(code, tag.frame, formatted("%s component is not %s.", component, nameOfUniversal(tag.number)), at);
}

void Decoder::requiredRow(const Tag& tag, Member member, int code, Here at)
{
    if (m_code == 0 && !nextIs(tag)) return refuseTag(tag, member.name, code + 2, at);
    ByteString* const component = fetch(code, at);
    if (!component) return;
    if (tag.firstOctet != 0) component->setAt(0, tag.firstOctet);
    if (member.ops->decode(member.object, *component) == 0) return;
    if (const Trailed* const trailed = member.ops->trailed(member.object)) return refuse(code + 1, member.name, *trailed, at);
    refuseMemory(code + 1, member.name, at);
}

void Decoder::alternativeRow(const Tag& tag, unsigned char bit, Member member, int code, Here at)
{
    requiredRow(tag, member, code, at);
    if (m_code == 0) *m_mask |= bit;
}

void Decoder::spareRow(const Tag& tag, unsigned char bit, Member member, int code, Here at)
{
    alternativeRow(tag, bit, member, code, at);
    if (m_code == 0) --m_spare;
}

// ---- encoding ----

Encoder::Encoder(RObject& record, const char* recordClass, const unsigned char* mask)
    : m_record(record), m_class(recordClass), m_mask(mask)
{
    m_record.m_nLastError = 0;
    m_record.m_bsOutput.clear();
}

void Encoder::refuse(int code, const char* name, const char* message, Here at)
{
    if (m_record.m_nLastError > 0) return;
    m_record.m_nLastError = failAs(m_record, m_class, code, name, message, at.in("toASN1Object"));
}

void Encoder::refuse(int code, const char* name, const Trailed& inner, Here at)
{
    if (m_record.m_nLastError > 0) return;
    m_record.m_nLastError = failAs(m_record, m_class, code, name, inner, at.in("toASN1Object"));
}

void Encoder::refuseMemory(int code, const char* name, Here at)
{
    if (m_record.m_nLastError > 0) return;
    m_record.m_nLastError = failMemoryAs(m_record, m_class, code, name, memoryFailure, at.in("toASN1Object"));
}

// The output of a member is used up: a large block becomes the sequence's value and, in end(), the record's output.
void Encoder::row(Member member, int code, Here at)
{
    if (m_record.m_nLastError > 0) return;
    ByteString& encoded = member.ops->encode(member.object);
    const Trailed* const trailed = member.ops->trailed(member.object);
    if (trailed && trailed->getLastError() > 0) return refuse(code, member.name, *trailed, at);
    if (encoded.isOutOfMemory()) return refuseMemory(code, member.name, at);
    const bool isScratch = &encoded == member.ops->scratch(member.object);
    const int failed = isScratch ? m_asnSeq.takeComponent(encoded) : m_asnSeq.addComponent(encoded, -1);
    if (failed > 0) refuse(code, member.name, m_asnSeq, at);
}

void Encoder::optionalRow(const Tag& tag, unsigned char bit, Member member, int code, Here at)
{
    if ((*m_mask & bit) == 0) return;
    if (tag.firstOctet != 0) member.ops->setImplicitTag(member.object, tag.number);
    row(member, code, at);
}

void Encoder::rule(bool isMet, int code, const char* name, const char* message, Here at)
{
    if (!isMet) refuse(code, name, message, at);
}

void Encoder::end(int code, Here at)
{
    if (m_record.m_nLastError > 0) return;
    m_record.putOptionTag(m_asnSeq);
    m_record.m_bsOutput.swap(m_asnSeq.encodeInPlace());
    if (m_asnSeq.getLastError() > 0) refuse(code, "asnSeq", m_asnSeq, at);
}

} // namespace vrno
