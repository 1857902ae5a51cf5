// The loaded certificate.
#pragma once

#include "ASN1Pkix/records/RCertificate.h"
#include "base/Objects.h"

#include <memory>

namespace vrno {

// Keeps the TBS part, after one round through the encoder, and the signature. Every operation that gives a reference
// starts with `m_nLastError` 0 and an empty `m_bsOutput`; with no certificate set it fails with 1.
class PCertUtil2 : public PObject {
public:
    static constexpr const char* className = "PCertUtil2";

    // Takes a certificate in DER or BER, with no armour of any kind. 1: it does not decode, 2: its TBS part does not
    // encode, 3: no memory, 4: what was encoded does not decode.
    int setCertificate(ByteString& cert);

    // 0 for version 1. A certificate must be set.
    int getVersion() const { return m_pTBSCert->getVersion(); }
    // The content octets, less a leading 0x00 or 0xFF that others follow.
    ByteString& getSerialNo();
    // The algorithm of the TBS part's own field, as text with blanks.
    ByteString& getSignatureAlgorithm();
    // Names as UDNSettings renders them.
    ByteString& getIssuerDN();
    ByteString& getSubjectDN();
    // The subject's name in DER.
    ByteString& getSubject();
    // Seconds since 1970-01-01 00:00:00 UTC; 1 with no certificate set.
    int getValidityNotBefore_value(int* out);
    int getValidityNotAfter_value(int* out);
    ByteString& getPublicKeyAlgorithm();
    // The octets of the BIT STRING.
    ByteString& getSubjectPublicKey();
    ByteString& getSignature();

    // The DER of the value of the extension with this identifier ("2 5 29 15"). `m_nLastError` is 0 when it is there;
    // absentExtension when it is not, or is empty; any other value means a broken certificate, be it only that an
    // extension in front of the one sought does not decode.
    static constexpr int absentExtension = 4096;
    bool isExtensionAbsent() const { return m_nLastError == absentExtension && !outOfMemory(); } // of the last look-up
    ByteString& getExtensionValue(const char* oid);
    // The same for a certificate in DER that is given here and not kept.
    ByteString& getExtensionValue(ByteString& cert, const char* oid);

private:
    bool ready(Here at = Here::now());
    ByteString& handOut(ByteString& result, RObject& source, const char* name, Here at = Here::now());
    ByteString& nameText(RRDNSequence& name, Here at = Here::now());
    ByteString& findExtension(RExtensions& extensions, const char* oid, Here at = Here::now());

    std::unique_ptr<RTBSCertificate> m_pTBSCert;
    ByteString m_bsSignature;
};

} // namespace vrno
