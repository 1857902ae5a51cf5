#include "VNProcess/PExtKeyUsageUtil.h"

#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/Rendering.h"

namespace vrno {

int PExtKeyUsageUtil::parseExtKeyUsage(ByteString& value, ByteString& text)
{
    static constexpr OidName purposes[] = {
        {"1 3 6 1 5 5 7 3 1", "id-kp-serverAuth"},     {"1 3 6 1 5 5 7 3 2", "id-kp-clientAuth"},
        {"1 3 6 1 5 5 7 3 3", "id-kp-codeSigning"},    {"1 3 6 1 5 5 7 3 4", "id-kp-emailProtection"},
        {"1 3 6 1 5 5 7 3 5", "id-kp-ipsecEndSystem"}, {"1 3 6 1 5 5 7 3 6", "id-kp-ipsecTunnel"},
        {"1 3 6 1 5 5 7 3 7", "id-kp-ipsecUser"},      {"1 3 6 1 5 5 7 3 8", "id-kp-timeStamping"},
        {"1 3 6 1 5 5 7 3 9", "id-kp-OCSPSigning"},
    };
    RExtKeyUsageSyntax extKeyUsage;
    if (extKeyUsage.fromASN1Object(value) > 0) return fail(*this, 1, "extKeyUsage", extKeyUsage);
    text.clear();
    TextBuilder out;
    for (int i = 0; i < extKeyUsage.getCount(); ++i) {
        const ByteString& purpose = extKeyUsage.get(i);
        if (extKeyUsage.getLastError() > 0) return fail(*this, 2, "extKeyUsage", extKeyUsage);
        out << (i > 0 ? "\r\n" : "") << nameOrOid(purpose, purposes);
    }
    return finish(*this, out, text);
}

} // namespace vrno
