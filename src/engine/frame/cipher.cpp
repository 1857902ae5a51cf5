// ZIRC_EncryptData, ZIRC_DecryptData and ZIRC_GenerateKey.
#include "engine/frame/operation.h"
#include "engine/seed/padding.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace vrno {

// ---- setting up, the same for both directions ----

int ZIRC_EncryptInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID, int nEncMode,
                     const unsigned char* iv, int ivLength)
{
    if (bindCipher(context, nAlgID, nEncMode) > 0) return 1;
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    const Sizes& sizes = context.sizes;
    if (context.nClass == ZIRC_CLASS_SYMMETRIC) {
        if (keyLength < sizes.nKeyLen) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
        if (!iv || ivLength < sizes.nIvLen) return ZIRC_SetError(context, ZIRC_INVALID_INIT_VECTOR);
        std::memcpy(context.iv, iv, static_cast<std::size_t>(sizes.nIvLen));
    } else {
        const bool isPrivate = nEncMode == ZIRC_MODE_PRIVATE_KEY;
        if (!isPrivate && nEncMode != ZIRC_MODE_PUBLIC_KEY) return ZIRC_SetError(context, ZIRC_INVALID_MODE);
        if (keyLength < (isPrivate ? sizes.nMinPrivateKeyLen : sizes.nMinPublicKeyLen)) {
            return ZIRC_SetError(context, ZIRC_INVALID_KEY);
        }
    }
    context.nBuffered = 0;
    return 0;
}

int ZIRC_DecryptInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID, int nEncMode,
                     const unsigned char* iv, int ivLength)
{
    return ZIRC_EncryptInit(context, key, keyLength, nAlgID, nEncMode, iv, ivLength);
}

// ---- taking data in ----

namespace {

using CipherSlot = decltype(Slots::fnEncrypt);

// What the two directions differ in. Decryption keeps one chunk back, so that the last one meets its padding in Final.
struct Direction {
    CipherSlot run;
    bool keepsLastChunk;
    bool publicKey; // which key of a pair it takes
};

int loadKey(ZIRC_Context& context, const unsigned char* key, int keyLength, bool publicKey)
{
    const Slots& slots = context.slots;
    const auto load = context.nClass == ZIRC_CLASS_SYMMETRIC ? slots.fnSetKey
                      : publicKey                            ? slots.fnSetPublicKey
                                                             : slots.fnSetPrivateKey;
    return runSlot(context, load, key, keyLength) > 0 ? ZIRC_SetError(context, ZIRC_INVALID_KEY) : 0;
}

// Lets input wait in stagingBuffer, where it fits: all that there is, or up to `limit` bytes in the buffer.
void stage(ZIRC_Context& context, const unsigned char*& input, int& left, int limit)
{
    const int count = std::min(left, limit - context.nBuffered);
    std::memcpy(context.stagingBuffer + context.nBuffered, input, static_cast<std::size_t>(count));
    context.nBuffered += count;
    input += count;
    left -= count;
}

// Runs the primitive over `length` bytes and moves the output on.
int emit(ZIRC_Context& context, CipherSlot run, int mode, unsigned char*& output, int& produced, const unsigned char* input,
         int length)
{
    int count = 0;
    if (runSlot(context, run, mode, output, &count, input, length) > 0) return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    output += count;
    produced += count;
    return 0;
}

// The primitive gets whole chunks: from stagingBuffer where input waits there, and straight from the input where not.
int runChunks(ZIRC_Context& context, const Direction& direction, int mode, unsigned char* output, int* outputLength,
              const unsigned char* input, int left)
{
    const int chunk = (stagingLength / context.sizes.nInputBlockLen - 1) * context.sizes.nInputBlockLen;
    const int kept = direction.keepsLastChunk ? 1 : 0; // a chunk runs when at least this much comes behind it
    const std::int64_t whole = (std::int64_t{left} + context.nBuffered - kept) / chunk * chunk;
    if (*outputLength < whole) return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    int produced = 0;
    while (left >= chunk + kept - context.nBuffered) {
        if (context.nBuffered > 0) {
            stage(context, input, left, chunk);
            if (emit(context, direction.run, mode, output, produced, context.stagingBuffer, chunk) > 0) return 1;
            context.nBuffered = 0;
        } else {
            const int run = (left - kept) / chunk * chunk;
            if (emit(context, direction.run, mode, output, produced, input, run) > 0) return 1;
            input += run;
            left -= run;
        }
    }
    stage(context, input, left, chunk);
    *outputLength = produced;
    return 0;
}

int update(ZIRC_Context& context, const Direction& direction, unsigned char* key, int keyLength, int mode, unsigned char* output,
           int* outputLength, const unsigned char* input, int inputLength)
{
    if (!output || !input) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    if (inputLength < 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    if (direction.keepsLastChunk && inputLength % context.sizes.nOutputBlockLen != 0) {
        return ZIRC_SetError(context, ZIRC_INVALID_ENCRYPTED_DATA);
    }
    if (*outputLength < inputLength) return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    if (loadKey(context, key, keyLength, direction.publicKey) > 0) return 1;
    if (context.nClass == ZIRC_CLASS_ASYMMETRIC) {
        if (inputLength > stagingLength - context.nBuffered) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
        stage(context, input, inputLength, stagingLength);
        return 0;
    }
    if (runChunks(context, direction, mode, output, outputLength, input, inputLength) > 0) return 1;
    std::memcpy(key, &context.keyArea, static_cast<std::size_t>(context.sizes.nKeyLen));
    return 0;
}

// ---- finishing ----

int checkOutput(ZIRC_Context& context, const unsigned char* output, int room, int needed)
{
    if (!output) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    if (room < needed) return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    return 0;
}

int pad(ZIRC_Context& context, int nPaddintType)
{
    switch (padBuffer(context.stagingBuffer, &context.nBuffered, context.sizes.nInputBlockLen, nPaddintType)) {
    case 0:
        return 0;
    case -1:
        return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    default:
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
}

// Runs the primitive over what waits. The symmetric class gives as much as it takes, and must have the room for it.
int finish(ZIRC_Context& context, CipherSlot run, int mode, unsigned char* output, int* outputLength)
{
    if (context.nClass == ZIRC_CLASS_SYMMETRIC && checkOutput(context, output, *outputLength, context.nBuffered) > 0) return 1;
    int count = *outputLength;
    if (runSlot(context, run, mode, output, &count, context.stagingBuffer, context.nBuffered) > 0) {
        return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    }
    *outputLength = count;
    return 0;
}

} // namespace

int ZIRC_EncryptUpdate(ZIRC_Context& context, unsigned char* key, int keyLength, int nEncMode, unsigned char* output,
                       int* outputLength, const unsigned char* input, int inputLength)
{
    const Direction encryption{context.slots.fnEncrypt, false, nEncMode != ZIRC_MODE_PRIVATE_KEY};
    return update(context, encryption, key, keyLength, nEncMode, output, outputLength, input, inputLength);
}

int ZIRC_DecryptUpdate(ZIRC_Context& context, unsigned char* key, int keyLength, int nEncMode, unsigned char* output,
                       int* outputLength, const unsigned char* input, int inputLength)
{
    const Direction decryption{context.slots.fnDecrypt, true, nEncMode == ZIRC_MODE_PUBLIC_KEY};
    return update(context, decryption, key, keyLength, nEncMode, output, outputLength, input, inputLength);
}

int ZIRC_EncryptFinal(ZIRC_Context& context, int nEncMode, unsigned char* output, int* outputLength, int nPaddintType)
{
    if (checkOutput(context, output, *outputLength, context.sizes.nOutputBlockLen) > 0) return 1;
    if (context.nClass == ZIRC_CLASS_SYMMETRIC) {
        if (pad(context, nPaddintType) > 0) return 1;
        if (context.nBuffered == 0) {
            *outputLength = 0;
            return 0;
        }
    }
    return finish(context, context.slots.fnEncrypt, nEncMode, output, outputLength);
}

int ZIRC_DecryptFinal(ZIRC_Context& context, int nEncMode, unsigned char* output, int* outputLength, int nPaddintType)
{
    if (checkOutput(context, output, *outputLength, context.sizes.nOutputBlockLen) > 0) return 1;
    if (context.nBuffered == 0) {
        *outputLength = 0;
        return 0;
    }
    if (finish(context, context.slots.fnDecrypt, nEncMode, output, outputLength) > 0) return 1;
    if (unpadBuffer(output, outputLength, context.sizes.nInputBlockLen, nPaddintType) < 0) {
        return ZIRC_SetError(context, ZIRC_INVALID_ENCRYPTED_DATA);
    }
    return 0;
}

// ---- whole operations ----

namespace {

using UpdateStage = decltype(&ZIRC_EncryptUpdate);
using FinalStage = decltype(&ZIRC_EncryptFinal);

int wholeCipher(UpdateStage updateStage, FinalStage finalStage, unsigned char* key, int keyLength, int nAlgID, int nEncMode,
                unsigned char* output, int* outputLength, const unsigned char* input, int inputLength, unsigned char* iv,
                int ivLength, int nPaddintType)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    const int room = *outputLength;
    int produced = room;
    const int result = stages(
        *context,
        [&](ZIRC_Context& c) {
            if (ZIRC_EncryptInit(c, key, keyLength, nAlgID, nEncMode, iv, ivLength) > 0) return 1;
            const bool countable = inputLength <= INT_MAX - c.sizes.nInputBlockLen; // with a block of padding behind it
            return countable ? 0 : ZIRC_SetError(c, ZIRC_INVALID_DATA);
        },
        [&](ZIRC_Context& c) { return updateStage(c, key, keyLength, nEncMode, output, &produced, input, inputLength); },
        [&](ZIRC_Context& c) {
            const bool symmetric = c.nClass == ZIRC_CLASS_SYMMETRIC;
            const int before = symmetric ? produced : 0; // the asymmetric class has written nothing yet
            int last = room - before;
            if (finalStage(c, nEncMode, output ? output + before : nullptr, &last, nPaddintType) > 0) return 1;
            *outputLength = before + last;
            return 0;
        });
    if (result == 0 && context->nClass == ZIRC_CLASS_SYMMETRIC) {
        std::memcpy(key, &context->keyArea, static_cast<std::size_t>(context->sizes.nKeyLen));
        std::memcpy(iv, context->iv, static_cast<std::size_t>(context->sizes.nIvLen));
    }
    return result;
}

} // namespace

int ZIRC_EncryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType)
{
    return wholeCipher(ZIRC_EncryptUpdate, ZIRC_EncryptFinal, key, keyLength, nAlgID, nEncMode, output, outputLength, input,
                       inputLength, iv, ivLength, nPaddintType);
}

int ZIRC_DecryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType)
{
    return wholeCipher(ZIRC_DecryptUpdate, ZIRC_DecryptFinal, key, keyLength, nAlgID, nEncMode, output, outputLength, input,
                       inputLength, iv, ivLength, nPaddintType);
}

int ZIRC_GenerateKey(unsigned char* schedule, int* scheduleLength, int nAlgID, const unsigned char* userKey, int userKeyLength)
{
    const OwnedContext context = newContext();
    if (!context) return ZIRC_MEMORY_ERROR;
    if (bindCipher(*context, nAlgID, ZIRC_MODE_CBC) > 0) return context->nError;
    const Sizes& sizes = context->sizes;
    if (!context->slots.fnGenerateKey) return ZIRC_INVALID_ALGORITHM; // the asymmetric class has no schedules
    if (!schedule) return ZIRC_INVALID_KEY_POINTER;
    if (*scheduleLength < sizes.nKeyLen) return ZIRC_NOT_ENOUGH_BUFFER;
    if (!userKey) return ZIRC_INVALID_DATA_POINTER;
    if (userKeyLength < sizes.nUserKeyLen) return ZIRC_INVALID_DATA;
    if (context->slots.fnGenerateKey(*context, schedule, userKey) > 0) return ZIRC_STAGED_OPERATION_FAILED;
    *scheduleLength = sizes.nKeyLen;
    return 0;
}

} // namespace vrno
