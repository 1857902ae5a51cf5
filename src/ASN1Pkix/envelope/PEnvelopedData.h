// EnvelopedData (RFC 5652, 6) with RSA key transport and SEED-CBC (RFC 4010): written, never opened.
#pragma once

#include "ASN1Pkix/records/RCertificate.h"
#include "ASN1Pkix/records/RCms.h"
#include "VNCrypto/VNCodes.h"
#include "base/Objects.h"

#include <memory>

namespace vrno {

// An object serves one message: the setters, one addRecipientByCert for each recipient, makeEnvelopedData, and then
// getSymmetricKey where the key is wanted. The first recipient makes the key and the IV, which all share and which live as
// long as the object; the key is overwritten at its end. Operations that can fail give 0 or the code of the failing step.
class PEnvelopedData : public PObject {
public:
    static constexpr const char* className = "PEnvelopedData";

    // On allocation failure getLastError() is 1, and the object serves nothing.
    PEnvelopedData();

    enum Identifier : int { issuerAndSerialNumber = 1, subjectKeyIdentifier = 2 };
    enum RecipientType : int { keyTransport = 1, keyAgreement = 2, sharedKey = 3 };
    enum State : unsigned char { originatorInfoSet = 1, unprotectedAttrsSet = 2, keyIdentifierUsed = 4 };
    enum Option : unsigned char { rsaOaep = 1, inContentInfo = 2, withoutContent = 4 };

    // How the recipients that are added from now on are named; 1, with the choice as it was, for any other value.
    int choiceRecipientIdentifier(int choice);
    // Facade codes; the mode 0 stands for CBC. What is not SEED in CBC mode shows with the first recipient or in
    // makeEnvelopedData.
    void setEncAlgorithm(int alg, int mode);
    // An identifier as ASN1ObjectIdentifier::setOID takes it.
    void setContentType(const char* oid);
    void setContent(ByteString& data);
    // The same without a copy: the octets stay the caller's, and must stay as long as messages are made of them.
    void borrowContent(Octets data);
    // Adds options to those that are set.
    void setOption(unsigned char bits);

    // A recipient by certificate in DER, with an RSA key of 1024 or 2048 bits. A failure, 1, adds none.
    int addRecipientByCert(ByteString& certificate);
    int addRecipient(ByteString& certificate, ByteString* keyEncryptionKey);

    // The message. Made anew it is the same but for what was set in between, under the same key and IV. 18 also for one that
    // might be longer than 2^31 - 2 bytes, by an estimate that is up to 512 bytes too high, before the content is read; a
    // failure leaves `out` as it was.
    int makeEnvelopedData(ByteString& out);

    // Copies of the key and the IV; 1 on allocation failure.
    int getSymmetricKey(ByteString& key, ByteString& iv);
    // Draws a key and an IV of 16 bytes each; 1 for an algorithm without keys, and, with both empty, where no random bytes can be
    // had.
    int makeSymetricKey(ByteString& key, ByteString& iv, int alg);
    // One recipient's element, a KeyTransRecipientInfo under the key of the certificate, whose algorithm is given beside it.
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
    int appendRecipient(ByteString& certificate, const ByteString* keyEncryptionKey);
    int makeElement(ByteString& certificate, const ByteString* keyEncryptionKey, ByteString& out);
    int transportElement(RTBSCertificate& tbs, ByteString& out);
    int nameRecipient(RKeyTransRecipientInfo& ktri, RTBSCertificate& tbs, ByteString& publicKey);
    int nameByKey(RRecipientIdentifier& recipientId, ByteString& publicKey);
    int nameByIssuer(RRecipientIdentifier& recipientId, RTBSCertificate& tbs);
    int setKeyAlgorithm(RKeyTransRecipientInfo& ktri, ByteString& oid);
    int setEncryptedKey(RKeyTransRecipientInfo& ktri, RSubjectPublicKeyInfo& info);

    int encodeEnvelopedData(ByteString& out);
    int setContentInfo(REnvelopedData& env);
    int encryptContent(REncryptedContentInfo& eci);
    bool messageFits() const;
    int wrap(ByteString& encoded);

    Octets m_content = m_bsContent.octets(); // there, or with the caller
};

} // namespace vrno
