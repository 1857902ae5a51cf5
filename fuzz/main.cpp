// The program that libFuzzer drives. VRNO_FUZZ names the target. With VRNO_SEEDS it writes what a run begins with, the corpora and
// the cases of the tests, to files there instead: FOLDER/TARGET/NUMBER.
#include "targets.h"

#include "support/calls.h"
#include "support/cases.h"
#include "support/certificates.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace fuzz;

static const Target* target;

static void write(const std::string& name, const std::string& input)
{
    static int number = 0;
    const std::filesystem::path folder = std::filesystem::path(std::getenv("VRNO_SEEDS")) / name;
    std::filesystem::create_directories(folder);
    std::ofstream(folder / std::to_string(++number), std::ios::binary) << input;
}

static std::string piece(const std::string& octets)
{
    return {std::string{static_cast<char>(octets.size() >> 8), static_cast<char>(octets.size())} + octets};
}

// An input for each class that a first octet can select.
static void writeForAll(const char* name, const std::string& input)
{
    for (char first = 0; first < 18; ++first) write(name, first + input);
}

static void writeProtected(const std::string& encrypted)
{
    write("protected_key", encrypted);
    for (const std::string& type : {std::string{0, 1}, {0x10, 2}}) {
        write("storage", type + std::string(4, '\0') + piece("message") + piece("random") + encrypted);
    }
}

static void writeCertificatesAndKeys()
{
    const Values good = goodValues();
    const std::string& key = good.at("key");
    for (const std::string& cert : {good.at("cert"), everyExtension}) {
        for (const char* const name : {"certificate", "envelope", "sequence", "codec"}) write(name, cert);
        write("tbs", cert.substr(4));
        write("pair", piece(key) + cert);
    }
    write("random_value", piece("random") + key);
    writeForAll("records", key);
    writeProtected(good.at("blob"));
    for (const Case& c : cases("opened.txt", 2)) writeProtected(der("30{" + c[1] + "04{\"0123456789ABCDEF\"}}"));
    for (const Case& c : cases("kcdsa1024.txt", 3)) {
        const std::string algorithm = "06{2A831A8C9A440115} 30{" + c[2] + "}";
        for (const std::string& x : {c[0], std::string()}) write("blobs", der("30{" + c[2] + x + c[1] + "}"));
        write("pair", piece(der("30{020100 30{" + algorithm + "} 04{" + c[0] + "}}")) +
                          test::certificate({.algorithm = algorithm, .key = c[1]}));
    }
}

static void writeCases()
{
    for (const Case& c : cases("values.txt", 5)) {
        for (const char* const name : {"codec", "sequence", "blobs"}) write(name, der(c[1]));
        writeForAll("values", der(c[1]));
    }
    for (const Case& c : cases("times.txt", 4)) writeForAll("values", der(c[0] + "{\"" + c[1] + "\"}"));
    for (const Case& c : cases("records.txt", 5)) {
        writeForAll("records", der(c[1]));
        for (const char* const name : {"tbs", "blobs"}) write(name, der(c[1]));
        if (c[0] == "RPrivateKeyInfo") write("random_value", piece("random") + der(c[1]));
    }
    for (const Case& c : cases("oids.txt", 2)) write("identifier", der(c[0])), write("identifier", c[1]);
    for (const Case& c : cases("ksc.txt", 2)) write("text", der(c[0]));
    for (const char* const encoded : {"QUJD", "QUI=", "QQ==", "QR==", "QUJD\n", "Q==="}) write("base64", encoded);
}

// The tests' support allocates with new[] what the library releases with free().
extern "C" const char* __asan_default_options() { return "alloc_dealloc_mismatch=0"; }

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (std::getenv("VRNO_SEEDS")) {
        for (const Target& one : targets) {
            for (const std::string& input : corpus(one)) write(one.name, input);
        }
        writeCertificatesAndKeys();
        writeCases();
        std::exit(0);
    }
    for (const Target& one : targets) {
        if (one.name == std::string(std::getenv("VRNO_FUZZ"))) target = &one;
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    target->run({data, size});
    if (testing::Test::HasFailure()) std::abort();
    return 0;
}
