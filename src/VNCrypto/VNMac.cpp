#include "VNCrypto/VNMac.h"

#include "VNCrypto/VNFailure.h"
#include "base/wipe.h"
#include "engine/digest/hmac.h"

namespace vrno {

int VNMac::GenerateMAC(int nAlgID, ByteString& key, ByteString& data, ByteString& out)
{
    int engine = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, engine, Here::now())) return code;
    SecretArea<128> mac;
    int length = sizeof mac.bytes;
    const int result =
        ZIRC_GenerateMAC(key.getBytes(), key.getLength(), engine, mac.bytes, &length, data.getBytes(), data.getLength());
    if (result != 0) return engineFailure(*this, 3, "ZIRC_GenerateMAC", result);
    if (out.setData(mac.bytes, length) > 0) return engineFailure(*this, 3, "ZIRC_GenerateMAC", ZIRC_MEMORY_ERROR);
    return 0;
}

int VNMac::ChainMAC(int nAlgID, ByteString& key, ByteString& first, int nTimes, ByteString& sum)
{
    const Here at = Here::now();
    if (nAlgID != VNAlgorithm::hmacSha1()) return unsupported(*this, 1, "The AlgID(%d) is not supported.", nAlgID, at);
    if (first.getLength() != static_cast<int>(sha1DigestLength)) return engineFailure(*this, 3, "HMAC_Chain", ZIRC_INVALID_DATA);
    if (sum.setData(first.getBytes(), first.getLength()) > 0) return engineFailure(*this, 3, "HMAC_Chain", ZIRC_MEMORY_ERROR);
    HMAC_State keyed;
    HMAC_Init(keyed, key.getBytes(), static_cast<std::size_t>(key.getLength()));
    HMAC_Chain(keyed, first.getBytes(), sum.mutableBytes(), nTimes);
    wipe(&keyed, sizeof keyed);
    return 0;
}

} // namespace vrno
