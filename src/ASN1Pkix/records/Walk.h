// How a record visits its components. Each record lists them once, as calls on a visitor: Decoder reads them, Encoder writes them.
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
// A row gives the tag of a component, the member and its codes. In decoding, code 1 is the outer SEQUENCE ("asnSeq"), and code 2 a
// wrong number of components in a record that tests it.
//
// After the first failure the remaining calls do nothing, but walk() still runs to its end: code between the rows may use only
// what the visitor gives. Code for one direction only is under `if constexpr (V::decoding)`.
#pragma once

#include "ASN1/ASN1Sequence.h"
#include "ASN1Pkix/records/RObject.h"

// A member and its name, for the frames.
#define NAMED(member) member, #member

namespace vrno {

// ---- what a row says ----

// The tag that a row requires. A component with another tag is refused. The message is made from member and tag, as "version
// component is not ASN1_TAG_INTEGER.", unless the row has its own.
struct Tag {
    enum Kind : unsigned char { any, universal, option };
    Kind kind = any; // any: the member tests its own tag
    unsigned char number = 0;
    unsigned char firstOctet = 0; // for an implicit tag: decoding puts this universal tag in its place
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

// [number]: the member itself reads and writes the option tag.
constexpr Tag optionTag(unsigned char number) { return {Tag::option, number}; }

// [number] IMPLICIT SEQUENCE or SET: decoded under the universal tag, since the codec would read its constructed tag as an
// explicit one, and encoded with the option tag.
constexpr Tag implicitTagOf(unsigned char number, unsigned char universal)
{
    return {Tag::option, number, static_cast<unsigned char>(universal | constructedBit)};
}

// The codes of a row. Decoding has three: `decode` if the component cannot be read ("asnSeq"), +1 if the member does not decode it
// (the name of the member), +2 if it has another tag, which is tested first. Encoding has one.
struct Codes {
    int decode;
    int encode = 0; // for records that are never encoded
};

// ---- members, whatever their type ----

// What a visitor does with a member: one table for each type of member, so that a row takes little code.
struct MemberOps {
    int (*decode)(void* member, ByteString& component);
    ByteString& (*encode)(void* member);
    const Trailed* (*trailed)(void* member); // null for ANY, which fails only on allocation failure
    ByteString* (*scratch)(void* member);    // the output, if it may be used up; or null
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
            return m.m_bsOutput; // only decoded: never called
        }
    },
    [](void* member) -> const Trailed* { return static_cast<M*>(member); },
    [](void* member) { return &static_cast<M*>(member)->m_bsOutput; },
    [](void* member, int number) { static_cast<M*>(member)->setImplicitTag(number, contextClass); },
};

// ANY: the encoded element, unchanged.
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

    // Decodes the outer SEQUENCE. `mask` is the m_ucBitMask of the record or null; `method` is the method in the frames.
    Decoder(RObject& record, const char* recordClass, unsigned char* mask, ByteString& data, Here at,
            const char* method = "fromASN1Object");

    // The number of components. The minimum is the number of the required rows. Components beyond it are spare: the optional rows
    // take them in order. A component that no row takes is ignored.
    void exactly(int count, Here at = Here::now());
    void atLeast(int minimum, const char* message, Here at = Here::now());
    void between(int minimum, int maximum, const char* name, const char* message, Here at = Here::now());
    bool spare() const { return m_spare > 0; }
    // Whether the next component has the tag; for a row under a condition.
    bool nextIs(const Tag& tag) const;

    template <class M> void required(const Tag& tag, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        requiredRow(tag, {member, name}, codes.decode, at);
    }
    // Taken if a component is spare and has the tag. Then `bit` of the mask is set.
    template <class M>
    void optional(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        if (spare() && nextIs(tag)) spareRow(tag, bit, {member, name}, codes.decode, at);
    }
    // Taken if a component is spare, which must have the tag.
    template <class M>
    void optionalLast(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        if (spare()) spareRow(tag, bit, {member, name}, codes.decode, at);
    }
    // One alternative of a required component that is a CHOICE: taken if the component has the tag. A rule after the last
    // alternative refuses a component that none took.
    template <class M>
    void alternative(const Tag& tag, unsigned char bit, M& member, const char* name, Codes codes, Here at = Here::now())
    {
        if (nextIs(tag)) alternativeRow(tag, bit, {member, name}, codes.decode, at);
    }
    // A condition that no row expresses.
    void rule(bool isMet, int code, const char* name, const char* message, Here at = Here::now());
    void end(int) {}

    // For a row that is none of these, as ordinary code. fetch() returns the next component and moves on; null after any failure.
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

// Writes the member of each row; an optional one only if its bit is set.
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
    // Writes the SEQUENCE, with the record's option tag, to the record's output.
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

// Clears the mask and decodes the components of `data`: 0 or the code of the failed step.
template <class Record> int decode(Record& record, ByteString& data, Here at = Here::now())
{
    Decoder v(record, Record::className, maskOf(record), data, at);
    record.walk(v);
    return v.code();
}

// Encodes the components in order and returns `m_bsOutput`, which is empty with `m_nLastError` set on failure.
template <class Record> ByteString& encode(Record& record)
{
    Encoder v(record, Record::className, maskOf(record));
    record.walk(v);
    return record.m_bsOutput;
}

// ---- setters ----

// Copies a record as encoded bytes: encodes `data` (1, "data") and decodes the result into `member` (2, its name).
template <class Record, class Source, class M>
int copyThrough(Record& record, Source& data, M& member, const char* name, Here at = Here::now())
{
    ByteString& encoded = data.toASN1Object();
    if (data.getLastError() > 0) return fail(record, 1, "data", data, at);
    return member.fromASN1Object(encoded) > 0 ? fail(record, 2, name, member, at) : 0;
}

// ---- records in a wrapper ----

// Stores in `element` the content of the wrapper if the record has an option tag, else `data`. 1 ("asnSeq") on failure.
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

// Returns a member's output as the record's own. 1 if the member or the copy failed.
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

// The octets of an INTEGER without a sign octet; 1 with `message` for a negative number.
template <class Record, class Integer>
ByteString& magnitude(Record& record, Integer& integer, const char* name, const char* message, Here at = Here::now())
{
    record.m_nLastError = 0;
    if (integer.getBytes(record.m_bsOutput, false) < 0) return failOutput(record, 1, name, message, at);
    if (record.m_bsOutput.isOutOfMemory()) return failOutputMemory(record, 1, name, at);
    return record.m_bsOutput;
}

// The contents of an encoded member, decoded as `String`; 1 if it does not decode.
template <class String, class Record>
ByteString& contentsAs(Record& record, ByteString& encoded, const char* name, Here at = Here::now())
{
    String string;
    if (string.fromASN1Object(encoded) > 0) return failOutput(record, 1, name, string, at);
    return relay(record, string.getValue(), string, name, at);
}

// The octets of a BIT STRING after the octet of unused bits; 1 if it has no octets.
template <class Record, class Bits> ByteString& bitOctets(Record& record, Bits& bits, const char* name, Here at = Here::now())
{
    int unusedBits = 0;
    return relay(record, bits.getBitString(&unusedBits), bits, name, at);
}

} // namespace vrno
