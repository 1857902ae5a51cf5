#include "support/support.h"

#include <iconv.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <sstream>

namespace test {

// ---- bytes and texts ----

static std::string derBlock(const std::string& notation, std::size_t& at)
{
    std::string out;
    while (at < notation.size() && notation[at] != '}') {
        const char c = notation[at++];
        if (c == '"') {
            while (notation.at(at) != '"') out += notation[at++];
            ++at;
        } else if (c == '{') {
            const std::string contents = derBlock(notation, at);
            EXPECT_EQ(notation.at(at), '}') << notation;
            ++at;
            std::string length(1, static_cast<char>(contents.size()));
            for (std::size_t rest = contents.size() >> 8; rest > 0; rest >>= 8) length.insert(0, 1, static_cast<char>(rest));
            if (contents.size() >= 0x80) out += static_cast<char>(0x80 + length.size());
            out += length + contents;
        } else if (std::isxdigit(static_cast<unsigned char>(c))) {
            out += static_cast<char>(std::stoi(notation.substr(at - 1, 2), nullptr, 16));
            ++at;
        } else {
            EXPECT_TRUE(std::isspace(static_cast<unsigned char>(c))) << notation;
        }
    }
    return out;
}

std::string der(const std::string& notation)
{
    std::size_t at = 0;
    std::string out = derBlock(notation, at);
    EXPECT_EQ(at, notation.size()) << notation;
    return out;
}

std::string hex(const std::string& bytes)
{
    std::string out;
    for (const char octet : bytes) {
        out += "0123456789abcdef"[octet >> 4 & 15];
        out += "0123456789abcdef"[octet & 15];
    }
    return out;
}

std::string fromKsc(const std::string& cp949)
{
    std::string in = cp949, out(2 * cp949.size() + 8, '\0');
    char *from = in.data(), *to = out.data();
    std::size_t fromLeft = in.size(), toLeft = out.size();
    const iconv_t converter = iconv_open("UTF-8", "CP949");
    const bool converted = iconv(converter, &from, &fromLeft, &to, &toLeft) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    out.resize(out.size() - toLeft);
    return converted ? out : "not code page 949: " + hex(cp949);
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// ---- what OpenSSL makes of it ----

std::string seedByOpenssl(const std::string& key, const std::string& iv, const std::string& in, bool encrypts)
{
    static OSSL_PROVIDER* const providers[] = {OSSL_PROVIDER_load(nullptr, "legacy"), OSSL_PROVIDER_load(nullptr, "default")};
    EXPECT_TRUE(providers[0] && providers[1]);
    EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "SEED-CBC", nullptr);
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    std::vector<unsigned char> out(in.size() + 32);
    int first = 0, last = 0;
    EVP_CipherInit_ex(context, cipher, nullptr, at(key), at(iv), encrypts);
    EVP_CipherUpdate(context, out.data(), &first, at(in), static_cast<int>(in.size()));
    const bool done = EVP_CipherFinal_ex(context, out.data() + first, &last) == 1;
    EVP_CIPHER_CTX_free(context);
    EVP_CIPHER_free(cipher);
    return done ? text(out.data(), static_cast<std::size_t>(first + last)) : "";
}

std::string sha1ByOpenssl(const std::string& in)
{
    unsigned char digest[20];
    EXPECT_EQ(EVP_Digest(in.data(), in.size(), digest, nullptr, EVP_sha1(), nullptr), 1);
    return text(digest, 20);
}

// ---- cases ----

static std::string trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

static std::string substituted(std::string text, const std::map<std::string, std::string>& definitions)
{
    for (std::size_t at; (at = text.find('$')) != std::string::npos;) {
        std::size_t end = at + 1;
        while (end < text.size() && std::isalnum(static_cast<unsigned char>(text[end]))) ++end;
        text.replace(at, end - at, definitions.at(text.substr(at + 1, end - at - 1)));
    }
    return text;
}

std::vector<Case> cases(const std::string& file, std::size_t fieldCount)
{
    std::ifstream in(TEST_DATA "/" + file);
    EXPECT_TRUE(in) << file;
    std::vector<Case> found;
    std::map<std::string, std::string> definitions;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (trimmed(line).empty() || line[0] == '#') continue;
        line = substituted(line, definitions);
        if (const auto sign = line.find(":="); sign != std::string::npos) {
            definitions[trimmed(line.substr(0, sign))] = trimmed(line.substr(sign + 2));
            continue;
        }
        Case next{file + ":" + std::to_string(number), {}};
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, '|');) next.fields.push_back(trimmed(field));
        next.fields.resize(std::max(fieldCount, next.fields.size()));
        EXPECT_EQ(next.fields.size(), fieldCount) << next.where;
        found.push_back(next);
    }
    EXPECT_FALSE(found.empty()) << file;
    return found;
}

std::string outermost(const std::string& trail)
{
    const auto from = trail.find(']') + 1;
    return trail.substr(from, std::min(trail.find("),", from), trail.size() - 1) - from + 1);
}

std::string placeless(const std::string& trail)
{
    std::string out;
    for (std::size_t at = 0; at < trail.size(); ++at) {
        const std::size_t end = trail[at] == '[' ? trail.find(']', at) : std::string::npos;
        const std::string place = end == std::string::npos ? "" : trail.substr(at, end - at);
        if (place.find(".cpp:") != std::string::npos || place.find(".h:") != std::string::npos) {
            at = end;
        } else {
            out += trail[at];
        }
    }
    return out;
}

std::string innermost(const std::string& trail)
{
    const auto frame = trail.rfind("),");
    return frame == std::string::npos ? "" : trail.substr(frame + 2);
}

// ---- the exported interface ----

std::string Context::error() const
{
    char text[4096];
    const int code = VRNO_API_GetErrInfo(m_context, sizeof text, text);
    return code == VRNO_ERR_NO_TEXT ? "none" : fromKsc(text);
}

int Context::load(const std::string& certificate)
{
    BinStr record(certificate);
    return VRNO_CERT_Load(m_context, record);
}

static int publicKey(VRNO_API_CTX* context, int size, char* text)
{
    char algorithm[50];
    return VRNO_CERT_GetPubKey(context, size, algorithm, text);
}

const std::vector<NamedGetter> textGetters = {
    {"VRNO_CERT_GetSerialNum", "pszSerialNum", VRNO_CERT_GetSerialNum},
    {"VRNO_CERT_GetSignatureAlgorithm", "pszSignAlg", VRNO_CERT_GetSignatureAlgorithm},
    {"VRNO_CERT_GetIssuerName", "pszIssuerName", VRNO_CERT_GetIssuerName},
    {"VRNO_CERT_GetSubjectName", "pszSubjectName", VRNO_CERT_GetSubjectName},
    {"VRNO_CERT_GetPubKey", "pszPubKey", publicKey},
    {"VRNO_CERT_GetSignature", "pszSignature", VRNO_CERT_GetSignature},
    {"VRNO_CERT_GetKeyUsage", "pszKeyUsage", VRNO_CERT_GetKeyUsage, "551D0F", 2},
    {"VRNO_CERT_GetBasicConstraints", "pszBasicConstraints", VRNO_CERT_GetBasicConstraints, "551D13"},
    {"VRNO_CERT_GetSubKeyID", "pszSKI", VRNO_CERT_GetSubKeyID, "551D0E"},
    {"VRNO_CERT_GetCertPolicy", "pszCertPolicy", VRNO_CERT_GetCertPolicy, "551D20", 0, "pszCertPolicyID"},
    {"VRNO_CERT_GetCertPolicy_PolicyID", "pszPolicyID", VRNO_CERT_GetCertPolicy_PolicyID, "551D20", 0, "pszCertPolicyID"},
    {"VRNO_CERT_GetExtKeyUsage", "pszExtKeyUsage", VRNO_CERT_GetExtKeyUsage, "551D25"},
    {"VRNO_CERT_GetSubjectAltName", "pszSubAltName", VRNO_CERT_GetSubjectAltName, "551D11"},
    {"VRNO_CERT_GetAuthKeyID", "pszAKI", VRNO_CERT_GetAuthKeyID, "551D23"},
    {"VRNO_CERT_GetCRLDP", "pszCRLDP", VRNO_CERT_GetCRLDP, "551D1F"},
    {"VRNO_CERT_GetCRLDP_URL", "pszCRLDPUrl", VRNO_CERT_GetCRLDP_URL, "551D1F"},
    {"VRNO_CERT_GetAIA", "pszAIA", VRNO_CERT_GetAIA, "2B06010505070101"},
};

std::string certificate(const CertificateParts& parts)
{
    const std::string utc = "17{\"0401011200Z\"}", subject = parts.name + "30{30{" + parts.algorithm + "} 03{00" + parts.key + "}}";
    return der("30{30{" + parts.version + "02{" + parts.serial + "} 30{" + parts.signature + "}" + parts.name + "30{" + utc + utc + "}" + subject +
               parts.extensions + "} 30{06{2A03}} 0303004142}");
}

std::string certificateWith(const char* extensionOid, const std::string& value)
{
    return certificate({.extensions = "A3{30{30{06{" + std::string(extensionOid) + "} 04{" + value + "}}}}"});
}

static std::string extension(const std::string& oid, const std::string& value)
{
    return "30{06{" + oid + "} 04{" + value + "}}";
}

static std::string allExtensions()
{
    const std::string dn = "A4{30{31{30{06{550403} 0C{EAB080}}}}}", url = "86{\"u\"}";
    const std::string vid = "30{06{2A831A8C9A440A010101} 30{30{06{2A831A8C9A440102}} A0{0401AA}}}";
    const std::string person = "A0{06{2A831A8C9A440A0101} A0{30{0C{EAB080} 30{" + vid + "}}}}", foreign = "A0{06{2A831A8C9A440A0101} A0{0500}}";
    const std::string notice = "30{30{0C{EAB080} 30{020101 020102}} 1E{AC00}}";
    const std::string policies = "30{30{06{2A03} 30{30{06{2B06010505070201} 16{\"c\"}} 30{06{2B06010505070202}" + notice + "}}} 30{06{551D2000}}}";
    const std::string point = "30{A0{A0{" + url + dn + person + "}} 81{0640} A2{" + dn + "}}";
    return extension("551D0F", "030206C0") + extension("551D13", "30{0101FF 020103}") + extension("551D0E", "0402AABB") + extension("551D20", policies) +
           extension("551D25", "30{06{2B06010505070301} 06{2A03}}") +
           extension("551D11", "30{81{\"e\"} 82{\"d\"}" + dn + url + "87{\"ABCD\"} 88{2A03}" + person + foreign + "}") +
           extension("551D23", "30{8002AABB A1{" + dn + person + "} 820105}") + extension("551D1F", "30{" + point + point + "}") +
           extension("2B06010505070101", "30{30{06{2B06010505073001}" + url + "} 30{06{2A03}" + person + "}}");
}

const std::string everyExtension = certificate({.extensions = "A3{30{" + allExtensions() + "}}"});

std::string getText(VRNO_API_CTX* context, TextGetter get, int& code)
{
    std::string text(1 << 16, '\0');
    while ((code = get(context, static_cast<int>(text.size()), text.data())) == VRNO_ERR_BUFFER_TOO_SMALL) text.resize(2 * text.size());
    return text.c_str();
}

std::vector<Result> useCertificate(const std::string& certificate)
{
    std::string text(1 << 14, '\0'), other(20, '\0');
    std::vector<Result> results;
    VRNO_BINSTR in{reinterpret_cast<unsigned char*>(const_cast<char*>(certificate.data())), static_cast<unsigned>(certificate.size())}, out;
    VRNO_BINSTR_Create(&out);
    const auto gaveText = [&](int code) { results.push_back({code, code == 0 ? std::string(text.c_str()) + other.c_str() : ""}); };
    const auto gaveData = [&](int code) { results.push_back({code, code == 0 ? std::string(reinterpret_cast<char*>(out.pData), out.nLen) : ""}); };
    VRNO_API_CTX* context = nullptr;
    results.push_back({VRNO_API_Init(&context, "/"), ""});
    if (results.back().code == 0) {
        results.push_back({VRNO_CERT_Load(context, &in), ""});
        int version = 0;
        results.push_back({VRNO_CERT_GetVersion(context, &version), std::to_string(version)});
        for (const NamedGetter& getter : textGetters) gaveText(getter.get(context, static_cast<int>(text.size()), text.data()));
        gaveText(VRNO_CERT_GetValidity(context, text.data(), other.data()));
        gaveData(VRNO_CERT_GetSubjectName_DERFormat(context, &out));
        gaveData(VRNO_BASE64_Encode(context, &in, &out));
        gaveData(VRNO_BASE64_Decode(context, &out, &out)); // an output may be the input
        results.push_back({VRNO_CMS_EncryptData(context, VRNO_CMS_CONTENT_INFO, &in, &in, VRNO_SYM_SEED, &out), ""});
        unsigned char sixteen[] = "sixteen bytes...";
        const VRNO_BINSTR key{sixteen, 16};
        results.push_back({VRNO_CRYPT_GenKeyAndIV(context, VRNO_SYM_SEED), ""});
        results.push_back({VRNO_CRYPT_SetKeyAndIV(context, VRNO_SYM_SEED, &key, &key), ""});
        if (results.back().code == 0) gaveData(VRNO_CRYPT_Encrypt(context, &in, &out));
        context->ucFlags |= 2; // the chained path
        if (results.back().code == 0) gaveData(VRNO_CRYPT_Decrypt(context, &out, &out));
    }
    VRNO_API_Finish(&context);
    VRNO_BINSTR_Delete(&out);
    return results;
}

std::vector<Result> useKey(const std::string& certificate, const std::string& key, const std::string& blob)
{
    std::vector<Result> results;
    VRNO_API_CTX* context = nullptr;
    const auto record = [](const std::string& from) { return VRNO_BINSTR{const_cast<unsigned char*>(at(from)), static_cast<unsigned>(from.size())}; };
    const VRNO_BINSTR cert = record(certificate), plain = record(key), encrypted = record(blob);
    VRNO_BINSTR out;
    VRNO_BINSTR_Create(&out);
    const auto gave = [&](int code) { results.push_back({code, code == 0 && out.pData ? text(out.pData, out.nLen) : ""}); };
    gave(VRNO_API_Init(&context, "/"));
    if (results.back().code == 0) {
        gave(VRNO_PRIKEY_Encrypt(context, 48, "password", &plain, &out));
        gave(VRNO_PRIKEY_Decrypt(context, "password", &encrypted, &out));
        VRNO_BINSTR_Delete(&out);
        gave(VRNO_PRIKEY_CheckKeyPair(context, &cert, &plain));
    }
    VRNO_API_Finish(&context);
    VRNO_BINSTR_Delete(&out);
    return results;
}

} // namespace test
