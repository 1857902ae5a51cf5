// Memory that runs out, and memory that is freed.
#include "engine/digest/hmac.h"
#include "engine/seed/seed.h"
#include "support/bytes.h"
#include "support/calls.h"
#include "support/certificates.h"
#include "support/failing.h"
#include "support/folder.h"
#include "support/openssl.h"

#include <pthread.h>

#include <bitset>
#include <cstdint>
#include <cstring>
#include <functional>
#include <set>
#include <unordered_map>

using namespace test;
using namespace vrno;

namespace {

// A session's input with the files that it names.
class Input : public Values {
public:
    Input() : Values(goodValues())
    {
        operator[]("blobFile") = m_card.put("0020.item", at("blob"));
        operator[]("keyFile") = m_card.put("0050.item", at("key"));
        m_card.put("0010.item", at("cert"));
        m_card.put("0030.item", "random value");
    }

private:
    Card m_card;
};

// Makes each allocation of the step fail in turn, alone and with all behind it; the context must go on to serve the step.
// What came of it beside 1002 and the whole result, which needs no memory for what is empty, as "1500 3 times ".
std::string withoutMemory(const Step& step, VRNO_API_CTX* context, const Values& values, const Result& well)
{
    const auto made = [&](long number, bool onward) {
        if (step.line.starts_with("VRNO_MEDIA_Load")) VRNO_MEDIA_Unload(context); // it takes one library
        const FailingAllocation fails(number, onward);
        return make(step, context, values);
    };
    EXPECT_EQ(made(0, false), well);
    const long total = FailingAllocation::count();
    std::map<int, int> codes;
    bool isTold = false;
    for (long number = 1; number <= 2 * total; ++number) {
        const Result result = made((number + 1) / 2, number % 2 == 0);
        isTold = isTold || result.code == VRNO_ERR_MEMORY;
        if (result.code != VRNO_ERR_MEMORY && result != well) ++codes[result.code];
        EXPECT_EQ(made(0, false), well) << "after allocation " << number;
    }
    std::string text = isTold || total == 0 ? "" : "never 1002 ";
    for (const auto& [code, times] : codes) text += std::to_string(code) + " " + std::to_string(times) + " times ";
    return text;
}

// Secrets by name.
using Secrets = Values;

// The password, and the numbers of the RSA private key: in both orders of their octets, and as the kernel for IFMA holds them.
Secrets secretsOf(const Values& input)
{
    Secrets secrets{{"password", input.at("password")}};
    const std::string& info = input.at("key");
    const unsigned char* from = at(info);
    const std::unique_ptr<EVP_PKEY, Freed> key(d2i_AutoPrivateKey(nullptr, &from, static_cast<long>(info.size())));
    for (const char* const name : {"d", "rsa-factor1", "rsa-factor2", "rsa-exponent1", "rsa-exponent2", "rsa-coefficient1"}) {
        BIGNUM* number = nullptr;
        EXPECT_EQ(EVP_PKEY_get_bn_param(key.get(), name, &number), 1);
        std::string octets(static_cast<std::size_t>(BN_num_bytes(number)), '\0');
        BN_bn2bin(number, reinterpret_cast<unsigned char*>(octets.data()));
        BN_clear_free(number);
        secrets[name] = octets;
        const std::string fromEnd(octets.rbegin(), octets.rend());
        secrets[name + std::string(" from its end")] = fromEnd;
        std::string& limbs = secrets[name + std::string(" in limbs of 52 bits")];
        for (std::size_t bit = 0; bit / 8 + 8 <= fromEnd.size(); bit += 52) {
            std::uint64_t limb = 0;
            std::memcpy(&limb, fromEnd.data() + bit / 8, sizeof limb);
            limb = limb >> bit % 8 & ((std::uint64_t{1} << 52) - 1);
            limbs.append(reinterpret_cast<const char*>(&limb), sizeof limb);
        }
    }
    return secrets;
}

// Which secrets have eight octets in a row in freed blocks, and in how many, as "d in 3 blocks ".
std::string found(const std::vector<std::string>& freed, const Secrets& secrets)
{
    using Window = std::uint64_t;
    const auto windowAt = [](const std::string& octets, std::size_t i) {
        Window window = 0;
        std::memcpy(&window, octets.data() + i, sizeof window);
        return window;
    };
    std::unordered_map<Window, std::string> windows;
    std::bitset<0x10000> starts; // whether any begins with these two octets
    for (const auto& [name, octets] : secrets) {
        for (std::size_t i = 0; i + sizeof(Window) <= octets.size(); ++i) {
            windows[windowAt(octets, i)] = name;
            starts.set(windowAt(octets, i) & 0xFFFF);
        }
    }
    std::map<std::string, int> blocks;
    for (const std::string& block : freed) {
        std::set<std::string> here;
        for (std::size_t i = 0; i + sizeof(Window) <= block.size(); ++i) {
            const Window window = windowAt(block, i);
            if (starts[window & 0xFFFF] && windows.contains(window)) here.insert(windows.at(window));
        }
        for (const std::string& name : here) ++blocks[name];
    }
    std::string text;
    for (const auto& [name, count] : blocks) text += name + " in " + std::to_string(count) + " blocks ";
    return text;
}

constexpr char stackPaint = '\xA5';

// The stack of a thread that runs the step and ends.
std::string stackAfter(std::function<void()> step)
{
    constexpr std::size_t size = 1 << 20;
    std::string stack(size + 4096, stackPaint);
    void* const base = reinterpret_cast<void*>((reinterpret_cast<std::uintptr_t>(stack.data()) + 4095) & ~std::uintptr_t{4095});
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, base, size), 0);
    const auto run = [](void* of) -> void* { return (*static_cast<std::function<void()>*>(of))(), nullptr; };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &step), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
#ifdef __SANITIZE_THREAD__
    stack.clear(); // ThreadSanitizer's calls make the compiler keep more on the stack than the library's own code has there
#endif
    return stack;
}

// The octets of it that were written.
std::size_t stackUse(const std::function<void()>& step)
{
    const std::string stack = stackAfter(step);
    return stack.size() - stack.find_first_not_of(stackPaint);
}

// What protectedUnder() derives from the password, and what HMAC makes of that on the way.
void addDerived(Secrets& secrets, const std::string& password)
{
    unsigned char derived[32];
    PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()), reinterpret_cast<const unsigned char*>("salt"), 4, 5,
                           sizeof derived, derived);
    secrets["derived key"] = text(derived, 16);
    HMAC_State state;
    HMAC_Init(state, password.data(), password.size());
    secrets["inner state"] = text(reinterpret_cast<unsigned char*>(state.sha1.h), 20);
    secrets["outer state"] = text(reinterpret_cast<unsigned char*>(state.outer.h), 20);
    for (const char pad : {'\x36', '\x5C'}) {
        std::string& padded = secrets[std::string("pad ") + pad] = password;
        for (char& octet : padded) octet = static_cast<char>(octet ^ pad);
    }
}

// A protected key as `password` opens it, with anything for a plaintext.
std::string protectedUnder(const std::string& password, const std::string& plaintext)
{
    unsigned char derived[32];
    PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()), reinterpret_cast<const unsigned char*>("salt"), 4, 5,
                           sizeof derived, derived);
    const std::string scheme = "30{06{2A831A8C9A440104} 04{" + hex(text(derived + 16, 16)) + "}}";
    const std::string derivation = "30{06{2A864886F70D01050C} 30{04{\"salt\"} 020105}}";
    return der("30{30{06{2A864886F70D01050D} 30{" + derivation + scheme + "}} 04{" +
               hex(seedByOpenssl(text(derived, 16), text(derived + 16, 16), plaintext, true)) + "}}");
}

} // namespace

TEST(Memory, RunsOutWith1002AndLeavesNoLeakAndNoSecret)
{
    Input input;
    const Secrets secrets = secretsOf(input);
    for (const std::string& certificate : {input["cert"], everyExtension}) {
        input["cert"] = certificate;
        HeapWatch heap;
        {
            Context context;
            for (const Step& step : session()) {
                SCOPED_TRACE(step.line);
                const Result well = make(step, context, input);
                if (well.code == 0) { EXPECT_EQ(withoutMemory(step, context, input, well), ""); } // else no such extension
                EXPECT_EQ(found(heap.freed(), secrets), "");
                if (!well.output.empty()) input["last"] = well.output;
            }
            call(context, "VRNO_CERT_Load cert", input); // and stays, for VRNO_API_Finish
        }
        EXPECT_EQ(heap.live(), 0U);
    }
}

TEST(FreedMemory, HoldsNoPasswordKeyOrPlaintext)
{
    Input input;
    Secrets secrets = secretsOf(input);
    secrets["wrong password"] = input["wrongPassword"] = "another:phrase:by:a:stranger";
    secrets["plaintext"] = "[some+text+that+no+message+has]";
    input["noKey"] = protectedUnder(input["password"], secrets["plaintext"]);
    input["longer"] = protectedUnder(input["password"], input["key"] + "and more");
    addDerived(secrets, input["password"]);
    const std::pair<const char*, int> table[] = {
        {"VRNO_PRIKEY_Encrypt 48 password key out", 0},
        {"VRNO_PRIKEY_Decrypt password blob out", 0},
        {"VRNO_PRIKEY_Decrypt wrongPassword blob out", 2004},
        {"VRNO_PRIKEY_Decrypt password noKey out", 2004},
        {"VRNO_PRIKEY_Decrypt password longer out", 0},
        {"VRNO_PRIKEY_CheckKeyPair cert key", 0},
        {"VRNO_PRIKEY_CheckKeyPair data key", 2003},
        {"VRNO_MEDIA_DISK_ReadPriKey blobFile password out", 0},
        {"VRNO_MEDIA_DISK_ReadPriKey blobFile wrongPassword out", 2004},
        {"VRNO_MEDIA_DISK_ReadPriKey keyFile empty out", 0},
        {"VRNO_MEDIA_DISK_ReadFile keyFile out", 0},
        {"VRNO_MEDIA_CARD_ReadPriKey 2 1234 empty out", 0},
        {"VRNO_MEDIA_CARD_ReadPriKey 1 1234 password out", 0},
        {"VRNO_MEDIA_CARD_ReadPriKey 1 1234 wrongPassword out", 2004},
    };
    for (const auto& row : table) {
        const char* const line = row.first;
        Context context;
        EXPECT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
        HeapWatch heap;
        EXPECT_EQ(call(context, line, input).code, row.second) << line;
        EXPECT_EQ(found(heap.freed(), secrets), "") << line;
        EXPECT_EQ(found({stackAfter([&] { call(context, line, input); })}, secrets), "") << line;
    }
}

TEST(FreedMemory, HoldsNoSessionKey)
{
    Input input;
    for (const char* const line : {"VRNO_CRYPT_GenKeyAndIV 48", "VRNO_CRYPT_SetKeyAndIV 48 0123456789abcdef ABCDEFGHIJKLMNOP",
                                   "VRNO_CMS_EncryptData 2 cert cert 48 out"}) {
        HeapWatch heap;
        Secrets secrets;
        {
            Context context;
            call(context, line, input);
            const std::string all = call(context, "VRNO_CRYPT_GetKeyAndIV out out out").output; // "48", key and IV
            secrets["session key"] = all.substr(2, 16);
            SEED_Schedule schedule;
            SEED_SetKey(schedule, at(secrets["session key"]));
            secrets["schedule"] = text(reinterpret_cast<unsigned char*>(schedule.words), sizeof schedule.words);
            input["last"] = call(context, "VRNO_CRYPT_Encrypt cert out", input).output;
            call(context, "VRNO_CRYPT_Decrypt last out", input);
            const std::string stack = stackAfter([&] { call(context, "VRNO_CRYPT_Encrypt cert out", input); });
            EXPECT_EQ(found({stack}, secrets), "") << line;
            call(context, "VRNO_CRYPT_GenKeyAndIV 48"); // in place of the old one
        }
        EXPECT_EQ(found(heap.freed(), secrets), "") << line;
    }
}

TEST(Stack, NoCallTakes48KB)
{
#ifndef MEASURES_STACK
    GTEST_SKIP() << "only the release states its stack";
#endif
    Input input;
    const std::size_t ofThread = stackUse([] {});
    for (const std::string& certificate : {input["cert"], everyExtension}) {
        input["cert"] = certificate;
        Context context;
        for (const Step& step : session()) {
            Result result;
            EXPECT_LT(stackUse([&] { result = make(step, context, input); }) - ofThread, std::size_t{48000}) << step.line;
            if (!result.output.empty()) input["last"] = result.output;
        }
    }
}
