/*
 * A storage library for libvrno that reads items from a PKCS #11 token; vrno.h has the contract. Environment variables:
 *
 *     VRNO_P11_MODULE   the path of the module
 *     VRNO_P11_TOKENS   labels, serial numbers or PKCS #11 URIs of tokens, by commas: the first is device 0, the next 0x1000 ...
 *                       A URI has the attributes token, serial, manufacturer and model; a comma in it is written as %2C.
 *                       Not needed when there is one token only
 *     VRNO_P11_ID_10    the CKA_ID of the certificate of item 0x10, in hexadecimal; and so VRNO_P11_ID_40, _01 and _04
 *
 * The item of code 0x10 has the label "item-10", and so on. Certificates are X.509 certificate objects. Private keys and the random
 * value are private data objects of the application PKI_STORAGE. A certificate without that label is found by its CKA_ID or, if it
 * is the only one, by its key usage.
 */
#include "Module.h"
#include "Session.h"
#include "hex.h"

#include "vrno.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#if defined(_WIN32)
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

using namespace storage;

extern "C" EXPORTED int PKI_STORAGE_Read(int itemCode, const char* pin, unsigned char* buffer, int* length, char* message);

namespace {

// ---- items ----

enum class Kind { signing, encryption, key, randomValue };

struct Item {
    int code;
    Kind kind;
    const char *label, *idVariable;

    bool isCertificate() const { return kind == Kind::signing || kind == Kind::encryption; }
};
constexpr Item items[] = {
    {0x10, Kind::signing, "item-10", "VRNO_P11_ID_10"},
    {0x40, Kind::encryption, "item-40", "VRNO_P11_ID_40"},
    {0x01, Kind::signing, "item-01", "VRNO_P11_ID_01"},
    {0x04, Kind::encryption, "item-04", "VRNO_P11_ID_04"},
    {0x20, Kind::key, "item-20", nullptr},
    {0x50, Kind::key, "item-50", nullptr},
    {0x02, Kind::key, "item-02", nullptr},
    {0x05, Kind::key, "item-05", nullptr},
    {0x30, Kind::randomValue, "item-30", nullptr},
};

const Item* findItem(int code)
{
    for (const Item& item : items) {
        if (item.code == code) return &item;
    }
    return nullptr;
}

// ---- objects ----

CK_OBJECT_CLASS certificateClass = CKO_CERTIFICATE, dataClass = CKO_DATA;
CK_CERTIFICATE_TYPE x509 = CKC_X_509;
CK_BBOOL isPrivate = CK_TRUE;
char application[] = "PKI_STORAGE";

CK_ATTRIBUTE number(CK_ATTRIBUTE_TYPE type, CK_ULONG& value) { return {type, &value, sizeof value}; }
CK_ATTRIBUTE bytes(CK_ATTRIBUTE_TYPE type, const void* value, std::size_t length)
{
    return {type, const_cast<void*>(value), static_cast<CK_ULONG>(length)}; // the module only reads it
}
CK_ATTRIBUTE text(CK_ATTRIBUTE_TYPE type, const char* value) { return bytes(type, value, std::strlen(value)); }

// The objects that fit an item, of which there should be one.
struct Found {
    CK_OBJECT_HANDLE object = 0;
    int count = 0;

    int add(CK_OBJECT_HANDLE handle)
    {
        object = handle;
        ++count;
        return 0;
    }
};

// One item that is read from one token.
class Reading {
public:
    Reading(Answer& answer, const CK_FUNCTION_LIST& module, const Item& item, const Token& token)
        : m_answer(answer), m_item(item), m_token(token), m_session(answer, module)
    {}
    int read(const char* pin, unsigned char* buffer, int& length);

private:
    int find();
    int findByLabel();
    int findById();
    int findByKeyUsage();
    int addIfUsageFits(CK_OBJECT_HANDLE object);
    bool isForAnotherItem(CK_OBJECT_HANDLE object);
    int absent(int& length);
    int copy(unsigned char* buffer, int& length);

    Answer& m_answer;
    const Item& m_item;
    const Token& m_token;
    Session m_session;
    Found m_found;
};

int Reading::findByLabel()
{
    const auto add = [this](CK_OBJECT_HANDLE object) { return m_found.add(object); };
    const CK_ATTRIBUTE label = text(CKA_LABEL, m_item.label);
    if (m_item.isCertificate()) {
        return m_session.forEach({number(CKA_CLASS, certificateClass), number(CKA_CERTIFICATE_TYPE, x509), label}, add);
    }
    return m_session.forEach(
        {number(CKA_CLASS, dataClass), bytes(CKA_PRIVATE, &isPrivate, sizeof isPrivate), text(CKA_APPLICATION, application), label},
        add);
}

int Reading::findById()
{
    unsigned char id[128];
    std::size_t length = 0;
    const char* digits = std::getenv(m_item.idVariable);
    if (!digits || !*digits) return 0;
    for (; *digits; digits += 2) {
        const int octet = hexOctet(digits[0], digits[1]);
        if (octet < 0 || length == sizeof id) return m_answer.fail(badSetting, "%s is not an ID in hexadecimal", m_item.idVariable);
        id[length++] = static_cast<unsigned char>(octet);
    }
    return m_session.forEach({number(CKA_CLASS, certificateClass), number(CKA_CERTIFICATE_TYPE, x509), bytes(CKA_ID, id, length)},
                             [this](CK_OBJECT_HANDLE object) { return m_found.add(object); });
}

// ---- key usage ----

// The names of the usages that the certificate has, none when it has no such extension or cannot be loaded. 0, or 1002.
int keyUsage(unsigned char* certificate, CK_ULONG length, char* names, int size)
{
    VRNO_API_CTX* context = nullptr;
    const VRNO_BINSTR input{certificate, static_cast<unsigned int>(length)};
    int code = VRNO_API_Init(&context, ".");
    if (code == 0) code = VRNO_CERT_Load(context, &input);
    if (code == 0) code = VRNO_CERT_GetKeyUsage(context, size, names);
    VRNO_API_Finish(&context);
    if (code != 0) *names = '\0';
    return code == VRNO_ERR_MEMORY ? code : 0;
}

bool fits(Kind kind, const char* usages)
{
    const auto has = [usages](const char* name) { return std::strstr(usages, name) != nullptr; };
    if (kind == Kind::encryption) return has("keyEncipherment") || has("dataEncipherment") || has("keyAgreement");
    return has("digitalSignature") || has("nonRepudiation");
}

bool Reading::isForAnotherItem(CK_OBJECT_HANDLE object)
{
    char label[32];
    CK_ULONG length = 0;
    if (m_session.read(object, CKA_LABEL, label, sizeof label, length) != CKR_OK) return false;
    for (const Item& item : items) {
        if (&item != &m_item && std::string_view(label, length) == item.label) return true;
    }
    return false;
}

int Reading::addIfUsageFits(CK_OBJECT_HANDLE object)
{
    if (isForAnotherItem(object)) return 0;
    constexpr CK_ULONG most = 65536; // larger ones are not certificates of people
    char usages[256] = "";
    CK_ULONG length = 0;
    const std::unique_ptr<unsigned char[]> certificate(new (std::nothrow) unsigned char[most]);
    if (!certificate) return m_answer.failOf(CKR_HOST_MEMORY, "the key usage");
    const CK_RV code = m_session.read(object, CKA_VALUE, certificate.get(), most, length);
    if (code == CKR_BUFFER_TOO_SMALL || code == CKR_ATTRIBUTE_TYPE_INVALID) return 0;
    if (code != CKR_OK) return m_answer.failOf(code, "C_GetAttributeValue");
    if (keyUsage(certificate.get(), length, usages, sizeof usages) != 0) return m_answer.failOf(CKR_HOST_MEMORY, "the key usage");
    return fits(m_item.kind, usages) ? m_found.add(object) : 0;
}

int Reading::findByKeyUsage()
{
    return m_session.forEach({number(CKA_CLASS, certificateClass), number(CKA_CERTIFICATE_TYPE, x509)},
                             [this](CK_OBJECT_HANDLE object) { return addIfUsageFits(object); });
}

// ---- reading ----

int Reading::find()
{
    int result = findByLabel();
    if (result == 0 && m_found.count == 0 && m_item.isCertificate()) result = findById();
    if (result == 0 && m_found.count == 0 && m_item.isCertificate()) result = findByKeyUsage();
    return result;
}

int Reading::absent(int& length)
{
    const std::string_view token = m_token.label();
    if (m_found.count > 1) {
        return m_answer.fail(storage::absent, "%d objects on token %.*s fit %s", m_found.count, SIZED(token), m_item.label);
    }
    if (m_item.kind == Kind::randomValue) {
        length = 0; // it need not be there
        return 0;
    }
    return m_answer.fail(storage::absent, "no %s %s on token %.*s", m_item.isCertificate() ? "certificate" : "private data object",
                         m_item.label, SIZED(token));
}

int Reading::copy(unsigned char* buffer, int& length)
{
    CK_ULONG size = 0;
    const CK_ULONG capacity = length > 0 ? static_cast<CK_ULONG>(length) : 0;
    const CK_RV code = m_session.read(m_found.object, CKA_VALUE, buffer, capacity, size);
    if (code == CKR_BUFFER_TOO_SMALL) {
        return m_answer.fail(tooLong, "%s has %lu bytes, more than the %lu that fit", m_item.label, size, capacity);
    }
    if (code != CKR_OK) return m_answer.failOf(code, "C_GetAttributeValue");
    length = static_cast<int>(size);
    return 0;
}

int Reading::read(const char* pin, unsigned char* buffer, int& length)
{
    int result = m_session.open(m_token, pin);
    if (result == 0) result = find();
    if (result != 0) return result;
    return m_found.count == 1 ? copy(buffer, length) : absent(length);
}

} // namespace

int PKI_STORAGE_Read(int itemCode, const char* pin, unsigned char* buffer, int* length, char* message)
{
    Answer answer(message);
    const CK_FUNCTION_LIST* module = nullptr;
    Token token;
    const Item* const item = findItem(itemCode & 0xFFF);
    if (itemCode < 0 || !item)
        return answer.fail(badSetting, "0x%x is not the code of an item", static_cast<unsigned int>(itemCode));
    const ModuleLock lock;
    if (const int failure = useModule(answer, module)) return failure;
    if (const int failure = findToken(answer, *module, itemCode / 0x1000, token)) return failure;
    return Reading(answer, *module, *item, token).read(pin, buffer, *length);
}
