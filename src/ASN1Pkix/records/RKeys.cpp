#include "ASN1Pkix/records/RKeys.h"

namespace vrno {

// ---- RSAPrivateKey ----

// RSAPrivateKey ::= SEQUENCE {
//     version INTEGER, modulus INTEGER, publicExponent INTEGER, privateExponent INTEGER, prime1 INTEGER, prime2 INTEGER,
//     exponent1 INTEGER, exponent2 INTEGER, coefficient INTEGER, otherPrimeInfos OtherPrimeInfos OPTIONAL }
template <class V> void RRSAPrivateKey::walk(V& v)
{
    v.atLeast(9, "At least 9 components are required.");
    v.required(integerTag, NAMED(m_version), {3, 1});
    v.required(integerTag, NAMED(m_modulus), {6, 2});
    v.required(integerTag, NAMED(m_publicExponent), {9, 3});
    v.required(integerTag, NAMED(m_privateExponent), {12, 4});
    v.required(integerTag, NAMED(m_prime1), {15, 5});
    v.required(integerTag, NAMED(m_prime2), {18, 6});
    v.required(integerTag, NAMED(m_exponent1), {21, 7});
    v.required(integerTag, NAMED(m_exponent2), {24, 8});
    v.required(integerTag, NAMED(m_coefficient), {27, 9});
    v.optionalLast(sequenceTag, 0x01, NAMED(m_otherPrimeInfos), {30, 10});
    v.end(11);
}

int RRSAPrivateKey::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RRSAPrivateKey::toASN1Object() { return encode(*this); }

ByteString& RRSAPrivateKey::getModulus() { return magnitude(*this, NAMED(m_modulus), "Modulus is negative."); }

// ---- RSAPublicKey ----

// RSAPublicKey ::= SEQUENCE { modulus INTEGER, publicExponent INTEGER }
template <class V> void RRSAPublicKey::walk(V& v)
{
    v.exactly(2);
    v.required(integerTag, NAMED(m_modulus), {3, 1});
    v.required(integerTag, NAMED(m_publicExponent), {6, 2});
    v.end(3);
}

int RRSAPublicKey::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RRSAPublicKey::toASN1Object() { return encode(*this); }

ByteString& RRSAPublicKey::getModulus() { return magnitude(*this, NAMED(m_modulus), ""); }

// ---- KCDSA ----

// The numbers at the start of all forms of a KCDSA key; `encode` is the encode code of the first one.
template <class V, class Record> static void domain(V& v, Record& record, int encode)
{
    v.required(integerTag, record.m_p, "m_p", {3, encode});
    v.required(integerTag, record.m_q, "m_q", {6, encode + 1});
    v.required(integerTag, record.m_g, "m_g", {9, encode + 2});
}

// KCDSAParameters ::= SEQUENCE {
//     p INTEGER, q INTEGER, g INTEGER, j INTEGER OPTIONAL, seed OCTET STRING OPTIONAL, count INTEGER OPTIONAL }
template <class V> void RKCDSAParameters::walk(V& v)
{
    v.atLeast(3, "At least 3 components are required.");
    domain(v, *this, 1);
    v.optional(integerTag, 0x01, NAMED(m_j), {12, 4});
    v.optional(octetStringTag, 0x02, NAMED(m_seed), {14, 5});
    v.optional(integerTag, 0x04, NAMED(m_count), {16, 6});
    v.end(7);
}

int RKCDSAParameters::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RKCDSAParameters::toASN1Object() { return encode(*this); }

ByteString& RKCDSAParameters::getP()
{
    return magnitude(*this, NAMED(m_p), "OddPrime(P) is negative.", Here::now().in("getOddPrime"));
}

ByteString& RKCDSAParameters::getQ()
{
    return magnitude(*this, NAMED(m_q), "OddPrime(Q) is negative.", Here::now().in("getOddPrime"));
}

ByteString& RKCDSAParameters::getG()
{
    return magnitude(*this, NAMED(m_g), "Generator(G) is negative.", Here::now().in("getOddPrime"));
}

// setParam() decodes only the parameters, without the key.
template <class V> void RDSAPublicKey::walk(V& v)
{
    v.exactly(3);
    domain(v, *this, 2);
    if constexpr (!V::decoding) v.required(anyTag, NAMED(m_y), {0, 5});
    v.end(5);
}

int RDSAPublicKey::setParam(ByteString& encoded)
{
    Decoder v(*this, className, nullptr, encoded, Here::now(), "setParam");
    walk(v);
    return v.code();
}

int RDSAPublicKey::setKey(ByteString& encoded) { return m_y.fromASN1Object(encoded) > 0 ? fail(*this, 1, "m_y", m_y) : 0; }

ByteString& RDSAPublicKey::toASN1Object() { return encode(*this); }

template <class V> void RDSAPrivateKey::walk(V& v)
{
    domain(v, *this, 1);
    if constexpr (!V::decoding) {
        v.required(anyTag, NAMED(m_x), {0, 4});
        v.optional(anyTag, 0x01, NAMED(m_y), {0, 5});
    }
    v.end(5);
}

// The mask describes the key, not the parameters, so it is not cleared here.
int RDSAPrivateKey::setParam(ByteString& encoded)
{
    Decoder v(*this, className, nullptr, encoded, Here::now(), "setParam");
    walk(v);
    return v.code();
}

int RDSAPrivateKey::setKey(ByteString& x, ByteString& y)
{
    if (m_x.fromASN1Object(x) > 0) return fail(*this, 1, "m_x", m_x);
    if (m_y.fromASN1Object(y) > 0) return fail(*this, 2, "m_y", m_y);
    m_ucBitMask |= 0x01;
    return 0;
}

ByteString& RDSAPrivateKey::toASN1Object() { return encode(*this); }

} // namespace vrno
