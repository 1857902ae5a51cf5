#include "Session.h"

#include <cstring>

namespace storage {

namespace {

// The copy of a PIN that a module may take for its own, wiped on destruction.
struct Pin {
    unsigned char bytes[256];
    CK_ULONG length;

    explicit Pin(const char* text) : length(static_cast<CK_ULONG>(std::strlen(text)))
    {
        if (fits()) std::memcpy(bytes, text, length);
    }
    ~Pin()
    {
        for (volatile unsigned char& byte : bytes) byte = 0;
    }
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;
    bool fits() const { return length <= sizeof bytes; }
};

} // namespace

// ---- login ----

Session::~Session()
{
    if (m_isLoggedIn) m_module.C_Logout(m_session);
    if (m_isOpen) m_module.C_CloseSession(m_session);
}

CK_RV Session::login(const char* pin)
{
    // Not every module refuses a second login, and one that does not may leave the PIN untested.
    CK_SESSION_INFO info{};
    const bool isKnown = m_module.C_GetSessionInfo(m_session, &info) == CKR_OK;
    if (isKnown && info.state != CKS_RO_PUBLIC_SESSION && info.state != CKS_RW_PUBLIC_SESSION) return CKR_USER_ALREADY_LOGGED_IN;
    Pin copy(pin);
    return copy.fits() ? m_module.C_Login(m_session, CKU_USER, copy.bytes, copy.length) : CKR_PIN_LEN_RANGE;
}

int Session::open(const Token& token, const char* pin)
{
    const CK_RV opened = m_module.C_OpenSession(token.slot, CKF_SERIAL_SESSION, nullptr, nullptr, &m_session);
    m_isOpen = opened == CKR_OK;
    if (!m_isOpen) return m_answer.failOf(opened, "C_OpenSession");
    const CK_RV code = login(pin);
    m_isLoggedIn = code == CKR_OK;
    return m_answer.failOf(code, "C_Login");
}

// ---- objects ----

int Session::startSearch(std::initializer_list<CK_ATTRIBUTE> wanted)
{
    // Objects of sessions are those of the application, not of the token.
    constexpr std::size_t most = 8;
    static CK_BBOOL yes = CK_TRUE;
    CK_ATTRIBUTE attributes[most] = {{CKA_TOKEN, &yes, sizeof yes}};
    CK_ULONG count = 1;
    for (const CK_ATTRIBUTE& attribute : wanted) {
        if (count < most) attributes[count++] = attribute;
    }
    return m_answer.failOf(m_module.C_FindObjectsInit(m_session, attributes, count), "C_FindObjectsInit");
}

int Session::next(CK_OBJECT_HANDLE& object, bool& found)
{
    CK_ULONG count = 0;
    const CK_RV code = m_module.C_FindObjects(m_session, &object, 1, &count);
    found = count == 1;
    return m_answer.failOf(code, "C_FindObjects");
}

CK_RV Session::read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type, void* area, CK_ULONG capacity, CK_ULONG& length)
{
    CK_ATTRIBUTE attribute{type, nullptr, 0};
    CK_RV code = m_module.C_GetAttributeValue(m_session, object, &attribute, 1);
    length = attribute.ulValueLen;
    if (code != CKR_OK || length == 0) return code;
    if (length > capacity) return CKR_BUFFER_TOO_SMALL;
    attribute = {type, area, capacity};
    code = m_module.C_GetAttributeValue(m_session, object, &attribute, 1);
    length = attribute.ulValueLen;
    return code == CKR_OK && length > capacity ? CKR_BUFFER_TOO_SMALL : code;
}

} // namespace storage
