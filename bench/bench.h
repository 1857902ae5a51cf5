// The parts of the benchmark: the works, what a library does for each of them, and the inputs.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<unsigned char>;

enum class Work {
    seedEncrypt,
    seedDecrypt,
    protectKey,
    openKey,
    keyPair, // sign with the private key, verify with the certificate
    message, // to the holder of the certificate
    certificateLoad,
    certificateFields, // load, and get all fields that are no extensions
    certificateTexts,  // load, and get the texts of all extensions
    base64Encode,
    base64Decode,
    random,
    drawKey, // a session key and IV
    sha1,
    hmacSha1,
    modularPower, // with a secret exponent
};

inline constexpr char password[] = "a password of a user";
inline constexpr int passwordLength = sizeof password - 1, iterations = 1024;

// What a work needs; the fields that others need are empty.
struct Input {
    Bytes data;                    // what is worked on, or for modularPower the base
    Bytes key, iv, salt;           // of the cipher, the code or the protection; for modularPower key is the exponent
    Bytes certificate, privateKey; // DER; the key is a PrivateKeyInfo; for modularPower privateKey is the modulus
    Bytes sealed;                  // the protected key without its parameters
    std::function<bool(const Bytes& result)> holds;
};

std::unique_ptr<Input> makeInput(Work work, std::size_t size, unsigned bits); // `bits` of the RSA key, 0 where there is none

// Certificates that grow: with so many extensions, names of the subject, or policies.
Bytes certificateWithExtensions(int count);
Bytes certificateWithNames(int count);
Bytes certificateWithPolicies(int count);

// Does a work once. If `kept` is not null, the result goes there; a failure ends the program.
using Operation = std::function<void(Bytes* kept)>;
using Maker = Operation (*)(const Input& input); // the input outlives the operation

struct Library {
    std::string name, version; // the version is empty for a second entry of the same library
    std::map<Work, Maker> makers;
};

// Ours is apart; each peer adds itself before main.
Library ours();
std::vector<Library>& peers();
inline bool addPeer(Library library)
{
    peers().push_back(std::move(library));
    return true;
}

inline void require(bool good, const char* what)
{
    if (good) return;
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(1);
}

// Hands over a result; the compiler takes it as used also when nobody keeps it.
inline void keep(Bytes* kept, const void* data, std::size_t length)
{
    if (kept) kept->assign(static_cast<const unsigned char*>(data), static_cast<const unsigned char*>(data) + length);
    asm volatile("" : : "r"(data) : "memory");
}
inline void keep(Bytes* kept, const std::string& text) { keep(kept, text.data(), text.size()); }

// The last block of CBC for those that do not fill it themselves: the bytes behind the data hold their count.
inline Bytes padded(const Bytes& data)
{
    Bytes all = data;
    all.insert(all.end(), 16 - data.size() % 16, static_cast<unsigned char>(16 - data.size() % 16));
    return all;
}

// Bytes in lower-case hexadecimal.
std::string hex(const unsigned char* data, std::size_t length);

// Seconds of the processor for one operation of each side, which run in turns: so many rounds, and for `budget` seconds, at least.
// The shortest time counts, so that other load on the machine does not.
std::vector<double> measure(const std::vector<Operation>& sides, double budget, int rounds = 3);

// Does something whose time does not count in the measurement of this thread.
void untimed(const std::function<void()>& action);

struct Allocations {
    std::size_t count, bytes;
};
Allocations countAllocations(const std::function<void()>& call);

// A table of the page, whose cells are ready texts.
using Table = std::vector<std::vector<std::string>>;
std::string duration(double seconds);
std::string number(double value); // three digits

// All figures, as rows of a CSV file: table, number, row, side, value, unit, how it compares.
struct Figures {
    std::string csv = "table,number,row,side,value,unit,relative\n";
    void add(const std::string& table, int number, const std::string& row, const std::string& side, double value,
             const std::string& unit, double relative = 0);
};

// The names of the kernels that a work gets from this processor, "-" where nothing is chosen.
std::string kernelsOf(Work work, std::size_t size);

Table kernels(Figures& figures, double budget); // each kernel that this processor runs
Table growthOfCertificates(Figures& figures, int rounds);
Table growthOfMessages(Figures& figures, int rounds);
Table threads(Figures& figures, double budget);
Table allocations(Figures& figures);

void print(const Table& table);
// Replaces the text between the markers <!-- NAME --> and <!-- end --> of a page.
void replaceTable(const std::string& page, const std::string& name, const Table& table);

} // namespace bench
