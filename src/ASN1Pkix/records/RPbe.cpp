#include "ASN1Pkix/records/RPbe.h"

#include "ASN1/ASN1Null.h"
#include "ASN1Pkix/records/Walk.h"

namespace vrno {

// ---- PBEParameter ----

// PBEParameter ::= SEQUENCE { salt OCTET STRING, iterationCount INTEGER }
template <class V> void RPBEParameter::walk(V& v)
{
    v.exactly(2);
    v.required(octetStringTag, NAMED(m_salt), {3, 1});
    v.required(integerTag, NAMED(m_iterationCount), {6, 2});
    v.end(3);
}

int RPBEParameter::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RPBEParameter::toASN1Object() { return encode(*this); }

int RPBEParameter::setSalt(ByteString& salt) { return m_salt.setValue(salt) > 0 ? fail(*this, 1, "m_salt", m_salt) : 0; }

int RPBEParameter::setIterationCount(int count)
{
    return m_iterationCount.setIntValue(count) > 0 ? fail(*this, 1, "m_iterationCount", m_iterationCount) : 0;
}

// ---- PBES2-params ----

// PBES2-params ::= SEQUENCE { keyDerivationFunc AlgorithmIdentifier, encryptionScheme AlgorithmIdentifier }
template <class V> void RPBES2_params::walk(V& v)
{
    v.exactly(2);
    v.required(sequenceTag, NAMED(m_keyDerivationFunc), {3, 1});
    v.required(sequenceTag, NAMED(m_encryptionScheme), {6, 2});
    v.end(3);
}

int RPBES2_params::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RPBES2_params::toASN1Object() { return encode(*this); }

int RPBES2_params::setKeyDerivationFunc(RAlgorithmIdentifier& data) { return copyThrough(*this, data, NAMED(m_keyDerivationFunc)); }

int RPBES2_params::setEncryptionScheme(RAlgorithmIdentifier& data) { return copyThrough(*this, data, NAMED(m_encryptionScheme)); }

// ---- PBKDF2-params ----

// PBKDF2-params ::= SEQUENCE {
//     salt CHOICE { specified OCTET STRING, otherSource AlgorithmIdentifier }, iterationCount INTEGER,
//     keyLength INTEGER OPTIONAL, prf AlgorithmIdentifier DEFAULT hmacWithSHA1 }
template <class V> void RPBKDF2_params::walk(V& v)
{
    v.atLeast(2, "At least 2 components are required.");
    v.alternative(octetStringTag, specified, NAMED(m_specified), {3, 1});
    if (!(m_ucBitMask & specified)) v.alternative(sequenceTag, otherSource, NAMED(m_otherSource), {5, 2});
    const bool isSaltChosen = m_ucBitMask & (specified | otherSource);
    if constexpr (V::decoding) {
        v.rule(isSaltChosen, 7, "asnSeq", "Any component does not choesen(salt component).");
    } else {
        v.rule(isSaltChosen, 3, "m_ucBitMask", "Any component does not chosen.");
    }
    v.required(integerTag, NAMED(m_iterationCount), {8, 4});
    v.optional(integerTag, keyLength, NAMED(m_keyLength), {11, 5});
    v.optional(sequenceTag, prf, NAMED(m_prf), {13, 6});
    v.end(7);
}

int RPBKDF2_params::fromASN1Object(ByteString& data)
{
    if (const int code = decode(*this, data)) return code;
    return (m_ucBitMask & prf) ? 0 : setDefaultPrf();
}

int RPBKDF2_params::setDefaultPrf()
{
    const FailuresOf failed{*this, "fromASN1Object"};
    ASN1Null null;
    m_prf.setParameters(null.toASN1Object());
    if (m_prf.m_parameters.isOutOfMemory()) return failed.memory(14, "m_prf");
    return m_prf.setAlgorithm("1 2 840 113549 2 7", false) > 0 ? failed(14, "m_prf", m_prf) : 0;
}

ByteString& RPBKDF2_params::toASN1Object() { return encode(*this); }

int RPBKDF2_params::setSpecified(ByteString& salt)
{
    m_ucBitMask = static_cast<unsigned char>((m_ucBitMask | specified) & ~otherSource);
    return m_specified.setValue(salt) > 0 ? fail(*this, 1, "m_specified", m_specified) : 0;
}

int RPBKDF2_params::setIterationCount(int count)
{
    return m_iterationCount.setIntValue(count) > 0 ? fail(*this, 1, "m_iterationCount", m_iterationCount) : 0;
}

int RPBKDF2_params::setKeyLength(int length)
{
    m_ucBitMask |= keyLength;
    return m_keyLength.setIntValue(length) > 0 ? fail(*this, 1, "m_keyLength", m_keyLength) : 0;
}

} // namespace vrno
