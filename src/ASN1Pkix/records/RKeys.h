// Keys of RSA (PKCS #1: RFC 8017, appendix A.1) and of KCDSA (TTAS.KO-12.0001).
#pragma once

#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1Pkix/records/Lists.h"

namespace vrno {

// ---- RSA ----

// SEQUENCE OF OtherPrimeInfo, passed through as it stands.
class ROtherPrimeInfos : public RSequenceOf<ROtherPrimeInfos> {
public:
    static constexpr const char* className = "ROtherPrimeInfos";
};

class RRSAPrivateKey : public RObject {
public:
    static constexpr const char* className = "RRSAPrivateKey";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();
    // The octets without a sign octet.
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
    // The octets without a sign octet.
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
    // Magnitudes, big-endian. Setters: 0, or 1 on allocation failure.
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

// A key together with its parameters, SEQUENCE { p, q, g, y }: the form that the engine takes.
class RDSAPublicKey : public RObject {
public:
    static constexpr const char* className = "RDSAPublicKey";

    // SEQUENCE { p, q, g } in DER.
    int setParam(ByteString& encoded);
    // An INTEGER in DER.
    int setKey(ByteString& encoded);
    ByteString& toASN1Object();

    template <class V> void walk(V& v);

    ASN1Integer m_p;
    ASN1Integer m_q;
    ASN1Integer m_g;
    ASN1Integer m_y;
};

// Likewise SEQUENCE { p, q, g, x, y }.
class RDSAPrivateKey : public RObject {
public:
    static constexpr const char* className = "RDSAPrivateKey";

    // SEQUENCE { p, q, g } in DER; further components are ignored.
    int setParam(ByteString& encoded);
    // INTEGERs in DER; 1 for x, 2 for y.
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
