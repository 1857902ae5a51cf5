// Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime } (RFC 5280, 4.1.2.5).
#pragma once

#include "ASN1Pkix/records/RObject.h"

namespace vrno {

// Holds the choice and the instant, not the text.
class RTime : public RObject {
public:
    static constexpr const char* className = "RTime";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // Seconds since 1970-01-01 00:00:00 UTC.
    int getTime() const { return m_nTime; }

    enum Choice : unsigned char { nothing = 0, utcTime = 1, generalTime = 2 };
    unsigned char m_ucBitMask = nothing;
    int m_nTime = 0;
};

} // namespace vrno
