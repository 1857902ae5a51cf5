// The getters of extensions: their texts and failures by table, and against what OpenSSL reads in real certificates.
#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/PIdentifyDataUtil.h"
#include "VNProcess/PPolicyUtil.h"
#include "VNProcess/PSubAltNameUtil.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/openssl.h"

#include <openssl/conf.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <filesystem>
#include <map>

using namespace test;

namespace {

// The octets of the extension that a getter shows.
std::string extensionOf(const std::string& getter)
{
    for (const Case& c : cases("getters.txt", 6)) {
        if (c[0] == getter) return c[3];
    }
    return "";
}

std::string unescaped(std::string text)
{
    for (const auto& [escape, meaning] : {std::pair{"\\n", "\r\n"}, {"\\t", "\t"}, {"\\s", " "}, {"\\v", "|"}}) {
        for (std::size_t at; (at = text.find(escape)) != std::string::npos;) text.replace(at, 2, meaning);
    }
    return text;
}

} // namespace

TEST(Extensions, RenderAsTheTableSays)
{
    for (const Case& c : cases("extensions.txt", 4)) {
        SCOPED_TRACE(c.where);
        Context context;
        ASSERT_EQ(context.load(certificateWith(extensionOf(c[0]), c[1])), 0) << context.error();
        const Result result = getText(context, c[0]);
        EXPECT_EQ(result.code, std::stoi(c[2])) << context.error();
        const std::string failure = "[VRNO_CERT_" + c[0] + "] 잘못된 인증서 형식입니다. <tarnlib> ";
        const std::string told = result.code == 0 ? fromKsc(result.output) : placeless(context.error());
        EXPECT_EQ(told, (result.code == 0 ? "" : failure) + unescaped(c[3]));
    }
}

TEST(Extensions, AbsentAndBrokenOnesGiveTheirCodes)
{
    for (const Case& c : cases("getters.txt", 6)) {
        if (c[3].empty()) continue;
        SCOPED_TRACE(c[0]);
        Context context;
        for (const std::string& without : {certificate({.version = ""}), certificateWith(c[3], "")}) {
            ASSERT_EQ(context.load(without), 0);
            EXPECT_EQ(getText(context, c[0]).code, 1502);
            EXPECT_EQ(context.error(), "[VRNO_CERT_" + c[0] + "] " + c[4] + " 필드가 없습니다.");
        }
        ASSERT_EQ(context.load(certificate({.extensions = "A3{30{30{0500 0400}}}"})), 0);
        EXPECT_EQ(getText(context, c[0]).code, 1500);
        EXPECT_EQ(innermost(context.error()), "extnID component is not ASN1_TAG_OID.");
    }
}

TEST(Extensions, AnAddressKeepsItsZeroOctets)
{
    Context context;
    ASSERT_EQ(context.load(certificateWith("551D11", "30{87{0A000001} 82{\"d\"}}")), 0);
    char text[64];
    ASSERT_EQ(VRNO_CERT_GetSubjectAltName(context, sizeof text, text), 0);
    const char expected[] = "IP Address=\x0A\0\0\x01\r\nDNS Name=d";
    EXPECT_EQ(std::string(text, sizeof expected), std::string(expected, sizeof expected));
}

// ---- what the exported functions do not reach ----

TEST(Extensions, DistributionPointNameInAWrapperOfItsOwn)
{
    vrno::RDistributionPointName name;
    name.setImplicitTag(0, 0x80);
    vrno::ByteString wrapped = byteString(der("A0{A0{86{\"u\"}}}")), broken = byteString(der("A0{0D00}"));
    ASSERT_EQ(name.fromASN1Object(wrapped), 0);
    EXPECT_EQ(hex(bytes(name.getFullName().get(0))), "860175");
    EXPECT_EQ(name.fromASN1Object(broken), 1);
}

TEST(Extensions, IdentifyDataIsTakenApart)
{
    for (const Case& c : cases("identify.txt", 5)) {
        SCOPED_TRACE(c.where);
        vrno::PIdentifyDataUtil util;
        vrno::ByteString value = byteString(der(c[0])), name, vid;
        EXPECT_EQ(util.parseIdentifyData(value, name, vid), std::stoi(c[1]));
        EXPECT_EQ(fromKsc(bytes(name)), c[2]);
        EXPECT_EQ(hex(bytes(vid)), c[3]);
        EXPECT_EQ(outermost(trail(util)), c[4]);
    }
}

TEST(Extensions, HexadecimalCanBeGrouped)
{
    vrno::PSubAltNameUtil util;
    util.m_nHexGroup = 2;
    util.m_nHexLine = 4;
    vrno::ByteString value = byteString(der("30{A0{06{2A03} A0{0403AABBCC}}}")), text;
    ASSERT_EQ(util.parseSubjectAlternativeName(value, text), 0);
    EXPECT_EQ(bytes(text), "Other Name:\r\n     1 2 3=04 03 \r\nAA BB \r\nCC");
}

TEST(Extensions, PolicyIdentifiersAreCounted)
{
    vrno::PPolicyUtil util;
    vrno::ByteString value = byteString(der("30{30{06{2A03}} 30{06{2A0304}}}"));
    EXPECT_EQ(util.getPolicyCount(), 0);
    ASSERT_EQ(util.parseCertificatePolicies(value), 0);
    EXPECT_EQ(util.getPolicyCount(), 2);
    EXPECT_EQ(bytes(util.getPolicyOid(1, '.')), "1.2.3.4");
    for (const int index : {-1, 2}) {
        EXPECT_EQ(bytes(util.getPolicyOid(index, ' ')), "");
        EXPECT_EQ(util.getLastError(), 1);
        EXPECT_EQ(placeless(trail(util)), "PPolicyUtil::getPolicyOid-index(1),Index invalid");
    }
}

// ---- against OpenSSL ----

namespace {

std::string oidText(const ASN1_OBJECT* oid)
{
    char text[256];
    OBJ_obj2txt(text, sizeof text, oid, 1);
    std::replace(text, text + sizeof text, '.', ' ');
    return text;
}

void append(std::string& list, const char* separator, const std::string& item) { list += (list.empty() ? "" : separator) + item; }

// The extension as OpenSSL decodes it, turned into what our getter should say; "" when it is not there.
template <class T> std::string expected(const X509* x, int nid, void (*release)(T*), std::string (*shown)(const T&))
{
    const std::unique_ptr<T, void (*)(T*)> value(static_cast<T*>(X509_get_ext_d2i(x, nid, nullptr, nullptr)), release);
    return value ? shown(*value) : "";
}

std::string keyUsage(const ASN1_BIT_STRING& bits)
{
    static const char* const names[] = {"digitalSignature", "nonRepudiation", "keyEncipherment", "dataEncipherment", "keyAgreement",
                                        "keyCertSign",      "crlSign",        "encipherOnly",    "decipherOnly"};
    std::string list;
    for (int i = 0; i < 9; ++i) {
        if (ASN1_BIT_STRING_get_bit(&bits, i)) append(list, ", ", names[i]);
    }
    return list;
}

std::string basicConstraints(const BASIC_CONSTRAINTS& constraints)
{
    const std::string text = constraints.ca ? "CA : TRUE" : "CA : FALSE";
    return constraints.pathlen ? text + ", PathLenConstraint : " + std::to_string(ASN1_INTEGER_get(constraints.pathlen)) : text;
}

std::string keyIdentifier(const ASN1_OCTET_STRING& octets) { return hexOf(&octets); }

std::string purposes(const EXTENDED_KEY_USAGE& usage)
{
    static const char* const names[] = {"serverAuth",  "clientAuth", "codeSigning",  "emailProtection", "ipsecEndSystem",
                                        "ipsecTunnel", "ipsecUser",  "timeStamping", "OCSPSigning"};
    const std::string arc = "1 3 6 1 5 5 7 3 ";
    std::string list;
    for (int i = 0; i < sk_ASN1_OBJECT_num(&usage); ++i) {
        const std::string oid = oidText(sk_ASN1_OBJECT_value(&usage, i));
        const bool known = oid.size() == arc.size() + 1 && oid.starts_with(arc) && oid.back() != '0';
        append(list, "\r\n", known ? std::string("id-kp-") + names[oid.back() - '1'] : oid);
    }
    return list;
}

std::string policies(const CERTIFICATEPOLICIES& all)
{
    std::string list;
    for (int i = 0; i < sk_POLICYINFO_num(&all); ++i) append(list, ", ", oidText(sk_POLICYINFO_value(&all, i)->policyid));
    return list;
}

std::string urls(const CRL_DIST_POINTS& points)
{
    std::string list;
    int count = 0;
    for (int i = 0; i < sk_DIST_POINT_num(&points); ++i) {
        const DIST_POINT_NAME* const name = sk_DIST_POINT_value(&points, i)->distpoint;
        for (int j = 0; name && name->type == 0 && j < sk_GENERAL_NAME_num(name->name.fullname); ++j) {
            const GENERAL_NAME* const general = sk_GENERAL_NAME_value(name->name.fullname, j);
            EXPECT_EQ(general->type, GEN_URI);
            const ASN1_IA5STRING* const uri = general->d.uniformResourceIdentifier;
            if (count++ < 3)
                append(
                    list, "|",
                    {reinterpret_cast<const char*>(ASN1_STRING_get0_data(uri)), static_cast<std::size_t>(ASN1_STRING_length(uri))});
        }
    }
    return list;
}

// Every getter gives a text or finds its extension absent, and what OpenSSL decodes is in it. Counts the texts.
void compare(const X509* x, std::map<std::string, int>& texts)
{
    const std::map<std::string, std::string> values = {
        {"GetKeyUsage", expected(x, NID_key_usage, ASN1_BIT_STRING_free, keyUsage)},
        {"GetBasicConstraints", expected(x, NID_basic_constraints, BASIC_CONSTRAINTS_free, basicConstraints)},
        {"GetSubKeyID", expected(x, NID_subject_key_identifier, ASN1_OCTET_STRING_free, keyIdentifier)},
        {"GetExtKeyUsage", expected(x, NID_ext_key_usage, EXTENDED_KEY_USAGE_free, purposes)},
        {"GetCertPolicy_PolicyID", expected(x, NID_certificate_policies, CERTIFICATEPOLICIES_free, policies)},
        {"GetCRLDP_URL", expected(x, NID_crl_distribution_points, CRL_DIST_POINTS_free, urls)},
    };
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
        if (value != values.end()) { EXPECT_EQ(result.output, value->second); }
    }
}

Certificate made(const std::string& extensions)
{
    Certificate x(X509_new());
    const Owned<EVP_PKEY> key(EVP_EC_gen("P-256"));
    X509_set_version(x.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(x.get()), 0x80);
    X509_gmtime_adj(X509_getm_notBefore(x.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x.get()), 1000);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(x.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>("홍길동"), -1, -1, 0);
    X509_set_issuer_name(x.get(), X509_get_subject_name(x.get()));
    X509_set_pubkey(x.get(), key.get());

    const Owned<BIO> text(BIO_new_mem_buf(extensions.data(), static_cast<int>(extensions.size())));
    const Owned<CONF> configuration(NCONF_new(nullptr));
    X509V3_CTX issuing;
    X509V3_set_ctx(&issuing, x.get(), x.get(), nullptr, nullptr, 0);
    X509V3_set_nconf(&issuing, configuration.get());
    EXPECT_EQ(NCONF_load_bio(configuration.get(), text.get(), nullptr), 1);
    EXPECT_EQ(X509V3_EXT_add_nconf(configuration.get(), &issuing, "ext", x.get()), 1) << extensions;
    EXPECT_GT(X509_sign(x.get(), key.get(), EVP_sha256()), 0);
    return x;
}

} // namespace

TEST(Extensions, ThatOpenSSLMakesReadAsItReadsThem)
{
    const std::string sections = "\n[dir]\nC=KR\nCN=a\n"
                                 "[policy]\npolicyIdentifier=1.2.410.200004.5.2.1.2\nCPS.1=http://cps\nuserNotice.1=@notice\n"
                                 "[notice]\nexplicitText=UTF8:알림\norganization=o\nnoticeNumbers=1,2\n"
                                 "[point]\nfullname=URI:http://c\nreasons=keyCompromise,CACompromise\nCRLissuer=dirName:dir\n"
                                 "[relative]\nrelativename=name\n[name]\nCN=r\n";
    const char* const table[] = {
        "keyUsage=digitalSignature,keyEncipherment,decipherOnly\nbasicConstraints=critical,CA:TRUE,pathlen:3\nextendedKeyUsage="
        "serverAuth,OCSPSigning,1.2.3.4",
        "keyUsage=nonRepudiation,dataEncipherment,keyAgreement,keyCertSign,cRLSign,encipherOnly\nbasicConstraints=CA:"
        "FALSE\nextendedKeyUsage=timeStamping",
        "basicConstraints=CA:TRUE\nsubjectKeyIdentifier=hash\nauthorityKeyIdentifier=keyid:always,issuer:always",
        "certificatePolicies=1.2.3.4,2.5.29.32.0,@policy\ncrlDistributionPoints=URI:http://a,URI:http://b,point,relative,URI:http:/"
        "/d",
        ("subjectAltName=email:a@b.kr,DNS:a.kr,URI:http://a,IP:1.2.3.4,RID:1.2.3,dirName:dir,otherName:1.2.3;UTF8:x\n"
         "authorityInfoAccess=OCSP;URI:http://o,caIssuers;URI:http://i"),
    };
    std::map<std::string, int> texts;
    for (const char* const extensions : table) {
        SCOPED_TRACE(extensions);
        compare(made("[ext]\n" + std::string(extensions) + sections).get(), texts);
    }
    EXPECT_EQ(texts.size(), 11U);
    for (const auto& [getter, count] : texts) EXPECT_GT(count, 0) << getter;
}

TEST(Extensions, OfTheSystemsCertificatesReadAsOpenSSLReadsThem)
{
    std::map<std::string, int> texts;
    int all = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CA_CERTIFICATES)) {
        SCOPED_TRACE(entry.path());
        const Certificate x = readPem(entry.path());
        ASSERT_TRUE(x);
        // One that ends beyond 2038 does not load. With another end its extensions can still be looked at.
        X509_gmtime_adj(X509_getm_notAfter(x.get()), 0);
        i2d_re_X509_tbs(x.get(), nullptr);
        compare(x.get(), texts);
        ++all;
    }
    EXPECT_GT(all, 100);
    for (const auto& [getter, count] : texts) RecordProperty(getter, count);
}
