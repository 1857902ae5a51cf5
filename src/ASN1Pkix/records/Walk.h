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
#include "ASN1Pkix/records/RObject.h"

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

// A component [number] IMPLICIT SEQUENCE or SET, whose constructed tag the codec by itself takes for a wrapper: decoded
// from a copy with the first octet of the universal tag, and encoded with the option tag.
struct Implicit {
    int number;
    unsigned char universal;
};

// Any component: the member tests its own tag.
struct AnyTag {};
inline constexpr AnyTag anyTag;

// ---- members, whatever their type ----

// What a visitor does with a member; one table a type of member, so that a row costs little code.
struct MemberOps {
    int (*decode)(void* member, ByteString& component);
    ByteString& (*encode)(void* member);
    const Trailed* (*trailed)(void* member); // null for ANY, which fails on allocation failure alone
    ByteString* (*scratch)(void* member);    // what is not needed once it was read; null where there is none
};

template <class M>
inline constexpr MemberOps memberOps{
    [](void* member, ByteString& component) { return static_cast<M*>(member)->fromASN1Object(component); },
    [](void* member) -> ByteString& {
        auto& m = *static_cast<M*>(member);
        if constexpr (requires { m.toASN1Object(); }) {
            return m.toASN1Object();
        } else {
            return m.m_bsOutput; // decoded only: never called
        }
    },
    [](void* member) -> const Trailed* { return static_cast<M*>(member); },
    [](void* member) { return &static_cast<M*>(member)->m_bsOutput; },
};

// ANY: the bytes as they stand.
template <>
inline constexpr MemberOps memberOps<ByteString>{
    [](void* member, ByteString& component) {
        *static_cast<ByteString*>(member) = component;
        return static_cast<ByteString*>(member)->getError();
    },
    [](void* member) -> ByteString& { return *static_cast<ByteString*>(member); },
    [](void*) -> const Trailed* { return nullptr; },
    [](void*) -> ByteString* { return nullptr; },
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

    // Decodes the outer SEQUENCE. `mask` is the record's m_ucBitMask, or null where it has none; `method` is for the frames.
    Decoder(RObject& record, const char* recordClass, unsigned char* mask, ByteString& data, Here at,
            const char* method = "fromASN1Object");

    // The count of components, code 2. The least count is that of the required rows: what is there beyond it is spare,
    // and goes to the optional rows in their order. What no row takes is ignored.
    void exactly(int count, const char* message, Here at = Here::now()) { counted(count, count, "asnSeq", message, at); }
    void atLeast(int count, const char* message, Here at = Here::now()) { counted(count, unlimited, "nCount", message, at); }
    void between(int minimum, int maximum, const char* name, const char* message, Here at = Here::now())
    {
        counted(minimum, maximum, name, message, at);
    }
    bool spare() const { return m_spare > 0; }
    // Whether the next component has the tag: for a row that stands under a condition.
    bool nextIs(Universal tag) const { return m_code == 0 && m_asnSeq.getComponentUniversalTag(m_index) == tag.tag; }
    bool nextIs(Option tag) const { return m_code == 0 && m_asnSeq.getComponentTagNo(m_index) == tag.number; }
    // A condition that no row expresses.
    void rule(bool holds, int code, const char* name, const char* message, Here at = Here::now())
    {
        if (m_code == 0 && !holds) refuse(code, name, message, at);
    }

    template <class M>
    void required(Universal tag, M& member, const char* name, int code, int, const char* message, Here at = Here::now())
    {
        taggedRow(nextIs(tag), tag.frame, {member, name}, code, message, at);
    }
    template <class M>
    void required(Option tag, M& member, const char* name, int code, int, const char* message, Here at = Here::now())
    {
        taggedRow(nextIs(tag), "asnSeq", {member, name}, code, message, at);
    }
    template <class M> void required(AnyTag, M& member, const char* name, int code, int, Here at = Here::now())
    {
        row({member, name}, code, at);
    }
    // Taken when a component is spare and has the tag; `bit` of the mask says so from then on.
    template <class M>
    void optional(Universal tag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (spare() && nextIs(tag)) optionalRow(bit, {member, name}, code, at);
    }
    template <class M>
    void optional(Option tag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (spare() && nextIs(tag)) optionalRow(bit, {member, name}, code, at);
    }
    template <class M> void optional(AnyTag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (spare()) optionalRow(bit, {member, name}, code, at);
    }
    // The same with a message: a spare component without the tag is refused.
    template <class M>
    void optional(Universal tag, unsigned char bit, M& member, const char* name, int code, int, const char* message,
                  Here at = Here::now())
    {
        if (!spare()) return;
        if (!nextIs(tag)) return refuse(code + 2, tag.frame, message, at);
        optionalRow(bit, {member, name}, code, at);
    }
    // One alternative of a required component that is a CHOICE: the first whose tag fits takes it. chosen() stands behind
    // the last one, with the codes and messages for the case that none did.
    template <class M>
    void alternative(Universal tag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (m_chosen || !nextIs(tag)) return;
        m_chosen = true;
        ++m_spare; // which the row takes off, as if the component were optional
        optionalRow(bit, {member, name}, code, at);
    }
    void chosen(unsigned char, int code, const char* message, int, const char*, Here at = Here::now())
    {
        if (m_code == 0 && !m_chosen) refuse(code, "asnSeq", message, at);
        m_chosen = false;
    }
    template <class M>
    void optional(Implicit tag, unsigned char bit, M& member, const char* name, int code, int, Here at = Here::now())
    {
        if (!spare() || !nextIs(Option{tag.number})) return;
        m_firstOctet = tag.universal;
        optionalRow(bit, {member, name}, code, at);
    }
    void end(int) {}

    // For a row that is none of these, as ordinary code. fetch() gives the component and goes on to the next one; null
    // after any failure.
    ByteString* fetch(int code, Here at = Here::now());
    void refuse(int code, const char* name, const char* message, Here at = Here::now());
    void refuse(int code, const char* name, const Trailed& inner, Here at = Here::now());
    void refuseMemory(int code, const char* name, Here at = Here::now());

    bool good() const { return m_code == 0; }
    int code() const { return m_code; }

private:
    void counted(int minimum, int maximum, const char* name, const char* message, Here at);
    void stop(int code);
    void taggedRow(bool tagFits, const char* tagFrame, Member member, int code, const char* message, Here at);
    void optionalRow(unsigned char bit, Member member, int code, Here at);
    void row(Member member, int code, Here at);

    RObject& m_record;
    const char* m_class;
    const char* m_method;
    unsigned char* m_mask;
    ASN1Sequence m_asnSeq;
    int m_index = 0;
    int m_spare;
    bool m_chosen = false;
    int m_code = 0;
    unsigned char m_firstOctet = 0; // what the next row's component is to begin with; 0: as it does
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
    template <class M>
    void optional(Universal tag, unsigned char bit, M& member, const char* name, int, int code, const char*, Here at = Here::now())
    {
        optional(tag, bit, member, name, 0, code, at);
    }
    template <class M>
    void alternative(Universal tag, unsigned char bit, M& member, const char* name, int, int code, Here at = Here::now())
    {
        optional(tag, bit, member, name, 0, code, at);
    }
    void chosen(unsigned char bits, int, const char*, int code, const char* message, Here at = Here::now())
    {
        if ((*m_mask & bits) == 0) refuse(code, "m_ucBitMask", message, at);
    }
    template <class M>
    void optional(Implicit tag, unsigned char bit, M& member, const char* name, int, int code, Here at = Here::now())
    {
        if ((*m_mask & bit) == 0) return;
        member.setImplicitTag(tag.number, contextClass);
        row({member, name}, code, at);
    }
    // The whole SEQUENCE, with the record's option tag, into the record's output.
    void end(int code, Here at = Here::now());
    void refuse(int code, const char* name, const char* message, Here at = Here::now());
    void refuse(int code, const char* name, const Trailed& inner, Here at = Here::now());
    void refuseMemory(int code, const char* name, Here at = Here::now());

private:
    void row(Member member, int code, Here at);

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

// ---- setters ----

// Hands a record over as encoded bytes: encoded here (1, "data"), decoded there (2, the member's name).
template <class Record, class Source, class M>
int copyThrough(Record& record, Source& data, M& member, const char* name, Here at = Here::now())
{
    ByteString& encoded = data.toASN1Object();
    if (data.getLastError() > 0) return fail(record, 1, "data", data, at);
    return member.fromASN1Object(encoded) > 0 ? fail(record, 2, name, member, at) : 0;
}

// ---- records that stand in a wrapper ----

// The element in the wrapper that a record with an option tag of its own stands in, or `data` itself: 1 ("asnSeq") where
// there is no wrapper to be read.
template <class Record> int unwrap(Record& record, const ByteString& data, ByteString& element, Here at = Here::now())
{
    element = data;
    if (record.m_ucTaggedType == notTagged) return 0;
    element.setAt(0, ASN1_TAG_SEQUENCE | constructedBit);
    ASN1Sequence asnSeq;
    if (asnSeq.fromASN1Object(element) > 0) return fail(record, 1, "asnSeq", asnSeq, at);
    element = asnSeq.getComponent(0);
    return 0;
}

// ---- getters ----

// Hands a member's output on as the record's own; a failure of the member, or of the copy, becomes code 1.
template <class Record, class M>
ByteString& relay(Record& record, ByteString& output, M& member, const char* name, Here at = Here::now())
{
    record.m_nLastError = 0;
    if (member.getLastError() > 0) return failOutput(record, 1, name, member, at);
    record.m_bsOutput = output;
    if (record.m_bsOutput.isOutOfMemory()) return failOutputMemory(record, 1, name, at);
    return record.m_bsOutput;
}

// The text form of an identifier, with blanks.
template <class Record, class Oid> ByteString& oidText(Record& record, Oid& oid, const char* name, Here at = Here::now())
{
    return relay(record, oid.getOID(' '), oid, name, at);
}

// The octets of an INTEGER without a sign octet; a negative one fails with `message`.
template <class Record, class Integer>
ByteString& magnitude(Record& record, Integer& integer, const char* name, const char* message, Here at = Here::now())
{
    record.m_nLastError = 0;
    if (integer.getBytes(record.m_bsOutput, false) < 0) return failOutput(record, 1, name, message, at);
    if (record.m_bsOutput.isOutOfMemory()) return failOutputMemory(record, 1, name, at);
    return record.m_bsOutput;
}

// The contents of an encoded member, decoded as `String`: 1 where it does not decode.
template <class String, class Record>
ByteString& contentsAs(Record& record, ByteString& encoded, const char* name, Here at = Here::now())
{
    String string;
    if (string.fromASN1Object(encoded) > 0) return failOutput(record, 1, name, string, at);
    return relay(record, string.getValue(), string, name, at);
}

// The octets of a BIT STRING behind the octet of unused bits.
template <class Record, class Bits> ByteString& bitOctets(Record& record, Bits& bits, const char* name, Here at = Here::now())
{
    int unusedBits = 0;
    return relay(record, bits.getBitString(&unusedBits), bits, name, at);
}

} // namespace vrno
