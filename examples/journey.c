/*
 * A program that uses most of the library: it encrypts a letter to the holder of a certificate, and protects and checks the
 * holder's private key.
 *
 *     vrno-journey SAMPLES OUT STORAGE
 *
 * SAMPLES is a folder with hong.der, hong.key, ca.der and letter.txt. OUT is a folder for the results. STORAGE is a storage
 * library that takes the place of a smart card. The program includes nothing of libvrno but the public header. It exits with
 * 0 when every step gave the expected result.
 */
#define _POSIX_C_SOURCE 200112L

#include "console.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#ifdef _WIN32
#include <direct.h>
#define mkdir(path, mode) _mkdir(path)
#define setenv(name, value, replaces) _putenv_s(name, value)
#endif

static const char *samples, *out_folder;
static VRNO_API_CTX* ctx;
static int failures;

/* ---- common functions of the steps ---- */

static void step(const char* korean, const char* english)
{
    static int number;
    printf("\n%d. %s  %s\n\n", ++number, korean, english);
}

/* Prints the failure of a call. True when there is none. */
static int done(int code)
{
    if (code != 0) {
        ++failures;
        explain(ctx, code);
    }
    return code == 0;
}

/* Prints whether a result is the expected one. If not, the program fails. */
static void expect(int holds, const char* good, const char* bad)
{
    if (!holds) ++failures;
    printf("   %s %s\n", holds ? "✔" : "✘", holds ? good : bad);
}

static const char* path_of(const char* folder, const char* name)
{
    static char path[4096];
    snprintf(path, sizeof path, "%s/%s", folder, name);
    return path;
}

static int same(const VRNO_BINSTR* a, const VRNO_BINSTR* b)
{
    return a->nLen == b->nLen && memcmp(a->pData, b->pData, a->nLen) == 0;
}

static void write_file(const char* name, const void* data, size_t size)
{
    const char* path = path_of(out_folder, name);
    FILE* const file = fopen(path, "wb");
    const int written = file && fwrite(data, 1, size, file) == size;
    if (!file || fclose(file) != 0 || !written) {
        ++failures;
        printf("   cannot write %s\n", path);
    }
}

static void keep(const char* name, const VRNO_BINSTR* data)
{
    write_file(name, data->pData, data->nLen);
    printf("   → %s, %u bytes\n", path_of(out_folder, name), data->nLen);
}

/* ---- the steps ---- */

static void read_certificate(VRNO_BINSTR* cert)
{
    step("인증서를 읽어 봅니다", "Read a certificate from disk");
    printf("   %s\n\n", path_of(samples, "hong.der"));
    if (done(VRNO_MEDIA_DISK_ReadCert(ctx, path_of(samples, "hong.der"), cert)) && done(VRNO_CERT_Load(ctx, cert))) {
        failures += show_certificate(ctx) != 0;
    }
}

static void encrypt_letter(const VRNO_BINSTR* cert)
{
    VRNO_BINSTR letter, message;
    VRNO_BINSTR_Create(&letter);
    VRNO_BINSTR_Create(&message);
    step("소유자에게 편지를 암호화합니다", "Encrypt a letter to the holder (CMS EnvelopedData, RSA and SEED-CBC)");
    if (done(VRNO_MEDIA_DISK_ReadFile(ctx, path_of(samples, "letter.txt"), &letter)) &&
        done(VRNO_CMS_EncryptData(ctx, VRNO_CMS_CONTENT_INFO, cert, &letter, VRNO_SYM_SEED, &message))) {
        printf("   %s, %u bytes\n", path_of(samples, "letter.txt"), letter.nLen);
        keep("letter.p7m", &message);
    }
    VRNO_BINSTR_Delete(&letter);
    VRNO_BINSTR_Delete(&message);
}

static void go_on_with_the_key(void)
{
    char text[] = "추신: 같은 세션키로 이어서 보냅니다.";
    VRNO_BINSTR plain = {(unsigned char*)text, (unsigned int)strlen(text)}, cipher, back;
    VRNO_BINSTR_Create(&cipher);
    VRNO_BINSTR_Create(&back);
    step("같은 세션키로 이어 갑니다", "Go on with the same session key");
    if (done(VRNO_CRYPT_Encrypt(ctx, &plain, &cipher)) && done(VRNO_CRYPT_Decrypt(ctx, &cipher, &back))) {
        printf("   %s\n", text);
        keep("postscript.seed", &cipher);
        expect(same(&plain, &back), "deciphers to the same text", "deciphers to another text");
    }
    VRNO_BINSTR_Delete(&cipher);
    VRNO_BINSTR_Delete(&back);
}

static void protect_key(const char* password, const VRNO_BINSTR* key)
{
    VRNO_BINSTR blob, opened;
    VRNO_BINSTR_Create(&blob);
    VRNO_BINSTR_Create(&opened);
    step("개인키를 비밀번호로 보호합니다", "Protect the private key with a password (PKCS #8, PBES2)");
    printf("   %s, %u bytes; the password is \"%s\"\n", path_of(samples, "hong.key"), key->nLen, password);
    if (done(VRNO_PRIKEY_Encrypt(ctx, VRNO_SYM_SEED, password, key, &blob))) {
        keep("hong.p8", &blob);
        const int refused = VRNO_MEDIA_DISK_ReadPriKey(ctx, path_of(out_folder, "hong.p8"), "a wrong one", &opened);
        printf("   with \"a wrong one\" it says:\n");
        explain(ctx, refused);
        expect(refused == VRNO_ERR_PRIKEY_PASSWORD, "the wrong password does not open it", "the wrong password is not told");
        if (done(VRNO_MEDIA_DISK_ReadPriKey(ctx, path_of(out_folder, "hong.p8"), password, &opened))) {
            expect(same(key, &opened), "the right password gives the same key", "the right password gives another key");
        }
    }
    VRNO_BINSTR_Delete(&blob);
    VRNO_BINSTR_Delete(&opened);
}

static void test_pair(const VRNO_BINSTR* cert, const VRNO_BINSTR* key)
{
    VRNO_BINSTR other;
    VRNO_BINSTR_Create(&other);
    step("키쌍을 확인합니다", "Test the key pair");
    expect(VRNO_PRIKEY_CheckKeyPair(ctx, cert, key) == 0, "hong.der and hong.key are a pair", "hong.der and hong.key are no pair");
    if (done(VRNO_MEDIA_DISK_ReadCert(ctx, path_of(samples, "ca.der"), &other))) {
        const int code = VRNO_PRIKEY_CheckKeyPair(ctx, &other, key);
        expect(code == VRNO_ERR_KEY_PAIR, "ca.der and hong.key are none", "ca.der and hong.key pass for a pair");
    }
    VRNO_BINSTR_Delete(&other);
}

/* Fills the folder that the sample storage library reads as a card: the certificate, the protected key, the random value. */
static void fill_card(const VRNO_BINSTR* cert)
{
    VRNO_BINSTR blob;
    VRNO_BINSTR_Create(&blob);
    mkdir(path_of(out_folder, "card"), 0700);
    write_file("card/pin", "1234\n", 5);
    write_file("card/0010.item", cert->pData, cert->nLen);
    if (done(VRNO_MEDIA_DISK_ReadFile(ctx, path_of(out_folder, "hong.p8"), &blob))) {
        write_file("card/0020.item", blob.pData, blob.nLen);
    }
    write_file("card/0030.item", "a random value of the holder", 28);
    VRNO_BINSTR_Delete(&blob);
    setenv("VRNO_STORAGE", path_of(out_folder, "card"), 1);
}

static void read_card(const char* storage, const char* password, const VRNO_BINSTR* cert)
{
    enum { SIGNING = 1 };
    VRNO_BINSTR from_card, key;
    VRNO_BINSTR_Create(&from_card);
    VRNO_BINSTR_Create(&key);
    step("스마트카드에서 읽습니다", "Read both from a smart card (a folder stands in for it)");
    fill_card(cert);
    if (done(VRNO_MEDIA_Load(ctx, storage))) {
        const int refused = VRNO_MEDIA_CARD_ReadCert(ctx, SIGNING, "0000", &from_card);
        printf("   with the PIN 0000 it says:\n");
        explain(ctx, refused);
        expect(refused == VRNO_ERR_CARD_PIN, "the wrong PIN is told", "the wrong PIN is not told");
        if (done(VRNO_MEDIA_CARD_ReadCert(ctx, SIGNING, "1234", &from_card)))
            expect(same(cert, &from_card), "the certificate is the one from disk", "the certificate is another one");
        if (done(VRNO_MEDIA_CARD_ReadPriKey(ctx, SIGNING, "1234", password, &key)))
            expect(VRNO_PRIKEY_CheckKeyPair(ctx, &from_card, &key) == 0, "the key, with its random value, is a pair with it",
                   "the key is no pair with it");
        done(VRNO_MEDIA_Unload(ctx));
    }
    VRNO_BINSTR_Delete(&from_card);
    VRNO_BINSTR_Delete(&key);
}

int main(int argc, char** argv)
{
    static const char* const password = "correct horse";
    VRNO_BINSTR cert, key;
    if (argc != 4) {
        fprintf(stderr, "usage: %s SAMPLES OUT STORAGE\n", argv[0]);
        return 2;
    }
    samples = argv[1];
    out_folder = argv[2];
    if (VRNO_API_Init(&ctx, ".") != 0) {
        fprintf(stderr, "no memory for a context\n");
        VRNO_API_Finish(&ctx);
        return 2;
    }
    VRNO_BINSTR_Create(&cert);
    VRNO_BINSTR_Create(&key);
    read_certificate(&cert);
    encrypt_letter(&cert);
    go_on_with_the_key();
    if (done(VRNO_MEDIA_DISK_ReadPriKey(ctx, path_of(samples, "hong.key"), NULL, &key))) {
        protect_key(password, &key);
        test_pair(&cert, &key);
        read_card(argv[3], password, &cert);
    }
    VRNO_BINSTR_Delete(&cert);
    VRNO_BINSTR_Delete(&key);
    VRNO_API_Finish(&ctx);
    return failures == 0 ? 0 : 1;
}
