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

} // namespace test
