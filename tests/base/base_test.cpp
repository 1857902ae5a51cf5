// ByteString and what stands on it: the trail, the clock, Base64 and the builder.
#include "base/Base64.h"
#include "base/Base64Kernels.h"
#include "base/ByteBuilder.h"
#include "base/DateTime.h"
#include "base/Objects.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/failing.h"
#include "support/guarded.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cctype>
#include <cstdlib>
#include <ctime>

using namespace vrno;
using namespace test;

TEST(ByteString, EmptyComesInTwoForms)
{
    ByteString none, block("", 0), negative("x", -1), fromBlock, copy(block);
    fromBlock = block;
    EXPECT_TRUE(none.isNull() && negative.isNull() && fromBlock.isNull());
    EXPECT_FALSE(block.isNull() || copy.isNull());
    EXPECT_TRUE(none == static_cast<const char*>(nullptr));
    EXPECT_TRUE(block != static_cast<const char*>(nullptr));
    EXPECT_TRUE(none == "" && block == "");
    EXPECT_STREQ(none.getText(), "");
    EXPECT_STREQ(block.getTextOrEmpty(), "");
    EXPECT_EQ(block.setData(nullptr, 5), 0);
    EXPECT_TRUE(block.isNull());
}

TEST(ByteString, HoldsZeroBytesAndEndsInOne)
{
    const std::string data("a\0b", 3);
    ByteString string = byteString(data), copy(string), assigned, appended("x", 1), cut;
    assigned = string;
    appended += string;
    cut = string.getText();
    EXPECT_EQ(bytes(copy), data);
    EXPECT_EQ(bytes(assigned), data);
    EXPECT_EQ(bytes(appended), "x" + data);
    EXPECT_EQ(bytes(cut), "a");
    EXPECT_EQ(appended.getBytes()[4], 0);
    EXPECT_FALSE(string == "a");
}

TEST(ByteString, EveryOperationTakesTheObjectItself)
{
    ByteString string("ab", 2);
    string += string;
    string += string.getText() + 3;
    EXPECT_TRUE(string == "ababb");
    string = *&string;
    string = string.getText() + 1;
    EXPECT_TRUE(string == "babb");
    EXPECT_EQ(string.setData(string.getBytes() + 2, 2), 0);
    EXPECT_EQ(string.format("<%s>", string.getText()), 0);
    EXPECT_TRUE(string == "<bb>");
    string = "";
    string += nullptr;
    EXPECT_TRUE(string.isNull());
}

TEST(ByteString, BytesAreReachedWithinTheLength)
{
    ByteString string("ab", 2);
    unsigned char out = 9;
    EXPECT_EQ(string.getAt(2, &out), 1);
    EXPECT_EQ(string.getAt(-1, &out), 1);
    EXPECT_EQ(string.setAt(2, 'x'), 1);
    EXPECT_EQ(out, 9);
    EXPECT_EQ(string.setAt(1, 'c'), 0);
    EXPECT_EQ(string.getAt(1, &out), 0);
    EXPECT_EQ(out, 'c');
    string.wipe();
    EXPECT_EQ(bytes(string), std::string(2, '\0'));
}

TEST(ByteString, HexadecimalForms)
{
    ByteString string = byteString(der("0AFF")), three = byteString(der("0102AB")), none;
    EXPECT_TRUE(string.toHex() == "0aff");
    EXPECT_TRUE(none.toHex() == "");
    EXPECT_TRUE(three.toHexGrouped(2, 4) == "01 02 \r\nAB");
    EXPECT_TRUE(three.toHexGrouped(0, 0) == "0102AB");
    EXPECT_TRUE(three.toHexGrouped(3, 0) == "010 2AB");
    EXPECT_TRUE(three.toHexGrouped(-1, 2) == "01\r\n02\r\nAB");
}

TEST(ByteString, FormatStopsAt2047Bytes)
{
    ByteString string("old", 3);
    const std::string longest(2047, 'a'), tooLong(2048, 'a');
    EXPECT_EQ(string.format("%s", tooLong.c_str()), 4);
    EXPECT_TRUE(string == "old");
    EXPECT_EQ(string.format("%s", longest.c_str()), 0);
    EXPECT_EQ(bytes(string), longest);
    EXPECT_EQ(string.format("a%cb", 0), 0);
    EXPECT_TRUE(string == "a");
}

TEST(Trail, FramesStandFromTheOutermostInwards)
{
    PObject inner;
    VNObject outer;
    inner.addTrailFrame("C:\\src\\a.cpp", 7, "A", "f", "x", 3, nullptr);
    EXPECT_EQ(trail(inner), "[a.cpp:7]A::f-x(3)");
    inner.addTrailFrame("/src/b.cpp", 8, "B", "g", "y", 4, trail(inner).c_str());
    outer.addTrailFrame("c.cpp", 9, "C", "h", "z", 5, trail(inner).c_str());
    EXPECT_EQ(trail(outer), "[c.cpp:9]C::h-z(5),[b.cpp:8]B::g-y(4),[a.cpp:7]A::f-x(3)");
}

TEST(Builder, StaysFailed)
{
    ByteBuilder builder;
    ByteString out("x", 1);
    {
        const FailingAllocation second(2);
        for (int i = 0; i < 100; ++i) builder.add('a');
    }
    builder.add('b');
    EXPECT_TRUE(builder.failed());
    EXPECT_EQ(builder.into(out), 2);
    EXPECT_TRUE(out.isNull());
}

TEST(DateTime, ShowsLocalTimeInSummerAndWinter)
{
    const std::string started = getenv("TZ") ? getenv("TZ") : "";
    if (started == "Asia/Seoul") {
        EXPECT_EQ(DateTime().getZoneOffset(), -32400); // read once a process
    }
    for (const Case& c : cases("zones.txt", 3)) {
        setenv("TZ", c[0].c_str(), 1);
        tzset();
        DateTime time;
        time.setTime(std::stoi(c[1]), true);
        EXPECT_EQ(bytes(time.formatTime("%Y-%m-%d %H:%M:%S")), c[2]) << c.where;
    }
    setenv("TZ", started.c_str(), 1);
    tzset();
    DateTime utc;
    utc.setTime(1078056000, false);
    EXPECT_EQ(utc.m_nHour, 12);
    EXPECT_EQ(utc.m_nMonth, 2);
    EXPECT_TRUE(utc.formatTime("") == "");
}

TEST(Base64, IsThatOfOpenSSLForEveryLength)
{
    std::string data;
    for (int length = 0; length < 200; ++length, data += static_cast<char>(length * 37)) {
        ByteString in = byteString(data), text, back;
        ASSERT_EQ(base64Encode(in.octets(), text), 0);
        std::string expected(data.size() * 2 + 8, '\0');
        expected.resize(static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(expected.data()),
                                                                 reinterpret_cast<const unsigned char*>(data.data()), length)));
        ASSERT_EQ(bytes(text), expected);
        ASSERT_EQ(base64Decode(text.octets(), back), 0);
        ASSERT_EQ(bytes(back), data);
    }
}

// A kernel and the portable one behind it, in areas that end where no access is allowed.
std::string converted(base64::Function kernel, base64::Function portable, const std::string& in, std::size_t inGroup,
                      std::size_t outGroup)
{
    const test::Guarded from(in), to(std::string(in.size() / inGroup * outGroup, '\0'));
    const auto out = const_cast<unsigned char*>(to.data());
    std::size_t done = kernel(out, from.data(), in.size());
    EXPECT_EQ(done % inGroup, 0U);
    done += portable(out + done / inGroup * outGroup, from.data() + done, in.size() - done);
    return std::string(reinterpret_cast<const char*>(out), done / inGroup * outGroup);
}

TEST(Base64, KernelsAgreeWithThePortableOne)
{
    const auto compare = [](const auto& kernels, base64::Function portable, const std::string& in, std::size_t inGroup,
                            std::size_t outGroup) {
        const std::string expected = converted(portable, portable, in, inGroup, outGroup);
        for (const auto& kernel : kernels) {
            if (!cpuHas(kernel.needs)) continue;
            EXPECT_EQ(converted(kernel.run, portable, in, inGroup, outGroup), expected) << kernel.name;
        }
        return expected;
    };
    std::string octets, text;
    for (unsigned length = 0; length < 2100; ++length, octets += static_cast<char>(length * 89 + length / 3)) {
        text = compare(base64::encodeKernels, base64::encodePortable, octets, 3, 4);
        compare(base64::decodeKernels, base64::decodePortable, text, 4, 3);
    }
    for (std::size_t at = 92; at < 160; ++at) { // a wrong character ends the decoding in front of its group
        for (unsigned value = 0; value < 256; ++value) {
            std::string changed = text.substr(0, 160);
            changed[at] = static_cast<char>(value);
            const std::string out = compare(base64::decodeKernels, base64::decodePortable, changed, 4, 3);
            ASSERT_EQ(out.size(), std::isalnum(static_cast<int>(value)) || value == '+' || value == '/' ? 120U : at / 4 * 3);
        }
    }
}

TEST(Base64, DecodesNothingButTheAlphabet)
{
    for (const char* text :
         {"====", "A===", "A", "AA", "AAA", "AA=A", "AA\nA", "AA A", "=AAA", "AAA\xC0", "AAAA\n", "AA==AAAA", "-_AA"}) {
        ByteString in = byteString(text), out("kept", 4);
        EXPECT_EQ(base64Decode(in.octets(), out), 1) << text;
        EXPECT_TRUE(out == "kept");
    }
    ByteString loose = byteString("QR=="), none, out;
    EXPECT_EQ(base64Decode(loose.octets(), out), 0);
    EXPECT_TRUE(out == "A");
    EXPECT_EQ(base64Decode(none.octets(), out), 0);
    EXPECT_EQ(out.getLength(), 0);
}
