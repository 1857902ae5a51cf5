// A date and time as fields and as text, and the offset of the local time zone.
#pragma once

#include "base/ByteString.h"

#include <ctime>

namespace vrno {

class DateTime {
public:
    // All time fields are 0. Offset and daylight flag are those of the first DateTime of the process.
    DateTime();
    virtual ~DateTime() = default;

    // Sets the fields to seconds since 1970-01-01 00:00:00 UTC, as local time or as UTC. Local time also sets the daylight flag,
    // so that a time in summer is formatted correctly in winter. The fields are unchanged if the system cannot convert the value.
    void setTime(int value, bool local);

    // The fields as text, in the format of strftime, up to 1023 bytes; empty on failure.
    ByteString& formatTime(const char* fmt);

    // Seconds to add to local time to get UTC: -32400 if local time is nine hours ahead.
    int getZoneOffset() const { return m_nZoneOffset; }

    int m_nYear = 0;  // in full, as 2024
    int m_nMonth = 0; // 1 to 12
    int m_nDay = 0;
    int m_nHour = 0;
    int m_nMinute = 0;
    int m_nSecond = 0;
    int m_nZoneOffset = 0;
    int m_nDstFlag = 0;
    ByteString m_bsText;

private:
    std::tm m_converted{}; // as the system gave it in setTime()
};

} // namespace vrno
