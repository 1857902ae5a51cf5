// The steps of an enveloped message.
#pragma once

#include "api/Call.h"

namespace vrno {

enum class Purpose { signing = 1, encryption = 2 };

// 0 when the certificate's key usage (RFC 5280, 4.2.1.3) names the purpose, or when it has none; 3000 or 3001 when
// it does not, 1500 when it cannot be read. Nothing else of the certificate is tested.
int checkRecipientKeyUsage(Call& call, Purpose nPurpose, ByteString& cert);

// The message to the holder of the certificate, whose key and IV become the context's session key when all else is done:
// 0, 5000, 1500, 3001, 3006 with the old key kept, 1002.
int makeEnvelopedMessage(Call& call, unsigned int nOption, int nAlg, ByteString& cert, Octets data, ByteString& out);

} // namespace vrno
