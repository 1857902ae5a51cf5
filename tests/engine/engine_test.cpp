// The engine: its frame, SEED with padding, the random generators.
#include "engine/frame/context.h"
#include "engine/random/random.h"
#include "engine/seed/padding.h"
#include "engine/seed/seed_kernels.h"
#include "engine/words.h"
#include "platform/platform.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/failing.h"
#include "support/interface.h"
#include "support/openssl.h"
#include "support/secrets.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <thread>

using namespace vrno;
using namespace test;

namespace {

using Buffer = std::vector<unsigned char>;

Buffer buffer(const std::string& from) { return {from.begin(), from.end()}; }

Buffer noise(std::size_t length, unsigned seed)
{
    std::mt19937 numbers(seed);
    Buffer out(length);
    for (unsigned char& octet : out) octet = static_cast<unsigned char>(numbers());
    return out;
}

std::string text(const Buffer& from) { return {from.begin(), from.end()}; }

Buffer scheduleOf(const Buffer& key)
{
    Buffer schedule(seedScheduleLength);
    int length = seedScheduleLength;
    EXPECT_EQ(ZIRC_GenerateKey(schedule.data(), &length, 11110, key.data(), 16), 0);
    return schedule;
}

// A call with SEED and good arguments, which a test replaces.
struct SeedCall {
    Buffer schedule = scheduleOf(Buffer(16, 'k')), chain = Buffer(16, 'i'), data = Buffer(16, 'd'), result = Buffer(6000);
    unsigned char *key = schedule.data(), *iv = chain.data(), *in = data.data(), *out = result.data();
    int keyLength = 128, ivLength = 16, mode = ZIRC_MODE_CBC, inLength = 16, room = 6000, padding = ZIRC_PAD_LENGTH;

    SeedCall() = default;
    SeedCall(const Buffer& userKey, const Buffer& firstIv, const Buffer& input)
        : schedule(scheduleOf(userKey)), chain(firstIv), data(input), inLength(static_cast<int>(input.size()))
    {
        data.reserve(1); // an empty message has an address, too
        in = data.data();
    }
    int encrypt() { return run(ZIRC_EncryptData); }
    int decrypt() { return run(ZIRC_DecryptData); }
    Buffer output() const { return {out, out + room}; }

private:
    int run(decltype(&ZIRC_EncryptData) operation)
    {
        return operation(key, keyLength, 11110, mode, out, &room, in, inLength, iv, ivLength, padding);
    }
};

} // namespace

// ---- SEED ----

TEST(Seed, PublishedVectors)
{
    for (const Case& c : cases("seed.txt", 3)) {
        SEED_Schedule schedule;
        SEED_SetKey(schedule, buffer(der(c[0])).data());
        const Buffer plain = buffer(der(c[1])), cipher = buffer(der(c[2]));
        std::uint32_t words[4];
        for (std::size_t i = 0; i < 4; ++i) words[i] = load32<std::endian::big>(&plain[4 * i]);
        SEED_Encrypt(schedule, words);
        for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(words[i], load32<std::endian::big>(&cipher[4 * i])) << c.where;
        SEED_Decrypt(schedule, words);
        for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(words[i], load32<std::endian::big>(&plain[4 * i])) << c.where;
    }
}

TEST(Seed, CbcAgreesWithOpenssl)
{
    std::mt19937 numbers(1);
    for (unsigned round = 0; round < 300; ++round) {
        const Buffer key = noise(16, round), iv = noise(16, round + 2000);
        SeedCall forth(key, iv, noise(numbers() % (round < 280 ? 300 : 5000), round + 1000));
        ASSERT_EQ(forth.encrypt(), 0);
        ASSERT_EQ(text(forth.output()), seedByOpenssl(text(key), text(iv), text(forth.data), true));
        SeedCall back(key, iv, forth.output());
        ASSERT_EQ(back.decrypt(), 0);
        ASSERT_EQ(back.output(), forth.data);
        ASSERT_EQ(forth.chain, Buffer(forth.out + forth.room - 16, forth.out + forth.room)); // ready for the next message
        ASSERT_EQ(back.chain, forth.chain);
    }
}

TEST(Seed, EveryKernelDecryptsLikeOneBlockAtATime)
{
    SEED_Schedule schedule;
    SEED_SetKey(schedule, noise(16, 1).data());
    for (std::size_t blocks = 0; blocks < 132; ++blocks) {
        const Buffer in = noise(16 * blocks, static_cast<unsigned>(blocks));
        Buffer expected(in.size()), oneChain(16, 7);
        for (std::size_t i = 0; i < blocks; ++i) SEED_CbcDecrypt(schedule, &expected[16 * i], &in[16 * i], 16, oneChain.data());
        for (const Kernel<CbcFunction>& kernel : seedCbcDecryptKernels) {
            if (!cpuHas(kernel.needs)) continue;
            Buffer out(in.size()), inPlace = in, chain(16, 7), otherChain(16, 7);
            kernel.run(schedule, out.data(), in.data(), blocks, chain.data());
            kernel.run(schedule, inPlace.data(), inPlace.data(), blocks, otherChain.data());
            ASSERT_EQ(out, expected) << kernel.name << " " << blocks;
            ASSERT_EQ(inPlace, expected);
            ASSERT_EQ(chain, oneChain);
            ASSERT_EQ(otherChain, oneChain);
        }
    }
}

// The message in pieces of `step` bytes through the stages of one direction.
static Buffer throughStages(bool encrypts, SeedCall& call, int step)
{
    ZIRC_Context context;
    const auto init = encrypts ? ZIRC_EncryptInit : ZIRC_DecryptInit;
    const auto update = encrypts ? ZIRC_EncryptUpdate : ZIRC_DecryptUpdate;
    const auto final = encrypts ? ZIRC_EncryptFinal : ZIRC_DecryptFinal;
    EXPECT_EQ(init(context, call.key, 128, 11110, 3, call.iv, 16), 0);
    int produced = 0, last = 0;
    for (int at = 0; at < call.inLength; at += step, produced += last) {
        last = call.room - produced;
        EXPECT_EQ(update(context, call.key, 128, 3, call.out + produced, &last, call.in + at, std::min(step, call.inLength - at)),
                  0);
    }
    last = call.room - produced;
    EXPECT_EQ(final(context, 3, call.out + produced, &last, call.padding), 0);
    return {call.out, call.out + produced + last};
}

TEST(Seed, PiecesOfEverySizeGiveTheWholeMessage)
{
    const Buffer key = noise(16, 1), iv(16, 'i'), message = noise(3000, 3);
    SeedCall whole(key, iv, message);
    ASSERT_EQ(whole.encrypt(), 0);
    for (const int step : {1, 15, 16, 17, 975, 976, 977, 1000, 1951, 1952, 1953, 2928, 3000}) {
        SeedCall forth(key, iv, message), back(key, iv, whole.output());
        EXPECT_EQ(throughStages(true, forth, step), whole.output()) << step;
        EXPECT_EQ(throughStages(false, back, (step + 15) / 16 * 16), message) << step;
    }
}

TEST(Seed, PaddingsFillTheBlockAndOnlyTheyAreRemoved)
{
    for (const Case& c : cases("paddings.txt", 5)) {
        SCOPED_TRACE(c.where);
        const int id = std::stoi(c[0]), block = std::stoi(c[1]), given = std::stoi(c[2]);
        const bool isDrawn = c[3] == "drawn", isRefused = c[4] == "refused";
        const std::string plain(static_cast<std::size_t>(given), 'd');
        Buffer data = buffer(plain + (isDrawn ? "" : der(c[3])));
        int length = given;
        if (!isRefused) {
            const Buffer expected = data;
            data.assign(plain.begin(), plain.end());
            data.resize(plain.size() + 16);
            ASSERT_EQ(padBuffer(data.data(), &length, block, id), 0);
            data.resize(static_cast<std::size_t>(length));
            EXPECT_TRUE(isDrawn || data == expected) << hex(text(data));
        }
        length = static_cast<int>(data.size());
        EXPECT_EQ(unpadBuffer(data.data(), &length, block, id) < 0, isRefused);
        if (isRefused) continue;
        EXPECT_EQ(length, std::stoi(c[4]));
        EXPECT_EQ(text(data).substr(0, plain.size()), plain);
    }
}

// ---- the frame ----

// Ids next to the listed ones, those that only an inner table knows, and those of another operation.
TEST(Engine, OperationsRefuseIdsThatAreNotTheirs)
{
    Buffer key(2048), in(16), out(4096), iv(16);
    int room = 4096;
    for (const int id : {0, -1, 3420, 11110, 12001, 31400, 120201, 121501, 140000, 141801, 171403}) {
        EXPECT_EQ(ZIRC_DigestData(id, out.data(), &room, in.data(), 16), 1105) << id;
    }
    for (const int id : {1200, 1400, 12001, 13101, 141501, 171401}) {
        EXPECT_EQ(ZIRC_SignData(key.data(), 2048, id, out.data(), &room, in.data(), 16), 1105) << id;
        EXPECT_EQ(ZIRC_VerifyData(key.data(), 2048, id, in.data(), 16, in.data(), 16), 1105) << id;
    }
    for (const int id : {1400, 12003, 13100, 31400, 121401}) {
        const int result = ZIRC_EncryptData(key.data(), 2048, id, 6, out.data(), &room, in.data(), 16, iv.data(), 16, 8);
        EXPECT_EQ(result, 1105) << id;
    }
    for (const int id : {1400, 3420, 12001}) {
        EXPECT_EQ(ZIRC_GenerateMAC(key.data(), 20, id, out.data(), &room, in.data(), 16), 1105) << id;
        EXPECT_EQ(ZIRC_GenerateKey(out.data(), &room, id, key.data(), 16), 105) << id;
        EXPECT_EQ(ZIRC_GenerateRandom(id + 1, out.data(), 16, nullptr, 0), 105) << id;
    }
}

TEST(Engine, IdsOfSignaturesSelectTheirDigest)
{
    const auto digest = [](int id) {
        Buffer out(20);
        int length = 20;
        EXPECT_EQ(ZIRC_DigestData(id, out.data(), &length, at("message"), 7), 0) << id;
        return Buffer(out.data(), out.data() + length);
    };
    for (const int id : {121200, 121201, 121202}) EXPECT_EQ(digest(id), digest(1200));
    for (const int id : {13101, 121400, 121401, 121402, 131401, 141401, 171401, 171402, 171404})
        EXPECT_EQ(digest(id), digest(1400));
}

TEST(Engine, BadArgumentsOfACipherGiveTheirCodes)
{
    using Call = SeedCall;
    const auto numbers =
        byName<int Call::*>("keyLength, ivLength, mode, inLength, room, padding",
                            {&Call::keyLength, &Call::ivLength, &Call::mode, &Call::inLength, &Call::room, &Call::padding});
    const auto pointers = byName<unsigned char * Call::*>("key, iv, in, out", {&Call::key, &Call::iv, &Call::in, &Call::out});
    for (const Case& c : cases("seedcalls.txt", 5)) {
        for (const bool encrypts : {true, false}) {
            SCOPED_TRACE(c.where + " " + c[0]);
            const std::string& expected = c[encrypts ? 2 : 3];
            Call call(Buffer(16), Buffer(16), Buffer(2000, 'd'));
            call.inLength = 16;
            std::istringstream words(c[1]);
            std::string name;
            for (int value; words >> name >> value;) {
                if (numbers.contains(name))
                    call.*numbers.at(name) = value;
                else
                    call.*pointers.at(name) = nullptr;
            }
            Buffer out(static_cast<std::size_t>(call.room)); // of its own, so that a sanitizer sees a write behind it
            if (call.out) call.out = out.data();
            const int code = encrypts ? call.encrypt() : call.decrypt();
            EXPECT_TRUE(expected.empty() || code == std::stoi(expected)) << code;
            EXPECT_TRUE(expected != "0" || call.room == std::stoi(c[4])) << call.room;
        }
    }
}

TEST(Engine, BadArgumentsOfOtherOperationsGiveTheirCodes)
{
    Buffer bytes(3000);
    unsigned char* const b = bytes.data();
    int room = 20;
    EXPECT_EQ(ZIRC_DigestData(1400, b, &room, nullptr, 0), 2108);
    EXPECT_EQ(ZIRC_DigestData(1400, b, &room, b, -1), 2101);
    EXPECT_EQ(ZIRC_DigestData(1400, nullptr, &room, b, 1), 3108);
    EXPECT_EQ(ZIRC_GenerateMAC(nullptr, 0, 31400, b, &room, b, 1), 1106);
    EXPECT_EQ(ZIRC_GenerateMAC(b, -1, 31400, b, &room, b, 1), 1107);
    EXPECT_EQ(ZIRC_GenerateMAC(b, 0, 31400, b, &room, nullptr, 1), 2108);
    EXPECT_EQ(ZIRC_ChainMAC(b, 16, 31400, b, &room, b, 19, 1), 2101);
    EXPECT_EQ(ZIRC_ChainMAC(b, 16, 31400, b, &room, b, 0, 1), 2101);
    EXPECT_EQ(ZIRC_ChainMAC(b, 16, 31400, b, &room, b, 40, 1), 2103);
    EXPECT_EQ(ZIRC_SignData(nullptr, 900, 121401, b, &room, b, 1), 1106);
    EXPECT_EQ(ZIRC_SignData(b, 99, 121401, b, &room, b, 1), 1107);
    EXPECT_EQ(ZIRC_VerifyData(b, 135, 121401, b, 128, b, 1), 1107);
    EXPECT_EQ(ZIRC_GenerateRandom(3420, b, -1, nullptr, 0), 101);
    EXPECT_EQ(ZIRC_GenerateRandom(3420, nullptr, 0, nullptr, 0), 0);
    room = 128;
    EXPECT_EQ(ZIRC_GenerateKey(nullptr, &room, 11110, b, 16), 106);
    EXPECT_EQ(ZIRC_GenerateKey(b, &room, 11110, nullptr, 16), 108);
    EXPECT_EQ(ZIRC_GenerateKey(b, &room, 11110, b, 15), 101);
    room = 127;
    EXPECT_EQ(ZIRC_GenerateKey(b, &room, 11110, b, 16), 103);
    room = 19;
    EXPECT_EQ(ZIRC_DigestData(1400, b, &room, b, 1), 3103);
    EXPECT_EQ(ZIRC_ChainMAC(b, 16, 31400, b, &room, b, 20, 1), 2103);
    const FailingAllocation first(1);
    EXPECT_EQ(ZIRC_SignData(b, 900, 121401, b, &room, b, 1), 102);
}

TEST(Engine, ErrorTextsNameStageAndCode)
{
    EXPECT_STREQ(ZIRC_GetErrorText(0).text, " Successfully completed.(0)");
    EXPECT_STREQ(ZIRC_GetErrorText(2107).text, "Update stage; Invalid key value.(2107)");
    EXPECT_STREQ(ZIRC_GetErrorText(4108).text, " Invalid input or output data pointer(4108)");
    EXPECT_STREQ(ZIRC_GetErrorText(117).text, "");
    EXPECT_STREQ(ZIRC_GetErrorText(-107).text, "");
}

// ---- the random generators ----

static std::string drawn(bool global, int length = 16)
{
    Buffer out(static_cast<std::size_t>(length));
    EXPECT_EQ(global ? randBytes(out.data(), length) : randBytesLocal(out.data(), length), 0);
    return text(out);
}

static int exitStatus(pid_t child)
{
    int status = 1;
    waitpid(child, &status, 0);
    return status;
}

TEST(Random, DrawsDiffer)
{
    std::set<std::string> seen;
    for (int i = 0; i < 500; ++i) {
        EXPECT_TRUE(seen.insert(drawn(true)).second);
        EXPECT_TRUE(seen.insert(drawn(false)).second);
    }
    for (const int length : {1, 7, 8, 9, 1022, 1023, 1024, 5000}) {
        const std::string one = drawn(true, length), other = drawn(false, length);
        EXPECT_TRUE(length < 9 || one.substr(one.size() - 8) != other.substr(other.size() - 8));
        // A pool of 1023 bytes must not repeat itself.
        EXPECT_TRUE(length < 2048 || one.substr(0, 1000) != one.substr(1023, 1000));
    }
}

// Whether a child, by the C library or by the kernel alone, draws other bytes than its parent.
static bool childDrawsOtherBytes(bool global, bool isRaw)
{
    const RandomSource source(global ? RandomSource::system : RandomSource::alwaysTheSame);
    const auto draw = global ? randBytes : randBytesLocal;
    unsigned char parents[32] = {}, childs[32] = {};
    int ends[2];
    if (randBytes(parents, 32) != 0 || draw(parents, 32) != 0 || pipe(ends) != 0) return false;
    std::memset(parents, 0, 32);
    const auto child = static_cast<pid_t>(isRaw ? syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0) : fork());
    if (child == 0) _exit(draw(childs, 32) == 0 && write(ends[1], childs, 32) == 32 ? 0 : 1);
    const bool areDrawn = draw(parents, 32) == 0 && exitStatus(child) == 0 && read(ends[0], childs, 32) == 32;
    close(ends[0]);
    close(ends[1]);
    return areDrawn && text(childs, 32) != text(parents, 32);
}

TEST(Random, AChildDrawsOtherBytes)
{
    for (const bool global : {true, false}) {
        EXPECT_TRUE(childDrawsOtherBytes(global, false));
        EXPECT_TRUE(childDrawsOtherBytes(global, true));
        const pid_t child = fork(); // whose kernel knows no mark for memory
        if (child == 0) {
            forgetForkMarks();
            _exit(childDrawsOtherBytes(global, false) ? 0 : 1);
        }
        EXPECT_EQ(exitStatus(child), 0);
    }
}

// Both draws begin with the same bytes of the system.
TEST(Random, DrawsOfOneCallShareTheRunningDigest)
{
    const RandomSource source(RandomSource::alwaysTheSame);
    EXPECT_NE(drawn(false), drawn(false));
}

static std::string memoryOfProcess()
{
    std::string copy = text(static_cast<unsigned char*>(platform::lockProcessMemory()), platform::maxProcessMemory);
    platform::unlockProcessMemory();
    return copy;
}

// Seeds of one octet each change one octet of the pool, in turn and again.
TEST(Random, SeedsGoRoundThePool)
{
    std::string states[2];
    std::map<std::size_t, int> changes;
    for (int turn = 0; turn < 5000; ++turn) {
        ASSERT_EQ(randSeed(reinterpret_cast<const unsigned char*>(&turn), 1), 0);
        states[turn % 2] = memoryOfProcess();
        for (std::size_t i = 0; turn > 0 && i < states[0].size(); ++i) {
            if (states[0][i] != states[1][i]) ++changes[i];
        }
    }
    EXPECT_GE(std::count_if(changes.begin(), changes.end(), [](const auto& entry) { return entry.second > 1; }), 1023);
}

// The third digest that a call mixes into its pool stays there, and its seeds are 'r'.
TEST(Random, LeavesNothingOnTheStack)
{
    const pid_t process = getpid();
    std::string third(20, '\0');
    for (int i = 0; i < 3; ++i) {
        third += text(reinterpret_cast<const unsigned char*>(&process), 4) + "rrrr" + std::string(20, '\0') + std::string(20, 'r');
        third = sha1ByOpenssl(third);
    }
    unsigned char out[8] = {};
    const std::pair<const char*, std::function<int()>> table[] = {
        {"randSeed", [&] { return randSeed(out, 8); }},
        {"randBytes", [&] { return randBytes(out, 8); }},
        {"randBytesLocal", [&] { return randBytesLocal(out, 8); }},
    };
    for (const auto& row : table) {
        const std::string stack = stackAfter([&row] {
            const RandomSource source(RandomSource::alwaysTheSame);
            EXPECT_EQ(row.second(), 0);
        });
        Secrets secrets;
        secrets.add("seed", std::string(20, 'r'));
        secrets.add("pool", third);
        secrets.add("memory of the process", memoryOfProcess());
        EXPECT_EQ(secrets.in({stack}), "") << row.first;
    }
}

TEST(Random, DrawsTakeTheDeviceAndFailWithoutIt)
{
    const struct {
        const char* device;
        RandomSource::Kind kind;
        bool isGood;
    } table[] = {{"works", RandomSource::device, true},
                 {"is missing", RandomSource::none, false},
                 {"fails", RandomSource::device, false},
                 {"is a file", RandomSource::file, false},
                 {"is not needed after an interruption", RandomSource::interrupted, true}};
    for (const auto& [device, kind, isGood] : table) {
        const pid_t child = fork(); // a child must seed its pool, too
        if (child == 0) {
            const RandomSource source(kind);
            const ReadHook reads([device = device] { return *device == 'f' ? EIO : 0; });
            const Context context;
            SeedCall padded;
            padded.padding = ZIRC_PAD_RANDOM;
            unsigned char out[16] = {};
            const std::array results{randBytes(out, 16), randBytesLocal(out, 16), ZIRC_GenerateRandom(3420, out, 16, nullptr, 0),
                                     padded.encrypt(), VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED)};
            _exit(results == (isGood ? std::array<int, 5>{} : std::array{-1, -1, 110, 3110, 5001}) ? 0 : 1);
        }
        EXPECT_EQ(exitStatus(child), 0) << device;
    }
}

TEST(Random, AForkBesideDrawingThreadsLeavesTheLockFree)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int round = 0; round < 2000; ++round) drawn(i == 0, 64);
        });
    }
    for (int i = 0; i < 40; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(20); // ends a child that waits for the lock
            _exit(randBytes(reinterpret_cast<unsigned char*>(&i), 4) == 0 ? 0 : 1);
        }
        EXPECT_EQ(exitStatus(child), 0);
    }
    for (std::thread& thread : threads) thread.join();
}
