// Certificates that others made, against what OpenSSL reads in them.
#include "ASN1Pkix/records/RCertificate.h"
#include "VNProcess/PCertUtil2.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/openssl.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>

using namespace test;

namespace {

std::time_t instant(const ASN1_TIME* time)
{
    std::tm fields{};
    EXPECT_EQ(ASN1_TIME_to_tm(time, &fields), 1);
    return timegm(&fields);
}

std::string localText(std::time_t instant)
{
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&instant));
    return text;
}

// Every field of a loaded certificate but the rendered names.
void compare(const Context& context, const X509* x)
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
    char oid[80], keyAlgorithm[50], from[20], to[20];
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
}

} // namespace

TEST(Certificates, OfTheSystemReadAsOpenSSLReadsThem)
{
    int shown = 0, beyond2038 = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CA_CERTIFICATES)) {
        SCOPED_TRACE(entry.path());
        const Certificate x = readPem(entry.path());
        ASSERT_TRUE(x);
        const std::string der = encoded(i2d_X509, x.get());
        Context context;
        const int code = context.load(der);
        if (instant(X509_get0_notAfter(x.get())) > 0x7FFFFFFF) {
            EXPECT_EQ(code, 1500);
            EXPECT_NE(context.error().find("calendar time cannot be represented"), std::string::npos);
            ++beyond2038;
            continue;
        }
        ASSERT_EQ(code, 0) << context.error();
        compare(context, x.get());
        for (const char* const name : {"GetIssuerName", "GetSubjectName"}) field(context, name);

        vrno::ByteString data = byteString(der), tbs;
        vrno::RCertificate record;
        ASSERT_EQ(record.fromASN1Object(data), 0);
        unsigned char* out = nullptr;
        const int length = i2d_re_X509_tbs(x.get(), &out);
        const Owned<unsigned char> owner(out);
        EXPECT_EQ(hex(bytes(record.getTBSCertificate().toASN1Object())),
                  hex({reinterpret_cast<char*>(out), static_cast<std::size_t>(length)}));
        ++shown;
    }
    EXPECT_GT(shown, 20);
    RecordProperty("shown", shown);
    RecordProperty("beyond2038", beyond2038);
}

TEST(Certificates, SampleShowsHangul)
{
    Context context;
    ASSERT_EQ(context.load(readFile(SAMPLES "/hong.der")), 0);
    EXPECT_EQ(fromKsc(field(context, "GetSubjectName")), "cn=홍길동(Gildong)0001,ou=개인,o=한국시험인증,c=KR");
    EXPECT_EQ(fromKsc(field(context, "GetIssuerName")), "cn=시험 최상위 인증기관,ou=인증센터,o=한국시험인증,c=KR");
    EXPECT_EQ(field(context, "GetSignatureAlgorithm"), "sha1 With RSAEncryption");
    EXPECT_EQ(field(context, "GetSerialNum"), "c35a2b1f");
}

// ---- certificates in notation, for what the real ones do not show ----

TEST(Certificates, FieldsOfEveryKind)
{
    const std::string longOid = "2A FFFFFF7F FFFFFF7F FFFFFF7F FFFFFF7F FFFFFF7F"; // 53 characters of text
    const struct {
        std::string version, algorithm, key;
        int versionNumber;
        const char *algorithmName, *keyAlgorithm;
    } table[] = {
        {"", "2A864886F70D010105", "2A03", 1, "sha1 With RSAEncryption", "1 2 3"},
        {"A0{020102}", "2A8648CE3D0401", longOid, 3, "ECDSA with SHA1", "1 2 268435455 268435455 268435455 268435455 26843"},
        {"A0{02047FFFFFFF}", "2A03", "2A03", -0x7FFFFFFF - 1, "1 2 3 : Unknown AlgorithmIdentifier", "1 2 3"},
        {"A0{020101}", "2A831A8C9A440117", "2A03", 2, "KCDSA1 With SHA1", "1 2 3"},
        {"", "2A8648CE3D040302", "2A03", 1, "1 2 840 10045 4 3 2 : Unknown AlgorithmIdentifier", "1 2 3"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.algorithmName);
        Context context;
        ASSERT_EQ(context.load(certificate({.version = row.version,
                                            .signature = "06{" + std::string(row.algorithm) + "}",
                                            .algorithm = "06{" + std::string(row.key) + "}"})),
                  0)
            << context.error();
        int version = 0;
        EXPECT_EQ(VRNO_CERT_GetVersion(context, &version), 0);
        EXPECT_EQ(version, row.versionNumber);
        EXPECT_EQ(field(context, "GetSignatureAlgorithm"), row.algorithmName);
        EXPECT_EQ(field(context, "GetSerialNum"), "c3");
        char algorithm[51], key[16];
        std::memset(algorithm, 'x', sizeof algorithm);
        EXPECT_EQ(VRNO_CERT_GetPubKey(context, 2, algorithm, key), 1005);
        EXPECT_EQ(algorithm[0], 'x');
        EXPECT_EQ(VRNO_CERT_GetPubKey(context, sizeof key, algorithm, key), 0);
        EXPECT_STREQ(algorithm, row.keyAlgorithm);
        EXPECT_EQ(algorithm[50], 'x');
        EXPECT_STREQ(key, "3f");
    }
}

TEST(Certificates, ABrokenFieldSpoilsOnlyItsOwnGetter)
{
    Context context;
    std::string broken = certificate({.version = ""});
    ASSERT_EQ(context.load(broken), 0);
    broken.replace(broken.find(der("30{06{2A03}}")), 6, der("30{06{2AFF}}"));
    broken.replace(broken.find(der("06{550403}")), 5, der("06{550441}"));
    ASSERT_EQ(context.load(broken), 0);
    EXPECT_EQ(getText(context, "GetSignatureAlgorithm").code, 1500);
    EXPECT_EQ(placeless(context.error()),
              "[VRNO_CERT_GetSignatureAlgorithm] 잘못된 인증서 형식입니다. <tarnlib> "
              "PCertUtil2::getSignatureAlgorithm-pSignature(2),RAlgorithmIdentifier::getAlgorithm-m_algorithm(1),"
              "ASN1ObjectIdentifier::getOID-nOID(1),ASN1 OID Format Error");
    EXPECT_EQ(getText(context, "GetIssuerName").code, 1500);
    EXPECT_EQ(placeless(context.error()), "[VRNO_CERT_GetIssuerName] 잘못된 인증서 형식입니다. <tarnlib> "
                                          "PCertUtil2::getIssuerDN-UDNSettings::RDN2Str()(2),Wrong RDNSequence form.");
    EXPECT_EQ(field(context, "GetSubjectName"), "cn=A");
    EXPECT_EQ(field(context, "GetSerialNum"), "c3");
}

TEST(Certificates, AFailedLoadLeavesNoneLoaded)
{
    Context context;
    const std::string good = readFile(SAMPLES "/hong.der");
    for (const std::string& bad :
         {std::string("-----BEGIN CERTIFICATE-----"), good.substr(0, good.size() - 1), std::string("\x30", 1)}) {
        ASSERT_EQ(context.load(good), 0);
        EXPECT_EQ(context.load(bad), 1500);
        EXPECT_EQ(context.error().find("[VRNO_CERT_Load] 잘못된 인증서 형식입니다. <tarnlib> ["), 0U);
        int version = 0;
        EXPECT_EQ(VRNO_CERT_GetVersion(context, &version), 1501);
    }
    ASSERT_EQ(context.load(good), 0);
    EXPECT_EQ(VRNO_CERT_Load(context, nullptr), 1004);
    int version = 0;
    EXPECT_EQ(VRNO_CERT_GetVersion(context, &version), 0); // a failed check changes nothing
    EXPECT_EQ(VRNO_CERT_Unload(context), 0);
    EXPECT_EQ(VRNO_CERT_Unload(context), 0);
    EXPECT_EQ(VRNO_CERT_GetVersion(context, &version), 1501);
}

TEST(Extensions, AreFoundAbsentOrBroken)
{
    const std::string one = "30{06{551D0E} 0402AABB}", empty = "30{06{551D0F} 0101FF 0400}", broken = "30{0500 0400}";
    const struct {
        std::string extensions;
        const char* oid;
        int status;
        const char *value, *message;
    } table[] = {
        {one, "2 5 29 14", 0, "aabb", ""},
        {empty + one, "2 5 29 14", 0, "aabb", ""},
        {one + "30{06{551D0E} 0401CC}", "2 5 29 14", 0, "aabb", ""},
        {one, "2 5 29 1", 4096, "", "The extension does not exist."},
        {one, "2 5 29 140", 4096, "", "The extension does not exist."},
        {empty, "2 5 29 15", 4096, "", "The extension does not exist."},
        {one + broken, "2 5 29 14", 0, "aabb", ""},
        {broken + one, "2 5 29 14", 2, "", "extnID component is not ASN1_TAG_OID."},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.extensions + " " + row.oid);
        vrno::ByteString cert =
            byteString(certificate({.version = "", .extensions = "A3{30{" + std::string(row.extensions) + "}}"}));
        vrno::PCertUtil2 loaded, other;
        ASSERT_EQ(loaded.setCertificate(cert), 0);
        EXPECT_EQ(hex(bytes(loaded.getExtensionValue(row.oid))), row.value);
        EXPECT_EQ(loaded.getLastError(), row.status);
        EXPECT_EQ(hex(bytes(other.getExtensionValue(cert, row.oid))), row.value);
        EXPECT_EQ(other.getLastError(), row.status);
        if (row.status) { EXPECT_EQ(innermost(trail(loaded)), row.message); }
    }
    vrno::PCertUtil2 none;
    vrno::ByteString garbage = byteString("garbage");
    none.getExtensionValue("2 5 29 14");
    EXPECT_EQ(outermost(trail(none)), "PCertUtil2::getExtensionValue-m_pTBSCert(1)");
    none.getExtensionValue(garbage, "2 5 29 14");
    EXPECT_EQ(outermost(trail(none)), "PCertUtil2::getExtensionValue-cert(1)");
    int time = 7;
    EXPECT_EQ(none.getValidityNotBefore_value(&time), 1);
    EXPECT_EQ(time, 7);
    none.getSerialNo();
    EXPECT_EQ(none.getLastError(), 1);
    EXPECT_EQ(innermost(trail(none)), "The certificate does not set.");
}
