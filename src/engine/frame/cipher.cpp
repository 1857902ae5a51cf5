// ZIRC_EncryptData, ZIRC_DecryptData and ZIRC_GenerateKey.
#include "engine/frame/operation.h"
#include "engine/seed/padding.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace vrno {

namespace {

// What the two directions differ in.
struct Direction {
    decltype(Slots::fnEncrypt) Slots::*run;
    bool keepsLastChunk; // for Final, which removes the padding
    decltype(&ZIRC_EncryptFinal) finalStage;
};
constexpr Direction encryption{&Slots::fnEncrypt, false, ZIRC_EncryptFinal};
constexpr Direction decryption{&Slots::fnDecrypt, true, ZIRC_DecryptFinal};

// The data of an operation; `outputLength` holds the room on entry.
struct Data {
    unsigned char* output;
    int* outputLength;
    const unsigned char* input;
    int inputLength;
};

// A whole operation, as its caller asks for it.
struct CipherJob {
    unsigned char* key;
    int keyLength;
    int nAlgID;
    int nEncMode;
    Data data;
    unsigned char* iv;
    int ivLength;
    int nPaddintType;
};

// The key that a mode uses. The asymmetric class has no modes but the two.
const KeyKind& keyKind(const ZIRC_Context& context, int mode)
{
    if (context.nClass == ZIRC_CLASS_SYMMETRIC) return symmetricKey;
    return mode == ZIRC_MODE_PUBLIC_KEY ? publicKey : privateKey;
}

} // namespace

// ---- Init ----

int ZIRC_EncryptInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID, int nEncMode,
                     const unsigned char* iv, int ivLength)
{
    if (bindCipher(context, nAlgID, nEncMode) > 0) return 1;
    if (!key) return ZIRC_SetError(context, ZIRC_INVALID_KEY_POINTER);
    const bool symmetric = context.nClass == ZIRC_CLASS_SYMMETRIC;
    if (!symmetric && nEncMode != ZIRC_MODE_PRIVATE_KEY && nEncMode != ZIRC_MODE_PUBLIC_KEY) {
        return ZIRC_SetError(context, ZIRC_INVALID_MODE);
    }
    if (keyLength < context.sizes.*keyKind(context, nEncMode).minLength) return ZIRC_SetError(context, ZIRC_INVALID_KEY);
    if (symmetric) {
        if (!iv || ivLength < context.sizes.nIvLen) return ZIRC_SetError(context, ZIRC_INVALID_INIT_VECTOR);
        std::memcpy(context.iv, iv, static_cast<std::size_t>(context.sizes.nIvLen));
    }
    context.nBuffered = 0;
    return 0;
}

int ZIRC_DecryptInit(ZIRC_Context& context, const unsigned char* key, int keyLength, int nAlgID, int nEncMode,
                     const unsigned char* iv, int ivLength)
{
    return ZIRC_EncryptInit(context, key, keyLength, nAlgID, nEncMode, iv, ivLength);
}

// ---- Update ----

namespace {

// The position of a run over the data.
struct Cursor {
    const unsigned char* input;
    int remaining; // bytes of input
    unsigned char* output;
    int produced = 0;
};

// Moves input to stagingBuffer: all that remains, or as much as fills the buffer up to `limit` bytes.
void stage(ZIRC_Context& context, Cursor& cursor, int limit)
{
    const int count = std::min(cursor.remaining, limit - context.nBuffered);
    std::memcpy(context.stagingBuffer + context.nBuffered, cursor.input, static_cast<std::size_t>(count));
    context.nBuffered += count;
    cursor.input += count;
    cursor.remaining -= count;
}

// Runs the primitive over `length` bytes, which are in the buffer or in the input, and advances the output.
int emit(ZIRC_Context& context, const Direction& direction, int mode, Cursor& cursor, const unsigned char* from, int length)
{
    int count = 0;
    if (runStagedSlot(context, direction.run, mode, cursor.output, &count, from, length) > 0) return 1;
    cursor.output += count;
    cursor.produced += count;
    return 0;
}

// The primitive gets whole chunks: from stagingBuffer when input waits there, else straight from the input.
int runChunks(ZIRC_Context& context, const Direction& direction, int mode, const Data& data)
{
    const int chunk = (stagingLength / context.sizes.nInputBlockLen - 1) * context.sizes.nInputBlockLen;
    const int kept = direction.keepsLastChunk ? 1 : 0; // a chunk runs when at least this many bytes follow it
    const std::int64_t whole = (std::int64_t{data.inputLength} + context.nBuffered - kept) / chunk * chunk;
    if (*data.outputLength < whole) return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    Cursor cursor{data.input, data.inputLength, data.output};
    while (cursor.remaining >= chunk + kept - context.nBuffered) {
        if (context.nBuffered > 0) {
            stage(context, cursor, chunk);
            if (emit(context, direction, mode, cursor, context.stagingBuffer, chunk) > 0) return 1;
            context.nBuffered = 0;
        } else {
            const int run = (cursor.remaining - kept) / chunk * chunk;
            if (emit(context, direction, mode, cursor, cursor.input, run) > 0) return 1;
            cursor.input += run;
            cursor.remaining -= run;
        }
    }
    stage(context, cursor, chunk);
    *data.outputLength = cursor.produced;
    return 0;
}

int update(ZIRC_Context& context, const Direction& direction, unsigned char* key, int keyLength, int mode, const Data& data)
{
    if (!data.output || !data.input) return ZIRC_SetError(context, ZIRC_INVALID_DATA_POINTER);
    if (data.inputLength < 0) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
    if (direction.keepsLastChunk && data.inputLength % context.sizes.nOutputBlockLen != 0) {
        return ZIRC_SetError(context, ZIRC_INVALID_ENCRYPTED_DATA);
    }
    if (*data.outputLength < data.inputLength) return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    if (setKey(context, keyKind(context, mode), key, keyLength) > 0) return 1;
    if (context.nClass == ZIRC_CLASS_ASYMMETRIC) {
        if (data.inputLength > stagingLength - context.nBuffered) return ZIRC_SetError(context, ZIRC_INVALID_DATA);
        Cursor cursor{data.input, data.inputLength, nullptr};
        stage(context, cursor, stagingLength);
        return 0;
    }
    if (runChunks(context, direction, mode, data) > 0) return 1;
    std::memcpy(key, &context.seedKey, static_cast<std::size_t>(context.sizes.nKeyLen));
    return 0;
}

} // namespace

int ZIRC_EncryptUpdate(ZIRC_Context& context, unsigned char* key, int keyLength, int nEncMode, unsigned char* output,
                       int* outputLength, const unsigned char* input, int inputLength)
{
    return update(context, encryption, key, keyLength, nEncMode, {output, outputLength, input, inputLength});
}

int ZIRC_DecryptUpdate(ZIRC_Context& context, unsigned char* key, int keyLength, int nEncMode, unsigned char* output,
                       int* outputLength, const unsigned char* input, int inputLength)
{
    return update(context, decryption, key, keyLength, nEncMode, {output, outputLength, input, inputLength});
}

// ---- Final ----

namespace {

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

// Runs the primitive over what waits in the buffer. The output of the symmetric class is as long as that.
int runBuffered(ZIRC_Context& context, const Direction& direction, int mode, unsigned char* output, int* outputLength)
{
    if (context.nClass == ZIRC_CLASS_SYMMETRIC && checkOutput(context, output, *outputLength, context.nBuffered) > 0) return 1;
    int count = *outputLength;
    if (runStagedSlot(context, direction.run, mode, output, &count, context.stagingBuffer, context.nBuffered) > 0) return 1;
    *outputLength = count;
    return 0;
}

} // namespace

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
    return runBuffered(context, encryption, nEncMode, output, outputLength);
}

int ZIRC_DecryptFinal(ZIRC_Context& context, int nEncMode, unsigned char* output, int* outputLength, int nPaddintType)
{
    if (checkOutput(context, output, *outputLength, context.sizes.nOutputBlockLen) > 0) return 1;
    if (context.nBuffered == 0) {
        *outputLength = 0;
        return 0;
    }
    if (runBuffered(context, decryption, nEncMode, output, outputLength) > 0) return 1;
    if (unpadBuffer(output, outputLength, context.sizes.nInputBlockLen, nPaddintType) < 0) {
        return ZIRC_SetError(context, ZIRC_INVALID_ENCRYPTED_DATA);
    }
    return 0;
}

// ---- whole operations ----

namespace {

int initialise(ZIRC_Context& context, const CipherJob& job)
{
    if (ZIRC_EncryptInit(context, job.key, job.keyLength, job.nAlgID, job.nEncMode, job.iv, job.ivLength) > 0) return 1;
    const int maxInput = INT_MAX - context.sizes.nInputBlockLen; // the length with a block of padding is an int, too
    return job.data.inputLength > maxInput ? ZIRC_SetError(context, ZIRC_INVALID_DATA) : 0;
}

// Final writes behind what Update has written, into the room that remains. In the symmetric class key and iv go back to the
// caller.
int finish(ZIRC_Context& context, const Direction& direction, const CipherJob& job, int produced)
{
    const bool symmetric = context.nClass == ZIRC_CLASS_SYMMETRIC;
    if (!symmetric) produced = 0;
    int last = *job.data.outputLength - produced;
    if (direction.finalStage(context, job.nEncMode, job.data.output + produced, &last, job.nPaddintType) > 0) return 1;
    *job.data.outputLength = produced + last;
    if (symmetric) {
        std::memcpy(job.key, &context.seedKey, static_cast<std::size_t>(context.sizes.nKeyLen));
        std::memcpy(job.iv, context.iv, static_cast<std::size_t>(context.sizes.nIvLen));
    }
    return 0;
}

int wholeCipher(const Direction& direction, const CipherJob& job)
{
    int produced = *job.data.outputLength;
    const Data data{job.data.output, &produced, job.data.input, job.data.inputLength};
    return stages([&](auto& c) { return initialise(c, job); },
                  [&](auto& c) { return update(c, direction, job.key, job.keyLength, job.nEncMode, data); },
                  [&](auto& c) { return finish(c, direction, job, produced); });
}

} // namespace

int ZIRC_EncryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType)
{
    const Data data{output, outputLength, input, inputLength};
    return wholeCipher(encryption, {key, keyLength, nAlgID, nEncMode, data, iv, ivLength, nPaddintType});
}

int ZIRC_DecryptData(unsigned char* key, int keyLength, int nAlgID, int nEncMode, unsigned char* output, int* outputLength,
                     const unsigned char* input, int inputLength, unsigned char* iv, int ivLength, int nPaddintType)
{
    const Data data{output, outputLength, input, inputLength};
    return wholeCipher(decryption, {key, keyLength, nAlgID, nEncMode, data, iv, ivLength, nPaddintType});
}

int ZIRC_GenerateKey(unsigned char* schedule, int* scheduleLength, int nAlgID, const unsigned char* userKey, int userKeyLength)
{
    ZIRC_Context context;
    if (bindCipher(context, nAlgID, ZIRC_MODE_CBC) > 0) return context.nError;
    const Sizes& sizes = context.sizes;
    if (context.nClass == ZIRC_CLASS_ASYMMETRIC) return ZIRC_INVALID_ALGORITHM; // which has no schedules
    if (!schedule) return ZIRC_INVALID_KEY_POINTER;
    if (*scheduleLength < sizes.nKeyLen) return ZIRC_NOT_ENOUGH_BUFFER;
    if (!userKey) return ZIRC_INVALID_DATA_POINTER;
    if (userKeyLength < sizes.nUserKeyLen) return ZIRC_INVALID_DATA;
    if (runSlot(context, &Slots::fnGenerateKey, schedule, userKey) > 0) return ZIRC_STAGED_OPERATION_FAILED;
    *scheduleLength = sizes.nKeyLen;
    return 0;
}

} // namespace vrno
