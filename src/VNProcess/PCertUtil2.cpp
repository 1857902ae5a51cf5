#include "VNProcess/PCertUtil2.h"

#include "ASN1Pkix/records/UDNSettings.h"

#include <new>

namespace vrno {

// Decodes, encodes and decodes again: so every getter answers from the TBS part as this library understood and wrote it, whatever
// the encoding of the input was.
int PCertUtil2::setCertificate(ByteString& cert)
{
    RCertificate certificate;
    if (certificate.fromASN1Object(cert) > 0) return fail(*this, 1, "cert", certificate);
    RTBSCertificate& tbs = certificate.getTBSCertificate();
    m_bsOutput = tbs.toASN1Object();
    if (tbs.getLastError() > 0) return fail(*this, 2, "pTBSCert", tbs);
    m_pTBSCert.reset(new (std::nothrow) RTBSCertificate);
    if (!m_pTBSCert) return failMemory(*this, 3, "m_tbsCert", "Memory(m_pTBSCert) allocation is failed.");
    if (m_pTBSCert->fromASN1Object(m_bsOutput) > 0) return fail(*this, 4, "m_tbsCert", *m_pTBSCert);
    m_bsSignature = certificate.getSignature(); // empty if the BIT STRING has no octets
    return m_bsSignature.isOutOfMemory() ? failMemory(*this, 3, "m_bsSignature") : 0;
}

// Starts an operation that returns a reference. False, with a frame added, if no certificate is set.
bool PCertUtil2::ready(Here at)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    if (!m_pTBSCert) failOutput(*this, 1, "m_pTBSCert", "The certificate does not set.", at);
    return m_pTBSCert != nullptr;
}

// Copies what a record returned, or fails with 2 and the record's trail.
ByteString& PCertUtil2::handOut(ByteString& result, RObject& source, const char* name, Here at)
{
    if (source.getLastError() > 0) return failOutput(*this, 2, name, source, at);
    m_bsOutput = result;
    if (m_bsOutput.isOutOfMemory()) return failOutputMemory(*this, 2, name, at);
    return m_bsOutput;
}

ByteString& PCertUtil2::getSerialNo()
{
    if (!ready()) return m_bsOutput;
    return handOut(m_pTBSCert->getSerialNumber(false), *m_pTBSCert, "m_pTBSCert");
}

ByteString& PCertUtil2::getSignatureAlgorithm()
{
    if (!ready()) return m_bsOutput;
    RAlgorithmIdentifier& signature = m_pTBSCert->getSignature();
    return handOut(signature.getAlgorithm(), signature, "pSignature");
}

ByteString& PCertUtil2::nameText(RRDNSequence& name, Here at)
{
    if (UDNSettings::RDN2Str(name, m_bsOutput) == 0) return m_bsOutput;
    constexpr const char* step = "UDNSettings::RDN2Str()";
    if (m_bsOutput.isOutOfMemory()) return failOutputMemory(*this, 2, step, at);
    return failOutput(*this, 2, step, "Wrong RDNSequence form.", at);
}

ByteString& PCertUtil2::getIssuerDN()
{
    if (!ready()) return m_bsOutput;
    return nameText(m_pTBSCert->getIssuer());
}

ByteString& PCertUtil2::getSubjectDN()
{
    if (!ready()) return m_bsOutput;
    return nameText(m_pTBSCert->getSubject());
}

ByteString& PCertUtil2::getSubject()
{
    if (!ready()) return m_bsOutput;
    RRDNSequence& subject = m_pTBSCert->getSubject();
    return handOut(subject.toASN1Object(), subject, "pSubject");
}

int PCertUtil2::getValidityNotBefore_value(int* out)
{
    if (!m_pTBSCert) return fail(*this, 1, "m_pTBSCert", "The certificate does not set.");
    *out = m_pTBSCert->getValidity().getNotBefore();
    return 0;
}

int PCertUtil2::getValidityNotAfter_value(int* out)
{
    if (!m_pTBSCert) return fail(*this, 1, "m_pTBSCert", "The certificate does not set.");
    *out = m_pTBSCert->getValidity().getNotAfter();
    return 0;
}

ByteString& PCertUtil2::getPublicKeyAlgorithm()
{
    if (!ready()) return m_bsOutput;
    RAlgorithmIdentifier& algorithm = m_pTBSCert->getSubjectPublicKeyInfo().getAlgorithm();
    return handOut(algorithm.getAlgorithm(), algorithm, "pPublicKeyAlg");
}

ByteString& PCertUtil2::getSubjectPublicKey()
{
    if (!ready()) return m_bsOutput;
    RSubjectPublicKeyInfo& info = m_pTBSCert->getSubjectPublicKeyInfo();
    return handOut(info.getSubjectPublicKey(), info, "pSubjectPublicKeyInfo");
}

ByteString& PCertUtil2::getSignature() { return ready() ? m_bsSignature : m_bsOutput; }

ByteString& PCertUtil2::getExtensionValue(const char* oid)
{
    if (!ready()) return m_bsOutput;
    return findExtension(m_pTBSCert->getExtensions(), oid);
}

ByteString& PCertUtil2::getExtensionValue(ByteString& cert, const char* oid)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    RCertificate certificate;
    if (certificate.fromASN1Object(cert) > 0) return failOutput(*this, 1, "cert", certificate);
    return findExtension(certificate.getTBSCertificate().getExtensions(), oid);
}

ByteString& PCertUtil2::findExtension(RExtensions& extensions, const char* oid, Here at)
{
    for (int i = 0; i < extensions.getCount(); ++i) {
        RExtension ext;
        if (ext.fromASN1Object(extensions.get(i)) > 0) return failOutput(*this, 2, "ext", ext, at);
        const bool sought = ext.getExtensionID() == oid; // a malformed identifier is a different one
        if (ext.outOfMemory()) return failOutput(*this, 2, "ext", ext, at);
        if (!sought) continue;
        handOut(ext.getValue(), ext, "ext", at);
        break;
    }
    if (m_nLastError == 0 && m_bsOutput.getLength() == 0) {
        return failOutput(*this, absentExtension, "m_pTBSCert", "The extension does not exist.", at);
    }
    return m_bsOutput;
}

} // namespace vrno
