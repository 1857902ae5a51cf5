#include "engine/frame/rsa_slots.h"

#include "base/wipe.h"
#include "engine/frame/slots.h"
#include "engine/rsa/rsa.h"

#include <new>

namespace vrno {

// ---- keys ----

// An empty key in the context's area.
static ZIRC_RsaKey& newKey(ZIRC_Context& context)
{
    context.keyAreaUsed = sizeof(ZIRC_RsaKey);
    return *new (&context.keyArea.rsa) ZIRC_RsaKey;
}

static int setPublicKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    ZIRC_RsaKey& key = newKey(context);
    return rsaReadPublicKey(key, blob, length) ? 0 : ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
}

static int setPrivateKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    ZIRC_RsaKey& key = newKey(context);
    return rsaReadPrivateKey(key, blob, length) ? 0 : ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
}

// ---- what a routine gave, as a slot tells it ----

static int produced(ZIRC_Context& context, int length, int* outputLength)
{
    if (length < 0) return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    *outputLength = length;
    return 0;
}

// Whether the output has room for the modulus, whose size the key brings: it may be more than the id's row says.
static bool hasRoom(const ZIRC_Context& context, const int* outputLength)
{
    return *outputLength >= (bnBits(context.keyArea.rsa.n) + 7) / 8;
}

static int verified(ZIRC_Context& context, int result)
{
    return result < 0 ? ZIRC_SetError(context, ZIRC_VERIFY_FAIL) : 0;
}

// ---- PKCS#1 v1.5 ----

static int encrypt(ZIRC_Context& context, int mode, unsigned char* output, int* outputLength, const unsigned char* input,
                   int length)
{
    if (!hasRoom(context, outputLength)) return 1;
    const auto run = mode == ZIRC_MODE_PUBLIC_KEY ? rsaPublicEncrypt : rsaPrivateEncrypt;
    return produced(context, run(context.keyArea.rsa, output, input, length), outputLength);
}

static int decrypt(ZIRC_Context& context, int mode, unsigned char* output, int* outputLength, const unsigned char* input,
                   int length)
{
    if (!hasRoom(context, outputLength)) return 1;
    const auto run = mode == ZIRC_MODE_PUBLIC_KEY ? rsaPublicDecrypt : rsaPrivateDecrypt;
    return produced(context, run(context.keyArea.rsa, output, input, length), outputLength);
}

static int sign(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    return produced(context, rsaPrivateEncrypt(context.keyArea.rsa, output, context.stagingBuffer, context.nBuffered),
                    outputLength);
}

static int verify(ZIRC_Context& context, const unsigned char* signature, int length)
{
    return verified(context, rsaVerifyPkcs1(context.keyArea.rsa, context.stagingBuffer, context.nBuffered, signature, length));
}

static int digestInfoFinal(ZIRC_Context& context, unsigned char* output, int* length)
{
    const DigestKind& kind = context.nHashId == hashSha1 ? sha1Digest : md5Digest;
    unsigned char digest[20];
    int digestLength = 0;
    if (kind.slots.fnDigestFinal(context, digest, &digestLength) > 0) return 1;
    *length = rsaDigestInfo(output, context.nHashId, digest, digestLength);
    return 0;
}

// ---- OAEP and PSS, with an empty label and no salt ----

static int oaepEncrypt(ZIRC_Context& context, int mode, unsigned char* output, int* outputLength, const unsigned char* input,
                       int length)
{
    if (mode != ZIRC_MODE_PUBLIC_KEY || !hasRoom(context, outputLength)) return 1;
    return produced(context, rsaOaepEncrypt(context.keyArea.rsa, context.nHashId, output, input, length, nullptr, 0), outputLength);
}

static int oaepDecrypt(ZIRC_Context& context, int mode, unsigned char* output, int* outputLength, const unsigned char* input,
                       int length)
{
    if (mode != ZIRC_MODE_PRIVATE_KEY || !hasRoom(context, outputLength)) return 1;
    return produced(context, rsaOaepDecrypt(context.keyArea.rsa, context.nHashId, output, input, length, nullptr, 0), outputLength);
}

static int pssSign(ZIRC_Context& context, unsigned char* output, int* outputLength)
{
    const int length = rsaPssSign(context.keyArea.rsa, context.nHashId, output, context.stagingBuffer, context.nBuffered, 0);
    return produced(context, length, outputLength);
}

static int pssVerify(ZIRC_Context& context, const unsigned char* signature, int length)
{
    return verified(context, rsaPssVerify(context.keyArea.rsa, context.nHashId, context.stagingBuffer, context.nBuffered, signature,
                                          length, 0));
}

// ---- making keys ----

// The exponent of a parameter 0x02, a length of at most 4, and just that many octets; 65537 for any other.
static unsigned int exponentOf(const unsigned char* parameter, int length)
{
    constexpr unsigned int usual = 0x10001;
    if (!parameter || length < 2 || parameter[0] != 0x02 || parameter[1] > 4 || length != 2 + parameter[1]) return usual;
    unsigned int exponent = 0;
    for (int i = 2; i < length; ++i) exponent = exponent << 8 | parameter[i];
    return exponent;
}

using Generator = bool (*)(ZIRC_RsaKey&, int bits, unsigned int exponent, int primeCount);

static int generate(ZIRC_Context& context, Generator generator, unsigned char* publicBlob, int* publicLength,
                    unsigned char* privateBlob, int* privateLength, const unsigned char* parameter, int parameterLength)
{
    ZIRC_RsaKey& key = newKey(context);
    const unsigned int exponent = exponentOf(parameter, parameterLength);
    // No prime less one is without a factor in common with an even exponent.
    if (exponent % 2 == 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    if (!generator(key, context.sizes.nKeyBits, exponent, context.sizes.nPrimeCount)) {
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
    const int written = rsaWritePublicKey(key, publicBlob, *publicLength);
    const int secret = rsaWritePrivateKey(key, privateBlob, *privateLength);
    if (written < 0 || secret < 0) {
        wipe(privateBlob, static_cast<std::size_t>(*privateLength));
        return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    }
    *publicLength = written;
    *privateLength = secret;
    return 0;
}

static int generateKeyPair(ZIRC_Context& context, unsigned char* publicBlob, int* publicLength, unsigned char* privateBlob,
                           int* privateLength, const unsigned char* parameter, int parameterLength)
{
    const Generator twoPrimes = [](ZIRC_RsaKey& key, int bits, unsigned int exponent, int) {
        return rsaGenerateKeyPair(key, bits, exponent);
    };
    return generate(context, twoPrimes, publicBlob, publicLength, privateBlob, privateLength, parameter, parameterLength);
}

static int generateMultiPrime(ZIRC_Context& context, unsigned char* publicBlob, int* publicLength, unsigned char* privateBlob,
                              int* privateLength, const unsigned char* parameter, int parameterLength)
{
    return generate(context, rsaGenerateMultiPrimeKeyPair, publicBlob, publicLength, privateBlob, privateLength, parameter,
                    parameterLength);
}

const Slots rsaSlots{.fnGenerateKeyPair = generateKeyPair,
                     .fnSetPublicKey = setPublicKey,
                     .fnSetPrivateKey = setPrivateKey,
                     .fnEncrypt = encrypt,
                     .fnDecrypt = decrypt,
                     .fnSign = sign,
                     .fnVerify = verify};
const Slots rsaDigestInfoSlots{.fnDigestFinal = digestInfoFinal};
const Slots rsaOaepPssSlots{.fnGenerateKeyPair = generateMultiPrime,
                            .fnEncrypt = oaepEncrypt,
                            .fnDecrypt = oaepDecrypt,
                            .fnSign = pssSign,
                            .fnVerify = pssVerify};

} // namespace vrno
