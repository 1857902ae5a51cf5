// What the detection of private and of public keys shares: the algorithm of a key, the flat key, which is the form that the
// engine takes, and the code of its signatures.
#pragma once

#include "base/Objects.h"

#include <algorithm>
#include <climits>

namespace vrno {

enum class KeyFamily { rsa, kcdsa, dsa, diffieHellman, elliptic, unknown };

struct Refusal {
    int code;
    const char* message;
};

// One side of a key pair: the names, codes and messages of its failures.
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

KeyFamily keyFamily(const ByteString& oid);
// Fails for a family that is not supported.
int refuseFamily(PObject& object, const KeySide& side, KeyFamily family, const ByteString& oid);

// The facade's code of RSA by the bytes of the modulus; 0 if that size is not supported.
int rsaKeyCode(int modulusLength);

// At most INT_MAX.
inline int bitLength(int bytes) { return 8 * std::min(bytes, INT_MAX / 8); }

// The codes are those of the side; `Record` is its RSA record.
template <class Record> int flattenRsa(PObject& object, const KeySide& side, int* keyCode, ByteString& key, ByteString& flatKey)
{
    const FailuresOf failed{object, side.className, side.detection};
    Record record;
    if (record.fromASN1Object(key) > 0) return failed(1, side.rsaName, record);
    const int length = record.getModulus().getLength(); // 0 for a negative one
    if (record.outOfMemory()) return failed(side.rsaEncodeCode, side.rsaName, record);
    *keyCode = rsaKeyCode(length);
    if (*keyCode == 0) return failed(side.rsaSize.code, keySizeName, formatted(side.rsaSize.message, bitLength(length)));
    flatKey.swap(record.toASN1Object());
    return record.getLastError() > 0 ? failed(side.rsaEncodeCode, side.rsaName, record) : 0;
}

// KCDSA parameters reduced to p, q and g. Fails for a p of another size than 1024 bits and for another digest than SHA-1.
int kcdsaDomain(PObject& object, const KeySide& side, ByteString& parameters, int hashAlg, ByteString& domain);

// The facade's code of signatures with such a key; 0 if there is none. The facade refuses those of RSA that are not SHA-1 with
// PKCS #1 v1.5.
int signatureCode(int keyCode, int hashAlg, bool isPss);
// Fails for an RSA key that has no such code.
int refuseSignature(PObject& object, const KeySide& side, int keyCode, int hashAlg, bool isPss);

} // namespace vrno
