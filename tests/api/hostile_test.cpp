// Bytes that mean harm, and threads, processes and locales. Reads outside the input, leaks and undefined behaviour show
// under the sanitizers; here the codes must be documented ones.
#include "ASN1/ASN1OctetString.h"
#include "ASN1/ASN1Sequence.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "ASN1Pkix/records/UDNSettings.h"
#include "VNProcess/PCertUtil2.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/failing.h"
#include "support/scenarios.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <set>
#include <thread>

using namespace vrno;
using namespace test;

static Values with(const char* name, const std::string& value)
{
    Values values = goodValues();
    values[name] = value;
    return values;
}

static void expectDocumented(const std::string& group, const Values& values)
{
    static const std::map<std::string, std::vector<Step>> groups{{"certificate", session("certificate")}, {"key", session("key")}};
    const std::vector<Step>& steps = groups.at(group);
    const std::vector<Result> results = run(steps, values);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const std::vector<int>& allowed = steps[i].failures;
        EXPECT_TRUE(std::count(allowed.begin(), allowed.end(), results[i].code)) << steps[i].line << ": " << results[i].code;
    }
}

TEST(Hostile, EveryTruncationIsRefused)
{
    Context context;
    for (const auto& [name, line, code] : {std::tuple{"cert", "VRNO_CERT_Load cert", 1500},
                                           {"key", "VRNO_PRIKEY_CheckKeyPair cert key", 2003},
                                           {"blob", "VRNO_PRIKEY_Decrypt password blob out", 2001}}) {
        const std::string good = goodValues().at(name);
        for (std::size_t length = 1; length < good.size(); ++length) {
            EXPECT_EQ(call(context, line, with(name, good.substr(0, length))).code, code) << length;
        }
    }
}

TEST(Hostile, EveryChangedByteGivesDocumentedCodes)
{
    for (const std::string& good : {goodValues().at("cert"), everyExtension}) {
        for (std::size_t at = 0; at < good.size(); ++at) {
            for (const int flip : {0x01, 0x20, 0x80, 0xFF, good[at] ^ 0x80}) { // the last one makes a length indefinite
                std::string changed = good;
                changed[at] = static_cast<char>(changed[at] ^ flip);
                expectDocumented("certificate", with("cert", changed));
            }
        }
    }
    for (const char* const name : {"cert", "key", "blob"}) {
        const std::string good = goodValues().at(name);
        for (std::size_t at = 0; at < good.size(); ++at) {
            std::string changed = good;
            changed[at] = static_cast<char>(changed[at] ^ (at % 2 ? 0xFF : 0x80 >> at % 8));
            expectDocumented("key", with(name, changed));
        }
    }
}

static std::string repeated(const std::string& piece, std::size_t times)
{
    std::string out;
    out.reserve(piece.size() * times);
    while (times-- > 0) out += piece;
    return out;
}

TEST(Hostile, DeepNestingCostsNoStack)
{
    constexpr int levels = 400000;
    const std::string open = repeated("\x30\x80", levels), close(2 * levels, '\0'), tagged = repeated("\xA0\x80", levels);
    ASN1Object closed, cut, wrappers;
    ByteString data = byteString(open + close), unclosed = byteString(open + close.substr(levels));
    ByteString unclosedTags = byteString("\x30\x80" + tagged);
    EXPECT_EQ(closed.fromASN1Object(data), 0);
    EXPECT_EQ(closed.getValueLength(), 4 * (levels - 1));
    EXPECT_EQ(cut.fromASN1Object(unclosed), 10);
    EXPECT_EQ(wrappers.fromASN1Object(unclosedTags), 10);
    Context context;
    EXPECT_EQ(context.load(open + close.substr(levels)), 1500);
    EXPECT_EQ(context.error(), ""); // too long to be kept
    EXPECT_EQ(context.load(open + close), 1500);
}

TEST(Hostile, HundredsOfThousandsOfPiecesAllocateLinearly)
{
    const std::string nulls = der("30{" + repeated("0500", 400000) + "}");
    ByteString data = byteString(nulls);
    ASN1Sequence sequence;
    const FailingAllocation none(0); // fails nothing, and counts
    ASSERT_EQ(sequence.fromASN1Object(data), 0);
    EXPECT_EQ(sequence.getComponentCount(), 400000);
    EXPECT_EQ(hex(bytes(sequence.getComponent(399999))), "0500");

    const std::size_t before = FailingAllocation::size();
    ByteString key = byteString(nulls);
    RPrivateKeyInfo record; // which looks at four of them, and makes no table of the rest
    EXPECT_EQ(record.fromASN1Object(key), 5);
    EXPECT_LT(FailingAllocation::size() - before, 2100000U);

    ByteString segments = byteString(der("24{" + repeated("040141", 300000) + "}"));
    ASN1OctetString octets;
    ASSERT_EQ(octets.fromASN1Object(segments), 0);
    EXPECT_EQ(octets.getValueLength(), 300000);

    ByteString attributes = byteString(der("30{" + repeated("31{30{06{550403} 0C{\"a\"}}}", 60000) + "}")), text;
    RRDNSequence name(attributes);
    ASSERT_EQ(UDNSettings::RDN2Str(name, text), 0);
    EXPECT_EQ(text.getLength(), 60000 * 5 - 1);

    const std::string extensions = repeated("30{06{551D0F} 040141}", 80000);
    ByteString cert = byteString(certificate({.extensions = "A3{30{" + extensions + "}}"}));
    PCertUtil2 util;
    ASSERT_EQ(util.setCertificate(cert), 0);
    util.getExtensionValue("2 5 29 14");
    EXPECT_EQ(util.getLastError(), PCertUtil2::absentExtension);
    EXPECT_LT(FailingAllocation::size(), 300U << 20); // growing bit by bit would take a hundred times that
}

TEST(Hostile, ExtensionsOfTensOfThousandsOfPiecesAllocateLinearly)
{
    const struct {
        const char *getter, *oid, *open, *piece, *close;
        int shown; // at least so many characters a piece
    } table[] = {
        {"GetCertPolicy", "551D20", "30{", "30{06{2A03}}", "}", 50},
        {"GetCertPolicy_PolicyID", "551D20", "30{", "30{06{2A03}}", "}", 6},
        {"GetCertPolicy", "551D20", "30{30{06{2A03} 30{30{06{2B06010505070202} 30{30{1600 30{", "020101", "}}}}}}}", 2},
        {"GetExtKeyUsage", "551D25", "30{", "06{2A03}", "}", 6},
        {"GetSubjectAltName", "551D11", "30{", "82{\"d\"}", "}", 11},
        {"GetAuthKeyID", "551D23", "30{A1{", "82{\"d\"}", "} 820105}", 11},
        {"GetCRLDP", "551D1F", "30{", "30{A0{A0{86{\"u\"}}}}", "}", 95},
        {"GetCRLDP", "551D1F", "30{30{A0{A0{", "86{\"u\"}", "}}}}", 2},
        {"GetAIA", "2B06010505070101", "30{", "30{06{2A03} 86{\"u\"}}", "}", 85},
    };
    constexpr int pieces = 50000;
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.open) + row.piece);
        Context context;
        ASSERT_EQ(context.load(certificateWith(row.oid, row.open + repeated(row.piece, pieces) + row.close)), 0);
        const FailingAllocation none(0);
        const Result result = call(context, "VRNO_CERT_" + std::string(row.getter) + " 6000000 out");
        EXPECT_EQ(result.code, 0) << context.error();
        EXPECT_GE(result.output.size(), static_cast<std::size_t>(pieces * row.shown));
        EXPECT_LT(FailingAllocation::size(), 400U << 20);
    }
}

// The results of all scenarios.
static std::vector<Result> everything(const World& world)
{
    std::vector<Result> results;
    forEachScenario(world, [&](VRNO_API_CTX* context, const Step& step, const Values& values) {
        results.push_back(make(step, context, values));
    });
    return results;
}

TEST(Threads, ContextsDoNotDisturbEachOther)
{
    const World world;
    everything(world);
    world.card().close(); // which all threads read
    const std::vector<Result> well = everything(world);
    // They stay loaded: ThreadSanitizer does not see the lock under which the loader frees.
    const std::array libraries{dlopen(STORAGE_LIBRARY, RTLD_NOW), dlopen(ODD_STORAGE_LIBRARY, RTLD_NOW)};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 3; ++round) EXPECT_EQ(everything(world), well);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (void* const library : libraries) dlclose(library);
}

TEST(Locales, ChangeNoResult)
{
    const World world;
    everything(world);
    const std::vector<Result> well = everything(world);
    setenv("LOCPATH", LOCALES, 1);
    for (const char* const locale : {"ko_KR.UTF-8", "ko_KR.EUC-KR", "tr_TR.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
        EXPECT_EQ(everything(world), well) << locale;
    }
    std::setlocale(LC_ALL, "C");
}

// Each child leaves its session key and IV in the pipe.
TEST(Processes, AThousandHaveAThousandKeys)
{
    constexpr std::size_t children = 1000, length = 32;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::set<std::string> keys;
    for (std::size_t i = 0; i < children; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            const Context context;
            const std::string all = VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED) == 0
                                        ? call(context, "VRNO_CRYPT_GetKeyAndIV out out out").output.substr(2) // behind "48"
                                        : "";
            _exit(write(ends[1], all.data(), all.size()) == length ? 0 : 1);
        }
        std::string key(length, '\0');
        ASSERT_EQ(read(ends[0], key.data(), length), static_cast<ssize_t>(length));
        keys.insert(key);
    }
    while (wait(nullptr) > 0) {}
    EXPECT_EQ(keys.size(), children);
    for (const int end : ends) close(end);
}
