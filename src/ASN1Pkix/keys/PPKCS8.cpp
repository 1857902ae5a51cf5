#include "ASN1Pkix/keys/PPKCS8.h"

#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/RPbe.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNEncrypt.h"

namespace vrno {

static constexpr const char *oidPbes2 = "1 2 840 113549 1 5 13", *oidPbkdf2 = "1 2 840 113549 1 5 12",
                            *oidHmacSha1 = "1 3 6 1 5 5 8 1 2";

// ---- settings ----

int PPKCS8::setPassword(const char* password)
{
    m_nFlags &= ~passwordSet;
    m_bsPassword = password;
    if (m_bsPassword.isOutOfMemory()) return failMemory(*this, 1, "Password");
    m_nFlags |= passwordSet;
    return 0;
}

void PPKCS8::setEncAlgorithm(int scheme) { m_pScheme = &pkcs8Scheme(scheme); }

int PPKCS8::setPrivateKeyInfo(ByteString& data)
{
    RPrivateKeyInfo privateKeyInfo;
    m_nFlags &= ~privateKeySet;
    if (privateKeyInfo.fromASN1Object(data) > 0) return fail(*this, 1, "privateKeyInfo", privateKeyInfo);
    if (m_bsPrivateKeyInfo.setData(data.getBytes(), data.getLength()) > 0) return failMemory(*this, 1, "privateKeyInfo");
    m_nFlags |= privateKeySet;
    return 0;
}

// ---- writing ----

int PPKCS8::getPKCS8Data(ByteString& out)
{
    if (!(m_nFlags & passwordSet)) return fail(*this, 1, "Password", "The Password does not setted.");
    if (!(m_nFlags & privateKeySet)) return fail(*this, 2, "PrivateKeyInfo", "The PrivateKeyInfo or Data does not setted.");
    if (makeSalt() > 0 || PBE_Initialize() > 0) return fail(*this, 3, "this", *this);
    ByteString cipherText;
    if (Encrypt(m_bsPrivateKeyInfo, cipherText) > 0) return fail(*this, 4, "this", *this);

    RAlgorithmIdentifier algorithm;
    const bool isPbes2 = m_pScheme->derivation == KeyDerivation::pbkdf2;
    if (const int code = isPbes2 ? makePbes2(algorithm) : makeClassic(algorithm)) return code;
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

int PPKCS8::makeKeyDerivationFunc(RAlgorithmIdentifier& out)
{
    if (out.setAlgorithm(oidPbkdf2, true) > 0) return fail(*this, 1, "pKDF", out);
    RPBKDF2_params pbkdf2Params;
    const bool isSet = pbkdf2Params.setSpecified(m_bsSalt) == 0 && pbkdf2Params.setIterationCount(m_nIterationCount) == 0;
    if (isSet) out.setParameters(pbkdf2Params.toASN1Object());
    if (!isSet || pbkdf2Params.getLastError() > 0) return fail(*this, 2, "pbkdf2Params", pbkdf2Params);
    return 0;
}

int PPKCS8::makeEncryptionScheme(RAlgorithmIdentifier& out)
{
    if (out.setAlgorithm(m_pScheme->oid, true) > 0) return fail(*this, 1, "pES", out);
    ASN1OctetString asnOctetString;
    if (asnOctetString.setValue(m_bsIv) > 0) return fail(*this, 5, "asnOctetString", asnOctetString);
    out.setParameters(asnOctetString.toASN1Object());
    return asnOctetString.getLastError() > 0 ? fail(*this, 5, "asnOctetString", asnOctetString) : 0;
}

int PPKCS8::makeClassic(RAlgorithmIdentifier& algorithm)
{
    const FailuresOf failed{*this, "getPKCS8Data"};
    RPBEParameter pbeParameter;
    const bool isSet = pbeParameter.setSalt(m_bsSalt) == 0 && pbeParameter.setIterationCount(m_nIterationCount) == 0;
    if (isSet) algorithm.setParameters(pbeParameter.toASN1Object());
    if (!isSet || pbeParameter.getLastError() > 0) return failed(5, "pbeParameter", pbeParameter);
    return algorithm.setAlgorithm(m_pScheme->oid, false) > 0 ? failed(5, "pAlgorithmId", algorithm) : 0;
}

// ---- reading ----

int PPKCS8::getPrivateKeyInfo(ByteString& data, ByteString& out)
{
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
    if (const int code = oid == oidPbes2 ? parsePbes2(parameters) : parseClassic(oid, parameters)) return code;

    if (PBE_Initialize() > 0) return fail(*this, 10, "this", *this);
    ByteString bsDecryptedData;
    if (Decrypt(encryptedPrivateKeyInfo.getEncryptedData(), bsDecryptedData) > 0) {
        return fail(*this, wrongPassword, "Decrypt", *this);
    }
    if (bsDecryptedData.getLength() == 0) return fail(*this, 12, "bsDecryptedData", "Decrypted data length zero.");
    out.swap(bsDecryptedData);
    return 0;
}

int PPKCS8::parsePbes2(ByteString& parameters)
{
    const FailuresOf failed{*this, "decryptData"};
    RPBES2_params pbes2Params;
    if (pbes2Params.fromASN1Object(parameters) > 0) return failed(5, "pbes2Params", pbes2Params);
    if (parseKeyDerivationFunc(pbes2Params.getKeyDerivationFunc()) > 0) return failed(6, "this", *this);
    return parseEncryptionScheme(pbes2Params.getEncryptionScheme()) > 0 ? failed(7, "this", *this) : 0;
}

// The identifier of the function is not looked at, and a keyLength has no effect: the scheme alone says what is derived.
int PPKCS8::parseKeyDerivationFunc(RAlgorithmIdentifier& in)
{
    RPBKDF2_params pbkdf2Params;
    if (pbkdf2Params.fromASN1Object(in.getParameters()) > 0) return fail(*this, 2, "pbkdf2Params", pbkdf2Params);
    if (pbkdf2Params.getBitMask() & RPBKDF2_params::specified) m_bsSalt.swap(pbkdf2Params.getSpecified());
    m_nIterationCount = pbkdf2Params.getIterationCount();
    m_nIterationOctets = pbkdf2Params.m_iterationCount.getValueLength();
    if ((pbkdf2Params.getBitMask() & RPBKDF2_params::prf) == 0) return 0;
    RAlgorithmIdentifier& prf = pbkdf2Params.getPrf();
    if (prf.getAlgorithm() == oidHmacSha1) return 0;
    if (prf.outOfMemory()) return fail(*this, 4, "pbkdf2Params", prf);
    return fail(*this, 4, "pbkdf2Params", "Only support HMAC-SHA-1 Pseudorandom function.");
}

int PPKCS8::parseEncryptionScheme(RAlgorithmIdentifier& in)
{
    const ByteString& oid = in.getAlgorithm();
    if (oid == oidRc2Cbc) return fail(*this, 1, "rc2CBCParameter", "The RC2 algorithm dose not supported.");
    if (oid == oidRc5Cbc) return fail(*this, 3, "rc5CBCParameters", "The RC5 algorithm is not supported.");
    if (in.getParameters().getLength() > 0) {
        ASN1OctetString iv;
        if (iv.fromASN1Object(in.getParameters()) > 0) return fail(*this, 9, "this", iv);
        m_bsIv.swap(iv.getValue());
    }
    return GetAlgorithm(oid, true) > 0 ? fail(*this, 10, "this", *this) : 0;
}

int PPKCS8::parseClassic(ByteString& oid, ByteString& parameters)
{
    const FailuresOf failed{*this, "decryptData"};
    if (GetAlgorithm(oid, false) > 0) return failed(8, "this", *this);
    RPBEParameter pbeParameter;
    if (pbeParameter.fromASN1Object(parameters) > 0) return failed(9, "pbeParameter", pbeParameter);
    m_nIterationCount = pbeParameter.getIterationCount();
    m_nIterationOctets = pbeParameter.m_iterationCount.getValueLength();
    m_bsSalt.swap(pbeParameter.getSalt());
    return 0;
}

// Selects the scheme.
int PPKCS8::GetAlgorithm(const ByteString& oid, bool isInsidePbes2)
{
    if (oid.isOutOfMemory()) return failMemory(*this, 1, "bsOID");
    const Pkcs8Identifier* const known = findPkcs8Identifier(oid);
    if (!known) return fail(*this, 1, "bsOID", formatted("bsOID(%s) is unknown OID.", oid.getText()));
    if (known->refusal) return fail(*this, known->refusalCode, "bsOID", known->refusal);
    m_pScheme = isInsidePbes2 ? known->insidePbes2 : known->outsidePbes2;
    return 0;
}

// ---- the cipher ----

// Without an IV a mode that the facade refuses.
static int cipherMode(const ByteString& iv) { return iv.getLength() > 0 ? vnCbc : 0; }

int PPKCS8::Encrypt(ByteString& in, ByteString& out)
{
    VNEncrypt encrypt;
    const int code = encrypt.EncryptData(vnSeed, cipherMode(m_bsIv), m_bsKey, m_bsIv, in.octets(), out, vnPadLength);
    m_bsKey.wipe();
    return code > 0 ? fail(*this, 1, "encrypt.EncryptData()", encrypt) : 0;
}

int PPKCS8::Decrypt(ByteString& in, ByteString& out)
{
    const FailuresOf failed{*this, "Encrypt"};
    VNEncrypt encrypt;
    const int code = encrypt.DecryptData(vnSeed, cipherMode(m_bsIv), m_bsKey, m_bsIv, in.octets(), out, vnPadLength);
    m_bsKey.wipe();
    return code > 0 ? failed(1, "encrypt.DecryptData()", encrypt) : 0;
}

} // namespace vrno
