// The getters of extensions: their texts and failures by table.
#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/PIdentifyDataUtil.h"
#include "VNProcess/PPolicyUtil.h"
#include "VNProcess/PSubAltNameUtil.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/cases.h"
#include "support/certificates.h"

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
