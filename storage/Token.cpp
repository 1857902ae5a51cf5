#include "Token.h"

#include "hex.h"

#include <cstdlib>
#include <memory>
#include <new>

namespace storage {

namespace {

// ---- what an entry of VRNO_P11_TOKENS matches ----

// The fields of a token are filled up with blanks.
template <std::size_t size> std::string_view field(const unsigned char (&bytes)[size])
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// Cuts off what stands before the separator, which goes, too.
std::string_view cut(std::string_view& rest, char separator)
{
    const std::size_t end = rest.find(separator);
    const std::string_view first = rest.substr(0, end);
    rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
    return first;
}

// The next octet of a value with percent-encoding; -1 for a "%" without two digits.
int nextOctet(std::string_view& value)
{
    const int first = static_cast<unsigned char>(value[0]);
    value.remove_prefix(1);
    if (first != '%') return first;
    const int octet = value.size() < 2 ? -1 : hexOctet(value[0], value[1]);
    value.remove_prefix(octet < 0 ? 0 : 2);
    return octet;
}

bool isEncoded(std::string_view value, std::string_view text)
{
    for (const char c : text) {
        if (value.empty() || nextOctet(value) != static_cast<unsigned char>(c)) return false;
    }
    return value.empty();
}

// A PKCS #11 URI (RFC 7512) behind its scheme: all attributes of the path must match. One that is not about tokens matches none.
// The query says how to reach the token, which is known here.
bool matchesUri(std::string_view uri, const CK_TOKEN_INFO& info)
{
    const struct {
        std::string_view name, value;
    } fields[] = {
        {"token", field(info.label)},
        {"serial", field(info.serialNumber)},
        {"manufacturer", field(info.manufacturerID)},
        {"model", field(info.model)},
    };
    std::string_view path = cut(uri, '?');
    while (!path.empty()) {
        std::string_view value = cut(path, ';');
        const std::string_view name = cut(value, '=');
        bool matches = false;
        for (const auto& known : fields) matches |= known.name == name && isEncoded(value, known.value);
        if (!matches) return false;
    }
    return true;
}

bool matches(std::string_view entry, const CK_TOKEN_INFO& info)
{
    constexpr std::string_view scheme = "pkcs11:";
    if (entry.substr(0, scheme.size()) == scheme) return matchesUri(entry.substr(scheme.size()), info);
    return entry == field(info.label) || entry == field(info.serialNumber);
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// ---- the slots ----

struct Slots {
    std::unique_ptr<CK_SLOT_ID[]> ids;
    CK_ULONG count = 0;
};

// Those with a token. Their number may grow between the two questions.
CK_RV findSlots(const CK_FUNCTION_LIST& module, Slots& slots)
{
    CK_RV code = CKR_BUFFER_TOO_SMALL;
    for (int tries = 0; code == CKR_BUFFER_TOO_SMALL && tries < 8; ++tries) {
        code = module.C_GetSlotList(CK_TRUE, nullptr, &slots.count);
        if (code != CKR_OK || slots.count == 0) return code;
        slots.ids.reset(new (std::nothrow) CK_SLOT_ID[slots.count]);
        if (!slots.ids) return CKR_HOST_MEMORY;
        code = module.C_GetSlotList(CK_TRUE, slots.ids.get(), &slots.count);
    }
    return code;
}

// The tokens that match, or all if there is no entry. A slot may have lost its token, or have one that is not set up yet. What else
// goes wrong with a slot is told when no other slot has the token.
struct Matches {
    int count = 0;
    Token first;
    CK_RV trouble = CKR_OK;
};

void match(const CK_FUNCTION_LIST& module, const Slots& slots, std::string_view entry, Matches& found)
{
    for (CK_ULONG i = 0; i < slots.count; ++i) {
        Token token{slots.ids[i]};
        const CK_RV code = module.C_GetTokenInfo(token.slot, &token.info);
        if (code != CKR_OK) {
            if (code != CKR_TOKEN_NOT_PRESENT && code != CKR_TOKEN_NOT_RECOGNIZED) found.trouble = code;
            continue;
        }
        if (!(token.info.flags & CKF_TOKEN_INITIALIZED)) continue;
        if (!entry.empty() && !matches(entry, token.info)) continue;
        if (found.count++ == 0) found.first = token;
    }
}

} // namespace

std::string_view Token::label() const { return field(info.label); }

int findToken(Answer& answer, const CK_FUNCTION_LIST& module, int device, Token& token)
{
    const char* const variable = std::getenv("VRNO_P11_TOKENS");
    std::string_view names = variable ? variable : "", entry;
    if (!names.empty()) {
        for (int skipped = 0; skipped <= device; ++skipped) entry = trimmed(cut(names, ','));
        if (entry.empty())
            return answer.fail(noToken, "VRNO_P11_TOKENS names no token for the device 0x%x",
                               static_cast<unsigned int>(device) * 0x1000);
    }
    Slots slots;
    Matches found;
    if (const int failure = answer.failOf(findSlots(module, slots), "C_GetSlotList")) return failure;
    match(module, slots, entry, found);
    token = found.first;
    if (found.count == 1) return 0;
    if (found.count == 0 && found.trouble != CKR_OK) return answer.failOf(found.trouble, "C_GetTokenInfo");
    if (entry.empty() && found.count == 0) return answer.fail(noToken, "there is no token");
    if (entry.empty()) return answer.fail(noToken, "there are %d tokens; VRNO_P11_TOKENS must name them", found.count);
    return answer.fail(noToken, "%d tokens match %.*s in VRNO_P11_TOKENS", found.count, SIZED(entry));
}

} // namespace storage
