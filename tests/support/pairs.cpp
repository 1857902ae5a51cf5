#include "support/pairs.h"

#include "support/cases.h"
#include "support/certificates.h"

#include <openssl/rsa.h>

namespace test {

Pair makeRsa(unsigned bits)
{
    const std::shared_ptr<EVP_PKEY> peer(EVP_RSA_gen(bits), Freed());
    const Owned<PKCS8_PRIV_KEY_INFO> info(EVP_PKEY2PKCS8(peer.get()));
    return {encoded(i2d_PKCS8_PRIV_KEY_INFO, info.get()),
            certificate({.algorithm = oidRsa + "0500", .key = hex(encoded(i2d_PublicKey, peer.get()))}), peer};
}

const Pair& rsa(unsigned bits)
{
    static std::map<unsigned, Pair> pairs;
    return pairs.contains(bits) ? pairs[bits] : pairs[bits] = makeRsa(bits);
}

Kcdsa::Kcdsa()
{
    const Case key = cases("kcdsa1024.txt", 3).at(0);
    x = key[0];
    y = key[1];
    domain = key[2];
}

Pair Kcdsa::pair(const std::string& oid) const
{
    const std::string algorithm = oid + " 30{" + domain + "020103 04{\"seed\"} 020105}";
    return {der("30{020100 30{" + algorithm + "} 04{" + x + "}}"), certificate({.algorithm = algorithm, .key = y}), nullptr};
}

} // namespace test
