// Decrypting a private key, for all exported functions that do so.
#pragma once

#include "api/Call.h"

namespace vrno {

// Gives the PrivateKeyInfo in an EncryptedPrivateKeyInfo: 0; 2004 for a wrong password and for all that is indistinguishable from
// one; 2001; 1002.
int openPrivateKey(Call& call, const char* password, ByteString& encrypted, ByteString& out);

} // namespace vrno
