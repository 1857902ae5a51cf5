// The schemes of password-based encryption that PPKCS8 uses (PKCS #5: RFC 8018, PKCS #12: RFC 7292), all of them with SEED-CBC,
// and the object identifiers that it knows.
#pragma once

#include "base/ByteString.h"

namespace vrno {

enum Pkcs8SchemeCode : int {
    schemePbkdf1 = 7,
    schemePbkdf1FixedIv = 8,
    schemePbes2For16 = 14, // this and all above are PBES2 and write the same
    schemePbes2For32 = 15,
    schemePbes2 = 24,
};

enum class KeyDerivation { pbkdf1, pkcs12, pbkdf2 };

struct Pkcs8Scheme {
    KeyDerivation derivation;      // pbkdf2 is used inside PBES2, the others outside
    const char* oid;               // of the whole scheme; for PBES2 of its cipher
    int keyLength, ivLength;       // bytes to derive
    const char* fixedIv = nullptr; // the IV if none is derived
};

// The scheme of a code.
const Pkcs8Scheme& pkcs8Scheme(int code);

inline constexpr const char* oidRc2Cbc = "1 2 840 113549 3 2";
inline constexpr const char* oidRc5Cbc = "1 2 840 113549 3 9";

// An identifier of a scheme or, inside PBES2, of a cipher: either refused, or with a scheme for each of the two places.
struct Pkcs8Identifier {
    const char* oid;
    int refusalCode;
    const char* refusal; // null if it is supported
    const Pkcs8Scheme* outsidePbes2 = nullptr;
    const Pkcs8Scheme* insidePbes2 = nullptr;
};

// Null for an unknown identifier.
const Pkcs8Identifier* findPkcs8Identifier(const ByteString& oid);

} // namespace vrno
