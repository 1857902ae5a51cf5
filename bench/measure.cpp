// Times and allocations of operations.
#include "bench.h"

#include <chrono>
#include <ctime>

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

double clockTime() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

// Of this thread. All works run in one thread, and what other programs take of the processor does not count.
double processorTime()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

thread_local double leftOut; // seconds since the start of the round

double timeOf(const Operation& operation, int calls)
{
    leftOut = 0;
    const double start = processorTime();
    for (int i = 0; i < calls; ++i) operation(nullptr);
    return processorTime() - start - leftOut;
}

// So many calls that neither the clock counts nor what the other sides have left in the caches, and the time of one.
std::pair<int, double> firstRound(const Operation& operation)
{
    int calls = 1;
    double seconds = timeOf(operation, calls);
    for (; seconds < 500e-6; seconds = timeOf(operation, calls)) calls *= 2;
    return {calls, seconds / calls};
}

} // namespace

void untimed(const std::function<void()>& action)
{
    const double start = processorTime();
    action();
    leftOut += processorTime() - start;
}

std::vector<double> measure(const std::vector<Operation>& sides, double budget, int rounds)
{
    std::vector<int> calls;
    std::vector<double> best;
    const double start = clockTime();
    for (const Operation& side : sides) {
        const auto [count, seconds] = firstRound(side);
        calls.push_back(count);
        best.push_back(seconds);
    }
    for (; rounds > 0 || clockTime() - start < budget; --rounds) {
        for (std::size_t i = 0; i < sides.size(); ++i) best[i] = std::min(best[i], timeOf(sides[i], calls[i]) / calls[i]);
    }
    return best;
}

} // namespace bench
