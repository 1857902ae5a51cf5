// libvrno for programs in C++20: the functions of vrno.h with objects that release themselves, octets as spans and vectors, and texts
// in UTF-8. Nothing throws but the containers of the standard library, when memory runs out. vrno.h says what each function does and
// which codes it gives. Octets of a private key or of a plain text are the caller's to overwrite.
#pragma once

#include "vrno.h"
#include "vrno_cp949.hpp"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vrno {
inline namespace wrapper { // so that no name of it is one of the static library's

using Octets = std::vector<unsigned char>;
using OctetView = std::span<const unsigned char>;

// ---- results ----

// The name of a code in vrno.h, "" for a number that is none.
inline std::string_view nameOf(int code)
{
    switch (code) {
#define VRNO_NAME(name)                                                                                                                  \
    case name: return #name
        VRNO_NAME(VRNO_OK);
        VRNO_NAME(VRNO_ERR_CTX_NOT_NULL);
        VRNO_NAME(VRNO_ERR_CTX_NULL);
        VRNO_NAME(VRNO_ERR_MEMORY);
        VRNO_NAME(VRNO_ERR_PATH_EMPTY);
        VRNO_NAME(VRNO_ERR_ARGUMENT);
        VRNO_NAME(VRNO_ERR_BUFFER_TOO_SMALL);
        VRNO_NAME(VRNO_ERR_NO_TEXT);
        VRNO_NAME(VRNO_ERR_CERT_FORMAT);
        VRNO_NAME(VRNO_ERR_CERT_NOT_LOADED);
        VRNO_NAME(VRNO_ERR_EXTENSION_ABSENT);
        VRNO_NAME(VRNO_ERR_PRIKEY_FORMAT);
        VRNO_NAME(VRNO_ERR_ENCRYPTED_PRIKEY_FORMAT);
        VRNO_NAME(VRNO_ERR_PRIKEY_ENCRYPT);
        VRNO_NAME(VRNO_ERR_KEY_PAIR);
        VRNO_NAME(VRNO_ERR_PRIKEY_PASSWORD);
        VRNO_NAME(VRNO_ERR_FILE_READ);
        VRNO_NAME(VRNO_ERR_FILE_EMPTY);
        VRNO_NAME(VRNO_ERR_CERT_READ);
        VRNO_NAME(VRNO_ERR_PRIKEY_READ);
        VRNO_NAME(VRNO_ERR_LIB_LOADED);
        VRNO_NAME(VRNO_ERR_LIB_LOAD);
        VRNO_NAME(VRNO_ERR_LIB_UNLOAD);
        VRNO_NAME(VRNO_ERR_LIB_FUNCTION);
        VRNO_NAME(VRNO_ERR_LIB_NOT_LOADED);
        VRNO_NAME(VRNO_ERR_CARD_ABSENT);
        VRNO_NAME(VRNO_ERR_CARD_PIN);
        VRNO_NAME(VRNO_ERR_RANDOM_VALUE_READ);
        VRNO_NAME(VRNO_ERR_NOT_SIGNING_CERT);
        VRNO_NAME(VRNO_ERR_NOT_ENCRYPTION_CERT);
        VRNO_NAME(VRNO_ERR_ENVELOPE);
        VRNO_NAME(VRNO_ERR_SYM_ALG);
        VRNO_NAME(VRNO_ERR_RANDOM);
        VRNO_NAME(VRNO_ERR_KEY_LENGTH);
        VRNO_NAME(VRNO_ERR_IV_LENGTH);
        VRNO_NAME(VRNO_ERR_KEY_NOT_SET);
        VRNO_NAME(VRNO_ERR_ENCRYPT);
        VRNO_NAME(VRNO_ERR_DECRYPT);
        VRNO_NAME(VRNO_ERR_KEY_EXPAND);
        VRNO_NAME(VRNO_ERR_BASE64_ENCODE);
        VRNO_NAME(VRNO_ERR_BASE64_DECODE);
        VRNO_NAME(VRNO_ERR_DATA_TYPE);
#undef VRNO_NAME
    default: return "";
    }
}

struct Error {
    int code = VRNO_OK;
    std::string text; // of VRNO_API_GetErrInfo, may be empty

    std::string_view name() const { return nameOf(code); }
};

// A value or an error, as std::expected has them.
template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : m_content(std::in_place_index<1>, std::move(error)) {}

    bool has_value() const { return m_content.index() == 0; }
    explicit operator bool() const { return has_value(); }

    // Only where there is a value.
    T& operator*() & { return *std::get_if<0>(&m_content); }
    const T& operator*() const& { return *std::get_if<0>(&m_content); }
    T&& operator*() && { return std::move(*std::get_if<0>(&m_content)); }
    T* operator->() { return std::get_if<0>(&m_content); }
    const T* operator->() const { return std::get_if<0>(&m_content); }
    T value_or(T other) const { return has_value() ? **this : std::move(other); }

    // Only where there is none.
    const Error& error() const { return *std::get_if<1>(&m_content); }
    // VRNO_OK where there is a value.
    int code() const { return has_value() ? int{VRNO_OK} : error().code; }

private:
    std::variant<T, Error> m_content;
};

using Status = Result<std::monostate>;

// ---- binary strings ----

// A VRNO_BINSTR that the library fills; it is overwritten and released with the object.
class BinaryString {
public:
    BinaryString() = default;
    BinaryString(const BinaryString&) = delete;
    BinaryString& operator=(const BinaryString&) = delete;
    ~BinaryString() { VRNO_BINSTR_Delete(&m_record); }

    VRNO_BINSTR* record() { return &m_record; }
    OctetView view() const { return {m_record.pData, m_record.nLen}; }

private:
    VRNO_BINSTR m_record = {nullptr, 0};
};

// An input record over the caller's octets, which it does not own.
class Input {
public:
    explicit Input(OctetView octets)
        : m_record{const_cast<unsigned char*>(octets.data()), static_cast<unsigned>(std::min<std::size_t>(octets.size(), tooLong))}
    {
    }
    operator const VRNO_BINSTR*() const { return &m_record; }

private:
    static constexpr std::size_t tooLong = 0xFFFFFFFF; // which the library refuses

    VRNO_BINSTR m_record;
};

// ---- contexts ----

struct SessionKey {
    Octets key; // 16 octets each
    Octets iv;
};

class Context {
public:
    static Result<Context> make(const std::string& path = ".")
    {
        VRNO_API_CTX* handle = nullptr;
        const int code = VRNO_API_Init(&handle, path.c_str());
        Context context(handle);
        if (code != VRNO_OK) return Error{code, {}};
        return context;
    }
    Context(Context&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Context& operator=(Context&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Context() { VRNO_API_Finish(&m_handle); }

    // For the functions of vrno.h.
    VRNO_API_CTX* handle() const { return m_handle; }

    // Files. A path is in the system's encoding; a password is bytes.
    Result<Octets> readFile(const std::string& path) { return octets(VRNO_MEDIA_DISK_ReadFile, path.c_str()); }
    Result<Octets> readCertificate(const std::string& path) { return octets(VRNO_MEDIA_DISK_ReadCert, path.c_str()); }
    Result<Octets> readPrivateKey(const std::string& path, const std::string& password = {})
    {
        return octets(VRNO_MEDIA_DISK_ReadPriKey, path.c_str(), password.c_str());
    }

    // Enveloped messages: for the holder of a certificate, as a ContentInfo or the bare EnvelopedData.
    Result<Octets> envelop(OctetView certificate, OctetView content, bool isContentInfo = true)
    {
        return octets(VRNO_CMS_EncryptData, isContentInfo ? unsigned{VRNO_CMS_CONTENT_INFO} : 0u, Input(certificate), Input(content),
                      int{VRNO_SYM_SEED});
    }

    // The session cipher.
    Status drawSessionKey() { return status(VRNO_CRYPT_GenKeyAndIV(m_handle, VRNO_SYM_SEED)); }
    Status setSessionKey(OctetView key, OctetView iv)
    {
        return status(VRNO_CRYPT_SetKeyAndIV(m_handle, VRNO_SYM_SEED, Input(key), Input(iv)));
    }
    Result<SessionKey> sessionKey()
    {
        int algorithm = 0;
        BinaryString key, iv;
        const int code = VRNO_CRYPT_GetKeyAndIV(m_handle, &algorithm, key.record(), iv.record());
        if (code != VRNO_OK) return failure(code);
        return SessionKey{copy(key), copy(iv)};
    }
    Result<Octets> encrypt(OctetView message) { return octets(VRNO_CRYPT_Encrypt, Input(message)); }
    Result<Octets> decrypt(OctetView message) { return octets(VRNO_CRYPT_Decrypt, Input(message)); }

    // Private keys in PKCS #8.
    Result<Octets> protectPrivateKey(OctetView key, const std::string& password)
    {
        return octets(VRNO_PRIKEY_Encrypt, int{VRNO_SYM_SEED}, password.c_str(), Input(key));
    }
    Result<Octets> openPrivateKey(OctetView protectedKey, const std::string& password)
    {
        return octets(VRNO_PRIKEY_Decrypt, password.c_str(), Input(protectedKey));
    }
    Status checkKeyPair(OctetView certificate, OctetView key)
    {
        return status(VRNO_PRIKEY_CheckKeyPair(m_handle, Input(certificate), Input(key)));
    }

    // Smart cards, through a storage library.
    Status loadStorage(const std::string& path) { return status(VRNO_MEDIA_Load(m_handle, path.c_str())); }
    Status unloadStorage() { return status(VRNO_MEDIA_Unload(m_handle)); }
    Result<Octets> readCardCertificate(int dataType, const std::string& pin)
    {
        return octets(VRNO_MEDIA_CARD_ReadCert, dataType, pin.c_str());
    }
    Result<Octets> readCardPrivateKey(int dataType, const std::string& pin, const std::string& password = {})
    {
        return octets(VRNO_MEDIA_CARD_ReadPriKey, dataType, pin.c_str(), password.c_str());
    }

    // Base64 in one line.
    Result<std::string> encodeBase64(OctetView data)
    {
        BinaryString text;
        const int code = VRNO_BASE64_Encode(m_handle, Input(data), text.record());
        if (code != VRNO_OK) return failure(code);
        return std::string(text.view().begin(), text.view().end());
    }
    Result<Octets> decodeBase64(std::string_view text)
    {
        return octets(VRNO_BASE64_Decode, Input({reinterpret_cast<const unsigned char*>(text.data()), text.size()}));
    }

protected:
    // The error of the last call.
    Error failure(int code) const
    {
        char text[2048] = ""; // always suffices
        VRNO_API_GetErrInfo(m_handle, sizeof text, text);
        return {code, utf8FromCp949(text)};
    }
    Status status(int code) const
    {
        if (code != VRNO_OK) return failure(code);
        return std::monostate();
    }

    // What a function writes to its last argument.
    template <typename Function, typename... Arguments> Result<Octets> octets(Function function, const Arguments&... arguments)
    {
        BinaryString result;
        const int code = function(m_handle, arguments..., result.record());
        if (code != VRNO_OK) return failure(code);
        return copy(result);
    }

    // What a getter writes to a buffer, which is asked for its size first. A text may hold zero octets: it ends at the last one
    // that is not behind the text, where the buffer still holds what it was filled with.
    template <typename Getter> Result<std::string> text(Getter getter)
    {
        char nothing = 0;
        const int asked = getter(0, &nothing);
        if (asked != VRNO_ERR_BUFFER_TOO_SMALL) return failure(asked);
        const std::string told = failure(asked).text;
        const std::size_t digits = told.find_last_of("0123456789"), begin = told.find_last_not_of("0123456789", digits) + 1;
        std::string buffer(static_cast<std::size_t>(std::strtol(told.c_str() + begin, nullptr, 10)), '\xFF');
        const int code = getter(static_cast<int>(buffer.size()), buffer.data());
        if (code != VRNO_OK) return failure(code);
        return utf8FromCp949(std::string_view(buffer).substr(0, buffer.find_last_not_of('\xFF')));
    }
    Result<std::string> text(int(VRNO_CALL* getter)(VRNO_API_CTX*, int, char*))
    {
        return text([&](int size, char* buffer) { return getter(m_handle, size, buffer); });
    }

private:
    explicit Context(VRNO_API_CTX* handle) : m_handle(handle) {}
    static Octets copy(const BinaryString& string) { return Octets(string.view().begin(), string.view().end()); }

    VRNO_API_CTX* m_handle;
};

// ---- certificates ----

struct Validity {
    std::string notBefore; // "YYYY-MM-DD hh:mm:ss" in the local time of the machine
    std::string notAfter;
};

struct PublicKey {
    std::string algorithm; // "1 2 840 113549 1 1 1"
    std::string octets;    // in hexadecimal
};

// A loaded certificate, in a context of its own. An extension that is absent gives VRNO_ERR_EXTENSION_ABSENT.
class Certificate : private Context {
public:
    static Result<Certificate> load(OctetView der)
    {
        Result<Context> context = Context::make();
        if (!context) return context.error();
        Certificate certificate(std::move(*context));
        const Status loaded = certificate.status(VRNO_CERT_Load(certificate.handle(), Input(der)));
        if (!loaded) return loaded.error();
        return certificate;
    }
    using Context::handle;

    Result<int> version()
    {
        int number = 0;
        const int code = VRNO_CERT_GetVersion(handle(), &number);
        if (code != VRNO_OK) return failure(code);
        return number;
    }
    Result<std::string> serialNumber() { return text(VRNO_CERT_GetSerialNum); }
    Result<std::string> signatureAlgorithm() { return text(VRNO_CERT_GetSignatureAlgorithm); }
    Result<std::string> issuer() { return text(VRNO_CERT_GetIssuerName); }
    Result<std::string> subject() { return text(VRNO_CERT_GetSubjectName); }
    Result<Octets> subjectDer() { return octets(VRNO_CERT_GetSubjectName_DERFormat); }
    Result<Validity> validity()
    {
        char notBefore[20] = "", notAfter[20] = "";
        const int code = VRNO_CERT_GetValidity(handle(), notBefore, notAfter);
        if (code != VRNO_OK) return failure(code);
        return Validity{notBefore, notAfter};
    }
    Result<PublicKey> publicKey()
    {
        char algorithm[50] = "";
        const Result<std::string> octets =
            text([&](int size, char* buffer) { return VRNO_CERT_GetPubKey(handle(), size, algorithm, buffer); });
        if (!octets) return octets.error();
        return PublicKey{algorithm, *octets};
    }
    Result<std::string> signature() { return text(VRNO_CERT_GetSignature); }

    Result<std::string> keyUsage() { return text(VRNO_CERT_GetKeyUsage); }
    Result<std::string> basicConstraints() { return text(VRNO_CERT_GetBasicConstraints); }
    Result<std::string> subjectKeyIdentifier() { return text(VRNO_CERT_GetSubKeyID); }
    Result<std::string> authorityKeyIdentifier() { return text(VRNO_CERT_GetAuthKeyID); }
    Result<std::string> policies() { return text(VRNO_CERT_GetCertPolicy); }
    Result<std::string> policyIdentifiers() { return text(VRNO_CERT_GetCertPolicy_PolicyID); }
    Result<std::string> extendedKeyUsage() { return text(VRNO_CERT_GetExtKeyUsage); }
    Result<std::string> subjectAltName() { return text(VRNO_CERT_GetSubjectAltName); }
    Result<std::string> crlDistributionPoints() { return text(VRNO_CERT_GetCRLDP); }
    Result<std::string> crlUrls() { return text(VRNO_CERT_GetCRLDP_URL); }
    Result<std::string> authorityInfoAccess() { return text(VRNO_CERT_GetAIA); }

private:
    explicit Certificate(Context&& context) : Context(std::move(context)) {}
};

} // namespace wrapper
} // namespace vrno
