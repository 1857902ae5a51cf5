#include "support/interface.h"

#include "support/bytes.h"

namespace test {

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

std::string getText(VRNO_API_CTX* context, TextGetter get, int& code)
{
    std::string text(1 << 16, '\0');
    while ((code = get(context, static_cast<int>(text.size()), text.data())) == VRNO_ERR_BUFFER_TOO_SMALL)
        text.resize(2 * text.size());
    return text.c_str();
}

std::string field(const Context& context, TextGetter get)
{
    int code = 0;
    const std::string text = getText(context, get, code);
    EXPECT_EQ(code, 0) << context.error();
    return text;
}

} // namespace test
