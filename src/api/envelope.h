// The steps of VRNO_CMS_EncryptData.
#pragma once

#include "api/Call.h"

namespace vrno {

enum class Purpose { signing = 1, encryption = 2 };

// 0 if the key usage of the certificate (RFC 5280, 4.2.1.3) includes the purpose or is absent; 3000 (signing) or 3001
// (encryption) if it does not include it; 1500 if it cannot be read; 1002. Nothing else of the certificate is checked.
int checkRecipientKeyUsage(Call& call, Purpose nPurpose, ByteString& cert);

// Makes the message for the holder of the certificate. In the last step its key and IV become the session key and IV of the
// context. 0; 5000, 1500, 3001 and 3006 leave the old key set; 1002.
int makeEnvelopedMessage(Call& call, unsigned int nOption, int nAlg, ByteString& cert, Octets data, ByteString& out);

} // namespace vrno
