/*
 * A PKCS #11 module with one empty token, "mock". The variables MOCK_INITIALIZE, MOCK_OPEN, MOCK_LOGIN and MOCK_FIND have what
 * C_Initialize, C_OpenSession, C_Login and C_FindObjects return, in hexadecimal, and MOCK_STATE the state of its sessions. It
 * counts what the tests ask for.
 */
#include <p11-kit/pkcs11.h>

#include <stdlib.h>
#include <string.h>

#define EXPORTED __attribute__((visibility("default")))
EXPORTED extern int mock_initialised, mock_finalised, mock_sessions, mock_logged_in;
int mock_initialised, mock_finalised, mock_sessions, mock_logged_in;

static CK_RV wanted(const char* variable)
{
    const char* const code = getenv(variable);
    return code ? strtoul(code, NULL, 16) : CKR_OK;
}

static CK_RV initialize(void* arguments)
{
    const CK_C_INITIALIZE_ARGS* const given = arguments;
    if (!given || !(given->flags & CKF_OS_LOCKING_OK)) return CKR_CANT_LOCK;
    ++mock_initialised;
    return wanted("MOCK_INITIALIZE");
}
static CK_RV finalize(void* reserved)
{
    ++mock_finalised;
    return reserved ? CKR_ARGUMENTS_BAD : CKR_OK;
}
static CK_RV get_info(CK_INFO* info)
{
    memset(info, 0, sizeof *info);
    return CKR_OK;
}
static CK_RV get_slot_list(unsigned char present, CK_SLOT_ID* slots, CK_ULONG* count)
{
    if (slots && *count > 0) slots[0] = present;
    *count = 1;
    return CKR_OK;
}
static CK_RV get_token_info(CK_SLOT_ID slot, CK_TOKEN_INFO* info)
{
    (void)slot;
    memset(info, ' ', sizeof *info);
    memcpy(info->label, "mock", 4);
    info->flags = CKF_TOKEN_INITIALIZED | CKF_LOGIN_REQUIRED;
    info->ulSessionCount = (CK_ULONG)mock_sessions;
    return CKR_OK;
}
static CK_RV open_session(CK_SLOT_ID slot, CK_FLAGS flags, void* application, CK_NOTIFY notify, CK_SESSION_HANDLE* session)
{
    (void)flags, (void)application, (void)notify;
    *session = slot;
    const CK_RV code = wanted("MOCK_OPEN");
    mock_sessions += code == CKR_OK;
    return code;
}
static CK_RV close_session(CK_SESSION_HANDLE session)
{
    (void)session;
    --mock_sessions;
    return CKR_OK;
}
static CK_RV get_session_info(CK_SESSION_HANDLE session, CK_SESSION_INFO* info)
{
    (void)session;
    memset(info, 0, sizeof *info);
    info->state = wanted("MOCK_STATE");
    return CKR_OK;
}
static CK_RV login(CK_SESSION_HANDLE session, CK_USER_TYPE user, unsigned char* pin, CK_ULONG length)
{
    const CK_RV code = wanted("MOCK_LOGIN");
    (void)session, (void)user, (void)pin, (void)length;
    mock_logged_in += code == CKR_OK;
    return code;
}
static CK_RV logout(CK_SESSION_HANDLE session)
{
    (void)session;
    --mock_logged_in;
    return CKR_OK;
}
static CK_RV find_init(CK_SESSION_HANDLE session, CK_ATTRIBUTE* wanted_attributes, CK_ULONG count)
{
    (void)session, (void)wanted_attributes, (void)count;
    return CKR_OK;
}
static CK_RV find(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE* objects, CK_ULONG most, CK_ULONG* count)
{
    (void)session, (void)objects, (void)most;
    *count = 0;
    return wanted("MOCK_FIND");
}
static CK_RV find_final(CK_SESSION_HANDLE session)
{
    (void)session;
    return CKR_OK;
}

EXPORTED CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list);
CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list)
{
    static CK_FUNCTION_LIST functions = {
        .C_Initialize = initialize,
        .C_Finalize = finalize,
        .C_GetInfo = get_info,
        .C_GetSlotList = get_slot_list,
        .C_GetTokenInfo = get_token_info,
        .C_OpenSession = open_session,
        .C_CloseSession = close_session,
        .C_GetSessionInfo = get_session_info,
        .C_Login = login,
        .C_Logout = logout,
        .C_FindObjectsInit = find_init,
        .C_FindObjects = find,
        .C_FindObjectsFinal = find_final,
    };
    *list = &functions;
    return CKR_OK;
}
