#include "base/DateTime.h"

#include "platform/platform.h"

#include <atomic>
#include <tuple>

namespace vrno {

// Both are read once in a process. Threads that write one at the same time write the same value.
static constexpr int notRead = 9999;
static constinit std::atomic<int> daylightCache = notRead;
static constinit std::atomic<int> zoneCache = notRead;

static int readDaylightFlag()
{
    std::tm now{};
    return platform::localTime(platform::wallClock().seconds, now) ? now.tm_isdst : 0;
}

// The local and the UTC fields of this moment are both converted as local time. The difference is the offset of the zone.
static int readZoneOffset()
{
    const auto seconds = platform::wallClock().seconds;
    std::tm local{}, utc{};
    if (!platform::localTime(seconds, local) || !platform::utcTime(seconds, utc)) return 0;
    return static_cast<int>(std::mktime(&utc) - std::mktime(&local));
}

static int cached(std::atomic<int>& cache, int (*read)())
{
    int value = cache.load(std::memory_order_relaxed);
    if (value == notRead) {
        value = read();
        cache.store(value, std::memory_order_relaxed);
    }
    return value;
}

DateTime::DateTime() : m_nZoneOffset(cached(zoneCache, readZoneOffset)), m_nDstFlag(cached(daylightCache, readDaylightFlag)) {}

void DateTime::setTime(int value, bool local)
{
    std::tm fields{};
    if (!(local ? platform::localTime(value, fields) : platform::utcTime(value, fields))) return;
    m_nYear = fields.tm_year + 1900;
    m_nMonth = fields.tm_mon + 1;
    m_nDay = fields.tm_mday;
    m_nHour = fields.tm_hour;
    m_nMinute = fields.tm_min;
    m_nSecond = fields.tm_sec;
    if (local) m_nDstFlag = fields.tm_isdst;
    m_converted = fields;
}

// What formatTime() takes from the fields.
static auto fieldsOf(const std::tm& t)
{
    return std::tie(t.tm_year, t.tm_mon, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, t.tm_isdst);
}

ByteString& DateTime::formatTime(const char* fmt)
{
    m_bsText.clear();
    std::tm fields{};
    fields.tm_year = m_nYear - 1900;
    fields.tm_mon = m_nMonth - 1;
    fields.tm_mday = m_nDay;
    fields.tm_hour = m_nHour;
    fields.tm_min = m_nMinute;
    fields.tm_sec = m_nSecond;
    fields.tm_isdst = m_nDstFlag;
    // Normalising looks at the file of the time zone. It would not change what the system has converted.
    if (fieldsOf(fields) != fieldsOf(m_converted) && std::mktime(&fields) == static_cast<std::time_t>(-1)) return m_bsText;
    char text[1024] = {};
    // The format is the caller's own.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    if (std::strftime(text, sizeof text, fmt, &fields) > 0) m_bsText = text;
#pragma GCC diagnostic pop
    return m_bsText;
}

} // namespace vrno
