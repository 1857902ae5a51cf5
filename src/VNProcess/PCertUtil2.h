// The loaded certificate (RFC 5280, 4.1).
#pragma once

#include "ASN1Pkix/records/RCertificate.h"
#include "base/Objects.h"

#include <memory>

namespace vrno {

// Owns the decoded TBS part and the signature. An operation that returns a reference sets `m_nLastError`: 0, 1 if no certificate
// is set, or 2 if the field cannot be read; the result is empty on failure.
class PCertUtil2 : public PObject {
public:
    static constexpr const char* className = "PCertUtil2";

    // Takes a certificate in DER or BER, without PEM armour. 0, or 1: it does not decode; 2: its TBS part does not encode; 3:
    // allocation failure; 4: the encoded TBS part does not decode.
    int setCertificate(ByteString& cert);

    // 0 for version 1. A certificate must be set.
    int getVersion() const { return tbs().getVersion(); }
    // The content octets, without a first octet 0x00 or 0xFF if others follow.
    ByteString& getSerialNo();
    // The signature field of the TBS part, as text with blanks.
    ByteString& getSignatureAlgorithm();
    // The names as UDNSettings renders them.
    ByteString& getIssuerDN();
    ByteString& getSubjectDN();
    // The encoded name of the subject.
    ByteString& getSubject();
    // Seconds since 1970-01-01 00:00:00 UTC. 0, or 1 if no certificate is set.
    int getValidityNotBefore_value(int* out);
    int getValidityNotAfter_value(int* out);
    ByteString& getPublicKeyAlgorithm();
    // The octets of the BIT STRING.
    ByteString& getSubjectPublicKey();
    ByteString& getSignature();

    // The contents of the extension with this identifier ("2 5 29 15"): its encoded value. `m_nLastError` is absentExtension if
    // there is none or it is empty. 2 means a broken certificate, if only because an earlier extension does not decode.
    static constexpr int absentExtension = 4096;
    bool isExtensionAbsent() const { return m_nLastError == absentExtension && !outOfMemory(); } // of the last search
    ByteString& getExtensionValue(const char* oid);
    // The same for the certificate `cert`, which is not kept; 1 if it does not decode.
    ByteString& getExtensionValue(ByteString& cert, const char* oid);

private:
    bool ready(Here at = Here::now());
    ByteString& handOut(ByteString& result, RObject& source, const char* name, Here at = Here::now());
    ByteString& nameText(RRDNSequence& name, Here at = Here::now());
    ByteString& findExtension(RExtensions& extensions, const char* oid, Here at = Here::now());

    RTBSCertificate& tbs() const { return m_pCertificate->getTBSCertificate(); } // if a certificate is set

    std::unique_ptr<RCertificate> m_pCertificate; // of which only the TBS part is used
    ByteString m_bsSignature;
};

} // namespace vrno
