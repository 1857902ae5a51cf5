// A program that packs its records where it includes the header.
#include <stddef.h>

#pragma pack(1)
#include "vrno.h"
#pragma pack()

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(PackedRecords, AreAsLongAsTheLibraryTakesThemToBe)
{
    constexpr std::size_t binstr = 2 * sizeof(void*), context = sizeof(void*) == 8 ? 160 : 96;
    EXPECT_EQ(sizeof(VRNO_BINSTR), binstr);
    EXPECT_EQ(sizeof(VRNO_API_CTX), context);
    alignas(VRNO_API_CTX) char memory[sizeof(VRNO_BINSTR) + 8];
    std::memset(memory, 'x', sizeof memory);
    EXPECT_EQ(VRNO_BINSTR_Create(reinterpret_cast<VRNO_BINSTR*>(memory)), 0);
    EXPECT_EQ(std::string(memory + sizeof(VRNO_BINSTR), 8), "xxxxxxxx");
}
