// What the rows do not show: growth with the size, two threads, and what a call allocates.
#include "bench.h"
#include "vrno.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace bench {
namespace {

VRNO_BINSTR view(const Bytes& bytes) { return {const_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size())}; }

// Loading a certificate and getting one text of it.
template <auto get> Operation textOf(VRNO_API_CTX* context, const Bytes& certificate, std::vector<char>& text)
{
    return [=, &certificate, &text](Bytes*) {
        const VRNO_BINSTR der = view(certificate);
        require(VRNO_CERT_Load(context, &der) == 0, "VRNO_CERT_Load");
        require(get(context, static_cast<int>(text.size()), text.data()) == 0, "a getter");
    };
}

} // namespace

Table growthOfCertificates(Figures& figures, int rounds)
{
    VRNO_API_CTX* context = nullptr;
    require(VRNO_API_Init(&context, "/") == 0, "VRNO_API_Init");
    std::vector<char> text(4 << 20);
    Table table{{"Count", "extensions, text of the last", "names, text of all", "policies, text of all"}};
    for (const int count : {1, 10, 100, 1000, 10000}) {
        const Bytes extensions = certificateWithExtensions(count), names = certificateWithNames(count),
                    policies = certificateWithPolicies(count);
        table.push_back({std::to_string(count)});
        for (const auto& [name, operation] : {std::pair{"extensions", textOf<VRNO_CERT_GetSubKeyID>(context, extensions, text)},
                                              {"names", textOf<VRNO_CERT_GetSubjectAltName>(context, names, text)},
                                              {"policies", textOf<VRNO_CERT_GetCertPolicy>(context, policies, text)}}) {
            const double seconds = measure({operation}, 0.02 * rounds, rounds).front();
            table.back().push_back(duration(seconds) + ", " + duration(seconds / count) + " each");
            figures.add("growth", count, name, "ours", seconds, "s");
        }
    }
    VRNO_API_Finish(&context);
    return table;
}

// Overwriting and releasing a result.
static double timeOfRelease(std::size_t size)
{
    const Bytes data(size);
    return measure({[&](Bytes*) {
                       VRNO_BINSTR record{nullptr, 0};
                       untimed([&] { VRNO_BINSTR_SetData(data.data(), static_cast<unsigned>(size), &record); });
                       VRNO_BINSTR_Delete(&record);
                   }},
                   0.02)
        .front();
}

Table growthOfMessages(Figures& figures, int rounds)
{
    const auto makers = ours().makers;
    Table table{{"Size", "encrypt", "decrypt", "message", "release of a result"}};
    for (const std::size_t mib : {1U, 4U, 16U, 64U, 256U}) {
        const auto plain = makeInput(Work::message, mib << 20, 2048);
        Input cipher = *plain;
        makers.at(Work::seedEncrypt) (*plain)(&cipher.data);
        table.push_back({std::to_string(mib) + " MiB"});
        const auto add = [&, mib = mib](const char* name, double seconds) {
            table.back().push_back(duration(seconds) + ", " + duration(seconds / static_cast<double>(mib)) + " a MiB");
            figures.add("growth", static_cast<int>(mib), name, "ours", seconds, "s");
        };
        for (const auto& [name, work, input] : {std::tuple{"encrypt", Work::seedEncrypt, plain.get()},
                                                {"decrypt", Work::seedDecrypt, &cipher},
                                                {"message", Work::message, plain.get()}})
            add(name, measure({makers.at(work)(*input)}, 0.02 * rounds, rounds).front());
        add("release", timeOfRelease(mib << 20));
    }
    return table;
}

namespace {

// Operations a second of so many threads, each with an input and a context of its own.
double throughput(Work work, std::size_t size, unsigned bits, int count)
{
    std::atomic<int> ready{0};
    std::atomic<bool> ends{false};
    std::atomic<long> done{0};
    std::vector<std::thread> all;
    std::vector<std::unique_ptr<Input>> inputs;
    for (int i = 0; i < count; ++i) inputs.push_back(makeInput(work, size, bits));
    for (const auto& input : inputs) {
        all.emplace_back([&] {
            const Operation operation = ours().makers.at(work)(*input);
            operation(nullptr);
            for (++ready; ready < count;) std::this_thread::yield();
            long own = 0;
            for (; !ends; ++own) operation(nullptr);
            done += own;
        });
    }
    while (ready < count) std::this_thread::yield();
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ends = true;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (std::thread& one : all) one.join();
    return static_cast<double>(done) / seconds;
}

} // namespace

Table threads(Figures& figures, double budget)
{
    Table table{{"Work", "one thread", "two threads", "factor"}};
    int row = 0;
    for (const auto& [name, work, size, bits] :
         {std::tuple{"SEED-CBC decrypt 64 KiB", Work::seedDecrypt, std::size_t{64} << 10, 0U},
          {"message 1 KiB, RSA-2048", Work::message, std::size_t{1} << 10, 2048U},
          {"key pair RSA-2048", Work::keyPair, std::size_t{0}, 2048U},
          {"certificate load and extension texts", Work::certificateTexts, std::size_t{0}, 2048U}}) {
        double best[2] = {0, 0};
        for (double left = budget; left > 0; left -= 0.2) {
            for (const int count : {1, 2}) best[count - 1] = std::max(best[count - 1], throughput(work, size, bits, count));
        }
        ++row;
        for (const int count : {1, 2}) figures.add("threads", row, name, std::to_string(count), best[count - 1], "1/s");
        table.push_back({name, number(best[0]) + " a second", number(best[1]) + " a second", number(best[1] / best[0])});
    }
    return table;
}

Table allocations(Figures& figures)
{
    Table table{{"Call", "allocations", "bytes"}};
    int row = 0;
    for (const auto& [name, work, size, bits] :
         {std::tuple{"VRNO_CRYPT_Encrypt, 1 KiB", Work::seedEncrypt, std::size_t{1} << 10, 0U},
          {"VRNO_CRYPT_Decrypt, 1 KiB", Work::seedDecrypt, std::size_t{1} << 10, 0U},
          {"VRNO_CRYPT_GenKeyAndIV", Work::drawKey, std::size_t{32}, 0U},
          {"VRNO_BASE64_Encode, 1 KiB", Work::base64Encode, std::size_t{1} << 10, 0U},
          {"VRNO_BASE64_Decode, 1 KiB", Work::base64Decode, std::size_t{1} << 10, 0U},
          {"VRNO_CERT_Load", Work::certificateLoad, std::size_t{0}, 2048U},
          {"VRNO_CERT_Load and the 8 getters of fields", Work::certificateFields, std::size_t{0}, 2048U},
          {"VRNO_CERT_Load and 9 getters of extensions", Work::certificateTexts, std::size_t{0}, 2048U},
          {"VRNO_CMS_EncryptData, 1 KiB", Work::message, std::size_t{1} << 10, 2048U},
          {"VRNO_PRIKEY_Encrypt", Work::protectKey, std::size_t{0}, 2048U},
          {"VRNO_PRIKEY_Decrypt", Work::openKey, std::size_t{0}, 2048U},
          {"VRNO_PRIKEY_CheckKeyPair", Work::keyPair, std::size_t{0}, 2048U}}) {
        const auto input = makeInput(work, size, bits);
        const Operation operation = ours().makers.at(work)(*input);
        operation(nullptr);
        const Allocations made = countAllocations([&] { operation(nullptr); });
        ++row;
        figures.add("allocations", row, name, "count", static_cast<double>(made.count), "");
        figures.add("allocations", row, name, "bytes", static_cast<double>(made.bytes), "B");
        table.push_back({name, std::to_string(made.count), std::to_string(made.bytes)});
    }
    return table;
}

} // namespace bench
