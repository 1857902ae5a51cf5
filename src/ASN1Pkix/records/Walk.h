// How a record goes through its components: each record lists them once, as calls, and is decoded or encoded by the
// visitor that those calls are made on.
//
//     // Validity ::= SEQUENCE { notBefore Time, notAfter Time }
//     template <class V> void RValidity::walk(V& v)
//     {
//         v.exactly(2);
//         v.required(anyTag, NAMED(m_notBefore), {3, 1});
//         v.required(anyTag, NAMED(m_notAfter), {5, 2});
//         v.end(3);
//     }
//
// A row gives the component's tag, the member and its codes. Code 1 is always the outer SEQUENCE ("asnSeq"), code 2 a wrong
// count of components.
//
// After the first failure the remaining calls do nothing, but the walk runs to its end: code between the rows uses only what
// the visitor gives. What one direction alone needs stands under `if constexpr (V::decoding)`.
#pragma once

#include "ASN1/ASN1Sequence.h"
#include "ASN1Pkix/records/RObject.h"

// A member and its name, for the frames.
#define NAMED(member) member, #member

namespace vrno {

// ---- what a row says ----

// The tag that a row asks for. A component with another one is refused with a message made of member and tag, as
// "version component is not ASN1_TAG_INTEGER.", unless the row has its own.
struct Tag {
    enum Kind : unsigned char { any, universal, option };
    Kind kind = any; // any: the member tests its own tag
    unsigned char number = 0;
    unsigned char firstOctet = 0; // of an implicit tag: the octet of the universal tag that the component is decoded under
    const char* frame = "asnSeq"; // the frame's name for a refusal
    const char* message = nullptr;

    constexpr Tag named(const char* other) const { return {kind, number, firstOctet, other, message}; }
    constexpr Tag saying(const char* other) const { return {kind, number, firstOctet, frame, other}; }
};
inline constexpr Tag anyTag;
inline constexpr Tag booleanTag{Tag::universal, ASN1_TAG_BOOLEAN};
inline constexpr Tag integerTag{Tag::universal, ASN1_TAG_INTEGER};
inline constexpr Tag bitStringTag{Tag::universal, ASN1_TAG_BITSTRING};
inline constexpr Tag octetStringTag{Tag::universal, ASN1_TAG_OCTETSTRING};
inline constexpr Tag nullTag{Tag::universal, ASN1_TAG_NULLTAG};
inline constexpr Tag oidTag{Tag::universal, ASN1_TAG_OID};
inline constexpr Tag utf8StringTag{Tag::universal, ASN1_TAG_UTF8STRING};
inline constexpr Tag sequenceTag{Tag::universal, ASN1_TAG_SEQUENCE};
inline constexpr Tag generalizedTimeTag{Tag::universal, ASN1_TAG_GENERALIZEDTIME};

// [number]: the member reads and writes the option tag itself.
constexpr Tag optionTag(unsigned char number)
{
    return {Tag::option, number};
}

// [number] IMPLICIT SEQUENCE or SET, whose constructed tag the codec by itself takes for a wrapper: decoded under the
// universal tag, and encoded with the option tag.
constexpr Tag implicitTagOf(unsigned char number, unsigned char universal)
{
    return {Tag::option, number, static_cast<unsigned char>(universal | constructedBit)};
}

// The codes of a row's failures. Decoding counts from the first on: the component could not be fetched ("asnSeq"), the member
// did not decode (the member's name), the component has another tag. That tag is tested first. Encoding has one code.
struct Codes {
    int decode;
    int encode = 0; // for records that are never encoded
};

// ---- members, whatever their type ----

// What a visitor does with a member; one table a type of member, so that a row costs little code.
struct MemberOps {
    int (*decode)(void* member, ByteString& component);
    ByteString& (*encode)(void* member);
    const Trailed* (*trailed)(void* member); // null for ANY, which fails on allocation failure alone
    ByteString* (*scratch)(void* member);    // what is not needed once it was read; null where there is none
    void (*setImplicitTag)(void* member, int number);
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
    [](void* member, int number) { static_cast<M*>(member)->setImplicitTag(number, contextClass); },
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
    [](void*, int) {},
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

    // The count of components. The minimum is the number of the required rows. Components beyond it are spare: the optional
    // rows take them in their order. What no row takes is ignored.
    void exactly(int count, Here at = Here::now());
    void atLeast(int minimum, const char* message, Here at = Here::now());
    void between(int minimum, int maximum, const char* name, const char* message, Here at = Here::now());
    bool spare() const { return m_spare > 0; }
    // Whether the next component has the tag: for a row that stands under a condition.
    bool nextIs(const Tag& tag) const;

    template <class M> void required(const Tag& tag, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        requiredRow(tag, {member, name}, codes.decode, at);
    }
    // Taken when a component is spare and has the tag; then `bit` of the mask is set.
    template <class M>
    void optional(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        if (spare() && nextIs(tag)) spareRow(tag, bit, {member, name}, codes.decode, at);
    }
    // Taken when a component is spare, which must have the tag then.
    template <class M>
    void optionalLast(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        if (spare()) spareRow(tag, bit, {member, name}, codes.decode, at);
    }
    // One alternative of a required component that is a CHOICE: taken when it has the tag. A rule behind the last
    // alternative refuses the component that none took.
    template <class M>
    void alternative(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        if (nextIs(tag)) alternativeRow(tag, bit, {member, name}, codes.decode, at);
    }
    // A condition that no row expresses.
    void rule(bool isMet, int code, const char* name, const char* message, Here at = Here::now());
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
    bool countIs(int minimum, int maximum);
    void stop(int code);
    void refuse(int code, const char* name, const ByteString& message, Here at);
    void refuseTag(const Tag& tag, const char* member, int code, Here at);
    void requiredRow(const Tag& tag, Member member, int code, Here at);
    void spareRow(const Tag& tag, unsigned char bit, Member member, int code, Here at);
    void alternativeRow(const Tag& tag, unsigned char bit, Member member, int code, Here at);

    RObject& m_record;
    const char* m_class;
    const char* m_method;
    unsigned char* m_mask;
    ASN1Sequence m_asnSeq;
    int m_index = 0;
    int m_spare;
    int m_code = 0;
};

// Writes a row's member, an optional one when its bit is set.
class Encoder {
public:
    static constexpr bool decoding = false;

    Encoder(RObject& record, const char* recordClass, const unsigned char* mask);

    void exactly(int) {}
    void atLeast(int, const char*) {}

    template <class M> void required(const Tag&, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        row({member, name}, codes.encode, at);
    }
    template <class M>
    void optional(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        optionalRow(tag, bit, {member, name}, codes.encode, at);
    }
    template <class M>
    void optionalLast(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        optionalRow(tag, bit, {member, name}, codes.encode, at);
    }
    template <class M>
    void alternative(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        optionalRow(tag, bit, {member, name}, codes.encode, at);
    }
    void rule(bool isMet, int code, const char* name, const char* message, Here at = Here::now());
    // The whole SEQUENCE, with the record's option tag, into the record's output.
    void end(int code, Here at = Here::now());
    void refuse(int code, const char* name, const char* message, Here at = Here::now());
    void refuse(int code, const char* name, const Trailed& inner, Here at = Here::now());
    void refuseMemory(int code, const char* name, Here at = Here::now());

private:
    void row(Member member, int code, Here at);
    void optionalRow(const Tag& tag, unsigned char bit, Member member, int code, Here at);

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
