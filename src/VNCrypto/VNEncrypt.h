// Encryption: SEED in CBC, RSA.
#pragma once

#include "base/Objects.h"

namespace vrno {

// Codes are those of VNCodes.h. A symmetric key is 16 bytes, an IV too; for RSA the key is a blob in DER and the padding
// is PKCS#1 v1.5 whatever is asked for. Data come as a ByteString or as bytes that stay the caller's; `out` may not be
// `in`. A failure leaves `out` as it was. Failures of both directions, encryption's number first:
//  1 algorithm, 3 mode, 4 padding not supported     18 13 the RSA operation
// 29 24 no memory for the key    30 25 the key schedule    31 26 no memory for the output    32 27 the cipher
class VNEncrypt : public VNObject {
public:
    static constexpr const char* className = "VNEncrypt";
    static constexpr int GENKEY_MAX_LEN = 1200; // bytes of the longest key schedule

    // A whole message, from the key and the IV that are given; both stay as they are.
    int EncryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, ByteString& in, ByteString& out, int nPaddingType);
    int EncryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, const unsigned char* in, int inLength, ByteString& out,
                    int nPaddingType);
    int DecryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, ByteString& in, ByteString& out, int nPaddingType);
    int DecryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, const unsigned char* in, int inLength, ByteString& out,
                    int nPaddingType);

    // The key schedule that the calls below take; 3 when it cannot be made.
    int GenerateKey(int nAlgID, ByteString& key, ByteString& out);

    // One of a chain of messages over one key: schedule and IV are left ready for the next. 5 no memory for the output,
    // 9 the schedule is longer than GENKEY_MAX_LEN, 10 the cipher.
    int EncryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, ByteString& in, ByteString& out,
                             int nPaddingType);
    int EncryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, const unsigned char* in, int inLength,
                             ByteString& out, int nPaddingType);
    int DecryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, ByteString& in, ByteString& out,
                             int nPaddingType);
    int DecryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, const unsigned char* in, int inLength,
                             ByteString& out, int nPaddingType);

private:
    struct Direction;
    struct Plan;
    struct Input {
        const unsigned char* data;
        int length;
    };
    static const Direction encryption, decryption;

    int plan(int nAlgID, int nMode, int nPaddingType, Plan& plan, Here at);
    int publicKeyRoad(const Direction&, const Plan&, ByteString& key, ByteString& iv, Input in, ByteString& out, Here at);
    int symmetricRoad(const Direction&, const Plan&, ByteString& key, ByteString& iv, Input in, ByteString& out, Here at);
    int whole(const Direction&, int nAlgID, int nMode, ByteString& key, ByteString& iv, Input in, ByteString& out, int nPaddingType,
              Here at);
    int chained(const Direction&, int nAlgID, int nMode, ByteString& schedule, ByteString& iv, Input in, ByteString& out,
                int nPaddingType, Here at);
    int outputFailure(int code, const ByteString& block, Here at);
    int cipherFailure(const Direction&, const Plan&, int code, int result, Here at);
};

} // namespace vrno
