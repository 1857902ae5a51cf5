#include "ASN1Pkix/keys/Pkcs8Schemes.h"

#include "ASN1Pkix/keys/PAlgorithmUtil.h"

namespace vrno {

namespace {

constexpr const char* oidSeedCbcWithSha1 = "1 2 410 200004 1 15";
constexpr const char* oidSeedCbcPkcs12 = "1 2 410 200004 1 4 2";

constexpr Pkcs8Scheme pbkdf1{KeyDerivation::pbkdf1, oidSeedCbcWithSha1, seedKeyLength, seedIvLength};
constexpr Pkcs8Scheme pbkdf1FixedIv{KeyDerivation::pbkdf1, oidSeedCbc, seedKeyLength, 0, "4820913756482091"};
constexpr Pkcs8Scheme pkcs12{KeyDerivation::pkcs12, oidSeedCbcPkcs12, seedKeyLength, seedIvLength};
constexpr Pkcs8Scheme pbes2{KeyDerivation::pbkdf2, oidSeedCbc, seedKeyLength, seedIvLength};
// For codes without a scheme: SEED takes no key of 20 bytes, so the encryption fails.
constexpr Pkcs8Scheme none{KeyDerivation::pbkdf1, oidSeedCbc, 20, 0};

constexpr Pkcs8Identifier identifiers[] = {
    {"1 2 840 113549 1 5 1", 1, "The MD2 or DES algorithm is not supported."},
    {"1 2 840 113549 1 5 4", 2, "The MD2 or RC2 algorithm is not supported."},
    {"1 2 840 113549 1 5 3", 3, "The MD5 or DES algorithm is not supported."},
    {"1 2 840 113549 1 5 6", 4, "The MD5 or RC2 algorithm is not supported."},
    {"1 2 840 113549 1 5 10", 5, "The SAH1 or DES algorithm is not supported."},
    {"1 2 840 113549 1 5 11", 6, "The SAH1 or RC2 algorithm is not supported."},
    {oidSeedCbcWithSha1, 0, nullptr, &pbkdf1, &pbkdf1},
    {oidSeedCbc, 0, nullptr, &pbkdf1FixedIv, &pbes2},
    {"2 16 840 1 101 3 4 1 2", 8, "The AES128 algorithm is not supported."},
    {oidSeedCbcPkcs12, 0, nullptr, &pkcs12, &pbes2},
    {"1 2 410 100001 1 7", 9, "The NEAT algorithm is not supported."},
    {"1 2 410 100001 1 8", 9, "The NEAT algorithm is not supported."},
    {"1 2 410 100001 1 3", 9, "The NEAT algorithm is not supported."},
    {"1 2 410 200004 5 100 2 2", 9, "The ARIA algorithm is not supported."},
    {"1 2 410 200004 5 100 2 3", 9, "The ARIA algorithm is not supported."},
    {"1 2 410 200004 5 100 2 1", 9, "The ARIA algorithm is not supported."},
    {"1 2 840 113549 1 12 1 4", 9, "The SHA1 or 3DES algorithm is not supported."},
    {"1 3 14 3 2 7", 10, "The DES algorithm is not supported."},
    {"1 2 840 113549 3 7", 11, "The 3DES algorithm is not supported."},
    {"1 2 840 113549 1 12 1 3", 12, "The 3DES algorithm is not supported."},
    {oidRc2Cbc, 1, "The RC2 algorithm is not supported."},
    {oidRc5Cbc, 2, "The RC5 algorithm is not supported."},
};

} // namespace

const Pkcs8Scheme& pkcs8Scheme(int code)
{
    if (code >= schemePbes2For16) return pbes2;
    if (code == schemePbkdf1) return pbkdf1;
    if (code == schemePbkdf1FixedIv) return pbkdf1FixedIv;
    return none;
}

const Pkcs8Identifier* findPkcs8Identifier(const ByteString& oid)
{
    for (const Pkcs8Identifier& known : identifiers) {
        if (oid == known.oid) return &known;
    }
    return nullptr;
}

} // namespace vrno
