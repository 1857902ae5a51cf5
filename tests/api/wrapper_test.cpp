// The wrapper for C++20: its code page beside that of the C library, and a session through it.
#include "vrno.hpp"

#include <gtest/gtest.h>
#include <iconv.h>

static std::string byIconv(const char* to, const char* from, std::string text)
{
    std::string out(4 * text.size() + 8, '\0');
    char *at = text.data(), *end = out.data();
    std::size_t left = text.size(), room = out.size();
    const iconv_t converter = iconv_open(to, from);
    const bool isGood = iconv(converter, &at, &left, &end, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    return isGood ? out.substr(0, out.size() - room) : "";
}

TEST(Wrapper, CodePageIsThatOfTheCLibrary)
{
    for (int lead = 0x80; lead < 0x100; ++lead) {
        for (int trail = 0; trail < 0x100; ++trail) {
            const std::string octets{static_cast<char>(lead), static_cast<char>(trail)};
            const std::string expected = byIconv("UTF-8", "CP949", octets), told = vrno::toUtf8(octets);
            if (lead == 0xC9 || lead == 0xFE || expected.empty()) { // rows for the user, which glibc maps to its private use area
                EXPECT_TRUE(told.starts_with("\xEF\xBF\xBD")) << lead << ' ' << trail;
            } else {
                EXPECT_EQ(told, expected) << lead << ' ' << trail;
                EXPECT_EQ(vrno::toCodePage949(told), octets) << lead << ' ' << trail;
            }
        }
    }
    EXPECT_EQ(vrno::toUtf8("a\xB0"), "a\xEF\xBF\xBD");
    EXPECT_EQ(vrno::toUtf8({"\0\xFFz", 3}), std::string("\0\xEF\xBF\xBDz", 5));
    for (const char* const bad : {"\xEA\xB0", "\xC0\x80", "\xF0\x9F\x98\x80", "\xFF", "ā", "\xED\xA0\x80"}) {
        EXPECT_EQ(vrno::toCodePage949(bad), std::nullopt) << bad;
    }
}

TEST(Wrapper, ASessionGoesThrough)
{
    vrno::Context context = *vrno::Context::make();
    const vrno::Octets der = *context.readCertificate(SAMPLES "/hong.der"), key = *context.readFile(SAMPLES "/hong.key");
    const vrno::Octets message = {'m', 'e', 's', 's', 'a', 'g', 'e'};
    vrno::Result<vrno::Certificate> loaded = vrno::Certificate::load(der);
    ASSERT_TRUE(loaded) << loaded.error().text;
    vrno::Certificate certificate = std::move(*loaded);
    EXPECT_EQ(*certificate.subjectName(), "cn=홍길동(Gildong)0001,ou=개인,o=한국시험인증,c=KR");
    EXPECT_EQ(*certificate.keyUsage(), "keyEncipherment, dataEncipherment"); // whose buffer is larger than it
    EXPECT_EQ(*certificate.version(), 3);
    EXPECT_EQ(certificate.publicKey()->algorithm, "1 2 840 113549 1 1 1");
    EXPECT_EQ(certificate.validity()->notBefore.size(), 19U);
    EXPECT_STREQ(certificate.subjectAltName().error().name, "VRNO_ERR_EXTENSION_ABSENT");
    EXPECT_EQ(certificate.subjectAltName().error().text, "[VRNO_CERT_GetSubjectAltName] 주체 대체 이름 필드가 없습니다.");

    const vrno::Octets blob = *context.protectKey("비밀번호", key);
    EXPECT_EQ(context.openKey("another", blob).error().code, VRNO_ERR_PRIKEY_PASSWORD);
    EXPECT_EQ(*context.openKey("비밀번호", blob), key);
    EXPECT_TRUE(context.checkKeyPair(der, key));
    EXPECT_GT(context.encryptFor(der, message)->size(), context.encryptFor(der, message, 0)->size());
    const vrno::SessionKey session = *context.key();
    const vrno::Octets enciphered = *context.encrypt(message);
    vrno::Context other = *vrno::Context::make();
    EXPECT_STREQ(other.decrypt(enciphered).error().name, "VRNO_ERR_KEY_NOT_SET");
    ASSERT_TRUE(other.setKey(session.key, session.iv));
    EXPECT_EQ(*other.decrypt(enciphered), message);
    EXPECT_EQ(*context.decodeBase64(*context.encodeBase64(message)), message);
    EXPECT_STREQ(context.decodeBase64("?").error().name, "VRNO_ERR_BASE64_DECODE");
    EXPECT_EQ(context.readCardCertificate(1, "1234").error().code, VRNO_ERR_LIB_NOT_LOADED);
    EXPECT_EQ(context.openKey(std::string("a\0b", 3), blob).error().code, VRNO_ERR_ARGUMENT);
    EXPECT_EQ(context.readFile("/없는 파일").error().text, "[VRNO_MEDIA_DISK_ReadFile] \"/없는 파일\" 위치의 파일을 읽는데 실패하였습니다.");
    ASSERT_TRUE(context.loadStorage(STORAGE_LIBRARY));
    EXPECT_EQ(context.readCardCertificate(1, "1234").error().code, VRNO_ERR_CARD_ABSENT);
    EXPECT_TRUE(context.unloadStorage());
}
