#include "VNCrypto/VNMac.h"

#include "VNCrypto/VNFailure.h"

namespace vrno {

int VNMac::GenerateMAC(int nAlgID, ByteString& key, ByteString& data, ByteString& out)
{
    int engine = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, engine, Here::now())) return code;
    unsigned char mac[128];
    int length = sizeof mac;
    const int result = ZIRC_GenerateMAC(key.getBytes(), key.getLength(), engine, mac, &length, data.getBytes(), data.getLength());
    if (result != 0) return engineFailure(*this, 3, "ZIRC_GenerateMAC", result);
    if (out.setData(mac, length) > 0) return engineFailure(*this, 3, "ZIRC_GenerateMAC", ZIRC_MEMORY_ERROR);
    return 0;
}

} // namespace vrno
