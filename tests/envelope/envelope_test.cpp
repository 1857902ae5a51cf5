// Enveloped messages: what libcrypto makes of them, and what the builder and the exported function refuse.
#include "ASN1Pkix/envelope/PEnvelopedData.h"
#include "api/envelope.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/failing.h"
#include "support/interface.h"
#include "support/openssl.h"

#include <cctype>
#include <map>

using namespace vrno;
using namespace test;
using P = PEnvelopedData;

namespace {

const std::string rsa = "06{2A864886F70D010101} 0500", seed = "06{2A831A8C9A440104}", dataOid = "06{2A864886F70D010701}";
const std::string issuer = "30{31{30{06{550403} 0C{\"CA\"}}}}", keyUsage = "06{551D0F}",
                  forEncryption = "30{" + keyUsage + "04{03020520}}";

EVP_PKEY* rsaKey(unsigned bits)
{
    seedByOpenssl(std::string(16, 'k'), std::string(16, 'i'), "", true); // for its providers
    static EVP_PKEY* const keys[] = {EVP_RSA_gen(1024), EVP_RSA_gen(2048)};
    return keys[bits / 2048];
}

// The octets of the key's BIT STRING.
std::string publicKey(unsigned bits) { return encoded(i2d_PublicKey, rsaKey(bits)); }

std::string certificateOf(const std::string& algorithm, const std::string& key, const std::string& extensions = forEncryption,
                          const std::string& serial = "2A")
{
    const std::string keyId = "30{06{551D0E} 04{04{" + hex(sha1ByOpenssl(key)) + "}}}";
    return certificate({.serial = serial,
                        .name = issuer,
                        .algorithm = algorithm,
                        .key = hex(key),
                        .extensions = "A3{30{" + extensions + keyId + "}}"});
}

std::string holder(unsigned bits, const std::string& extensions = forEncryption)
{
    return certificateOf(rsa, publicKey(bits), extensions);
}

std::string inContentInfo(const std::string& enveloped) { return der("30{06{2A864886F70D010703} A0{" + hex(enveloped) + "}}"); }

// The content of a ContentInfo, as the holder of the key reads it; "closed" when the message does not open.
std::string opened(const std::string& message, const std::string& cert, unsigned bits)
{
    const unsigned char* from = at(message);
    const Owned<CMS_ContentInfo> info(d2i_CMS_ContentInfo(nullptr, &from, static_cast<long>(message.size())));
    const bool isWhole = from == at(message) + message.size();
    const Certificate recipient = decoded(d2i_X509, cert);
    const Owned<BIO> out(BIO_new(BIO_s_mem()));
    const bool opens = isWhole && CMS_decrypt(info.get(), rsaKey(bits), recipient.get(), nullptr, out.get(), CMS_BINARY) == 1;
    return opens ? contents(out.get()) : "closed";
}

// The element at a path of component numbers, below SEQUENCE and SET.
std::string part(std::string element, std::initializer_list<int> path)
{
    for (const int index : path) {
        ByteString in = byteString("\x30" + element.substr(1));
        ASN1Sequence sequence;
        EXPECT_EQ(sequence.fromASN1Object(in), 0);
        element = bytes(sequence.getComponent(index));
    }
    return element;
}

// One call of the exported function, with what it left.
struct Sealed {
    int code;
    std::string message, error, key, iv;
};

Sealed sealed(const std::string& cert, const std::string& content, unsigned option = VRNO_CMS_CONTENT_INFO, int alg = VRNO_SYM_SEED)
{
    Context context;
    BinStr c(cert), d(content), out("old"), key, iv, oldKey("the old key.....");
    EXPECT_EQ(VRNO_CRYPT_SetKeyAndIV(context, VRNO_SYM_SEED, oldKey, oldKey), 0);
    const int code = VRNO_CMS_EncryptData(context, option, c, d, alg, out);
    const std::string error = placeless(context.error());
    int symAlg = 0;
    EXPECT_EQ(VRNO_CRYPT_GetKeyAndIV(context, &symAlg, key, iv), 0);
    EXPECT_EQ(symAlg, VRNO_SYM_SEED);
    EXPECT_EQ(code != 0, out.data() == "old");
    EXPECT_EQ(code != 0, key.data() == oldKey.data());
    return {code, out.data(), error, key.data(), iv.data()};
}

} // namespace

TEST(Envelope, OpenSSLReadsTheContent)
{
    for (const unsigned bits : {1024U, 2048U}) {
        const std::string cert = holder(bits);
        for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 975U, 976U, 977U, 1U << 20}) {
            const std::string content = std::string(size, 'c');
            EXPECT_EQ(opened(sealed(cert, content).message, cert, bits), content) << size;
            for (const unsigned option : {0U, 1U, 4U}) {
                EXPECT_EQ(opened(inContentInfo(sealed(cert, content, option).message), cert, bits), content) << size;
                if (size > 1000) break;
            }
        }
    }
    const std::string large(64 << 20, 'c');
    EXPECT_TRUE(opened(sealed(holder(2048), large).message, holder(2048), 2048) == large);
}

TEST(Envelope, FieldsStandInTheirOrderAndTheSessionKeyIsTheMessages)
{
    for (const unsigned bits : {1024U, 2048U}) {
        for (const std::string& serial : {std::string("2A"), std::string("0080FF")}) {
            const std::string cert = certificateOf(rsa, publicKey(bits), forEncryption, serial);
            const Sealed result = sealed(cert, "content", 0);
            ASSERT_EQ(result.code, 0) << result.error;
            const std::string encryptedKey = hex(part(result.message, {1, 0, 3}));
            const std::string ktri = "30{020100 30{" + issuer + "02{" + serial + "}} 30{" + rsa + "}" + encryptedKey + "}";
            const std::string cipherText = seedByOpenssl(result.key, result.iv, "content", true);
            EXPECT_EQ(hex(result.message), hex(der("30{020100 31{" + ktri + "} 30{" + dataOid + "30{" + seed + "04{" +
                                                   hex(result.iv) + "}} 80{" + hex(cipherText) + "}}}")));
            const Sealed again = sealed(cert, "content", 0);
            EXPECT_NE(again.key, result.key);
            EXPECT_NE(again.iv, result.iv);
        }
    }
}

TEST(Envelope, RecipientsShareOneKeyAndOneMayBeNamedByIt)
{
    const std::string one = holder(1024), two = certificateOf(rsa, publicKey(2048), forEncryption, "2B");
    for (const bool byKey : {false, true}) {
        PEnvelopedData enveloped;
        ByteString first = byteString(one), second = byteString(two), content = byteString("content"), out, again, key, iv;
        ByteString unusable = byteString(certificateOf(rsa, der("30{02020AEF 020101}"))); // refused when the key is encrypted
        enveloped.setEncAlgorithm(3020, 0);
        enveloped.setContent(content);
        EXPECT_EQ(enveloped.choiceRecipientIdentifier(1), 0);
        EXPECT_EQ(enveloped.addRecipientByCert(first), 0);
        EXPECT_EQ(enveloped.choiceRecipientIdentifier(2), 0);
        for (ByteString* const refused : {&content, &unusable}) EXPECT_EQ(enveloped.addRecipientByCert(*refused), 1);
        EXPECT_EQ(enveloped.choiceRecipientIdentifier(byKey ? 2 : 1), 0);
        EXPECT_EQ(enveloped.addRecipientByCert(second), 0);
        ASSERT_EQ(enveloped.makeEnvelopedData(out), 0) << trail(enveloped);
        EXPECT_EQ(enveloped.makeEnvelopedData(again), 0);
        EXPECT_EQ(hex(bytes(again)), hex(bytes(out)));
        EXPECT_EQ(enveloped.getSymmetricKey(key, iv), 0);

        const std::string message = bytes(out), version = byKey ? "020102" : "020100";
        EXPECT_EQ(opened(inContentInfo(message), one, 1024), "content");
        EXPECT_EQ(opened(inContentInfo(message), two, 2048), "content");
        EXPECT_EQ(hex(part(message, {0})), hex(der(version)));
        EXPECT_EQ(hex(part(message, {1, 1, 0})), hex(der(version)));
        if (byKey) { EXPECT_EQ(hex(part(message, {1, 1, 1})), "8014" + hex(sha1ByOpenssl(publicKey(2048)))); }
        EXPECT_EQ(hex(part(message, {2, 2})), hex(der("80{" + hex(seedByOpenssl(bytes(key), bytes(iv), "content", true)) + "}")));

        enveloped.setOption(PEnvelopedData::withoutContent | PEnvelopedData::inContentInfo);
        EXPECT_EQ(enveloped.makeEnvelopedData(out), 0);
        const std::string info = der("30{" + dataOid + "30{" + seed + "04{" + hex(bytes(iv)) + "}}}");
        EXPECT_EQ(hex(bytes(out)), hex(inContentInfo(der("30{" + hex(part(message, {0}) + part(message, {1}) + info) + "}"))));
    }
}

TEST(Envelope, BuilderRefusesWhatItDoesNotSupport)
{
    for (const Case& c : cases("builder.txt", 3)) {
        SCOPED_TRACE(c.where);
        const bool isKey = !std::isalpha(c[0][0]);
        const int value = isKey ? 0 : std::stoi(c[1]);
        PEnvelopedData enveloped;
        enveloped.setEncAlgorithm(c[0] == "algorithm" ? value : 3020, c[0] == "mode" ? value : 4);
        if (c[0] == "option") enveloped.setOption(static_cast<unsigned char>(value));
        if (c[0] == "recipientType") enveloped.m_nRecipientType = value;
        ByteString cert = byteString(isKey ? certificateOf(c[0], c[1].empty() ? publicKey(1024) : der(c[1])) : holder(1024));
        ByteString out("old", 3);
        const bool added = enveloped.addRecipientByCert(cert) == 0;
        EXPECT_EQ(enveloped.m_pRecipientInfos->getCount(), added ? 1 : 0);
        if (added) enveloped.makeEnvelopedData(out);
        EXPECT_EQ(placeless(trail(enveloped)).substr(0, c[2].size()), c[2]);
        EXPECT_EQ(bytes(out), "old");
    }
}

TEST(Envelope, BuilderRefusesWrongContentTypesKeysAndIdentifiers)
{
    static ByteString kek("key", 3), none, out;
    const std::pair<int (*)(P&), const char*> table[] = {
        {[](P& p) { return p.setContentType(""), p.makeEnvelopedData(out); },
         "makeEnvelopedData-m_bsContentType(4),REncryptedContentInfo::setContentType-m_contentType(1)"},
        {[](P& p) { return p.m_bsKey.setData("short", 5), p.makeEnvelopedData(out); },
         "makeEnvelopedData-encrypt(14),Encryption Error"},
        {[](P& p) { return p.choiceRecipientIdentifier(3); },
         "choiceRecipientIdentifier-m_nRecIdentifier(1),input error(input ISSUERANDSERIALNUMBER or SUBJECT_KEY_IDENTIFIER)"},
        {[](P& p) { return p.m_nRecipientType = 3, p.addRecipient(none, &kek); },
         "addRecipientByCert-this(3),PEnvelopedData::encrypt-Algorithm(14),The KEKRI recipientInfoType is not supported."},
    };
    ByteString cert = byteString(holder(1024));
    for (const auto& [make, told] : table) {
        PEnvelopedData enveloped;
        enveloped.setEncAlgorithm(3020, 4);
        EXPECT_EQ(enveloped.addRecipientByCert(cert), 0);
        EXPECT_GT(make(enveloped), 0);
        EXPECT_TRUE(placeless(trail(enveloped)).starts_with("PEnvelopedData::" + std::string(told))) << trail(enveloped);
    }
}

TEST(Envelope, RefusedCertificatesKeepTheSessionKey)
{
    const auto usage = [](const std::string& value) { return holder(1024, "30{" + keyUsage + "04{" + value + "}}"); };
    std::map<std::string, std::string> others = {{"no certificate", "no certificate"},
                                                 {"no usage", holder(1024, "")},
                                                 {"KCDSA", certificateOf("06{2A831A8C9A440101}", "key")}};
    const std::string modulus = hex(part("\x31" + publicKey(1024).substr(1), {0}));
    for (const auto& [name, exponent] :
         {std::pair{"0", "00"}, {"1", "01"}, {"2", "02"}, {"3", "03"}, {"4", "04"}, {"long", "0123456789ABCDEF0123456789ABCDEE"}}) {
        others[std::string("exponent ") + name] = certificateOf(rsa, der("30{" + modulus + "02{" + exponent + "}}"));
    }
    for (const Case& c : cases("envelope.txt", 4)) {
        SCOPED_TRACE(c.where);
        const auto other = others.find(c[0]);
        const Sealed result = sealed(other == others.end() ? usage(c[0]) : other->second, "content", 0, std::stoi(c[1]));
        EXPECT_EQ(result.code, std::stoi(c[2]));
        EXPECT_EQ(result.error.substr(0, c[3].size()), c[3]);
    }
    for (long number = 1; number < 9; ++number) {
        PEnvelopedData enveloped;
        ByteString key, iv;
        const FailingAllocation fails(number);
        const int length = enveloped.makeSymetricKey(key, iv, vnSeed) == 0 ? 16 : 0;
        EXPECT_TRUE(key.getLength() == length && iv.getLength() == length) << number;
    }
    Context context;
    ByteString cert = byteString(usage("03020520"));
    Call call(context, "F");
    EXPECT_EQ(checkRecipientKeyUsage(call, Purpose::signing, cert), 3000);
    EXPECT_EQ(context.error(), "[F] 서명용 인증서가 아닙니다.");
    {
        const RandomSource none(RandomSource::none);
        EXPECT_EQ(sealed(holder(1024), "content").code, 1500);
    }
}

TEST(Envelope, ContentMayBeNothingAndTheOutputTheInput)
{
    Context context;
    BinStr good(holder(1024)), content("content"), out("old");
    unsigned char octet = 0;
    VRNO_BINSTR noLength{&octet, 0};
    for (const VRNO_BINSTR* const nothing : {static_cast<VRNO_BINSTR*>(nullptr), &noLength}) {
        EXPECT_EQ(VRNO_CMS_EncryptData(context, 2, good, nothing, 48, out), 0);
        EXPECT_EQ(opened(out.data(), holder(1024), 1024), "");
    }
    EXPECT_EQ(VRNO_CMS_EncryptData(context, 2, good, content, 48, content), 0); // an output may be the input
    EXPECT_EQ(opened(content.data(), holder(1024), 1024), "content");
}

TEST(Envelope, ContentsTooLongAreRefusedUnread)
{
    Context context;
    BinStr cert(holder(1024)), out("old");
    unsigned char octet = 0; // all that there is of a content
    for (const unsigned length : {0x7FFFFDFFU, 0x7FFFFFF0U, 0x7FFFFFFEU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const FailingAllocation none(0);
        const VRNO_BINSTR huge{&octet, length};
        EXPECT_EQ(VRNO_CMS_EncryptData(context, 2, cert, &huge, 48, out), length < 0x7FFFFFFF ? 3006 : 1002) << length;
        EXPECT_LT(FailingAllocation::size(), 1U << 20);
        EXPECT_EQ(out.data(), "old");
        if (length < 0x7FFFFFFF) { EXPECT_TRUE(context.error().ends_with("envelopedData(18),The message is too long.")); }
    }
}
