#include "VNCrypto/VNSign.h"

#include "VNCrypto/VNFailure.h"

namespace vrno {

int VNSign::SignData(int nAlgID, ByteString& privateKey, ByteString& data, ByteString& out, bool isVerifiedNext)
{
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, Here::now())) return code;
    unsigned char signature[512]; // none has more than 256 bytes
    int length = sizeof signature;
    const int result = ZIRC_SignData(privateKey.getBytes(), privateKey.getLength(), algorithm, signature, &length, data.getBytes(),
                                     data.getLength(), isVerifiedNext);
    if (result != 0) return engineFailure(*this, 14, "ZIRC_SignData", result);
    if (out.setData(signature, length) > 0) return engineFailure(*this, 14, "ZIRC_SignData", ZIRC_MEMORY_ERROR);
    return 0;
}

int VNSign::VerifyData(int nAlgID, ByteString& publicKey, ByteString& data, ByteString& signature)
{
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, Here::now())) return code;
    const int result = ZIRC_VerifyData(publicKey.getBytes(), publicKey.getLength(), algorithm, signature.getBytes(),
                                       signature.getLength(), data.getBytes(), data.getLength());
    return result == 0 ? 0 : engineFailure(*this, 13, "ZIRC_VerifyData", result);
}

} // namespace vrno
