// Times and allocations of operations.
#include "bench.h"

#include <chrono>
#include <cstdint>

// Every allocation of this program and its libraries comes here; it is passed to the C library.
namespace {
bool counting; // set while one thread runs
bench::Allocations counted;

void count(std::size_t bytes)
{
    if (!counting) return;
    ++counted.count;
    counted.bytes += bytes;
}
} // namespace

extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);

void* malloc(std::size_t bytes)
{
    count(bytes);
    return __libc_malloc(bytes);
}
void* calloc(std::size_t items, std::size_t bytes)
{
    count(items * bytes);
    return __libc_calloc(items, bytes);
}
void* realloc(void* block, std::size_t bytes)
{
    count(bytes);
    return __libc_realloc(block, bytes);
}
}

namespace bench {

Allocations countAllocations(const std::function<void()>& call)
{
    counted = {0, 0};
    counting = true;
    call();
    counting = false;
    return counted;
}

namespace {

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double timeOf(const Operation& operation, int calls)
{
    const double start = now();
    for (int i = 0; i < calls; ++i) operation(nullptr);
    return now() - start;
}

// So many calls that the clock's own time does not count, and the time of one.
std::pair<int, double> firstRound(const Operation& operation)
{
    int calls = 1;
    double seconds = timeOf(operation, calls);
    for (; seconds < 100e-6; seconds = timeOf(operation, calls)) calls *= 2;
    return {calls, seconds / calls};
}

} // namespace

std::vector<double> measure(const std::vector<Operation>& sides, double budget, int rounds)
{
    std::vector<int> calls;
    std::vector<double> best;
    const double start = now();
    for (const Operation& side : sides) {
        const auto [count, seconds] = firstRound(side);
        calls.push_back(count);
        best.push_back(seconds);
    }
    for (; rounds > 0 || now() - start < budget; --rounds) {
        for (std::size_t i = 0; i < sides.size(); ++i) best[i] = std::min(best[i], timeOf(sides[i], calls[i]) / calls[i]);
    }
    return best;
}

} // namespace bench
