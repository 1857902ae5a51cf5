#include "VNCrypto/VNRandom.h"

#include "VNCrypto/VNFailure.h"

namespace vrno {

int VNRandom::GenerateRandom(int nAlgID, int nLength, ByteString& out)
{
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, Here::now())) return code;
    out.clear();
    if (nLength < 1) return 0;
    ByteString bytes;
    unsigned char* const ucRandom = bytes.makeRoom(nLength);
    if (!ucRandom) return failMemory(*this, 3, "ucRandom", "The ucRandom's memory allocation is failed.");
    if (const int result = ZIRC_GenerateRandom(algorithm, ucRandom, nLength, nullptr, 0)) {
        return engineFailure(*this, 4, "ZIRC_GenerateRandom", result);
    }
    out.swap(bytes);
    return 0;
}

} // namespace vrno
