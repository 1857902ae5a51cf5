// RSA as an algorithm of the engine.
#include "engine/frame/key_slots.h"
#include "engine/frame/slots.h"
#include "engine/rsa/rsa.h"

namespace vrno {

namespace {

struct Rsa {
    using Key = ZIRC_RsaKey;
    static constexpr Key KeyPair::*area = &KeyPair::rsa;
    static constexpr auto readPublicKey = rsaReadPublicKey, readPrivateKey = rsaReadPrivateKey;
    static constexpr auto writePublicKey = rsaWritePublicKey, writePrivateKey = rsaWritePrivateKey;
};

// Whether the output has room for the modulus. The key decides its size, which may be more than that of the id's row.
bool hasRoom(const ZIRC_Context& context, const int* outputLength)
{
    return *outputLength >= (bnBits(context.keyPair->rsa.n) + 7) / 8;
}

// ---- PKCS#1 v1.5 ----

using Routine = int (*)(const ZIRC_RsaKey&, unsigned char*, const unsigned char*, int);

// Encryption or decryption, by the key that the mode says.
template <Routine withPublicKey, Routine withPrivateKey>
int pkcs1Cipher(ZIRC_Context& context, int mode, unsigned char* output, int* outputLength, const unsigned char* input, int length)
{
    if (!hasRoom(context, outputLength)) return 1;
    const Routine run = mode == ZIRC_MODE_PUBLIC_KEY ? withPublicKey : withPrivateKey;
    return outputResult(context, run(context.keyPair->rsa, output, input, length), outputLength);
}

int pkcs1Sign(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    const Routine run = context.isVerifiedNext ? rsaPrivateEncryptUnverified : rsaPrivateEncrypt;
    const int length = run(context.keyPair->rsa, output, context.stagingBuffer, context.nBuffered);
    return outputResult(context, length, outputLength);
}

int pkcs1Verify(ZIRC_Context& context, const unsigned char* signature, int length)
{
    return verifyResult(context, rsaVerifyPkcs1(context.keyPair->rsa, context.stagingBuffer, context.nBuffered, signature, length));
}

template <class Digest> int digestInfoFinal(ZIRC_Context& context, unsigned char* output, int* length)
{
    unsigned char digest[Digest::size];
    int digestLength = 0;
    digestFinal<Digest>(context, digest, &digestLength);
    *length = rsaDigestInfo(output, context.nHashId, digest, digestLength);
    return 0;
}

// ---- OAEP and PSS, with an empty label and no salt ----

using LabelRoutine = int (*)(const ZIRC_RsaKey&, unsigned int, unsigned char*, const unsigned char*, int, const unsigned char*,
                             int);

// Encryption or decryption, which works in one mode only.
template <int onlyMode, LabelRoutine run>
int oaepCipher(ZIRC_Context& context, int mode, unsigned char* output, int* outputLength, const unsigned char* input, int length)
{
    if (mode != onlyMode || !hasRoom(context, outputLength)) return 1;
    return outputResult(context, run(context.keyPair->rsa, context.nHashId, output, input, length, nullptr, 0), outputLength);
}

int pssSign(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    const int length = rsaPssSign(context.keyPair->rsa, context.nHashId, output, context.stagingBuffer, context.nBuffered, 0);
    return outputResult(context, length, outputLength);
}

int pssVerify(ZIRC_Context& context, const unsigned char* signature, int length)
{
    return verifyResult(context, rsaPssVerify(context.keyPair->rsa, context.nHashId, context.stagingBuffer, context.nBuffered,
                                              signature, length, 0));
}

// ---- key generation ----

// The exponent of a parameter 0x02, a length of at most 4, and just that many octets; 65537 for any other.
unsigned int exponentOf(const unsigned char* parameter, int length)
{
    constexpr unsigned int usual = 0x10001;
    if (!parameter || length < 2 || parameter[0] != 0x02 || parameter[1] > 4 || length != 2 + parameter[1]) return usual;
    unsigned int exponent = 0;
    for (int i = 2; i < length; ++i) exponent = exponent << 8 | parameter[i];
    return exponent;
}

template <bool multiPrime>
int generateKeyPair(ZIRC_Context& context, unsigned char* publicBlob, int* publicLength, unsigned char* privateBlob,
                    int* privateLength, const unsigned char* parameter, int parameterLength)
{
    const unsigned int exponent = exponentOf(parameter, parameterLength);
    // An even exponent has the factor 2 in common with p - 1 of every prime p.
    if (exponent % 2 == 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    ZIRC_RsaKey* const made = newKey<Rsa>(context, true);
    if (!made) return 1;
    ZIRC_RsaKey& key = *made;
    const Sizes& sizes = context.sizes;
    const int result = multiPrime ? rsaGenerateMultiPrimeKeyPair(key, sizes.nKeyBits, exponent, sizes.nPrimeCount)
                                  : rsaGenerateKeyPair(key, sizes.nKeyBits, exponent);
    if (result < 0) return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    return writeKeyPair<Rsa>(context, key, publicBlob, publicLength, privateBlob, privateLength);
}

// ---- the constants ----

constexpr Slots pkcs1{.fnGenerateKeyPair = generateKeyPair<false>,
                      .fnSetPublicKey = setPublicKey<Rsa>,
                      .fnSetPrivateKey = setPrivateKey<Rsa>,
                      .fnEncrypt = pkcs1Cipher<rsaPublicEncrypt, rsaPrivateEncrypt>,
                      .fnDecrypt = pkcs1Cipher<rsaPublicDecrypt, rsaPrivateDecrypt>,
                      .fnSign = pkcs1Sign,
                      .fnVerify = pkcs1Verify};

template <class Digest> constexpr Slots withDigestInfo(Slots slots)
{
    slots = withDigest<Digest>(slots);
    slots.fnDigestFinal = digestInfoFinal<Digest>;
    return slots;
}

} // namespace

constexpr Slots rsaSlots = pkcs1;
constexpr Slots rsaMd5Slots = withDigestInfo<Md5Kind>(pkcs1);
constexpr Slots rsaSha1Slots = withDigestInfo<Sha1Kind>(pkcs1);
constexpr Slots rsaOaepPssSlots = withDigest<Sha1Kind>({.fnGenerateKeyPair = generateKeyPair<true>,
                                                        .fnSetPublicKey = setPublicKey<Rsa>,
                                                        .fnSetPrivateKey = setPrivateKey<Rsa>,
                                                        .fnEncrypt = oaepCipher<ZIRC_MODE_PUBLIC_KEY, rsaOaepEncrypt>,
                                                        .fnDecrypt = oaepCipher<ZIRC_MODE_PRIVATE_KEY, rsaOaepDecrypt>,
                                                        .fnSign = pssSign,
                                                        .fnVerify = pssVerify});

} // namespace vrno
