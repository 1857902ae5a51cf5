#include "VNProcess/PCertUtil2.h"

#include "ASN1Pkix/records/UDNSettings.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vrno {

// Whether `tbs` stands in the certificate as it is: then it follows the header of the outer SEQUENCE.
static bool isTbsPart(ByteString& cert, ByteString& tbs)
{
    const Octets all = cert.octets();
    const Octets part = tbs.octets();
    if (all.size() < 2 || all[0] != (ASN1_TAG_SEQUENCE | constructedBit)) return false;
    const std::size_t header = all[1] < 0x80 ? 2 : 2u + (all[1] & 0x7Fu);
    if (all.size() < header || all.size() - header < part.size()) return false;
    return std::equal(part.begin(), part.end(), all.begin() + static_cast<std::ptrdiff_t>(header));
}

// Decodes and encodes, so that every getter answers from the TBS part as this library understood and wrote it, whatever the
// encoding of the input was. An input in other octets is decoded again from what was written.
int PCertUtil2::setCertificate(ByteString& cert)
{
    constexpr const char* allocationFailed = "Memory(m_pTBSCert) allocation is failed.";
    std::unique_ptr<RCertificate> certificate{new (std::nothrow) RCertificate};
    if (!certificate) return failMemory(*this, 3, "m_tbsCert", allocationFailed);
    if (certificate->fromASN1Object(cert) > 0) return fail(*this, 1, "cert", *certificate);
    m_bsSignature = certificate->getSignature(); // empty if the BIT STRING has no octets
    if (m_bsSignature.isOutOfMemory()) return failMemory(*this, 3, "m_bsSignature");

    RTBSCertificate& tbs = certificate->getTBSCertificate();
    m_bsOutput = tbs.toASN1Object();
    if (tbs.getLastError() > 0) return fail(*this, 2, "pTBSCert", tbs);
    if (!isTbsPart(cert, m_bsOutput)) {
        certificate.reset(new (std::nothrow) RCertificate);
        if (!certificate) return failMemory(*this, 3, "m_tbsCert", allocationFailed);
        RTBSCertificate& written = certificate->getTBSCertificate();
        if (written.fromASN1Object(m_bsOutput) > 0) return fail(*this, 4, "m_tbsCert", written);
    }
    m_pCertificate = std::move(certificate);
    return 0;
}

// Starts an operation that returns a reference. False, with a frame added, if no certificate is set.
bool PCertUtil2::ready(Here at)
{
    m_nLastError = 0;
    m_bsOutput.clear();
    if (!m_pCertificate) failOutput(*this, 1, "m_pTBSCert", "The certificate does not set.", at);
    return m_pCertificate != nullptr;
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
    return handOut(tbs().getSerialNumber(false), tbs(), "m_pTBSCert");
}

ByteString& PCertUtil2::getSignatureAlgorithm()
{
    if (!ready()) return m_bsOutput;
    RAlgorithmIdentifier& signature = tbs().getSignature();
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
    return nameText(tbs().getIssuer());
}

ByteString& PCertUtil2::getSubjectDN()
{
    if (!ready()) return m_bsOutput;
    return nameText(tbs().getSubject());
}

ByteString& PCertUtil2::getSubject()
{
    if (!ready()) return m_bsOutput;
    RRDNSequence& subject = tbs().getSubject();
    return handOut(subject.toASN1Object(), subject, "pSubject");
}

int PCertUtil2::getValidityNotBefore_value(int* out)
{
    if (!m_pCertificate) return fail(*this, 1, "m_pTBSCert", "The certificate does not set.");
    *out = tbs().getValidity().getNotBefore();
    return 0;
}

int PCertUtil2::getValidityNotAfter_value(int* out)
{
    if (!m_pCertificate) return fail(*this, 1, "m_pTBSCert", "The certificate does not set.");
    *out = tbs().getValidity().getNotAfter();
    return 0;
}

ByteString& PCertUtil2::getPublicKeyAlgorithm()
{
    if (!ready()) return m_bsOutput;
    RAlgorithmIdentifier& algorithm = tbs().getSubjectPublicKeyInfo().getAlgorithm();
    return handOut(algorithm.getAlgorithm(), algorithm, "pPublicKeyAlg");
}

ByteString& PCertUtil2::getSubjectPublicKey()
{
    if (!ready()) return m_bsOutput;
    RSubjectPublicKeyInfo& info = tbs().getSubjectPublicKeyInfo();
    return handOut(info.getSubjectPublicKey(), info, "pSubjectPublicKeyInfo");
}

ByteString& PCertUtil2::getSignature() { return ready() ? m_bsSignature : m_bsOutput; }

ByteString& PCertUtil2::getExtensionValue(const char* oid)
{
    if (!ready()) return m_bsOutput;
    return findExtension(tbs().getExtensions(), oid);
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
    RExtension ext;
    const int found = extensions.find(oid, ext);
    if (found > 1) return failOutput(*this, 2, "ext", ext, at);
    if (found == 0) handOut(ext.getValue(), ext, "ext", at);
    if (m_nLastError == 0 && m_bsOutput.getLength() == 0) {
        return failOutput(*this, absentExtension, "m_pTBSCert", "The extension does not exist.", at);
    }
    return m_bsOutput;
}

} // namespace vrno
