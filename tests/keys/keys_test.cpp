// Key objects, the test of a key pair, and items from a card.
#include "ASN1/ASN1Integer.h"
#include "ASN1Pkix/keys/PAlgorithmUtil.h"
#include "ASN1Pkix/keys/PCryptUtil.h"
#include "ASN1Pkix/keys/PPrivateKey.h"
#include "ASN1Pkix/keys/PPublicKey.h"
#include "engine/kcdsa/kcdsa.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/interface.h"
#include "support/openssl.h"

#include <openssl/rsa.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>

using namespace vrno;
using namespace test;

namespace {

// ---- key pairs ----

struct Pair {
    std::string privateKey, certificate;
    std::shared_ptr<EVP_PKEY> peer;
};

Pair makeRsa(unsigned bits)
{
    Pair pair{"", "", {EVP_RSA_gen(bits), Freed()}};
    const Certificate x(X509_new());
    X509_set_version(x.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(x.get()), 7);
    X509_gmtime_adj(X509_getm_notBefore(x.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(x.get()), 86400);
    X509_set_pubkey(x.get(), pair.peer.get());
    X509_sign(x.get(), pair.peer.get(), EVP_sha256());
    pair.certificate = encoded<X509>(i2d_X509, x.get());
    const std::unique_ptr<PKCS8_PRIV_KEY_INFO, Freed> info(EVP_PKEY2PKCS8(pair.peer.get()));
    pair.privateKey = encoded<PKCS8_PRIV_KEY_INFO>(i2d_PKCS8_PRIV_KEY_INFO, info.get());
    return pair;
}

const Pair& rsa(unsigned bits)
{
    static std::map<unsigned, Pair> pairs;
    return pairs.contains(bits) ? pairs[bits] : pairs[bits] = makeRsa(bits);
}

const std::string oidRsa = "06{2A864886F70D010101}", oidKcdsa = "06{2A831A8C9A440101}", oidKcdsa1 = "06{2A831A8C9A440115}",
                  oidDsa = "06{2A8648CE380401}";

std::string integer(const ZIRC_BN& number)
{
    std::string octets(bnBytes, '\0');
    octets.resize(static_cast<std::size_t>(bnToBytes(reinterpret_cast<unsigned char*>(octets.data()), number)));
    return "02{" + std::string(octets[0] & 0x80 ? "00" : "") + hex(octets) + "}";
}

std::string privateKeyInfo(const std::string& algorithm, const std::string& privateKey)
{
    return der("30{020100 30{" + algorithm + "} 04{" + privateKey + "}}");
}

// Pairs over one domain, which takes a second to make.
struct Kcdsa {
    ZIRC_KcdsaKey key;
    std::string x, y, domain, fullDomain;

    Kcdsa()
    {
        EXPECT_EQ(kcdsaGenerateKeyPair(key, 1024, 160), 0);
        x = integer(key.x);
        y = integer(key.y);
        domain = integer(key.p) + integer(key.q) + integer(key.g);
        fullDomain = domain + "020103 04{\"seed\"} 020105"; // J, seed and count go no further
    }
    Pair pair(const std::string& oid) const
    {
        const std::string algorithm = oid + " 30{" + fullDomain + "}";
        return {privateKeyInfo(algorithm, x), certificate({.algorithm = algorithm, .key = y}), nullptr};
    }
};

const Kcdsa& kcdsa()
{
    static const Kcdsa made;
    return made;
}

int check(const std::string& certificate, const std::string& privateKey, std::string& told)
{
    Context context;
    BinStr cert(certificate), key(privateKey);
    const int code = VRNO_PRIKEY_CheckKeyPair(context, cert, key);
    told = placeless(context.error());
    return code;
}

} // namespace

TEST(KeyPairs, FitOrAreToldApart)
{
    const Pair &small = rsa(1024), &large = rsa(2048), odd = rsa(1536), other = makeRsa(1024), first = kcdsa().pair(oidKcdsa),
               second = kcdsa().pair(oidKcdsa1);
    const std::string head = "[VRNO_PRIKEY_CheckKeyPair] 키쌍이 맞지 않습니다. <tarnlib> PCryptUtil::verifySignatureWithCert-";
    const std::string byPrivate = head + "privateKey(1),PPrivateKey::genSignature-",
                      byPublic = head + "publicKey(2),PPublicKey::verifySignatureWithCert-";
    const std::string doesNotHold =
        byPublic + "this(2),PPublicKey::verifySignature-sign.VerifyData(21),VNSign::VerifyData-ZIRC_VerifyData(13),";
    const std::string detection = byPrivate + "this(10),PPrivateKey::GetPrivateKeyAlgorithm-";
    Pair stranger = first;
    stranger.privateKey.back() = static_cast<char>(stranger.privateKey.back() ^ 1);
    const struct {
        const char* what;
        std::string certificate, privateKey, told;
    } table[] = {
        {"RSA 1024", small.certificate, small.privateKey, "none"},
        {"RSA 2048", large.certificate, large.privateKey, "none"},
        {"KCDSA", first.certificate, first.privateKey, "none"},
        {"KCDSA under its other identifier", second.certificate, second.privateKey, "none"},
        {"another RSA key", small.certificate, other.privateKey, doesNotHold + "Final stage; Verification of signature or"},
        {"an RSA key of another size", small.certificate, large.privateKey,
         doesNotHold + "Final stage; Verification of signature or"},
        {"another KCDSA key", first.certificate, stranger.privateKey, doesNotHold + "Final stage; Verification of signature or"},
        {"an RSA key of no supported size", odd.certificate, odd.privateKey,
         detection + "nPrivateKey(5),The RSA 1536bit is not supported."},
        {"no private key", small.certificate, "x",
         byPrivate + "privateKeyInfo(4108),RPrivateKeyInfo::fromASN1Object-asnSeq(1),ASN1Sequence::fromASN1Object-ASN1Object::"
                     "fromASN1Object(1),"},
        {"no certificate", "x", small.privateKey,
         byPublic + "this(1),PPublicKey::getPublicKeyInfoFromCert-unCertKind(6),Unknown certificate type."},
        {"a wireless certificate", "\x01", small.privateKey,
         byPublic + "this(1),PPublicKey::getPublicKeyInfoFromCert-WCertUtil(5),The WCertUtil class dose not suppot."},
        {"KCDSA without its certificate", "x", first.privateKey, byPrivate + "cert(6),RCertificate::fromASN1Object-asnSeq(1),"},
        {"a refused certificate", certificate({.algorithm = oidDsa, .key = "0500"}), small.privateKey,
         byPublic + "this(2),PPublicKey::verifySignature-this(5),PPublicKey::GetPublicKeyAlgorithm-bsPublicKeyAlgorithm(21),DSA is "
                    "not supported"},
    };
    for (const auto& row : table) {
        std::string told;
        EXPECT_EQ(check(row.certificate, row.privateKey, told), row.told == "none" ? 0 : 2003) << row.what;
        EXPECT_EQ(told.substr(0, row.told.size()), row.told) << row.what;
    }
}

// Both sides of a pair detect alike, each with its own codes and words.
TEST(KeyPairs, DetectionRefusesWithItsCodes)
{
    for (const Case& c : cases("detection.txt", 6)) {
        SCOPED_TRACE(c.where);
        ByteString oid = byteString(c[0]), parameters = byteString(der(c[1])), key = byteString(der(c[2])), flat;
        const int hash = std::stoi(c[3]);
        int keyCode = 0;
        PPrivateKey secret;
        PPublicKey open;
        EXPECT_GT(secret.GetPrivateKeyAlgorithm(&keyCode, oid, key, parameters, flat, hash, &key), 0);
        EXPECT_GT(open.GetPublicKeyAlgorithm(&keyCode, oid, key, parameters, flat, hash), 0);
        EXPECT_EQ(placeless(bytes(secret.getErrorTrail())).find("PPrivateKey::GetPrivateKeyAlgorithm-" + c[4]), 0U);
        EXPECT_EQ(placeless(bytes(open.getErrorTrail())).find("PPublicKey::GetPublicKeyAlgorithm-" + c[5]), 0U);
    }
}

TEST(KeyPairs, SignaturesKnowTheirDigests)
{
    for (const Case& c : cases("signatures.txt", 5)) {
        SCOPED_TRACE(c.where);
        const Pair& pair = rsa(c[0] == "1024" ? 1024 : 2048);
        const int hash = std::stoi(c[1]), pss = std::stoi(c[2]);
        ByteString key = byteString(pair.privateKey), cert = byteString(pair.certificate), data("data", 4), signature("s", 1), spki;
        PPrivateKey secret;
        PPublicKey open;
        EXPECT_GT(secret.genSignature(key, hash, data, signature, nullptr, 0, pss), 0);
        ASSERT_EQ(open.getPublicKeyInfoFromCert(cert, spki), 0);
        EXPECT_GT(open.verifySignature(spki, data, signature, hash, pss), 0);
        EXPECT_EQ(placeless(bytes(secret.getErrorTrail())), "PPrivateKey::genSignature-" + c[3]);
        EXPECT_EQ(placeless(bytes(open.getErrorTrail())), "PPublicKey::verifySignature-" + c[4]);
    }
    ByteString data("data", 4), none, spki, signature, key = byteString(kcdsa().pair(oidKcdsa).privateKey);
    PPrivateKey secret;
    PPublicKey open;
    EXPECT_EQ(open.verifySignature(spki, data, none, 0, 0), 1);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, nullptr, 0, 0), 5);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, &none, 0, 0), 8);
    const std::string info = der("30{30{" + oidKcdsa + " 30{" + kcdsa().domain + "}} 03{00" + kcdsa().y + "}}");
    spki = byteString(info);
    EXPECT_EQ(secret.genSignature(key, 1011, data, signature, &spki, 0, 0), 0);
    EXPECT_EQ(open.verifySignature(spki, data, signature, 0, 0), 0);
    EXPECT_EQ(open.encrypt(spki, data, signature, 0), 5); // KCDSA does not encrypt
}

TEST(KeyPairs, OpenSSLVerifiesAndDeciphers)
{
    const Pair& pair = rsa(2048);
    ByteString key = byteString(pair.privateKey), cert = byteString(pair.certificate), data("data", 4), signature, spki, cipherText,
               none;
    PPrivateKey secret;
    PPublicKey open;
    ASSERT_EQ(secret.genSignature(key, 1011, data, signature, nullptr, 0, 0), 0);
    EVP_MD_CTX* const verifier = EVP_MD_CTX_new();
    EVP_DigestVerifyInit(verifier, nullptr, EVP_sha1(), nullptr, pair.peer.get());
    EXPECT_EQ(EVP_DigestVerify(verifier, signature.getBytes(), 256, data.getBytes(), 4), 1);
    EVP_MD_CTX_free(verifier);
    ASSERT_EQ(open.getPublicKeyInfoFromCert(cert, spki), 0);
    EXPECT_EQ(open.encrypt(spki, none, cipherText, 0), 1);
    EXPECT_EQ(open.encrypt(spki, data, cipherText, 1), 5);
    ASSERT_EQ(open.encrypt(spki, data, cipherText, 0), 0);
    const std::unique_ptr<EVP_PKEY_CTX, Freed> context(EVP_PKEY_CTX_new(pair.peer.get(), nullptr));
    unsigned char plain[256];
    std::size_t length = sizeof plain;
    EVP_PKEY_decrypt_init(context.get());
    ASSERT_EQ(EVP_PKEY_decrypt(context.get(), plain, &length, cipherText.getBytes(), 256), 1);
    EXPECT_EQ(text(plain, length), "data");
}

TEST(KeyPairs, TheRandomNumberComesLastAndOnce)
{
    const std::string head = "020100 30{" + oidRsa + " 0500} 04{\"key\"}", other = "30{06{2A03} 31{020101}}",
                      type = "06{2A831A8C9A440A010103}";
    const auto number = [&](const std::string& value) { return "30{" + type + " 31{03{00 " + value + "}}}"; };
    const struct {
        std::string before, after;
    } table[] = {
        {head, head + "A0{" + number("ABCD00") + "}"},
        {head + "A0{" + other + number("11") + other + "}", head + "A0{" + other + other + number("ABCD00") + "}"},
        {head + "A0{" + number("11") + number("22") + "}", head + "A0{" + number("ABCD00") + "}"},
    };
    ByteString value = byteString(der("ABCD00"));
    PPrivateKey secret;
    for (const auto& row : table) {
        ByteString key = byteString(der("30{" + row.before + "}"));
        EXPECT_EQ(secret.setRandomNumber(key, value), 0);
        EXPECT_EQ(hex(bytes(key)), hex(der("30{" + row.after + "}")));
    }
    ByteString bad = byteString(der("30{" + head + "A0{0500}}"));
    EXPECT_EQ(secret.setRandomNumber(bad, value), 2);
    EXPECT_EQ(secret.setRandomNumber(value, value), 1);
}

TEST(KeyPairs, AlgorithmsOfContents)
{
    PAlgorithmUtil util;
    RAlgorithmIdentifier algorithm;
    ByteString iv("iv", 2);
    EXPECT_EQ(util.makeSymmetricAlgID(3090, 4, iv, algorithm), 8);
    EXPECT_EQ(placeless(bytes(util.getErrorTrail())),
              "PAlgorithmUtil::makeAlgorithmID-nAlg(8),nAlg (3090) is unknown algorithm code.");
    EXPECT_EQ(util.makeSymmetricAlgID(3020, 1, iv, algorithm), 2);
    EXPECT_EQ(util.makeSymmetricAlgID(3020, 4, iv, algorithm), 0);
    EXPECT_EQ(hex(bytes(algorithm.toASN1Object())), hex(der("30{06{2A831A8C9A440104} 04{\"iv\"}}")));
}

// ---- cards ----

namespace {

// A folder that the sample storage library serves.
class Card {
public:
    Card()
    {
        char name[] = "/tmp/vrno-XXXXXX";
        m_folder = mkdtemp(name);
        setenv("VRNO_STORAGE", m_folder.c_str(), 1);
        put("pin", "1234\n");
    }
    ~Card() { std::filesystem::remove_all(m_folder); }
    Card(const Card&) = delete;
    Card& operator=(const Card&) = delete;
    void put(const std::string& name, const std::string& content) const
    {
        std::ofstream(m_folder + "/" + name, std::ios::binary) << content;
    }
    void remove(const std::string& name) const { std::filesystem::remove(m_folder + "/" + name); }

private:
    std::string m_folder;
};

} // namespace

TEST(Cards, LibrariesComeAndGo)
{
    Context context;
    BinStr out;
    VRNO_API_CTX& fields = *context;
    EXPECT_EQ(VRNO_MEDIA_Load(nullptr, "x"), 1001);
    EXPECT_EQ(VRNO_MEDIA_Unload(context), 0);
    EXPECT_EQ(VRNO_MEDIA_Load(context, SAMPLES "/hong.der"), 2510);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_Load] \"" SAMPLES "/hong.der\" DLL을 로드하는데 실패 (fnc=LoadLibrary,errcode=8)");
    EXPECT_EQ(fields.hMediaLib, nullptr);
    EXPECT_EQ(VRNO_MEDIA_Load(context, "libc.so.6"), 0); // has no such function
    EXPECT_EQ(VRNO_MEDIA_CARD_ReadCert(context, 1, "1234", out), 2512);
    EXPECT_EQ(context.error(),
              "[VRNO_MEDIA_CARD_ReadCert] 함수 PKI_STORAGE_Read()의 포인터 획득 실패 (fnc=GetProcAddress,errcode=2)");
    void* const first = fields.hMediaLib;
    EXPECT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 2509);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_Load] 이미 로드되어있습니다.");
    EXPECT_EQ(fields.hMediaLib, first);
    EXPECT_EQ(VRNO_MEDIA_Unload(context), 0);
    EXPECT_EQ(fields.hMediaLib, nullptr);
    EXPECT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0); // released with the context
}

TEST(Cards, EveryResultIsTold)
{
    const Card card;
    Context context;
    ASSERT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
    const std::string exact = "\x30" + std::string(2047, 'e');
    card.put("0010.item", "certificate");
    card.put("2010.item", exact);
    card.put("2020.item", exact);
    card.put("0040.item", exact + "e");
    card.put("0001.item", "");
    card.put("0004.item", std::string(2048, '\0'));
    card.put("0002.item", std::string("\0key", 4));
    const auto told = [](const char* message, const char* result, const char* detail) {
        return std::string(message) + " <dynamiclib> fnc=PKI_STORAGE_Read,errcode=0x" + result + ",msg=" + detail;
    };
    const struct {
        bool isKey;
        int type;
        std::string result; // of the library, for the item of role 1
        int code;
        std::string output; // or the message
    } table[] = {
        {false, 1, "", 0, "certificate"},
        {false, 0xC001, "", 0, "certificate"}, // no such device: it counts as none
        {false, 0x2001, "", 0, exact},
        {true, 0x2001, "", 0, exact},
        {false, 2, "", 2504, told("인증서를 읽는데 실패하였습니다.", "6700", "the item is longer than the buffer")},
        {false, 0xB001, "", 2504, told("인증서를 읽는데 실패하였습니다.", "6a82", "no such item")},
        {true, 2, "", 2507, told("개인키를 읽는데 실패하였습니다.", "6a82", "no such item")},
        {false, 16, "", 2502, "해당 인증서 내용이 비어있습니다."},
        {false, 32, "", 2502, "해당 인증서 내용이 비어있습니다."},
        {true, 16, "", 2502, "해당 개인키 내용이 비어있습니다."},
        {false, 3, "", 6009, "지원되지 않는 인증서 데이터 타입입니다."},
        {true, 0x2003, "", 6009, "지원되지 않는 개인키 데이터 타입입니다."},
        {true, -1, "", 6009, "지원되지 않는 개인키 데이터 타입입니다."},
        {false, 1, "100 take one", 2514, told("스마트카드가 꽂혀있는지 확인하세요.", "100", "take one")},
        {false, 1, "80100069 gone", 2514, told("스마트카드가 꽂혀있는지 확인하세요.", "80100069", "gone")},
        {false, 1, "101 wrong", 2515, told("PIN 번호를 확인하세요.", "101", "wrong")},
        {false, 1, "6300 wrong", 2515, told("PIN 번호를 확인하세요.", "6300", "wrong")},
        {false, 1, "63ff wrong", 2515, told("PIN 번호를 확인하세요.", "63ff", "wrong")},
        {false, 1, "62ff other", 2504, told("인증서를 읽는데 실패하였습니다.", "62ff", "other")},
        {false, 1, "6400 other", 2504, told("인증서를 읽는데 실패하였습니다.", "6400", "other")},
        {false, 1, "ffffffff other", 2504, told("인증서를 읽는데 실패하였습니다.", "ffffffff", "other")},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.output.substr(0, 200));
        BinStr out("old");
        if (!row.result.empty()) card.put("0010.result", row.result);
        const int code = row.isKey ? VRNO_MEDIA_CARD_ReadPriKey(context, row.type, "1234", nullptr, out)
                                   : VRNO_MEDIA_CARD_ReadCert(context, row.type, "1234", out);
        card.remove("0010.result");
        EXPECT_EQ(code, row.code);
        EXPECT_EQ(out.data(), code == 0 ? row.output : "old");
        if (code != 0) {
            EXPECT_EQ(context.error(),
                      std::string(row.isKey ? "[VRNO_MEDIA_CARD_ReadPriKey] " : "[VRNO_MEDIA_CARD_ReadCert] ") + row.output);
        }
    }
    BinStr out;
    EXPECT_EQ(VRNO_MEDIA_CARD_ReadCert(context, 1, "12345", out), 2515);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_CARD_ReadCert] " + told("PIN 번호를 확인하세요.", "63c2", "wrong PIN, two tries left"));
    card.remove("pin");
    EXPECT_EQ(VRNO_MEDIA_CARD_ReadCert(context, 1, "1234", out), 2514);
}

TEST(Cards, KeysAreOpenedAndGetTheirRandomNumber)
{
    const Card card;
    Context context;
    ASSERT_EQ(VRNO_MEDIA_Load(context, STORAGE_LIBRARY), 0);
    const std::string plain = readFile(SAMPLES "/hong.key");
    BinStr key(plain), blob, out;
    ASSERT_EQ(VRNO_PRIKEY_Encrypt(context, 48, "password", key, blob), 0);
    for (const char* name : {"0020.item", "2020.item", "0050.item"}) card.put(name, blob.data());
    const auto read = [&](int type, const char* password) {
        return VRNO_MEDIA_CARD_ReadPriKey(context, type, "1234", password, out);
    };
    EXPECT_EQ(read(1, ""), 0); // as it lies there, and no random value asked for
    EXPECT_EQ(out.data(), blob.data());
    EXPECT_EQ(read(2, "password"), 0);
    EXPECT_EQ(out.data(), plain);
    EXPECT_EQ(read(0x2001, "password"), 0);
    EXPECT_EQ(out.data(), plain);
    EXPECT_EQ(read(1, "password"), 2519);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_CARD_ReadPriKey] 본인확인을 위한 랜덤값 읽기 실패하였습니다. <dynamiclib> "
                               "fnc=PKI_STORAGE_Read,errcode=0x6a82,msg=no such item");
    for (const std::string& value : {std::string(), std::string("\0value", 6)}) {
        card.put("0030.item", value);
        EXPECT_EQ(read(1, "password"), 0);
        EXPECT_EQ(out.data(), plain);
    }
    card.put("0030.item", "value");
    EXPECT_EQ(read(1, "wrong"), 2004);
    EXPECT_EQ(read(1, "password"), 0);
    const std::string number = der("06{2A831A8C9A440A010103} 31{03{00\"value\"}}");
    EXPECT_EQ(out.data().substr(out.data().size() - number.size()), number);
    EXPECT_EQ(out.data().size(), plain.size() + number.size() + 4);
    card.put("0030.item", std::string(129, 'v'));
    EXPECT_EQ(read(1, "password"), 2519);
    card.put("0030.result", "6301 pin");
    EXPECT_EQ(read(1, "password"), 2515);
    card.put("0020.item", std::string("\0", 1)); // and yet the random value is asked for first
    EXPECT_EQ(read(1, "password"), 2515);
    card.remove("0030.result");
    card.put("0030.item", "value");
    EXPECT_EQ(read(1, "password"), 2502);
    card.put("0020.item", "no key");
    EXPECT_EQ(read(1, "password"), 2001);

    // A key with an attribute that is none cannot take the number.
    BinStr odd(der("30{020100 30{06{2A03}} 0400 A0{0500}}"));
    ASSERT_EQ(VRNO_PRIKEY_Encrypt(context, 48, "password", odd, blob), 0);
    card.put("0020.item", blob.data());
    EXPECT_EQ(read(1, "password"), 2000);
    EXPECT_EQ(
        placeless(context.error())
            .find("[VRNO_MEDIA_CARD_ReadPriKey] 잘못된 개인키 형식입니다. <tarnlib> PPrivateKey::setRandomNumber-attribute(2),"),
        0U);
}

// A library that the system does not let go: its handle is given back behind our back.
TEST(Cards, ALibraryThatStaysIsTold)
{
    Context context;
    VRNO_API_CTX& fields = *context;
    void* const library = fields.hMediaLib = dlopen("libm.so.6", RTLD_NOW);
    ASSERT_EQ(dlclose(library), 0);
    EXPECT_EQ(VRNO_MEDIA_Unload(context), 2511);
    EXPECT_EQ(context.error(), "[VRNO_MEDIA_Unload] DLL을 해제하는데 실패 (fnc=FreeLibrary,errcode=22)");
    EXPECT_EQ(fields.hMediaLib, library);
    fields.hMediaLib = nullptr;
}
