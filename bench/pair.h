// Benchmarks in pairs: ours and a peer's, measured in one run and told as a ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

// One operation, done over and over.
using Operation = std::function<void()>;

// Registers "name/ours" and "name/peer" beside each other. `bytes` is what one operation takes in, 0 where that says
// nothing.
void pair(const std::string& name, std::size_t bytes, Operation ours, Operation peer);

} // namespace bench
