// The key derivation of PKCS #12 (RFC 7292, appendix B) with SHA-1.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PPKCS12 : public PObject {
public:
    static constexpr const char* className = "PPKCS12";

    // Puts a zero octet in front of each octet, and two at the end. No code page is converted. 1 on allocation failure.
    int asc2uniWithByteString(ByteString& text, ByteString& out);

    // Derives `length` octets for the purpose `id` (1 a key, 2 an IV). An empty password is not widened, and has no octets. A
    // count below 1 is one iteration. 1 on allocation failure.
    int keyGenAsc(ByteString& password, ByteString& salt, int id, int iterations, int length, ByteString& out);
};

} // namespace vrno
