// The speed of the library beside that of other libraries.
//
//     vrno-bench [--quick] [--csv FILE] [--page FILE] [FILTER]
//
// FILTER is a regular expression; only the rows whose names have a match are run. Without it the other tables are made, too, and
// written into the page.
#include "bench.h"
#include "engine/bignum/montgomery.h"
#include "engine/digest/sha1_kernels.h"
#include "engine/seed/seed_kernels.h"
#if __has_include("base/Base64Kernels.h")
#include "base/Base64Kernels.h"
#endif

#include <algorithm>
#include <ctime>
#include <fstream>
#include <regex>

namespace bench {

std::vector<Library>& peers()
{
    static std::vector<Library> all;
    return all;
}

namespace {

// The name of the kernel that `pick` takes.
template <class Function, std::size_t count> const char* nameOf(const vrno::Kernel<Function> (&kernels)[count])
{
    const auto* const found = std::find_if(kernels, kernels + count, [](const auto& one) { return vrno::cpuHas(one.needs); });
    return found < kernels + count ? found->name : kernels[count - 1].name;
}

struct Row {
    const char* name;
    Work work;
    std::size_t size;
    unsigned bits;
    const char* kernel; // "" where there is but one body
    const char* timeZone = "KST-9";
};

std::vector<Row> allRows()
{
    constexpr std::size_t KiB = 1024, MiB = 1024 * KiB;
    const char *const seed = nameOf(vrno::seedCbcDecryptKernels), *const sha1 = nameOf(vrno::sha1Kernels),
                      *const chain = nameOf(vrno::sha1ChainKernels), *const power = nameOf(vrno::modExpKernels);
#if __has_include("base/Base64Kernels.h")
    const char *const encode = nameOf(vrno::base64::encodeKernels), *const decode = nameOf(vrno::base64::decodeKernels);
#else
    const char *const encode = "", *const decode = "";
#endif
    return {
        {"SEED-CBC decrypt 16 B", Work::seedDecrypt, 16, 0, seed},
        {"SEED-CBC decrypt 64 KiB", Work::seedDecrypt, 64 * KiB, 0, seed},
        {"SEED-CBC decrypt 1 MiB", Work::seedDecrypt, MiB, 0, seed},
        {"SEED-CBC decrypt 16 MiB", Work::seedDecrypt, 16 * MiB, 0, seed},
        {"SEED-CBC encrypt 16 B", Work::seedEncrypt, 16, 0, ""},
        {"SEED-CBC encrypt 64 KiB", Work::seedEncrypt, 64 * KiB, 0, ""},
        {"SEED-CBC encrypt 1 MiB", Work::seedEncrypt, MiB, 0, ""},
        {"SEED-CBC encrypt 16 MiB", Work::seedEncrypt, 16 * MiB, 0, ""},
        {"open a protected key", Work::openKey, 0, 2048, chain},
        {"protect a key", Work::protectKey, 0, 2048, chain},
        {"key pair RSA-1024", Work::keyPair, 0, 1024, power},
        {"key pair RSA-2048", Work::keyPair, 0, 2048, power},
        {"message 1 KiB, RSA-1024", Work::message, KiB, 1024, ""},
        {"message 1 KiB, RSA-2048", Work::message, KiB, 2048, ""},
        {"message 1 MiB, RSA-2048", Work::message, MiB, 2048, ""},
        {"certificate load", Work::certificateLoad, 0, 2048, ""},
        {"load and basic fields", Work::certificateFields, 0, 2048, ""},
        {"load and basic fields, TZ not set", Work::certificateFields, 0, 2048, "", nullptr},
        {"load and extension texts", Work::certificateTexts, 0, 2048, ""},
        {"Base64 encode 1 KiB", Work::base64Encode, KiB, 0, encode},
        {"Base64 encode 1 MiB", Work::base64Encode, MiB, 0, encode},
        {"Base64 decode 1 KiB", Work::base64Decode, KiB, 0, decode},
        {"Base64 decode 1 MiB", Work::base64Decode, MiB, 0, decode},
        {"32 random bytes", Work::random, 32, 0, sha1},
        {"session key and IV", Work::drawKey, 32, 0, sha1},
        {"SHA-1 64 B", Work::sha1, 64, 0, sha1},
        {"SHA-1 64 KiB", Work::sha1, 64 * KiB, 0, sha1},
        {"HMAC-SHA-1 64 B", Work::hmacSha1, 64, 0, sha1},
        {"HMAC-SHA-1 64 KiB", Work::hmacSha1, 64 * KiB, 0, sha1},
        {"modular power 1024 bits", Work::modularPower, 128, 0, power},
        {"modular power 2048 bits", Work::modularPower, 256, 0, power},
    };
}

// Runs a row: checks each result, then takes the times. The new row of the table, and the figures.
std::vector<std::string> run(const Row& row, int number, double budget, Figures& figures)
{
    row.timeZone ? setenv("TZ", row.timeZone, 1) : unsetenv("TZ");
    const auto input = makeInput(row.work, row.size, row.bits);
    std::vector<std::string> names{"ours"};
    std::vector<Operation> sides{ours().makers.at(row.work)(*input)};
    for (const Library& peer : peers()) {
        const auto maker = peer.makers.find(row.work);
        if (maker == peer.makers.end()) continue;
        names.push_back(peer.name);
        sides.push_back(maker->second(*input));
    }
    for (std::size_t i = 0; i < sides.size(); ++i) {
        for (int time = 0; time < 2; ++time) { // again, with what the first run has left
            Bytes result;
            sides[i](&result);
            require(input->holds(result), (std::string("the check of ") + row.name + " by " + names[i]).c_str());
        }
    }
    const std::vector<double> times = measure(sides, budget);
    const auto fastest = std::min_element(times.begin() + 1, times.end());
    for (std::size_t i = 0; i < times.size(); ++i)
        figures.add("rows", number, row.name, names[i], times[i], "s", times[i] / *fastest);
    return {row.name, names[static_cast<std::size_t>(fastest - times.begin())] + ", " + duration(*fastest), duration(times[0]),
            bench::number(times[0] / *fastest), row.kernel};
}

std::string processor()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
    }
    return "unknown";
}

Table machine()
{
    char date[16];
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof date, "%Y-%m-%d", std::gmtime(&now));
    std::string libraries;
    for (const Library& peer : peers()) {
        if (!peer.version.empty()) libraries += (libraries.empty() ? "" : ", ") + peer.name + " " + peer.version;
    }
    Table table{{"Taken", date},
                {"Processor", processor()},
                {"Compiler", BENCH_COMPILER " " __VERSION__ ", " BENCH_BUILD_TYPE},
                {"Peers", libraries}};
    if (*BENCH_MISSING) table.push_back({"Not installed", BENCH_MISSING});
    return table;
}

} // namespace
} // namespace bench

int main(int argc, char** argv)
{
    using namespace bench;
    bool quick = false;
    std::string csv, page, filter;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--quick")
            quick = true;
        else if (argument == "--csv" && i + 1 < argc)
            csv = argv[++i];
        else if (argument == "--page" && i + 1 < argc)
            page = argv[++i];
        else
            filter = argument;
    }
    std::sort(peers().begin(), peers().end(), [](const Library& a, const Library& b) { return a.name < b.name; });
    const double budget = quick ? 0.6 : 4;
    Figures figures;
    const auto show = [&](const char* name, const Table& table) {
        print(table);
        if (filter.empty() && !page.empty()) replaceTable(page, name, table);
    };
    show("machine", machine());
    Table rows{{"Work", "peer", "ours", "ratio", "kernel"}};
    int number = 0;
    for (const Row& row : allRows()) {
        if (std::regex_search(row.name, std::regex(filter))) rows.push_back(run(row, ++number, budget, figures));
    }
    show("rows", rows);
    if (filter.empty()) {
        show("certificates", growthOfCertificates(figures));
        show("messages", growthOfMessages(figures));
        show("threads", threads(figures, budget));
        show("allocations", allocations(figures));
    }
    if (!csv.empty()) require(static_cast<bool>(std::ofstream(csv) << figures.csv), "writing the CSV file");
    return 0;
}
