#include "support/calls.h"

#include "support/bytes.h"
#include "support/cases.h"
#include "support/guarded.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <sstream>
#include <tuple>

namespace test {

namespace {

// Arguments made from words, and what the call puts into them.
class Arguments {
public:
    Arguments(const std::string& words, const Values& values) : m_words(words), m_values(values) {}
    ~Arguments()
    {
        for (VRNO_BINSTR& record : m_records) VRNO_BINSTR_Delete(&record);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    template <class T> T next()
    {
        std::string word;
        EXPECT_TRUE(m_words >> word) << m_words.str();
        if constexpr (std::is_integral_v<T>) {
            const long long number = std::stoll(word, nullptr, 0);
            m_room = static_cast<std::size_t>(std::max(number, 0LL));
            return static_cast<T>(number);
        } else {
            T pointer = nullptr;
            if (word != "null") make(word, pointer);
            return pointer;
        }
    }
    // All outputs, which must be as they were after a failure, but for memory.
    std::string outputs(int code)
    {
        std::string all;
        for (const int number : m_numbers) all += std::to_string(number);
        for (const std::string& buffer : m_buffers) {
            if (buffer.find_first_not_of('x') != std::string::npos) all += buffer.c_str();
            EXPECT_EQ(buffer.find_first_not_of('x', m_room), std::string::npos) << m_words.str();
        }
        for (const VRNO_BINSTR& record : m_records) all += record.pData ? text(record.pData, record.nLen) : "";
        if (code != 0 && code != VRNO_ERR_MEMORY) { EXPECT_EQ(all, m_untouched) << m_words.str(); }
        return code == 0 ? all : "";
    }

private:
    const std::string& input(const std::string& word)
    {
        const auto named = m_values.find(word);
        if (word.starts_with("der:")) {
            std::string rest;
            std::getline(m_words, rest);
            return m_inputs.emplace_back(der(word.substr(4) + rest));
        }
        return m_inputs.emplace_back(word == "empty" ? "" : named == m_values.end() ? word : named->second);
    }
    void make(const std::string& word, const char*& pointer) { pointer = input(word).c_str(); }
    // Input records end at a page without access, and cannot be written.
    void make(const std::string& word, const VRNO_BINSTR*& pointer)
    {
        const Guarded& data = m_guarded.emplace_back(input(word));
        data.makeReadOnly();
        auto* const bytes = word == "noData" ? nullptr : const_cast<unsigned char*>(data.data());
        const std::string claim = "length:";
        const std::size_t length = word == "noLength"        ? 0
                                   : word.starts_with(claim) ? std::stoul(word.substr(claim.size()), nullptr, 0)
                                                             : static_cast<std::size_t>(data.size());
        pointer = &m_recordsIn.emplace_back(VRNO_BINSTR{bytes, static_cast<unsigned>(length)});
    }
    void make(const std::string&, int*& pointer)
    {
        pointer = &m_numbers.emplace_back(-7);
        m_untouched.insert(0, "-7");
    }
    void make(const std::string&, char*& pointer) { pointer = m_buffers.emplace_back(m_room + 64, 'x').data(); }
    // The block comes from operator new, which no failing allocation reaches.
    void make(const std::string&, VRNO_BINSTR*& pointer)
    {
        pointer = &m_records.emplace_back(VRNO_BINSTR{new unsigned char[4]{'o', 'l', 'd'}, 3});
        m_untouched += "old";
    }

    std::istringstream m_words;
    const Values& m_values;
    std::deque<std::string> m_inputs;
    std::deque<Guarded> m_guarded;
    std::deque<VRNO_BINSTR> m_recordsIn, m_records;
    std::deque<int> m_numbers;
    std::deque<std::string> m_buffers;
    std::size_t m_room = 20;
    std::string m_untouched;
};

template <auto> struct Named;
template <class... A, int (*function)(VRNO_API_CTX*, A...)> struct Named<function> {
    static int call(VRNO_API_CTX* context, Arguments& arguments)
    {
        const std::tuple<A...> all{arguments.next<A>()...};
        return std::apply([context](A... a) { return function(context, a...); }, all);
    }
};

int chain(VRNO_API_CTX* context)
{
    context->ucFlags |= 2;
    return 0;
}

int put(VRNO_API_CTX*, const char* item, const VRNO_BINSTR* content)
{
    std::ofstream file(std::string(std::getenv("VRNO_STORAGE_PUT")) + "/" + item, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content->pData), content->nLen);
    return 0;
}

using Function = int (*)(VRNO_API_CTX*, Arguments&);
template <auto... function> std::map<std::string, Function> functionsNamed(const char* names)
{
    return byName<Function>(names, {Named<function>::call...});
}
#define FUNCTIONS(...) functionsNamed<__VA_ARGS__>(#__VA_ARGS__)
const std::map<std::string, Function> functions = FUNCTIONS(
    VRNO_API_GetErrInfo, VRNO_BASE64_Encode, VRNO_BASE64_Decode, VRNO_CERT_Load, VRNO_CERT_Unload, VRNO_CERT_GetVersion,
    VRNO_CERT_GetSerialNum, VRNO_CERT_GetSignatureAlgorithm, VRNO_CERT_GetIssuerName, VRNO_CERT_GetSubjectName,
    VRNO_CERT_GetSubjectName_DERFormat, VRNO_CERT_GetValidity, VRNO_CERT_GetPubKey, VRNO_CERT_GetSignature, VRNO_CERT_GetKeyUsage,
    VRNO_CERT_GetBasicConstraints, VRNO_CERT_GetSubKeyID, VRNO_CERT_GetCertPolicy, VRNO_CERT_GetCertPolicy_PolicyID,
    VRNO_CERT_GetExtKeyUsage, VRNO_CERT_GetSubjectAltName, VRNO_CERT_GetAuthKeyID, VRNO_CERT_GetCRLDP, VRNO_CERT_GetCRLDP_URL,
    VRNO_CERT_GetAIA, VRNO_CRYPT_GenKeyAndIV, VRNO_CRYPT_SetKeyAndIV, VRNO_CRYPT_GetKeyAndIV, VRNO_CRYPT_Encrypt,
    VRNO_CRYPT_Decrypt, VRNO_CMS_EncryptData, VRNO_PRIKEY_Encrypt, VRNO_PRIKEY_Decrypt, VRNO_PRIKEY_CheckKeyPair,
    VRNO_MEDIA_DISK_ReadFile, VRNO_MEDIA_DISK_ReadCert, VRNO_MEDIA_DISK_ReadPriKey, VRNO_MEDIA_Load, VRNO_MEDIA_Unload,
    VRNO_MEDIA_CARD_ReadCert, VRNO_MEDIA_CARD_ReadPriKey, chain, put);
#undef FUNCTIONS

std::string nameOf(const std::string& line) { return line.substr(0, line.find(' ')); }

} // namespace

Result call(VRNO_API_CTX* context, const std::string& line, const Values& values)
{
    const std::string name = nameOf(line);
    Arguments arguments(line.substr(name.size()), values);
    const int code = functions.at(name)(context, arguments);
    return {code, arguments.outputs(code)};
}

void makeAll(const Context& context, const std::string& lines, const Values& values)
{
    std::istringstream all(lines);
    for (std::string line; std::getline(all, line, ';');) {
        EXPECT_EQ(call(context, line.substr(line.find_first_not_of(' ')), values).code, 0) << line << context.error();
    }
}

Result getText(VRNO_API_CTX* context, const std::string& name) { return call(context, "VRNO_CERT_" + name + " 65536 out"); }

std::string field(const Context& context, const std::string& name)
{
    const Result result = getText(context, name);
    EXPECT_EQ(result.code, 0) << name << " " << context.error();
    return result.output;
}

std::vector<Step> session(const std::string& group)
{
    static const std::vector<Case> rows = cases("session.txt", 4);
    std::vector<Step> steps;
    for (const Case& row : rows) {
        if (!group.empty() && row[0] != group) continue;
        Step step{row[1], {0, VRNO_ERR_MEMORY}, !row[3].empty()};
        std::istringstream codes(row[2]);
        for (int code; codes >> code;) step.failures.push_back(code);
        steps.push_back(step);
    }
    return steps;
}

Values goodValues()
{
    static const Values values = [] {
        Values made{{"cert", readFile(SAMPLES "/hong.der")},
                    {"key", readFile(SAMPLES "/hong.key")},
                    {"certFile", SAMPLES "/hong.der"},
                    {"library", STORAGE_LIBRARY},
                    {"password", "quince/cabbage/slat/1984"}};
        made["blob"] = call(Context(), "VRNO_PRIKEY_Encrypt 48 password key out", made).output;
        return made;
    }();
    return values;
}

Result make(const Step& step, VRNO_API_CTX* context, const Values& values)
{
    Result result = call(context, step.line, values);
    if (step.varies) result.output = std::to_string(result.output.size());
    return result;
}

std::vector<Result> run(const std::vector<Step>& steps, Values values)
{
    Context context;
    std::vector<Result> results;
    for (const Step& step : steps) {
        results.push_back(make(step, context, values));
        if (!results.back().output.empty()) values["last"] = results.back().output;
    }
    return results;
}

void expectCalls(const char* file, const Values& values)
{
    for (const Case& row : cases(file, 4)) {
        SCOPED_TRACE(row.where + " " + row[0]);
        Context context;
        makeAll(context, row[1], values);
        EXPECT_EQ(call(context, "VRNO_MEDIA_Load empty").code, 1004); // leaves a text
        EXPECT_EQ(call(nullptr, row[0], values).code, 1001);
        const Result result = call(context, row[0], values);
        EXPECT_EQ(result.code, std::stoi(row[2]));
        std::string told = result.code == 0 ? result.output : placeless(context.error());
        const auto named = values.find(row[3]);
        std::string expected = named == values.end() ? row[3] : named->second;
        if (result.code != 0) expected.insert(0, "[" + nameOf(row[0]) + "] ");
        if (result.code == 0) { EXPECT_EQ(context.error(), "none"); }
        if (expected.ends_with("...")) {
            expected.resize(expected.size() - 3);
            told.resize(std::min(told.size(), expected.size()));
        }
        // A text of a certificate in Hangul; binary output is compared as it is.
        EXPECT_TRUE(told == expected || fromKsc(told) == expected) << told << "\n" << expected;
    }
}

} // namespace test
