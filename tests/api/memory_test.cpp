// Memory that runs out and a system that fails, and what lies in memory that is freed.
#include "engine/digest/hmac.h"
#include "engine/seed/seed.h"
#include "support/bytes.h"
#include "support/failing.h"
#include "support/openssl.h"
#include "support/scenarios.h"
#include "support/secrets.h"

#include <set>

using namespace test;
using namespace vrno;

namespace {

// Lets each allocation or call of the system that the step makes fail, alone and with all behind it: the codes of the results that
// are not the whole one, which needs not all of them, and 1002. The context must go on to serve the step.
template <class Fault> std::set<int> codesWith(const Step& step, VRNO_API_CTX* context, const Values& values)
{
    const Result well = make(step, context, values);
    const auto made = [&](long number, bool onward) {
        if (step.line.starts_with("VRNO_MEDIA_Load") && well.code == 0) VRNO_MEDIA_Unload(context); // it takes one library
        const Fault fails(number, onward);
        return make(step, context, values);
    };
    EXPECT_EQ(made(0, false), well);
    const long total = Fault::count();
    std::set<int> codes;
    for (long number = 1; number <= 2 * total; ++number) {
        const Result result = made((number + 1) / 2, number % 2 == 0);
        if (result != well || result.code == VRNO_ERR_MEMORY) codes.insert(result.code);
        EXPECT_EQ(made(0, false), well) << "after fault " << number;
    }
    return codes;
}

// The password, and the numbers of the RSA private key.
Secrets secretsOf(const Values& input)
{
    Secrets secrets;
    secrets.add("password", input.at("password"));
    const std::string& info = input.at("key");
    const unsigned char* from = at(info);
    const std::unique_ptr<EVP_PKEY, Freed> key(d2i_AutoPrivateKey(nullptr, &from, static_cast<long>(info.size())));
    for (const char* const name : {"d", "rsa-factor1", "rsa-factor2", "rsa-exponent1", "rsa-exponent2", "rsa-coefficient1"}) {
        BIGNUM* number = nullptr;
        EXPECT_EQ(EVP_PKEY_get_bn_param(key.get(), name, &number), 1);
        std::string octets(static_cast<std::size_t>(BN_num_bytes(number)), '\0');
        BN_bn2bin(number, reinterpret_cast<unsigned char*>(octets.data()));
        BN_clear_free(number);
        secrets.add(name, octets);
    }
    return secrets;
}

// What protectedUnder() derives from the password, and what HMAC makes of that on the way.
void addDerived(Secrets& secrets, const std::string& password)
{
    unsigned char derived[32];
    PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()), reinterpret_cast<const unsigned char*>("salt"), 4, 5,
                           sizeof derived, derived);
    secrets.add("derived key", text(derived, 16));
    HMAC_State state;
    HMAC_Init(state, password.data(), password.size());
    secrets.add("inner state", text(reinterpret_cast<unsigned char*>(state.sha1.h), 20));
    secrets.add("outer state", text(reinterpret_cast<unsigned char*>(state.outer.h), 20));
    for (const char pad : {'\x36', '\x5C'}) {
        std::string padded = password;
        for (char& octet : padded) octet = static_cast<char>(octet ^ pad);
        secrets.add("padded password", padded);
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

// The key with its octets in two parts.
std::string inSegments(const std::string& key)
{
    const std::string head = hex(key.substr(4, 18)), octets = key.substr(26); // the OCTET STRING has a length of two octets
    return der("30{" + head + "24{04{" + hex(octets.substr(0, 500)) + "} 04{" + hex(octets.substr(500)) + "}}}");
}

} // namespace

TEST(Memory, RunsOutWith1002AndLeavesNoLeakAndNoSecret)
{
    const World world;
    const Secrets secrets = secretsOf(world);
    HeapWatch heap;
    forEachScenario(world, [&](VRNO_API_CTX* context, const Step& step, const Values& values) {
        const std::set<int> codes = codesWith<FailingAllocation>(step, context, values);
        EXPECT_TRUE(codes == std::set<int>{VRNO_ERR_MEMORY} || FailingAllocation::count() == 0) << testing::PrintToString(codes);
        EXPECT_EQ(secrets.in(heap.freed()), "");
    });
    EXPECT_EQ(heap.live(), 0U);
}

TEST(System, FailuresGiveTheirCodes)
{
    using Codes = std::map<std::string, std::set<int>>;
    Codes codes;
    HeapWatch heap;
    forEachScenario(World(), [&](VRNO_API_CTX* context, const Step& step, const Values& values) {
        const std::set<int> found = codesWith<FailingSystem>(step, context, values);
        if (!found.empty()) codes[step.line.substr(0, step.line.find(' '))].insert(found.begin(), found.end());
    });
    EXPECT_EQ(heap.live(), 0U);
    EXPECT_EQ(codes, (Codes{{"VRNO_CMS_EncryptData", {VRNO_ERR_CERT_FORMAT}}, // as its contract says of missing random bytes
                            {"VRNO_CRYPT_GenKeyAndIV", {VRNO_ERR_RANDOM}},
                            {"VRNO_MEDIA_CARD_ReadCert", {2512}},
                            {"VRNO_MEDIA_CARD_ReadPriKey", {2512}},
                            {"VRNO_MEDIA_DISK_ReadCert", {2504}},
                            {"VRNO_MEDIA_DISK_ReadFile", {2500}},
                            {"VRNO_MEDIA_DISK_ReadPriKey", {2507}},
                            {"VRNO_MEDIA_Load", {2510}}}));
}

TEST(FreedMemory, HoldsNoPasswordKeyOrPlaintext)
{
    World input;
    input.card().put("0020.item", input["blob"]);
    input.card().put("0030.item", "random value");
    input.card().put("0050.item", input["key"]);
    Secrets secrets = secretsOf(input);
    const std::string plaintext = "[some+text+that+no+message+has]";
    secrets.add("wrong password", input["wrongPassword"] = "another:phrase:by:a:stranger");
    secrets.add("plaintext", plaintext);
    input["noKey"] = protectedUnder(input["password"], plaintext);
    input["segments"] = protectedUnder(input["password"], inSegments(input["key"]));
    input["longer"] = protectedUnder(input["password"], input["key"] + "and more");
    addDerived(secrets, input["password"]);
    const std::pair<const char*, int> table[] = {
        {"VRNO_PRIKEY_Encrypt 48 password key out", 0},
        {"VRNO_PRIKEY_Decrypt password blob out", 0},
        {"VRNO_PRIKEY_Decrypt wrongPassword blob out", 2004},
        {"VRNO_PRIKEY_Decrypt password noKey out", 2004},
        {"VRNO_PRIKEY_Decrypt password longer out", 0},
        {"VRNO_PRIKEY_Decrypt password segments out", 0},
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
        EXPECT_EQ(secrets.in(heap.freed()), "") << line;
        EXPECT_EQ(secrets.in({stackAfter([&] { call(context, line, input); })}), "") << line;
    }
}

TEST(FreedMemory, HoldsNoSessionKey)
{
    World input;
    for (const char* const line : {"VRNO_CRYPT_GenKeyAndIV 48", "VRNO_CRYPT_SetKeyAndIV 48 0123456789abcdef ABCDEFGHIJKLMNOP",
                                   "VRNO_CMS_EncryptData 2 cert cert 48 out"}) {
        HeapWatch heap;
        Secrets secrets;
        {
            Context context;
            call(context, line, input);
            const std::string all = call(context, "VRNO_CRYPT_GetKeyAndIV out out out").output; // "48", key and IV
            secrets.add("session key", all.substr(2, 16));
            SEED_Schedule schedule;
            SEED_SetKey(schedule, at(all) + 2);
            secrets.add("schedule", text(reinterpret_cast<unsigned char*>(schedule.words), sizeof schedule.words));
            input["last"] = call(context, "VRNO_CRYPT_Encrypt cert out", input).output;
            call(context, "VRNO_CRYPT_Decrypt last out", input);
            const std::string stack = stackAfter([&] { call(context, "VRNO_CRYPT_Encrypt cert out", input); });
            EXPECT_EQ(secrets.in({stack}), "") << line;
            call(context, "VRNO_CRYPT_GenKeyAndIV 48"); // in place of the old one
        }
        EXPECT_EQ(secrets.in(heap.freed()), "") << line;
    }
}

TEST(Stack, NoCallTakes48KB)
{
#ifndef MEASURES_STACK
    GTEST_SKIP() << "only the release states its stack";
#endif
    const std::size_t ofThread = stackUse([] {});
    forEachScenario(World(), [&](VRNO_API_CTX* context, const Step& step, const Values& values) {
        EXPECT_LT(stackUse([&] { make(step, context, values); }) - ofThread, std::size_t{48000}) << step.line;
    });
}
