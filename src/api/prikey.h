// Opening a protected private key, for all exported functions that do so.
#pragma once

#include "api/Call.h"

namespace vrno {

// The PrivateKeyInfo in `blob`, an EncryptedPrivateKeyInfo: 0, 2004 for what a wrong password looks like, or 2001.
int openPrivateKey(Call& call, const char* password, ByteString& blob, ByteString& out);

} // namespace vrno
