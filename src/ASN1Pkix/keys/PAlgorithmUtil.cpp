#include "ASN1Pkix/keys/PAlgorithmUtil.h"

#include "ASN1/ASN1OctetString.h"
#include "VNCrypto/VNCodes.h"

namespace vrno {

int PAlgorithmUtil::makeSymmetricAlgID(int alg, int mode, ByteString& iv, RAlgorithmIdentifier& out)
{
    if (alg != vnSeed) {
        const FailuresOf failed{*this, "makeAlgorithmID"};
        return failed(8, "nAlg", formatted("nAlg (%d) is unknown algorithm code.", alg));
    }
    if (mode != vnCbc) return fail(*this, 2, "pAlgOID", formatted("The nMode(%d) is not supported.", mode));
    if (out.setAlgorithm(oidSeedCbc, true) > 0) return fail(*this, 9, "pSymmetricAlg", out);
    const FailuresOf failed{*this, "PEnvelopedData", "makeSymmetricAlgID"}; // the class that builds the message
    ASN1OctetString asnIv;
    if (asnIv.setValue(iv) > 0) return failed(10, "asnIv", asnIv);
    out.setParameters(asnIv.toASN1Object());
    return asnIv.getLastError() > 0 ? failed(11, "asnIv", asnIv) : 0;
}

} // namespace vrno
