/**
 * @file
 * The interface of vrno.h for C++20: contexts, certificates and binary data that release themselves, octets as
 * std::span and std::vector, texts in UTF-8, and failures as values. It needs vrno.h, vrno_cp949.hpp and the C++ standard library,
 * and neither exceptions nor run-time type information.
 *
 * What vrno.h says of a function holds here, too. Passwords and PINs are octets that are used as they are: toCodePage949() makes
 * those of a Korean password as programs on Windows do. Paths are in the encoding of the system. An argument that is a text may
 * hold no zero octet: VRNO_ERR_ARGUMENT. Memory of the standard library itself that is not there ends the program in the way of the
 * standard library.
 */
#pragma once

#include "vrno.h"
#include "vrno_cp949.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

/** All names of the wrapper. */
namespace vrno {
/** The wrapper's own names among them, so that they are not those of the library's classes when both are linked together. */
inline namespace wrapper {

using Octets = std::vector<unsigned char>;         ///< octets that are given back
using OctetsView = std::span<const unsigned char>; ///< octets that are passed

// ---- results ----

/// @cond
#define VRNO_NAME(name)                                                                                                            \
    {                                                                                                                              \
        name, #name                                                                                                                \
    }
/// @endcond

/** The name of a code in vrno.h.
 * @param code  a result of the library
 * @return as "VRNO_ERR_CERT_FORMAT"; empty for a number that is no code */
inline const char* codeName(int code)
{
    static constexpr struct {
        int code;
        const char* name;
    } names[] = {
        VRNO_NAME(VRNO_OK),
        VRNO_NAME(VRNO_ERR_CTX_NOT_NULL),
        VRNO_NAME(VRNO_ERR_CTX_NULL),
        VRNO_NAME(VRNO_ERR_MEMORY),
        VRNO_NAME(VRNO_ERR_PATH_EMPTY),
        VRNO_NAME(VRNO_ERR_ARGUMENT),
        VRNO_NAME(VRNO_ERR_BUFFER_TOO_SMALL),
        VRNO_NAME(VRNO_ERR_NO_TEXT),
        VRNO_NAME(VRNO_ERR_CERT_FORMAT),
        VRNO_NAME(VRNO_ERR_CERT_NOT_LOADED),
        VRNO_NAME(VRNO_ERR_EXTENSION_ABSENT),
        VRNO_NAME(VRNO_ERR_PRIKEY_FORMAT),
        VRNO_NAME(VRNO_ERR_ENCRYPTED_PRIKEY_FORMAT),
        VRNO_NAME(VRNO_ERR_PRIKEY_ENCRYPT),
        VRNO_NAME(VRNO_ERR_KEY_PAIR),
        VRNO_NAME(VRNO_ERR_PRIKEY_PASSWORD),
        VRNO_NAME(VRNO_ERR_FILE_READ),
        VRNO_NAME(VRNO_ERR_FILE_EMPTY),
        VRNO_NAME(VRNO_ERR_CERT_READ),
        VRNO_NAME(VRNO_ERR_PRIKEY_READ),
        VRNO_NAME(VRNO_ERR_LIB_LOADED),
        VRNO_NAME(VRNO_ERR_LIB_LOAD),
        VRNO_NAME(VRNO_ERR_LIB_UNLOAD),
        VRNO_NAME(VRNO_ERR_LIB_FUNCTION),
        VRNO_NAME(VRNO_ERR_LIB_NOT_LOADED),
        VRNO_NAME(VRNO_ERR_CARD_ABSENT),
        VRNO_NAME(VRNO_ERR_CARD_PIN),
        VRNO_NAME(VRNO_ERR_RANDOM_VALUE_READ),
        VRNO_NAME(VRNO_ERR_NOT_SIGNING_CERT),
        VRNO_NAME(VRNO_ERR_NOT_ENCRYPTION_CERT),
        VRNO_NAME(VRNO_ERR_ENVELOPE),
        VRNO_NAME(VRNO_ERR_SYM_ALG),
        VRNO_NAME(VRNO_ERR_RANDOM),
        VRNO_NAME(VRNO_ERR_KEY_LENGTH),
        VRNO_NAME(VRNO_ERR_IV_LENGTH),
        VRNO_NAME(VRNO_ERR_KEY_NOT_SET),
        VRNO_NAME(VRNO_ERR_ENCRYPT),
        VRNO_NAME(VRNO_ERR_DECRYPT),
        VRNO_NAME(VRNO_ERR_KEY_EXPAND),
        VRNO_NAME(VRNO_ERR_BASE64_ENCODE),
        VRNO_NAME(VRNO_ERR_BASE64_DECODE),
        VRNO_NAME(VRNO_ERR_DATA_TYPE),
    };
    for (const auto& entry : names) {
        if (entry.code == code) return entry.name;
    }
    return "";
}
#undef VRNO_NAME

/** Why a call failed. */
struct Failure {
    int code;         ///< the code, as VRNO_ERR_CERT_FORMAT
    const char* name; ///< its name, as "VRNO_ERR_CERT_FORMAT"
    std::string text; ///< the library's text about it in UTF-8, which may be empty
};

/** What a call gives that has nothing to give. */
using Done = std::monostate;

/** What a call gives: a value or a failure. Asking for the one that is not there ends the program by std::abort(). */
template <class T> class [[nodiscard]] Result {
public:
    /** A success. @param value what the call gives */
    Result(T value) : m_result(std::in_place_index<0>, std::move(value)) {}
    /** A failure. @param failure why */
    Result(Failure failure) : m_result(std::in_place_index<1>, std::move(failure)) {}

    /** Whether there is a value. @return true for a success */
    explicit operator bool() const { return m_result.index() == 0; }
    /** The value, of a success only. @return the value */
    T& operator*() & { return *known(std::get_if<0>(&m_result)); }
    /** The value, of a success only. @return the value */
    const T& operator*() const& { return *known(std::get_if<0>(&m_result)); }
    /** The value, of a success only. @return the value, to be moved from */
    T&& operator*() && { return std::move(*known(std::get_if<0>(&m_result))); }
    /** A member of the value, of a success only. @return the value */
    T* operator->() { return known(std::get_if<0>(&m_result)); }
    /** A member of the value, of a success only. @return the value */
    const T* operator->() const { return known(std::get_if<0>(&m_result)); }
    /** The failure, where there is no value. @return the failure */
    const Failure& error() const { return *known(std::get_if<1>(&m_result)); }

private:
    std::variant<T, Failure> m_result;

    template <class Pointer> static Pointer known(Pointer pointer)
    {
        if (!pointer) std::abort();
        return pointer;
    }
};

// ---- binary data ----

/** A VRNO_BINSTR that overwrites and releases its data at its end. */
class BinaryString {
public:
    BinaryString() { VRNO_BINSTR_Create(&m_record); }
    /** Takes the data of another, which becomes empty. @param other the other */
    BinaryString(BinaryString&& other) noexcept : m_record(std::exchange(other.m_record, VRNO_BINSTR{})) {}
    /** Exchanges the data with another. @param other the other @return this */
    BinaryString& operator=(BinaryString&& other) noexcept
    {
        std::swap(m_record, other.m_record);
        return *this;
    }
    ~BinaryString() { VRNO_BINSTR_Delete(&m_record); }

    /** Replaces the data by a copy. @param data the octets @return 0, or 1002 with no data */
    int set(OctetsView data)
    {
        if (data.size() > UINT32_MAX) return VRNO_ERR_MEMORY;
        return VRNO_BINSTR_SetData(data.data(), static_cast<unsigned int>(data.size()), &m_record);
    }
    /** The record, for the functions of vrno.h. @return its address */
    VRNO_BINSTR* get() { return &m_record; }
    /** The data, as long as it is not changed. @return the octets */
    OctetsView view() const { return {m_record.pData, m_record.nLen}; }
    /** A copy of the data. @return the octets */
    Octets octets() const { return {view().begin(), view().end()}; }

private:
    VRNO_BINSTR m_record;
};

// ---- contexts ----

/** A session key and its IV. */
struct SessionKey {
    int algorithm; ///< VRNO_SYM_SEED
    Octets key;    ///< 16 octets
    Octets iv;     ///< 16 octets
};

/** A context: everything but certificates that are looked at, for which Certificate is. The octets that are given back belong to
 * the caller, who overwrites them where they are secret. A context that has been moved from gives VRNO_ERR_CTX_NULL. */
class Context {
public:
    /** Makes a context. @param path the path for VRNO_API_Init() @return the context */
    static Result<Context> make(const std::string& path = ".")
    {
        Context context;
        const int code = VRNO_API_Init(&context.m_context, path.c_str());
        if (code != VRNO_OK) return Failure{code, codeName(code), {}};
        return context;
    }
    /** Takes over a context. @param other the other */
    Context(Context&& other) noexcept : m_context(std::exchange(other.m_context, nullptr)) {}
    /** Exchanges the contexts. @param other the other @return this */
    Context& operator=(Context&& other) noexcept
    {
        std::swap(m_context, other.m_context);
        return *this;
    }
    ~Context() { VRNO_API_Finish(&m_context); }

    /** The context, for the functions of vrno.h. @return its address */
    VRNO_API_CTX* get() const { return m_context; }

    /** The failure of a function of vrno.h that was called last with this context.
     * @param code  its result
     * @param path  a path that it was given, which stands in the text without conversion
     * @return the failure */
    Failure failure(int code, std::string_view path = {}) const
    {
        std::array<char, 2048> buffer{};
        if (VRNO_API_GetErrInfo(m_context, static_cast<int>(buffer.size()), buffer.data()) != VRNO_OK) buffer[0] = '\0';
        const std::string_view text = buffer.data();
#ifndef _WIN32
        const std::size_t at = path.empty() ? std::string_view::npos : text.find(path);
        if (at != std::string_view::npos) {
            return {code, codeName(code), toUtf8(text.substr(0, at)).append(path) + toUtf8(text.substr(at + path.size()))};
        }
#else
        (void)path;
#endif
        return {code, codeName(code), toUtf8(text)};
    }

    // ---- files ----

    /** VRNO_MEDIA_DISK_ReadFile(). @param path the file @return its octets */
    Result<Octets> readFile(const std::string& path) const { return read(VRNO_MEDIA_DISK_ReadFile, path); }
    /** VRNO_MEDIA_DISK_ReadCert(). @param path the file @return its octets */
    Result<Octets> readCertificate(const std::string& path) const { return read(VRNO_MEDIA_DISK_ReadCert, path); }
    /** VRNO_MEDIA_DISK_ReadPriKey(). @param path the file @param password may be empty @return the key */
    Result<Octets> readPrivateKey(const std::string& path, const std::string& password = {}) const
    {
        if (hasZero(path) || hasZero(password)) return zeroOctet();
        BinaryString key;
        return octets(VRNO_MEDIA_DISK_ReadPriKey(m_context, path.c_str(), password.c_str(), key.get()), key, path);
    }

    // ---- enveloped messages and the session cipher ----

    /** VRNO_CMS_EncryptData(). @param certificate of the recipient @param data the content @param option as there @param algorithm
     * as there @return the message */
    Result<Octets> encryptFor(OctetsView certificate, OctetsView data, unsigned int option = VRNO_CMS_CONTENT_INFO,
                              int algorithm = VRNO_SYM_SEED) const
    {
        const VRNO_BINSTR cert = record(certificate), content = record(data);
        BinaryString message;
        return octets(VRNO_CMS_EncryptData(m_context, option, &cert, &content, algorithm, message.get()), message);
    }
    /** VRNO_CRYPT_GenKeyAndIV(). @param algorithm as there @return nothing */
    Result<Done> generateKey(int algorithm = VRNO_SYM_SEED) const { return done(VRNO_CRYPT_GenKeyAndIV(m_context, algorithm)); }
    /** VRNO_CRYPT_SetKeyAndIV(). @param key the key @param iv the IV @param algorithm as there @return nothing */
    Result<Done> setKey(OctetsView key, OctetsView iv, int algorithm = VRNO_SYM_SEED) const
    {
        const VRNO_BINSTR keyRecord = record(key), ivRecord = record(iv);
        return done(VRNO_CRYPT_SetKeyAndIV(m_context, algorithm, &keyRecord, &ivRecord));
    }
    /** VRNO_CRYPT_GetKeyAndIV(). @return the session key and IV */
    Result<SessionKey> key() const
    {
        int algorithm = 0;
        BinaryString key, iv;
        const int code = VRNO_CRYPT_GetKeyAndIV(m_context, &algorithm, key.get(), iv.get());
        if (code != VRNO_OK) return failure(code);
        return SessionKey{algorithm, key.octets(), iv.octets()};
    }
    /** VRNO_CRYPT_Encrypt(). @param plain the message @return the cipher text */
    Result<Octets> encrypt(OctetsView plain) const { return convert(VRNO_CRYPT_Encrypt, plain); }
    /** VRNO_CRYPT_Decrypt(). @param cipher the cipher text @return the message */
    Result<Octets> decrypt(OctetsView cipher) const { return convert(VRNO_CRYPT_Decrypt, cipher); }

    // ---- private keys ----

    /** VRNO_PRIKEY_Encrypt(). @param password the password @param key the plain key @param algorithm as there @return the protected
     * key */
    Result<Octets> protectKey(const std::string& password, OctetsView key, int algorithm = VRNO_SYM_SEED) const
    {
        if (hasZero(password)) return zeroOctet();
        const VRNO_BINSTR plain = record(key);
        BinaryString result;
        return octets(VRNO_PRIKEY_Encrypt(m_context, algorithm, password.c_str(), &plain, result.get()), result);
    }
    /** VRNO_PRIKEY_Decrypt(). @param password the password @param key the protected key @return the plain key */
    Result<Octets> openKey(const std::string& password, OctetsView key) const
    {
        if (hasZero(password)) return zeroOctet();
        const VRNO_BINSTR blob = record(key);
        BinaryString result;
        return octets(VRNO_PRIKEY_Decrypt(m_context, password.c_str(), &blob, result.get()), result);
    }
    /** VRNO_PRIKEY_CheckKeyPair(). @param certificate the certificate @param key the plain key @return nothing; a failure when they
     * are no pair */
    Result<Done> checkKeyPair(OctetsView certificate, OctetsView key) const
    {
        const VRNO_BINSTR cert = record(certificate), plain = record(key);
        return done(VRNO_PRIKEY_CheckKeyPair(m_context, &cert, &plain));
    }

    // ---- smart cards ----

    /** VRNO_MEDIA_Load(). @param path the storage library @return nothing */
    Result<Done> loadStorage(const std::string& path) const
    {
        return hasZero(path) ? zeroOctet() : done(VRNO_MEDIA_Load(m_context, path.c_str()), path);
    }
    /** VRNO_MEDIA_Unload(). @return nothing */
    Result<Done> unloadStorage() const { return done(VRNO_MEDIA_Unload(m_context)); }
    /** VRNO_MEDIA_CARD_ReadCert(). @param dataType as there @param pin the PIN @return the certificate */
    Result<Octets> readCardCertificate(int dataType, const std::string& pin) const
    {
        if (hasZero(pin)) return zeroOctet();
        BinaryString cert;
        return octets(VRNO_MEDIA_CARD_ReadCert(m_context, dataType, pin.c_str(), cert.get()), cert);
    }
    /** VRNO_MEDIA_CARD_ReadPriKey(). @param dataType as there @param pin the PIN @param password may be empty @return the key */
    Result<Octets> readCardPrivateKey(int dataType, const std::string& pin, const std::string& password = {}) const
    {
        if (hasZero(pin) || hasZero(password)) return zeroOctet();
        BinaryString key;
        return octets(VRNO_MEDIA_CARD_ReadPriKey(m_context, dataType, pin.c_str(), password.c_str(), key.get()), key);
    }

    // ---- Base64 ----

    /** VRNO_BASE64_Encode(). @param data the octets @return the text */
    Result<std::string> encodeBase64(OctetsView data) const
    {
        const Result<Octets> text = convert(VRNO_BASE64_Encode, data);
        if (!text) return text.error();
        return std::string(text->begin(), text->end());
    }
    /** VRNO_BASE64_Decode(). @param text the text @return the octets */
    Result<Octets> decodeBase64(std::string_view text) const
    {
        return convert(VRNO_BASE64_Decode, OctetsView{reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    }

    /// @cond
    // For Certificate. A record of more octets than a length can say is one of the longest, which the library refuses.
    static VRNO_BINSTR record(OctetsView data)
    {
        return {const_cast<unsigned char*>(data.data()),
                static_cast<unsigned int>(data.size() < UINT32_MAX ? data.size() : UINT32_MAX)};
    }
    Result<Done> done(int code, std::string_view path = {}) const
    {
        if (code != VRNO_OK) return failure(code, path);
        return Done{};
    }
    Result<Octets> octets(int code, const BinaryString& data, std::string_view path = {}) const
    {
        if (code != VRNO_OK) return failure(code, path);
        return data.octets();
    }
    /// @endcond

private:
    VRNO_API_CTX* m_context = nullptr;

    Context() = default;
    static bool hasZero(const std::string& text) { return text.find('\0') != std::string::npos; }
    static Failure zeroOctet() { return {VRNO_ERR_ARGUMENT, codeName(VRNO_ERR_ARGUMENT), "A text has a zero octet."}; }

    Result<Octets> read(decltype(VRNO_MEDIA_DISK_ReadFile)& function, const std::string& path) const
    {
        if (hasZero(path)) return zeroOctet();
        BinaryString data;
        return octets(function(m_context, path.c_str(), data.get()), data, path);
    }
    Result<Octets> convert(decltype(VRNO_CRYPT_Encrypt)& function, OctetsView in) const
    {
        const VRNO_BINSTR input = record(in);
        BinaryString output;
        return octets(function(m_context, &input, output.get()), output);
    }
};

// ---- certificates ----

/** The dates of a certificate, as "2024-01-31 09:00:00" in local time. */
struct Validity {
    std::string notBefore; ///< the first second
    std::string notAfter;  ///< the last second
};

/** The public key of a certificate. */
struct PublicKey {
    std::string algorithm; ///< the identifier, as "1 2 840 113549 1 1 1"
    std::string key;       ///< the octets in hexadecimal
};

/** A certificate that is loaded in a context of its own, and its fields and extensions. Texts are complete, also behind a zero
 * octet. */
class Certificate {
public:
    /** VRNO_CERT_Load(). @param der the certificate in DER or BER @return the certificate */
    static Result<Certificate> load(OctetsView der)
    {
        Result<Context> context = Context::make();
        if (!context) return context.error();
        const VRNO_BINSTR input = Context::record(der);
        const int code = VRNO_CERT_Load(context->get(), &input);
        if (code != VRNO_OK) return context->failure(code);
        return Certificate(std::move(*context));
    }
    /** Reads a file and loads it. @param path the file @return the certificate */
    static Result<Certificate> read(const std::string& path)
    {
        const Result<Context> context = Context::make();
        if (!context) return context.error();
        const Result<Octets> der = context->readCertificate(path);
        if (!der) return der.error();
        return load(*der);
    }
    /** Takes over a certificate. @param other the other */
    Certificate(Certificate&& other) noexcept = default;
    /** Exchanges the certificates. @param other the other @return this */
    Certificate& operator=(Certificate&& other) noexcept = default;
    ~Certificate() { VRNO_CERT_Unload(m_context.get()); }

    /** VRNO_CERT_GetVersion(). @return the version */
    Result<int> version() const
    {
        int version = 0;
        const int code = VRNO_CERT_GetVersion(m_context.get(), &version);
        if (code != VRNO_OK) return m_context.failure(code);
        return version;
    }
    /** VRNO_CERT_GetValidity(). @return both dates */
    Result<Validity> validity() const
    {
        std::array<char, 20> from{}, to{};
        const int code = VRNO_CERT_GetValidity(m_context.get(), from.data(), to.data());
        if (code != VRNO_OK) return m_context.failure(code);
        return Validity{from.data(), to.data()};
    }
    /** VRNO_CERT_GetPubKey(). @return the key */
    Result<PublicKey> publicKey() const
    {
        std::array<char, 50> algorithm{};
        const auto get = [&algorithm](VRNO_API_CTX* context, int size, char* text) {
            return VRNO_CERT_GetPubKey(context, size, algorithm.data(), text);
        };
        const Result<std::string> key = text(get);
        if (!key) return key.error();
        return PublicKey{algorithm.data(), *key};
    }
    /** VRNO_CERT_GetSubjectName_DERFormat(). @return the name in DER */
    Result<Octets> subjectNameDer() const
    {
        BinaryString name;
        return m_context.octets(VRNO_CERT_GetSubjectName_DERFormat(m_context.get(), name.get()), name);
    }

    /** VRNO_CERT_GetSerialNum(). @return the serial number in hexadecimal */
    Result<std::string> serialNumber() const { return text(VRNO_CERT_GetSerialNum); }
    /** VRNO_CERT_GetSignatureAlgorithm(). @return its name or identifier */
    Result<std::string> signatureAlgorithm() const { return text(VRNO_CERT_GetSignatureAlgorithm); }
    /** VRNO_CERT_GetIssuerName(). @return the name */
    Result<std::string> issuerName() const { return text(VRNO_CERT_GetIssuerName); }
    /** VRNO_CERT_GetSubjectName(). @return the name */
    Result<std::string> subjectName() const { return text(VRNO_CERT_GetSubjectName); }
    /** VRNO_CERT_GetSignature(). @return the octets in hexadecimal */
    Result<std::string> signature() const { return text(VRNO_CERT_GetSignature); }
    /** VRNO_CERT_GetKeyUsage(). @return the text of the extension */
    Result<std::string> keyUsage() const { return text(VRNO_CERT_GetKeyUsage); }
    /** VRNO_CERT_GetBasicConstraints(). @return the text of the extension */
    Result<std::string> basicConstraints() const { return text(VRNO_CERT_GetBasicConstraints); }
    /** VRNO_CERT_GetSubKeyID(). @return the text of the extension */
    Result<std::string> subjectKeyId() const { return text(VRNO_CERT_GetSubKeyID); }
    /** VRNO_CERT_GetCertPolicy(). @return the text of the extension */
    Result<std::string> policies() const { return text(VRNO_CERT_GetCertPolicy); }
    /** VRNO_CERT_GetCertPolicy_PolicyID(). @return the text of the extension */
    Result<std::string> policyIds() const { return text(VRNO_CERT_GetCertPolicy_PolicyID); }
    /** VRNO_CERT_GetExtKeyUsage(). @return the text of the extension */
    Result<std::string> extendedKeyUsage() const { return text(VRNO_CERT_GetExtKeyUsage); }
    /** VRNO_CERT_GetSubjectAltName(). @return the text of the extension */
    Result<std::string> subjectAltName() const { return text(VRNO_CERT_GetSubjectAltName); }
    /** VRNO_CERT_GetAuthKeyID(). @return the text of the extension */
    Result<std::string> authorityKeyId() const { return text(VRNO_CERT_GetAuthKeyID); }
    /** VRNO_CERT_GetCRLDP(). @return the text of the extension */
    Result<std::string> crlPoints() const { return text(VRNO_CERT_GetCRLDP); }
    /** VRNO_CERT_GetCRLDP_URL(). @return the text of the extension */
    Result<std::string> crlUrls() const { return text(VRNO_CERT_GetCRLDP_URL); }
    /** VRNO_CERT_GetAIA(). @return the text of the extension */
    Result<std::string> authorityInfoAccess() const { return text(VRNO_CERT_GetAIA); }

private:
    Context m_context;

    explicit Certificate(Context context) : m_context(std::move(context)) {}

    // Asks for the size, which is the last number in the text of the failure, and then for the text. The octets that a getter does
    // not write stay as they are: the last zero octet ends the text.
    template <class Getter> Result<std::string> text(Getter get) const
    {
        char none = '\0';
        Failure failed = m_context.failure(get(m_context.get(), 0, &none));
        if (failed.code != VRNO_ERR_BUFFER_TOO_SMALL) return failed;
        std::string buffer(lastNumber(failed.text), '\xFF');
        const int code = get(m_context.get(), static_cast<int>(buffer.size()), buffer.data());
        if (code != VRNO_OK) return m_context.failure(code);
        buffer.resize(buffer.rfind('\0'));
        return toUtf8(buffer);
    }
    static std::size_t lastNumber(const std::string& text)
    {
        constexpr const char* digits = "0123456789";
        const std::size_t last = text.find_last_of(digits);
        if (last == std::string::npos) return 0;
        std::size_t number = 0;
        for (std::size_t at = text.find_last_not_of(digits, last) + 1; at <= last; ++at) {
            number = number * 10 + static_cast<std::size_t>(text[at] - '0');
        }
        return number;
    }
};

} // namespace wrapper
} // namespace vrno
