// A session with a token, and the objects that it shows.
#pragma once

#include "Token.h"

#include <initializer_list>

namespace storage {

class Session {
public:
    Session(Answer& answer, const CK_FUNCTION_LIST& module) : m_answer(answer), m_module(module) {}
    ~Session(); // logs out if it logged in, and closes this session alone
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Opens a session for reading and logs the user in. The PIN is tested by that: when the process is logged in already, it
    // fails.
    int open(const Token& token, const char* pin);

    // Calls visit(object) for each object on the token with these attributes, until it does not return 0.
    template <class Visit> int forEach(std::initializer_list<CK_ATTRIBUTE> wanted, Visit visit)
    {
        int result = startSearch(wanted);
        if (result != 0) return result;
        CK_OBJECT_HANDLE object = 0;
        bool found = true;
        while (result == 0 && (result = next(object, found)) == 0 && found) result = visit(object);
        m_module.C_FindObjectsFinal(m_session);
        return result;
    }

    // Reads an attribute that has at most `capacity` bytes. A longer one is CKR_BUFFER_TOO_SMALL with its length, and nothing is
    // written.
    CK_RV read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type, void* area, CK_ULONG capacity, CK_ULONG& length);

private:
    int startSearch(std::initializer_list<CK_ATTRIBUTE> wanted);
    int next(CK_OBJECT_HANDLE& object, bool& found);
    CK_RV login(const char* pin);

    Answer& m_answer;
    const CK_FUNCTION_LIST& m_module;
    CK_SESSION_HANDLE m_session = 0;
    bool m_isOpen = false, m_isLoggedIn = false;
};

} // namespace storage
