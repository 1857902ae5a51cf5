// Certificates that others made, against what OpenSSL reads in them.
#include "ASN1Pkix/records/RCertificate.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/cases.h"
#include "support/openssl.h"

#include <openssl/x509v3.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <map>

using namespace test;

namespace {

// Seconds since 1970; std::time_t ends in January 2038 on 32-bit systems.
std::int64_t instant(const ASN1_TIME* time)
{
    const Owned<ASN1_TIME> epoch(ASN1_TIME_set(nullptr, 0));
    int days = 0, seconds = 0;
    EXPECT_EQ(ASN1_TIME_diff(&days, &seconds, epoch.get(), time), 1);
    return std::int64_t{days} * 86400 + seconds;
}

std::string localText(std::int64_t instant)
{
    const auto time = static_cast<std::time_t>(instant);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&time));
    return text;
}

// Every field of a loaded certificate, of which the names are only rendered, and its encoding.
void compare(const Context& context, X509* x)
{
    int version = 0;
    EXPECT_EQ(VRNO_CERT_GetVersion(context, &version), 0);
    EXPECT_EQ(version, X509_get_version(x) + 1);
    EXPECT_EQ(field(context, "GetSerialNum"), hexOf(X509_get0_serialNumber(x)));
    const ASN1_BIT_STRING* signature = nullptr;
    X509_get0_signature(&signature, nullptr, x);
    EXPECT_EQ(field(context, "GetSignature"), hexOf(signature));

    const ASN1_OBJECT* algorithm = nullptr;
    const unsigned char* key = nullptr;
    int keyLength = 0;
    X509_PUBKEY_get0_param(const_cast<ASN1_OBJECT**>(&algorithm), &key, &keyLength, nullptr, X509_get_X509_PUBKEY(x));
    char oid[80] = {}, keyAlgorithm[50], from[20], to[20];
    OBJ_obj2txt(oid, sizeof oid, algorithm, 1);
    std::string keyText(1 << 14, '\0');
    EXPECT_EQ(VRNO_CERT_GetPubKey(context, 1 << 14, keyAlgorithm, keyText.data()), 0);
    std::replace(oid, oid + sizeof oid, '.', ' ');
    EXPECT_STREQ(keyAlgorithm, oid);
    EXPECT_EQ(keyText.c_str(), hex({reinterpret_cast<const char*>(key), static_cast<std::size_t>(keyLength)}));

    EXPECT_EQ(VRNO_CERT_GetValidity(context, from, to), 0);
    EXPECT_EQ(from, localText(instant(X509_get0_notBefore(x))));
    EXPECT_EQ(to, localText(instant(X509_get0_notAfter(x))));
    BinStr subject;
    EXPECT_EQ(VRNO_CERT_GetSubjectName_DERFormat(context, subject), 0);
    EXPECT_EQ(subject.data(), encoded(i2d_X509_NAME, X509_get_subject_name(x)));
    for (const char* const name : {"GetIssuerName", "GetSubjectName"}) field(context, name);

    vrno::ByteString data = byteString(encoded(i2d_X509, x));
    vrno::RCertificate record;
    ASSERT_EQ(record.fromASN1Object(data), 0);
    EXPECT_EQ(hex(bytes(record.getTBSCertificate().toASN1Object())), hex(encoded(i2d_re_X509_tbs, x)));
}

std::string keyUsage(X509* x)
{
    static const char* const names[] = {"digitalSignature", "nonRepudiation", "keyEncipherment", "dataEncipherment", "keyAgreement",
                                        "keyCertSign",      "crlSign",        "encipherOnly",    "decipherOnly"};
    std::string list;
    for (int i = 0; i < 9; ++i) {
        if (X509_get_key_usage(x) & (i < 8 ? 0x80U >> i : 0x8000U)) list += (list.empty() ? "" : ", ") + std::string(names[i]);
    }
    return list;
}

std::string basicConstraints(X509* x)
{
    const std::string text = X509_get_extension_flags(x) & EXFLAG_CA ? "CA : TRUE" : "CA : FALSE";
    const long pathLength = X509_get_pathlen(x);
    return pathLength < 0 ? text : text + ", PathLenConstraint : " + std::to_string(pathLength);
}

// Every getter of an extension gives a text or finds it absent, and what OpenSSL decodes is in it.
void compareExtensions(X509* x, std::map<std::string, int>& texts)
{
    const ASN1_OCTET_STRING* const keyId = X509_get0_subject_key_id(x);
    const std::map<std::string, std::string> values = {
        {"GetKeyUsage", keyUsage(x)}, {"GetBasicConstraints", basicConstraints(x)}, {"GetSubKeyID", keyId ? hexOf(keyId) : ""}};
    Context context;
    ASSERT_EQ(context.load(encoded(i2d_X509, x)), 0) << context.error();
    for (const Case& c : cases("getters.txt", 6)) {
        if (c[3].empty()) continue;
        SCOPED_TRACE(c[0]);
        const Owned<ASN1_OBJECT> oid = decoded(d2i_ASN1_OBJECT, der("06{" + c[3] + "}"));
        const Result result = getText(context, c[0]);
        EXPECT_EQ(result.code, X509_get_ext_by_OBJ(x, oid.get(), -1) < 0 ? 1502 : 0) << context.error();
        texts[c[0]] += result.code == 0;
        const auto value = values.find(c[0]);
        if (value != values.end() && result.code == 0) { EXPECT_EQ(result.output, value->second); }
    }
}

} // namespace

TEST(Certificates, OfTheSystemReadAsOpenSSLReadsThem)
{
    int shown = 0, beyond2038 = 0;
    std::map<std::string, int> texts;
    for (const auto& entry : std::filesystem::directory_iterator(CA_CERTIFICATES)) {
        SCOPED_TRACE(entry.path());
        const Certificate x = readPem(entry.path());
        ASSERT_TRUE(x);
        Context context;
        const int code = context.load(encoded(i2d_X509, x.get()));
        if (instant(X509_get0_notAfter(x.get())) > 0x7FFFFFFF) {
            EXPECT_EQ(code, 1500);
            EXPECT_NE(context.error().find("calendar time cannot be represented"), std::string::npos);
            ++beyond2038;
            X509_gmtime_adj(X509_getm_notAfter(x.get()), 0); // with another end its extensions can still be looked at
            i2d_re_X509_tbs(x.get(), nullptr);
        } else {
            ASSERT_EQ(code, 0) << context.error();
            compare(context, x.get());
            ++shown;
        }
        compareExtensions(x.get(), texts);
    }
    EXPECT_GT(shown, 20);
    EXPECT_GT(shown + beyond2038, 100);
    for (const auto& [getter, count] : texts) RecordProperty(getter, count);
    RecordProperty("shown", shown);
    RecordProperty("beyond2038", beyond2038);
}

TEST(Certificates, FieldsAndExtensionsAreThoseOfTheNotation) { expectCalls("certificates.txt", goodValues()); }

TEST(Certificates, AFailedLoadLeavesNoneLoaded)
{
    Context context;
    const std::string good = readFile(SAMPLES "/hong.der");
    for (const std::string& bad :
         {std::string("-----BEGIN CERTIFICATE-----"), good.substr(0, good.size() - 1), std::string("\x30", 1)}) {
        ASSERT_EQ(context.load(good), 0);
        EXPECT_EQ(context.load(bad), 1500);
        EXPECT_EQ(context.error().find("[VRNO_CERT_Load] 잘못된 인증서 형식입니다. <tarnlib> ["), 0U);
        EXPECT_EQ(getText(context, "GetSubjectName").code, 1501);
    }
    ASSERT_EQ(context.load(good), 0);
    EXPECT_EQ(VRNO_CERT_Load(context, nullptr), 1004);
    field(context, "GetSubjectName"); // a failed check changes nothing
}
