// The engine: its frame, SEED with padding, the generators.
#include "engine/frame/context.h"
#include "engine/random/random.h"
#include "engine/seed/padding.h"
#include "engine/seed/seed_kernels.h"
#include "support/support.h"

#include <openssl/evp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <thread>

using namespace vrno;
using namespace test;

namespace {

using Buffer = std::vector<unsigned char>;

Buffer buffer(const std::string& from)
{
    return {from.begin(), from.end()};
}

std::string noise(std::size_t length, unsigned seed)
{
    std::mt19937 numbers(seed);
    std::string out(length, '\0');
    for (char& c : out) c = static_cast<char>(numbers());
    return out;
}

// One whole operation of the engine with SEED; the result, with the output in `out` and the chaining value in `iv`.
int seedData(bool encrypts, const std::string& key, std::string& iv, const std::string& in, int padding, std::string& out)
{
    Buffer schedule(seedScheduleLength), output(in.size() + 16), chain = buffer(iv);
    int length = seedScheduleLength, room = static_cast<int>(output.size());
    EXPECT_EQ(ZIRC_GenerateKey(schedule.data(), &length, 11110, buffer(key).data(), 16), 0);
    const int result = (encrypts ? ZIRC_EncryptData : ZIRC_DecryptData)(schedule.data(), length, 11110, ZIRC_MODE_CBC, output.data(), &room,
                                                                        reinterpret_cast<const unsigned char*>(in.data()), static_cast<int>(in.size()),
                                                                        chain.data(), 16, padding);
    iv = text(chain.data(), 16);
    if (result == 0) out = text(output.data(), static_cast<std::size_t>(room));
    return result;
}

} // namespace

// ---- SEED ----

TEST(Seed, PublishedVectors)
{
    for (const Case& c : cases("seed.txt", 3)) {
        SEED_Schedule schedule;
        SEED_SetKey(schedule, buffer(der(c[0])).data());
        Buffer block = buffer(der(c[1])), chain(16);
        SEED_CbcEncrypt(schedule, block.data(), block.data(), 16, chain.data());
        EXPECT_EQ(hex(text(block.data(), 16)), hex(der(c[2]))) << c.where;
        const auto words = [](const std::string& notation) {
            std::vector<std::uint32_t> out;
            for (std::size_t i = 0; i < 32; i += 8) out.push_back(static_cast<std::uint32_t>(std::stoul(notation.substr(i, 8), nullptr, 16)));
            return out;
        };
        std::vector<std::uint32_t> inPlace = words(c[2]);
        SEED_Decrypt(schedule, inPlace.data());
        EXPECT_EQ(inPlace, words(c[1]));
        SEED_Encrypt(schedule, inPlace.data());
        EXPECT_EQ(inPlace, words(c[2]));
    }
}

TEST(Seed, CbcIsThatOfOpenSSLBothWays)
{
    std::mt19937 numbers(1);
    for (unsigned round = 0; round < 300; ++round) {
        const std::string key = noise(16, round), in = noise(numbers() % (round < 280 ? 300 : 5000), round + 1000);
        std::string iv = noise(16, round + 2000), chain = iv, out, back;
        ASSERT_EQ(seedData(true, key, chain, in, ZIRC_PAD_LENGTH, out), 0);
        ASSERT_EQ(out, seedByOpenssl(key, iv, in, true));
        ASSERT_EQ(chain, out.substr(out.size() - 16)); // ready for the next message
        ASSERT_EQ(seedData(false, key, iv, out, ZIRC_PAD_LENGTH, back), 0);
        ASSERT_EQ(back, in);
        ASSERT_EQ(iv, chain);
    }
}

TEST(Seed, EveryKernelDecryptsLikeOneBlockAtATime)
{
    SEED_Schedule schedule;
    SEED_SetKey(schedule, buffer(noise(16, 1)).data());
    for (std::size_t blocks = 0; blocks < 70; ++blocks) {
        const Buffer in = buffer(noise(16 * blocks, 2));
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
        }
    }
}

TEST(Seed, PiecesOfEverySizeGiveTheWholeMessage)
{
    const std::string key = noise(16, 1), in = noise(3000, 3);
    std::string chain(16, 'i'), whole;
    ASSERT_EQ(seedData(true, key, chain, in, ZIRC_PAD_LENGTH, whole), 0);
    Buffer schedule(seedScheduleLength), iv(16, 'i');
    int length = seedScheduleLength;
    ZIRC_GenerateKey(schedule.data(), &length, 11110, buffer(key).data(), 16);
    for (const int piece : {1, 15, 16, 17, 975, 976, 977, 1000, 1951, 1952, 1953, 2928, 3000}) {
        for (const bool encrypts : {true, false}) {
            ZIRC_Context context;
            const Buffer from = buffer(encrypts ? in : whole);
            const int all = static_cast<int>(from.size()), step = encrypts ? piece : (piece + 15) / 16 * 16;
            Buffer out(4096);
            int produced = 0;
            ASSERT_EQ((encrypts ? ZIRC_EncryptInit : ZIRC_DecryptInit)(context, schedule.data(), 128, 11110, 3, iv.data(), 16), 0);
            for (int at = 0; at < all; at += step) {
                int room = static_cast<int>(out.size()) - produced;
                ASSERT_EQ((encrypts ? ZIRC_EncryptUpdate : ZIRC_DecryptUpdate)(context, schedule.data(), 128, 3, &out[static_cast<unsigned>(produced)], &room,
                                                                               &from[static_cast<unsigned>(at)], std::min(step, all - at)),
                          0);
                produced += room;
            }
            int room = static_cast<int>(out.size()) - produced;
            ASSERT_EQ((encrypts ? ZIRC_EncryptFinal : ZIRC_DecryptFinal)(context, 3, &out[static_cast<unsigned>(produced)], &room, ZIRC_PAD_LENGTH), 0);
            EXPECT_EQ(text(out.data(), static_cast<std::size_t>(produced + room)), encrypts ? whole : in) << piece;
        }
    }
}

TEST(Seed, PaddingsFillAndAreTakenOff)
{
    const std::string key(16, 'k');
    const struct {
        int id, length;
        const char* filled; // what stands behind the data, in notation; null for random bytes
        int left;           // bytes that come back
    } table[] = {
        {0, 16, "", 16},
        {0, 0, "", 0},
        {2, 5, nullptr, 16},
        {3, 5, "0000000000000000000000", 16},
        {3, 16, "00000000000000000000000000000000", 32},
        {4, 5, "8000000000000000000000", 5},
        {4, 16, "80000000000000000000000000000000", 16},
        {5, 14, "5555", 16},
        {6, 14, "FFFF", 16},
        {8, 5, "0B0B0B0B0B0B0B0B0B0B0B", 5},
        {9, 16, "10101010101010101010101010101010", 16},
        {10, 15, "00", 15},
        {10, 16, "0F0F0F0F0F0F0F0F0F0F0F0F0F0F0F0F", 16},
        {11, 5, "0A0A0A0A0A0A0A0A0A0A0A", 5},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(std::to_string(row.id) + " " + std::to_string(row.length));
        const std::string in(static_cast<std::size_t>(row.length), 'd');
        std::string iv(16, 'i'), again = iv, out, raw, back;
        ASSERT_EQ(seedData(true, key, iv, in, row.id, out), 0);
        iv = again;
        ASSERT_EQ(seedData(false, key, iv, out, ZIRC_PAD_NONE, raw), 0);
        if (row.filled) { EXPECT_EQ(hex(raw), hex(in + der(row.filled))); }
        ASSERT_EQ(seedData(false, key, again, out, row.id, back), 0);
        EXPECT_EQ(back.size(), static_cast<std::size_t>(row.left));
    }
    for (const int id : {1, 7, 12, -1}) {
        std::string iv(16, 'i'), out;
        EXPECT_EQ(seedData(true, key, iv, "d", id, out), 3101);
    }
}

TEST(Seed, BadPaddingIsRefused)
{
    const std::string key(16, 'k');
    for (const auto& [id, tail] :
         {std::pair{8, "00"}, {8, "11"}, {8, "0303"}, {8, "020102"}, {9, "0202FF02"}, {10, "10"}, {10, "0101FF01"}, {11, "0001"}, {4, "0000"}, {4, "0100"}}) {
        std::string block = std::string(16, '\0') + der(tail), iv(16, 'i'), again = iv, out, back;
        block = block.substr(block.size() - 16);
        if (id != 4) block[0] = 'x';
        ASSERT_EQ(seedData(true, key, iv, block, ZIRC_PAD_NONE, out), 0);
        EXPECT_EQ(seedData(false, key, again, out, id, back), 3114) << id << " " << tail;
    }
    unsigned char shorter[] = {5, 5};
    int length = 2;
    EXPECT_LT(unpadBuffer(shorter, &length, 245, ZIRC_PAD_LENGTH), 0); // says more than there is
}

// ---- the frame ----

TEST(Engine, EveryIdIsAcceptedWhereItsRowSays)
{
    for (const Case& c : cases("engine.txt", 7)) {
        SCOPED_TRACE(c.where + ", id " + c[0]);
        const int id = std::stoi(c[0]);
        Buffer key(2048), in(16, 'x'), out(4096), iv(16);
        int results[6], room[6];
        for (int& r : room) r = 4096;
        results[0] = ZIRC_DigestData(id, out.data(), &room[0], in.data(), 16);
        results[1] = ZIRC_GenerateMAC(key.data(), 20, id, out.data(), &room[1], in.data(), 16);
        results[2] = ZIRC_GenerateRandom(id, out.data(), 16, nullptr, 0);
        results[3] = ZIRC_GenerateKey(out.data(), &room[3], id, key.data(), 16);
        results[4] = ZIRC_EncryptData(key.data(), 2048, id, id == 11110 ? 3 : 6, out.data(), &room[4], in.data(), 16, iv.data(), 16, 8);
        results[5] = ZIRC_SignData(key.data(), 2048, id, out.data(), &room[5], in.data(), 16);
        for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(results[i], c[i + 1] == "+" ? 0 : std::stoi(c[i + 1])) << i;
    }
}

TEST(Engine, EveryRefusalHasItsCode)
{
    Buffer keyBytes(128), ivBytes(16), data(2000), outBytes(3000);
    unsigned char *const key = keyBytes.data(), *const iv = ivBytes.data(), *const in = data.data(), *const out = outBytes.data();
    int room = 0;
    const auto encrypt = [&](unsigned char* k, int kl, int mode, unsigned char* o, int capacity, const unsigned char* i, int il, unsigned char* v, int vl,
                             int padding) {
        room = capacity;
        return ZIRC_EncryptData(k, kl, 11110, mode, o, &room, i, il, v, vl, padding);
    };
    const auto decrypt = [&](int capacity, int il, int padding) {
        room = capacity;
        return ZIRC_DecryptData(key, 128, 11110, 3, out, &room, in, il, iv, 16, padding);
    };
    EXPECT_EQ(encrypt(nullptr, 128, 3, out, 3000, in, 16, iv, 16, 8), 1106);
    EXPECT_EQ(encrypt(key, 127, 3, out, 3000, in, 16, iv, 16, 8), 1107);
    EXPECT_EQ(encrypt(key, -1, 3, out, 3000, in, 16, iv, 16, 8), 1107);
    EXPECT_EQ(encrypt(key, 128, 3, out, 3000, in, 16, nullptr, 16, 8), 1109);
    EXPECT_EQ(encrypt(key, 128, 3, out, 3000, in, 16, iv, 15, 8), 1109);
    for (const int mode : {0, 1, 6, 7}) EXPECT_EQ(encrypt(key, 128, mode, out, 3000, in, 16, iv, 16, 8), 1104);
    EXPECT_EQ(encrypt(key, 128, 3, nullptr, 3000, in, 16, iv, 16, 8), 2108);
    EXPECT_EQ(encrypt(key, 128, 3, out, 3000, nullptr, 0, iv, 16, 8), 2108);
    EXPECT_EQ(encrypt(key, 128, 3, out, 3000, in, -1, iv, 16, 8), 2101);
    EXPECT_EQ(encrypt(key, 128, 3, out, 3000, in, INT_MIN, iv, 16, 8), 2101);
    EXPECT_EQ(encrypt(key, 128, 3, out, INT_MAX, in, INT_MAX - 15, iv, 16, 8), 1101);
    EXPECT_EQ(encrypt(key, 128, 3, out, 15, in, 16, iv, 16, 8), 2103);
    EXPECT_EQ(encrypt(key, 128, 3, out, 15, in, 5, iv, 16, 8), 3103);
    EXPECT_EQ(encrypt(key, 128, 3, out, 16, in, 16, iv, 16, 8), 3103);   // no room for the padding
    EXPECT_EQ(encrypt(key, 128, 3, out, 976, in, 976, iv, 16, 8), 3103); // the chunk has filled it
    EXPECT_EQ(encrypt(key, 128, 3, out, 992, in, 976, iv, 16, 8), 0);
    EXPECT_EQ(room, 992);
    EXPECT_EQ(encrypt(key, 128, 3, out, 3000, in, 17, iv, 16, 0), 3110);
    EXPECT_EQ(decrypt(3000, 17, 8), 2114);
    EXPECT_EQ(decrypt(31, 32, 8), 2103);
    EXPECT_EQ(decrypt(16, 16, 0), 0);
    EXPECT_EQ(decrypt(3000, 1952, 0), 0);
    EXPECT_EQ(room, 1952);
    EXPECT_EQ(decrypt(16, 0, 8), 0);
    EXPECT_EQ(room, 0);

    const auto digest = [&](unsigned char* o, int capacity, const unsigned char* i, int il) {
        room = capacity;
        return ZIRC_DigestData(1400, o, &room, i, il);
    };
    EXPECT_EQ(digest(out, 20, nullptr, 0), 2108);
    EXPECT_EQ(digest(out, 20, in, -1), 2101);
    EXPECT_EQ(digest(nullptr, 20, in, 1), 3108);
    EXPECT_EQ(digest(out, 19, in, 1), 3103);
    EXPECT_EQ(digest(out, 20, in, 0), 0);
    EXPECT_EQ(ZIRC_GenerateMAC(nullptr, 0, 31400, out, &room, in, 1), 1106);
    EXPECT_EQ(ZIRC_GenerateMAC(key, -1, 31400, out, &room, in, 1), 1107);
    EXPECT_EQ(ZIRC_GenerateMAC(key, 0, 31400, out, &room, nullptr, 1), 2108);
    EXPECT_EQ(ZIRC_SignData(nullptr, 900, 121401, out, &room, in, 1), 1106);
    EXPECT_EQ(ZIRC_SignData(in, 99, 121401, out, &room, in, 1), 1107);
    EXPECT_EQ(ZIRC_VerifyData(in, 135, 121401, in, 128, in, 1), 1107);

    const auto makeKey = [&](unsigned char* o, int capacity, const unsigned char* k, int kl) {
        room = capacity;
        return ZIRC_GenerateKey(o, &room, 11110, k, kl);
    };
    EXPECT_EQ(makeKey(nullptr, 128, key, 16), 106);
    EXPECT_EQ(makeKey(out, 127, key, 16), 103);
    EXPECT_EQ(makeKey(out, 128, nullptr, 16), 108);
    EXPECT_EQ(makeKey(out, 128, key, 15), 101);
    EXPECT_EQ(makeKey(out, 200, key, 16), 0);
    EXPECT_EQ(room, 128);
    EXPECT_EQ(ZIRC_GenerateRandom(3420, out, -1, nullptr, 0), 101);
    EXPECT_EQ(ZIRC_GenerateRandom(3420, nullptr, 0, nullptr, 0), 0);
    const FailingAllocation first(1);
    EXPECT_EQ(ZIRC_GenerateRandom(3420, out, 8, nullptr, 0), 102);
}

TEST(Engine, TextsTellStageAndCode)
{
    for (const auto& [code, expected] : {std::pair{0, " Successfully completed.(0)"},
                                         {2107, "Update stage; Invalid key value.(2107)"},
                                         {1105, "Init stage; Invalid algorithm identifier.(1105)"},
                                         {3116, "Final stage; Verification of signature or MAC failed.(3116)"},
                                         {4108, " Invalid input or output data pointer(4108)"},
                                         {117, ""},
                                         {-107, ""}}) {
        EXPECT_STREQ(ZIRC_GetErrorText(code), expected);
    }
}

// ---- the generators ----

static std::string drawn(bool global, int length = 16)
{
    Buffer out(static_cast<std::size_t>(length));
    EXPECT_EQ(global ? randBytes(out.data(), length) : randBytesLocal(out.data(), length), 0);
    return text(out.data(), static_cast<std::size_t>(length));
}

TEST(Random, DrawsAreNeverTheSame)
{
    std::set<std::string> seen;
    for (int i = 0; i < 500; ++i) {
        EXPECT_TRUE(seen.insert(drawn(true)).second);
        EXPECT_TRUE(seen.insert(drawn(false)).second);
    }
    for (const int length : {1, 7, 8, 9, 1022, 1023, 1024, 5000}) {
        const std::string one = drawn(true, length), other = drawn(false, length);
        if (length > 8) { EXPECT_NE(one.substr(one.size() - 8), other.substr(other.size() - 8)); }
        // A wrapped index must not repeat what stood a pool's length before.
        if (length > 2048) { EXPECT_NE(one.substr(0, 1000), one.substr(1023, 1000)); }
    }
}

TEST(Random, AForkedChildDrawsOtherBytes)
{
    for (const bool global : {true, false}) {
        drawn(global);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const std::string mine = drawn(global, 32);
            _exit(write(ends[1], mine.data(), 32) == 32 ? 0 : 1);
        }
        const std::string parents = drawn(global, 32);
        std::string childs(32, '\0');
        EXPECT_EQ(read(ends[0], childs.data(), 32), 32);
        EXPECT_NE(childs, parents);
        int status = 1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        close(ends[0]);
        close(ends[1]);
    }
}

TEST(Random, NothingIsDrawnWithoutTheSystemsBytes)
{
    if (const pid_t child = fork(); child != 0) { // a child's pool must be seeded, too
        int status = 1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        return;
    }
    const NoRandomBytes none;
    unsigned char out[16], iv[16] = {}, schedule[128] = {};
    int room = 16;
    const bool refused = randBytes(out, 16) < 0 && randBytesLocal(out, 16) < 0 && ZIRC_GenerateRandom(3420, out, 16, nullptr, 0) == 110 &&
                         ZIRC_EncryptData(schedule, 128, 11110, 3, out, &room, out, 5, iv, 16, ZIRC_PAD_RANDOM) == 3110;
    Context context;
    const bool told = VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED) == 5001 &&
                      placeless(context.error()) == "[VRNO_CRYPT_GenKeyAndIV] 랜덤값을 생성하는데 실패하였습니다. <tarnlib> "
                                                    "VNRandom::GenerateRandom-ZIRC_GenerateRandom(4), Staged operation failed.(110)";
    _exit(refused && told ? 0 : 1);
}

TEST(Random, ThreadsDrawAtOnceAndForkMeanwhile)
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
            alarm(20); // the lock is free in a child, or this ends it
            _exit(randBytes(reinterpret_cast<unsigned char*>(&i), 4) == 0 ? 0 : 1);
        }
        int status = 1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    for (std::thread& thread : threads) thread.join();
}
