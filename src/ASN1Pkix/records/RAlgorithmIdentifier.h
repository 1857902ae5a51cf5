// AlgorithmIdentifier (RFC 5280, 4.1.1.2): an algorithm and its parameters.
#pragma once

#include "ASN1/ASN1ObjectIdentifier.h"
#include "ASN1Pkix/records/RObject.h"

namespace vrno {

class RAlgorithmIdentifier : public RObject {
public:
    static constexpr const char* className = "RAlgorithmIdentifier";

    int fromASN1Object(ByteString& data);
    ByteString& toASN1Object();

    // Takes an identifier as ASN1ObjectIdentifier::setOID does; 1 on failure. `clearParameters` removes the old parameters.
    int setAlgorithm(const char* oid, bool clearParameters);
    int setAlgorithm(ByteString& oid, bool clearParameters);
    // Parameters are one complete encoded element.
    void setParameters(ByteString& encoded);
    // The text form with blanks, as "1 2 840 113549 1 1 5".
    ByteString& getAlgorithm();
    ByteString& getParameters();

    template <class V> void walk(V& v);

    unsigned char m_ucBitMask = 0; // 1: parameters present (a NULL counts)
    ASN1ObjectIdentifier m_algorithm;
    ByteString m_parameters;
};

} // namespace vrno
