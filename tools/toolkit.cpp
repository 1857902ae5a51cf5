#include "toolkit.h"

#include "codes.h"
#include "problem.h"

#include <algorithm>
#include <string_view>

namespace tool {

bool isVerbose = false;

void failBy(const vrno::Failure& failure)
{
    const Code* const code = findCode(failure.code);
    std::string text = "[" + std::to_string(failure.code) + "] " + (code ? in(code->meaning) : failure.text);
    if (isVerbose && !failure.text.empty()) text += "\n  " + failure.text;
    fail(text);
}

vrno::Context makeContext() { return valueOf(vrno::Context::make()); }

// ---- PEM (RFC 7468) ----

constexpr std::string_view begin = "-----BEGIN ", end = "-----END ";

Octets derOf(const Octets& content)
{
    const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
    const std::size_t start = text.find(begin);
    if (start == text.npos) return content;
    const std::size_t first = text.find('\n', start), last = text.find(end, start);
    if (first == text.npos || last == text.npos || last < first) fail(in({"The PEM block has no end.", "PEM 블록이 끝나지 않았습니다."}));
    Secret base64(text.substr(first, last - first));
    std::erase_if(base64, [](char c) { return c == '\n' || c == '\r' || c == ' ' || c == '\t'; });
    return secretCopy(valueOf(makeContext().decodeBase64(base64)));
}

std::string pem(const char* label, std::span<const unsigned char> der)
{
    constexpr std::size_t lineLength = 64;
    const std::string base64 = valueOf(makeContext().encodeBase64(der));
    std::string text = std::string(begin) + label + "-----\n";
    for (std::size_t at = 0; at < base64.size(); at += lineLength) text += base64.substr(at, lineLength) + "\n";
    return text + std::string(end) + label + "-----\n";
}

// ---- passwords ----

vrno::Result<vrno::Octets> withPassword(const Secret& password, const std::function<vrno::Result<vrno::Octets>(const std::string&)>& open)
{
    const std::string typed(password.begin(), password.end());
    vrno::Result<vrno::Octets> result = open(typed);
    if (result || result.error().code != VRNO_ERR_PRIKEY_PASSWORD) return result;
    const auto converted = vrno::toCodePage949(typed);
    return converted && *converted != typed ? open(*converted) : std::move(result);
}

Octets secretCopy(vrno::Octets octets)
{
    Octets copy(octets.begin(), octets.end());
    for (volatile unsigned char& octet : octets) octet = 0;
    return copy;
}

} // namespace tool
