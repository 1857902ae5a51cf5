// The speed of the library beside that of other libraries.
//
//     vrno-bench [--quick] [--growth] [--csv FILE] [--page FILE] [FILTER]
//
// FILTER is a regular expression; only the rows whose names have a match are run. Without it all tables are made and written into
// the page, with --growth all but that of the rows.
#include "bench.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <regex>
#include <thread>

namespace bench {

std::vector<Library>& peers()
{
    static std::vector<Library> all;
    return all;
}

namespace {

struct Row {
    const char* name;
    Work work;
    std::size_t size;
    unsigned bits;
    const char* goal; // for the ratio, or for the time where a unit is named; on a processor with all kernels
    const char* timeZone = "KST-9";
};

constexpr std::size_t KiB = 1024, MiB = 1024 * KiB;
constexpr Row allRows[] = {
    {"SEED-CBC decrypt 16 B", Work::seedDecrypt, 16, 0, "1.10"},
    {"SEED-CBC decrypt 64 KiB", Work::seedDecrypt, 64 * KiB, 0, "0.06"},
    {"SEED-CBC decrypt 1 MiB", Work::seedDecrypt, MiB, 0, ""},
    {"SEED-CBC decrypt 16 MiB", Work::seedDecrypt, 16 * MiB, 0, ""},
    {"SEED-CBC encrypt 16 B", Work::seedEncrypt, 16, 0, "1.10"},
    {"SEED-CBC encrypt 64 KiB", Work::seedEncrypt, 64 * KiB, 0, "0.85"},
    {"SEED-CBC encrypt 1 MiB", Work::seedEncrypt, MiB, 0, ""},
    {"SEED-CBC encrypt 16 MiB", Work::seedEncrypt, 16 * MiB, 0, ""},
    {"open a protected key", Work::openKey, 0, 2048, "0.48"},
    {"protect a key", Work::protectKey, 0, 2048, "0.36"},
    {"key pair RSA-1024", Work::keyPair, 0, 1024, "0.66"},
    {"key pair RSA-2048", Work::keyPair, 0, 2048, "0.87"},
    {"message 1 KiB, RSA-1024", Work::message, KiB, 1024, "1.10"},
    {"message 1 KiB, RSA-2048", Work::message, KiB, 2048, "0.95"},
    {"message 1 MiB, RSA-2048", Work::message, MiB, 2048, "0.86"},
    {"certificate load", Work::certificateLoad, 0, 2048, "1.90"},
    {"load and basic fields", Work::certificateFields, 0, 2048, "1.60"},
    {"load and basic fields, TZ not set", Work::certificateFields, 0, 2048, "1.60", nullptr},
    {"load and extension texts", Work::certificateTexts, 0, 2048, "0.75"},
    {"Base64 encode 1 KiB", Work::base64Encode, KiB, 0, "0.25"},
    {"Base64 encode 1 MiB", Work::base64Encode, MiB, 0, "0.07"},
    {"Base64 decode 1 KiB", Work::base64Decode, KiB, 0, "0.30"},
    {"Base64 decode 1 MiB", Work::base64Decode, MiB, 0, "0.10"},
    {"32 random bytes", Work::random, 32, 0, "1.4 us"},
    {"session key and IV", Work::drawKey, 32, 0, ""},
    {"SHA-1 64 B", Work::sha1, 64, 0, ""},
    {"SHA-1 64 KiB", Work::sha1, 64 * KiB, 0, ""},
    {"HMAC-SHA-1 64 B", Work::hmacSha1, 64, 0, ""},
    {"HMAC-SHA-1 64 KiB", Work::hmacSha1, 64 * KiB, 0, ""},
    {"modular power 1024 bits", Work::modularPower, 128, 0, ""},
    {"modular power 2048 bits", Work::modularPower, 256, 0, ""},
};

using Times = std::vector<std::pair<std::string, double>>; // of the sides, ours first

// Runs a row: checks each result, then takes the times.
Times run(const Row& row, double budget)
{
    row.timeZone ? setenv("TZ", row.timeZone, 1) : unsetenv("TZ");
    const auto input = makeInput(row.work, row.size, row.bits);
    Times times{{"ours", 0}};
    std::vector<Operation> sides{ours().makers.at(row.work)(*input)};
    for (const Library& peer : peers()) {
        const auto maker = peer.makers.find(row.work);
        if (maker == peer.makers.end()) continue;
        times.emplace_back(peer.name, 0);
        sides.push_back(maker->second(*input));
    }
    for (std::size_t i = 0; i < sides.size(); ++i) {
        for (int time = 0; time < 2; ++time) { // again, with what the first run has left
            Bytes result;
            sides[i](&result);
            require(input->holds(result), (std::string("the check of ") + row.name + " by " + times[i].first).c_str());
        }
    }
    const std::vector<double> measured = measure(sides, budget);
    for (std::size_t i = 0; i < sides.size(); ++i) times[i].second = measured[i];
    return times;
}

// All rows that the filter takes, several times one behind the other: other load may last longer than one row.
Table rows(const std::string& filter, int passes, Figures& figures)
{
    std::map<const Row*, Times> best;
    for (int pass = 0; pass < passes; ++pass) {
        for (const Row& row : allRows) {
            if (!std::regex_search(row.name, std::regex(filter))) continue;
            const Times times = run(row, 0.6);
            Times& least = best.emplace(&row, times).first->second;
            for (std::size_t i = 0; i < times.size(); ++i) least[i].second = std::min(least[i].second, times[i].second);
        }
    }
    Table table{{"Work", "ours", "fastest peer", "ratio", "goal", "kernel"}};
    for (const auto& [row, times] : best) {
        const auto peer = std::min_element(times.begin() + 1, times.end(), [](auto& a, auto& b) { return a.second < b.second; });
        const int number = static_cast<int>(table.size());
        for (const auto& [side, time] : times) figures.add("rows", number, row->name, side, time, "s", time / peer->second);
        table.push_back({row->name, duration(times[0].second), peer->first + ", " + duration(peer->second),
                         bench::number(times[0].second / peer->second), row->goal, kernelsOf(row->work, row->size)});
    }
    return table;
}

std::string processor()
{
    std::ifstream info("/proc/cpuinfo");
    std::map<std::string, std::string> first;
    for (std::string line; std::getline(info, line);) {
        const std::size_t colon = line.find(':'), end = line.find_last_not_of(" \t", colon - 1);
        if (colon != std::string::npos && colon + 2 < line.size()) first.emplace(line.substr(0, end + 1), line.substr(colon + 2));
    }
    return first["model name"] + ", family " + first["cpu family"] + ", model " + first["model"] + ", " +
           std::to_string(std::thread::hardware_concurrency()) + " cores";
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
    bool quick = false, growth = false;
    std::string csv, page, filter;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--quick")
            quick = true;
        else if (argument == "--growth")
            growth = true;
        else if (argument == "--csv" && i + 1 < argc)
            csv = argv[++i];
        else if (argument == "--page" && i + 1 < argc)
            page = argv[++i];
        else if (argument.starts_with("-"))
            return std::fprintf(stderr, "%s [--quick] [--growth] [--csv FILE] [--page FILE] [FILTER]\n", argv[0]), 2;
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
    if (!growth) show("rows", rows(filter, quick ? 1 : 6, figures));
    if (filter.empty()) {
        show("kernels", kernels(figures, budget));
        show("certificates", growthOfCertificates(figures, quick ? 1 : 4));
        show("messages", growthOfMessages(figures, quick ? 1 : 4));
        show("threads", threads(figures, budget));
        show("allocations", allocations(figures));
    }
    if (!csv.empty()) require(static_cast<bool>(std::ofstream(csv) << figures.csv), "writing the CSV file");
    return 0;
}
