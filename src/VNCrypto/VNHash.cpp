#include "VNCrypto/VNHash.h"

#include "VNCrypto/VNFailure.h"
#include "base/wipe.h"

namespace vrno {

int VNHash::DigestData(int nAlgID, ByteString& in, ByteString& out, int nIterations)
{
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, Here::now())) return code;
    SecretArea<256> area; // the digest of a password may be a key
    unsigned char* const digest = area.bytes;
    int length = sizeof area.bytes;
    int result = ZIRC_DigestData(algorithm, digest, &length, in.getBytes(), in.getLength());
    if (result != 0) return engineFailure(*this, 4, "ZIRC_DigestData", result);
    for (int i = 1; i < nIterations; ++i) {
        int room = sizeof area.bytes;
        result = ZIRC_DigestData(algorithm, digest, &room, digest, length);
        if (result != 0) return engineFailure(*this, 3, "ZIRC_DigestData", result);
        length = room;
    }
    if (out.setData(digest, length) > 0) return engineFailure(*this, 4, "ZIRC_DigestData", ZIRC_MEMORY_ERROR);
    return 0;
}

} // namespace vrno
