// What the tests share: cases from files, encodings in a readable notation, texts, contexts, allocations that fail.
#pragma once

#include "base/Trail.h"
#include "vrno.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace test {

// ---- bytes and texts ----

// Octets in hexadecimal, "texts", and {contents} with their definite length in front: 30{ 02{05} 0C{"text"} }
std::string der(const std::string& notation);
std::string hex(const std::string& bytes);
std::string fromKsc(const std::string& cp949); // to UTF-8, by the C library
std::string readFile(const std::string& path);

inline const unsigned char* at(const std::string& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.data());
}
inline std::string text(const unsigned char* from, std::size_t length)
{
    return {reinterpret_cast<const char*>(from), length};
}
inline std::string bytes(const vrno::ByteString& from)
{
    return {from.getText(), static_cast<std::size_t>(from.getLength())};
}
inline std::string bytes(const vrno::Trail& from)
{
    return bytes(from.text());
}
inline vrno::ByteString byteString(const std::string& from)
{
    return {from.data(), static_cast<int>(from.size())};
}

// ---- what OpenSSL makes of it ----

// SEED-CBC of its legacy provider, with the padding of PKCS #7; empty where that is wrong.
std::string seedByOpenssl(const std::string& key, const std::string& iv, const std::string& in, bool encrypts);
std::string sha1ByOpenssl(const std::string& in);

// ---- cases from tests/data ----

// One line a case, its fields between bars, "#" for a remark. "name := text" defines $name for the lines behind it.
struct Case {
    std::string where; // file and line
    std::vector<std::string> fields;
    const std::string& operator[](std::size_t i) const { return fields.at(i); }
};
std::vector<Case> cases(const std::string& file, std::size_t fieldCount);

// The names of the trail's innermost frame and the text behind it, as in "m_issuer(12)" and "TagType(2)...".
std::string innermost(const std::string& trail);
// All frames and the text behind them, without their places: "A::f-x(1),B::g-y(2),text".
std::string placeless(const std::string& trail);
// The outermost frame without its place, as in "RValidity::fromASN1Object-asnSeq(2)".
std::string outermost(const std::string& trail);

// ---- the exported interface ----

class Context {
public:
    Context() { EXPECT_EQ(VRNO_API_Init(&m_context, "/"), 0); }
    ~Context() { VRNO_API_Finish(&m_context); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    operator VRNO_API_CTX*() const { return m_context; }

    // The text of the last failure in UTF-8; "none" when there is none.
    std::string error() const;
    int load(const std::string& certificate);

private:
    VRNO_API_CTX* m_context = nullptr;
};

class BinStr {
public:
    BinStr() { VRNO_BINSTR_Create(&m_record); }
    explicit BinStr(const std::string& data) : BinStr()
    {
        VRNO_BINSTR_SetData(reinterpret_cast<const unsigned char*>(data.data()), static_cast<unsigned>(data.size()), &m_record);
    }
    ~BinStr() { VRNO_BINSTR_Delete(&m_record); }
    BinStr(const BinStr&) = delete;
    BinStr& operator=(const BinStr&) = delete;
    operator VRNO_BINSTR*() { return &m_record; }
    std::string data() const { return {reinterpret_cast<const char*>(m_record.pData), m_record.nLen}; }
    bool isEmpty() const { return m_record.pData == nullptr && m_record.nLen == 0; }

private:
    VRNO_BINSTR m_record;
};

// All text getters, by name.
using TextGetter = int (*)(VRNO_API_CTX*, int, char*);
struct NamedGetter {
    const char* name;
    const char* output; // the argument's name
    TextGetter get;
    const char* extension = nullptr;  // the octets of its identifier, in notation
    int slack = 0;                    // room that the buffer needs beyond the text
    const char* nullOutput = nullptr; // the name in the message of a null pointer, where it is another one
};
extern const std::vector<NamedGetter> textGetters;

// A certificate by its parts in notation: elements, the contents of AlgorithmIdentifiers and of the key's BIT STRING.
struct CertificateParts {
    std::string version = "A0{020102}", serial = "00C3", signature = "06{2A03}", name = "30{31{30{06{550403} 13{\"A\"}}}}", algorithm = "06{2A03}", key = "3F",
                extensions = "";
};
std::string certificate(const CertificateParts& parts);
std::string certificateWith(const char* extensionOid, const std::string& value);
// One with every extension that a getter shows, and every branch of their renderings that gives a text.
extern const std::string everyExtension;

// The text of a getter, whatever its length; the code in `code`.
std::string getText(VRNO_API_CTX* context, TextGetter get, int& code);

// What a user does with one certificate's bytes, and with a session key, from the context's birth to its end: each code, and where it
// is 0 what the call gave.
struct Result {
    int code;
    std::string output;
    bool operator==(const Result&) const = default;
};
std::vector<Result> useCertificate(const std::string& certificate);
// What a user does with a private key: protects it, opens the protected one, holds it against the certificate.
std::vector<Result> useKey(const std::string& certificate, const std::string& key, const std::string& blob);

// ---- memory that runs out ----

// Lets the allocation of this number (from 1) in the library's own code fail, and with `onward` every one behind it.
// Allocations are counted and fail only while an object lives, on its thread.
class FailingAllocation {
public:
    explicit FailingAllocation(long number, bool onward = false);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    static long count();       // so far
    static std::size_t size(); // their bytes
};

// While an object lives, the system gives no random bytes.
class NoRandomBytes {
public:
    NoRandomBytes();
    ~NoRandomBytes();
    NoRandomBytes(const NoRandomBytes&) = delete;
    NoRandomBytes& operator=(const NoRandomBytes&) = delete;
};

} // namespace test
