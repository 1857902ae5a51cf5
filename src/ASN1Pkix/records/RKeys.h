// Keys of RSA (PKCS #1: RFC 8017, appendix A.1) and of KCDSA (TTAS.KO-12.0001). Octets of numbers are big-endian.
#pragma once

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/Lists.h"

namespace vrno {

// ---- RSA ----

// SEQUENCE OF OtherPrimeInfo, kept encoded.
class ROtherPrimeInfos : public RSequenceOf<ROtherPrimeInfos> {
public:
    static constexpr const char* className = "ROtherPrimeInfos";
};

class RRSAPrivateKey : public RObject {
public:
    static constexpr const char* className = "RRSAPrivateKey";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // The octets without a sign octet; `m_nLastError` 1 for a negative number.
    ByteString& getModulus();

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1: otherPrimeInfos present
    ASN1Integer m_version;
    ASN1Integer m_modulus;
    ASN1Integer m_publicExponent;
    ASN1Integer m_privateExponent;
    ASN1Integer m_prime1;
    ASN1Integer m_prime2;
    ASN1Integer m_exponent1;
    ASN1Integer m_exponent2;
    ASN1Integer m_coefficient;
    ROtherPrimeInfos m_otherPrimeInfos;
};

class RRSAPublicKey : public RObject {
public:
    static constexpr const char* className = "RRSAPublicKey";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // The octets without a sign octet; `m_nLastError` 1 for a negative number.
    ByteString& getModulus();

    template <class V> void walk(V& v);

    ASN1Integer m_modulus;
    ASN1Integer m_publicExponent;
};

// ---- KCDSA ----

class RKCDSAParameters : public RObject {
public:
    static constexpr const char* className = "RKCDSAParameters";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // The octets of magnitudes. Setters: 0, or 1 on allocation failure. Getters: `m_nLastError` 1 for a negative number.
    int setP(ByteString& octets) { return m_p.setBytes(octets, 0) > 0 ? fail(*this, 1, "m_p", m_p) : 0; }
    int setQ(ByteString& octets) { return m_q.setBytes(octets, 0) > 0 ? fail(*this, 1, "m_q", m_q) : 0; }
    int setG(ByteString& octets) { return m_g.setBytes(octets, 0) > 0 ? fail(*this, 1, "m_g", m_g) : 0; }
    ByteString& getP();
    ByteString& getQ();
    ByteString& getG();

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1 j, 2 seed, 4 count
    ASN1Integer m_p;
    ASN1Integer m_q;
    ASN1Integer m_g;
    ASN1Integer m_j;
    ASN1OctetString m_seed;
    ASN1Integer m_count;
};

// A public KCDSA key with its parameters, SEQUENCE { p, q, g, y }, as the engine takes it.
class RDSAPublicKey : public RObject {
public:
    static constexpr const char* className = "RDSAPublicKey";

    // The encoded SEQUENCE { p, q, g }. 0 or the code of the failed step.
    int setParam(ByteString& encoded);
    // An encoded INTEGER; 1 if it does not decode.
    int setKey(ByteString& encoded);
    ByteString& toASN1Object();

    template <class V> void walk(V& v);

    ASN1Integer m_p;
    ASN1Integer m_q;
    ASN1Integer m_g;
    ASN1Integer m_y;
};

// A private KCDSA key with its parameters, SEQUENCE { p, q, g, x, y }.
class RDSAPrivateKey : public RObject {
public:
    static constexpr const char* className = "RDSAPrivateKey";

    // The encoded SEQUENCE { p, q, g }; further components are ignored. 0 or the code of the failed step.
    int setParam(ByteString& encoded);
    // Encoded INTEGERs; 1 if x does not decode, 2 if y does not.
    int setKey(ByteString& x, ByteString& y);
    ByteString& toASN1Object();

    template <class V> void walk(V& v);

    ASN1Integer m_p;
    ASN1Integer m_q;
    ASN1Integer m_g;
    ASN1Integer m_x;
    ASN1Integer m_y;
    unsigned char m_ucBitMask = 0; // 1: x and y are set
};

} // namespace vrno
