#include "VNProcess/PIdentifyDataUtil.h"

#include "ASN1Pkix/records/RNames.h"
#include "text/UUnicode.h"

namespace vrno {

int PIdentifyDataUtil::parseIdentifyData(ByteString& value, ByteString& realName, ByteString& vid)
{
    constexpr const char* vidType = "1 2 410 200004 10 1 1 1";
    RIdentifyData identifyData;
    if (identifyData.fromASN1Object(value) > 0) return fail(*this, 1, "identifyData", identifyData);
    ByteString& ucs2 = identifyData.getRealName();
    if (identifyData.getLastError() > 0) return fail(*this, 2, "identifyData", identifyData);
    if (UUnicode::Unicode2KSC(ucs2, realName) > 0) {
        return failMemory(*this, 3, "UUnicode::Unicode2KSC", "Unicode2KSC is failed.");
    }
    vid.clear();
    if ((identifyData.getBitMask() & 0x01) == 0) return 0;

    ByteString& first = identifyData.getUserInfo(0);
    if (identifyData.getLastError() > 0) return fail(*this, 4, "identifyData", identifyData);
    RAttributeTypeAndValue attrTypeAndValue;
    if (attrTypeAndValue.fromASN1Object(first) > 0) return fail(*this, 5, "attrTypeAndValue", attrTypeAndValue);
    const ByteString& bsType = attrTypeAndValue.getType();
    if (attrTypeAndValue.getLastError() > 0) return fail(*this, 6, "attrTypeAndValue", attrTypeAndValue);
    if (bsType != vidType) return fail(*this, 7, "bsType", "AttrType is not OID_id_VID");
    vid = attrTypeAndValue.getValue();
    return vid.isOutOfMemory() ? failMemory(*this, 7, "vid") : 0;
}

} // namespace vrno
