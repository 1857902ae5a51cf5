/*
 * libvrno: a client-side public-key toolkit for the Korean PKI. The whole interface, for C (C89 and later) and C++ (C++98 and
 * later). vrno.hpp has a wrapper of it for C++20.
 */
#ifndef VRNO_H
#define VRNO_H

/**
 * @file
 * The C interface of libvrno. First the conventions, which hold for every function that does not say otherwise; then the codes, the
 * records, and the functions in the order in which a program comes to use them.
 *
 *  1. Result. Every function returns VRNO_OK (0) or one of the codes below. The comment of a function lists its codes. After
 *     a failure VRNO_API_GetErrInfo() gives a text about it; the code cannot be asked for again.
 *  2. Threads. A context is used by one thread at a time. Different threads may use different contexts at the same time.
 *  3. Texts, in both directions, are NUL-terminated byte strings in code page 949 (Unified Hangul Code), but for passwords,
 *     PINs and paths. A password or PIN is bytes. A path is in the system's own encoding: UTF-8 on Linux, the active code page on
 *     Windows; it is passed to the system as it is, and stands so in texts of failures. On Windows a file whose name the active
 *     code page cannot express cannot be named here: reading it gives 2500, 2504 or 2507. All sizes and lengths are in bytes. A
 *     string that the certificate holds in UTF-8 or UCS-2 is converted: ASCII characters and the 11,172 Hangul syllables are
 *     kept, and anything else becomes "?", one for each octet of UTF-8 and one for each character of UCS-2. The octets of other
 *     string types are copied as they are, and need not be code page 949. In a distinguished name a value ends at its first zero
 *     octet.
 *  4. Order. A function that takes a context first removes the text of the last failure. Then it makes its checks, in the
 *     order in which its codes are listed, before any other work. A failed check changes nothing but the text of the failure.
 *  5. Memory. When an allocation fails, a function that takes a context returns VRNO_ERR_MEMORY (1002), at whatever step it
 *     is. It never returns a code that blames the certificate, the data or the password instead. This holds for the text of
 *     a failure, too: if that cannot be allocated, the result is 1002 without a text. An input record of more than
 *     2^31 - 2 bytes gives 1002.
 *  6. VRNO_BINSTR as input is valid when the pointer to it, its pData and its nLen are all not zero. As output it must have
 *     been prepared with VRNO_BINSTR_Create(), or hold data from this library, which is then released. The caller releases
 *     the result with VRNO_BINSTR_Delete(). A failure leaves an output record as it was; after 1002 it may be empty.
 *  7. Text getters are the functions with nBufLen, the size of the caller's buffer. They write the text and its NUL, and keep
 *     the bytes behind the NUL as they were. If both do not fit, the result is VRNO_ERR_BUFFER_TOO_SMALL (1005), nothing is
 *     written, and the text of the failure gives the size that is needed, as the last number in it. A text of an extension may
 *     hold zero octets: its length is that size less 1, which a call with nBufLen 0 and any pointer but null gives.
 *  8. Secrets. No function leaves a private key, a password, a session key or the plain text of a protected key in memory
 *     that it has released: such memory is overwritten with zeros first. A result belongs to the caller, and
 *     VRNO_BINSTR_Delete() overwrites it.
 *  9. Stack. A call takes less than 48 KB of its thread's stack on x86, beside what a storage library takes; on s390x 56 KB.
 *  10. Calls. Every function is called by the C convention (cdecl), whatever the default of the program is. This holds for the
 *     function of a storage library, too.
 *
 * Limits. RSA keys have 1024 or 2048 bits, KCDSA keys 1024 bits; signatures use SHA-1. Dates are between 1970-01-01 00:00:00 and
 * 2038-01-19 03:14:07 UTC. The one cipher is SEED. What a newer certificate gets:
 *   - one that is valid beyond January 2038 does not load: 1500;
 *   - one with another key (RSA of 3072 or 4096 bits, elliptic curves) loads, and all its fields and extensions can be read, but
 *     VRNO_CMS_EncryptData() gives 1500 and VRNO_PRIKEY_CheckKeyPair() 2003;
 *   - one signed with SHA-2 loads; its signature algorithm is given by its identifier alone.
 */

#include <stddef.h>

/* ---- version ---- */

/** The version of this header (semver.org). */
#define VRNO_VERSION_MAJOR 1
#define VRNO_VERSION_MINOR 0 /**< See VRNO_VERSION_MAJOR. */
#define VRNO_VERSION_PATCH 0 /**< See VRNO_VERSION_MAJOR. */

/** @cond */
#define VRNO_TEXT_OF(number) #number
#define VRNO_VERSION_OF(major, minor, patch) VRNO_TEXT_OF(major) "." VRNO_TEXT_OF(minor) "." VRNO_TEXT_OF(patch)
/** @endcond */

/** The version as a text, as "1.0.0". */
#define VRNO_VERSION VRNO_VERSION_OF(VRNO_VERSION_MAJOR, VRNO_VERSION_MINOR, VRNO_VERSION_PATCH)

/* ---- what stands in front of every function ---- */

/** @cond */
/* VRNO_STATIC is defined by programs that link the static library, VRNO_BUILDING by the library's own build. */
#if defined(_WIN32) && defined(VRNO_STATIC)
#define VRNO_API
#elif defined(_WIN32) && defined(VRNO_BUILDING)
#define VRNO_API __declspec(dllexport)
#elif defined(_WIN32)
#define VRNO_API __declspec(dllimport)
#else
#define VRNO_API __attribute__((visibility("default")))
#endif

/* Convention 10. Elsewhere there is no other. */
#if defined(_WIN32)
#define VRNO_CALL __cdecl
#else
#define VRNO_CALL
#endif
/** @endcond */

/* ---- result codes ---- */

/** The codes that the functions return. */
enum {
    VRNO_OK = 0, /**< success */

    /* frame */
    VRNO_ERR_CTX_NOT_NULL = 1000,     /**< VRNO_API_Init() on a pointer that is not null */
    VRNO_ERR_CTX_NULL = 1001,         /**< no context given */
    VRNO_ERR_MEMORY = 1002,           /**< an allocation failed, or an input has more than 2^31 - 2 bytes */
    VRNO_ERR_PATH_EMPTY = 1003,       /**< VRNO_API_Init() without a path */
    VRNO_ERR_ARGUMENT = 1004,         /**< a required argument is missing */
    VRNO_ERR_BUFFER_TOO_SMALL = 1005, /**< the caller's buffer is too small */
    VRNO_ERR_NO_TEXT = 1006,          /**< VRNO_API_GetErrInfo(): no text is stored */

    /* certificate */
    VRNO_ERR_CERT_FORMAT = 1500,      /**< the certificate's format is wrong */
    VRNO_ERR_CERT_NOT_LOADED = 1501,  /**< no certificate is loaded */
    VRNO_ERR_EXTENSION_ABSENT = 1502, /**< the extension asked for is absent */

    /* private key */
    VRNO_ERR_PRIKEY_FORMAT = 2000,           /**< the private key's format is wrong */
    VRNO_ERR_ENCRYPTED_PRIKEY_FORMAT = 2001, /**< the encrypted private key's format is wrong */
    VRNO_ERR_PRIKEY_ENCRYPT = 2002,          /**< encrypting the private key failed */
    VRNO_ERR_KEY_PAIR = 2003,                /**< certificate and private key are not a pair */
    VRNO_ERR_PRIKEY_PASSWORD = 2004,         /**< wrong private key password */

    /* media */
    VRNO_ERR_FILE_READ = 2500,         /**< reading a file failed */
    VRNO_ERR_FILE_EMPTY = 2502,        /**< the file or the medium's entry is empty */
    VRNO_ERR_CERT_READ = 2504,         /**< reading a certificate failed */
    VRNO_ERR_PRIKEY_READ = 2507,       /**< reading a private key failed */
    VRNO_ERR_LIB_LOADED = 2509,        /**< a storage library is already loaded */
    VRNO_ERR_LIB_LOAD = 2510,          /**< loading the storage library failed */
    VRNO_ERR_LIB_UNLOAD = 2511,        /**< unloading the storage library failed */
    VRNO_ERR_LIB_FUNCTION = 2512,      /**< the storage library lacks the function */
    VRNO_ERR_LIB_NOT_LOADED = 2513,    /**< no storage library is loaded */
    VRNO_ERR_CARD_ABSENT = 2514,       /**< no smart card */
    VRNO_ERR_CARD_PIN = 2515,          /**< wrong PIN */
    VRNO_ERR_RANDOM_VALUE_READ = 2519, /**< reading the identity check random value failed */

    /* enveloped message */
    VRNO_ERR_NOT_SIGNING_CERT = 3000,    /**< not a signing certificate */
    VRNO_ERR_NOT_ENCRYPTION_CERT = 3001, /**< not an encryption certificate */
    VRNO_ERR_ENVELOPE = 3006,            /**< building the EnvelopedData failed */

    /* symmetric cipher */
    VRNO_ERR_SYM_ALG = 5000,     /**< unsupported symmetric algorithm */
    VRNO_ERR_RANDOM = 5001,      /**< generating random data failed */
    VRNO_ERR_KEY_LENGTH = 5002,  /**< wrong key length */
    VRNO_ERR_IV_LENGTH = 5003,   /**< wrong IV length */
    VRNO_ERR_KEY_NOT_SET = 5004, /**< key and IV are not set */
    VRNO_ERR_ENCRYPT = 5005,     /**< encrypting failed */
    VRNO_ERR_DECRYPT = 5006,     /**< decrypting failed */
    VRNO_ERR_KEY_EXPAND = 5015,  /**< expanding the key failed */

    /* Base64 */
    VRNO_ERR_BASE64_ENCODE = 5500, /**< encoding failed: the text would be too long */
    VRNO_ERR_BASE64_DECODE = 5501, /**< decoding failed: the text is not Base64 */

    /* data types */
    VRNO_ERR_DATA_TYPE = 6009 /**< unsupported data type code of the smart-card functions */
};

/* ---- records ---- */

/** @cond */
/* The types that the pointers of a context lead to. They are internal to the library. */
#ifdef __cplusplus
namespace vrno {
class ByteString;
class PCertUtil2;
class PObject;
} /* namespace vrno */
typedef vrno::ByteString VRNO_OPAQUE_BYTES;
typedef vrno::PCertUtil2 VRNO_OPAQUE_CERT;
typedef vrno::PObject VRNO_OPAQUE_OBJECT;
extern "C" {
#else
typedef struct VRNO_OPAQUE_BYTES VRNO_OPAQUE_BYTES;
typedef struct VRNO_OPAQUE_CERT VRNO_OPAQUE_CERT;
typedef struct VRNO_OPAQUE_OBJECT VRNO_OPAQUE_OBJECT;
#endif
/** @endcond */

/* The records have one layout, whatever packing is in force where this header is included. */
#pragma pack(push, 8)

/** A context. VRNO_API_Init() makes it, VRNO_API_Finish() releases it. The caller keeps the pointer and does not use the fields.
 * Everything that a field points to belongs to the context. */
typedef struct VRNO_API_CTX {
    char* pszPath;                     /**< the path given to VRNO_API_Init(), less one trailing separator */
    void* pReservedBuf1;               /**< not used */
    char* pszErrMsg;                   /**< text of the last failure, null when there is none */
    int nErrCode;                      /**< code of the last failure, 0 when there is none */
    unsigned char ucFlags;             /**< options of the session cipher */
    int nSymAlg;                       /**< internal code of the session key's algorithm, 0 until a key is set */
    int nSymMode;                      /**< internal code of its mode, 0 until a key is set */
    VRNO_OPAQUE_CERT* pLoadedCert;     /**< the loaded certificate, null when there is none */
    void* hMediaLib;                   /**< the loaded storage library, null when there is none */
    VRNO_OPAQUE_OBJECT* pReservedObj1; /**< not used */
    VRNO_OPAQUE_OBJECT* pReservedObj2; /**< not used */
    VRNO_OPAQUE_OBJECT* pReservedObj3; /**< not used */
    VRNO_OPAQUE_BYTES* pSessionKey;    /**< 16 bytes */
    VRNO_OPAQUE_BYTES* pSessionIv;     /**< 16 bytes */
    VRNO_OPAQUE_BYTES* pChangedKey;    /**< expanded key of a chain of messages */
    VRNO_OPAQUE_BYTES* pChangedIv;     /**< IV of its next message */
    int nReserved1;                    /**< not used */
    int nReserved2;                    /**< not used */
    int nReserved3;                    /**< not used */
    int nReserved4;                    /**< not used */
    void* pReservedBuf2;               /**< not used */
    unsigned char ucReserved;          /**< not used */
    VRNO_OPAQUE_OBJECT* pReservedObj4; /**< not used */
    VRNO_OPAQUE_OBJECT* pReservedObj5; /**< not used */
} VRNO_API_CTX;

/** Binary data. A block that the library allocates has nLen + 1 bytes: the data and a zero byte behind it, which nLen does not
 * count. */
typedef struct VRNO_BINSTR {
    unsigned char* pData; /**< the data, null when there is none */
    unsigned int nLen;    /**< bytes at pData */
} VRNO_BINSTR;

#pragma pack(pop)

/** @cond */
/* Does not compile where a size or an offset is not that of the library, for pointers of 4 and of 8 bytes. */
/* name is a name, so it has no parentheses. */
/* NOLINTNEXTLINE(bugprone-macro-parentheses) */
#define VRNO_LAYOUT(name, bytes, on32, on64) typedef char name[(bytes) == (sizeof(void*) == 8 ? (on64) : (on32)) ? 1 : -1]
VRNO_LAYOUT(vrno_size_of_binstr, sizeof(VRNO_BINSTR), 8, 16);
VRNO_LAYOUT(vrno_offset_of_length, offsetof(VRNO_BINSTR, nLen), 4, 8);
VRNO_LAYOUT(vrno_size_of_context, sizeof(VRNO_API_CTX), 96, 160);
VRNO_LAYOUT(vrno_offset_of_text, offsetof(VRNO_API_CTX, pszErrMsg), 8, 16);
VRNO_LAYOUT(vrno_offset_of_code, offsetof(VRNO_API_CTX, nErrCode), 12, 24);
VRNO_LAYOUT(vrno_offset_of_flags, offsetof(VRNO_API_CTX, ucFlags), 16, 28);
VRNO_LAYOUT(vrno_offset_of_algorithm, offsetof(VRNO_API_CTX, nSymAlg), 20, 32);
VRNO_LAYOUT(vrno_offset_of_mode, offsetof(VRNO_API_CTX, nSymMode), 24, 36);
VRNO_LAYOUT(vrno_offset_of_certificate, offsetof(VRNO_API_CTX, pLoadedCert), 28, 40);
VRNO_LAYOUT(vrno_offset_of_library, offsetof(VRNO_API_CTX, hMediaLib), 32, 48);
VRNO_LAYOUT(vrno_offset_of_key, offsetof(VRNO_API_CTX, pSessionKey), 48, 80);
VRNO_LAYOUT(vrno_offset_of_chained_iv, offsetof(VRNO_API_CTX, pChangedIv), 60, 104);
VRNO_LAYOUT(vrno_offset_of_numbers, offsetof(VRNO_API_CTX, nReserved1), 64, 112);
VRNO_LAYOUT(vrno_offset_of_buffer, offsetof(VRNO_API_CTX, pReservedBuf2), 80, 128);
VRNO_LAYOUT(vrno_offset_of_octet, offsetof(VRNO_API_CTX, ucReserved), 84, 136);
VRNO_LAYOUT(vrno_offset_of_last, offsetof(VRNO_API_CTX, pReservedObj5), 92, 152);
#undef VRNO_LAYOUT
/** @endcond */

/* ---- context ---- */

/** Makes a context.
 * @param ppCtx    a valid address, which must hold null; it receives the context
 * @param pszPath  a text that is not empty. It is kept, less one trailing slash or backslash; no function reads it yet.
 * @return 0; 1000 *ppCtx is not null; 1003 pszPath null or empty; 1002. A failure stores no text. After 1002 *ppCtx may hold an
 * incomplete context: release it with VRNO_API_Finish(); before that, a further call gives 1000. */
VRNO_API int VRNO_CALL VRNO_API_Init(VRNO_API_CTX** ppCtx, const char* pszPath);

/** Releases the context and everything that it owns: the loaded certificate, the storage library and the session key, which is
 * overwritten before. If *ppCtx is null, it does nothing.
 * @param ppCtx  a valid address; *ppCtx becomes null
 * @return 0 */
VRNO_API int VRNO_CALL VRNO_API_Finish(VRNO_API_CTX** ppCtx);

/** Copies the text of the last failure into a buffer. The text stays stored, also when this function fails. A text has at most
 * 2,047 bytes, so a buffer of 2048 bytes always suffices; one that would be longer is stored as an empty text.
 * @param pCtx        the context
 * @param nBufLen     size of the buffer
 * @param pszErrInfo  the buffer
 * @return 0; 1001; 1004 pszErrInfo null; 1006 no text is stored; 1005 the buffer is too small: it then holds the beginning of the
 * text and a NUL, or is not written when nBufLen is below 1. */
VRNO_API int VRNO_CALL VRNO_API_GetErrInfo(VRNO_API_CTX* pCtx, int nBufLen, char* pszErrInfo);

/* ---- binary strings: these functions take no context and store no text ---- */

/** Prepares a record: sets both fields to zero. It releases nothing.
 * @param pBinStr  the record
 * @return 0; 1004 pBinStr null. */
VRNO_API int VRNO_CALL VRNO_BINSTR_Create(VRNO_BINSTR* pBinStr);

/** Overwrites the nLen bytes at pData with zeros, releases the block and sets both fields to zero. If pData is null, it does
 * nothing.
 * @param pBinStr  the record; its nLen must not be larger than the library has set it
 * @return 0; 1004 pBinStr null. */
VRNO_API int VRNO_CALL VRNO_BINSTR_Delete(VRNO_BINSTR* pBinStr);

/** Replaces the data of a record by a copy. The old data is overwritten and released as by VRNO_BINSTR_Delete().
 * @param pData    the bytes, which may lie in the old data; with null the record becomes empty
 * @param nLen     their number; with 0 the record becomes empty
 * @param pBinStr  the record
 * @return 0; 1004 pBinStr null; 1002 with the record empty. */
VRNO_API int VRNO_CALL VRNO_BINSTR_SetData(const unsigned char* pData, unsigned int nLen, VRNO_BINSTR* pBinStr);

/* ---- files ---- */

/* These functions read a whole file, up to its end also where it grows meanwhile. A file of more than 2^31 - 2 bytes, or one that
 * shrinks meanwhile, cannot be read. Convention 3 says which files a path can name on Windows. */

/** Reads a file of any content.
 * @param pCtx         the context
 * @param pszFilePath  its path
 * @param pData        receives the bytes
 * @return 0; 1001; 1004 pszFilePath null or empty, pData null; 2500 the file cannot be read; 2502 the file is empty; 1002. */
VRNO_API int VRNO_CALL VRNO_MEDIA_DISK_ReadFile(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pData);

/** Reads the file of a certificate. Its content is not checked. An empty file gives 0 and an empty record.
 * @param pCtx         the context
 * @param pszFilePath  its path
 * @param pCert        receives the bytes
 * @return 0; 1001; 1004 pszFilePath null or empty, pCert null; 2504 the file cannot be read; 1002. */
VRNO_API int VRNO_CALL VRNO_MEDIA_DISK_ReadCert(VRNO_API_CTX* pCtx, const char* pszFilePath, VRNO_BINSTR* pCert);

/** Reads the file of a private key. With a password the file must hold a protected key, which is opened as by
 * VRNO_PRIKEY_Decrypt(). Without one the bytes of the file are the result; their content is not checked, and an empty file gives 0
 * and an empty record.
 * @param pCtx         the context
 * @param pszFilePath  its path
 * @param pszPassword  the password; null or empty: none
 * @param pPriKey      receives the key
 * @return 0; 1001; 1004 pszFilePath null or empty, pPriKey null; 2507 the file cannot be read; 1002; 2004, 2001 as for
 * VRNO_PRIKEY_Decrypt(). */
VRNO_API int VRNO_CALL VRNO_MEDIA_DISK_ReadPriKey(VRNO_API_CTX* pCtx, const char* pszFilePath, const char* pszPassword,
                                                  VRNO_BINSTR* pPriKey);

/* ---- certificates (X.509, RFC 5280) ---- */

/** Loads a certificate in DER or BER into the context. PEM and Base64 are not read. A certificate that is already loaded is
 * removed before the new one is read, so it is gone also when the new one cannot be loaded. The dates of the validity must be
 * between 1970-01-01 00:00:00 and 2038-01-19 03:14:07 UTC.
 * @param pCtx   the context
 * @param pCert  the certificate
 * @return 0; 1001; 1004 pCert not valid; 1002; 1500 the certificate cannot be read; the text says where. */
VRNO_API int VRNO_CALL VRNO_CERT_Load(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert);

/** Removes the loaded certificate, if there is one, from the context.
 * @param pCtx  the context
 * @return 0; 1001. */
VRNO_API int VRNO_CALL VRNO_CERT_Unload(VRNO_API_CTX* pCtx);

/* ---- fields of the loaded certificate ---- */

/* The codes of a field: 0; 1001; 1501 no certificate is loaded; 1004 an output pointer is null; 1500 the field cannot be read;
 * 1002. The text getters follow convention 7. */

/** The version.
 * @param pCtx      the context
 * @param pVersion  receives the number in the version field plus one: 3 for X.509 version 3. It is 1 when the field is absent.
 *                  Other numbers are not refused.
 * @return the codes of a field */
VRNO_API int VRNO_CALL VRNO_CERT_GetVersion(VRNO_API_CTX* pCtx, int* pVersion);

/** The serial number in lower-case hexadecimal, two digits an octet. A first octet 00 or FF is left out when others follow it.
 * @param pCtx          the context
 * @param nBufLen       size of the buffer
 * @param pszSerialNum  the buffer
 * @return the codes of a field; 1005 */
VRNO_API int VRNO_CALL VRNO_CERT_GetSerialNum(VRNO_API_CTX* pCtx, int nBufLen, char* pszSerialNum);

/** The signature algorithm of the TBSCertificate: "sha1 With RSAEncryption", "ECDSA with SHA1" or "KCDSA1 With SHA1". Any other is
 * given as "1 2 840 113549 1 1 11 : Unknown AlgorithmIdentifier", with its identifier.
 * @param pCtx        the context
 * @param nBufLen     size of the buffer
 * @param pszSignAlg  the buffer
 * @return the codes of a field; 1005 */
VRNO_API int VRNO_CALL VRNO_CERT_GetSignatureAlgorithm(VRNO_API_CTX* pCtx, int nBufLen, char* pszSignAlg);

/** The name of the issuer as "cn=c,ou=b,o=a,c=KR": the last RDN first, "," between RDNs, "+" between the attributes of one RDN, no
 * blanks and no escapes. The attribute types are c, o, ou, cn, l, e, s, street, sn, serialNumber, title, businessCategory,
 * givenName, initials, generationQualifier, dnQualifier and dc; the string types are PrintableString, T61String, UTF8String,
 * BMPString and IA5String. A name with any other cannot be read: 1500.
 * @param pCtx           the context
 * @param nBufLen        size of the buffer
 * @param pszIssuerName  the buffer
 * @return the codes of a field; 1005 */
VRNO_API int VRNO_CALL VRNO_CERT_GetIssuerName(VRNO_API_CTX* pCtx, int nBufLen, char* pszIssuerName);

/** The name of the subject, in the form of VRNO_CERT_GetIssuerName().
 * @param pCtx            the context
 * @param nBufLen         size of the buffer
 * @param pszSubjectName  the buffer
 * @return the codes of a field; 1005 */
VRNO_API int VRNO_CALL VRNO_CERT_GetSubjectName(VRNO_API_CTX* pCtx, int nBufLen, char* pszSubjectName);

/** The name of the subject in DER.
 * @param pCtx          the context
 * @param pSubjectName  receives the bytes
 * @return the codes of a field */
VRNO_API int VRNO_CALL VRNO_CERT_GetSubjectName_DERFormat(VRNO_API_CTX* pCtx, VRNO_BINSTR* pSubjectName);

/** Both dates as "YYYY-MM-DD hh:mm:ss" in the local time of the machine.
 * @param pCtx          the context
 * @param pszNotBefore  a buffer of 20 bytes
 * @param pszNotAfter   a buffer of 20 bytes
 * @return the codes of a field */
VRNO_API int VRNO_CALL VRNO_CERT_GetValidity(VRNO_API_CTX* pCtx, char* pszNotBefore, char* pszNotAfter);

/** The public key: the identifier of its algorithm, as "1 2 840 113549 1 1 1", cut to 49 characters; and the octets of its BIT
 * STRING in lower-case hexadecimal. For RSA these are the DER of an RSAPublicKey.
 * @param pCtx          the context
 * @param nBufLen       size of the buffer pszPubKey
 * @param pszPubKeyAlg  a buffer of 50 bytes for the identifier
 * @param pszPubKey     a buffer for the octets
 * @return the codes of a field; 1005, which is about pszPubKey; then neither buffer is written. */
VRNO_API int VRNO_CALL VRNO_CERT_GetPubKey(VRNO_API_CTX* pCtx, int nBufLen, char* pszPubKeyAlg, char* pszPubKey);

/** The octets of the signature in lower-case hexadecimal.
 * @param pCtx          the context
 * @param nBufLen       size of the buffer
 * @param pszSignature  the buffer
 * @return the codes of a field; 1005 */
VRNO_API int VRNO_CALL VRNO_CERT_GetSignature(VRNO_API_CTX* pCtx, int nBufLen, char* pszSignature);

/* ---- extensions of the loaded certificate (RFC 5280, section 4.2) ---- */

/* They are texts for people. The codes of an extension: 0; 1001; 1501 no certificate is loaded; 1004 the buffer is null; 1502 the
 * certificate does not have the extension, or its value is empty; 1500 the extension cannot be read; the text of the failure says
 * where; 1002; 1005. The critical flag has no effect.
 *
 * Lines end with CR LF, but the last line does not, unless a comment says so. The text may be empty. Values are complete: they
 * may hold zero octets, above all an IP address, which is given as its raw octets. Such a text continues behind the zero octet, and
 * nBufLen counts all of it, but a reader of C strings stops there. A GeneralName of the form x400Address or ediPartyName is
 * not rendered: 1500. */

/** The names of the bits in their order, as "digitalSignature, keyEncipherment" (4.2.1.3). The buffer needs 2 bytes more than the
 * text and its NUL, unless the text is empty.
 * @param pCtx         the context
 * @param nBufLen      size of the buffer
 * @param pszKeyUsage  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszKeyUsage);

/** "CA : TRUE" or "CA : FALSE", and for a path length constraint of 0 then ", PathLenConstraint : 0" (4.2.1.9). A constraint of
 * -1, which no certificate should have, is not shown.
 * @param pCtx                 the context
 * @param nBufLen              size of the buffer
 * @param pszBasicConstraints  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetBasicConstraints(VRNO_API_CTX* pCtx, int nBufLen, char* pszBasicConstraints);

/** The key identifier in lower-case hexadecimal, two digits an octet (4.2.1.2).
 * @param pCtx     the context
 * @param nBufLen  size of the buffer
 * @param pszSKI   the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetSubKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszSKI);

/** Numbered policies with their qualifiers (4.2.1.4). The last line ends with CR LF, too.
 * @param pCtx           the context
 * @param nBufLen        size of the buffer
 * @param pszCertPolicy  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetCertPolicy(VRNO_API_CTX* pCtx, int nBufLen, char* pszCertPolicy);

/** Only the identifiers of the policies, as "1 2 410 200004 5 2 1 2, 2 5 29 32 0". An identifier from 2.48 on is shown otherwise
 * here than by VRNO_CERT_GetCertPolicy(), and by neither as it is written elsewhere.
 * @param pCtx         the context
 * @param nBufLen      size of the buffer
 * @param pszPolicyID  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetCertPolicy_PolicyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszPolicyID);

/** One line for each purpose: a name such as "id-kp-serverAuth", or the identifier as "1 2 3" (4.2.1.12).
 * @param pCtx            the context
 * @param nBufLen         size of the buffer
 * @param pszExtKeyUsage  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetExtKeyUsage(VRNO_API_CTX* pCtx, int nBufLen, char* pszExtKeyUsage);

/** The names, each with a label and a value (4.2.1.6):
 *   - "RFC822 Name=", "DNS Name=" and "URL=" with the text, "IP Address=" with the raw octets, "Registered ID=" with the
 *     identifier as "1 2 3";
 *   - directoryName: a Korean label, and in the next line a tab and the name in the form of VRNO_CERT_GetSubjectName();
 *   - otherName: "Other Name:" and further lines. The identify data of the Korean PKI is given as the real name and the virtual
 *     identifier; a malformed virtual identifier is 1500. Other data under that type is given in lower-case hexadecimal. Any
 *     other type is given as the type and the value in hexadecimal; a type that cannot be read is empty.
 *
 * @param pCtx           the context
 * @param nBufLen        size of the buffer
 * @param pszSubAltName  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetSubjectAltName(VRNO_API_CTX* pCtx, int nBufLen, char* pszSubAltName);

/** "KeyID=" and the key identifier, the names of the issuer below a Korean heading, "Certificate SerialNumber=" and the serial
 * number, each only when it is present (4.2.1.1). Numbers and otherNames are in hexadecimal. Here an x400Address or ediPartyName
 * is left out and no failure.
 * @param pCtx     the context
 * @param nBufLen  size of the buffer
 * @param pszAKI   the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetAuthKeyID(VRNO_API_CTX* pCtx, int nBufLen, char* pszAKI);

/** Numbered distribution points with their names, reasons and CRL issuers (4.2.1.13). Of several names only the first has a label;
 * an otherName is in hexadecimal. A point without names, or with a name relative to its issuer, ends with CR LF. The CRL issuer
 * of the first point that has one must include a directoryName; otherwise 1500.
 * @param pCtx      the context
 * @param nBufLen   size of the buffer
 * @param pszCRLDP  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetCRLDP(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDP);

/** The values of the first three names in the full names of all distribution points, with "|" between them. For most
 * certificates they are URLs, but all forms of names count: an otherName is given as its encoding, an IP address as its raw
 * octets.
 * @param pCtx         the context
 * @param nBufLen      size of the buffer
 * @param pszCRLDPUrl  the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetCRLDP_URL(VRNO_API_CTX* pCtx, int nBufLen, char* pszCRLDPUrl);

/** Numbered access descriptions, each with its method and its location (4.2.2.1). The location follows "URL=" whatever its form
 * is; an otherName is in hexadecimal. "AuthorityInfoAccess :empty" when there are none.
 * @param pCtx     the context
 * @param nBufLen  size of the buffer
 * @param pszAIA   the buffer
 * @return the codes of an extension */
VRNO_API int VRNO_CALL VRNO_CERT_GetAIA(VRNO_API_CTX* pCtx, int nBufLen, char* pszAIA);

/* ---- enveloped messages (CMS, RFC 5652) ---- */

/** Algorithms. */
enum {
    VRNO_SYM_SEED = 48 /**< SEED (RFC 4269) in CBC mode, with a key of 16 bytes and an IV of 16 bytes */
};

/** Bits of nOption of VRNO_CMS_EncryptData(). Other bits have no effect. */
enum {
    VRNO_CMS_CONTENT_INFO = 2 /**< the result is a ContentInfo with the EnvelopedData inside; without it, the EnvelopedData */
};

/** Encrypts data for the holder of a certificate. The result is an EnvelopedData of version 0. The content is encrypted with
 * SEED-CBC (RFC 4010) under a key and an IV drawn for this message. The key is encrypted with RSA (PKCS #1 v1.5) for one
 * recipient, who is named by issuer and serial number. After a success the key and the IV are the session key and IV of the
 * context, for VRNO_CRYPT_Encrypt() and the others.
 * @param pCtx            the context
 * @param nOption         0 or VRNO_CMS_CONTENT_INFO
 * @param pCert           the certificate in DER. It must have an RSA key of 1024 or 2048 bits. If it has the key usage extension,
 *                        that must include keyEncipherment or keyAgreement. Its validity and its issuer are not checked.
 * @param pData           the content. A record that is null or has no data is an empty content.
 * @param nAlg            VRNO_SYM_SEED
 * @param pEnvelopedData  receives the message. It may be the record of an input. A failure leaves it as it was.
 * @return 0; 1001; 1004 pCert not valid, pEnvelopedData null; 1002; 5000 nAlg is none of 16, 32 and VRNO_SYM_SEED; 1500 the
 * certificate cannot be read; 3001 its key usage does not allow encryption; 1500 its key cannot be used, nAlg is 16 or 32, or the
 * system gives no random bytes; 3006 the message cannot be built, or might have more than 2^31 - 2 bytes (the estimate is up to 512
 * bytes too high). After 1002 the old session key or none is set; after the others the old one stays set. */
VRNO_API int VRNO_CALL VRNO_CMS_EncryptData(VRNO_API_CTX* pCtx, unsigned int nOption, const VRNO_BINSTR* pCert,
                                            const VRNO_BINSTR* pData, int nAlg, VRNO_BINSTR* pEnvelopedData);

/* ---- session cipher: SEED (RFC 4269) in CBC mode ---- */

/** Draws a new session key and IV, which replace the old ones.
 * @param pCtx        the context
 * @param nAlgorithm  VRNO_SYM_SEED
 * @return 0; 1001; 5000 another nAlgorithm; 5001 the system gives no random bytes; 1002. After 5000 and 5001 the old key stays
 * set; after 1002 the old key or no key is set. */
VRNO_API int VRNO_CALL VRNO_CRYPT_GenKeyAndIV(VRNO_API_CTX* pCtx, int nAlgorithm);

/** Sets the session key and IV.
 * @param pCtx        the context
 * @param nAlgorithm  VRNO_SYM_SEED
 * @param pKey        16 bytes
 * @param pIV         16 bytes
 * @return 0; 1001; 1004 pKey not valid, pIV not valid; 5000 another nAlgorithm; 5002 the key does not have 16 bytes; 5003 the IV
 * does not have 16 bytes; 1002. After 1002 no key is set; after the others the old key stays set. */
VRNO_API int VRNO_CALL VRNO_CRYPT_SetKeyAndIV(VRNO_API_CTX* pCtx, int nAlgorithm, const VRNO_BINSTR* pKey, const VRNO_BINSTR* pIV);

/** Gives the session key and IV as they were drawn or set.
 * @param pCtx     the context
 * @param pSymAlg  becomes VRNO_SYM_SEED
 * @param pKey     receives the key
 * @param pIV      receives the IV
 * @return 0; 1001; 1004 pSymAlg, pKey or pIV null; 5004 no key is set; 5000 the key is of another algorithm; 1002. A failure
 * leaves all three as they were. */
VRNO_API int VRNO_CALL VRNO_CRYPT_GetKeyAndIV(VRNO_API_CTX* pCtx, int* pSymAlg, VRNO_BINSTR* pKey, VRNO_BINSTR* pIV);

/** Encrypts one message with the session key. Every call starts from the session IV, so equal messages give equal results. 1 to 16
 * bytes of padding are added, each of which holds their count (as in RFC 5652, section 6.3).
 * @param pCtx         the context
 * @param pPlainText   the message; null or without data: an empty message
 * @param pCipherText  receives the result. It may be the record of the input.
 * @return 0; 1001; 1004 pCipherText null; 5004 no key is set; 1002; 5015 the key cannot be expanded; 5005 encryption failed. */
VRNO_API int VRNO_CALL VRNO_CRYPT_Encrypt(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pPlainText, VRNO_BINSTR* pCipherText);

/** Decrypts what VRNO_CRYPT_Encrypt() gives, checks the padding and removes it. A wrong key is detected by the padding only; the
 * result may be 0 with wrong bytes.
 * @param pCtx         the context
 * @param pCipherText  the message; null or without data decrypts to an empty one
 * @param pPlainText   receives the result. It may be the record of the input.
 * @return 0; 1001; 1004 pPlainText null; 5004 no key is set; 1002; 5015 the key cannot be expanded; 5006 decryption failed. */
VRNO_API int VRNO_CALL VRNO_CRYPT_Decrypt(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCipherText, VRNO_BINSTR* pPlainText);

/* ---- private keys (PKCS #8, RFC 5208) ---- */

/* A plain key is a PrivateKeyInfo in DER, a protected key is an EncryptedPrivateKeyInfo in DER. The octets of a password are
 * used as they are, without conversion, up to the NUL. */

/** Protects a private key of any algorithm with a password: PBES2 (RFC 8018) with PBKDF2 over HMAC-SHA-1, 1024 iterations and a
 * salt of 8 bytes, and SEED-CBC. The salt and the IV are derived from password and key, so equal input gives equal output.
 * @param pCtx         the context
 * @param nAlg         16, 32 or VRNO_SYM_SEED; all three give the same
 * @param pszPassword  the password
 * @param pPriKey      the plain key
 * @param pEncPriKey   receives the protected key
 * @return 0; 1001; 1004 pszPassword null or empty, pPriKey not valid, pEncPriKey null; 5000 another nAlg; 1002; 2000 pPriKey is
 * not a PrivateKeyInfo; 2002 the encryption failed. */
VRNO_API int VRNO_CALL VRNO_PRIKEY_Encrypt(VRNO_API_CTX* pCtx, int nAlg, const char* pszPassword, const VRNO_BINSTR* pPriKey,
                                           VRNO_BINSTR* pEncPriKey);

/** Opens a protected key. It reads what VRNO_PRIKEY_Encrypt() writes, PBES2 and the older schemes of PKCS #5 with SEED, and
 * PKCS #12 with SEED; PBES2 with HMAC-SHA-1 alone. The iteration count may be any number from 1 to 2^31 - 1; the time grows with
 * it.
 * @param pCtx         the context
 * @param pszPassword  the password
 * @param pEncPriKey   the protected key
 * @param pPriKey      receives the plain key
 * @return 0; 1001; 1004 pszPassword null or empty, pEncPriKey not valid, pPriKey null; 1002; 2004 wrong password; 2001 the
 * protected key is malformed, its scheme is not supported, its iteration count is out of range, or its plain text is empty; the
 * text says which. 2004 is the code for all that a wrong password can cause: the decryption fails, also by the length of the data
 * or of the IV, or its result is not a PrivateKeyInfo. */
VRNO_API int VRNO_CALL VRNO_PRIKEY_Decrypt(VRNO_API_CTX* pCtx, const char* pszPassword, const VRNO_BINSTR* pEncPriKey,
                                           VRNO_BINSTR* pPriKey);

/** Checks whether a plain private key and a certificate belong together: signs a text with the key and verifies the signature with
 * the certificate, with SHA-1. Supported are RSA with 1024 and 2048 bits and KCDSA with 1024 bits.
 * @param pCtx     the context
 * @param pCert    the certificate
 * @param pPriKey  the plain key
 * @return 0 they are a pair; 1001; 1004 pCert not valid, pPriKey not valid; 1002; 2003 they are not a pair, or one of them cannot
 * be read or is not supported; the text says which. */
VRNO_API int VRNO_CALL VRNO_PRIKEY_CheckKeyPair(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pCert, const VRNO_BINSTR* pPriKey);

/* ---- smart cards, through a storage library ---- */

/** The one function of a storage library. A storage library is a dynamic library that reads items from a smart card for the
 * toolkit. It exports this function under the name PKI_STORAGE_Read, without decoration, by the C convention:
 *
 *     int PKI_STORAGE_Read(int nItemCode, const char* pszPIN, unsigned char* pBuffer, int* pLength, char* pszMessage);
 *
 * Loading. A library is loaded by VRNO_MEDIA_Load(), and the function is looked up at each read. It is unloaded by
 * VRNO_MEDIA_Unload() and by VRNO_API_Finish(), never between two reads. Several contexts may load the same one; it leaves the
 * process with the last of them.
 *
 * Threads. The function is called by the thread that reads. Different contexts may call it from several threads at once.
 *
 * Calls. VRNO_MEDIA_CARD_ReadCert() calls the function once, for the certificate. VRNO_MEDIA_CARD_ReadPriKey() calls it for the
 * key; and if it has a password and the item code is 0x20, a second time with the same PIN, for item 0x30, the identity check
 * random value. All pointers are not null, and are valid for the one call only. The toolkit does not keep the PIN.
 *
 * An item that is absent. For a certificate and a key the function may return any failure; the caller gets 2504 or 2507. It may
 * also return 0 with length 0, or with an item whose first byte is 0; the caller gets 2502. For item 0x30 it returns 0 in this way:
 * the key is then given without it, while a failure makes the whole read fail with 2514, 2515 or 2519.
 *
 * @param nItemCode   the item: a device or-ed with a code, see VRNO_MEDIA_CARD_ReadCert(); or 0x30
 * @param pszPIN      the PIN as the caller gave it, not empty
 * @param pBuffer     receives the item. It holds zeros before the call, and is overwritten with zeros after it.
 * @param pLength     on entry the size of pBuffer, 2048, for item 0x30 128; on success receives the length of the item. A length
 *                    outside 0 to that size is a failure, with a text that says so.
 * @param pszMessage  a buffer of 512 bytes for a NUL-terminated text about a failure, in code page 949. It holds zeros before the
 *                    call. The text becomes the end of the text of the failure; after a success it is not read.
 * @return 0 success; 256 or 0x80100069 there is no card; 257 or 0x6300 to 0x63FF the PIN is wrong; anything else is any other
 * failure. */
typedef int VRNO_CALL VRNO_STORAGE_READ(int nItemCode, const char* pszPIN, unsigned char* pBuffer, int* pLength, char* pszMessage);

/** Loads a storage library. A context has one at a time. A name without a separator is looked for in the search path of the
 * system. The function VRNO_STORAGE_READ is looked for at each read, so a library without it loads.
 * @param pCtx        the context
 * @param pszLibPath  its path or name
 * @return 0; 1001; 1004 pszLibPath null or empty; 2509 one is already loaded; 2510 the system cannot load it. The text of 2510 ends
 * with the system's error number; on POSIX 2 the file is missing, 13 it may not be read, 8 it is no library that can be loaded. */
VRNO_API int VRNO_CALL VRNO_MEDIA_Load(VRNO_API_CTX* pCtx, const char* pszLibPath);

/** Unloads the storage library. If none is loaded, it does nothing.
 * @param pCtx  the context
 * @return 0; 1001; 2511 the system cannot unload it; it stays loaded. */
VRNO_API int VRNO_CALL VRNO_MEDIA_Unload(VRNO_API_CTX* pCtx);

/** Reads a certificate from the card.
 * @param pCtx       the context
 * @param nDataType  a device plus a role. The device is 0 or 0x1000 to 0xB000 in steps of 0x1000; any other counts as 0. The role
 *                   is 1, 2, 16 or 32. The item code is the device or-ed with 0x10, 0x40, 0x01 or 0x04 for the certificate of that
 *                   role, and with 0x20, 0x50, 0x02 or 0x05 for its private key.
 * @param pszPIN     the PIN
 * @param pCert      receives the certificate
 * @return 0; 1001; 1004 pszPIN null or empty, pCert null; 2513 no storage library is loaded; 2512 the library does not export the
 * function; 6009 the role is not one of the four; 2514 no card; 2515 wrong PIN; 2504 any other failure; 2502 the item is empty or
 * its first byte is zero; 1002. The text of 2514, 2515 and 2504 ends with the result and the message of the storage library. */
VRNO_API int VRNO_CALL VRNO_MEDIA_CARD_ReadCert(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, VRNO_BINSTR* pCert);

/** Reads a private key from the card. Without a password its bytes are the result. With a password it is opened as by
 * VRNO_PRIKEY_Decrypt(); and if its item code is 0x20, the identity check random value is read, too: item 0x30. It becomes the
 * attribute 1.2.410.200004.10.1.1.3 of the key, unless it is empty or its first byte is zero.
 * @param pCtx         the context
 * @param nDataType    as for VRNO_MEDIA_CARD_ReadCert()
 * @param pszPIN       the PIN
 * @param pszPassword  the password; null or empty: none
 * @param pPriKey      receives the key
 * @return the codes of VRNO_MEDIA_CARD_ReadCert(), with pPriKey for pCert and 2507 for 2504; 2519 the random value cannot be read;
 * 2004, 2001 as for VRNO_PRIKEY_Decrypt(); 2000 the random value cannot be added to the key. */
VRNO_API int VRNO_CALL VRNO_MEDIA_CARD_ReadPriKey(VRNO_API_CTX* pCtx, int nDataType, const char* pszPIN, const char* pszPassword,
                                                  VRNO_BINSTR* pPriKey);

/* ---- Base64 (RFC 4648, section 4) ---- */

/** Encodes bytes as a text of one line.
 * @param pCtx      the context
 * @param pData     the bytes
 * @param pEncData  receives the text; its nLen does not count the NUL
 * @return 0; 1001; 1004 pData not valid, pEncData null; 1002; 5500 the text would have more than 2^31 - 2 bytes. */
VRNO_API int VRNO_CALL VRNO_BASE64_Encode(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pData, VRNO_BINSTR* pEncData);

/** Decodes a text into bytes.
 * @param pCtx      the context
 * @param pEncData  the text. It has no white space and no line breaks, and is padded with "=" to a multiple of 4 characters. Bits
 *                  of the last character that belong to no byte are ignored.
 * @param pData     receives the bytes
 * @return 0; 1001; 1004 pEncData not valid, pData null; 1002; 5501 the text is not of this form. */
VRNO_API int VRNO_CALL VRNO_BASE64_Decode(VRNO_API_CTX* pCtx, const VRNO_BINSTR* pEncData, VRNO_BINSTR* pData);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VRNO_H */
