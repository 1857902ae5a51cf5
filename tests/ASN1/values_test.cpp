// The ASN.1 values: decoding and encoding of every class, and what their typed accessors add.
#include "ASN1/ASN1BitString.h"
#include "ASN1/ASN1Boolean.h"
#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1Null.h"
#include "ASN1/ASN1ObjectIdentifier.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1/ASN1Sequence.h"
#include "ASN1/ASN1Strings.h"
#include "ASN1/ASN1Times.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/guarded.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>

using namespace vrno;
using namespace test;

using Maker = std::unique_ptr<ASN1Object> (*)();
template <class... Value> static std::map<std::string, Maker> makers(const char* names)
{
    return byName<Maker>(names, {[]() -> std::unique_ptr<ASN1Object> { return std::make_unique<Value>(); }...});
}
#define CLASSES(...) makers<__VA_ARGS__>(#__VA_ARGS__)

TEST(Values, DecodeAndEncodeAsTheTableSays)
{
    const std::map<std::string, Maker> classes = CLASSES(
        ASN1Object, ASN1Boolean, ASN1Integer, ASN1BitString, ASN1OctetString, ASN1Null, ASN1Sequence, ASN1ObjectIdentifier, ASN1Set,
        ASN1PrintableString, ASN1IA5String, ASN1VisibleString, ASN1T61String, ASN1UTF8String, ASN1BMPString, ASN1UTCTime);
    for (const Case& c : cases("values.txt", 5)) {
        SCOPED_TRACE(c.where);
        const auto value = classes.at(c[0])();
        const std::string input = der(c[1]);
        // The input in a block of its own, so that a read behind it shows under AddressSanitizer.
        ByteString data;
        if (!input.empty()) data = byteString(input);
        const bool encodingFails = c[2] == "1!";
        const int code = value->fromASN1Object(data);
        EXPECT_EQ(code, encodingFails ? 0 : std::stoi(c[2]));
        if (encodingFails) {
            EXPECT_EQ(bytes(value->toASN1Object()), "");
            EXPECT_EQ(value->getLastError(), 1);
        }
        if (code != 0 || encodingFails) {
            EXPECT_EQ(placeless(trail(*value)), c[3]);
        } else {
            EXPECT_EQ(hex(bytes(value->getValue())), hex(der(c[3])));
            EXPECT_EQ(hex(bytes(value->toASN1Object())), hex(c[4] == "=" ? input : der(c[4])));
        }
    }
}

// Headers cut off, and contents that are not there: nothing behind them is read.
TEST(Values, NothingIsReadBehindTheInput)
{
    struct Opened : ASN1Object {
        static bool fits(Octets in) { return readLength(in).fit(in.size()); }
    };
    for (const char* const cut : {"", "01", "81", "82", "8200", "830000", "84000000", "88000000", "FF"}) {
        EXPECT_FALSE(Opened::fits(Guarded(der(cut)))) << cut;
    }
    const std::string nested = der("3080 3080 0482000141 9F8101820001FF 0000 A0820002 0500 0000");
    for (std::size_t length = 0; length <= nested.size(); ++length) {
        const Guarded cut(nested.substr(0, length));
        ASN1Object object;
        int contents = -1, number = 0;
        EXPECT_EQ(object.findIndefiniteLengEnd(cut.data() + 2 * (length > 1), cut.size() - 2 * (length > 1), &contents) == 0,
                  length == nested.size())
            << length;
        EXPECT_EQ(object.GetHighTag(Guarded(std::string(length % 4, '\x81')).data(), static_cast<int>(length % 4), &number, false),
                  0);
    }
}

// What "setBytes" keeps of octets and a sign, and what "getBytes" gives of it, with the sign and without.
TEST(Integer, NumbersAndOctetsTakeTheirForm)
{
    for (const Case& c : cases("integers.txt", 6)) {
        SCOPED_TRACE(c.where);
        ASN1Integer value;
        if (c[1].empty()) {
            value.setIntValue(std::stoi(c[0]));
            EXPECT_EQ(hex(bytes(value.getValue())), c[2]);
            EXPECT_EQ(value.getIntValue(), std::stoi(c[0]));
            continue;
        }
        ByteString in = byteString(der(c[0])), out = byteString("stale");
        value.setBytes(in, std::stoi(c[1]));
        EXPECT_EQ(hex(bytes(value.getValue())), c[2]);
        EXPECT_EQ(value.getBytes(out, c[3] == "signed"), std::stoi(c[5]));
        EXPECT_EQ(hex(bytes(out)), c[4]);
    }
    ASN1Integer tooLong;
    tooLong.setValue("\x01\x01\x01\x01\x01");
    EXPECT_EQ(tooLong.getIntValue(), 0);
    ASN1Boolean boolean;
    EXPECT_FALSE(boolean.getBoolValue());
    boolean.setBoolValue(1);
    EXPECT_TRUE(boolean.getBoolValue());
    boolean.setValue("\x01");
    EXPECT_FALSE(boolean.getBoolValue());
}

TEST(BitString, TrimmingCountsUnusedBits)
{
    ASN1BitString value;
    int unused = -1;
    EXPECT_EQ(bytes(value.getBitString(&unused)), "");
    EXPECT_EQ(value.getLastError(), 1);
    ByteString bits = byteString(der("A000")), zeros = byteString(der("0000")), none;
    EXPECT_EQ(value.setBitString(bits, true), 0);
    EXPECT_EQ(hex(bytes(value.getValue())), "05a0");
    EXPECT_EQ(value.setBitString(zeros, true), 1);
    EXPECT_EQ(hex(bytes(value.getValue())), "05a0");
    EXPECT_EQ(value.setBitString(bits, false), 0);
    EXPECT_EQ(hex(bytes(value.getBitString(&unused))), "a000");
    EXPECT_EQ(unused, 0);
    EXPECT_EQ(value.setBitString(none, true), 0);
    EXPECT_EQ(hex(bytes(value.getValue())), "00");
}

TEST(ObjectIdentifier, TextAndOctetsBothWays)
{
    ASN1ObjectIdentifier oid;
    for (const char* text : {"1.2.840.113549", "1 2 840 113549", "oid 1-2-840-113549."}) {
        EXPECT_EQ(oid.setOID(text), 0);
        EXPECT_EQ(bytes(oid.getOID(' ')), "1 2 840 113549");
        EXPECT_EQ(bytes(oid.getOID('.')), "1.2.840.113549");
    }
    const std::string eighteen = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18";
    EXPECT_EQ(oid.setOID("7"), 2);
    EXPECT_EQ(oid.setOID(static_cast<const char*>(nullptr)), 2);
    EXPECT_EQ(oid.setOID((eighteen + " 19 20").c_str()), 1);
    EXPECT_EQ(innermost(trail(oid)), "Value(" + eighteen + " 19 20) is not ASN1 OID Format");
    EXPECT_EQ(bytes(oid.getOID(' ')), "1 2 840 113549");                 // as it was
    for (const char* const large : {" 99999999999999", " 4294967295"}) { // is 2^31 - 1
        EXPECT_EQ(oid.setOID((eighteen + large).c_str()), 0);
        EXPECT_TRUE(bytes(oid.getValue()).ends_with("\x87\xFF\xFF\xFF\x7F")) << large;
    }
    for (const Case& c : cases("oids.txt", 2)) {
        const std::string octets = der(c[0]);
        oid.setValue(octets.data(), static_cast<int>(octets.size()));
        EXPECT_EQ(bytes(oid.getOID(' ')), c[1]) << c.where;
        EXPECT_EQ(oid.getLastError(), octets.empty() ? 2 : c[1].empty() ? 1 : 0);
    }
}

TEST(Sequence, GivesEachComponentWithItsTag)
{
    ASN1Sequence sequence;
    ByteString data = byteString(der("30{0101FF 800141 A103020105 3080020107 0000 BF8180010141 040541}"));
    ASSERT_EQ(sequence.fromASN1Object(data), 0);
    ASSERT_EQ(sequence.getComponentCount(), 6);
    const int tagNumbers[] = {-1, 0, 1, -16, 16385, -4, -1}, universalTags[] = {1, -2, -2, 16, -2, 4, -1};
    const char* const components[] = {"0101ff", "800141", "a103020105", "30800201070000", "bf8180010141", "040541", ""};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(sequence.getComponentTagNo(i), tagNumbers[i]) << i;
        EXPECT_EQ(sequence.getComponentUniversalTag(i), universalTags[i]) << i;
        EXPECT_EQ(hex(bytes(sequence.getComponent(i))), components[i]) << i;
    }
    EXPECT_EQ(sequence.getLastError(), 1);
    EXPECT_EQ(innermost(trail(sequence)), "Component No(6) <= index(6) Error");
    ASN1OctetString cut;
    EXPECT_EQ(cut.fromASN1Object(sequence.getComponent(5)), 1);
}

TEST(Sequence, KeepsWhatItsReaderLooksAtAndCountsTheRest)
{
    ASN1Sequence sequence;
    ByteString data = byteString(der("30{0500 020105 0400 0400}"));
    sequence.keepOnly(2);
    ASSERT_EQ(sequence.fromASN1Object(data), 0);
    EXPECT_EQ(sequence.getComponentCount(), 4);
    EXPECT_EQ(hex(bytes(sequence.getComponent(1))), "020105");
    EXPECT_EQ(sequence.getComponentUniversalTag(2), -1);
    EXPECT_EQ(bytes(sequence.getComponent(2)), "");
    EXPECT_EQ(sequence.getLastError(), 1);
    EXPECT_EQ(sequence.addComponent(data, -1), 1);
    sequence.keepOnly(4);
    ASSERT_EQ(sequence.fromASN1Object(data), 0);
    EXPECT_EQ(hex(bytes(sequence.takeLastComponent())), "0400");
    EXPECT_EQ(bytes(sequence.getComponent(0)), ""); // gone with the value
    ASSERT_EQ(sequence.fromASN1Object(data), 0);
    sequence.clearComponents();
    EXPECT_EQ(sequence.getComponentCount(), 0);
    EXPECT_EQ(hex(bytes(sequence.toASN1Object())), "3000");
}

// The octets that all three setValue forms take, in order.
template <class String> static std::string taken()
{
    std::string out;
    for (int octet = 1; octet < 256; ++octet) {
        const char text[] = {static_cast<char>(octet), '\0'};
        ByteString copy(text, 1);
        String one, two, three;
        const bool takes = one.setValue(text, 1) == 0;
        EXPECT_EQ(two.setValue(text) == 0, takes);
        EXPECT_EQ(three.setValue(copy) == 0, takes);
        EXPECT_EQ(three.getValueLength(), takes ? 1 : 0);
        if (takes) out += text;
    }
    return out;
}

TEST(Strings, CharacterSetsTakeNothingElse)
{
    const std::string digits = "0123456789", upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ", lower = "abcdefghijklmnopqrstuvwxyz";
    std::string ascii;
    for (char c = 32; c < 127; ++c) ascii += c;
    EXPECT_EQ(taken<ASN1IA5String>(), ascii);
    EXPECT_EQ(taken<ASN1PrintableString>(), " '()+,-./" + digits + ":=?" + upper + lower);
    EXPECT_EQ(taken<ASN1VisibleString>(), " !\"%&'()*+,-./" + digits + ":;<=>?@" + upper + "\\^_" + lower + "|~");
    EXPECT_EQ(taken<ASN1T61String>().size(), 255U);

    ASN1IA5String ia5;
    ASN1VisibleString visible;
    EXPECT_EQ(ia5.setValue("kept") + 2 * ia5.setValue("a\nb") + 4 * visible.setValue("#"), 6);
    EXPECT_EQ(bytes(ia5.getValue()), "kept");
    EXPECT_EQ(innermost(trail(ia5)), "Value(a)is not ASN1IA5String");
    EXPECT_EQ(innermost(trail(visible)), "Char (232d)does not in ASN1_TAG_VISIBLESTRING");
}

// Decodes a time; its instant or its trail in `told`.
template <class Time, class... Check> static int decoded(const Case& c, std::string& told, Check... check)
{
    ByteString data = byteString(der(c[0] + "{\"" + c[1] + "\"}"));
    Time time;
    const int code = time.fromASN1Object(data, check...);
    told = code == 0 ? std::to_string(time.getGMTTime()) : placeless(trail(time));
    return code;
}

TEST(Times, TextsBecomeInstantsWhateverTheZone)
{
    for (const char* zone : {"UTC", "Asia/Seoul", "America/St_Johns"}) {
        setenv("TZ", zone, 1);
        tzset();
        for (const Case& c : cases("times.txt", 4)) {
            SCOPED_TRACE(c.where + " " + zone);
            std::string told, expected = c[3];
            const int code = c[0] == "17" ? decoded<ASN1UTCTime>(c, told) : decoded<ASN1GeneralizedTime>(c, told, true);
            EXPECT_EQ(code, c[2] == "0" ? 0 : 3);
            if (const auto at = expected.find('%'); at != std::string::npos) expected.replace(at, 1, c[1]);
            EXPECT_EQ(told, expected);
        }
    }
    unsetenv("TZ");
    tzset();
}

TEST(Times, InstantsBecomeTexts)
{
    ASN1UTCTime utc;
    ASN1GeneralizedTime general;
    for (const auto& [instant, text] : {std::pair{0, "700101000000Z"}, {1078056000, "040229120000Z"}}) {
        EXPECT_EQ(utc.setGMTTime(instant), 0);
        EXPECT_EQ(bytes(utc.getValue()), text);
    }
    EXPECT_EQ(general.setGMTTime(0x7FFFFFFF, 5), 0);
    EXPECT_EQ(bytes(general.getValue()), "20380119031407Z");
    EXPECT_EQ(utc.setGMTTime(-1), 1);
    EXPECT_EQ(innermost(trail(utc)), "-1 represents a date before midnight, January 1, 1970");
    EXPECT_EQ(utc.setValue("0401011200Z") + 2 * utc.setValue("0401") + 4 * general.setValue("20040229120000.25Z"), 2);
    EXPECT_EQ(bytes(utc.getValue()), "0401011200Z");
    EXPECT_EQ(general.m_nFraction, 25);
    ByteString early = byteString(der("18{\"19691231235959Z\"}"));
    EXPECT_EQ(general.fromASN1Object(early, false), 0);
    EXPECT_EQ(general.getGMTTime(), -1);
}
