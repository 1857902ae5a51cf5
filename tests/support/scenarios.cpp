#include "support/scenarios.h"

#include "support/bytes.h"
#include "support/interface.h"

namespace test {

std::vector<Result> useCertificate(const std::string& certificate)
{
    std::string text(1 << 14, '\0'), other(20, '\0');
    std::vector<Result> results;
    VRNO_BINSTR in{reinterpret_cast<unsigned char*>(const_cast<char*>(certificate.data())),
                   static_cast<unsigned>(certificate.size())},
        out;
    VRNO_BINSTR_Create(&out);
    const auto gaveText = [&](int code) { results.push_back({code, code == 0 ? std::string(text.c_str()) + other.c_str() : ""}); };
    const auto gaveData = [&](int code) {
        results.push_back({code, code == 0 ? std::string(reinterpret_cast<char*>(out.pData), out.nLen) : ""});
    };
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
    const auto record = [](const std::string& from) {
        return VRNO_BINSTR{const_cast<unsigned char*>(at(from)), static_cast<unsigned>(from.size())};
    };
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
