// Records, and the engine's own form of keys.
#include "targets.h"

#include "ASN1Pkix/keys/PPrivateKey.h"
#include "ASN1Pkix/records/RAttribute.h"
#include "ASN1Pkix/records/RCertificate.h"
#include "ASN1Pkix/records/RCms.h"
#include "ASN1Pkix/records/RForeignRecipients.h"
#include "ASN1Pkix/records/RKeys.h"
#include "ASN1Pkix/records/RPbe.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "engine/kcdsa/kcdsa.h"
#include "engine/rsa/rsa.h"

#include <memory>

using namespace vrno;

namespace fuzz {

void tbs(Octets input) { roundTrip<RTBSCertificate>(input); }

// Of keys, recipients and messages.
void records(Octets input)
{
    roundTripOfOne<RPrivateKeyInfo, REncryptedPrivateKeyInfo, RPBEParameter, RPBES2_params, RPBKDF2_params, RRSAPrivateKey,
                   RRSAPublicKey, RKCDSAParameters, RAttributes, RIssuerAndSerialNumber, RRecipientIdentifier,
                   RKeyTransRecipientInfo, RRecipientInfo, RRecipientInfos, ROriginatorInfo, REncryptedContentInfo,
                   RKeyAgreeRecipientInfo, RKEKRecipientInfo>(input);
}

// The random value, put into a key: a second time it changes nothing, and a failure leaves the key as it was.
void random_value(Octets input)
{
    ByteString value = copy(takePiece(input)), key = copy(input);
    PPrivateKey util, again;
    const int code = util.setRandomNumber(key, value);
    if (code > 0) {
        EXPECT_EQ(bytes(key), string(input));
    }
    if (code > 0 || input[0] >= 0x40 || std::any_of(input.begin(), input.end(), isOddTag)) return;
    const std::string once = bytes(key);
    EXPECT_EQ(again.setRandomNumber(key, value), 0);
    EXPECT_EQ(bytes(key), once);
}

// A blob that is read is written, and that one is written so again.
template <class Key, auto read, auto write> static void rewrite(Octets blob)
{
    unsigned char first[4096], second[4096];
    const auto key = std::make_unique<Key>(), again = std::make_unique<Key>();
    if (read(*key, blob.data(), static_cast<int>(blob.size())) < 0) return;
    const int length = write(*key, first, sizeof first);
    ASSERT_GT(length, 0);
    ASSERT_EQ(read(*again, first, length), 0);
    ASSERT_EQ(write(*again, second, sizeof second), length);
    EXPECT_TRUE(std::equal(first, first + length, second));
}
void blobs(Octets input)
{
    rewrite<ZIRC_RsaKey, rsaReadPublicKey, rsaWritePublicKey>(input);
    rewrite<ZIRC_RsaKey, rsaReadPrivateKey, rsaWritePrivateKey>(input);
    rewrite<ZIRC_KcdsaKey, kcdsaReadPublicKey, kcdsaWritePublicKey>(input);
    rewrite<ZIRC_KcdsaKey, kcdsaReadPrivateKey, kcdsaWritePrivateKey>(input);
}

} // namespace fuzz
