// The derivation of salt, key and IV in PPKCS8.
#include "ASN1Pkix/keys/PPKCS12.h"
#include "ASN1Pkix/keys/PPKCS8.h"
#include "VNCrypto/VNCodes.h"
#include "VNCrypto/VNHash.h"
#include "VNCrypto/VNMac.h"

namespace vrno {

// The first eight bytes of SHA-1 over password and key.
int PPKCS8::makeSalt()
{
    constexpr int saltLength = 8;
    ByteString passwordAndKey;
    VNHash hash;
    if (passwordAndKey.join(m_bsPassword.octets(), m_bsPrivateKeyInfo.octets()) > 0) return failMemory(*this, 3, "m_bsSalt");
    if (hash.DigestData(vnSha1, passwordAndKey, m_bsSalt, 1) > 0) return fail(*this, 3, "m_bsSalt", hash);
    m_bsSalt.shorten(saltLength);
    return 0;
}

// Derives key and IV from password, salt and iteration count.
int PPKCS8::PBE_Initialize()
{
    if (m_nIterationOctets > 4) {
        const ByteString message = formatted("The iteration count has %d octets; at most 4 are supported.", m_nIterationOctets);
        return fail(*this, 3, "m_nIterationCount", message);
    }
    if (m_nIterationCount < 1) {
        return fail(*this, 3, "m_nIterationCount", formatted("The iteration count(%d) is below 1.", m_nIterationCount));
    }
    if (m_pScheme->derivation == KeyDerivation::pkcs12) return pkcs12Kdf();
    if (m_pScheme->derivation == KeyDerivation::pbkdf1) return PBKDF1() > 0 ? fail(*this, 1, "PBKDF1", *this) : 0;
    return PBKDF2() > 0 ? fail(*this, 1, "PBKDF2", *this) : 0;
}

int PPKCS8::pkcs12Kdf()
{
    const FailuresOf failed{*this, "PBE_Initialize"};
    constexpr int forKey = 1, forIv = 2;
    const int count = m_nIterationCount, keyLength = m_pScheme->keyLength, ivLength = m_pScheme->ivLength;
    PPKCS12 pkcs12;
    if (pkcs12.keyGenAsc(m_bsPassword, m_bsSalt, forKey, count, keyLength, m_bsKey) > 0) return failed(1, "pkcs12", pkcs12);
    if (pkcs12.keyGenAsc(m_bsPassword, m_bsSalt, forIv, count, ivLength, m_bsIv) > 0) return failed(2, "pkcs12", pkcs12);
    return 0;
}

// The IV is fixed, or it is the digest of the bytes of T behind the key. An IV in the parameters is replaced.
int PPKCS8::PBKDF1()
{
    ByteString passwordAndSalt, t;
    VNHash hash;
    if (passwordAndSalt.join(m_bsPassword.octets(), m_bsSalt.octets()) > 0) return failMemory(*this, 1, "T");
    if (hash.DigestData(vnSha1, passwordAndSalt, t, m_nIterationCount) > 0) return fail(*this, 1, "hash", hash);
    if (m_bsKey.setData(t.getBytes(), m_pScheme->keyLength) > 0) return failMemory(*this, 1, "m_bsKey");
    m_bsIv = m_pScheme->fixedIv;
    if (m_pScheme->ivLength > 0) {
        t.dropFront(m_pScheme->keyLength);
        if (hash.DigestData(vnSha1, t, m_bsIv, 1) > 0) return fail(*this, 1, "hash", hash);
        m_bsIv.shorten(m_pScheme->ivLength);
    }
    return m_bsIv.isOutOfMemory() ? failMemory(*this, 1, "m_bsIv") : 0;
}

// If the parameters have an IV, it stays, and only the key is derived.
int PPKCS8::PBKDF2()
{
    constexpr int blockLength = 20;
    const bool derivesIv = m_bsIv.getLength() == 0;
    const int keyLength = m_pScheme->keyLength, ivLength = derivesIv ? m_pScheme->ivLength : 0;
    ByteString t;
    if (PBKDF2_F((keyLength + ivLength) / blockLength + 1, t) > 0) return fail(*this, 1, "this", *this);
    if (m_bsKey.setData(t.getBytes(), keyLength) > 0) return failMemory(*this, 1, "m_bsKey");
    if (derivesIv && m_bsIv.setData(t.getBytes() + keyLength, ivLength) > 0) return failMemory(*this, 1, "m_bsIv");
    return 0;
}

// The blocks 1 to `blocks`, of 20 bytes each. Their chains run together.
int PPKCS8::PBKDF2_F(int blocks, ByteString& out)
{
    ByteString message, firstLink, firstLinks;
    VNMac mac;
    for (int block = 1; block <= blocks; ++block) {
        const unsigned char number[4] = {0, 0, 0, static_cast<unsigned char>(block)};
        if (message.join(m_bsSalt.octets(), number) > 0) return failMemory(*this, 1, "mac");
        if (mac.GenerateMAC(vnHmacSha1, m_bsPassword, message, firstLink) > 0) return fail(*this, 1, "mac", mac);
        firstLinks += firstLink;
        if (firstLinks.isOutOfMemory()) return failMemory(*this, 1, "mac");
    }
    if (mac.ChainMAC(vnHmacSha1, m_bsPassword, firstLinks, m_nIterationCount - 1, out) > 0) return fail(*this, 2, "mac", mac);
    return 0;
}

} // namespace vrno
