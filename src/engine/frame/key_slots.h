// What the slots of RSA and KCDSA share. A scheme is a type with
//
//   Key                               its key record
//   area                              the record's place in KeyPair
//   readPublicKey, readPrivateKey     from a blob
//   writePublicKey, writePrivateKey   to a blob
#pragma once

#include "base/wipe.h"
#include "engine/frame/context.h"

#include <new>

namespace vrno {

// An empty key in the context; null, and ZIRC_MEMORY_ERROR set, when there is no memory for it.
template <class Scheme> typename Scheme::Key* newKey(ZIRC_Context& context, bool isPrivate)
{
    if (!context.keyPair) context.keyPair.reset(new (std::nothrow) KeyPair);
    if (!context.keyPair) {
        ZIRC_SetError(context, ZIRC_MEMORY_ERROR);
        return nullptr;
    }
    context.hasPrivateKey = isPrivate;
    return new (&(*context.keyPair.*Scheme::area)) typename Scheme::Key;
}

template <class Scheme, auto read, bool isPrivate> int setPairKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    typename Scheme::Key* const key = newKey<Scheme>(context, isPrivate);
    if (!key) return 1;
    return read(*key, blob, length) == 0 ? 0 : ZIRC_SetError(context, ZIRC_ASN1_OPERATION_FAILED);
}

template <class Scheme> int setPublicKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    return setPairKey<Scheme, Scheme::readPublicKey, false>(context, blob, length);
}

template <class Scheme> int setPrivateKey(ZIRC_Context& context, const unsigned char* blob, int length)
{
    return setPairKey<Scheme, Scheme::readPrivateKey, true>(context, blob, length);
}

// The two blobs of a generated key.
template <class Scheme>
int writeKeyPair(ZIRC_Context& context, const typename Scheme::Key& key, unsigned char* publicBlob, int* publicLength,
                 unsigned char* privateBlob, int* privateLength)
{
    const int publicWritten = Scheme::writePublicKey(key, publicBlob, *publicLength);
    const int privateWritten = Scheme::writePrivateKey(key, privateBlob, *privateLength);
    if (publicWritten < 0 || privateWritten < 0) {
        wipe(privateBlob, static_cast<std::size_t>(*privateLength));
        return ZIRC_SetError(context, ZIRC_NOT_ENOUGH_BUFFER);
    }
    *publicLength = publicWritten;
    *privateLength = privateWritten;
    return 0;
}

// The result of an encryption, a decryption or a signature: the length of the output, or a negative number.
inline int outputResult(ZIRC_Context& context, int length, int* outputLength)
{
    if (length < 0) return ZIRC_SetError(context, ZIRC_STAGED_OPERATION_FAILED);
    *outputLength = length;
    return 0;
}

// The result of a verification: negative when the signature does not hold.
inline int verifyResult(ZIRC_Context& context, int result) { return result < 0 ? ZIRC_SetError(context, ZIRC_VERIFY_FAIL) : 0; }

} // namespace vrno
