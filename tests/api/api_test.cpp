// The exported functions: the life of a context, the frame that all share, binary strings, files.
#include "api/Call.h"
#include "support/bytes.h"
#include "support/certificates.h"
#include "support/failing.h"
#include "support/interface.h"

#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <functional>

using namespace test;

static const std::string hong = readFile(SAMPLES "/hong.der");

TEST(Context, InitKeepsThePathLessOneSeparator)
{
    for (const auto& [path, kept] : {std::pair{"C:\\a\\", "C:\\a"}, {"/a//", "/a/"}, {"/", ""}, {"a", "a"}}) {
        VRNO_API_CTX* context = nullptr;
        ASSERT_EQ(VRNO_API_Init(&context, path), 0);
        EXPECT_STREQ(context->pszPath, kept);
        EXPECT_EQ(context->ucFlags, 1);
        EXPECT_EQ(context->nReserved1 * 1000 + context->nReserved2 * 100 + context->nReserved3 * 10 + context->ucReserved, 1171);
        VRNO_API_CTX* const same = context;
        EXPECT_EQ(VRNO_API_Init(&context, path), 1000);
        EXPECT_EQ(context, same);
        EXPECT_EQ(VRNO_API_Finish(&context), 0);
        EXPECT_EQ(context, nullptr);
        EXPECT_EQ(VRNO_API_Finish(&context), 0);
    }
    VRNO_API_CTX* context = nullptr;
    EXPECT_EQ(VRNO_API_Init(&context, ""), 1003);
    EXPECT_EQ(VRNO_API_Init(&context, nullptr), 1003);
    EXPECT_EQ(context, nullptr);
    {
        const FailingAllocation second(2);
        EXPECT_EQ(VRNO_API_Init(&context, "/"), 1002);
    }
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(VRNO_API_Init(&context, "/"), 1000);
    EXPECT_EQ(VRNO_API_Finish(&context), 0);
}

TEST(Context, FinishReleasesAllThatItOwns)
{
    Context context; // LeakSanitizer sees what is left over
    ASSERT_EQ(context.load(hong), 0);
    VRNO_API_CTX& fields = *context;
    fields.pSessionKey = new vrno::ByteString("key", 3);
    fields.pChangedIv = new vrno::ByteString("iv", 2);
    fields.pReservedObj1 = new vrno::PObject;
    fields.pReservedObj5 = new vrno::PObject;
    fields.pReservedBuf1 = std::malloc(8);
    EXPECT_EQ(context.load("no certificate"), 1500);
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
    EXPECT_EQ(fromKsc(text), "[VRNO_CERT_GetVersion] 인증서가 로드되어있지 않습니다.");
    const std::string whole = text;
    const int exact = static_cast<int>(whole.size()) + 1;
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, exact, text), 0);
    EXPECT_EQ(text[exact], 'x');
    EXPECT_EQ(VRNO_API_GetErrInfo(context, exact - 1, text), 1005);
    EXPECT_EQ(text, whole.substr(0, whole.size() - 1));
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, 0, text), 1005);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, -5, text), 1005);
    EXPECT_EQ(text[0], 'x');
    EXPECT_EQ(VRNO_CERT_Unload(context), 0);
    EXPECT_EQ(VRNO_API_GetErrInfo(context, 256, text), 1006);
}

TEST(Context, ErrorFormsAndTheirLimit)
{
    Context context;
    const auto text = [&context](int form, const char* function, const char* message) {
        vrno::setApiError(context, 77, form, function, message, "Read", 0x6300, "detail");
        return context.error();
    };
    EXPECT_EQ(text(0, "F", "m"), "[F] m");
    EXPECT_EQ(text(0, nullptr, "m"), "m");
    EXPECT_EQ(text(1, "F", "m"), "[F] m <tarnlib> detail");
    EXPECT_EQ(text(2, "F", "m"), "[F] m <ldaplib> errcode=0x6300,msg=detail");
    EXPECT_EQ(text(3, nullptr, "m"), "m <dynamiclib> fnc=Read,errcode=0x6300,msg=detail");
    EXPECT_EQ(text(3, "F", nullptr), "m <dynamiclib> fnc=Read,errcode=0x6300,msg=detail"); // the code alone
    EXPECT_EQ(text(4, "F", "m"), "");
    EXPECT_EQ(text(0, "F", std::string(2043, 'a').c_str()), "[F] " + std::string(2043, 'a'));
    EXPECT_EQ(text(0, "F", std::string(2044, 'a').c_str()), "");
    EXPECT_EQ(text(0, "F", std::string(4000, 'a').c_str()), "");
    VRNO_API_CTX& fields = *context;
    EXPECT_EQ(fields.nErrCode, 77);
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

// ---- the frame ----

TEST(Frame, ChecksComeInTheirOrderWithTheirTexts)
{
    BinStr good("data"), out("old");
    VRNO_BINSTR noData{nullptr, 4}, noLength{reinterpret_cast<unsigned char*>(const_cast<char*>("x")), 0};
    char text[64];
    int version = 0;
    // clang-format off
    const struct {
        const char* function;
        std::function<int(VRNO_API_CTX*)> call;
        int code;
        const char* message;
        bool loaded = false;
    } table[] = {
        {"VRNO_BASE64_Encode", [&](auto* c) { return VRNO_BASE64_Encode(c, nullptr, nullptr); }, 1004, "인코딩할 데이터(pData)를 지정해 주세요."},
        {"VRNO_BASE64_Encode", [&](auto* c) { return VRNO_BASE64_Encode(c, &noData, out); }, 1004, "인코딩할 데이터(pData)를 지정해 주세요."},
        {"VRNO_BASE64_Encode", [&](auto* c) { return VRNO_BASE64_Encode(c, &noLength, out); }, 1004, "인코딩할 데이터(pData)를 지정해 주세요."},
        {"VRNO_BASE64_Encode", [&](auto* c) { return VRNO_BASE64_Encode(c, good, nullptr); }, 1004, "pEncData의 포인터가 NULL입니다."},
        {"VRNO_BASE64_Decode", [&](auto* c) { return VRNO_BASE64_Decode(c, nullptr, out); }, 1004, "디코딩할 데이터(pEncData)를 지정해 주세요."},
        {"VRNO_BASE64_Decode", [&](auto* c) { return VRNO_BASE64_Decode(c, good, nullptr); }, 1004, "pData의 포인터가 NULL입니다."},
        {"VRNO_BASE64_Decode", [&](auto* c) { return VRNO_BASE64_Decode(c, BinStr("AA\r\n"), out); }, 5501, "BASE64 디코딩을 실패하였습니다."},
        {"VRNO_CERT_Load", [&](auto* c) { return VRNO_CERT_Load(c, nullptr); }, 1004, "인증서(pCert)를 지정해 주세요."},
        {"VRNO_CERT_GetVersion", [&](auto* c) { return VRNO_CERT_GetVersion(c, nullptr); }, 1501, "인증서가 로드되어있지 않습니다."},
        {"VRNO_CERT_GetVersion", [&](auto* c) { return VRNO_CERT_GetVersion(c, nullptr); }, 1004, "pVersion의 포인터가 NULL입니다.", true},
        {"VRNO_CERT_GetVersion", [&](auto* c) { return VRNO_CERT_GetVersion(c, &version); }, 0, "none", true},
        {"VRNO_CERT_GetValidity", [&](auto* c) { return VRNO_CERT_GetValidity(c, text, text); }, 1501, "인증서가 로드되어있지 않습니다."},
        {"VRNO_CERT_GetValidity", [&](auto* c) { return VRNO_CERT_GetValidity(c, nullptr, text); }, 1004, "pszNotBefore의 포인터가 NULL입니다.", true},
        {"VRNO_CERT_GetValidity", [&](auto* c) { return VRNO_CERT_GetValidity(c, text, nullptr); }, 1004, "pszNotAfter의 포인터가 NULL입니다.", true},
        {"VRNO_CERT_GetSubjectName_DERFormat", [&](auto* c) { return VRNO_CERT_GetSubjectName_DERFormat(c, nullptr); }, 1501, "인증서가 로드되어있지 않습니다."},
        {"VRNO_CERT_GetSubjectName_DERFormat", [&](auto* c) { return VRNO_CERT_GetSubjectName_DERFormat(c, nullptr); }, 1004, "pSubjectName의 포인터가 NULL입니다.", true},
        {"VRNO_CERT_GetPubKey", [&](auto* c) { return VRNO_CERT_GetPubKey(c, 64, nullptr, text); }, 1004, "pszPubKeyAlg의 포인터가 NULL입니다.", true},
        {"VRNO_MEDIA_DISK_ReadFile", [&](auto* c) { return VRNO_MEDIA_DISK_ReadFile(c, nullptr, out); }, 1004, "읽어들일 파일의 파일경로(pszFilePath)를 지정해 주세요."},
        {"VRNO_MEDIA_DISK_ReadFile", [&](auto* c) { return VRNO_MEDIA_DISK_ReadFile(c, "", out); }, 1004, "읽어들일 파일의 파일경로(pszFilePath)를 지정해 주세요."},
        {"VRNO_MEDIA_DISK_ReadFile", [&](auto* c) { return VRNO_MEDIA_DISK_ReadFile(c, "x", nullptr); }, 1004, "pData의 포인터가 NULL입니다."},
        {"VRNO_MEDIA_DISK_ReadFile", [&](auto* c) { return VRNO_MEDIA_DISK_ReadFile(c, "/no/file", out); }, 2500, "\"/no/file\" 위치의 파일을 읽는데 실패하였습니다."},
        {"VRNO_MEDIA_DISK_ReadFile", [&](auto* c) { return VRNO_MEDIA_DISK_ReadFile(c, "/", out); }, 2500, "\"/\" 위치의 파일을 읽는데 실패하였습니다."},
        {"VRNO_MEDIA_DISK_ReadFile", [&](auto* c) { return VRNO_MEDIA_DISK_ReadFile(c, "/dev/null", out); }, 2500, "\"/dev/null\" 위치의 파일을 읽는데 실패하였습니다."},
        {"VRNO_MEDIA_DISK_ReadCert", [&](auto* c) { return VRNO_MEDIA_DISK_ReadCert(c, "", out); }, 1004, "파일경로(pszFilePath)를 지정해 주세요."},
        {"VRNO_MEDIA_DISK_ReadCert", [&](auto* c) { return VRNO_MEDIA_DISK_ReadCert(c, "x", nullptr); }, 1004, "pCert의 포인터가 NULL입니다."},
        {"VRNO_MEDIA_DISK_ReadCert", [&](auto* c) { return VRNO_MEDIA_DISK_ReadCert(c, "/no/file", out); }, 2504, "인증서를 읽는데 실패하였습니다. (위치 : /no/file)"},
        {"VRNO_MEDIA_DISK_ReadPriKey", [&](auto* c) { return VRNO_MEDIA_DISK_ReadPriKey(c, "", "p", out); }, 1004, "파일경로(pszFilePath)를 지정해 주세요."},
        {"VRNO_MEDIA_DISK_ReadPriKey", [&](auto* c) { return VRNO_MEDIA_DISK_ReadPriKey(c, "x", "p", nullptr); }, 1004, "pPriKey의 포인터가 NULL입니다."},
        {"VRNO_MEDIA_DISK_ReadPriKey", [&](auto* c) { return VRNO_MEDIA_DISK_ReadPriKey(c, "/no/file", "p", out); }, 2507, "개인키를 읽는데 실패하였습니다. (위치 : /no/file)"},
        {"VRNO_MEDIA_Load", [&](auto* c) { return VRNO_MEDIA_Load(c, ""); }, 1004, "라이브러리 경로(pszLibPath)를 지정해 주세요."},
        {"VRNO_MEDIA_Unload", [&](auto* c) { return VRNO_MEDIA_Unload(c); }, 0, "none"},
        {"VRNO_MEDIA_CARD_ReadCert", [&](auto* c) { return VRNO_MEDIA_CARD_ReadCert(c, 3, "", nullptr); }, 1004, "핀 번호(pszPIN)를 지정해 주세요."},
        {"VRNO_MEDIA_CARD_ReadCert", [&](auto* c) { return VRNO_MEDIA_CARD_ReadCert(c, 3, "1", nullptr); }, 1004, "pCert의 포인터가 NULL입니다."},
        {"VRNO_MEDIA_CARD_ReadCert", [&](auto* c) { return VRNO_MEDIA_CARD_ReadCert(c, 3, "1", out); }, 2513, "우선 동적 라이브러리를 로드하세요."},
        {"VRNO_MEDIA_CARD_ReadPriKey", [&](auto* c) { return VRNO_MEDIA_CARD_ReadPriKey(c, 3, nullptr, "p", nullptr); }, 1004, "핀 번호(pszPIN)를 지정해 주세요."},
        {"VRNO_MEDIA_CARD_ReadPriKey", [&](auto* c) { return VRNO_MEDIA_CARD_ReadPriKey(c, 3, "1", "p", nullptr); }, 1004, "pPriKey의 포인터가 NULL입니다."},
        {"VRNO_MEDIA_CARD_ReadPriKey", [&](auto* c) { return VRNO_MEDIA_CARD_ReadPriKey(c, 3, "1", "p", out); }, 2513, "우선 동적 라이브러리를 로드하세요."},
        {"VRNO_PRIKEY_Encrypt", [&](auto* c) { return VRNO_PRIKEY_Encrypt(c, 17, "", nullptr, nullptr); }, 1004, "개인키 비밀번호 정보가 없습니다."},
        {"VRNO_PRIKEY_Encrypt", [&](auto* c) { return VRNO_PRIKEY_Encrypt(c, 17, "p", &noData, nullptr); }, 1004, "암호화할 개인키(pPriKey)를 지정해 주세요."},
        {"VRNO_PRIKEY_Encrypt", [&](auto* c) { return VRNO_PRIKEY_Encrypt(c, 17, "p", good, nullptr); }, 1004, "pEncPriKey의 포인터가 NULL 입니다."},
        {"VRNO_PRIKEY_Encrypt", [&](auto* c) { return VRNO_PRIKEY_Encrypt(c, 17, "p", good, out); }, 5000, "지원하지 않는 대칭키 알고리즘입니다."},
        {"VRNO_PRIKEY_Encrypt", [&](auto* c) { return VRNO_PRIKEY_Encrypt(c, 16, "p", good, out); }, 2000, "잘못된 개인키 형식입니다."},
        {"VRNO_PRIKEY_Decrypt", [&](auto* c) { return VRNO_PRIKEY_Decrypt(c, nullptr, nullptr, nullptr); }, 1004, "개인키 비밀번호 정보가 없습니다."},
        {"VRNO_PRIKEY_Decrypt", [&](auto* c) { return VRNO_PRIKEY_Decrypt(c, "p", &noLength, nullptr); }, 1004, "복호화할 개인키(pEncPriKey)를 지정해 주세요."},
        {"VRNO_PRIKEY_Decrypt", [&](auto* c) { return VRNO_PRIKEY_Decrypt(c, "p", good, nullptr); }, 1004, "pPriKey의 포인터가 NULL 입니다."},
        {"VRNO_PRIKEY_CheckKeyPair", [&](auto* c) { return VRNO_PRIKEY_CheckKeyPair(c, nullptr, nullptr); }, 1004, "인증서(pCert)를 지정해 주세요."},
        {"VRNO_PRIKEY_CheckKeyPair", [&](auto* c) { return VRNO_PRIKEY_CheckKeyPair(c, good, nullptr); }, 1004, "개인키(pPriKey)를 지정해 주세요."},
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.function) + " " + row.message);
        Context context;
        if (row.loaded) { ASSERT_EQ(context.load(hong), 0); }
        EXPECT_EQ(row.call(nullptr), 1001);
        vrno::setApiError(context, 1, 0, nullptr, "stale", nullptr, 0, nullptr);
        EXPECT_EQ(row.call(context), row.code);
        EXPECT_EQ(context.error(), row.code == 0 ? row.message : "[" + std::string(row.function) + "] " + row.message);
        EXPECT_EQ(out.data(), "old");
    }
}

TEST(Frame, TextGettersKeepTheirContract)
{
    for (const NamedGetter& getter : textGetters) {
        SCOPED_TRACE(getter.name);
        Context context;
        const std::string prefix = "[" + std::string(getter.name) + "] ";
        EXPECT_EQ(getter.get(nullptr, 0, nullptr), 1001);
        EXPECT_EQ(getter.get(context, 0, nullptr), 1501);
        EXPECT_EQ(context.error(), prefix + "인증서가 로드되어있지 않습니다.");
        ASSERT_EQ(context.load(everyExtension), 0);
        EXPECT_EQ(getter.get(context, 64, nullptr), 1004);
        EXPECT_EQ(context.error(), prefix + (getter.nullOutput ? getter.nullOutput : getter.output) + "의 포인터가 NULL입니다.");

        int code = 0;
        const std::string text = getText(context, getter.get, code);
        ASSERT_EQ(code, 0);
        ASSERT_FALSE(text.empty());
        const int exact = static_cast<int>(text.size()) + 1 + getter.slack;
        std::string buffer(text.size() + 8, 'x');
        for (const int size : {exact - 1, 0, -1}) {
            EXPECT_EQ(getter.get(context, size, buffer.data()), 1005);
            EXPECT_EQ(context.error(), prefix + getter.output +
                                           "에 할당된 메모리가 부족합니다. (필요한 메모리 크기 : " + std::to_string(exact) + ")");
            EXPECT_EQ(buffer, std::string(buffer.size(), 'x'));
        }
        EXPECT_EQ(getter.get(context, exact, buffer.data()), 0);
        EXPECT_EQ(buffer, text + '\0' + std::string(7, 'x'));
        EXPECT_EQ(context.error(), "none");
        VRNO_API_CTX& fields = *context;
        EXPECT_EQ(fields.nErrCode, 0);
    }
}

TEST(Files, AreReadWhole)
{
    Context context;
    BinStr out, empty, cert;
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadFile(context, SAMPLES "/hong.der", out), 0);
    EXPECT_EQ(out.data(), hong);
    char folder[] = "/tmp/vrno-XXXXXX";
    ASSERT_TRUE(mkdtemp(folder));
    const std::string path = std::string(folder) + "/empty";
    std::ofstream(path).close();
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadFile(context, path.c_str(), empty), 2502);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_DISK_ReadFile] 비어있는 파일입니다.");
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadCert(context, path.c_str(), out), 0);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadPriKey(context, path.c_str(), "", out), 0);
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadPriKey(context, path.c_str(), "p", out), 2001);
    const std::string key = readFile(SAMPLES "/hong.key");
    BinStr plain(key), blob;
    ASSERT_EQ(VRNO_PRIKEY_Encrypt(context, 32, "password", plain, blob), 0);
    std::ofstream(path, std::ios::binary) << blob.data();
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadPriKey(context, path.c_str(), nullptr, out), 0);
    EXPECT_EQ(out.data(), blob.data());
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadPriKey(context, path.c_str(), "password", out), 0);
    EXPECT_EQ(out.data(), key);
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadPriKey(context, path.c_str(), "wrong", out), 2004);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_DISK_ReadPriKey] 개인키 비밀번호를 확인하세요.");
    ASSERT_EQ(mkfifo((path + "-pipe").c_str(), 0600), 0);
    EXPECT_EQ(VRNO_MEDIA_DISK_ReadCert(context, (path + "-pipe").c_str(), out), 2504); // and does not wait for a writer
    std::remove((path + "-pipe").c_str());
    std::remove(path.c_str());
    std::remove(folder);
    for (const std::size_t length : {1990U, 2020U, 3000U}) { // no message is cut, nor one made around a part of it
        EXPECT_EQ(VRNO_MEDIA_DISK_ReadFile(context, std::string(length, 'a').c_str(), out), 2500);
        EXPECT_EQ(context.error(), "");
        EXPECT_EQ(VRNO_MEDIA_DISK_ReadCert(context, std::string(length, 'a').c_str(), out), 2504);
        EXPECT_EQ(context.error(),
                  length < 3000
                      ? ""
                      : "[VRNO_MEDIA_DISK_ReadCert] 인증서를 읽는데 실패하였습니다. ()"); // without a place that is too long
    }
}
