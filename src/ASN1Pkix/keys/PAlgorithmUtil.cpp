#include "ASN1Pkix/keys/PAlgorithmUtil.h"

#include "ASN1/ASN1OctetString.h"
#include "VNCrypto/VNCodes.h"

namespace vrno {

int PAlgorithmUtil::makeSymmetricAlgID(int alg, int mode, ByteString& iv, RAlgorithmIdentifier& out)
{
    const Here at = Here::now();
    if (alg != vnSeed) {
        return fail(*this, 8, "nAlg", formatted("nAlg (%d) is unknown algorithm code.", alg), at.in("makeAlgorithmID"));
    }
    if (mode != vnCbc) return fail(*this, 2, "pAlgOID", formatted("The nMode(%d) is not supported.", mode));
    if (out.setAlgorithm(oidSeedCbc, true) > 0) return fail(*this, 9, "pSymmetricAlg", out);
    // The frames of the IV are told in the name of the class that the message is built by.
    const auto ivFailure = [&](int code, ASN1Object& value) {
        addTrailFrame(at.file, at.line, "PEnvelopedData", at.function, "asnIv", code, value.getErrorTrail().getText());
        return code;
    };
    ASN1OctetString asnIv;
    if (asnIv.setValue(iv) > 0) return ivFailure(10, asnIv);
    out.setParameters(asnIv.toASN1Object());
    return asnIv.getLastError() > 0 ? ivFailure(11, asnIv) : 0;
}

} // namespace vrno
