#include "ASN1Pkix/records/RAlgorithmIdentifier.h"

#include "ASN1Pkix/records/Walk.h"

namespace vrno {

// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY DEFINED BY algorithm OPTIONAL }
template <class V> void RAlgorithmIdentifier::walk(V& v)
{
    v.atLeast(1, "At least 1 component is required.");
    v.required(anyTag, NAMED(m_algorithm), {3, 1});
    v.optional(anyTag, 0x01, NAMED(m_parameters), {5, 2});
    v.end(2);
}

int RAlgorithmIdentifier::fromASN1Object(ByteString& data) { return decode(*this, data); }

ByteString& RAlgorithmIdentifier::toASN1Object() { return encode(*this); }

int RAlgorithmIdentifier::setAlgorithm(const char* oid, bool clearParameters)
{
    if (clearParameters) m_ucBitMask = 0;
    return m_algorithm.setOID(oid) > 0 ? fail(*this, 1, "m_algorithm", m_algorithm) : 0;
}

int RAlgorithmIdentifier::setAlgorithm(ByteString& oid, bool clearParameters)
{
    return setAlgorithm(oid.getText(), clearParameters);
}

void RAlgorithmIdentifier::setParameters(ByteString& encoded)
{
    m_parameters = encoded;
    m_ucBitMask |= 0x01;
}

ByteString& RAlgorithmIdentifier::getAlgorithm() { return oidText(*this, NAMED(m_algorithm)); }

ByteString& RAlgorithmIdentifier::getParameters()
{
    m_nLastError = 0;
    return m_parameters;
}

} // namespace vrno
