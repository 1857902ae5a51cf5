// The base of all ASN.1 values, with the codec for tags and lengths (X.690) that all of them use.
#pragma once

#include "ASN1/tags.h"
#include "base/Trail.h"

namespace vrno {

class ByteBuilder;

// The name of a value class, its universal tag, and the message for another tag, whose number is formatted into it.
struct ASN1Type {
    const char* className;
    unsigned char tag;
    const char* mismatch;
};

// A value holds the contents octets of one element and how the element is tagged. Decoding reads BER: all three length forms,
// minimal or not, and tag numbers of up to three octets outside the universal class. Octets after the element are ignored.
// Encoding writes minimal definite lengths.
//
// An operation that returns a code returns 0 or the number of the failed check. One with a byte string as its result sets
// `m_nLastError` to such a code and returns `m_bsOutput`, which the next such operation replaces. Each failure adds a frame.
class ASN1Object : public Trailed {
public:
    static constexpr const char* className = "ASN1Object";

    ASN1Object() = default;
    explicit ASN1Object(unsigned char primitiveTag) : m_ucPrimitiveTag(primitiveTag) {}

    virtual ByteString& toASN1Object();
    // A context, application or private tag (option tag) in constructed form is read as an explicit tag, in primitive form as an
    // implicit one; with a high tag number, only the octet 0xBF is explicit. If an explicit tag contains another option tag, the
    // value is that whole element. After a failure the tag fields are set as far as they were read.
    virtual int fromASN1Object(ByteString& data);
    // Copy `value` and return 0, or 2 on allocation failure. Classes that test the text return 1 for a malformed one.
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

    // Classifies one tag octet. An option tag does not change `primitiveTag`, a universal one does not change `optionTagNo`, a
    // high tag number changes neither. `optionTagClass` always gets the top three bits. 1 for an unsupported universal tag.
    int CheckASN1Member(unsigned char tag, unsigned char* primitiveTag, unsigned char* taggedType, int* optionTagNo,
                        unsigned char* optionTagClass);

    // Reads a base-128 number (X.690, 8.1.2.4.2 and 8.19.2) of up to four octets within `length`. With `hasLeadOctet` the first is
    // a tag octet, which is counted but not read. Returns the number of octets, or 0 on failure.
    int GetHighTag(const unsigned char* data, int length, int* tagValue, bool hasLeadOctet);

    // Finds the two end-of-contents octets that close the contents at `data`. It skips elements of definite length and searches
    // those of indefinite length, without recursion. 0 with the length of the contents, or a code.
    int findIndefiniteLengEnd(const unsigned char* data, int length, int* contentLength);

    // Both return the number of octets written: 1 to 5, and one more with the lead octet.
    static int PutLength(unsigned int length, unsigned char* out);
    int PutHighTag(unsigned int value, unsigned char* out, bool withLeadOctet) const;

    // The big-endian value of `count` octets; 0 for a count below 1. The largest std::size_t for any value above it.
    static std::size_t GetLengValue(const unsigned char* data, int count);

protected:
    enum class LengthForm { shortForm, longForm, indefinite };

    // The length octets before some contents. `value` is the length of the contents. It is the largest std::size_t, which never
    // fits, if it is larger than that or if length octets are missing. In the indefinite form it has no meaning.
    struct Length {
        LengthForm form;
        std::size_t octets;
        std::size_t value;

        // Whether length octets and contents lie within `available` octets.
        bool fit(std::size_t available) const { return octets <= available && value <= available - octets; }
    };
    static Length readLength(Octets data);

    // The tag of the element at the start of some octets.
    struct ElementTag {
        unsigned char primitiveTag = ASN1_TAG_ANY;
        unsigned char taggedType = notTagged;
        int number = -1;
        unsigned char tagClass = 0;
        std::size_t octets = 1;
        bool isExplicit = false;
    };
    enum TagRefusal { tagTaken = 0, tagNoMember = 1, tagTooLong = 2 };
    // `data` must not be empty. A refusal adds the frame of CheckASN1Member or GetHighTag.
    TagRefusal readTag(Octets data, ElementTag& tag);

    // Copies the octets to `m_bsOutput`; `m_nLastError` 1 on allocation failure.
    ByteString& giveOutput(const void* data, std::size_t length, Here at = Here::now());

    // The end of a setter that has filled `m_bsValue`: returns `result`, and adds a frame if the allocation failed.
    int valueSet(int result, Here at = Here::now());

    // As toASN1Object(), but the result takes over the block of the value, so no second block is needed. The value is empty then.
    ByteString& encodeInPlace();

    // Decodes a typed value. 1: the element does not decode; 2: it has another universal tag.
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
    // Writes the octets before the value, at most maxHeader. Returns their number; 0 on failure, with `m_nLastError` and a frame.
    std::size_t putHeader(unsigned char* out, Here at);
    int takeContents(Octets lengthAndRest, int firstCode, Octets& contents);
    int keepValue(Octets contents);
    int failInLevels(const ByteBuilder& levels, int code, Here at = Here::now());
};

// The base of a value class whose decoding needs only Self::type.
template <class Self, class Base = ASN1Object> class ASN1Typed : public Base {
public:
    ASN1Typed() : Base(Self::type.tag) {}
    int fromASN1Object(ByteString& data) override { return this->decodeTyped(data, Self::type); }
};

// A value whose three forms of setValue() all call the one with a length, so that its test serves all of them.
class ASN1CheckedValue : public ASN1Object {
public:
    using ASN1Object::ASN1Object;
    using ASN1Object::setValue;
    int setValue(ByteString& value) override;
    int setValue(const char* text) override;
};

} // namespace vrno
