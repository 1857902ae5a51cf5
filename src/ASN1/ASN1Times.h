// UTCTime and GeneralizedTime (X.680, 47 and 46): the text of the encoding and the instant that it means.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

// An instant is signed 32-bit seconds since 1970-01-01 00:00:00 UTC; dates before 1970 and after January 2038 fail. The range of
// each field is tested when a text is decoded or set. A field is read up to its first character that is not a digit, so two
// letters count as 0. The time zone of the machine has no effect.

// YYMMDDHHMM, then "Z", "SSZ", "+hhmm" or "SS+hhmm" (or with "-"). With an offset the seconds count as 0. Years below 50 are 20YY,
// all others 19YY.
class ASN1UTCTime : public ASN1Typed<ASN1UTCTime, ASN1CheckedValue> {
public:
    static constexpr const char* className = "ASN1UTCTime";
    static constexpr ASN1Type type{className, ASN1_TAG_UTCTIME, "TagType(%d) is not ASN1_TAG_UTCTIME"};

    // 1 and 2 as decodeTyped(); 3 for a malformed text, which stays in the value.
    int fromASN1Object(ByteString& data) override;
    using ASN1CheckedValue::setValue;
    // 1 for a malformed text, with the value unchanged; 2 on allocation failure.
    int setValue(const void* data, int length) override;
    // Writes the instant as YYMMDDHHMMSSZ; 1 if it is before 1970.
    int setGMTTime(int time);
    int getGMTTime() const { return m_GMTTime; }

    int m_GMTTime = 0;

private:
    int checkUTCTime(const void* data, int length);
};

// YYYYMMDDHHMMSS, an optional fraction, "Z". Octets between the seconds and the last octet are not tested.
class ASN1GeneralizedTime : public ASN1CheckedValue {
public:
    static constexpr const char* className = "ASN1GeneralizedTime";
    static constexpr ASN1Type type{className, ASN1_TAG_GENERALIZEDTIME, "TagType(%d) is not ASN1_TAG_GENERALIZEDTIME"};

    ASN1GeneralizedTime() : ASN1CheckedValue(type.tag) {}
    using ASN1CheckedValue::fromASN1Object; // the codec alone: neither tag nor text is tested
    using ASN1CheckedValue::setValue;
    // 1 for a malformed text, with the value unchanged; 2 on allocation failure.
    int setValue(const void* data, int length) override;
    // 1 and 2 as decodeTyped(); 3 for a malformed text. Without `check` a date out of range passes, with -1 as the instant.
    virtual int fromASN1Object(ByteString& data, bool check);
    // Writes the instant as YYYYMMDDHHMMSSZ, without the fraction; 1 if it is before 1970.
    int setGMTTime(int time, int fraction);
    int getGMTTime() const { return m_GMTTime; }

    int m_GMTTime = 0;
    int m_nFraction = 0; // the digits after the point as a number, at most INT_MAX

private:
    int checkGMTTime(const void* data, int length, bool check);
};

} // namespace vrno
