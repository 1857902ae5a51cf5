#include "ASN1Pkix/records/RTime.h"

#include "ASN1/ASN1Times.h"
#include "ASN1Pkix/records/Walk.h"

namespace vrno {

int RTime::fromASN1Object(ByteString& data)
{
    m_ucBitMask = nothing;
    ASN1Object asnObj;
    if (asnObj.fromASN1Object(data) > 0) return fail(*this, 1, "asnObj", asnObj);
    if (asnObj.getPrimitiveTag() == ASN1_TAG_UTCTIME) {
        ASN1UTCTime asnUtcTime;
        if (asnUtcTime.fromASN1Object(data) > 0) return fail(*this, 2, "asnUtcTime", asnUtcTime);
        m_nTime = asnUtcTime.getGMTTime();
        m_ucBitMask = utcTime;
        return 0;
    }
    if (asnObj.getPrimitiveTag() == ASN1_TAG_GENERALIZEDTIME) {
        ASN1GeneralizedTime asnGeneralTime;
        if (asnGeneralTime.fromASN1Object(data, true) > 0) return fail(*this, 3, "asnGeneralTime", asnGeneralTime);
        m_nTime = asnGeneralTime.getGMTTime();
        m_ucBitMask = generalTime;
        return 0;
    }
    return fail(*this, 4, "asnObj", "Unknown component is chosen.");
}

ByteString& RTime::toASN1Object()
{
    if (m_ucBitMask == utcTime) {
        ASN1UTCTime asnUtcTime;
        if (asnUtcTime.setGMTTime(m_nTime) > 0) return failOutput(*this, 1, "asnUtcTime", asnUtcTime);
        return relay(*this, asnUtcTime.toASN1Object(), asnUtcTime, "asnUtcTime");
    }
    if (m_ucBitMask == generalTime) {
        ASN1GeneralizedTime asnGeneralTime;
        if (asnGeneralTime.setGMTTime(m_nTime, 0) > 0) return failOutput(*this, 2, "asnGeneralTime", asnGeneralTime);
        return relay(*this, asnGeneralTime.toASN1Object(), asnGeneralTime, "asnGeneralTime");
    }
    return failOutput(*this, 3, "m_ucBitMask", "Any component is not chosen.");
}

} // namespace vrno
