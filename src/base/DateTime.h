// A small clock: broken-down time, the zone's offset, time as text.
#pragma once

#include "base/ByteString.h"

namespace vrno {

class DateTime {
public:
    // All time fields 0; offset and daylight flag as the process found them at its first DateTime.
    DateTime();
    virtual ~DateTime() = default;

    // Breaks down seconds since 1970-01-01 00:00:00 UTC, as local time or as UTC. A local time brings its own daylight
    // flag, so that a summer's time stays what it is when it is formatted in winter. If the system cannot break the
    // value down, the fields stay as they were.
    void setTime(int value, bool local);

    // The fields as text by the conversions of strftime, up to 1023 bytes; empty when that fails.
    ByteString& formatTime(const char* fmt);

    // Seconds to add to local time for UTC: -32400 where local time runs nine hours ahead.
    int getZoneOffset() const { return m_nZoneOffset; }

    int m_nYear = 0;  // with its century
    int m_nMonth = 0; // from 1
    int m_nDay = 0;
    int m_nHour = 0;
    int m_nMinute = 0;
    int m_nSecond = 0;
    int m_nZoneOffset = 0;
    int m_nDstFlag = 0;
    ByteString m_bsText;
};

} // namespace vrno
