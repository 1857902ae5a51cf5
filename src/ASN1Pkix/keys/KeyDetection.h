// What the detection of private and of public keys shares: which algorithm a key is of, how it becomes flat, the form that
// the engine takes, and which code its signatures have.
#pragma once

#include "base/Objects.h"

#include <algorithm>
#include <climits>

namespace vrno {

enum class KeyFamily { rsa, kcdsa, refused };

struct Refusal {
    int code;
    const char* message;
};

// One side of a key pair: in whose name a failure is told, with which codes and words.
struct KeySide {
    const char* className;
    const char* detection; // the method's name
    const char* oidName;
    Refusal dsa, diffieHellman, elliptic, unknown; // `unknown` takes the identifier

    const char* rsaName;
    Refusal rsaSize; // takes the bits
    int rsaEncodeCode;

    int domainCode; // of KCDSA parameters that cannot be read
    const char* hashName;

    const char* signature; // the method's name
    int pssCode, hashCode1024, hashCode2048;
};
extern const KeySide privateSide, publicSide;

inline constexpr const char* keySizeName = "nPrivateKey"; // of the frame, on both sides

// The family by the text of the identifier; for a refused one the code, with the frame laid.
KeyFamily keyFamily(PObject& object, const KeySide& side, const ByteString& oid, int* code);

// Whether the private key alone is not enough to sign with: KCDSA, and DSA, which is refused only later.
bool needsPublicKey(const ByteString& oid);

// The facade's code of RSA with a modulus of so many octets; 0 for a size that is not supported.
int rsaKeyCode(int modulusLength);

// The codes are those of the side; `Record` is its RSA record.
template <class Record> int flattenRsa(PObject& object, const KeySide& side, int* keyCode, ByteString& key, ByteString& flatKey)
{
    const FailuresOf failed{object, side.className, side.detection};
    Record record;
    if (record.fromASN1Object(key) > 0) return failed(1, side.rsaName, record);
    const int length = record.getModulus().getLength(); // 0 for a negative one
    if (record.outOfMemory()) return failed(side.rsaEncodeCode, side.rsaName, record);
    *keyCode = rsaKeyCode(length);
    if (*keyCode == 0) {
        return failed(side.rsaSize.code, keySizeName, formatted(side.rsaSize.message, 8 * std::min(length, INT_MAX / 8)));
    }
    flatKey = record.toASN1Object();
    if (record.getLastError() > 0) return failed(side.rsaEncodeCode, side.rsaName, record);
    return flatKey.isOutOfMemory() ? failed.memory(side.rsaEncodeCode, side.rsaName) : 0;
}

// KCDSA parameters reduced to p, q and g, where p and the digest are of the supported kind.
int kcdsaDomain(PObject& object, const KeySide& side, ByteString& parameters, int hashAlg, ByteString& domain);

// The facade's code of RSA signatures with such a key. Most of those told here the facade refuses: it knows SHA-1 with
// PKCS #1 v1.5.
int rsaSignatureCode(PObject& object, const KeySide& side, int keyCode, int hashAlg, int pss, int* signatureCode);

} // namespace vrno
