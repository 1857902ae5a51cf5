#include "ASN1/ASN1Object.h"

#include "base/ByteBuilder.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>

namespace vrno {

// ---- tags and lengths ----

int ASN1Object::CheckASN1Member(unsigned char tag, unsigned char* primitiveTag, unsigned char* taggedType, int* optionTagNo,
                                unsigned char* optionTagClass)
{
    const unsigned char number = tag & 0x1F;
    *optionTagClass = tag & 0xE0;
    if ((tag & classBits) != 0) {
        if (number == 0x1F) {
            *taggedType = highTagFollows;
        } else {
            *optionTagNo = number;
            *taggedType = (tag & constructedBit) ? explicitTag : implicitTag;
        }
        return 0;
    }
    *taggedType = notTagged;
    if (number == 31 || number == 29 || (number >= 13 && number <= 15)) {
        return fail(*this, 1, "tag", formatted("Tag(%d) is not  ASN1 Member", number));
    }
    *primitiveTag = number;
    return 0;
}

int ASN1Object::GetHighTag(const unsigned char* data, int length, int* tagValue, bool hasLeadOctet)
{
    constexpr int maxOctets = 4;
    m_nLastError = 0;
    int value = 0;
    for (int count = hasLeadOctet ? 1 : 0; count < length && count < maxOctets;) {
        const unsigned char octet = data[count++];
        value = value << 7 | (octet & 0x7F);
        if ((octet & 0x80) == 0) {
            *tagValue = value;
            return count;
        }
    }
    fail(*this, 0, "nTagValue", length < maxOctets ? "ASN1 Format(Length) Error" : "Too Long(>4)");
    return 0;
}

std::size_t ASN1Object::GetLengValue(const unsigned char* data, int count)
{
    constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
    std::size_t value = 0;
    for (int i = 0; i < count; ++i) {
        if (value > largest >> 8) return largest;
        value = value << 8 | data[i];
    }
    return value;
}

ASN1Object::Length ASN1Object::readLength(Octets data)
{
    constexpr std::size_t tooLarge = std::numeric_limits<std::size_t>::max();
    if (data.empty()) return {LengthForm::shortForm, 1, tooLarge};
    if (data[0] < 0x80) return {LengthForm::shortForm, 1, data[0]};
    if (data[0] == 0x80) return {LengthForm::indefinite, 1, 0};
    const std::size_t count = data[0] - 0x80U;
    if (count > data.size() - 1) return {LengthForm::longForm, 1 + count, tooLarge};
    return {LengthForm::longForm, 1 + count, GetLengValue(&data[1], static_cast<int>(count))};
}

ASN1Object::TagRefusal ASN1Object::readTag(Octets data, ElementTag& tag)
{
    if (CheckASN1Member(data[0], &tag.primitiveTag, &tag.taggedType, &tag.number, &tag.tagClass) > 0) return tagNoMember;
    tag.isExplicit = tag.taggedType == explicitTag || data[0] == 0xBF;
    if (tag.taggedType == highTagFollows) {
        tag.octets = static_cast<std::size_t>(GetHighTag(data.data(), static_cast<int>(data.size()), &tag.number, true));
        if (tag.octets == 0) return tagTooLong;
    }
    return tagTaken;
}

int ASN1Object::PutLength(unsigned int length, unsigned char* out)
{
    if (length < 0x80) {
        *out = static_cast<unsigned char>(length);
        return 1;
    }
    int octets = 1;
    while (octets < 4 && length >> 8 * octets != 0) ++octets;
    *out = static_cast<unsigned char>(0x80 + octets);
    for (int i = octets; i > 0; --i) *++out = static_cast<unsigned char>(length >> 8 * (i - 1) & 0xFF);
    return 1 + octets;
}

int ASN1Object::PutHighTag(unsigned int value, unsigned char* out, bool withLeadOctet) const
{
    const unsigned char* const start = out;
    if (withLeadOctet) *out++ = m_ucOptionTagClass | 0x1F;
    int digits = 1;
    while (digits < 5 && value >> 7 * digits != 0) ++digits;
    for (int i = digits - 1; i > 0; --i) *out++ = static_cast<unsigned char>(0x80 | (value >> 7 * i & 0x7F));
    *out++ = static_cast<unsigned char>(value & 0x7F);
    return static_cast<int>(out - start);
}

// ---- the indefinite form ----

int ASN1Object::findIndefiniteLengEnd(const unsigned char* data, int length, int* contentLength)
{
    const Octets all(data, static_cast<std::size_t>(length > 0 ? length : 0));
    ByteBuilder levels; // the open elements of indefinite length, from the outermost: 1 for an explicit tag, else 0
    std::size_t at = 0;
    while (at + 1 < all.size() && !levels.failed()) {
        if (all[at] == 0 && all[at + 1] == 0) {
            if (levels.empty()) {
                *contentLength = static_cast<int>(at);
                return 0;
            }
            levels.drop();
            at += 2;
            continue;
        }
        ElementTag tag;
        const TagRefusal refusal = readTag(all.subspan(at), tag);
        if (refusal == tagNoMember) return failInLevels(levels, fail(*this, 1, "checkASN1Member", *this));
        if (refusal == tagTooLong) return failInLevels(levels, fail(*this, 2, "GetHighTag", *this));
        at += tag.octets;
        const Length size = readLength(all.subspan(at));
        if (size.form == LengthForm::indefinite) {
            levels.add(tag.isExplicit ? 1 : 0);
            at += size.octets;
        } else {
            if (!size.fit(all.size() - at)) break;
            at += size.octets + size.value;
        }
    }
    if (levels.failed()) return failInLevels(levels, failMemory(*this, 5, "Value Length"));
    return failInLevels(levels, fail(*this, 5, "Value Length", "Error at finding Indefinitive Length End(0x00 0x00)"));
}

// Puts the frames of the open levels in front of the trail, in one step. A hostile input can have one level for each two octets.
// The frames of the outermost hundred are already longer than the context's message, so no more are made. Returns the code of the
// outermost level, or `code` if no level is open.
int ASN1Object::failInLevels(const ByteBuilder& levels, int code, Here at)
{
    constexpr int codeOther = 4, codeExplicit = 3;
    constexpr std::size_t maxFrames = 100;
    const Octets open = levels.octets().first(std::min(levels.octets().size(), maxFrames));
    if (open.empty()) return code;
    const auto frame = [&at](int levelCode) { return Trail::frameText(at, className, "Value Length", levelCode, true); };
    const ByteString frames[] = {frame(codeOther), frame(codeExplicit)};
    ByteBuilder outer;
    for (const unsigned char isExplicit : open) outer.append(frames[isExplicit].octets());
    m_bsErrorTrail.prepend(outer.octets());
    if (outer.failed() || frames[0].isOutOfMemory() || frames[1].isOutOfMemory()) m_bsErrorTrail.setOutOfMemory();
    return open.front() ? codeExplicit : codeOther;
}

// ---- decoding ----

// Gives the contents after the length octets at the start of `lengthAndRest`; both must lie in it. Codes: `firstCode` for the long
// form, +1 for contents without an end, +3 for the short form. +2 is not used, since contents with an end always fit.
int ASN1Object::takeContents(Octets lengthAndRest, int firstCode, Octets& contents)
{
    const FailuresOf failed{*this, "fromASN1Object"};
    const Length size = readLength(lengthAndRest);
    if (size.form == LengthForm::indefinite) {
        const Octets rest = lengthAndRest.subspan(size.octets);
        int length = 0;
        if (findIndefiniteLengEnd(rest.data(), static_cast<int>(rest.size()), &length) > 0) {
            return failed(firstCode + 1, "Value Length", *this);
        }
        contents = rest.first(static_cast<std::size_t>(length));
        return 0;
    }
    if (!size.fit(lengthAndRest.size())) {
        const int code = size.form == LengthForm::longForm ? firstCode : firstCode + 3;
        return failed(code, "nValueLen", "ASN1 Format(Length) Error");
    }
    contents = lengthAndRest.subspan(size.octets, size.value);
    return 0;
}

int ASN1Object::keepValue(Octets contents)
{
    if (m_bsValue.setData(contents.data(), static_cast<int>(contents.size())) == 0) return 0;
    return failMemory(*this, 13, "m_bsValue", memoryFailure, Here::now().in("fromASN1Object"));
}

int ASN1Object::fromASN1Object(ByteString& data)
{
    if (data.isOutOfMemory()) return failMemory(*this, 1, "baData");
    if (data.isNull()) return fail(*this, 1, "baData", "The bsData is NULL pointer.");
    if (data.getLength() < 2) return fail(*this, 1, "baData", "ASN1 Format(Length) Error");

    Octets element = data.octets(); // from the next tag to read to the end of the enclosing element
    std::size_t tagOctets = 1;
    if (CheckASN1Member(element[0], &m_ucPrimitiveTag, &m_ucTaggedType, &m_nOptionTagNo, &m_ucOptionTagClass) > 0) {
        return fail(*this, 2, "checkASN1Member", *this);
    }
    const bool highTag = m_ucTaggedType == highTagFollows;
    if (highTag) {
        m_ucTaggedType = element[0] == 0xBF ? explicitTag : implicitTag;
        tagOctets = static_cast<std::size_t>(GetHighTag(element.data(), data.getLength(), &m_nOptionTagNo, true));
        if (tagOctets == 0) return fail(*this, 3, "GetHighTag", *this);
    }

    Octets contents;
    if (m_ucTaggedType == explicitTag) {
        if (const int code = takeContents(element.subspan(tagOctets), 4, contents)) return code;
        if (contents.empty()) return keepValue(contents);
        unsigned char taggedType = notTagged, tagClass = 0;
        int tagNo = 0;
        if (CheckASN1Member(contents[0], &m_ucPrimitiveTag, &taggedType, &tagNo, &tagClass) > 0) {
            return fail(*this, 8, "checkASN1Member", *this);
        }
        if (taggedType != notTagged) return keepValue(contents);
        element = contents;
        tagOctets = 1;
    }
    if (!highTag || m_ucTaggedType == explicitTag) m_ucConstructed = element[0] & constructedBit;
    if (const int code = takeContents(element.subspan(tagOctets), 9, contents)) return code;
    return keepValue(contents);
}

int ASN1Object::decodeTyped(ByteString& data, const ASN1Type& type, Here at)
{
    if (ASN1Object::fromASN1Object(data) > 0) return failAs(*this, type.className, 1, "ASN1Object::fromASN1Object", *this, at);
    if (m_ucTaggedType == implicitTag) m_ucPrimitiveTag = type.tag; // nothing in the data can contradict it
    if (m_ucPrimitiveTag == type.tag) return 0;
    return failAs(*this, type.className, 2, "m_ucPrimitiveTag", formatted(type.mismatch, m_ucPrimitiveTag), at);
}

// ---- encoding ----

std::size_t ASN1Object::putHeader(unsigned char* out, Here at)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    const auto refuse = [this, at](int code, const char* name) {
        failOutput(*this, code, name, "ASN1 Format Error", at);
        return std::size_t{0};
    };
    if (m_bsValue.isOutOfMemory()) {
        failOutputMemory(*this, 3, "m_bsValue", at);
        return 0;
    }
    const bool isExplicit = m_ucTaggedType == explicitTag;
    const bool anyTag = m_ucPrimitiveTag == ASN1_TAG_ANY;
    const bool container = m_ucPrimitiveTag == ASN1_TAG_SEQUENCE || m_ucPrimitiveTag == ASN1_TAG_SET;
    if (anyTag && !(isExplicit && m_nOptionTagNo >= 0)) return refuse(1, "m_ucTaggedType");

    unsigned char inner[6]; // tag and length
    int innerLength = 0;
    if (!anyTag && m_ucTaggedType != implicitTag) {
        const bool constructed = container || m_ucConstructed == constructedBit;
        inner[innerLength++] = static_cast<unsigned char>(m_ucPrimitiveTag | (constructed ? constructedBit : 0));
    }
    const auto valueLength = static_cast<unsigned int>(m_bsValue.getLength());
    innerLength += PutLength(valueLength, inner + innerLength);

    int outerLength = 0; // tag of up to six octets and length
    if (m_ucTaggedType != notTagged) {
        if (m_nOptionTagNo < 0) return refuse(2, "m_nOptionTagNo");
        if (m_nOptionTagNo > 30) {
            outerLength = PutHighTag(static_cast<unsigned int>(m_nOptionTagNo), out, true);
        } else {
            const unsigned char form = !isExplicit && container ? constructedBit : 0;
            out[outerLength++] = static_cast<unsigned char>(m_ucOptionTagClass | m_nOptionTagNo | form);
        }
    }
    if (isExplicit) outerLength += PutLength(static_cast<unsigned int>(innerLength) + valueLength, out + outerLength);
    std::memcpy(out + outerLength, inner, static_cast<std::size_t>(innerLength));
    return static_cast<std::size_t>(outerLength + innerLength);
}

ByteString& ASN1Object::toASN1Object()
{
    unsigned char header[maxHeader];
    const std::size_t octets = putHeader(header, Here::now());
    if (octets == 0) return m_bsOutput;
    const Octets value = m_bsValue.octets();
    constexpr std::size_t maxLength = INT_MAX - 1; // the largest of a ByteString
    const std::size_t total = octets + value.size();
    unsigned char* const element = total <= maxLength ? m_bsOutput.makeRoom(static_cast<int>(total)) : nullptr;
    if (!element) return failOutputMemory(*this, 3, "m_bsOutput");
    std::memcpy(element, header, octets);
    std::memcpy(element + octets, value.data(), value.size());
    return m_bsOutput;
}

ByteString& ASN1Object::encodeInPlace()
{
    unsigned char header[maxHeader];
    const std::size_t octets = putHeader(header, Here::now().in("toASN1Object"));
    if (octets == 0) return m_bsOutput;
    m_bsOutput.swap(m_bsValue);
    if (m_bsOutput.prepend({header, octets}) > 0) return failOutputMemory(*this, 3, "m_bsOutput");
    return m_bsOutput;
}

ByteString& ASN1Object::giveOutput(const void* data, std::size_t length, Here at)
{
    if (m_bsOutput.setData(data, static_cast<int>(length)) > 0) return failOutputMemory(*this, 1, "m_bsOutput", at);
    return m_bsOutput;
}

// ---- plain access ----

int ASN1Object::valueSet(int result, Here at) { return result > 0 ? failMemory(*this, result, "m_bsValue", memoryFailure, at) : 0; }

int ASN1Object::setValue(ByteString& value)
{
    m_bsValue = value;
    return valueSet(m_bsValue.getError());
}

int ASN1Object::setValue(const void* data, int length) { return valueSet(m_bsValue.setData(data, length)); }

int ASN1Object::setValue(const char* text)
{
    m_bsValue = text;
    return valueSet(m_bsValue.getError());
}

int ASN1CheckedValue::setValue(ByteString& value)
{
    if (value.isOutOfMemory()) return ASN1Object::setValue(value);
    return setValue(value.getBytes(), value.getLength());
}

int ASN1CheckedValue::setValue(const char* text) { return setValue(text, text ? static_cast<int>(std::strlen(text)) : 0); }

void ASN1Object::setImplicitTag(int tagNo, unsigned char tagClass)
{
    m_ucTaggedType = implicitTag;
    m_nOptionTagNo = tagNo;
    m_ucOptionTagClass = tagClass;
}

void ASN1Object::setExplicitTag(int tagNo, unsigned char tagClass)
{
    m_ucTaggedType = explicitTag;
    m_nOptionTagNo = tagNo;
    m_ucOptionTagClass = static_cast<unsigned char>(tagClass + constructedBit);
}

} // namespace vrno
