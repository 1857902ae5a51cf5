#include "VNCrypto/VNMac.h"

#include "VNCrypto/VNFailure.h"
#include "base/wipe.h"

namespace vrno {

int VNMac::GenerateMAC(int nAlgID, ByteString& key, ByteString& data, ByteString& out)
{
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, Here::now())) return code;
    SecretArea<128> mac;
    int length = sizeof mac.bytes;
    const int result =
        ZIRC_GenerateMAC(key.getBytes(), key.getLength(), algorithm, mac.bytes, &length, data.getBytes(), data.getLength());
    if (result != 0) return engineFailure(*this, 3, "ZIRC_GenerateMAC", result);
    if (out.setData(mac.bytes, length) > 0) return engineFailure(*this, 3, "ZIRC_GenerateMAC", ZIRC_MEMORY_ERROR);
    return 0;
}

int VNMac::ChainMAC(int nAlgID, ByteString& key, ByteString& firstLinks, int furtherLinks, ByteString& out)
{
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, Here::now())) return code;
    SecretArea<128> mac;
    int length = sizeof mac.bytes;
    const int result = ZIRC_ChainMAC(key.getBytes(), key.getLength(), algorithm, mac.bytes, &length, firstLinks.getBytes(),
                                     firstLinks.getLength(), furtherLinks);
    if (result != 0) return engineFailure(*this, 3, "HMAC_Chain", result);
    if (out.setData(mac.bytes, length) > 0) return engineFailure(*this, 3, "HMAC_Chain", ZIRC_MEMORY_ERROR);
    return 0;
}

} // namespace vrno
