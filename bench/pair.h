// Benchmarks in pairs: ours and a peer's, measured in one run and printed as a ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

// One operation, which is repeated.
using Operation = std::function<void()>;

// Registers "name/ours" and "name/peer". `bytes` is the input of one operation, 0 if that has no meaning.
void pair(const std::string& name, std::size_t bytes, Operation ours, Operation peer);

} // namespace bench
