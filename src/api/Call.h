// What all exported functions have in common: the last failure, the checks, the outputs.
#pragma once

#include "VNProcess/PCertUtil2.h"
#include "base/ByteString.h"
#include "text/Ksc.h"
#include "vrno.h"

namespace vrno {

// ---- the last failure in a context ----

enum ErrorForm {
    ERRFORM_PLAIN = 0,      // "[function] message"
    ERRFORM_TARNLIB = 1,    // with the error trail of an inner object
    ERRFORM_LDAPLIB = 2,    // with a code and a message
    ERRFORM_DYNAMICLIB = 3, // with a function of the storage library, its result and its message
};

// Stores a failure. With a null message it stores the code only and keeps an earlier text. A text of 2048 bytes or more is
// stored as an empty text. On allocation failure there is a code and no text.
void setApiError(VRNO_API_CTX* pCtx, int nCode, int nForm, const char* pszFunc, const char* pszMsg, const char* pszDynFunc,
                 int nDynErr, const char* pszDetail);
void clearApiError(VRNO_API_CTX* pCtx);

// ---- outputs ----

// A caller's text buffer, with the argument's name for the messages.
struct TextOut {
    char* buffer;
    int size;
    const char* name;
};

// A caller's record, with the argument's name for the messages.
struct RecordOut {
    VRNO_BINSTR* record;
    const char* name;
};

#define OUT(buffer, size)                                                                                                          \
    vrno::TextOut { buffer, size, #buffer }

// ---- one call ----

// The first object of every exported function that can store a failure. It clears the last failure. The checks form a chain:
// the first that fails stores its message, and the later ones do nothing. A check that dereferences an argument belongs in a
// second chain, after the result of the first has been tested.
//
// Here an allocation failure becomes 1002, whatever code the failed step has: the inner object's trail or the text has that
// fact, or the failure's own text could not be stored. The message names the last output that was checked.
class Call {
public:
    explicit Call(VRNO_API_CTX* context, const char* function = __builtin_FUNCTION());

    // The given code with the message unless `good`.
    Call& check(bool good, int code, const char* message);
    // 5000 unless the symmetric algorithm is one that the function knows.
    Call& supported(bool isKnown);
    // 1501 unless a certificate is loaded.
    Call& loaded();
    // 2513 unless a storage library is loaded.
    Call& libraryLoaded();
    // 5004 unless a session key is set.
    Call& keySet();
    // 1004 with the message unless the record has data, or the text characters.
    Call& input(const VRNO_BINSTR* data, const char* message);
    Call& input(const char* text, const char* message);
    // 1004 with the argument's name when the pointer is null.
    Call& output(const void* pointer, const char* name);
    // Copies a valid record; 1002 on allocation failure, and for more than a ByteString holds.
    Call& copy(const VRNO_BINSTR* data, const char* name, ByteString& to);
    // The octets of an optional record, in the caller's memory; none if it is not valid; 1002 for more than a ByteString holds.
    Call& view(const VRNO_BINSTR* data, const char* name, Octets& to);
    // 1005 with the needed size when the text and its NUL do not fit.
    Call& fits(const ByteString& text, const TextOut& out);

    explicit operator bool() const { return m_code == 0; }
    int code() const { return m_code; }
    VRNO_API_CTX& context() const { return *m_context; }
    PCertUtil2& cert() const { return *m_context->pLoadedCert; }

    // Each stores a failure and returns its code.
    int fail(int code, const char* message, bool isOutOfMemory = false); // whether the failed step ran out of memory
    int fail(int code, const char* message, const Trail& trail);         // of an inner object
    int fail(int code, const char* message, const Trailed& inner) { return fail(code, message, inner.getErrorTrail()); }
    int fail(int code, const ByteString& message); // empty if the message was too long for ByteString::format
    int dynamic(int code, const char* message, const char* function, int result, const char* detail); // of the storage library
    int noMemory() { return noMemory(m_slot); }
    int noMemory(const char* slot);
    int wrongCertificate(const Trail& trail);

    // The last step of a call: gives a result to the caller and returns the code of the call.
    int deliver(const ByteString& data, const RecordOut& out);
    int handOver(ByteString& data, VRNO_BINSTR* out); // the block itself, for large results
    int deliver(const ByteString& text, const TextOut& out);

private:
    int store(int code, int form, const char* message, const char* function, int result, const char* detail);

    VRNO_API_CTX* m_context;
    const char* m_function;
    const char* m_slot = "pCtx"; // named where an allocation failed
    int m_code = VRNO_OK;
};

} // namespace vrno
