#include "VNCrypto/VNHash.h"

#include "VNCrypto/VNFailure.h"

namespace vrno {

int VNHash::DigestData(int nAlgID, ByteString& in, ByteString& out, int nIterations)
{
    int engine = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, engine, Here::now())) return code;
    unsigned char digest[256];
    int length = sizeof digest;
    int result = ZIRC_DigestData(engine, digest, &length, in.getBytes(), in.getLength());
    if (result != 0) return engineFailure(*this, 4, "ZIRC_DigestData", result);
    for (int i = 1; i < nIterations; ++i) {
        int room = sizeof digest;
        result = ZIRC_DigestData(engine, digest, &room, digest, length);
        if (result != 0) return engineFailure(*this, 3, "ZIRC_DigestData", result);
        length = room;
    }
    if (out.setData(digest, length) > 0) return engineFailure(*this, 4, "ZIRC_DigestData", ZIRC_MEMORY_ERROR);
    return 0;
}

} // namespace vrno
