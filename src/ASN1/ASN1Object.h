// The base of every ASN.1 value, and the one tag-length codec that all of them share.
#pragma once

#include "ASN1/tags.h"
#include "base/Trail.h"

namespace vrno {

class ByteBuilder;

// What a class of value is called, which universal tag it has, and what it says of any other (formed with that tag).
struct ASN1Type {
    const char* className;
    unsigned char tag;
    const char* mismatch;
};

// A value keeps the contents octets of one element and how the element is tagged. Decoding takes BER: all three length
// forms of X.690, minimal or not, high tag numbers of up to three octets outside the universal class, and octets behind
// the element, which it ignores. Encoding writes minimal definite lengths.
//
// An operation that returns a code gives 0 or the number of its failing check. One that returns a reference sets
// `m_nLastError` and gives `m_bsOutput`, which the next such operation replaces. Every failure leaves a frame.
class ASN1Object : public Trailed {
public:
    static constexpr const char* className = "ASN1Object";

    ASN1Object() = default;
    explicit ASN1Object(unsigned char primitiveTag) : m_ucPrimitiveTag(primitiveTag) {}

    virtual ByteString& toASN1Object();
    // A context, application or private tag in constructed form is read as an explicit tag around the value, in
    // primitive form as an implicit one. An explicit tag around a further option tag keeps that element as the value.
    // A failure leaves the tag fields as far as they were read.
    virtual int fromASN1Object(ByteString& data);
    // Copies, which fail on allocation failure alone; classes with a character set test the octets.
    virtual int setValue(ByteString& value);
    virtual int setValue(const void* data, int length);
    virtual int setValue(const char* text);
    virtual ByteString& getValue() { return m_bsValue; }

    void setImplicitTag(int tagNo, unsigned char tagClass);
    void setExplicitTag(int tagNo, unsigned char tagClass);
    unsigned char getTaggedType() const { return m_ucTaggedType; }
    int getOptionTagNo() const { return m_nOptionTagNo; }
    unsigned char getOptionTagClass() const { return m_ucOptionTagClass & classBits; }
    unsigned char getPrimitiveTag() const { return m_ucPrimitiveTag; }
    void setPrimitiveTag(unsigned char tag) { m_ucPrimitiveTag = tag; }
    int getValueLength() const { return m_bsValue.getLength(); }
    unsigned char isConstructed() const { return m_ucConstructed; }

    // Classifies one tag octet. An option tag leaves `primitiveTag` alone, a universal one `optionTagNo`, and a high tag
    // number both; `optionTagClass` takes the top three bits always. 1 for a universal tag that is none of ours.
    int CheckASN1Member(unsigned char tag, unsigned char* primitiveTag, unsigned char* taggedType, int* optionTagNo,
                        unsigned char* optionTagClass);

    // Reads a base-128 number (X.690, 8.1.2.4.2 and 8.19.2) of up to four octets, of which the first is a tag octet that
    // only counts when `hasLeadOctet`. At most `length` octets are read. The number of octets, or 0 on failure.
    int GetHighTag(const unsigned char* data, int length, int* tagValue, bool hasLeadOctet);

    // Finds the two end-of-contents octets that close the contents at `data`, stepping over elements and into those of
    // indefinite length. Any depth of nesting costs no stack. 0 and the length of the contents, or a code.
    int findIndefiniteLengEnd(const unsigned char* data, int length, int* contentLength);

    // The number of octets written: 1 to 5 for a length, 1 to 5 for a number and one more for its lead octet.
    static int PutLength(unsigned int length, unsigned char* out);
    int PutHighTag(unsigned int value, unsigned char* out, bool withLeadOctet) const;

    // The big-endian value of `count` octets, 0 for a count below 1; the largest std::size_t for anything above it.
    static std::size_t GetLengValue(const unsigned char* data, int count);

protected:
    enum class LengthForm { shortForm, longForm, indefinite };

    // The length octets in front of some contents. `value` is the length of the contents, saturated, and so too large
    // for any buffer where not even the length octets are all there; it says nothing in the indefinite form.
    struct Length {
        LengthForm form;
        std::size_t octets;
        std::size_t value;

        // Whether both lie within that many octets.
        bool fit(std::size_t available) const { return octets <= available && value <= available - octets; }
    };
    static Length readLength(Octets data);

    // How the element at the front of some octets is tagged.
    struct ElementTag {
        unsigned char primitiveTag = ASN1_TAG_ANY;
        unsigned char taggedType = notTagged;
        int number = -1;
        unsigned char tagClass = 0;
        std::size_t octets = 1;
        bool isExplicit = false;
    };
    enum TagRefusal { tagTaken = 0, tagNoMember = 1, tagTooLong = 2 };
    // A refusal leaves the frame of CheckASN1Member or GetHighTag. There must be an octet.
    TagRefusal readTag(Octets data, ElementTag& tag);

    // The octets as `m_bsOutput`; code 1 on allocation failure.
    ByteString& giveOutput(const void* data, std::size_t length, Here at = Here::now());

    // The end of a setter that has filled `m_bsValue`: its result, with a frame where the allocation failed.
    int valueSet(int result, Here at = Here::now());

    // As toASN1Object, but the result takes the value's block over: one block instead of two. The object has no value then.
    ByteString& useUpAsASN1Object();

    // The decoding of all typed values: the codec, then the universal tag. Codes 1 and 2.
    int decodeTyped(ByteString& data, const ASN1Type& type, Here at = Here::now());

public:
    unsigned char m_ucPrimitiveTag = ASN1_TAG_ANY;
    unsigned char m_ucTaggedType = notTagged;
    int m_nOptionTagNo = -1;
    unsigned char m_ucOptionTagClass = 0;
    ByteString m_bsValue;
    ByteString m_bsOutput;
    unsigned char m_ucConstructed = 0;

private:
    static constexpr std::size_t maxHeader = 17;
    // The octets in front of the value, at most maxHeader; 0 on failure, with `m_nLastError` set and a frame.
    std::size_t putHeader(unsigned char* out, Here at);
    int takeContents(Octets lengthAndRest, int firstCode, Octets& contents);
    int keepValue(Octets contents);
    int failInLevels(const ByteBuilder& levels, int code, Here at = Here::now());
};

// A class of value: Self::type says all that the decoding needs.
template <class Self, class Base = ASN1Object> class ASN1Typed : public Base {
public:
    ASN1Typed() : Base(Self::type.tag) {}
    int fromASN1Object(ByteString& data) override { return this->decodeTyped(data, Self::type); }
};

// A value whose setValue forms all go through the one with a length, so that its test serves all three.
class ASN1CheckedValue : public ASN1Object {
public:
    using ASN1Object::ASN1Object;
    using ASN1Object::setValue;
    int setValue(ByteString& value) override;
    int setValue(const char* text) override;
};

} // namespace vrno
