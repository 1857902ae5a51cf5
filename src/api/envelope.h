// The steps of VRNO_CMS_EncryptData.
#pragma once

#include "api/Call.h"

namespace vrno {

enum class Purpose { signing = 1, encryption = 2 };

// 0 when the key usage of the certificate (RFC 5280, 4.2.1.3) includes the purpose or is absent; 3000 or 3001 when it does
// not include it; 1500 when it cannot be read. Nothing else of the certificate is checked.
int checkRecipientKeyUsage(Call& call, Purpose nPurpose, ByteString& cert);

// Makes the message for the holder of the certificate. As the last step, its key and IV become the session key and IV of the
// context: 0; 5000, 1500, 3001, 3006 with the old key kept; 1002.
int makeEnvelopedMessage(Call& call, unsigned int nOption, int nAlg, ByteString& cert, Octets data, ByteString& out);

} // namespace vrno
