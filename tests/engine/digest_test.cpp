// The digests and HMAC: published values, OpenSSL and rhash as oracles.
#define OPENSSL_SUPPRESS_DEPRECATED // its state, with a count that can be set

#include "engine/digest/has160.h"
#include "engine/digest/hmac.h"
#include "engine/digest/md5.h"
#include "engine/digest/sha1_kernels.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/folder.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

#include <cstdio>
#include <functional>
#include <random>

using namespace vrno;
using namespace test;

namespace {

using Pieces = std::vector<std::string>;
template <class State> using Update = void (*)(State&, const void*, std::size_t);
template <class State> using Final = void (*)(State&, unsigned char*);

// On a copy of the state.
template <class State>
std::string finish(State state, const Pieces& pieces, Update<State> update, Final<State> final, std::size_t length)
{
    std::string out(length, '\0');
    for (const std::string& piece : pieces) update(state, piece.data(), piece.size());
    final(state, reinterpret_cast<unsigned char*>(out.data()));
    return hex(out);
}

struct Algorithm {
    std::string name;
    std::function<std::string(const std::string& key, const Pieces&)> run;
};

std::string joined(const Pieces& pieces)
{
    std::string data;
    for (const std::string& piece : pieces) data += piece;
    return data;
}

// In one call, which writes the digest over its own input.
std::string inOneCall(std::size_t length, void (*digest)(unsigned char*, const void*, std::size_t), std::string data)
{
    const std::size_t size = data.size();
    data.resize(size + length);
    digest(reinterpret_cast<unsigned char*>(data.data()), data.data(), size);
    return hex(data.substr(0, length));
}

// Staged and in one call.
template <class State>
Algorithm digest(const char* name, std::size_t length, void (*init)(State&), Update<State> update, Final<State> final,
                 void (*oneShot)(unsigned char*, const void*, std::size_t))
{
    return {name, [=](const std::string&, const Pieces& pieces) {
                State state;
                init(state);
                const std::string whole = inOneCall(length, oneShot, joined(pieces)),
                                  staged = finish(state, pieces, update, final, length);
                return staged == whole ? whole : "in one call " + whole + ", staged " + staged;
            }};
}

const Algorithm algorithms[] = {
    digest<SHA1_State>("SHA1", 20, SHA1_Init, SHA1_Update, SHA1_Final, SHA1_Digest),
    digest<MD5_State>("MD5", 16, MD5_Init, MD5_Update, MD5_Final, MD5_Digest),
    {"HAS160", [](const std::string&, const Pieces& pieces) { return inOneCall(20, HAS160_Digest, joined(pieces)); }},
    {"HMAC",
     [](const std::string& key, const Pieces& pieces) {
         HMAC_State state;
         HMAC_Init(state, key.data(), key.size());
         finish(state, {"another message under this key"}, HMAC_Update, HMAC_Final, 20);
         return finish(state, pieces, HMAC_Update, HMAC_Final, 20);
     }},
};
const Algorithm& has160 = algorithms[2];

std::string randomText(std::mt19937& random, std::size_t length)
{
    std::string text(length, '\0');
    for (char& octet : text) octet = static_cast<char>(random());
    return text;
}

std::string ofOpenssl(const std::string& name, const std::string& key, const std::string& data)
{
    unsigned char out[20];
    std::size_t length = 0;
    const auto* const from = reinterpret_cast<const unsigned char*>(data.data());
    if (name == "HMAC") {
        EXPECT_TRUE(
            EVP_Q_mac(nullptr, "HMAC", nullptr, "SHA1", nullptr, key.data(), key.size(), from, data.size(), out, 20, &length));
    } else {
        EXPECT_TRUE(EVP_Q_digest(nullptr, name.c_str(), nullptr, from, data.size(), out, &length));
    }
    return hex({reinterpret_cast<const char*>(out), length});
}

} // namespace

TEST(Digest, PublishedValues)
{
    for (const Case& c : cases("digests.txt", 4)) {
        for (const Algorithm& algorithm : algorithms) {
            if (algorithm.name != c[0]) continue;
            EXPECT_EQ(algorithm.run(der(c[1]), {der(c[2])}), c[3]) << c.where;
        }
    }
}

TEST(Digest, PiecesGiveTheDigestOfTheWhole)
{
    std::mt19937 random(1);
    const std::string data = randomText(random, 130);
    for (const Algorithm& algorithm : algorithms) {
        const std::string expected = algorithm.run("key", {data});
        for (std::size_t at = 0; at <= data.size(); ++at) {
            ASSERT_EQ(algorithm.run("key", {data.substr(0, at), "", data.substr(at)}), expected) << algorithm.name << at;
        }
    }
}

TEST(Digest, AgreesWithOpenssl)
{
    std::mt19937 random(2);
    for (const std::size_t keyLength : {0U, 20U, 63U, 64U, 65U, 200U}) {
        for (std::size_t turn = 0; turn < 150; ++turn) {
            const std::string key = randomText(random, keyLength), data = randomText(random, random() % (turn < 140 ? 300 : 20000));
            for (const Algorithm& algorithm : algorithms) {
                if (&algorithm == &has160) continue;
                ASSERT_EQ(algorithm.run(key, {data}), ofOpenssl(algorithm.name, key, data)) << algorithm.name << data.size();
            }
        }
    }
}

TEST(Digest, Has160AgreesWithRhash)
{
    const Folder folder;
    std::mt19937 random(3);
    std::string command = "rhash --has160 --printf '%{has160}\\n'", expected;
    for (const std::size_t length : {1U, 55U, 56U, 63U, 64U, 65U, 119U, 120U, 128U, 5000U}) {
        const std::string data = randomText(random, length), file = folder.put(std::to_string(length), data);
        command += " " + file;
        expected += has160.run("", {data}) + "\n";
    }
    std::string printed(expected.size() + 1, '\0');
    FILE* const rhash = popen(command.c_str(), "r");
    printed.resize(std::fread(printed.data(), 1, printed.size(), rhash));
    EXPECT_EQ(pclose(rhash), 0);
    EXPECT_EQ(printed, expected);
}

TEST(Sha1, EveryKernelAgreesAtEveryLength)
{
    std::mt19937 random(4);
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string data = randomText(random, length), expected = ofOpenssl("SHA1", "", data);
        std::string padded = data + '\x80';
        padded.resize((length + 72) / 64 * 64 - 8);
        for (int shift = 56; shift >= 0; shift -= 8) padded += static_cast<char>(std::uint64_t{length} * 8 >> shift);
        padded.insert(0, length % 16, ' '); // at any address
        for (const auto& kernel : sha1Kernels) {
            if (!cpuHas(kernel.needs)) continue;
            SHA1_State state;
            SHA1_Init(state);
            kernel.run(state.h, reinterpret_cast<const unsigned char*>(padded.data()) + length % 16, padded.size() / 64);
            std::string out(20, '\0');
            for (std::size_t i = 0; i < 20; ++i) out[i] = static_cast<char>(state.h[i / 4] >> (24 - i % 4 * 8));
            ASSERT_EQ(hex(out), expected) << kernel.name << length;
        }
    }
}

// Chains alone and side by side, beside the same loop over OpenSSL's HMAC.
TEST(Hmac, EveryKernelRunsTheLoopOfPbkdf2)
{
    std::mt19937 random(5);
    for (const int furtherLinks : {0, 1, 2, 5, 30}) {
        const std::string key = randomText(random, 33), links = randomText(random, 100);
        HMAC_State state;
        HMAC_Init(state, key.data(), key.size());
        for (std::size_t chains = 1; chains <= 5; ++chains) {
            std::string expected = links.substr(0, 20 * chains), out(20 * chains + 1, '\0');
            for (std::size_t chain = 0; chain < chains; ++chain) {
                std::string link = links.substr(20 * chain, 20);
                for (int i = 0; i < furtherLinks; ++i) {
                    link = der(ofOpenssl("HMAC", key, link));
                    for (std::size_t k = 0; k < 20; ++k) expected[20 * chain + k] ^= link[k];
                }
            }
            for (const auto& kernel : sha1ChainKernels) {
                if (!cpuHas(kernel.needs)) continue;
                auto* const to = reinterpret_cast<unsigned char*>(out.data());
                kernel.run(state.sha1.h, state.outer.h, to, reinterpret_cast<const unsigned char*>(links.data()), chains,
                           furtherLinks);
                ASSERT_EQ(hex(out), hex(expected + '\0')) << kernel.name << chains << "x" << furtherLinks;
            }
        }
    }
}

TEST(Sha1, CompressAddsNoPadding)
{
    std::uint32_t block[16]; // hashed as bytes in memory order
    for (std::uint32_t i = 0; i < 16; ++i) block[i] = 0x01020304 * i;
    SHA_CTX peer;
    ::SHA1_Init(&peer);
    SHA1_Transform(&peer, reinterpret_cast<const unsigned char*>(block));
    auto* const out = reinterpret_cast<unsigned char*>(block);
    SHA1_Compress(out, block);
    const SHA_LONG h[] = {peer.h0, peer.h1, peer.h2, peer.h3, peer.h4};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(load32<std::endian::big>(out + 4 * i), h[i]);
}

TEST(Digest, BitCountCarriesIntoTheHighWord)
{
    const std::pair<std::uint64_t, std::size_t> table[] = {
        {0xFFFFFE00, 128}, {~std::uint64_t{7}, 1}, {0x100000010, std::size_t{7} << 29}, {0xFFFFFFF8, (std::size_t{5} << 29) + 1}};
    for (const auto& [bits, length] : table) {
        SHA1_State state{static_cast<std::uint32_t>(bits), static_cast<std::uint32_t>(bits >> 32), {}, {}};
        iterated::count(state, length);
        EXPECT_EQ(std::uint64_t{state.bitCountHigh} << 32 | state.bitCountLow, bits + 8 * std::uint64_t{length}) << length;
    }
}

TEST(Digest, BothWordsOfTheBitCountAreHashed)
{
    const std::string data(100, 'x');
    unsigned char out[20];
    SHA1_State state;
    SHA_CTX peer;
    SHA1_Init(state);
    SHA1_Init(&peer);
    state.bitCountLow = peer.Nl = 0xFFFFFE00;
    state.bitCountHigh = peer.Nh = 0x01020304;
    SHA1_Update(&peer, data.data(), data.size());
    SHA1_Final(out, &peer);
    EXPECT_EQ(finish<SHA1_State>(state, {data}, SHA1_Update, SHA1_Final, 20), hex({reinterpret_cast<char*>(out), 20}));
}
