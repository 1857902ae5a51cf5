#include "ASN1Pkix/keys/KeyDetection.h"

#include "ASN1Pkix/records/RKeys.h"
#include "VNCrypto/VNCodes.h"

namespace vrno {

const KeySide privateSide{
    .className = "PPrivateKey",
    .detection = "GetPrivateKeyAlgorithm",
    .oidName = "bsPrivateKeyAlgorithm",
    .dsa = {26, "The DSA is not supported."},
    .diffieHellman = {34, "The DH is not supported."},
    .elliptic = {49, "The ECDSA and ECKCDSA are not supported"},
    .unknown = {50, "bsPrivateKeyAlgorithm(%s) is unknwon algorithm."},
    .rsaName = "rsaPrivateKey",
    .rsaSize = {5, "The RSA %dbit is not supported."},
    .rsaEncodeCode = 6,
    .domainCode = 8,
    .hashName = "nHashAlg",
    .signature = "genSignature",
    .pssCode = 11,
    .hashCode1024 = 12,
    .hashCode2048 = 13,
};

const KeySide publicSide{
    .className = "PPublicKey",
    .detection = "GetPublicKeyAlgorithm",
    .oidName = "bsPublicKeyAlgorithm",
    .dsa = {21, "DSA is not supported"},
    .diffieHellman = {29, "DH is not supported"},
    .elliptic = {43, "The ECDSA and ECKCDSA are not supported"},
    .unknown = {42, "bsPublicKeyAlgorithm(%s) is unknwon algorithm."},
    .rsaName = "rsaPublicKey",
    .rsaSize = {2, "nLen(%d) is not proper RSA public key length."},
    .rsaEncodeCode = 3,
    .domainCode = 5,
    .hashName = "nHashAlgorithm",
    .signature = "verifySignature",
    .pssCode = 6,
    .hashCode1024 = 9,
    .hashCode2048 = 10,
};

// ---- the family ----

namespace {

struct Family {
    const char* oid;
    KeyFamily family;
    Refusal KeySide::*refusal = nullptr;
};

constexpr Family families[] = {
    {"1 2 840 113549 1 1 1", KeyFamily::rsa},
    {"1 2 410 200004 1 1", KeyFamily::kcdsa},
    {"1 2 410 200004 1 21", KeyFamily::kcdsa},
    {"1 2 840 10040 4 1", KeyFamily::refused, &KeySide::dsa},
    {"1 2 840 10046 2 1", KeyFamily::refused, &KeySide::diffieHellman},
    {"1 2 840 10045 2 1", KeyFamily::refused, &KeySide::elliptic},
    {"1 2 410 200004 1 100 2 1", KeyFamily::refused, &KeySide::elliptic},
    {"1 2 840 10045 4 1", KeyFamily::refused, &KeySide::elliptic},
};

} // namespace

static const Family* findFamily(const ByteString& oid)
{
    const auto* const end = std::end(families);
    const auto* const known = std::find_if(std::begin(families), end, [&](const Family& row) { return oid == row.oid; });
    return known == end ? nullptr : known;
}

bool needsPublicKey(const ByteString& oid)
{
    const Family* const known = findFamily(oid);
    return known && (known->family == KeyFamily::kcdsa || known->refusal == &KeySide::dsa);
}

KeyFamily keyFamily(PObject& object, const KeySide& side, const ByteString& oid, int* code)
{
    const Family* const known = findFamily(oid);
    if (known && known->family != KeyFamily::refused) return known->family;
    const Refusal& refusal = known ? side.*known->refusal : side.unknown;
    const FailuresOf failed{object, side.className, side.detection};
    *code = failed(refusal.code, side.oidName, formatted(refusal.message, oid.getText()));
    return KeyFamily::refused;
}

// ---- RSA ----

int rsaKeyCode(int modulusLength)
{
    if (modulusLength == 128) return vnRsa1024;
    if (modulusLength == 256) return vnRsa2048;
    return 0;
}

namespace {

struct SignatureRow {
    int hashAlg;
    bool pss;
    int code1024, code2048;
};

constexpr SignatureRow signatureRows[] = {
    {vnMd5, false, vnMd5WithRsa1024, vnMd5WithRsa2048},
    {vnSha1, false, vnSha1WithRsa1024, vnSha1WithRsa2048},
    {vnSha1, true, vnSha1WithRsaPss1024, vnSha1WithRsaPss2048},
    {vnSha256, false, vnSha256WithRsa1024, vnSha256WithRsa2048},
};

} // namespace

int rsaSignatureCode(PObject& object, const KeySide& side, int keyCode, int hashAlg, int pss, int* signatureCode)
{
    const FailuresOf failed{object, side.className, side.signature};
    const bool is1024 = keyCode == vnRsa1024;
    bool hasColumn = false;
    for (const SignatureRow& row : signatureRows) {
        if (row.hashAlg != hashAlg) continue;
        hasColumn = true;
        if (row.pss != (pss == 1)) continue;
        *signatureCode = is1024 ? row.code1024 : row.code2048;
        return 0;
    }
    if (hasColumn && pss == 1) {
        return failed(side.pssCode, "nHashAlgo", "The SHA256, MD5 With RSA-PSS is not supported.");
    }
    return failed(is1024 ? side.hashCode1024 : side.hashCode2048, "nHashAlgo",
                  formatted("The Hash algorithm (%d) does not suppoted for RSA signature.", hashAlg));
}

// ---- KCDSA ----

// Hands one number over as its octets; false for a negative one, or when there is no memory.
static bool copyNumber(RKCDSAParameters& from, ByteString& (RKCDSAParameters::*get)(), RKCDSAParameters& to,
                       int (RKCDSAParameters::*set)(ByteString&))
{
    ByteString& octets = (from.*get)();
    return from.getLastError() == 0 && (to.*set)(octets) == 0;
}

int kcdsaDomain(PObject& object, const KeySide& side, ByteString& parameters, int hashAlg, ByteString& domain)
{
    constexpr int supportedLength = 128;
    const FailuresOf failed{object, side.className, side.detection};
    RKCDSAParameters kcdsaParams, reduced;
    if (kcdsaParams.fromASN1Object(parameters) > 0) return failed(side.domainCode, "kcdsaParams", kcdsaParams);
    const bool isReduced = copyNumber(kcdsaParams, &RKCDSAParameters::getP, reduced, &RKCDSAParameters::setP) &&
                           copyNumber(kcdsaParams, &RKCDSAParameters::getQ, reduced, &RKCDSAParameters::setQ) &&
                           copyNumber(kcdsaParams, &RKCDSAParameters::getG, reduced, &RKCDSAParameters::setG);
    if (!isReduced && reduced.outOfMemory()) return failed(side.domainCode, "kcdsaParams", reduced);
    if (!isReduced) return failed(side.domainCode, "kcdsaParams", kcdsaParams);
    domain = reduced.toASN1Object();
    if (reduced.getLastError() > 0) return failed(side.domainCode, "kcdsaParams", reduced);
    if (domain.isOutOfMemory()) return failed.memory(side.domainCode, "kcdsaParams");
    if (hashAlg != vnSha1) {
        return failed(9, side.hashName, "Only support sha1WithKCDSA, has160WithKCDSA.");
    }
    const int length = reduced.getP().getLength();
    if (reduced.getLastError() > 0) return failed(side.domainCode, "kcdsaParams", reduced);
    if (length != supportedLength) {
        return failed(12, keySizeName, formatted("The SHA1 with KCDSA %dbit is not supported.", 8 * std::min(length, INT_MAX / 8)));
    }
    return 0;
}

} // namespace vrno
