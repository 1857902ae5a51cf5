// Certificates by their parts, in notation.
#pragma once

#include <string>

namespace test {

// A certificate by its parts in notation: elements, the contents of AlgorithmIdentifiers and of the key's BIT STRING.
struct CertificateParts {
    std::string version = "A0{020102}", serial = "00C3", signature = "06{2A03}", name = "30{31{30{06{550403} 13{\"A\"}}}}",
                algorithm = "06{2A03}", key = "3F", extensions = "";
};
std::string certificate(const CertificateParts& parts);
std::string certificateWith(const std::string& extensionOid, const std::string& value);
// One with every extension that a getter shows, and every branch of their renderings that gives a text.
extern const std::string everyExtension;

} // namespace test
