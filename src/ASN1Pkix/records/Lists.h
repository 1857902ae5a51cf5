// SEQUENCE OF and SET OF: records that hold the container itself and return its elements as encoded bytes.
#pragma once

#include "ASN1Pkix/records/Walk.h"

namespace vrno {

template <class Record, class List>
int decodeList(Record& record, List& list, const char* name, ByteString& data, Here at = Here::now())
{
    if (list.fromASN1Object(data) > 0) return fail(record, 1, name, list, at);
    record.takeOptionTag(list);
    return 0;
}

template <class Record, class List> ByteString& encodeList(Record& record, List& list, const char* name, Here at = Here::now())
{
    record.putOptionTag(list);
    return relay(record, list.toASN1Object(), list, name, at);
}

// The encoded element at `index`; empty with `m_nLastError` 1 for an index out of range.
template <class Record, class List>
ByteString& element(Record& record, List& list, const char* name, int index, Here at = Here::now())
{
    return relay(record, list.getComponent(index), list, name, at);
}

template <class Self> class RSequenceOf : public RObject {
public:
    int getCount() const { return m_SEQ.getComponentCount(); }
    ByteString& get(int index) { return element(self(), NAMED(m_SEQ), index); }
    int fromASN1Object(ByteString& data) { return decodeList(self(), NAMED(m_SEQ), data); }
    ByteString& toASN1Object() { return encodeList(self(), NAMED(m_SEQ)); }

    ASN1Sequence m_SEQ;

private:
    Self& self() { return static_cast<Self&>(*this); }
};

template <class Self> class RSetOf : public RObject {
public:
    int getCount() const { return m_SET.getComponentCount(); }
    ByteString& get(int index) { return element(self(), NAMED(m_SET), index); }
    int fromASN1Object(ByteString& data) { return decodeList(self(), NAMED(m_SET), data); }
    ByteString& toASN1Object() { return encodeList(self(), NAMED(m_SET)); }

    ASN1Set m_SET;

private:
    Self& self() { return static_cast<Self&>(*this); }
};

} // namespace vrno
