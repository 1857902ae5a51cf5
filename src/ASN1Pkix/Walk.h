// How a record goes through its components: each record lists them once, as calls, and is decoded or encoded by the
// visitor that those calls are made on.
//
//     // Validity ::= SEQUENCE { notBefore Time, notAfter Time }
//     template <class V> void RValidity::walk(V& v)
//     {
//         v.exactly(2, "The number of components is not 2.");
//         v.required(anyTag, NAMED(m_notBefore), 3, 1);
//         v.required(anyTag, NAMED(m_notAfter), 5, 2);
//         v.end(3);
//     }
//
// A row gives the component's tag, the member, the first of its decode codes and its encode code. The decode codes are,
// from `code` on: the component could not be fetched ("asnSeq"), the member did not decode (the member's name), the
// component has another universal tag ("asnSeq" and the row's message). That tag is looked at first. Code 1 is always
// the outer SEQUENCE ("asnSeq").
//
// After the first failure the remaining calls do nothing, but the walk runs to its end: what stands between the rows uses
// nothing but what the visitor gives. What only one direction needs stands under `if constexpr (V::decoding)`.
#pragma once

#include "ASN1/ASN1Sequence.h"
#include "ASN1Pkix/RObject.h"

// A member and its name, for the frames.
#define NAMED(member) member, #member

namespace vrno {

// ---- what a row can say ----

// A component with this universal tag; `frame` names the failure of that test.
struct Universal {
    unsigned char tag;
    const char* frame = "asnSeq";
};

// A component with this option tag.
struct Option {
    int number;
};

// Any component: the member tests its own tag.
struct AnyTag {};
inline constexpr AnyTag anyTag;

// The member decodes the component with this for its first octet: an implicit tag around a constructed type would be
// read as an explicit one.
struct Rewrite {
    unsigned char octet = 0; // 0: as it stands
};

// ---- members, whatever their type ----

// What a visitor does with a member; one table a type of member, so that a row costs little code.
struct MemberOps {
    int (*decode)(void* member, ByteString& component);
    ByteString& (*encode)(void* member);
    int (*lastError)(void* member);
    const char* (*trail)(void* member);
};

template <class M>
inline constexpr MemberOps memberOps{
    [](void* member, ByteString& component) { return static_cast<M*>(member)->fromASN1Object(component); },
    [](void* member) -> ByteString& {
        if constexpr (requires(M & m) { m.toASN1Object(); }) {
            return static_cast<M*>(member)->toASN1Object();
        } else {
            return static_cast<M*>(member)->m_bsOutput; // a record that is only read: no encoder comes here
        }
    },
    [](void* member) { return static_cast<M*>(member)->getLastError(); },
    [](void* member) { return static_cast<M*>(member)->getErrorTrail().getText(); },
};

// ANY: the bytes as they stand.
template <>
inline constexpr MemberOps memberOps<ByteString>{
    [](void* member, ByteString& component) {
        *static_cast<ByteString*>(member) = component;
        return static_cast<ByteString*>(member)->getError();
    },
    [](void* member) -> ByteString& { return *static_cast<ByteString*>(member); },
    [](void* member) { return static_cast<ByteString*>(member)->getError(); },
    [](void*) { return "Memory Allocation Error"; },
};

struct Member {
    void* object;
    const char* name;
    const MemberOps* ops;

    template <class M> Member(M& member, const char* memberName) : object(&member), name(memberName), ops(&memberOps<M>) {}
};

// ---- the visitors ----

class Decoder {
public:
    static constexpr bool decoding = true;
    static constexpr int unlimited = 0x7FFFFFFF;

    // Decodes the outer SEQUENCE. `mask` is the record's m_ucBitMask, or null where it has none.
    Decoder(RObject& record, const char* recordClass, unsigned char* mask, ByteString& data, Here at);

    // The count of components, code 2. The least count is that of the required rows: what is there beyond it is spare,
    // and goes to the optional rows in their order. What no row takes is ignored.
    void exactly(int count, const char* message, Here at = Here::now()) { counted(count, count, "asnSeq", message, at); }
    void atLeast(int count, const char* message, Here at = Here::now()) { counted(count, unlimited, "nCount", message, at); }
    void between(int least, int most, const char* name, const char* message, Here at = Here::now())
    {
        counted(least, most, name, message, at);
    }
    bool spare() const { return m_spare > 0; }
    // Whether the next component has the tag: for a row that stands under a condition.
    bool nextIs(Universal tag) const { return m_code == 0 && m_asnSeq.getComponentUniversalTag(m_index) == tag.tag; }
    // A condition that no row expresses.
    void rule(bool holds, int code, const char* name, const char* message, Here at = Here::now())
    {
        if (m_code == 0 && !holds) refuse(code, name, message, at);
    }

    template <class M>
    void required(Universal tag, M& member, const char* name, int code, int, const char* message, Here at = Here::now())
    {
        taggedRow(m_asnSeq.getComponentUniversalTag(m_index) == tag.tag, tag.frame, {member, name}, code, message, at);
    }
    template <class M>
    void required(Option tag, M& member, const char* name, int code, int, const char* message, Here at = Here::now())
    {
        taggedRow(m_asnSeq.getComponentTagNo(m_index) == tag.number, "asnSeq", {member, name}, code, message, at);
    }
    template <class M> void required(AnyTag, M& member, const char* name, int code, int, Here at = Here::now())
    {
        row({member, name}, code, at);
    }
    // Taken when a component is spare and has the tag; `bit` of the mask says so from then on.
    template <class M>
    void optional(Universal tag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (spare() && m_asnSeq.getComponentUniversalTag(m_index) == tag.tag) optionalRow(bit, {member, name}, code, at);
    }
    template <class M>
    void optional(Option tag, unsigned char bit, M& member, const char* name, int code, int, Rewrite rewrite = {},
                  Here at = Here::now())
    {
        if (spare() && m_asnSeq.getComponentTagNo(m_index) == tag.number) optionalRow(bit, {member, name}, code, at, rewrite);
    }
    template <class M> void optional(AnyTag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (spare()) optionalRow(bit, {member, name}, code, at);
    }
    void end(int) {}

    int code() const { return m_code; }

private:
    void counted(int least, int most, const char* name, const char* message, Here at);
    void taggedRow(bool tagFits, const char* tagFrame, Member member, int code, const char* message, Here at);
    void optionalRow(unsigned char bit, Member member, int code, Here at, Rewrite rewrite = {});
    void row(Member member, int code, Here at, Rewrite rewrite = {});
    void refuse(int code, const char* name, const char* message, Here at);

    RObject& m_record;
    const char* m_class;
    unsigned char* m_mask;
    ASN1Sequence m_asnSeq;
    int m_index = 0;
    int m_spare;
    int m_code = 0;
};

class Encoder {
public:
    static constexpr bool decoding = false;

    Encoder(RObject& record, const char* recordClass, const unsigned char* mask);

    void exactly(int, const char*) {}
    void atLeast(int, const char*) {}

    template <class M> void required(Universal, M& member, const char* name, int, int code, const char*, Here at = Here::now())
    {
        row({member, name}, code, at);
    }
    template <class M> void required(AnyTag, M& member, const char* name, int, int code, Here at = Here::now())
    {
        row({member, name}, code, at);
    }
    // Written when its bit is set.
    template <class Tag, class M>
    void optional(Tag, unsigned char bit, M& member, const char* name, int, int code, Here at = Here::now())
    {
        if (*m_mask & bit) row({member, name}, code, at);
    }
    // The whole SEQUENCE, with the record's option tag, into the record's output.
    void end(int code, Here at = Here::now());

private:
    void row(Member member, int code, Here at);
    void refuse(int code, const char* name, const char* trail, Here at);

    RObject& m_record;
    const char* m_class;
    const unsigned char* m_mask;
    ASN1Sequence m_asnSeq;
};

// ---- what a record calls ----

template <class Record> unsigned char* maskOf(Record& record)
{
    if constexpr (requires { record.m_ucBitMask; }) {
        return &record.m_ucBitMask;
    } else {
        return nullptr;
    }
}

// Clears the mask and walks through the components of `data`: 0 or the code of the failing step.
template <class Record> int decode(Record& record, ByteString& data, Here at = Here::now())
{
    Decoder v(record, Record::className, maskOf(record), data, at);
    record.walk(v);
    return v.code();
}

// Writes the components in their order: `m_bsOutput`, empty with `m_nLastError` set on failure.
template <class Record> ByteString& encode(Record& record)
{
    Encoder v(record, Record::className, maskOf(record));
    record.walk(v);
    return record.m_bsOutput;
}

// ---- getters ----

// Hands a member's output on as the record's own; the member's failure becomes code 1 with its trail, or noMemoryCode.
template <class Record, class M>
ByteString& relay(Record& record, ByteString& output, M& member, const char* name, Here at = Here::now())
{
    record.m_nLastError = 0;
    const int error = member.getLastError();
    if (error > 0) return failOutput(record, error == noMemoryCode ? error : 1, name, member, at);
    record.m_bsOutput = output;
    if (record.m_bsOutput.getError() > 0) return failOutput(record, noMemoryCode, name, "Memory Allocation Error", at);
    return record.m_bsOutput;
}

// The text form of an identifier, with blanks.
template <class Record, class Oid> ByteString& oidText(Record& record, Oid& oid, const char* name, Here at = Here::now())
{
    return relay(record, oid.getOID(' '), oid, name, at);
}

// The octets of a BIT STRING behind the octet of unused bits.
template <class Record, class Bits> ByteString& bitOctets(Record& record, Bits& bits, const char* name, Here at = Here::now())
{
    int unusedBits = 0;
    return relay(record, bits.getBitString(&unusedBits), bits, name, at);
}

} // namespace vrno
