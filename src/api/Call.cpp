#include "api/Call.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace vrno {

// ---- the last failure in a context ----

void setApiError(VRNO_API_CTX* pCtx, int nCode, int nForm, const char* pszFunc, const char* pszMsg, const char* pszDynFunc,
                 int nDynErr, const char* pszDetail)
{
    pCtx->nErrCode = nCode;
    if (!pszMsg) return;
    ByteString message;
    switch (nForm) {
    case ERRFORM_PLAIN:
        message.format("%s", pszMsg);
        break;
    case ERRFORM_TARNLIB:
        message.format("%s <tarnlib> %s", pszMsg, pszDetail);
        break;
    case ERRFORM_LDAPLIB:
        message.format("%s <ldaplib> errcode=0x%x,msg=%s", pszMsg, static_cast<unsigned int>(nDynErr), pszDetail);
        break;
    case ERRFORM_DYNAMICLIB:
        message.format("%s <dynamiclib> fnc=%s,errcode=0x%x,msg=%s", pszMsg, pszDynFunc, static_cast<unsigned int>(nDynErr),
                       pszDetail);
        break;
    default:
        pszFunc = nullptr;
    }
    ByteString named;
    if (pszFunc && !message.isNull()) named.format("[%s] %s", pszFunc, message.getText());
    const ByteString& text = pszFunc ? named : message;
    std::free(pCtx->pszErrMsg);
    pCtx->pszErrMsg = nullptr;
    if (message.isOutOfMemory() || named.isOutOfMemory()) return;
    const std::size_t size = static_cast<std::size_t>(text.getLength()) + 1;
    pCtx->pszErrMsg = static_cast<char*>(std::malloc(size));
    if (pCtx->pszErrMsg) std::memcpy(pCtx->pszErrMsg, text.getText(), size);
}

void clearApiError(VRNO_API_CTX* pCtx)
{
    pCtx->nErrCode = 0;
    std::free(pCtx->pszErrMsg);
    pCtx->pszErrMsg = nullptr;
}

// ---- one call ----

Call::Call(VRNO_API_CTX* context, const char* function) : m_context(context), m_function(function)
{
    if (context) {
        clearApiError(context);
    } else {
        m_code = VRNO_ERR_CTX_NULL; // and nowhere to store it
    }
}

int Call::store(int code, int form, const char* message, const char* function, int result, const char* detail)
{
    setApiError(m_context, code, form, m_function, message, function, result, detail);
    if (!m_context->pszErrMsg) m_context->nErrCode = VRNO_ERR_MEMORY;
    return m_code = m_context->nErrCode;
}

int Call::fail(int code, const char* message, bool isOutOfMemory)
{
    if (isOutOfMemory) return noMemory();
    return store(code, ERRFORM_PLAIN, message, nullptr, 0, nullptr);
}

int Call::fail(int code, const ByteString& message)
{
    constexpr int emptyTextForm = -1; // which setApiError does not know
    if (message.isOutOfMemory()) return noMemory();
    return store(code, message.isNull() ? emptyTextForm : ERRFORM_PLAIN, message.getText(), nullptr, 0, nullptr);
}

int Call::fail(int code, const char* message, const Trail& trail)
{
    if (trail.outOfMemory()) return noMemory();
    return store(code, ERRFORM_TARNLIB, message, nullptr, 0, trail.getText());
}

int Call::noMemory(const char* slot)
{
    const ByteString message = formatted(u8"메모리를(%s) 할당하는데 실패하였습니다."_ksc, slot);
    return store(VRNO_ERR_MEMORY, ERRFORM_PLAIN, message.getText(), nullptr, 0, nullptr);
}

int Call::wrongCertificate(const Trail& trail) { return fail(VRNO_ERR_CERT_FORMAT, u8"잘못된 인증서 형식입니다."_ksc, trail); }

int Call::dynamic(int code, const char* message, const char* function, int result, const char* detail)
{
    return store(code, ERRFORM_DYNAMICLIB, message, function, result, detail);
}

Call& Call::check(bool good, int code, const char* message)
{
    if (m_code == 0 && !good) fail(code, message);
    return *this;
}

Call& Call::supported(bool isKnown) { return check(isKnown, VRNO_ERR_SYM_ALG, u8"지원하지 않는 대칭키 알고리즘입니다."_ksc); }

Call& Call::loaded()
{
    const bool isLoaded = m_code == 0 && m_context->pLoadedCert;
    return check(isLoaded, VRNO_ERR_CERT_NOT_LOADED, u8"인증서가 로드되어있지 않습니다."_ksc);
}

Call& Call::libraryLoaded()
{
    const bool isLoaded = m_code == 0 && m_context->hMediaLib;
    return check(isLoaded, VRNO_ERR_LIB_NOT_LOADED, u8"우선 동적 라이브러리를 로드하세요."_ksc);
}

Call& Call::keySet()
{
    if (m_code != 0) return *this;
    const VRNO_API_CTX& c = *m_context;
    const bool set = c.nSymAlg && c.nSymMode && c.pSessionKey && c.pSessionIv;
    if (!set) fail(VRNO_ERR_KEY_NOT_SET, u8"대칭키 알고리즘의 Key와 IV가 설정되지 않았습니다."_ksc);
    return *this;
}

Call& Call::input(const VRNO_BINSTR* data, const char* message)
{
    return check(data && data->pData && data->nLen, VRNO_ERR_ARGUMENT, message);
}

Call& Call::input(const char* text, const char* message) { return check(text && *text, VRNO_ERR_ARGUMENT, message); }

Call& Call::output(const void* pointer, const char* name)
{
    m_slot = name;
    if (m_code == 0 && !pointer) fail(VRNO_ERR_ARGUMENT, formatted(u8"%s의 포인터가 NULL입니다."_ksc, name));
    return *this;
}

Call& Call::copy(const VRNO_BINSTR* data, const char* name, ByteString& to)
{
    if (m_code != 0) return *this;
    const bool isHeld = data->nLen < INT_MAX && to.setData(data->pData, static_cast<int>(data->nLen)) == 0;
    if (!isHeld) noMemory(name);
    return *this;
}

Call& Call::view(const VRNO_BINSTR* data, const char* name, Octets& to)
{
    static constexpr unsigned char nothing = 0;
    if (m_code != 0) return *this;
    const bool empty = !data || !data->pData || !data->nLen;
    to = empty ? Octets(&nothing, 0) : Octets(data->pData, data->nLen);
    if (to.size() >= INT_MAX) noMemory(name);
    return *this;
}

Call& Call::fits(const ByteString& text, const TextOut& out)
{
    if (m_code == 0 && text.isOutOfMemory()) noMemory(out.name);
    if (m_code == 0 && text.getLength() >= out.size) {
        const int needed = text.getLength() + 1;
        fail(VRNO_ERR_BUFFER_TOO_SMALL,
             formatted(u8"%s에 할당된 메모리가 부족합니다. (필요한 메모리 크기 : %d)"_ksc, out.name, needed));
    }
    return *this;
}

int Call::deliver(const ByteString& data, const RecordOut& out)
{
    if (m_code == 0 && data.isOutOfMemory()) noMemory(out.name);
    if (m_code != 0) return m_code;
    const int code = VRNO_BINSTR_SetData(data.getBytes(), static_cast<unsigned int>(data.getLength()), out.record);
    return code == 0 ? 0 : fail(code, formatted("VRNO_BINSTR_SetData : %s", out.name));
}

int Call::handOver(ByteString& data, VRNO_BINSTR* out)
{
    if (m_code == 0 && data.isOutOfMemory()) noMemory();
    if (m_code != 0) return m_code;
    VRNO_BINSTR_Delete(out);
    if (data.getLength() == 0) return 0;
    const auto length = static_cast<unsigned int>(data.getLength());
    out->pData = data.release();
    if (!out->pData) return noMemory();
    out->nLen = length;
    return 0;
}

int Call::deliver(const ByteString& text, const TextOut& out)
{
    if (!fits(text, out)) return m_code;
    std::memcpy(out.buffer, text.getText(), static_cast<std::size_t>(text.getLength()) + 1);
    return 0;
}

} // namespace vrno
