// The record of one public operation, its slots, the binders and the stages.
#pragma once

#include "base/wipe.h"
#include "engine/digest/hash_id.h"
#include "engine/digest/hmac.h"
#include "engine/digest/md5.h"
#include "engine/digest/sha1.h"
#include "engine/frame/zirc.h"
#include "engine/kcdsa/kcdsa.h"
#include "engine/rsa/rsa.h"
#include "engine/seed/seed.h"

#include <cstddef>
#include <memory>

namespace vrno {

struct ZIRC_Context;

enum ZIRC_Class : unsigned int { ZIRC_CLASS_SYMMETRIC = 0, ZIRC_CLASS_ASYMMETRIC = 1 };

// The routines through which the frame reaches an algorithm. A null slot is one that the algorithm does not have.
struct Slots {
    // Output, its length, seed, its length.
    int (*fnRandom)(ZIRC_Context&, unsigned char*, int, const unsigned char*, int) = nullptr;
    // Schedule, user key.
    int (*fnGenerateKey)(ZIRC_Context&, unsigned char*, const unsigned char*) = nullptr;
    // Public blob, its in/out length, private blob, its in/out length, exponent parameter, its length.
    int (*fnGenerateKeyPair)(ZIRC_Context&, unsigned char*, int*, unsigned char*, int*, const unsigned char*, int) = nullptr;
    // Into the context, from a schedule or a blob and its length.
    int (*fnSetKey)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    int (*fnSetPublicKey)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    int (*fnSetPrivateKey)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    // Mode, output, in/out length, input, its length.
    int (*fnEncrypt)(ZIRC_Context&, int, unsigned char*, int*, const unsigned char*, int) = nullptr;
    int (*fnDecrypt)(ZIRC_Context&, int, unsigned char*, int*, const unsigned char*, int) = nullptr;
    // Signature and its in/out length, of the digest in stagingBuffer.
    int (*fnSign)(ZIRC_Context&, unsigned char*, int*) = nullptr;
    int (*fnVerify)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    int (*fnDigestInit)(ZIRC_Context&) = nullptr;
    int (*fnDigestUpdate)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    int (*fnDigestFinal)(ZIRC_Context&, unsigned char*, int*) = nullptr;
    int (*fnMacInit)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    int (*fnMacUpdate)(ZIRC_Context&, const unsigned char*, int) = nullptr;
    int (*fnMacFinal)(ZIRC_Context&, unsigned char*, int*) = nullptr;
    // Output, first links, their length, count of further links.
    int (*fnMacChain)(ZIRC_Context&, unsigned char*, const unsigned char*, int, int) = nullptr;
};
inline constexpr Slots noSlots{};

// The size fields of an algorithm.
struct Sizes {
    int nKeyLen = 0;          // symmetric class: bytes of the schedule
    int nMinPublicKeyLen = 0; // least accepted lengths of key blobs; the parser does the real checking
    int nMinPrivateKeyLen = 0;
    int nUserKeyLen = 0; // bytes of user key that ZIRC_GenerateKey needs
    int nIvLen = 0;
    int nInputBlockLen = 0;  // block size; RSA: largest plaintext of one operation
    int nOutputBlockLen = 0; // block size; RSA: bytes of the modulus; digest or MAC: its size
    int nKeyBits = 0;        // bits of the modulus, or of p
    int nPrimeCount = 0;     // RSA: for key generation
};

inline constexpr int stagingLength = 1000;

// The numbers of a key pair, as the slots read them.
union KeyPair {
    ZIRC_RsaKey rsa;
    ZIRC_KcdsaKey kcdsa;

    KeyPair() {}
};

// What an operation works on. It has no meaning before a slot or a stage has set it.
struct ZIRC_State {
    union {
        SHA1_State sha1;
        MD5_State md5;
    } digestState;
    HMAC_State macState;
    SEED_Schedule seedKey;
    unsigned char iv[seedBlockLength];
    unsigned char stagingBuffer[stagingLength]; // input for the primitive, or the digest to be signed
};

// The context of one operation, which lives on its stack. A key pair is too long for that. What may be secret is wiped in the
// end.
struct ZIRC_Context : ZIRC_State {
    unsigned int nClass = ZIRC_CLASS_SYMMETRIC;
    Sizes sizes;
    unsigned int nHashId = hashMd5;
    const Slots* slots = &noSlots;
    int nBuffered = 0;                // bytes in stagingBuffer
    int nError = ZIRC_OK;             // last base code
    bool hasPrivateKey = false;       // keyPair was made for one
    bool isVerifiedNext = false;      // the caller of a signature verifies it
    std::unique_ptr<KeyPair> keyPair; // null before a slot has read a key

    ZIRC_Context() {}
    ZIRC_Context(const ZIRC_Context&) = delete;
    ZIRC_Context& operator=(const ZIRC_Context&) = delete;
    ~ZIRC_Context()
    {
        wipe(static_cast<ZIRC_State*>(this), sizeof(ZIRC_State));
        if (hasPrivateKey) wipe(keyPair.get(), sizeof *keyPair);
    }
};

// Stores a base code and returns 1, so that a failing path returns what this returns.
int ZIRC_SetError(ZIRC_Context& context, int code);

// A binder takes sizes and slots from the id's row, or refuses with ZIRC_INVALID_ALGORITHM.
int bindCipher(ZIRC_Context& context, int nAlgID, int mode); // ZIRC_INVALID_MODE for SEED in any mode but CBC
int bindHash(ZIRC_Context& context, int nAlgID);
int bindSignature(ZIRC_Context& context, int nAlgID);
int bindMAC(ZIRC_Context& context, int nAlgID);
int bindRandom(ZIRC_Context& context, int nAlgID);

// ---- the stages of the public operations ----

int ZIRC_EncryptInit(ZIRC_Context&, const unsigned char* key, int keyLength, int nAlgID, int nEncMode, const unsigned char* iv,
                     int ivLength);
int ZIRC_EncryptUpdate(ZIRC_Context&, unsigned char* key, int keyLength, int nEncMode, unsigned char* output, int* outputLength,
                       const unsigned char* input, int inputLength);
int ZIRC_EncryptFinal(ZIRC_Context&, int nEncMode, unsigned char* output, int* outputLength, int nPaddintType);
int ZIRC_DecryptInit(ZIRC_Context&, const unsigned char* key, int keyLength, int nAlgID, int nEncMode, const unsigned char* iv,
                     int ivLength);
int ZIRC_DecryptUpdate(ZIRC_Context&, unsigned char* key, int keyLength, int nEncMode, unsigned char* output, int* outputLength,
                       const unsigned char* input, int inputLength);
int ZIRC_DecryptFinal(ZIRC_Context&, int nEncMode, unsigned char* output, int* outputLength, int nPaddintType);
int ZIRC_DigestInit(ZIRC_Context&, int nAlgID);
int ZIRC_DigestUpdate(ZIRC_Context&, const unsigned char* input, int inputLength);
int ZIRC_DigestFinal(ZIRC_Context&, unsigned char* output, int* outputLength);
int ZIRC_MACInit(ZIRC_Context&, const unsigned char* key, int keyLength, int nAlgID);
int ZIRC_MACUpdate(ZIRC_Context&, const unsigned char* input, int inputLength);
int ZIRC_MACFinal(ZIRC_Context&, unsigned char* output, int* outputLength);
int ZIRC_SignInit(ZIRC_Context&, const unsigned char* key, int keyLength, int nAlgID);
int ZIRC_SignFinal(ZIRC_Context&, const unsigned char* key, int keyLength, unsigned char* output, int* outputLength);
int ZIRC_VerifyInit(ZIRC_Context&, const unsigned char* key, int keyLength, int nAlgID);
int ZIRC_VerifyFinal(ZIRC_Context&, const unsigned char* key, int keyLength, const unsigned char* signature, int signatureLength);

} // namespace vrno
