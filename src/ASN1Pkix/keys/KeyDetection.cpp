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

KeyFamily keyFamily(const ByteString& oid)
{
    static constexpr struct {
        const char* oid;
        KeyFamily family;
    } known[] = {
        {"1 2 840 113549 1 1 1", KeyFamily::rsa},          {"1 2 410 200004 1 1", KeyFamily::kcdsa},
        {"1 2 410 200004 1 21", KeyFamily::kcdsa},         {"1 2 840 10040 4 1", KeyFamily::dsa},
        {"1 2 840 10046 2 1", KeyFamily::diffieHellman},   {"1 2 840 10045 2 1", KeyFamily::elliptic},
        {"1 2 410 200004 1 100 2 1", KeyFamily::elliptic}, {"1 2 840 10045 4 1", KeyFamily::elliptic},
    };
    for (const auto& row : known) {
        if (oid == row.oid) return row.family;
    }
    return KeyFamily::unknown;
}

static const Refusal& refusalOf(const KeySide& side, KeyFamily family)
{
    if (family == KeyFamily::dsa) return side.dsa;
    if (family == KeyFamily::diffieHellman) return side.diffieHellman;
    if (family == KeyFamily::elliptic) return side.elliptic;
    return side.unknown;
}

int refuseFamily(PObject& object, const KeySide& side, KeyFamily family, const ByteString& oid)
{
    const FailuresOf failed{object, side.className, side.detection};
    const Refusal& refusal = refusalOf(side, family);
    return failed(refusal.code, side.oidName, formatted(refusal.message, oid.getText()));
}

// ---- RSA ----

int rsaKeyCode(int modulusLength)
{
    if (modulusLength == 128) return vnRsa1024;
    if (modulusLength == 256) return vnRsa2048;
    return 0;
}

// ---- signatures ----

int signatureCode(int keyCode, int hashAlg, bool isPss)
{
    static constexpr struct {
        int hashAlg;
        bool isPss;
        int code1024, code2048;
    } rsa[] = {
        {vnMd5, false, vnMd5WithRsa1024, vnMd5WithRsa2048},
        {vnSha1, false, vnSha1WithRsa1024, vnSha1WithRsa2048},
        {vnSha1, true, vnSha1WithRsaPss1024, vnSha1WithRsaPss2048},
        {vnSha256, false, vnSha256WithRsa1024, vnSha256WithRsa2048},
    };
    if (keyCode == vnSha1WithKcdsa1024) return keyCode;
    for (const auto& row : rsa) {
        if (row.hashAlg == hashAlg && row.isPss == isPss) return keyCode == vnRsa1024 ? row.code1024 : row.code2048;
    }
    return 0;
}

int refuseSignature(PObject& object, const KeySide& side, int keyCode, int hashAlg, bool isPss)
{
    const FailuresOf failed{object, side.className, side.signature};
    const bool isKnownDigest = signatureCode(keyCode, hashAlg, false) != 0;
    if (isPss && isKnownDigest) return failed(side.pssCode, "nHashAlgo", "The SHA256, MD5 With RSA-PSS is not supported.");
    const int code = keyCode == vnRsa1024 ? side.hashCode1024 : side.hashCode2048;
    return failed(code, "nHashAlgo", formatted("The Hash algorithm (%d) does not suppoted for RSA signature.", hashAlg));
}

// ---- KCDSA ----

// Copies the octets of one number; false for a negative one and on allocation failure.
static bool copyNumber(RKCDSAParameters& from, ByteString& (RKCDSAParameters::*get)(), RKCDSAParameters& to,
                       int (RKCDSAParameters::*set)(ByteString&))
{
    ByteString& octets = (from.*get)();
    return from.getLastError() == 0 && (to.*set)(octets) == 0;
}

int kcdsaDomain(PObject& object, const KeySide& side, ByteString& parameters, int hashAlg, ByteString& domain)
{
    using Parameters = RKCDSAParameters;
    constexpr int supportedLength = 128;
    const FailuresOf failed{object, side.className, side.detection};
    Parameters kcdsaParams, reduced;
    if (kcdsaParams.fromASN1Object(parameters) > 0) return failed(side.domainCode, "kcdsaParams", kcdsaParams);
    const bool isReduced = copyNumber(kcdsaParams, &Parameters::getP, reduced, &Parameters::setP) &&
                           copyNumber(kcdsaParams, &Parameters::getQ, reduced, &Parameters::setQ) &&
                           copyNumber(kcdsaParams, &Parameters::getG, reduced, &Parameters::setG);
    if (reduced.outOfMemory()) return failed(side.domainCode, "kcdsaParams", reduced);
    if (!isReduced) return failed(side.domainCode, "kcdsaParams", kcdsaParams);
    domain.swap(reduced.toASN1Object());
    if (reduced.getLastError() > 0) return failed(side.domainCode, "kcdsaParams", reduced);
    if (hashAlg != vnSha1) return failed(9, side.hashName, "Only support sha1WithKCDSA, has160WithKCDSA.");
    const int length = reduced.getP().getLength();
    if (reduced.getLastError() > 0) return failed(side.domainCode, "kcdsaParams", reduced);
    if (length == supportedLength) return 0;
    return failed(12, keySizeName, formatted("The SHA1 with KCDSA %dbit is not supported.", bitLength(length)));
}

} // namespace vrno
