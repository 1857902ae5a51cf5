// Code page 949 against the C library's converter.
#include "support/bytes.h"

#include "text/Ksc.h"
#include "text/UUTF8String.h"
#include "text/UUnicode.h"
#include <gtest/gtest.h>

using namespace vrno;
using namespace test;

static std::string utf8Of(int point)
{
    return {static_cast<char>(0xE0 | point >> 12), static_cast<char>(0x80 | (point >> 6 & 63)),
            static_cast<char>(0x80 | (point & 63))};
}

TEST(Text, AllSyllablesAreThoseOfTheCLibrary)
{
    for (int point = 0xAC00; point <= 0xD7A3; ++point) {
        ByteString utf8 = byteString(utf8Of(point)), ksc;
        ASSERT_EQ(UUTF8String::UTF8ToKSC(utf8, ksc), 0);
        ASSERT_EQ(ksc.getLength(), 2);
        ASSERT_EQ(fromKsc(bytes(ksc)), utf8Of(point));
    }
}

TEST(Text, WhatIsNoSyllableBecomesQuestionMarks)
{
    const std::pair<const char*, const char*> table[] = {
        {"EAB080", "b0a1"},
        {"EAB082", "8141"},
        {"ED9EA3", "c652"},
        {"41", "41"},
        {"C3A9", "3f3f"},
        {"E4B880", "3f3f3f"},
        {"F09F9880", "3f3f3f3f"},
        {"EAAFBF", "3f3f3f"},
        {"ED9EA4", "3f3f3f"},
        {"EAB0", "3f3f"},
        {"EA", "3f"},
        {"EA4180", "3f413f"},
        {"EAB0EAB080", "3f3fb0a1"},
        {"80", "3f"},
        {"00", "00"},
        {"", ""},
    };
    for (const auto& [in, out] : table) {
        ByteString utf8 = byteString(der(in)), ksc = byteString("stale");
        EXPECT_EQ(UUTF8String::UTF8ToKSC(utf8, ksc), 0);
        EXPECT_EQ(hex(bytes(ksc)), out) << in;
    }
    ByteString jamo = byteString(der("0011 02AC A4D7 FFFF")), ksc;
    EXPECT_EQ(UUnicode::Unicode2KSC(jamo, ksc), 0);
    EXPECT_EQ(hex(bytes(ksc)), "3f81413f3f");
}

TEST(Text, ByteOrderSwapsInPairs)
{
    unsigned char data[] = {1, 2, 3, 4};
    EXPECT_EQ(UUnicode::SwapByteOrder(data, 3), 1);
    EXPECT_EQ(data[0], 1);
    EXPECT_EQ(UUnicode::SwapByteOrder(data, 4), 0);
    EXPECT_EQ(data[0], 2);
    EXPECT_EQ(data[3], 3);
    EXPECT_EQ(UUnicode::SwapByteOrder(data, 0), 0);
}

TEST(Text, LiteralsConvertAtCompileTime)
{
    constexpr const char* literal = u8"\"%s\" 위치의 똠방 (1)"_ksc;
    EXPECT_EQ(fromKsc(literal), "\"%s\" 위치의 똠방 (1)");
}
