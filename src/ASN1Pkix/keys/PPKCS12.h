// The key derivation of PKCS #12 (RFC 7292, appendix B) with SHA-1.
#pragma once

#include "base/Objects.h"

namespace vrno {

class PPKCS12 : public PObject {
public:
    static constexpr const char* className = "PPKCS12";

    // Each octet behind a zero octet, and two zero octets at the end: no code page is converted. 1: no memory.
    int asc2uniWithByteString(ByteString& text, ByteString& out);

    // `length` octets for the purpose `id` (1 a key, 2 an IV). An empty password stands for no octets at all. Fewer than
    // two iterations are one. 1: no memory.
    int keyGenAsc(ByteString& password, ByteString& salt, int id, int iterations, int length, ByteString& out);
};

} // namespace vrno
