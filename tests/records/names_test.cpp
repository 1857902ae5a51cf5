// Names as text, and the forms of GeneralName.
#include "ASN1Pkix/records/UDNSettings.h"
#include "support/bytes.h"
#include "support/cases.h"

#include <gtest/gtest.h>

using namespace vrno;
using namespace test;

TEST(Names, RenderAsTheTableSays)
{
    for (const Case& c : cases("names.txt", 3)) {
        SCOPED_TRACE(c.where);
        ByteString data = byteString(der(c[0])), text;
        RRDNSequence name;
        ASSERT_EQ(name.fromASN1Object(data), 0) << trail(name);
        EXPECT_EQ(UDNSettings::RDN2Str(name, text), std::stoi(c[1]));
        EXPECT_EQ(fromKsc(bytes(text)), c[2]);
    }
}

TEST(Names, GeneralNameGivesEachForm)
{
    using Getter = ByteString& (RGeneralName::*)();
    const struct {
        const char* input;
        int mask;
        Getter get;
        const char* value; // null: the getter fails, with this frame
        const char* frame;
    } table[] = {
        {"80{06{2A03} A0{0500}}", 1, &RGeneralName::getEncoded, "800806022a03a0020500", ""},
        {"81{\"a@k\"}", 2, &RGeneralName::getRFC822Name, "61406b", ""},
        {"82{\"a.kr\"}", 3, &RGeneralName::getDNSName, "612e6b72", ""},
        {"A4{30{31{30{06{550403} 13{\"A\"}}}}}", 5, &RGeneralName::getDNformDirectoryName, "636e3d41", ""},
        {"A4{3000}", 5, &RGeneralName::getDNformDirectoryName, "", ""},
        {"86{\"h:\"}", 7, &RGeneralName::getUniformResourceIdentifier, "683a", ""},
        {"87{7F000001}", 8, &RGeneralName::getIPAddress, "7f000001", ""},
        {"88{2A03}", 9, &RGeneralName::getRegisteredID, "3120322033", ""},
        {"A2{0400}", 3, &RGeneralName::getDNSName, nullptr, "RGeneralName::getDNSName-asnDNSName(1)"},
        {"A4{0400}", 5, &RGeneralName::getDNformDirectoryName, nullptr, "RGeneralName::getDNformDirectoryName-rdnSequence(1)"},
        {"8800", 9, &RGeneralName::getRegisteredID, nullptr, "RGeneralName::getRegisteredID-asnRegisteredID(1)"},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.input);
        RGeneralName name;
        ByteString data = byteString(der(row.input));
        ASSERT_EQ(name.fromASN1Object(data), 0) << trail(name);
        EXPECT_EQ(name.getBitMask(), row.mask);
        const std::string value = hex(bytes((name.*row.get)()));
        EXPECT_EQ(name.getLastError(), row.value ? 0 : 1);
        EXPECT_EQ(value, row.value ? row.value : "");
        if (!row.value) { EXPECT_EQ(outermost(trail(name)), row.frame); }
    }
}

TEST(Names, GeneralNameInAWrapperOfItsOwn)
{
    RGeneralName name;
    name.setImplicitTag(1, 0x80);
    ByteString wrapped = byteString(der("A1{82{\"a\"}}")), empty = byteString(der("A100"));
    ASSERT_EQ(name.fromASN1Object(wrapped), 0);
    EXPECT_EQ(hex(bytes(name.getEncoded())), "820161");
    EXPECT_EQ(hex(bytes(name.toASN1Object())), "a103820161");
    EXPECT_EQ(name.fromASN1Object(empty), 2);
    EXPECT_EQ(bytes(name.toASN1Object()), "");
    EXPECT_EQ(innermost(trail(name)), "Any component does not chosen.");
}

TEST(Names, IdentifyDataHoldsANameAndItsUserInfo)
{
    RIdentifyData data;
    ByteString in = byteString(der("30{0C{ED998D} 30{0500}}"));
    ASSERT_EQ(data.fromASN1Object(in), 0);
    EXPECT_EQ(hex(bytes(data.getRealName())), "4dd6");
    EXPECT_EQ(hex(bytes(data.getUserInfo(0))), "0500");
    data.getUserInfo(1);
    EXPECT_EQ(data.getLastError(), 1);
    EXPECT_EQ(outermost(trail(data)), "RIdentifyData::getUserInfo-m_userInfo(1)");
}
