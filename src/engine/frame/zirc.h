// The interface of the engine. Each operation is a whole job over buffers of the caller.
//
// Lengths are signed 32-bit counts of bytes; a negative one is refused. An in/out length holds the room on entry and the
// bytes produced on return. Nothing lives longer than a call: keys, schedules and chaining values come from the caller
// and go back to the caller's buffers. After a failure the output has no meaning.
//
// Results, in the whole engine:
//
//   operation        0 for success, or a code below. Operations with stages add 1000 for a failure in Init, 2000 in Update,
//                    3000 in Final; ZIRC_MEMORY_ERROR for a key pair has no offset.
//   stage, slot      0 for success; 1 for failure, with the code in the context
//   other routines   0 or more for success, negative for failure. The number says more only where the declaration tells
//                    what it is, for instance the length of the output.
//   bool             the answer to a question
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

// Fills the output. A seed is first copied over the output, again and again, and so goes into the result. No stages.
int ZIRC_GenerateRandom(int nAlgID, unsigned char* output, int outputLength, const unsigned char* seed, int seedLength);

// The key schedule of a user key. No stages.
int ZIRC_GenerateKey(unsigned char* schedule, int* scheduleLength, int nAlgID, const unsigned char* userKey, int userKeyLength);

// Symmetric class: the key is a schedule, and on success the iv becomes the chaining value for the next message. Room for the
// input and one block more is always enough; a lack of room is a failure before anything is written behind it. Asymmetric
// class: the key is a blob in DER, and the input is that of one RSA operation.
int ZIRC_EncryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType);
int ZIRC_DecryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType);

int ZIRC_DigestData(int nAlgID, unsigned char* output, int* outputLength, const unsigned char* input, int inputLength);

int ZIRC_GenerateMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength);

// The XOR of a chain of MACs: of a first link, and of `furtherLinks` more, each of which is the MAC of the one before it: the
// loop of PBKDF2 (RFC 8018, 5.2). A link has the length of the MAC. Several first links, one behind the other, give as many
// chains, which take less time together; the length is that of all first links, and of the output.
int ZIRC_ChainMAC(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* firstLinks, int linksLength, int furtherLinks);

// The room of the output is not checked: it must hold the modulus, or the DER of a KCDSA signature. A signature with the primes
// of an RSA key is verified with the public exponent of the key, and fails in Final if it does not hold. With `isVerifiedNext`
// that may be left out, since the caller verifies the signature before anybody else gets it.
int ZIRC_SignData(const unsigned char* key, int keyLength, int nAlgID, unsigned char* output, int* outputLength,
                  const unsigned char* input, int inputLength, bool isVerifiedNext = false);
int ZIRC_VerifyData(const unsigned char* key, int keyLength, int nAlgID, const unsigned char* signature, int signatureLength,
                    const unsigned char* input, int inputLength);

// A text such as "Update stage; Invalid key value.(2107)", terminated; empty for an unknown code. It is a value: no call changes
// another one's text, and none allocates, as memory of a thread would in a library that is loaded late.
struct ZIRC_ErrorText {
    char text[99];
};
ZIRC_ErrorText ZIRC_GetErrorText(int code);

} // namespace vrno
