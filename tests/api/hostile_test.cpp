// Bytes that mean harm, memory that runs out, and threads. Reads outside the input, leaks and undefined behaviour show
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
#include "support/interface.h"
#include "support/scenarios.h"

#include <cstring>
#include <functional>
#include <set>
#include <thread>

using namespace vrno;
using namespace test;

static const std::string hong = readFile(SAMPLES "/hong.der"), hongsKey = readFile(SAMPLES "/hong.key"),
                         hongsBlob = useKey(hong, hongsKey, "").at(1).output;

static void expectDocumented(const std::vector<Result>& results)
{
    static const std::set<int> documented = {0,    1002, 1004, 1005, 1500, 1501, 1502, 2000, 2001, 2002, 2003,
                                             2004, 3001, 3006, 5001, 5004, 5005, 5006, 5015, 5500, 5501};
    for (const Result& result : results) EXPECT_TRUE(documented.count(result.code)) << result.code;
}

TEST(Hostile, EveryTruncationIsRefused)
{
    for (std::size_t length = 1; length < hong.size(); ++length) {
        Context context;
        EXPECT_EQ(context.load(hong.substr(0, length)), 1500) << length;
    }
}

TEST(Hostile, EveryChangedByteGivesDocumentedCodes)
{
    for (const std::string& good : {hong, everyExtension}) {
        for (std::size_t at = 0; at < good.size(); ++at) {
            for (const int flip : {0x01, 0x20, 0x80, 0xFF}) {
                std::string changed = good;
                changed[at] = static_cast<char>(changed[at] ^ flip);
                expectDocumented(useCertificate(changed));
            }
            std::string indefinite = good;
            indefinite[at] = '\x80';
            expectDocumented(useCertificate(indefinite));
        }
    }
}

TEST(Hostile, EveryChangedByteOfAKeyGivesDocumentedCodes)
{
    const std::vector<Result> well = useKey(hong, hongsKey, hongsBlob);
    EXPECT_EQ(well, (std::vector<Result>{{0, ""}, {0, hongsBlob}, {0, hongsKey}, {0, ""}}));
    const auto changed = [](std::string good, std::size_t at) {
        good[at] = static_cast<char>(good[at] ^ (at % 2 ? 0xFF : 0x80 >> at % 8));
        return good;
    };
    for (std::size_t at = 0; at < hong.size(); ++at) expectDocumented(useKey(changed(hong, at), hongsKey, "x"));
    for (std::size_t at = 0; at < hongsKey.size(); ++at) {
        expectDocumented(useKey(hong, changed(hongsKey, at), "x"));
        EXPECT_EQ(useKey(hong, hongsKey.substr(0, at + 1), "x").at(3),
                  at + 1 < hongsKey.size() ? (Result{2003, ""}) : (Result{0, ""}));
    }
    for (std::size_t at = 0; at < hongsBlob.size(); ++at) {
        expectDocumented(useKey("x", "x", changed(hongsBlob, at)));
        const int cut = useKey("x", "x", hongsBlob.substr(0, at)).at(2).code;
        EXPECT_TRUE(cut == 2001 || (cut == 1004 && at == 0)) << at << " " << cut;
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
    ByteString data = byteString(open + close), unclosed = byteString(open + close.substr(levels)),
               unclosedTags = byteString("\x30\x80" + tagged);
    EXPECT_EQ(closed.fromASN1Object(data), 0);
    EXPECT_EQ(closed.getValueLength(), 4 * (levels - 1));
    EXPECT_EQ(cut.fromASN1Object(unclosed), 10);
    EXPECT_EQ(innermost(bytes(cut.getErrorTrail())), "Error at finding Indefinitive Length End(0x00 0x00)");
    EXPECT_EQ(wrappers.fromASN1Object(unclosedTags), 10);
    Context context;
    EXPECT_EQ(context.load(open + close.substr(levels)), 1500);
    EXPECT_EQ(context.error(), ""); // too long to be kept
    EXPECT_EQ(context.load(open + close), 1500);
}

TEST(Hostile, NestedFailureTellsEachLevel)
{
    ASN1Object object;
    ByteString data = byteString(der("3080 A080 3080 0401"));
    EXPECT_EQ(object.fromASN1Object(data), 10);
    const std::string trail = bytes(object.getErrorTrail()), method = "ASN1Object::findIndefiniteLengEnd-Value Length";
    std::string frames;
    for (std::size_t at = 0; (at = trail.find(method, at)) != std::string::npos; at += method.size())
        frames += trail.substr(at + method.size(), 3);
    EXPECT_EQ(frames, "(3)(4)(5)");
}

TEST(Hostile, HundredsOfThousandsOfPiecesCostLinearTime)
{
    const std::string nulls = der("30{" + repeated("0500", 400000) + "}");
    ByteString data = byteString(nulls);
    ASN1Sequence sequence;
    const FailingAllocation none(0); // fails nothing, and counts
    ASSERT_EQ(sequence.fromASN1Object(data), 0);
    EXPECT_EQ(sequence.getComponentCount(), 400000);
    EXPECT_EQ(hex(bytes(sequence.getComponent(399999))), "0500");

    const std::size_t before = FailingAllocation::size();
    ByteString key = byteString(der("30{" + repeated("0500", 400000) + "}"));
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

    const std::string extension = "30{06{551D0F} 040141}", utc = "17{\"0401011200Z\"}";
    ByteString cert = byteString(der("30{30{020101 30{06{2A03}} 3000 30{" + utc + utc + "} 3000 30{30{06{2A03}} 030100} A3{30{" +
                                     repeated(extension, 80000) + "}}} 30{06{2A03}} 030100}"));
    PCertUtil2 util;
    ASSERT_EQ(util.setCertificate(cert), 0);
    util.getExtensionValue("2 5 29 14");
    EXPECT_EQ(util.getLastError(), PCertUtil2::absentExtension);
    EXPECT_LT(FailingAllocation::size(), 300U << 20); // growing bit by bit would take a hundred times that
}

TEST(Hostile, ExtensionsOfTensOfThousandsOfPiecesCostLinearTime)
{
    const struct {
        TextGetter get;
        const char *oid, *open, *piece, *close;
        int shown; // at least so many characters a piece
    } table[] = {
        {VRNO_CERT_GetCertPolicy, "551D20", "30{", "30{06{2A03}}", "}", 50},
        {VRNO_CERT_GetCertPolicy_PolicyID, "551D20", "30{", "30{06{2A03}}", "}", 6},
        {VRNO_CERT_GetCertPolicy, "551D20", "30{30{06{2A03} 30{30{06{2B06010505070202} 30{30{1600 30{", "020101", "}}}}}}}", 2},
        {VRNO_CERT_GetExtKeyUsage, "551D25", "30{", "06{2A03}", "}", 6},
        {VRNO_CERT_GetSubjectAltName, "551D11", "30{", "82{\"d\"}", "}", 11},
        {VRNO_CERT_GetAuthKeyID, "551D23", "30{A1{", "82{\"d\"}", "} 820105}", 11},
        {VRNO_CERT_GetCRLDP, "551D1F", "30{", "30{A0{A0{86{\"u\"}}}}", "}", 95},
        {VRNO_CERT_GetCRLDP, "551D1F", "30{30{A0{A0{", "86{\"u\"}", "}}}}", 2},
        {VRNO_CERT_GetAIA, "2B06010505070101", "30{", "30{06{2A03} 86{\"u\"}}", "}", 85},
    };
    constexpr int pieces = 50000;
    std::string text(pieces * 120, '\0');
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.open) + row.piece);
        Context context;
        ASSERT_EQ(context.load(certificateWith(row.oid, row.open + repeated(row.piece, pieces) + row.close)), 0);
        const FailingAllocation none(0);
        ASSERT_EQ(row.get(context, static_cast<int>(text.size()), text.data()), 0) << context.error();
        EXPECT_GE(std::strlen(text.c_str()), static_cast<std::size_t>(pieces * row.shown));
        EXPECT_LT(FailingAllocation::size(), 400U << 20);
    }
}

TEST(Hostile, InputsBeyondTheSignedRangeAreRefusedBeforeUse)
{
    Context context;
    unsigned char octet = 0x30;
    VRNO_BINSTR huge{&octet, 0x80000000U};
    BinStr out;
    EXPECT_EQ(VRNO_CERT_Load(context, &huge), 1002);
    EXPECT_EQ(context.error(), "[VRNO_CERT_Load] 메모리를(pCert) 할당하는데 실패하였습니다.");
    EXPECT_EQ(VRNO_BASE64_Encode(context, &huge, out), 1002);
    EXPECT_TRUE(out.isEmpty());
}

// Each allocation in turn fails, alone and with all behind it. A call then gives a documented code, and a result only
// where it is the whole one.
using Scenario = std::function<std::vector<Result>()>;

static void failEachAllocation(const Scenario& use)
{
    const std::vector<Result> well = use();
    long total = 0;
    {
        const FailingAllocation none(0);
        use();
        total = FailingAllocation::count();
    }
    EXPECT_GT(total, 100);
    for (const bool onward : {false, true}) {
        for (long number = 1; number <= total; ++number) {
            const FailingAllocation fails(number, onward);
            const std::vector<Result> results = use();
            expectDocumented(results);
            for (std::size_t i = 0; i < results.size(); ++i) {
                for (const int lie : {1502, 2000, 2004})
                    EXPECT_TRUE(results[i].code != lie || well[i].code == lie) << "call " << i << ", allocation " << number;
                if (results[i].code == 0) {
                    EXPECT_EQ(results[i].output, well[i].output) << "call " << i << ", allocation " << number;
                }
            }
        }
    }
}

TEST(OutOfMemory, EveryAllocationMayFail)
{
    failEachAllocation([] { return useCertificate(hong); });
    failEachAllocation([] { return useCertificate(everyExtension); });
    failEachAllocation([] { return useKey(hong, hongsKey, hongsBlob); });
}

TEST(OutOfMemory, NoExtensionSeemsAbsent)
{
    ByteString cert = byteString(hong);
    PCertUtil2 util;
    ASSERT_EQ(util.setCertificate(cert), 0);
    for (long number = 1; number < 40; ++number) {
        const FailingAllocation fails(number);
        const int length = util.getExtensionValue("2 5 29 31").getLength();
        EXPECT_TRUE(util.getLastError() == 2 || (util.getLastError() == 0 && length > 0)) << number << " " << util.getLastError();
    }
}

TEST(Threads, ContextsDoNotDisturbEachOther)
{
    const std::vector<Result> well = useCertificate(everyExtension), wellKey = useKey(hong, hongsKey, hongsBlob);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                EXPECT_EQ(useCertificate(everyExtension), well);
                EXPECT_EQ(useKey(hong, hongsKey, hongsBlob), wellKey);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}
