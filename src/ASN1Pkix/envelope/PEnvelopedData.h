// EnvelopedData (RFC 5652, 6) with RSA key transport and SEED-CBC (RFC 4010): written, never opened.
#pragma once

#include "ASN1Pkix/records/RCertificate.h"
#include "ASN1Pkix/records/RCms.h"
#include "VNCrypto/VNCodes.h"
#include "base/Objects.h"

#include <memory>

namespace vrno {

// An object serves one message: the setters, one addRecipientByCert for each recipient, makeEnvelopedData, and then
// getSymmetricKey if the key is needed. The first recipient makes the key and the IV. All recipients share them, and they are
// wiped on destruction. Operations that can fail give 0 or the code of the failing step.
class PEnvelopedData : public PObject {
public:
    static constexpr const char* className = "PEnvelopedData";

    // On allocation failure getLastError() is 1, and the object must not be used.
    PEnvelopedData();

    enum Identifier : int { issuerAndSerialNumber = 1, subjectKeyIdentifier = 2 };
    enum RecipientType : int { keyTransport = 1, keyAgreement = 2, sharedKey = 3 };
    enum State : unsigned char { originatorInfoSet = 1, unprotectedAttrsSet = 2, keyIdentifierUsed = 4 };
    enum Option : unsigned char { rsaOaep = 1, inContentInfo = 2, withoutContent = 4 };

    // How recipients that are added after this call are named. Any other value is 1 and changes nothing.
    int choiceRecipientIdentifier(int choice);
    // Facade codes; the mode 0 stands for CBC. Anything but SEED in CBC mode makes addRecipientByCert or makeEnvelopedData fail.
    void setEncAlgorithm(int alg, int mode);
    // An identifier as ASN1ObjectIdentifier::setOID takes it.
    void setContentType(const char* oid);
    void setContent(ByteString& data);
    // The same without a copy: the octets stay the caller's and must live until the last makeEnvelopedData.
    void borrowContent(Octets data);
    // Adds bits of Option to those that are set.
    void setOption(unsigned char bits);

    // Adds the holder of a certificate in DER with an RSA key of 1024 or 2048 bits. A failure, 1, adds none.
    int addRecipientByCert(ByteString& certificate);
    int addRecipient(ByteString& certificate, ByteString* keyEncryptionKey);

    // The message. It may be made again, with the same key and IV. 18 also if it might be longer than 2^31 - 2 bytes; the estimate
    // is up to 512 bytes too high, and is made before the content is read. A failure leaves `out` as it was.
    int makeEnvelopedData(ByteString& out);

    // Copies of the key and the IV; 1 on allocation failure.
    int getSymmetricKey(ByteString& key, ByteString& iv);
    // Draws a key and an IV of 16 bytes each. 1 for an unknown algorithm; 1 with both empty if the system gives no random bytes.
    int makeSymetricKey(ByteString& key, ByteString& iv, int alg);
    // The element of one recipient: the message's key under the key of the certificate, whose algorithm is `keyAlgorithmOid`.
    int recipientInfoIsKTRI(RTBSCertificate& tbs, ByteString& out, ByteString& keyAlgorithmOid);

    unsigned char m_ucState = 0;
    unsigned char m_ucOptions = 0;
    int m_nRecIdentifier = subjectKeyIdentifier;
    int m_nRecipientType = keyTransport;
    ByteString m_bsKey;
    ByteString m_bsIv;
    int m_nEncAlg = vnCipher3000;
    int m_nEncMode = vnCbc;
    std::unique_ptr<RRecipientInfos> m_pRecipientInfos;
    ByteString m_bsContentType{"1 2 840 113549 1 7 1", 20};
    ByteString m_bsContent;
    std::unique_ptr<ROriginatorInfo> m_pOriginatorInfo;
    std::unique_ptr<RAttributes> m_pUnprotectedAttrs;

private:
    enum CmsVersion : int { firstVersion = 0, laterVersion = 2 };

    int appendRecipient(ByteString& certificate, const ByteString* keyEncryptionKey);
    int makeElement(ByteString& certificate, const ByteString* keyEncryptionKey, ByteString& out);
    int makeTransportElement(RTBSCertificate& tbs, ByteString& out);
    int nameRecipient(RKeyTransRecipientInfo& ktri, RTBSCertificate& tbs, ByteString& publicKey);
    int nameByKey(RRecipientIdentifier& recipientId, ByteString& publicKey);
    int nameByIssuer(RRecipientIdentifier& recipientId, RTBSCertificate& tbs);
    int setKeyAlgorithm(RKeyTransRecipientInfo& ktri, ByteString& oid);
    int setEncryptedKey(RKeyTransRecipientInfo& ktri, RSubjectPublicKeyInfo& info);

    int encodeEnvelopedData(ByteString& out);
    int setContentInfo(REnvelopedData& env);
    int encryptContent(REncryptedContentInfo& eci);
    bool messageFits() const;
    int wrap(ByteString&& content, ByteString& out);

    Octets m_content = m_bsContent.octets(); // of m_bsContent or of the caller
};

} // namespace vrno
