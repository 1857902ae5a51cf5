#include "ASN1Pkix/keys/PCryptUtil.h"

#include "ASN1Pkix/keys/PPrivateKey.h"
#include "ASN1Pkix/keys/PPublicKey.h"
#include "VNCrypto/VNCodes.h"

#include <cstring>

namespace vrno {

static constexpr const char* textToSign = "Do this private key and this certificate belong together?";

int PCryptUtil::verifySignatureWithCert(ByteString& certificate, ByteString& privateKeyInfo)
{
    constexpr unsigned char isCertificate = 1;
    constexpr int withoutPss = 0;
    constexpr bool isVerifiedNext = true;
    ByteString text(textToSign, static_cast<int>(std::strlen(textToSign))), signature;
    if (text.isOutOfMemory()) return failMemory(*this, 1, "privateKey");
    PPrivateKey privateKey;
    if (privateKey.genSignature(privateKeyInfo, vnSha1, text, signature, &certificate, isCertificate, withoutPss, isVerifiedNext) >
        0) {
        return fail(*this, 1, "privateKey", privateKey);
    }
    PPublicKey publicKey;
    const int code = publicKey.verifySignatureWithCert(certificate, text, signature, vnSha1, withoutPss);
    return code > 0 ? fail(*this, 2, "publicKey", publicKey) : 0;
}

} // namespace vrno
