// Which kernels the processor gets, and how fast each one is that it can run.
#include "base/Base64Kernels.h"
#include "bench.h"
#include "engine/bignum/montgomery.h"
#include "engine/digest/sha1_kernels.h"
#include "engine/seed/seed_kernels.h"

#include <algorithm>

namespace bench {
namespace {

// The name of the kernel that `pick` takes.
template <class Function, std::size_t count> std::string nameOf(const vrno::Kernel<Function> (&kernels)[count])
{
    return std::find_if(kernels, kernels + count - 1, [](const auto& one) { return vrno::cpuHas(one.needs); })->name;
}

// The kernels of a table that this processor runs, in turns. `make` gives the operation of one; the results must be equal.
template <class Function, std::size_t count, class Make>
void compare(Table& table, Figures& figures, const std::string& work, const vrno::Kernel<Function> (&kernels)[count], double budget,
             const Make& make)
{
    std::vector<std::string> names;
    std::vector<Operation> sides;
    Bytes expected;
    make(kernels[count - 1].run)(&expected);
    for (const vrno::Kernel<Function>& kernel : kernels) {
        if (!vrno::cpuHas(kernel.needs)) continue;
        Bytes result;
        names.push_back(kernel.name);
        sides.push_back(make(kernel.run));
        sides.back()(&result);
        require(result == expected, (work + " by " + kernel.name).c_str());
    }
    const std::vector<double> times = measure(sides, budget);
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double relative = times[i] / times.back();
        figures.add("kernels", static_cast<int>(i), work, names[i], times[i], "s", relative);
        table.push_back({work, names[i], duration(times[i]), number(relative)});
    }
}

} // namespace

std::string kernelsOf(Work work, std::size_t size)
{
    switch (work) {
    case Work::seedEncrypt:
        return "portable"; // there is one body
    case Work::seedDecrypt:
        return size < 64 ? "portable" : nameOf(vrno::seedCbcDecryptKernels); // vectors begin at four blocks
    case Work::protectKey:
        return nameOf(vrno::sha1ChainKernels);
    case Work::openKey:
        return nameOf(vrno::sha1ChainKernels) + ", " + nameOf(vrno::seedCbcDecryptKernels);
    case Work::keyPair:
    case Work::message:
    case Work::modularPower:
        return nameOf(vrno::modExpKernels);
    case Work::base64Encode:
        return nameOf(vrno::base64::encodeKernels);
    case Work::base64Decode:
        return nameOf(vrno::base64::decodeKernels);
    case Work::random:
    case Work::drawKey:
    case Work::sha1:
    case Work::hmacSha1:
        return nameOf(vrno::sha1Kernels);
    default:
        return "-";
    }
}

Table kernels(Figures& figures, double budget)
{
    constexpr std::size_t size = 65536;
    Table table{{"Work", "kernel", "time", "ratio to the last"}};
    const Bytes data = makeInput(Work::sha1, size, 0)->data;
    const auto text = makeInput(Work::base64Decode, size / 4 * 3, 0);
    const auto power = makeInput(Work::modularPower, 256, 0);
    Bytes out(2 * size);

    vrno::SEED_Schedule schedule;
    vrno::SEED_SetKey(schedule, data.data());
    compare(table, figures, "SEED-CBC decrypt 64 KiB", vrno::seedCbcDecryptKernels, budget, [&](auto* kernel) -> Operation {
        return [&, kernel](Bytes* kept) {
            unsigned char chain[16] = {};
            kernel(schedule, out.data(), data.data(), size / 16, chain);
            keep(kept, out.data(), size);
        };
    });
    // What a kernel leaves at the end is for the portable one.
    compare(table, figures, "Base64 encode 64 KiB", vrno::base64::encodeKernels, budget, [&](auto* kernel) -> Operation {
        return [&, kernel](Bytes* kept) {
            const std::size_t done = kernel(out.data(), data.data(), size);
            vrno::base64::encodePortable(out.data() + done / 3 * 4, data.data() + done, size - done);
            keep(kept, out.data(), size / 3 * 4);
        };
    });
    compare(table, figures, "Base64 decode 64 KiB", vrno::base64::decodeKernels, budget, [&](auto* kernel) -> Operation {
        return [&, kernel](Bytes* kept) {
            const std::size_t done = kernel(out.data(), text->data.data(), size);
            vrno::base64::decodePortable(out.data() + done / 4 * 3, text->data.data() + done, size - done);
            keep(kept, out.data(), size / 4 * 3);
        };
    });
    compare(table, figures, "SHA-1 64 KiB", vrno::sha1Kernels, budget, [&](auto* kernel) -> Operation {
        return [&, kernel](Bytes* kept) {
            std::uint32_t state[5] = {};
            kernel(state, data.data(), size / 64);
            keep(kept, state, sizeof state);
        };
    });
    vrno::ZIRC_BN base, exponent, modulus;
    for (const auto& [number, bytes] : {std::pair{&base, &power->data}, {&exponent, &power->key}, {&modulus, &power->privateKey}})
        vrno::bnFromBytes(*number, bytes->data(), static_cast<int>(bytes->size()));
    compare(table, figures, "modular power 2048 bits", vrno::modExpKernels, budget, [&](auto* kernel) -> Operation {
        return [&, kernel](Bytes* kept) {
            vrno::ZIRC_BN r;
            unsigned char bytes[256];
            kernel(r, base, exponent, modulus, true);
            keep(kept, bytes, static_cast<std::size_t>(vrno::bnToBytes(bytes, r)));
        };
    });
    return table;
}

} // namespace bench
