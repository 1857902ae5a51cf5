// The storage library for PKCS #11 tokens: on SoftHSM, and on a module that fails as it is told.
#include "support/folder.h"
#include "vrno.h"

#include <gtest/gtest.h>
#include <p11-kit/pkcs11.h>

#include <array>
#include <dlfcn.h>
#include <fstream>
#include <thread>

namespace {

using Read = int(int, const char*, unsigned char*, int*, char*);
constexpr const char *pin = "1234", *password = "correct horse";

std::string contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string output(const std::string& command)
{
    std::string text;
    FILE* const pipe = popen(command.c_str(), "r");
    for (int c; (c = fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    EXPECT_EQ(0, pclose(pipe)) << command;
    return text;
}

// Sets the variables of lines as make-token prints them.
void setVariables(const std::string& lines)
{
    std::istringstream in(lines);
    for (std::string word, line; in >> word >> line;) {
        const std::size_t end = line.find('=');
        setenv(line.substr(0, end).c_str(), line.substr(end + 1).c_str(), 1);
    }
}

// ---- the application, which uses the module beside the storage library ----

class Application {
public:
    explicit Application(const std::string& label)
    {
        CK_C_INITIALIZE_ARGS arguments{};
        arguments.flags = CKF_OS_LOCKING_OK;
        void* const module = dlopen(getenv("VRNO_P11_MODULE"), RTLD_NOW);
        reinterpret_cast<CK_RV (*)(CK_FUNCTION_LIST**)>(dlsym(module, "C_GetFunctionList"))(&m_module);
        m_module->C_Initialize(&arguments);
        CK_SLOT_ID slots[16];
        CK_ULONG count = 16;
        EXPECT_EQ(CKR_OK, m_module->C_GetSlotList(CK_TRUE, slots, &count));
        for (CK_ULONG i = 0; i < count; ++i) {
            m_module->C_GetTokenInfo(slots[i], &m_info);
            if (std::string(reinterpret_cast<char*>(m_info.label), 32) != label + std::string(32 - label.size(), ' ')) continue;
            EXPECT_EQ(CKR_OK, m_module->C_OpenSession(slots[i], CKF_SERIAL_SESSION | CKF_RW_SESSION, nullptr, nullptr, &m_session));
            return;
        }
    }
    ~Application() { m_module->C_CloseSession(m_session); }

    CK_RV login() { return m_module->C_Login(m_session, CKU_USER, (unsigned char*)pin, 4); }
    CK_RV logout() { return m_module->C_Logout(m_session); }
    CK_STATE state()
    {
        CK_SESSION_INFO info{};
        EXPECT_EQ(CKR_OK, m_module->C_GetSessionInfo(m_session, &info));
        return info.state;
    }
    std::string serial() const { return {reinterpret_cast<const char*>(m_info.serialNumber), 16}; }

    void put(std::string label, std::string value, CK_BBOOL isPrivate = CK_TRUE, const char* application = "PKI_STORAGE")
    {
        add(CKO_DATA, isPrivate, label, value, {CKA_APPLICATION, (void*)application, strlen(application)});
    }
    void putCertificate(std::string label, std::string value, std::string id = "")
    {
        add(CKO_CERTIFICATE, CK_FALSE, label, value, {CKA_ID, id.data(), id.size()});
    }

private:
    void add(CK_ULONG kind, CK_BBOOL isPrivate, std::string& label, std::string& value, CK_ATTRIBUTE more)
    {
        CK_BBOOL yes = CK_TRUE;
        CK_ULONG x509 = CKC_X_509;
        CK_OBJECT_HANDLE object;
        CK_ATTRIBUTE attributes[] = {
            {CKA_CLASS, &kind, sizeof kind},
            {CKA_TOKEN, &yes, 1},
            {CKA_PRIVATE, &isPrivate, 1},
            {CKA_LABEL, label.data(), label.size()},
            more,
            {CKA_VALUE, value.data(), value.size()},
            {CKA_CERTIFICATE_TYPE, &x509, sizeof x509},
            {CKA_SUBJECT, &x509, 1},
        };
        ASSERT_EQ(CKR_OK, login());
        EXPECT_EQ(CKR_OK, m_module->C_CreateObject(m_session, attributes, kind == CKO_DATA ? 6 : 8, &object));
        logout();
    }

    CK_FUNCTION_LIST* m_module = nullptr;
    CK_SESSION_HANDLE m_session = 0;
    CK_TOKEN_INFO m_info{};
};

// ---- reading ----

// A context with the storage library.
struct Cards {
    VRNO_API_CTX* context = nullptr;
    VRNO_BINSTR item{};

    Cards()
    {
        EXPECT_EQ(0, VRNO_API_Init(&context, "."));
        EXPECT_EQ(0, VRNO_MEDIA_Load(context, STORAGE_LIBRARY));
    }
    ~Cards()
    {
        VRNO_BINSTR_Delete(&item);
        VRNO_API_Finish(&context);
    }
    int certificate(int type, const char* with = pin) { return VRNO_MEDIA_CARD_ReadCert(context, type, with, &item); }
    int key(int type, const char* opened = nullptr) { return VRNO_MEDIA_CARD_ReadPriKey(context, type, pin, opened, &item); }
    std::string bytes() const { return {reinterpret_cast<const char*>(item.pData), item.nLen}; }
};

struct Result {
    int code, length;
    std::string bytes, message;
};

// What the function of the library itself says. What it does not write stays '?'.
Result read(int item, const char* with = pin, int capacity = 2048)
{
    void* const library = dlopen(STORAGE_LIBRARY, RTLD_NOW);
    Result result{0, capacity, std::string(4096, '?'), std::string(512, '?')};
    result.code = reinterpret_cast<Read*>(dlsym(library, "PKI_STORAGE_Read"))(
        item, with, reinterpret_cast<unsigned char*>(result.bytes.data()), &result.length, result.message.data());
    EXPECT_NE(result.message.npos, result.message.find('\0'));
    result.message = result.message.c_str();
    for (const char c : result.message) EXPECT_TRUE(c >= ' ' && c <= '~') << result.message;
    dlclose(library);
    return result;
}

void expectFailure(int code, const char* text, const Result& result)
{
    EXPECT_EQ(code, result.code) << result.message;
    EXPECT_NE(result.message.npos, result.message.find(text)) << result.message;
    EXPECT_EQ(std::string(4096, '?'), result.bytes);
}

// The tokens b and a, made in this order with the samples on them, and "c", which is empty. a has further items.
class Pkcs11 : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder = new test::Folder;
        for (const char* const label : {"b", "a"}) setVariables(output(MAKE_TOKEN " " + folder->path() + " " + label));
        output("softhsm2-util --init-token --free --label c --so-pin 1234 --pin 1234");
        Application application("a");
        for (const char* const item : {"item-01", "item-04"}) application.putCertificate(item, item);
        for (const char* const item : {"item-02", "item-05"}) application.put(item, item);
    }
    static void TearDownTestSuite() { delete folder; }
    void SetUp() override
    {
        unsetenv("VRNO_P11_ID_01");
        setenv("VRNO_P11_MODULE", softhsm.c_str(), 1);
        setenv("VRNO_P11_TOKENS", "a,b,c", 1);
    }

    static inline test::Folder* folder;
    const std::string softhsm = getenv("VRNO_P11_MODULE");
};

TEST_F(Pkcs11, ServesEveryRole)
{
    Cards cards;
    const std::string hong = contents(SAMPLES "/hong.der");
    const struct {
        int role;
        std::string certificate, key;
    } roles[] = {{1, hong, ""}, {2, hong, ""}, {16, "item-01", "item-02"}, {32, "item-04", "item-05"}};
    for (const auto& [role, certificate, key] : roles) {
        ASSERT_EQ(0, cards.certificate(role));
        EXPECT_EQ(certificate, cards.bytes()) << role;
        ASSERT_EQ(0, cards.key(role));
        EXPECT_TRUE(key.empty() || key == cards.bytes()) << role;
    }
    ASSERT_EQ(0, cards.key(2, password));
    EXPECT_EQ(contents(SAMPLES "/hong.key"), cards.bytes());
    ASSERT_EQ(0, cards.key(1, password));
    EXPECT_NE(std::string::npos, cards.bytes().find("twenty random octets"));
}

TEST_F(Pkcs11, ServesEachDeviceFromItsToken)
{
    Application application("b");
    application.putCertificate("item-01", "of b");
    const std::string a = "item-01", b = "of b", serial = application.serial();
    const struct {
        std::string tokens;
        int device;
        std::string expected; // the item, or a text that is in the message of a failure
    } cases[] = {
        {"a,b", 0, a},
        {"a,b", 0x1000, b},
        {" b , a", 0, b},
        {"b,a", 0x1000, a},
        {serial, 0, b},
        {"a,pkcs11:serial=" + serial, 0x1000, b},
        {"pkcs11:token=%62;model=SoftHSM%20v2;manufacturer=SoftHSM%20project?pin-value=1", 0, b},
        {"pkcs11:token=b;object=x", 0, "0 tokens match pkcs11:token=b;object=x"},
        {"pkcs11:token=%6", 0, "0 tokens match"},
        {"pkcs11:model=SoftHSM%20v2", 0, "3 tokens match"},
        {"a,b", 0x2000, "VRNO_P11_TOKENS names no token for the device 0x2000"},
        {"d", 0, "0 tokens match d in VRNO_P11_TOKENS"},
        {"", 0, "there are 3 tokens; VRNO_P11_TOKENS must name them"},
    };
    for (const auto& [tokens, device, expected] : cases) {
        setenv("VRNO_P11_TOKENS", tokens.c_str(), 1);
        const Result result = read(device | 1);
        if (expected == a || expected == b) {
            EXPECT_EQ(expected, result.bytes.substr(0, static_cast<std::size_t>(result.length))) << tokens << result.message;
        } else {
            expectFailure(256, expected.c_str(), result);
        }
    }
}

TEST_F(Pkcs11, FindsCertificatesByIdAndKeyUsage)
{
    Application application("c");
    const std::string make = "openssl req -x509 -newkey rsa:1024 -nodes -keyout /dev/null -outform DER -subj /CN=x 2>/dev/null ";
    const std::string signs = output(make + "-addext keyUsage=digitalSignature"), encrypts = contents(SAMPLES "/hong.der");
    const std::string signsToo = output(make + "-addext keyUsage=nonRepudiation");
    const auto expect = [](int item, const std::string& expected) {
        const Result result = read(0x2000 | item);
        EXPECT_EQ(0, result.code) << result.message;
        EXPECT_EQ(expected, result.bytes.substr(0, static_cast<std::size_t>(result.length)));
    };
    application.putCertificate("foreign", encrypts, "\x01");
    application.putCertificate("after 2038", output(make + "-addext keyUsage=digitalSignature -days 9000"), "\x02");
    expectFailure(0x10082, "no certificate item-01 on token c", read(0x2001));
    expect(0x40, encrypts);
    setenv("VRNO_P11_ID_01", "01", 1);
    expect(0x01, encrypts);
    setenv("VRNO_P11_ID_01", "1", 1);
    expectFailure(0x10007, "VRNO_P11_ID_01", read(0x2001));
    setenv("VRNO_P11_ID_01", "03", 1);
    application.putCertificate("mine", signs);
    expect(0x01, signs);
    application.putCertificate("item-10", signsToo);
    expect(0x01, signs);
    expect(0x10, signsToo);
    application.putCertificate("", signsToo);
    expectFailure(0x10082, "2 objects on token c fit item-01", read(0x2001));
}

TEST_F(Pkcs11, KeepsToTheLengthAndToPrivateObjects)
{
    Application application("c");
    application.put("item-20", std::string(2048, 'e'));
    application.put("item-50", std::string(2049, 'e'));
    application.put("item-02", "public", CK_FALSE);
    application.put("item-05", "of another application", CK_TRUE, "other");
    const Result whole = read(0x2020), random = read(0x2030, pin, 128);
    EXPECT_EQ(0, whole.code);
    EXPECT_EQ(2048, whole.length);
    EXPECT_EQ(std::string(2048, 'e') + std::string(2048, '?'), whole.bytes);
    expectFailure(0x10150, "item-50 has 2049 bytes", read(0x2050));
    for (const int item : {0x2002, 0x2005}) expectFailure(0x10082, "no private data object item-0", read(item));
    EXPECT_EQ(0, random.code);
    EXPECT_EQ(0, random.length);
    expectFailure(0x10007, "0x2003 is not the code of an item", read(0x2003));
}

TEST_F(Pkcs11, ReadsInFourThreads)
{
    std::array<int, 4> failures{};
    const std::string hong = contents(SAMPLES "/hong.der");
    const auto run = [&](int& failed) {
        Cards cards;
        for (int i = 0; i < 200; ++i) failed += cards.certificate(i % 2 ? 1 : 0x1001) != 0 || cards.bytes() != hong;
    };
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < 4; ++i) threads[i] = std::thread(run, std::ref(failures[i]));
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ((std::array<int, 4>{}), failures);
}

TEST_F(Pkcs11, TestsThePinAndKeepsTheLoginOfTheApplication)
{
    Application application("a");
    Cards cards;
    EXPECT_EQ(VRNO_ERR_CARD_PIN, cards.certificate(1, "4321"));
    expectFailure(257, "wrong PIN", read(0x10, std::string(300, '1').c_str()));
    EXPECT_EQ(CKR_OK, application.login());
    for (const char* const tried : {pin, "4321"}) {
        EXPECT_EQ(VRNO_ERR_CERT_READ, cards.certificate(1, tried));
        expectFailure(0x10100, "logged in already", read(0x10, tried));
        EXPECT_EQ(CKS_RW_USER_FUNCTIONS, application.state());
    }
    EXPECT_EQ(0, VRNO_MEDIA_Unload(cards.context));
    EXPECT_EQ(CKS_RW_USER_FUNCTIONS, application.state());
    EXPECT_EQ(CKR_OK, application.logout());
    EXPECT_EQ(0, VRNO_MEDIA_Load(cards.context, STORAGE_LIBRARY));
    EXPECT_EQ(0, cards.certificate(1));
    EXPECT_EQ(CKS_RW_PUBLIC_SESSION, application.state());
}

// ---- what SoftHSM does not do ----

TEST_F(Pkcs11, HasResultsForCodesOfTheModule)
{
    setenv("VRNO_P11_MODULE", MOCK_MODULE, 1);
    setenv("VRNO_P11_TOKENS", "", 1);
    void* const mock = dlopen(MOCK_MODULE, RTLD_NOW);
    const auto count = [mock](const char* name) -> int& { return *static_cast<int*>(dlsym(mock, name)); };
    const struct {
        const char* variable;
        std::vector<std::pair<const char*, int>> results;
    } cases[] = {
        {"MOCK_LOGIN", {{"a4", 0x63C0}, {"a0", 257}, {"a1", 257}, {"a2", 257}, {"a3", 0x100A3}, {"32", 256}, {"100", 0x10100}}},
        {"MOCK_LOGIN", {{"101", 0x10101}, {"104", 0x10104}, {"6300", 0x16300}, {"80000100", 0x10100}, {"0", 0x10082}}},
        {"MOCK_OPEN", {{"e0", 256}, {"e1", 256}, {"b8", 0x100B8}}},
        {"MOCK_FIND", {{"30", 0x10030}}},
        {"MOCK_STATE", {{"1", 0x10100}}},
    };
    const auto expectResults = [&](int sessions) {
        for (const auto& [variable, results] : cases) {
            for (const auto& [code, result] : results) {
                setenv(variable, code, 1);
                EXPECT_EQ(result, read(0x20).code) << variable << code;
                EXPECT_EQ(sessions, count("mock_sessions"));
                EXPECT_EQ(0, count("mock_logged_in"));
            }
            unsetenv(variable);
        }
    };
    const struct {
        const char* initialised;
        int othersSessions, finalised;
    } runs[] = {{"0", 0, 1}, {"0", 1, 0}, {"191", 0, 0}}; // 0x191 is CKR_CRYPTOKI_ALREADY_INITIALIZED
    for (const auto& [initialised, othersSessions, finalised] : runs) {
        setenv("MOCK_INITIALIZE", initialised, 1);
        count("mock_initialised") = count("mock_finalised") = 0;
        count("mock_sessions") = othersSessions;
        {
            Cards loaded;
            expectResults(othersSessions);
            EXPECT_EQ(1, count("mock_initialised"));
            setenv("VRNO_P11_MODULE", softhsm.c_str(), 1);
            expectFailure(256, "there are 3 tokens", read(0x20));
            setenv("VRNO_P11_MODULE", MOCK_MODULE, 1);
        }
        EXPECT_EQ(finalised, count("mock_finalised"));
    }
    setenv("MOCK_INITIALIZE", "5", 1);
    expectFailure(0x10005, "C_Initialize", read(0x20));
    setenv("VRNO_P11_MODULE", "/no/such/module.so", 1);
    expectFailure(0x10002, "/no/such/module.so: cannot open shared object file", read(0x20));
}

} // namespace
