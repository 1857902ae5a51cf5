// A PKCS #11 module with one empty token, "mock". The variables MOCK_INITIALIZE, MOCK_OPEN, MOCK_LOGIN and MOCK_FIND have what
// C_Initialize, C_OpenSession, C_Login and C_FindObjects return, in hexadecimal, and MOCK_STATE the state of its sessions. It
// counts what the tests ask for.
#include <p11-kit/pkcs11.h>

#include <cstdlib>
#include <cstring>

extern "C" {
int mock_initialised, mock_finalised, mock_sessions, mock_logged_in;
CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list);
}

namespace {

CK_RV wanted(const char* variable)
{
    const char* const code = std::getenv(variable);
    return code ? std::strtoul(code, nullptr, 16) : CKR_OK;
}

CK_RV initialise(void* arguments)
{
    const auto* const given = static_cast<CK_C_INITIALIZE_ARGS*>(arguments);
    ++mock_initialised;
    return given && (given->flags & CKF_OS_LOCKING_OK) ? wanted("MOCK_INITIALIZE") : CKR_CANT_LOCK;
}

CK_RV getSlots(unsigned char, CK_SLOT_ID* slots, CK_ULONG* count)
{
    if (slots) slots[0] = 1;
    *count = 1;
    return CKR_OK;
}

CK_RV getToken(CK_SLOT_ID, CK_TOKEN_INFO* token)
{
    std::memset(token, ' ', sizeof *token);
    std::memcpy(token->label, "mock", 4);
    token->flags = CKF_TOKEN_INITIALIZED;
    token->ulSessionCount = static_cast<CK_ULONG>(mock_sessions);
    return CKR_OK;
}

CK_RV count(int& counter, int step, const char* variable)
{
    const CK_RV code = wanted(variable);
    if (code == CKR_OK) counter += step;
    return code;
}

CK_FUNCTION_LIST functions{
    .C_Initialize = initialise,
    .C_Finalize = [](void*) { return count(mock_finalised, 1, ""); },
    .C_GetInfo = [](CK_INFO*) { return wanted(""); },
    .C_GetSlotList = getSlots,
    .C_GetTokenInfo = getToken,
    .C_OpenSession = [](CK_SLOT_ID, CK_FLAGS, void*, CK_NOTIFY,
                        CK_SESSION_HANDLE*) { return count(mock_sessions, 1, "MOCK_OPEN"); },
    .C_CloseSession = [](CK_SESSION_HANDLE) { return count(mock_sessions, -1, ""); },
    .C_GetSessionInfo = [](CK_SESSION_HANDLE, CK_SESSION_INFO* info) { return (info->state = wanted("MOCK_STATE"), wanted("")); },
    .C_Login = [](CK_SESSION_HANDLE, CK_USER_TYPE, unsigned char*, CK_ULONG) { return count(mock_logged_in, 1, "MOCK_LOGIN"); },
    .C_Logout = [](CK_SESSION_HANDLE) { return count(mock_logged_in, -1, ""); },
    .C_FindObjectsInit = [](CK_SESSION_HANDLE, CK_ATTRIBUTE*, CK_ULONG) { return wanted(""); },
    .C_FindObjects = [](CK_SESSION_HANDLE, CK_OBJECT_HANDLE*, CK_ULONG,
                        CK_ULONG* found) { return (*found = 0, wanted("MOCK_FIND")); },
    .C_FindObjectsFinal = [](CK_SESSION_HANDLE) { return wanted(""); },
};

} // namespace

CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list)
{
    *list = &functions;
    return CKR_OK;
}
