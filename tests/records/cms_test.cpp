// Enveloped messages: what only encodes, and messages that are not ours.
#include "ASN1Pkix/records/RCms.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/openssl.h"

#include <gtest/gtest.h>

using namespace vrno;
using namespace test;

namespace {

template <class Record> std::string written(Record& record) { return hex(bytes(record.toASN1Object())); }

} // namespace

TEST(Cms, MessageIsWrittenAsItWasPutTogether)
{
    const std::string set = "31{ 30{020102 80{BB} 30{06{2A03}} 04{\"two\"}} 30{020102 80{AA} 30{06{2A03}} 04{\"one\"}} }";
    const std::string info = "30{06{2A04} 30{06{2A05}} 80{\"ciphertext\"}}";
    ByteString recipientsIn = byteString(der(set)), contentIn = byteString(der(info)); // the set is not sorted
    RRecipientInfos recipients;
    REncryptedContentInfo content;
    REnvelopedData enveloped;
    EXPECT_EQ(recipients.fromASN1Object(recipientsIn) + content.fromASN1Object(contentIn), 0);
    EXPECT_EQ(enveloped.setVersion(2) + enveloped.setRecipientInfos(recipients), 0);
    EXPECT_EQ(enveloped.setEncryptedContentInfo(std::move(content)), 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(written(enveloped), hex(der("30{020102" + set + info + "}"))); // uses nothing up

    ROriginatorInfo originator;
    RAttributes attributes;
    ByteString certs = byteString(der("30{A0{30{020101}}}")), attribute = byteString(der("30{06{2A06} 31{0500}}"));
    EXPECT_EQ(originator.fromASN1Object(certs), 0);
    attributes.m_SET.addComponent(attribute, -1);
    EXPECT_EQ(enveloped.setOriginatorInfo(originator) + enveloped.setUnprotectedAttrs(attributes), 0);
    EXPECT_EQ(written(enveloped), hex(der("30{020102 A0{A0{30{020101}}}" + set + info + "A1{30{06{2A06} 31{0500}}}}")));
}

TEST(Cms, NothingIsWrittenOfAnIncompleteRecord)
{
    RKeyTransRecipientInfo ktri;
    REnvelopedData enveloped;
    EXPECT_EQ(enveloped.setVersion(5), 1);
    EXPECT_EQ(ktri.setVersion(4), 0);
    for (const int version : {-1, 5}) EXPECT_EQ(ktri.setVersion(version), 1);
    EXPECT_EQ(placeless(trail(ktri)), "RKeyTransRecipientInfo::setVersion-version(1),Data version is incorrect.");
    EXPECT_EQ(ktri.m_version.getIntValue(), 4);

    RRecipientIdentifier rid;
    EXPECT_EQ(ktri.setRid(rid), 1); // nothing chosen
    EXPECT_EQ(outermost(trail(ktri)), "RKeyTransRecipientInfo::setRid-data(1)");
    EXPECT_EQ(written(ktri), "");
    EXPECT_EQ(outermost(trail(ktri)), "RKeyTransRecipientInfo::toASN1Object-m_rid(2)");
    EXPECT_EQ(innermost(trail(ktri)), "Any component is not chosen.");

    RRecipientInfo recipient;
    EXPECT_EQ(written(recipient), "");
    EXPECT_EQ(outermost(trail(recipient)), "RRecipientInfo::toASN1Object-m_ucBitMask(1)");
    EXPECT_EQ(recipient.setKeyTransRecipientInfo(ktri), 1);
    RRecipientInfos recipients;
    EXPECT_EQ(recipients.addRecipientInfo(recipient), 1);
    EXPECT_EQ(recipients.getCount(), 0);

    REncryptedContentInfo content;
    content.setImplicitTag(0, 0x80); // reads as a wrapper around the first component
    EXPECT_EQ(enveloped.setEncryptedContentInfo(std::move(content)), 2);
    EXPECT_EQ(outermost(trail(enveloped)), "REnvelopedData::setEncryptedContentInfo-m_encryptedContentInfo(2)");
}

namespace {

// A message by OpenSSL to the certificate and to a shared key. `stream` writes it in indefinite form, the content in segments.
std::string foreignMessage(unsigned flags, bool stream)
{
    const Certificate recipient = decoded(d2i_X509, readFile(SAMPLES "/hong.der"));
    const std::string content(5000, 'x');
    const Owned<BIO> in(BIO_new_mem_buf(content.data(), static_cast<int>(content.size()))), out(BIO_new(BIO_s_mem()));
    flags |= CMS_BINARY | (stream ? CMS_STREAM : CMS_PARTIAL);
    const Owned<CMS_ContentInfo> cms(CMS_encrypt(nullptr, nullptr, EVP_aes_128_cbc(), flags | CMS_PARTIAL));
    EXPECT_TRUE(CMS_add1_recipient_cert(cms.get(), recipient.get(), flags));
    const auto copy = [](const char* octets) { return static_cast<unsigned char*>(OPENSSL_memdup(octets, 16)); };
    EXPECT_TRUE(CMS_add0_recipient_key(cms.get(), NID_id_aes128_wrap, copy("0123456789abcdef"), 16, copy("the shared key's"), 16,
                                       ASN1_GENERALIZEDTIME_set(nullptr, 1700000000), nullptr, nullptr));
    if (!stream) { EXPECT_TRUE(CMS_final(cms.get(), in.get(), nullptr, flags)); }
    EXPECT_TRUE(stream ? i2d_CMS_bio_stream(out.get(), cms.get(), in.get(), static_cast<int>(flags))
                       : i2d_CMS_bio(out.get(), cms.get()));
    return contents(out.get());
}

// The components of the EnvelopedData in a message.
void open(const std::string& message, ASN1Sequence& enveloped)
{
    ByteString data = byteString(message);
    ASN1Sequence contentInfo;
    ASSERT_EQ(contentInfo.fromASN1Object(data), 0);
    ASSERT_EQ(enveloped.fromASN1Object(contentInfo.getComponent(1)), 0);
}

} // namespace

TEST(Cms, AMessageOfAnotherProgramIsWrittenBack)
{
    for (const unsigned flags : {0U, unsigned{CMS_USE_KEYID}}) {
        ASN1Sequence enveloped;
        open(foreignMessage(flags, false), enveloped);
        ByteString set = enveloped.getComponent(1), info = enveloped.getComponent(2);

        RRecipientInfos recipients;
        ASSERT_EQ(recipients.fromASN1Object(set), 0);
        ASSERT_EQ(recipients.getCount(), 2);
        int kinds = 0;
        for (int i = 0; i < 2; ++i) {
            ByteString element = recipients.get(i);
            RRecipientInfo recipient(element);
            ASSERT_EQ(recipient.getLastError(), 0) << trail(recipient);
            EXPECT_EQ(written(recipient), hex(bytes(element)));
            kinds |= 1 << recipient.getBitMask();
            RKeyTransRecipientInfo ktri;
            if (recipient.getBitMask() != RRecipientInfo::keyTransRecipientInfo) continue;
            ASSERT_EQ(ktri.fromASN1Object(element), 0);
            EXPECT_EQ(written(ktri), hex(bytes(element)));
            EXPECT_EQ(ktri.m_rid.getBitMask(),
                      flags ? RRecipientIdentifier::subjectKeyIdentifier : RRecipientIdentifier::issuerAndSerialNumber);
        }
        EXPECT_EQ(kinds, 1 << RRecipientInfo::keyTransRecipientInfo | 1 << RRecipientInfo::kEKRecipientInfo);

        REncryptedContentInfo content;
        ASSERT_EQ(content.fromASN1Object(info), 0);
        EXPECT_EQ(written(content), hex(bytes(info)));
        EXPECT_EQ(content.m_encryptedContent.getValueLength(), 5008);
    }
}

TEST(Cms, SegmentsOfAnotherProgramAreJoined)
{
    ASN1Sequence enveloped;
    open(foreignMessage(0, true), enveloped);
    REncryptedContentInfo content;
    ASSERT_EQ(content.fromASN1Object(enveloped.getComponent(2)), 0) << trail(content);
    EXPECT_GT(content.m_encryptedContent2.getComponentCount(), 1);
    EXPECT_EQ(content.m_encryptedContent.getValueLength(), 5008);
}
