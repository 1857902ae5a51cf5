// Runs all pairs and prints for each how many times as fast as the peer we are.
//
//     vrno-bench [--benchmark_filter=REGEX] and the other options of Google Benchmark
//
// The two of a pair run in turns, five runs each, and the best run counts. So other load on the machine affects both alike.
#include "pair.h"

#include <cstdio>
#include <map>
#include <vector>

namespace bench {

void registerBignumPairs();
void registerCipherPairs();
void registerEnvelopePairs();
void registerKeyPairs();
void registerRsaPairs();

static std::vector<std::string> names; // of the pairs, as they were registered

void pair(const std::string& name, std::size_t bytes, Operation ours, Operation peer)
{
    names.push_back(name);
    for (const auto& [side, operation] : {std::pair{"/ours", ours}, std::pair{"/peer", peer}}) {
        benchmark::RegisterBenchmark((name + side).c_str(),
                                     [operation = operation, bytes](benchmark::State& state) {
                                         for (auto turn : state) {
                                             (void)turn;
                                             operation();
                                         }
                                         if (bytes > 0)
                                             state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                                                                     static_cast<int64_t>(bytes));
                                     })
            ->MinTime(0.1)
            ->Repetitions(5);
    }
}

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_None) {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            std::string name = run.run_name.function_name;
            const bool isOurs = name.ends_with("/ours");
            name.resize(name.size() - 5);
            Times& times = m_times[name];
            double& best = isOurs ? times.ours : times.peer;
            const double time = run.real_accumulated_time / static_cast<double>(run.iterations);
            if (best == 0 || time < best) best = time;
            const auto bytes = run.counters.find("bytes_per_second");
            if (bytes != run.counters.end()) times.bytes = bytes->second.value * time;
        }
    }

    void Finalize() override
    {
        std::printf("\n%-34s %14s %14s %8s\n", "", "ours", "OpenSSL", "times");
        for (const std::string& name : names) {
            const Times& t = m_times[name];
            if (t.ours == 0 || t.peer == 0) continue;
            if (t.bytes > 0) {
                std::printf("%-34s %9.1f MB/s %9.1f MB/s %8.2f\n", name.c_str(), t.bytes / t.ours / 1e6, t.bytes / t.peer / 1e6,
                            t.peer / t.ours);
            } else {
                std::printf("%-34s %11.3f us %11.3f us %8.2f\n", name.c_str(), t.ours * 1e6, t.peer * 1e6, t.peer / t.ours);
            }
        }
    }

private:
    struct Times {
        double ours = 0, peer = 0; // seconds an operation, the best run
        double bytes = 0;          // of an operation
    };
    std::map<std::string, Times> m_times;
};

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.push_back(interleaving.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
    bench::registerCipherPairs();
    bench::registerBignumPairs();
    bench::registerRsaPairs();
    bench::registerEnvelopePairs();
    bench::registerKeyPairs();
    bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
