// UTCTime and GeneralizedTime (X.680, 46 and 47): the text of the encoding, and beside it the instant that it names.
#pragma once

#include "ASN1/ASN1Object.h"

namespace vrno {

// An instant is signed 32-bit seconds since 1970-01-01 00:00:00 UTC; dates before 1970 and after January 2038 fail.
// Every field is tested when a text is decoded or set. Digits are read up to the first character that is none, so a pair
// of letters counts as 0. All of it is reckoned in UTC, whatever the zone of the machine.

// YYMMDDHHMM, then "Z", "SSZ", "+hhmm" or "SS+hhmm" (or with "-"). In the last two the seconds count as 0. Years below 50
// are 20YY.
class ASN1UTCTime : public ASN1Typed<ASN1UTCTime, ASN1CheckedValue> {
public:
    static constexpr const char* className = "ASN1UTCTime";
    static constexpr ASN1Type type{className, ASN1_TAG_UTCTIME, "TagType(%d) is not ASN1_TAG_UTCTIME"};

    // Beyond the codes of the tag: 3 for a malformed text, which stays in the value.
    int fromASN1Object(ByteString& data) override;
    using ASN1CheckedValue::setValue;
    // 1 for a malformed text, with the value as it was.
    int setValue(const void* data, int length) override;
    // The instant, written as YYMMDDHHMMSSZ; 1 for one before 1970.
    int setGMTTime(int time);
    int getGMTTime() const { return m_GMTTime; }

    int m_GMTTime = 0;

private:
    int checkUTCTime(const void* data, int length);
};

// YYYYMMDDHHMMSS, an optional fraction, "Z".
class ASN1GeneralizedTime : public ASN1CheckedValue {
public:
    static constexpr const char* className = "ASN1GeneralizedTime";
    static constexpr ASN1Type type{className, ASN1_TAG_GENERALIZEDTIME, "TagType(%d) is not ASN1_TAG_GENERALIZEDTIME"};

    ASN1GeneralizedTime() : ASN1CheckedValue(type.tag) {}
    using ASN1CheckedValue::fromASN1Object; // the codec alone: neither tag nor text is tested
    using ASN1CheckedValue::setValue;
    // 1 for a malformed text, with the value as it was.
    int setValue(const void* data, int length) override;
    // Beyond the codes of the tag: 3 for a malformed text. Without `check` a date outside the range passes as -1.
    virtual int fromASN1Object(ByteString& data, bool check);
    // The instant, written as YYYYMMDDHHMMSSZ without the fraction; 1 for one before 1970.
    int setGMTTime(int time, int fraction);
    int getGMTTime() const { return m_GMTTime; }

    int m_GMTTime = 0;
    int m_nFraction = 0; // the digits behind the point as a number, at most INT_MAX

private:
    int checkGMTTime(const void* data, int length, bool check);
};

} // namespace vrno
