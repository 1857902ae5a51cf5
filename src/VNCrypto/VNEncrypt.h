// Encryption: SEED in CBC, RSA.
#pragma once

#include "base/Objects.h"

namespace vrno {

// Codes are those of VNCodes.h. A symmetric key has 16 bytes, and so has an IV. An RSA key is a blob in DER, and its padding is
// PKCS#1 v1.5 for every padding type. `in` must not be part of `out`. A failure leaves `out` unchanged. Failures of both
// directions, with encryption's number first:
//  1 algorithm, 3 mode, 4 padding not supported     18 13 the RSA operation
// 29 24 no memory for the key    30 25 the key schedule    31 26 no memory for the output    32 27 the cipher
class VNEncrypt : public VNObject {
public:
    static constexpr const char* className = "VNEncrypt";
    static constexpr int GENKEY_MAX_LEN = 1200; // bytes of the longest key schedule

    // A whole message. Key and IV stay unchanged.
    int EncryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, Octets in, ByteString& out, int nPaddingType);
    int DecryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, Octets in, ByteString& out, int nPaddingType);

    // The key schedule for the operations below; 3 when it cannot be made.
    int GenerateKey(int nAlgID, ByteString& key, ByteString& out);

    // One message of a chain under one key. Schedule and IV become those for the next message. 5 no memory for the output,
    // 9 the schedule is longer than GENKEY_MAX_LEN, 10 the cipher.
    int EncryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, Octets in, ByteString& out,
                             int nPaddingType);
    int DecryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, Octets in, ByteString& out,
                             int nPaddingType);

private:
    struct Direction;
    struct Job;
    struct EngineJob;
    static const Direction encryption, decryption;

    int mapCodes(const Job&, EngineJob&, Here at);
    int whole(const Direction&, const Job&, Here at);
    int publicKeyPath(const Direction&, const Job&, EngineJob&, Here at);
    int symmetricPath(const Direction&, const Job&, EngineJob&, Here at);
    int chained(const Direction&, const Job&, Here at);
    int outputFailure(int code, const ByteString& block, Here at);
    int cipherFailure(const Direction&, const EngineJob&, int code, int result, Here at);
};

} // namespace vrno
