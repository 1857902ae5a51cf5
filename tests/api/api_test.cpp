// The exported functions: the life of a context, the frame that all share, binary strings.
#include "api/Call.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/failing.h"
#include "support/scenarios.h"

#include <cstring>

using namespace test;

TEST(Context, InitKeepsThePathLessOneSeparator)
{
    VRNO_API_CTX* context = nullptr;
    for (const auto& [path, kept] : {std::pair{"C:\\a\\", "C:\\a"}, {"/a//", "/a/"}, {"/", ""}, {"a", "a"}}) {
        ASSERT_EQ(VRNO_API_Init(&context, path), 0);
        EXPECT_STREQ(context->pszPath, kept);
        VRNO_API_CTX* const same = context;
        EXPECT_EQ(VRNO_API_Init(&context, path), 1000);
        EXPECT_EQ(context, same);
        EXPECT_EQ(VRNO_API_Finish(&context), 0);
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(VRNO_API_Finish(&context), 0);
    }
    EXPECT_EQ(VRNO_API_Init(&context, ""), 1003);
    EXPECT_EQ(VRNO_API_Init(&context, nullptr), 1003);
    EXPECT_EQ(context, nullptr);
}

TEST(Context, OneThatCouldNotBeMadeIsReleased)
{
    VRNO_API_CTX* context = nullptr;
    {
        const FailingAllocation first(1);
        EXPECT_EQ(VRNO_API_Init(&context, "/"), 1002);
    }
    EXPECT_EQ(context, nullptr);
    {
        const FailingAllocation second(2);
        EXPECT_EQ(VRNO_API_Init(&context, "/"), 1002);
    }
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(VRNO_API_Init(&context, "/"), 1000);
    EXPECT_EQ(VRNO_API_Finish(&context), 0);
}

TEST(Context, ErrorTextIsReadAsOftenAsWanted)
{
    Context context;
    char text[256];
    EXPECT_EQ(VRNO_API_GetErrInfo(nullptr, 9, text), 1001);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, 9, text), 1006);
    EXPECT_EQ(VRNO_CERT_GetVersion(context, nullptr), 1501);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, 256, nullptr), 1004);
    ASSERT_EQ(VRNO_API_GetErrInfo(context, 256, text), 0);
    const std::string whole = text;
    const int exact = static_cast<int>(whole.size()) + 1;
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, exact, text), 0);
    EXPECT_EQ(text[exact], 'x');
    EXPECT_EQ(VRNO_API_GetErrInfo(context, exact - 1, text), 1005);
    EXPECT_EQ(text, whole.substr(0, whole.size() - 1));
    std::memset(text, 'x', sizeof text);
    for (const int none : {0, -5}) EXPECT_EQ(VRNO_API_GetErrInfo(context, none, text), 1005);
    EXPECT_EQ(text[0], 'x');
}

TEST(Context, ErrorTextsAreKeptUpTo2047Bytes)
{
    Context context;
    const auto text = [&context](int form, const char* function, const std::string& message) {
        vrno::setApiError(context, 77, form, function, message.c_str(), "Read", 0x6300, "detail");
        return context.error();
    };
    EXPECT_EQ(text(0, "F", "m"), "[F] m");
    EXPECT_EQ(text(0, nullptr, "m"), "m");
    EXPECT_EQ(text(1, "F", "m"), "[F] m <tarnlib> detail");
    EXPECT_EQ(text(2, "F", "m"), "[F] m <ldaplib> errcode=0x6300,msg=detail");
    EXPECT_EQ(text(3, nullptr, "m"), "m <dynamiclib> fnc=Read,errcode=0x6300,msg=detail");
    EXPECT_EQ(text(4, "F", "m"), "");
    EXPECT_EQ(text(0, "F", std::string(2043, 'a')), "[F] " + std::string(2043, 'a'));
    EXPECT_EQ(text(0, "F", std::string(2044, 'a')), "");
    {
        const FailingAllocation all(1, true); // no room for any text
        EXPECT_EQ(VRNO_MEDIA_Load(context, ""), 1002);
    }
    BinStr out;
    for (const std::size_t length : {1990U, 2020U, 3000U}) { // no message is cut, nor one made around a part of it
        EXPECT_EQ(VRNO_MEDIA_DISK_ReadFile(context, std::string(length, 'a').c_str(), out), 2500);
        EXPECT_EQ(context.error(), "");
        EXPECT_EQ(VRNO_MEDIA_DISK_ReadCert(context, std::string(length, 'a').c_str(), out), 2504);
        // without a place that is too long
        EXPECT_EQ(context.error(), length < 3000 ? "" : "[VRNO_MEDIA_DISK_ReadCert] 인증서를 읽는데 실패하였습니다. ()");
    }
}

TEST(BinaryString, OwnsItsBlock)
{
    VRNO_BINSTR record{reinterpret_cast<unsigned char*>(0x1), 7};
    EXPECT_EQ(VRNO_BINSTR_Create(&record), 0);
    EXPECT_EQ(record.pData, nullptr);
    record.nLen = 7;
    EXPECT_EQ(VRNO_BINSTR_Delete(&record), 0);
    EXPECT_EQ(record.nLen, 7U);
    const unsigned char data[] = {1, 2, 3};
    for (const bool byLength : {true, false}) {
        EXPECT_EQ(VRNO_BINSTR_SetData(data, 3, &record), 0);
        EXPECT_EQ(record.nLen, 3U);
        EXPECT_EQ(record.pData[3], 0);
        EXPECT_EQ(byLength ? VRNO_BINSTR_SetData(data, 0, &record) : VRNO_BINSTR_SetData(nullptr, 3, &record), 0);
        EXPECT_EQ(record.pData, nullptr);
        EXPECT_EQ(record.nLen, 0U);
    }
    EXPECT_EQ(VRNO_BINSTR_Create(nullptr), 1004);
    EXPECT_EQ(VRNO_BINSTR_Delete(nullptr), 1004);
    EXPECT_EQ(VRNO_BINSTR_SetData(data, 3, nullptr), 1004);
}

TEST(BinaryString, IsSetFromItsOwnBlock)
{
    BinStr record("a text");
    EXPECT_EQ(VRNO_BINSTR_SetData(static_cast<VRNO_BINSTR*>(record)->pData + 2, 4, record), 0);
    EXPECT_EQ(record.data(), "text");
    const FailingAllocation first(1);
    EXPECT_EQ(VRNO_BINSTR_SetData(static_cast<VRNO_BINSTR*>(record)->pData, 4, record), 1002);
    EXPECT_TRUE(record.isEmpty());
}

TEST(Frame, ChecksComeInTheirOrderWithTheirTexts) { expectCalls("frame.txt", World()); }

TEST(Frame, TextGettersFillNoMoreThanTheirBuffer)
{
    for (const Case& c : cases("getters.txt", 6)) {
        SCOPED_TRACE(c.where);
        const std::string name = "VRNO_CERT_" + c[0], prefix = "[" + name + "] ";
        Context context;
        EXPECT_EQ(call(nullptr, name + " 0 null").code, 1001);
        EXPECT_EQ(call(context, name + " 0 null").code, 1501);
        EXPECT_EQ(context.error(), prefix + "인증서가 로드되어있지 않습니다.");
        ASSERT_EQ(context.load(everyExtension), 0);
        EXPECT_EQ(call(context, name + " 64 null").code, 1004);
        EXPECT_EQ(context.error(), prefix + (c[2].empty() ? c[1] : c[2]) + "의 포인터가 NULL입니다.");
        const std::string text = field(context, c[0]);
        ASSERT_FALSE(text.empty());
        const int exact = static_cast<int>(text.size()) + 1 + std::atoi(c[5].c_str());
        for (int size = -1; size < exact; ++size) {
            EXPECT_EQ(call(context, name + " " + std::to_string(size) + " out").code, 1005);
            EXPECT_EQ(context.error(),
                      prefix + c[1] + "에 할당된 메모리가 부족합니다. (필요한 메모리 크기 : " + std::to_string(exact) + ")");
        }
        EXPECT_EQ(call(context, name + " " + std::to_string(exact) + " out"), (Result{0, text}));
        EXPECT_EQ(context.error(), "none");
    }
}
