// Private keys with certificates for them.
#pragma once

#include "support/openssl.h"

namespace test {

inline const std::string oidRsa = "06{2A864886F70D010101}", oidKcdsa = "06{2A831A8C9A440101}", oidKcdsa1 = "06{2A831A8C9A440115}";

struct Pair {
    std::string privateKey, certificate;
    std::shared_ptr<EVP_PKEY> peer;
};
Pair makeRsa(unsigned bits);
const Pair& rsa(unsigned bits); // the same one each time

// The key of tests/data/kcdsa1024.txt under either of its identifiers; J, seed and count of the domain go no further.
struct Kcdsa {
    Kcdsa();
    Pair pair(const std::string& oid) const;
    std::string x, y, domain;
};

} // namespace test
