// The engine's public operations: each one is a whole job over buffers of the caller.
//
// Lengths are signed 32-bit counts of bytes; a negative one is refused. An in/out length holds the room on entry and the
// bytes produced on return. Nothing lives longer than a call: keys, schedules and chaining values come from the caller
// and go back to the caller's buffers.
//
// A result is 0 or a code below. Operations that run in stages add 1000 for a failure while they set up, 2000 while
// they take the data in, 3000 while they finish; 102 for want of memory comes without. After a failure the output holds
// nothing of use.
#pragma once

#include "engine/seed/padding_id.h"

namespace vrno {

enum ZIRC_Result : int {
    ZIRC_OK = 0,
    ZIRC_FAIL = 1,
    ZIRC_INVALID_DATA = 101,
    ZIRC_MEMORY_ERROR = 102,
    ZIRC_NOT_ENOUGH_BUFFER = 103,
    ZIRC_INVALID_MODE = 104,
    ZIRC_INVALID_ALGORITHM = 105,
    ZIRC_INVALID_KEY_POINTER = 106,
    ZIRC_INVALID_KEY = 107,
    ZIRC_INVALID_DATA_POINTER = 108,
    ZIRC_INVALID_INIT_VECTOR = 109,
    ZIRC_STAGED_OPERATION_FAILED = 110,
    ZIRC_INVALID_FILE_POINTER = 111,
    ZIRC_INVALID_CLASS = 112,
    ZIRC_ASN1_OPERATION_FAILED = 113,
    ZIRC_INVALID_ENCRYPTED_DATA = 114,
    ZIRC_INVALID_SIGNATURE = 115,
    ZIRC_VERIFY_FAIL = 116,
};

enum ZIRC_Mode : int {
    ZIRC_MODE_CBC = 3, // the only one of the symmetric class
    ZIRC_MODE_PUBLIC_KEY = 6,
    ZIRC_MODE_PRIVATE_KEY = 7,
};

// SEED: bytes of a user key, a block and an IV, and of the key schedule that the cipher operations take as their key.
inline constexpr int seedKeyLength = 16, seedBlockLength = 16, seedScheduleLength = 128;

// Fills the output. With a seed, that is laid over the output first and goes into the result. No stages.
int ZIRC_GenerateRandom(int nAlgID, unsigned char* output, int outputLength, const unsigned char* seed, int seedLength);

// The key schedule of a user key. No stages.
int ZIRC_GenerateKey(unsigned char* schedule, int* scheduleLength, int nAlgID, const unsigned char* userKey, int userKeyLength);

// Symmetric class: the key is a schedule, and on success the iv becomes the chaining value for the next message. The
// room must be that of the input, and at least a block where Update has written it full; what the padding needs above
// that is looked at before it is written. Asymmetric class: the key is a blob in DER, and one operation is done.
int ZIRC_EncryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType);
int ZIRC_DecryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType);

int ZIRC_DigestData(int nAlgID, unsigned char* output, int* outputLength, const unsigned char* input, int inputLength);

int ZIRC_GenerateMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength);

// The XOR of a chain of MACs: of `firstLink`, and of `furtherLinks` more, each of which is the MAC of the one before it. It is
// the loop of PBKDF2 (RFC 8018, 5.2). The key's own blocks are hashed once. A link has the length of the MAC.
int ZIRC_ChainMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* firstLink, int linkLength, int furtherLinks);

// The room of the output is not looked at: it must hold the modulus, or the DER of a KCDSA signature.
int ZIRC_SignData(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* input, int inputLength);
int ZIRC_VerifyData(const unsigned char* key, int keyLength, int nAlgID, const unsigned char* signature, int signatureLength,
                    const unsigned char* input, int inputLength);

// A text such as "Update stage; Invalid key value.(2107)"; empty for a code of no row. Good until the thread's next call.
const char* ZIRC_GetErrorText(int code);

} // namespace vrno
