#include "ASN1/ASN1Times.h"

#include <array>
#include <chrono>
#include <climits>
#include <cstdint>
#include <ctime>

namespace vrno {

namespace {

// ---- fields ----

struct Fields {
    int year, month, day, hour, minute, second;
};

// The decimal number at the start of the octets, up to the first one that is not a digit; at most INT_MAX.
int number(Octets digits)
{
    std::int64_t value = 0;
    for (const unsigned char digit : digits) {
        if (digit < '0' || digit > '9') break;
        value = value * 10 + (digit - '0');
        if (value > INT_MAX) return INT_MAX;
    }
    return static_cast<int>(value);
}

bool inRange(int value, int first, int last) { return value >= first && value <= last; }

bool isDayOfMonth(const Fields& t)
{
    const std::chrono::year_month_day date{std::chrono::year{t.year}, std::chrono::month{static_cast<unsigned>(t.month)},
                                           std::chrono::day{static_cast<unsigned>(t.day)}};
    return date.ok();
}

// Seconds since 1970; the fields are `offsetMinutes` ahead of UTC. False if the instant is out of range.
bool toInstant(const Fields& t, int offsetMinutes, int& instant)
{
    using namespace std::chrono;
    const sys_days date{year{t.year} / month{static_cast<unsigned>(t.month)} / day{static_cast<unsigned>(t.day)}};
    const std::int64_t minutes = (std::int64_t{date.time_since_epoch().count()} * 24 + t.hour) * 60 + t.minute - offsetMinutes;
    const std::int64_t value = minutes * 60 + t.second;
    if (value < 0 || value > INT_MAX) return false;
    instant = static_cast<int>(value);
    return true;
}

bool toFields(int instant, Fields& t)
{
    using namespace std::chrono;
    if (instant < 0) return false;
    const sys_days date{days{instant / 86400}};
    const year_month_day ymd{date};
    const int second = instant % 86400;
    t = {int{ymd.year()},
         static_cast<int>(unsigned{ymd.month()}),
         static_cast<int>(unsigned{ymd.day()}),
         second / 3600,
         second / 60 % 60,
         second % 60};
    return true;
}

// The fields as in a time value: YYMMDDHHMMSSZ, or with the year in full YYYYMMDDHHMMSSZ.
int writeTime(const Fields& t, bool fullYear, ByteString& out)
{
    std::array<unsigned char, 15> text{};
    auto end = text.begin();
    const auto putTwo = [&end](int number) {
        *end++ = static_cast<unsigned char>('0' + number / 10);
        *end++ = static_cast<unsigned char>('0' + number % 10);
    };
    if (fullYear) putTwo(t.year / 100);
    for (const int number : {t.year % 100, t.month, t.day, t.hour, t.minute, t.second}) putTwo(number);
    *end++ = 'Z';
    return out.setData(text.data(), static_cast<int>(end - text.begin()));
}

// What the checks of the two classes share: the fields of a text, and failures with the text in their message.
template <class Time> class TextCheck {
public:
    TextCheck(Time& time, const void* data, int length, const char* method)
        : m_failed(time, method),
          m_text(static_cast<const unsigned char*>(data), data && length > 0 ? static_cast<std::size_t>(length) : 0)
    {}

    int length() const { return static_cast<int>(m_text.size()); }
    unsigned char at(std::size_t index) const { return m_text[index]; }
    int digits(std::size_t from, std::size_t count) const { return number(m_text.subspan(from, count)); }

    // `message` may contain one %s, which becomes the text.
    int fails(int code, const char* name, const char* message, Here here = Here::now())
    {
        const ByteString text(m_text.data(), length());
        if (text.isOutOfMemory()) return m_failed.memory(code, name, memoryFailure, here);
        return m_failed(code, name, formatted(message, text.getText()), here);
    }

private:
    const FailuresOf m_failed;
    const Octets m_text;
};

constexpr char outOfRangeMessage[] =
    "%s references a date before midnight, January 1, 1970, or if the calendar time cannot be represented.";
constexpr char beforeEpochMessage[] = "%d represents a date before midnight, January 1, 1970";

} // namespace

// ---- UTCTime ----

int ASN1UTCTime::checkUTCTime(const void* data, int length)
{
    TextCheck text(*this, data, length, "checkUTCTime");
    if (text.length() < 11) return text.fails(1, "length", "Invalid GMT Format");
    Fields t{text.digits(0, 2), text.digits(2, 2), text.digits(4, 2), text.digits(6, 2), text.digits(8, 2), 0};
    if (!inRange(t.minute, 0, 59)) return text.fails(2, "nMin", "%s : minutes error");
    if (!inRange(t.hour, 0, 23)) return text.fails(3, "nHour", "%s : hour error");
    if (!inRange(t.month, 1, 12)) return text.fails(4, "nMonth", "%s : month error");
    t.year += t.year < 50 ? 2000 : 1900;
    if (!isDayOfMonth(t)) return text.fails(t.month == 2 ? 5 : 6, "nDay", "%s : day error");

    int offset = 0; // minutes ahead of UTC
    switch (text.length()) {
    case 11:
        if (text.at(10) != 'Z') return text.fails(7, "length", "%s : UTC Time Format Error");
        break;
    case 13:
        if (text.at(12) != 'Z') return text.fails(8, "length", "%s : UTC Time Format Error");
        t.second = text.digits(10, 2);
        if (!inRange(t.second, 0, 59)) return text.fails(9, "length", "%s : sec error");
        break;
    case 15:
    case 17: {
        const std::size_t sign = static_cast<std::size_t>(text.length()) - 5;
        if (text.at(sign) != '+' && text.at(sign) != '-') return text.fails(10, "length", "%s : UTC Time Format Error");
        const int hours = text.digits(sign + 1, 2), minutes = text.digits(sign + 3, 2);
        if (!inRange(minutes, 0, 59)) return text.fails(11, "length", "%s : UTC Time Format Error");
        if (!inRange(hours, 0, 23)) return text.fails(12, "length", "%s : UTC Time Format Error");
        offset = (text.at(sign) == '+' ? 1 : -1) * (hours * 60 + minutes);
        break;
    }
    default:
        return text.fails(13, "length", "%s : UTC Time Format Error");
    }
    if (!toInstant(t, offset, m_GMTTime)) return text.fails(14, "data", outOfRangeMessage);
    return 0;
}

int ASN1UTCTime::fromASN1Object(ByteString& data)
{
    if (const int code = decodeTyped(data, type)) return code;
    if (checkUTCTime(m_bsValue.getBytes(), m_bsValue.getLength()) > 0) return fail(*this, 3, "checkUTCTime", *this);
    return 0;
}

int ASN1UTCTime::setValue(const void* data, int length)
{
    if (checkUTCTime(data, length) > 0) return 1;
    return ASN1Object::setValue(data, length);
}

int ASN1UTCTime::setGMTTime(int time)
{
    m_GMTTime = time;
    Fields t;
    if (!toFields(time, t)) return fail(*this, 1, "m_GMTTime", formatted(beforeEpochMessage, time));
    return valueSet(writeTime(t, false, m_bsValue));
}

// ---- GeneralizedTime ----

int ASN1GeneralizedTime::checkGMTTime(const void* data, int length, bool check)
{
    TextCheck text(*this, data, length, "CheckGMTTime");
    if (text.length() < 15) return fail(*this, 1, "length", "Invalid GMT Format");
    const std::size_t last = static_cast<std::size_t>(text.length()) - 1;
    if (text.at(14) == '.') m_nFraction = text.digits(15, last > 15 ? last - 15 : 0);
    const Fields t{text.digits(0, 4), text.digits(4, 2),  text.digits(6, 2),
                   text.digits(8, 2), text.digits(10, 2), text.digits(12, 2)};
    if (!inRange(t.second, 0, 59)) return text.fails(2, "nSec", "%s : seconds error");
    if (!inRange(t.minute, 0, 59)) return text.fails(3, "nMin", "%s : minutes error");
    if (!inRange(t.hour, 0, 23)) return text.fails(4, "nHour", "%s : hour error");
    if (!inRange(t.month, 1, 12)) return text.fails(5, "nMonth", "%s : month error");
    if (!isDayOfMonth(t)) return text.fails(t.month == 2 ? 6 : 7, "nDay", "%s : day error");
    if (text.at(last) != 'Z') return text.fails(8, "data", "%s : invalid format");
    if (toInstant(t, 0, m_GMTTime)) return 0;
    m_GMTTime = -1;
    return check ? text.fails(9, "data", outOfRangeMessage) : 0;
}

int ASN1GeneralizedTime::fromASN1Object(ByteString& data, bool check)
{
    if (const int code = decodeTyped(data, type)) return code;
    if (checkGMTTime(m_bsValue.getBytes(), m_bsValue.getLength(), check) > 0) return fail(*this, 3, "checkGMTTime", *this);
    return 0;
}

int ASN1GeneralizedTime::setValue(const void* data, int length)
{
    if (checkGMTTime(data, length, true) > 0) return fail(*this, 1, "checkGMTTime", *this);
    return ASN1Object::setValue(data, length);
}

int ASN1GeneralizedTime::setGMTTime(int time, int fraction)
{
    m_GMTTime = time;
    m_nFraction = fraction;
    Fields t;
    if (!toFields(time, t)) return fail(*this, 1, "m_GMTTime", formatted(beforeEpochMessage, time));
    return valueSet(writeTime(t, true, m_bsValue));
}

} // namespace vrno
