// VRNO_BASE64_*: binary data as text.
#include "base/Base64.h"

#include "api/Call.h"

using namespace vrno;

int VRNO_BASE64_Encode(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pData, VRNO_BINSTR* pEncData)
{
    Call call(pCtx);
    Octets data;
    ByteString text;
    if (!call.input(pData, u8"인코딩할 데이터(pData)를 지정해 주세요."_ksc).output(NAMED(pEncData))) return call.code();
    if (!call.view(NAMED(pData), data)) return call.code();
    if (base64Encode(data, text) > 0) {
        return call.fail(VRNO_ERR_BASE64_ENCODE, u8"BASE64 인코딩을 실패하였습니다."_ksc, text.isOutOfMemory());
    }
    return call.handOver(text, pEncData);
}

int VRNO_BASE64_Decode(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pEncData, VRNO_BINSTR* pData)
{
    Call call(pCtx);
    Octets text;
    ByteString data;
    if (!call.input(pEncData, u8"디코딩할 데이터(pEncData)를 지정해 주세요."_ksc).output(NAMED(pData))) return call.code();
    if (!call.view(NAMED(pEncData), text)) return call.code();
    if (base64Decode(text, data) > 0) {
        return call.fail(VRNO_ERR_BASE64_DECODE, u8"BASE64 디코딩을 실패하였습니다."_ksc, data.isOutOfMemory());
    }
    return call.handOver(data, pData);
}
