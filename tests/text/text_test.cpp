// Code page 949 against the C library's converter.
#include "support/bytes.h"
#include "support/cases.h"
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

TEST(Text, AllSyllablesAreThoseOfTheCodePage)
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
    for (const Case& c : cases("ksc.txt", 2)) {
        ByteString utf8 = byteString(der(c[0])), ksc = byteString("stale");
        EXPECT_EQ(UUTF8String::UTF8ToKSC(utf8, ksc), 0);
        EXPECT_EQ(hex(bytes(ksc)), c[1]) << c.where;
    }
    ByteString jamo = byteString(der("0011 02AC A4D7 FFFF 41")), ksc; // and half a unit
    EXPECT_EQ(UUnicode::Unicode2KSC(jamo, ksc), 0);
    EXPECT_EQ(hex(bytes(ksc)), "3f81413f3f");
}
