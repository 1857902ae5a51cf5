// The first 2048 primes, 2 to 17863.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vrno {

inline constexpr std::size_t primeCount = 2048;

// By the sieve of Eratosthenes.
constexpr std::array<std::uint32_t, primeCount> sievePrimes()
{
    constexpr std::uint32_t limit = 17864;
    std::array<bool, limit> isComposite{};
    std::array<std::uint32_t, primeCount> primes{};
    std::size_t count = 0;
    for (std::uint32_t i = 2; i < limit; ++i) {
        if (isComposite[i]) continue;
        primes[count++] = i;
        for (std::uint32_t multiple = i * i; i < 134 && multiple < limit; multiple += i) isComposite[multiple] = true;
    }
    return primes;
}

inline constexpr std::array<std::uint32_t, primeCount> primeTable = sievePrimes();
static_assert(primeTable.back() == 17863);

} // namespace vrno
