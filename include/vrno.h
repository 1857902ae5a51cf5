/*
 * libvrno: a client-side public-key toolkit for the Korean PKI.
 *
 * How everything here behaves, unless a function says otherwise:
 *
 *  1. Every function returns VRNO_OK (0) or one of the codes below. No function gives the code out again: what can be
 *     asked for later is the text of the context's last failure, with VRNO_API_GetErrInfo.
 *  2. A context belongs to one thread at a time. Different contexts may be used by different threads at once.
 *  3. Texts, in both directions, are NUL-terminated byte strings in code page 949 (Unified Hangul Code). Sizes count
 *     bytes. What a certificate holds as UTF-8 or UCS-2 is converted, and what is neither ASCII nor one of the
 *     11,172 Hangul syllables becomes "?" (one for each octet in UTF-8, for each character in UCS-2); other strings come
 *     out as they stand there, in a distinguished name up to a zero octet.
 *  4. Every function that takes a context clears its last failure first. Checks come before any work, in the order that
 *     the function's codes are listed in, and a failed check changes nothing but the context's error text.
 *  5. A VRNO_BINSTR is valid as input when the pointer to it, its pData and its nLen are all not zero. As output it must
 *     have been prepared with VRNO_BINSTR_Create (or hold data of this library, which is then released), and the caller
 *     gives its data back with VRNO_BINSTR_Delete.
 *  6. A text getter with nBufLen writes its text and the NUL behind it into the caller's buffer of nBufLen bytes, or
 *     fails with VRNO_ERR_BUFFER_TOO_SMALL and writes nothing; the needed size stands in the error text. Bytes of the
 *     buffer behind the NUL keep their values.
 */
#ifndef VRNO_H
#define VRNO_H

#if defined(_WIN32)
#if defined(VRNO_BUILDING)
#define VRNO_API __declspec(dllexport)
#else
#define VRNO_API __declspec(dllimport)
#endif
#else
#define VRNO_API __attribute__((visibility("default")))
#endif

/* ---- result codes ---- */

enum {
    VRNO_OK = 0,

    /* frame */
    VRNO_ERR_CTX_NOT_NULL = 1000,     /* VRNO_API_Init on a pointer that is not null */
    VRNO_ERR_CTX_NULL = 1001,         /* no context given */
    VRNO_ERR_MEMORY = 1002,           /* out of memory, or more than 2^31 - 2 bytes of input */
    VRNO_ERR_PATH_EMPTY = 1003,       /* VRNO_API_Init without a path */
    VRNO_ERR_ARGUMENT = 1004,         /* a required argument is missing */
    VRNO_ERR_BUFFER_TOO_SMALL = 1005, /* the caller's buffer is too small */
    VRNO_ERR_NO_TEXT = 1006,          /* VRNO_API_GetErrInfo: no text is stored */

    /* certificate */
    VRNO_ERR_CERT_FORMAT = 1500,      /* the certificate's format is wrong */
    VRNO_ERR_CERT_NOT_LOADED = 1501,  /* no certificate is loaded */
    VRNO_ERR_EXTENSION_ABSENT = 1502, /* the extension asked for is absent */

    /* private key */
    VRNO_ERR_PRIKEY_FORMAT = 2000,           /* the private key's format is wrong */
    VRNO_ERR_ENCRYPTED_PRIKEY_FORMAT = 2001, /* the encrypted private key's format is wrong */
    VRNO_ERR_PRIKEY_ENCRYPT = 2002,          /* encrypting the private key failed */
    VRNO_ERR_KEY_PAIR = 2003,                /* certificate and private key are no pair */
    VRNO_ERR_PRIKEY_PASSWORD = 2004,         /* wrong private key password */

    /* media */
    VRNO_ERR_FILE_READ = 2500,         /* reading a file failed */
    VRNO_ERR_FILE_EMPTY = 2502,        /* the file or the medium's entry is empty */
    VRNO_ERR_CERT_READ = 2504,         /* reading a certificate failed */
    VRNO_ERR_PRIKEY_READ = 2507,       /* reading a private key failed */
    VRNO_ERR_LIB_LOADED = 2509,        /* a storage library is already loaded */
    VRNO_ERR_LIB_LOAD = 2510,          /* loading the storage library failed */
    VRNO_ERR_LIB_UNLOAD = 2511,        /* unloading the storage library failed */
    VRNO_ERR_LIB_FUNCTION = 2512,      /* the storage library lacks the function */
    VRNO_ERR_LIB_NOT_LOADED = 2513,    /* no storage library is loaded */
    VRNO_ERR_CARD_ABSENT = 2514,       /* no smart card */
    VRNO_ERR_CARD_PIN = 2515,          /* wrong PIN */
    VRNO_ERR_RANDOM_VALUE_READ = 2519, /* reading the identity check random value failed */

    /* enveloped message */
    VRNO_ERR_NOT_SIGNING_CERT = 3000,    /* not a signing certificate */
    VRNO_ERR_NOT_ENCRYPTION_CERT = 3001, /* not an encryption certificate */
    VRNO_ERR_ENVELOPE = 3006,            /* building the EnvelopedData failed */

    /* symmetric cipher */
    VRNO_ERR_SYM_ALG = 5000,     /* unsupported symmetric algorithm */
    VRNO_ERR_RANDOM = 5001,      /* generating random data failed */
    VRNO_ERR_KEY_LENGTH = 5002,  /* wrong key length */
    VRNO_ERR_IV_LENGTH = 5003,   /* wrong IV length */
    VRNO_ERR_KEY_NOT_SET = 5004, /* key and IV are not set */
    VRNO_ERR_ENCRYPT = 5005,     /* encrypting failed */
    VRNO_ERR_DECRYPT = 5006,     /* decrypting failed */
    VRNO_ERR_KEY_EXPAND = 5015,  /* expanding the key failed */

    /* Base64 */
    VRNO_ERR_BASE64_ENCODE = 5500,
    VRNO_ERR_BASE64_DECODE = 5501,

    /* data types */
    VRNO_ERR_DATA_TYPE = 6009 /* unsupported data type code of the smart-card functions */
};

/* ---- records ---- */

/* What the context's pointers lead to is the library's own business. */
#ifdef __cplusplus
namespace vrno {
class ByteString;
class PCertUtil2;
class PObject;
} // namespace vrno
typedef vrno::ByteString VRNO_OPAQUE_BYTES;
typedef vrno::PCertUtil2 VRNO_OPAQUE_CERT;
typedef vrno::PObject VRNO_OPAQUE_OBJECT;
extern "C" {
#else
typedef struct VRNO_OPAQUE_BYTES VRNO_OPAQUE_BYTES;
typedef struct VRNO_OPAQUE_CERT VRNO_OPAQUE_CERT;
typedef struct VRNO_OPAQUE_OBJECT VRNO_OPAQUE_OBJECT;
#endif

/* A context: made by VRNO_API_Init, released by VRNO_API_Finish. The caller holds the pointer and leaves the fields
 * alone. What a pointer leads to belongs to the context. */
typedef struct VRNO_API_CTX {
    char* pszPath; /* the path given to VRNO_API_Init, less one trailing separator */
    void* pReservedBuf1;
    char* pszErrMsg; /* text of the last failure, null when there is none */
    int nErrCode;    /* code of the last failure, 0 when there is none */
    unsigned char ucFlags;
    int nSymAlg;
    int nSymMode;
    VRNO_OPAQUE_CERT* pLoadedCert;
    void* hMediaLib; /* the loaded storage library */
    VRNO_OPAQUE_OBJECT* pReservedObj1;
    VRNO_OPAQUE_OBJECT* pReservedObj2;
    VRNO_OPAQUE_OBJECT* pReservedObj3;
    VRNO_OPAQUE_BYTES* pSessionKey;
    VRNO_OPAQUE_BYTES* pSessionIv;
    VRNO_OPAQUE_BYTES* pChangedKey;
    VRNO_OPAQUE_BYTES* pChangedIv;
    int nReserved1;
    int nReserved2;
    int nReserved3;
    int nReserved4;
    void* pReservedBuf2;
    unsigned char ucReserved;
    VRNO_OPAQUE_OBJECT* pReservedObj4;
    VRNO_OPAQUE_OBJECT* pReservedObj5;
} VRNO_API_CTX;

/* Binary data. Filled by the library, the block has nLen + 1 bytes with a zero byte behind the data. */
typedef struct VRNO_BINSTR {
    unsigned char* pData;
    unsigned int nLen; /* bytes */
} VRNO_BINSTR;

/* ---- context ---- */

/* Makes a context in *ppCtx, which must hold null. ppCtx itself must be valid.
 * pszPath: any text but an empty one; it is kept, less one trailing '/' or '\\', and read by nothing yet.
 * 0; 1000 *ppCtx is not null; 1003 pszPath null or empty; 1002. None of them leaves a text. After 1002 *ppCtx may hold a
 * context that is not made yet: VRNO_API_Finish releases it, and until then a further call gives 1000. */
VRNO_API int VRNO_API_Init(VRNO_API_CTX** ppCtx, const char* pszPath);

/* Releases the context with all that it owns and sets *ppCtx to null; nothing to do when it is null already. Always 0.
 * ppCtx itself must be valid. */
VRNO_API int VRNO_API_Finish(VRNO_API_CTX** ppCtx);

/* Copies the text of the last failure, which stays stored.
 * nBufLen: size of the buffer pszErrInfo in bytes.
 * 0; 1001; 1004 pszErrInfo null; 1006 no text is stored; 1005 the buffer is too small and holds, terminated, as much as
 * fits (nothing is written for nBufLen below 1). None of these replaces the stored text. */
VRNO_API int VRNO_API_GetErrInfo(VRNO_API_CTX* pCtx, int nBufLen, char* pszErrInfo);

/* ---- binary strings: these store no text ---- */

/* Sets both fields to zero: how a caller prepares a record. It releases nothing. 0; 1004 pBinStr null. */
VRNO_API int VRNO_BINSTR_Create(VRNO_BINSTR* pBinStr);

/* Releases the data and sets both fields to zero; with pData null nothing is done. 0; 1004 pBinStr null. */
VRNO_API int VRNO_BINSTR_Delete(VRNO_BINSTR* pBinStr);

/* Releases the target's data, then copies nLen bytes of pData, which must not lie in the data just released. With pData
 * null or nLen 0 the target stays empty. 0; 1004 pBinStr null; 1002 with the target empty. */
VRNO_API int VRNO_BINSTR_SetData(const unsigned char* pData, unsigned int nLen, VRNO_BINSTR* pBinStr);

/* ---- Base64 (RFC 4648, section 4) ---- */

/* The text of pData in pEncData, in one line; nLen is its length without the NUL.
 * 0; 1001; 1004 pData not valid, pEncData null; 1002; 5500. */
VRNO_API int VRNO_BASE64_Encode(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pData, VRNO_BINSTR* pEncData);

/* The bytes of the text in pEncData. Strict: no white space, no line breaks, padded to a multiple of 4 characters.
 * 0; 1001; 1004 pEncData not valid, pData null; 1002; 5501. */
VRNO_API int VRNO_BASE64_Decode(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pEncData, VRNO_BINSTR* pData);

/* ---- certificates (X.509, RFC 5280) ---- */

/* Loads a certificate in DER (or BER) into the context, in place of the one that is there; that one is gone also when
 * this fails. PEM and Base64 are not read.
 * 0; 1001; 1004 pCert not valid; 1002; 1500 with the place of the fault in the text. */
VRNO_API int VRNO_CERT_Load(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert);

/* Takes the loaded certificate, if there is one, out of the context. 0; 1001. */
VRNO_API int VRNO_CERT_Unload(VRNO_API_CTX* pCtx);

/* Each getter: 0; 1001; 1501 none loaded; 1004 an output pointer is null; 1500 the field cannot be read; 1002; and 1005
 * where it says so. Text getters follow point 6 above. */

/* The number of the version: 3 for a certificate with extensions; the field's number plus one, whatever it is. */
VRNO_API int VRNO_CERT_GetVersion(VRNO_API_CTX* pCtx, int* pVersion);

/* Lower-case hexadecimal, two digits an octet, without the sign octet; 1005. */
VRNO_API int VRNO_CERT_GetSerialNum(VRNO_API_CTX* pCtx, int nBufLen, char* pszSerialNum);

/* The name of the algorithm, as "sha1 With RSAEncryption", or its identifier and " : Unknown AlgorithmIdentifier", as
 * "1 2 840 113549 1 1 11 : Unknown AlgorithmIdentifier"; 1005. */
VRNO_API int VRNO_CERT_GetSignatureAlgorithm(VRNO_API_CTX* pCtx, int nBufLen, char* pszSignAlg);

/* The name as "cn=c,ou=b,o=a,c=KR", the most specific part first, without blanks or escapes; 1005. 1500 too for a name
 * with an attribute type or string type outside those that the toolkit renders. */
VRNO_API int VRNO_CERT_GetIssuerName(VRNO_API_CTX* pCtx, int nBufLen, char* pszIssuerName);
VRNO_API int VRNO_CERT_GetSubjectName(VRNO_API_CTX* pCtx, int nBufLen, char* pszSubjectName);

/* The subject's name in DER. */
VRNO_API int VRNO_CERT_GetSubjectName_DERFormat(VRNO_API_CTX* pCtx, VRNO_BINSTR* pSubjectName);

/* "YYYY-MM-DD hh:mm:ss" in the machine's local time; each buffer needs 20 bytes. */
VRNO_API int VRNO_CERT_GetValidity(VRNO_API_CTX* pCtx, char* pszNotBefore, char* pszNotAfter);

/* The identifier of the key's algorithm, as "1 2 840 113549 1 1 1", cut to 49 characters into the 50 bytes of
 * pszPubKeyAlg; and the octets of the key's BIT STRING, for RSA the DER of an RSAPublicKey, in lower-case hexadecimal
 * into the nBufLen bytes of pszPubKey; 1005, with nothing written to either. */
VRNO_API int VRNO_CERT_GetPubKey(VRNO_API_CTX* pCtx, int nBufLen, char* pszPubKeyAlg, char* pszPubKey);

/* The octets of the signature in lower-case hexadecimal; 1005. */
VRNO_API int VRNO_CERT_GetSignature(VRNO_API_CTX* pCtx, int nBufLen, char* pszSignature);

/* The extensions (RFC 5280, section 4.2), each as a text to be shown: 0; 1001; 1501; 1004; 1502 the certificate does not
 * have the extension, or has it with no value; 1500 it cannot be read, with the place of the fault in the text; 1002; 1005.
 * Nothing is judged: the critical flag is not looked at. A text of several lines has CR LF between them, and none behind
 * the last but where it says so. A text may be empty.
 *
 * A value is shown whole. It may hold zero octets, an IP address as its raw octets above all: the text goes on behind them,
 * and nBufLen counts them, but a reader of C strings stops there. The forms x400Address and ediPartyName of a GeneralName
 * are not rendered: 1500. */

/* "digitalSignature, keyEncipherment" and so on, in the order of the bits (4.2.1.3). The buffer must have room for 2 bytes
 * more than that and the NUL. */
VRNO_API int VRNO_CERT_GetKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszKeyUsage);

/* "CA : TRUE" or "CA : FALSE", followed by ", PathLenConstraint : 0" where there is one (4.2.1.9). */
VRNO_API int VRNO_CERT_GetBasicConstraints(VRNO_API_CTX* pCtx, int nBufLen, char* pszBasicConstraints);

/* Lower-case hexadecimal, two digits an octet (4.2.1.2). */
VRNO_API int VRNO_CERT_GetSubKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszSKI);

/* Numbered policies with their qualifiers, every line with its CR LF (4.2.1.4). */
VRNO_API int VRNO_CERT_GetCertPolicy(VRNO_API_CTX* pCtx, int nBufLen, char* pszCertPolicy);

/* The identifiers of the policies alone, as "1 2 410 200004 5 2 1 2, 2 5 29 32 0". */
VRNO_API int VRNO_CERT_GetCertPolicy_PolicyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszPolicyID);

/* A line a purpose: "id-kp-serverAuth" and so on, or the identifier as "1 2 3" (4.2.1.12). */
VRNO_API int VRNO_CERT_GetExtKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszExtKeyUsage);

/* The names (4.2.1.6), each as a label and a value: "RFC822 Name=", "DNS Name=", "URL=", "Registered ID=" with an
 * identifier as "1 2 3"; "IP Address=" with the raw octets; for a directoryName a Korean label, and in the next line behind
 * a tab the name as VRNO_CERT_GetSubjectName has it; "Other Name:" with further lines. Of those the identify data of the
 * Korean PKI shows as the real name and the virtual identifier (1500 for a malformed one), or in lower-case hexadecimal
 * where it is something else; any other type as the type and hexadecimal. */
VRNO_API int VRNO_CERT_GetSubjectAltName(VRNO_API_CTX* pCtx, int nBufLen, char* pszSubAltName);

/* "KeyID=" and hexadecimal; the names of the issuer below a Korean heading, where an otherName shows in hexadecimal
 * and the forms that are not rendered are left out; "Certificate SerialNumber=" and hexadecimal (4.2.1.1). */
VRNO_API int VRNO_CERT_GetAuthKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszAKI);

/* Numbered distribution points with their names, reasons and issuers (4.2.1.13). Of several names the first has a label;
 * an otherName shows in hexadecimal. A point without names, or with one relative to its issuer, ends in its CR LF. An
 * issuer must have a directoryName. */
VRNO_API int VRNO_CERT_GetCRLDP(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDP);

/* Where to fetch a CRL: the values of the first three names of all distribution points, with "|" between them. They may be
 * of any kind: an otherName comes as its encoding, an IP address as its raw octets. */
VRNO_API int VRNO_CERT_GetCRLDP_URL(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDPUrl);

/* Numbered access descriptions, each with its method and its location behind "URL=", of whatever kind that is (an otherName
 * in hexadecimal);
 * "AuthorityInfoAccess :empty" for none (4.2.2.1). */
VRNO_API int VRNO_CERT_GetAIA(VRNO_API_CTX* pCtx, int nBufLen, char* pszAIA);

/* ---- session cipher: SEED (RFC 4269) in CBC mode ---- */

/* The algorithm code of these functions: SEED with a key and an IV of 16 bytes each. */
enum { VRNO_SYM_SEED = 48 };

/* Draws a new session key and IV, in place of those that are there. nAlgorithm: VRNO_SYM_SEED.
 * 0; 1001; 5000, 5001 with the old key kept; 1002 with no key set. */
VRNO_API int VRNO_CRYPT_GenKeyAndIV(VRNO_API_CTX* pCtx, int nAlgorithm);

/* Sets the session key and IV. 0; 1001; 1004 pKey not valid, pIV not valid; 5000 nAlgorithm is not VRNO_SYM_SEED; 5002
 * the key is not 16 bytes, 5003 the IV is not, all with the old key kept; 1002 with no key set. */
VRNO_API int VRNO_CRYPT_SetKeyAndIV(VRNO_API_CTX* pCtx, int nAlgorithm, const VRNO_BINSTR* pKey, const VRNO_BINSTR* pIV);

/* The session key and IV as they were drawn or set; *pSymAlg is VRNO_SYM_SEED.
 * 0; 1001; 1004 pSymAlg, pKey or pIV null; 5004 no key is set; 5000; 1002. */
VRNO_API int VRNO_CRYPT_GetKeyAndIV(VRNO_API_CTX* pCtx, int* pSymAlg, VRNO_BINSTR* pKey, VRNO_BINSTR* pIV);

/* One message from the session IV on: equal messages give equal results. The padding fills up to the next multiple of 16
 * bytes, with one whole block behind a multiple of 16. An input that is null or has no data is an empty message. The
 * output may be the input's own record. Decryption knows a wrong key only by the padding.
 * 0; 1001; 1004 the output is null; 5004 no key is set; 5005 or 5006; 5015; 1002. */
VRNO_API int VRNO_CRYPT_Encrypt(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pPlainText, VRNO_BINSTR* pCipherText);
VRNO_API int VRNO_CRYPT_Decrypt(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCipherText, VRNO_BINSTR* pPlainText);

/* ---- enveloped messages (CMS, RFC 5652) ---- */

/* nOption: the message inside a ContentInfo; without it the EnvelopedData alone. Other bits mean nothing. */
enum { VRNO_CMS_CONTENT_INFO = 2 };

/* Encrypts data for the holder of a certificate in DER, which must have an RSA key of 1024 or 2048 bits and, if it has a
 * key usage at all, keyEncipherment or keyAgreement in it; its validity and issuer are not looked at. The message is an
 * EnvelopedData of version 0 with SEED-CBC (RFC 4010) under a key and an IV drawn for it, the key under RSA (PKCS #1 v1.5)
 * for a recipient named by issuer and serial number. They become the context's session key, for the functions above. A
 * pData that is null or has no data is an empty content. The output may be the record of an input; a failure leaves it
 * as it was.
 * nAlg: VRNO_SYM_SEED.
 * 0; 1001; 1004 pCert not valid, pEnvelopedData null; 1002; 5000; 1500 the certificate cannot be read; 3001 its key usage
 * allows no encryption; 1500 its key is of no use, or nAlg is 16 or 32, which no message can be made with; 3006, also for a
 * message that comes within 512 bytes of 2^31 - 2 bytes or beyond, all with the old session key kept; 1002 with the old one
 * kept, or with no key set. Where memory or random bytes run out on the way, it is 1500 or 3006, too; the text tells. */
VRNO_API int VRNO_CMS_EncryptData(VRNO_API_CTX* pCtx, unsigned int nOption, const VRNO_BINSTR* pCert, const VRNO_BINSTR* pData,
                                  int nAlg, VRNO_BINSTR* pEnvelopedData);

/* ---- private keys (PKCS #8, RFC 5208) ---- */

/* A plain key is a PrivateKeyInfo in DER, a protected one an EncryptedPrivateKeyInfo. A password counts by its bytes, up
 * to the NUL, in no code page. */

/* Protects a private key of any algorithm with a password: PBES2 (RFC 8018) with PBKDF2 over HMAC-SHA-1, 1024 iterations,
 * and SEED-CBC. Equal input gives equal output. nAlg: 16, 32 or VRNO_SYM_SEED, which all give the same.
 * 0; 1001; 1004 pszPassword null or empty, pPriKey not valid, pEncPriKey null; 5000; 1002; 2000 no PrivateKeyInfo; 2002. */
VRNO_API int VRNO_PRIKEY_Encrypt(VRNO_API_CTX* pCtx, int nAlg, const char* pszPassword, const VRNO_BINSTR* pPriKey,
                                 VRNO_BINSTR* pEncPriKey);

/* Opens a protected key: what VRNO_PRIKEY_Encrypt writes, PBES2 and the classic PKCS #5 schemes with SEED, PKCS #12 with
 * SEED. An iteration count from 1 to 2^31 - 1 is gone through to its end; any other is 2001.
 * 0; 1001; 1004 pszPassword null or empty, pEncPriKey not valid, pPriKey null; 1002; 2004 wrong password, or data that does
 * not decipher, by its own length or that of the IV, or not to a private key; 2001 malformed, or of a scheme that is not
 * supported, or nothing enciphered at all, with the reason in the text. */
VRNO_API int VRNO_PRIKEY_Decrypt(VRNO_API_CTX* pCtx, const char* pszPassword, const VRNO_BINSTR* pEncPriKey,
                                 VRNO_BINSTR* pPriKey);

/* Whether a plain private key belongs to a certificate: signs a text with the one and verifies with the other, with SHA-1.
 * RSA of 1024 and 2048 bits, KCDSA of 1024 bits.
 * 0 they are a pair; 1001; 1004 pCert not valid, pPriKey not valid; 1002; 2003 they are none, or one of them cannot be
 * read or is of another kind; the text tells. */
VRNO_API int VRNO_PRIKEY_CheckKeyPair(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert, const VRNO_BINSTR* pPriKey);

/* ---- files ---- */

/* Reads a file whole. The path is passed to the system byte for byte.
 * 0; 1001; 1004 pszFilePath null or empty, pData null; 2500; 2502 the file is empty; 1002. */
VRNO_API int VRNO_MEDIA_DISK_ReadFile(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pData);

/* The same for a certificate. The content is not looked at, and an empty file gives 0 and an empty record.
 * 0; 1001; 1004 pszFilePath null or empty, pCert null; 2504; 1002. */
VRNO_API int VRNO_MEDIA_DISK_ReadCert(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pCert);

/* The same for a private key. With a password the file is taken for a protected key and opened as by VRNO_PRIKEY_Decrypt;
 * with a null or empty one its bytes are the result, whatever they are, and an empty file gives an empty record.
 * 0; 1001; 1004 pszFilePath null or empty, pPriKey null; 2507; 2004; 2001; 1002. */
VRNO_API int VRNO_MEDIA_DISK_ReadPriKey(VRNO_API_CTX* pCtx, const char* pszFilePath, const char* pszPassword,
                                        VRNO_BINSTR* pPriKey);

/* ---- smart cards, through a storage library ---- */

/* A storage library is a dynamic library that reads items from a card for the toolkit. It exports one C function:
 *
 *     int PKI_STORAGE_Read(int nItemCode, const char* pszPIN, unsigned char* pBuffer, int* pLength, char* pszMessage);
 *
 * pBuffer has *pLength bytes, where the function puts the item and its length. pszMessage has 512 bytes, for a terminated
 * text about a failure. The function returns 0; 256 or 0x80100069 when there is no card; 257 or 0x6300 to 0x63FF when the
 * PIN is wrong; any other value for any other failure.
 *
 * nDataType is a device, 0 or 0x1000 to 0xB000 in steps of 0x1000 (any other counts as 0), plus a role: 1, 2, 16 or 32.
 * The item's code is the device or-ed with 0x10, 0x40, 0x01, 0x04 for the certificate of that role and 0x20, 0x50, 0x02,
 * 0x05 for its private key. An item has up to 2048 bytes. */

/* Loads a storage library, one a context. What it exports is not looked at yet.
 * 0; 1001; 1004 pszLibPath null or empty; 2509; 2510. */
VRNO_API int VRNO_MEDIA_Load(VRNO_API_CTX* pCtx, const char* pszLibPath);

/* Releases it; nothing to do when none is loaded. VRNO_API_Finish does so, too. 0; 1001; 2511, with the library kept. */
VRNO_API int VRNO_MEDIA_Unload(VRNO_API_CTX* pCtx);

/* Reads a certificate from the card.
 * 0; 1001; 1004 pszPIN null or empty, pCert null; 2513; 2512; 6009; 2514; 2515; 2504; 2502 the item is empty or starts with
 * a zero byte; 1002. The text of 2514, 2515 and 2504 ends in the storage library's result and message. */
VRNO_API int VRNO_MEDIA_CARD_ReadCert(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, VRNO_BINSTR* pCert);

/* Reads a private key. With a password it is opened as by VRNO_PRIKEY_Decrypt; and one of code 0x20 then gets the identity
 * check random value, item 0x30 of up to 128 bytes, as its attribute 1.2.410.200004.10.1.1.3, unless that item is empty.
 * Codes as above with pPriKey for pCert and 2507 for 2504; 2519 the random value could not be read; 2004; 2001; 2000. */
VRNO_API int VRNO_MEDIA_CARD_ReadPriKey(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, const char* pszPassword,
                                        VRNO_BINSTR* pPriKey);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VRNO_H */
