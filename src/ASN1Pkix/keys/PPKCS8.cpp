#include "ASN1Pkix/keys/PPKCS8.h"

#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/keys/PAlgorithmUtil.h"
#include "ASN1Pkix/keys/PPKCS12.h"
#include "ASN1Pkix/records/RPbe.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "VNCrypto/VNEncrypt.h"
#include "VNCrypto/VNHash.h"
#include "VNCrypto/VNMac.h"
#include "base/wipe.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace vrno {

namespace {

constexpr int schemePbkdf1 = 7, schemeFixedIv = 8, lastClassicScheme = 13, schemePbes2 = 24;
constexpr int saltLength = 8, seedKeyLength = 16, seedIvLength = 16;
constexpr int insidePbes2 = 2; // of m_nSchemeContext

constexpr const char* oidSeedWithSha1 = "1 2 410 200004 1 15";
constexpr const char* oidPbes2 = "1 2 840 113549 1 5 13";
constexpr const char* oidPbkdf2 = "1 2 840 113549 1 5 12";
constexpr const char* oidHmacSha1 = "1 3 6 1 5 5 8 1 2";
constexpr const char* oidRc2Cbc = "1 2 840 113549 3 2";
constexpr const char* oidRc5Cbc = "1 2 840 113549 3 9";

} // namespace

// ---- what the caller sets ----

int PPKCS8::setPassword(const char* password)
{
    m_nFlags &= ~static_cast<unsigned int>(passwordSet);
    m_bsPassword = password;
    if (m_bsPassword.isOutOfMemory()) return failMemory(*this, 1, "Password");
    m_nFlags |= passwordSet;
    return 0;
}

void PPKCS8::setEncAlgorithm(int scheme)
{
    m_nEncAlg = scheme;
    switch (scheme) {
    case schemePbkdf1:
        m_nDerivedLength = seedKeyLength;
        m_nIvLength = seedIvLength;
        m_pszSchemeOid = oidSeedWithSha1;
        break;
    case schemeFixedIv:
        m_nDerivedLength = seedKeyLength;
        m_nIvLength = m_bPkcs12Kdf ? seedIvLength : 0;
        m_nFixedIv = 1;
        m_pszSchemeOid = oidSeedCbc;
        break;
    case schemePbes2:
        m_nDerivedLength = seedKeyLength + seedIvLength;
        m_nIvLength = seedIvLength;
        m_pszSchemeOid = oidSeedCbc;
        break;
    default:
        break;
    }
}

int PPKCS8::setPrivateKeyInfo(ByteString& data)
{
    RPrivateKeyInfo privateKeyInfo;
    m_nFlags &= ~static_cast<unsigned int>(privateKeySet);
    if (privateKeyInfo.fromASN1Object(data) > 0) return fail(*this, 1, "privateKeyInfo", privateKeyInfo);
    if (m_bsPrivateKeyInfo.setData(data.getBytes(), data.getLength()) > 0) return failMemory(*this, 1, "privateKeyInfo");
    m_nFlags |= privateKeySet;
    return 0;
}

// ---- key derivation ----

int PPKCS8::PBE_Initialize(ByteString& data)
{
    if (m_nIterationCount < 1) {
        return fail(*this, 3, "m_nIterationCount", formatted("The iteration count(%d) is below 1.", m_nIterationCount));
    }
    if (data.getLength() > 0) {
        ByteString seed;
        VNHash hash;
        ByteString digest;
        if (seed.join(m_bsPassword.octets(), data.octets()) > 0) return failMemory(*this, 3, "m_bsSalt");
        if (hash.DigestData(m_nHashAlg, seed, digest, 1) > 0) return fail(*this, 3, "m_bsSalt", hash);
        if (m_bsSalt.setData(digest.getBytes(), saltLength) > 0) return failMemory(*this, 3, "m_bsSalt");
    }
    if (m_bPkcs12Kdf) {
        PPKCS12 pkcs12;
        const int count = m_nIterationCount;
        if (pkcs12.keyGenAsc(m_bsPassword, m_bsSalt, 1, count, m_nDerivedLength, m_bsKey) > 0)
            return fail(*this, 1, "pkcs12", pkcs12);
        if (pkcs12.keyGenAsc(m_bsPassword, m_bsSalt, 2, count, m_nIvLength, m_bsIv) > 0) return fail(*this, 2, "pkcs12", pkcs12);
        return 0;
    }
    if (m_nEncAlg <= lastClassicScheme) return PBKDF1() > 0 ? fail(*this, 1, "PBKDF1", *this) : 0;
    return PBKDF2() > 0 ? fail(*this, 1, "PBKDF2", *this) : 0;
}

int PPKCS8::PBKDF1()
{
    ByteString seed, t;
    VNHash hash;
    if (seed.join(m_bsPassword.octets(), m_bsSalt.octets()) > 0) return failMemory(*this, 1, "seed");
    if (hash.DigestData(m_nHashAlg, seed, t, m_nIterationCount) > 0) return fail(*this, 1, "hash", hash);
    const int keyLength = std::min(m_nDerivedLength, t.getLength());
    if (m_bsKey.setData(t.getBytes(), keyLength) > 0) return failMemory(*this, 1, "m_bsKey");
    if (m_nEncAlg == schemeFixedIv) m_bsIv.clear();
    if (m_nEncAlg != schemePbkdf1) return 0;
    ByteString rest(t.getBytes() + keyLength, t.getLength() - keyLength), digest;
    if (rest.isOutOfMemory()) return failMemory(*this, 1, "hash");
    if (hash.DigestData(m_nHashAlg, rest, digest, 1) > 0) return fail(*this, 1, "hash", hash);
    return m_bsIv.setData(digest.getBytes(), keyLength) > 0 ? failMemory(*this, 1, "m_bsIv") : 0;
}

// Blocks that nothing is taken from are not computed: with an IV in the parameters the key alone is derived.
int PPKCS8::PBKDF2()
{
    const bool derivesIv = m_bsIv.getLength() == 0;
    const int keyLength = m_nDerivedLength - m_nIvLength, used = derivesIv ? m_nDerivedLength : keyLength;
    SecretArea<seedKeyLength + seedIvLength + 8> t; // two blocks
    if (used > static_cast<int>(sizeof t.bytes)) return fail(*this, 1, "m_nDerivedLength", "Two blocks are not enough.");
    for (int done = 0; done < used; done += m_nHashLength) {
        ByteString block;
        if (PBKDF2_F(static_cast<unsigned char>(done / m_nHashLength), block) > 0) return fail(*this, 1, "this", *this);
        if (block.getLength() != m_nHashLength) return fail(*this, 1, "m_nIterationCount", "There is no block.");
        std::memcpy(t.bytes + done, block.getBytes(), static_cast<std::size_t>(block.getLength()));
    }
    if (m_bsKey.setData(t.bytes, keyLength) > 0) return failMemory(*this, 1, "m_bsKey");
    if (!derivesIv) return 0;
    return m_bsIv.setData(t.bytes + keyLength, m_nIvLength) > 0 ? failMemory(*this, 1, "m_bsIv") : 0;
}

int PPKCS8::PBKDF2_F(unsigned char blockIndex, ByteString& out)
{
    out.clear();
    if (m_nIterationCount < 1) return 0;
    const unsigned char number[4] = {0, 0, 0, static_cast<unsigned char>(blockIndex + 1)};
    ByteString message, first;
    if (message.join(m_bsSalt.octets(), number) > 0) return failMemory(*this, 1, "mac");
    VNMac mac;
    if (mac.GenerateMAC(vnHmacSha1, m_bsPassword, message, first) > 0) return fail(*this, 1, "mac", mac);
    if (mac.ChainMAC(vnHmacSha1, m_bsPassword, first, m_nIterationCount - 1, out) > 0) return fail(*this, 2, "mac", mac);
    return 0;
}

// ---- the cipher ----

// A mode that the facade refuses when there is no IV.
static int cipherMode(const ByteString& iv)
{
    return iv.getLength() > 0 ? vnCbc : 0;
}

int PPKCS8::Encrypt(ByteString& in, ByteString& out)
{
    VNEncrypt encrypt;
    const int code = encrypt.EncryptData(m_nCipherAlg, cipherMode(m_bsIv), m_bsKey, m_bsIv, in.octets(), out, vnPadLength);
    m_bsKey.wipe();
    return code > 0 ? fail(*this, 1, "encrypt.EncryptData()", encrypt) : 0;
}

int PPKCS8::Decrypt(ByteString& in, ByteString& out)
{
    VNEncrypt encrypt;
    const int code = encrypt.DecryptData(m_nCipherAlg, cipherMode(m_bsIv), m_bsKey, m_bsIv, in.octets(), out, vnPadLength);
    m_bsKey.wipe();
    return code > 0 ? fail(*this, 1, "encrypt.DecryptData()", encrypt, Here::now().in("Encrypt")) : 0;
}

int PPKCS8::useFixedIv()
{
    m_bsIv = "4820913756482091";
    return m_bsIv.getError();
}

// ---- writing ----

int PPKCS8::getPKCS8Data(ByteString& out)
{
    if (!(m_nFlags & passwordSet)) return fail(*this, 1, "Password", "The Password does not setted.");
    if (!(m_nFlags & privateKeySet)) return fail(*this, 2, "PrivateKeyInfo", "The PrivateKeyInfo or Data does not setted.");
    m_bPkcs12Kdf = 0;
    if (PBE_Initialize(m_bsPrivateKeyInfo) > 0) return fail(*this, 3, "this", *this);
    if (m_nFixedIv && useFixedIv() > 0) return failMemory(*this, 3, "m_bsIv");
    ByteString cipherText;
    if (Encrypt(m_bsPrivateKeyInfo, cipherText) > 0) return fail(*this, 4, "this", *this);

    RAlgorithmIdentifier algorithm;
    if (const int code = m_nEncAlg > lastClassicScheme ? makePbes2(algorithm) : makeClassic(algorithm)) return code;
    REncryptedPrivateKeyInfo encryptedPrivateKeyInfo;
    constexpr const char* name = "encryptedPrivateKeyInfo";
    if (encryptedPrivateKeyInfo.setEncryptionAlgorithm(algorithm) > 0) return fail(*this, 11, name, encryptedPrivateKeyInfo);
    if (encryptedPrivateKeyInfo.setEncryptedData(cipherText) > 0) return fail(*this, 12, name, encryptedPrivateKeyInfo);
    ByteString& encoded = encryptedPrivateKeyInfo.toASN1Object();
    if (encryptedPrivateKeyInfo.getLastError() > 0) return fail(*this, 13, name, encryptedPrivateKeyInfo);
    out.swap(encoded);
    return 0;
}

int PPKCS8::makePbes2(RAlgorithmIdentifier& algorithm)
{
    const FailuresOf failed{*this, "getPKCS8Data"};
    RAlgorithmIdentifier keyDerivationFunc, encryptionScheme;
    RPBES2_params pbes2Params;
    if (makeKeyDerivationFunc(keyDerivationFunc) > 0) return failed(6, "this", *this);
    if (makeEncryptionScheme(encryptionScheme) > 0) return failed(7, "this", *this);
    if (pbes2Params.setKeyDerivationFunc(keyDerivationFunc) > 0) return failed(8, "pbes2Params", pbes2Params);
    if (pbes2Params.setEncryptionScheme(encryptionScheme) > 0) return failed(9, "pbes2Params", pbes2Params);
    algorithm.setParameters(pbes2Params.toASN1Object());
    if (pbes2Params.getLastError() > 0) return failed(10, "pbes2Params", pbes2Params);
    return algorithm.setAlgorithm(oidPbes2, false) > 0 ? failed(10, "pAlgorithmId", algorithm) : 0;
}

int PPKCS8::makeClassic(RAlgorithmIdentifier& algorithm)
{
    const FailuresOf failed{*this, "getPKCS8Data"};
    RPBEParameter pbeParameter;
    const bool set = pbeParameter.setSalt(m_bsSalt) == 0 && pbeParameter.setIterationCount(m_nIterationCount) == 0;
    if (set) algorithm.setParameters(pbeParameter.toASN1Object());
    if (!set || pbeParameter.getLastError() > 0) return failed(5, "pbeParameter", pbeParameter);
    return algorithm.setAlgorithm(m_pszSchemeOid, false) > 0 ? failed(5, "pAlgorithmId", algorithm) : 0;
}

int PPKCS8::makeKeyDerivationFunc(RAlgorithmIdentifier& out)
{
    if (out.setAlgorithm(oidPbkdf2, true) > 0) return fail(*this, 1, "pKDF", out);
    RPBKDF2_params pbkdf2Params;
    const bool set = pbkdf2Params.setSpecified(m_bsSalt) == 0 && pbkdf2Params.setIterationCount(m_nIterationCount) == 0;
    if (set) out.setParameters(pbkdf2Params.toASN1Object());
    return set && pbkdf2Params.getLastError() == 0 ? 0 : fail(*this, 2, "pbkdf2Params", pbkdf2Params);
}

int PPKCS8::makeEncryptionScheme(RAlgorithmIdentifier& out)
{
    if (out.setAlgorithm(m_pszSchemeOid, true) > 0) return fail(*this, 1, "pES", out);
    ASN1OctetString asnOctetString;
    if (asnOctetString.setValue(m_bsIv) > 0) return fail(*this, 5, "asnOctetString", asnOctetString);
    out.setParameters(asnOctetString.toASN1Object());
    return asnOctetString.getLastError() > 0 ? fail(*this, 5, "asnOctetString", asnOctetString) : 0;
}

// ---- reading ----

int PPKCS8::getPrivateKeyInfo(ByteString& data, ByteString& out)
{
    m_bPkcs12Kdf = 0;
    ByteString plainText;
    if (const int code = decryptData(data, plainText)) return fail(*this, code, "this", *this);
    RPrivateKeyInfo privateKeyInfo;
    if (privateKeyInfo.fromASN1Object(plainText) > 0) return fail(*this, wrongPassword, "privateKeyInfo", privateKeyInfo);
    plainText.clear(); // the record holds all of it
    ByteString& encoded = privateKeyInfo.toASN1Object();
    if (privateKeyInfo.getLastError() > 0) return fail(*this, 13, "privateKeyInfo", privateKeyInfo);
    out.swap(encoded);
    return 0;
}

int PPKCS8::decryptData(ByteString& data, ByteString& out)
{
    if (!(m_nFlags & passwordSet)) return fail(*this, 1, "Password", "Password is not found.");
    REncryptedPrivateKeyInfo encryptedPrivateKeyInfo;
    if (encryptedPrivateKeyInfo.fromASN1Object(data) > 0) return fail(*this, 2, "encryptedPrivateKeyInfo", encryptedPrivateKeyInfo);
    RAlgorithmIdentifier& algorithm = encryptedPrivateKeyInfo.getEncryptionAlgorithm();
    ByteString& oid = algorithm.getAlgorithm();
    if (algorithm.getLastError() > 0) return fail(*this, 3, "pAlgorithmId", algorithm);
    ByteString& parameters = algorithm.getParameters();
    if (const int code = oid == oidPbes2 ? readPbes2(parameters) : readClassic(oid, parameters)) return code;

    ByteString keepsSalt;
    if (PBE_Initialize(keepsSalt) > 0) return fail(*this, 10, "this", *this);
    if (m_nFixedIv && !m_bPkcs12Kdf && useFixedIv() > 0) return failMemory(*this, 10, "m_bsIv");
    ByteString bsDecryptedData;
    if (Decrypt(encryptedPrivateKeyInfo.getEncryptedData(), bsDecryptedData) > 0)
        return fail(*this, wrongPassword, "Decrypt", *this);
    if (bsDecryptedData.getLength() == 0) return fail(*this, 12, "bsDecryptedData", "Decrypted data length zero.");
    out.swap(bsDecryptedData);
    return 0;
}

int PPKCS8::readPbes2(ByteString& parameters)
{
    const FailuresOf failed{*this, "decryptData"};
    RPBES2_params pbes2Params;
    if (pbes2Params.fromASN1Object(parameters) > 0) return failed(5, "pbes2Params", pbes2Params);
    if (parseKeyDerivationFunc(pbes2Params.getKeyDerivationFunc()) > 0) return failed(6, "this", *this);
    if (parseEncryptionScheme(pbes2Params.getEncryptionScheme()) > 0) return failed(7, "this", *this);
    return 0;
}

int PPKCS8::readClassic(ByteString& oid, ByteString& parameters)
{
    const FailuresOf failed{*this, "decryptData"};
    int scheme = 0;
    if (GetAlgorithm(oid, &scheme) > 0) return failed(8, "this", *this);
    setEncAlgorithm(scheme);
    RPBEParameter pbeParameter;
    if (pbeParameter.fromASN1Object(parameters) > 0) return failed(9, "pbeParameter", pbeParameter);
    m_nIterationCount = pbeParameter.getIterationCount();
    m_bsSalt = pbeParameter.getSalt();
    return m_bsSalt.getError() > 0 ? failed.memory(9, "m_bsSalt") : 0;
}

// The identifier of the function is not looked at, and a keyLength has no effect: the scheme alone says what is derived.
int PPKCS8::parseKeyDerivationFunc(RAlgorithmIdentifier& in)
{
    RPBKDF2_params pbkdf2Params;
    if (pbkdf2Params.fromASN1Object(in.getParameters()) > 0) return fail(*this, 2, "pbkdf2Params", pbkdf2Params);
    if (pbkdf2Params.getBitMask() & RPBKDF2_params::specified) m_bsSalt = pbkdf2Params.getSpecified();
    if (m_bsSalt.getError() > 0) return failMemory(*this, 2, "m_bsSalt");
    m_nIterationCount = pbkdf2Params.getIterationCount();
    if ((pbkdf2Params.getBitMask() & RPBKDF2_params::prf) == 0) return 0;
    RAlgorithmIdentifier& prf = pbkdf2Params.getPrf();
    const bool isHmacSha1 = prf.getAlgorithm() == oidHmacSha1;
    if (prf.outOfMemory()) return fail(*this, 4, "pbkdf2Params", prf);
    if (!isHmacSha1) {
        return fail(*this, 4, "pbkdf2Params", "Only support HMAC-SHA-1 Pseudorandom function.");
    }
    return 0;
}

int PPKCS8::parseEncryptionScheme(RAlgorithmIdentifier& in)
{
    ByteString oid(in.getAlgorithm());
    if (oid == oidRc2Cbc) return fail(*this, 1, "rc2CBCParameter", "The RC2 algorithm dose not supported.");
    if (oid == oidRc5Cbc) return fail(*this, 3, "rc5CBCParameters", "The RC5 algorithm is not supported.");
    if (in.getParameters().getLength() > 0) {
        ASN1OctetString iv;
        if (iv.fromASN1Object(in.getParameters()) > 0) return fail(*this, 9, "this", iv);
        m_bsIv = iv.getValue();
        if (m_bsIv.getError() > 0) return failMemory(*this, 9, "m_bsIv");
    }
    m_nSchemeContext = insidePbes2;
    if (GetAlgorithm(oid, &m_nEncAlg) > 0) return fail(*this, 10, "this", *this);
    setEncAlgorithm(m_nEncAlg);
    return 0;
}

namespace {

// An identifier that is known: refused with code and message, or taken.
struct KnownScheme {
    const char* oid;
    int code;
    const char* message;
    int inside = 0, outside = 0; // PBES2
    bool pkcs12Outside = false;
};

constexpr KnownScheme knownSchemes[] = {
    {"1 2 840 113549 1 5 1", 1, "The MD2 or DES algorithm is not supported."},
    {"1 2 840 113549 1 5 4", 2, "The MD2 or RC2 algorithm is not supported."},
    {"1 2 840 113549 1 5 3", 3, "The MD5 or DES algorithm is not supported."},
    {"1 2 840 113549 1 5 6", 4, "The MD5 or RC2 algorithm is not supported."},
    {"1 2 840 113549 1 5 10", 5, "The SAH1 or DES algorithm is not supported."},
    {"1 2 840 113549 1 5 11", 6, "The SAH1 or RC2 algorithm is not supported."},
    {oidSeedWithSha1, 0, nullptr, schemePbkdf1, schemePbkdf1},
    {oidSeedCbc, 0, nullptr, schemePbes2, schemeFixedIv},
    {"2 16 840 1 101 3 4 1 2", 8, "The AES128 algorithm is not supported."},
    {"1 2 410 200004 1 4 2", 0, nullptr, schemePbes2, schemeFixedIv, true},
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

int PPKCS8::GetAlgorithm(ByteString& oid, int* scheme)
{
    if (oid.isOutOfMemory()) return failMemory(*this, 1, "bsOID");
    const auto* const known =
        std::find_if(std::begin(knownSchemes), std::end(knownSchemes), [&](const KnownScheme& row) { return oid == row.oid; });
    if (known == std::end(knownSchemes)) return fail(*this, 1, "bsOID", formatted("bsOID(%s) is unknown OID.", oid.getText()));
    if (known->code > 0) return fail(*this, known->code, "bsOID", known->message);
    const bool inside = m_nSchemeContext == insidePbes2;
    if (!inside && known->pkcs12Outside) m_bPkcs12Kdf = 1;
    *scheme = inside ? known->inside : known->outside;
    return 0;
}

} // namespace vrno
