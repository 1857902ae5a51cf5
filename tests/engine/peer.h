// OpenSSL's big numbers as values, beside ours.
#pragma once

#include "engine/bignum/bignum.h"

#include <openssl/bn.h>

#include <memory>
#include <string>
#include <vector>

namespace test {

inline BN_CTX* bnContext()
{
    static const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> made(BN_CTX_new(), BN_CTX_free);
    return made.get();
}

struct Peer {
    std::unique_ptr<BIGNUM, decltype(&BN_free)> number{BN_new(), BN_free};

    Peer() = default;
    Peer(const vrno::ZIRC_BN& a) // NOLINT: implicit on purpose
    {
        std::vector<unsigned char> bytes(vrno::bnBytes);
        const int length = bnToBytes(bytes.data(), a);
        BN_bin2bn(bytes.data(), length, number.get());
        BN_set_negative(number.get(), static_cast<int>(a.neg));
    }
    explicit Peer(const std::string& bytes)
    {
        BN_bin2bn(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()), number.get());
    }
    operator BIGNUM*() const { return number.get(); }
    std::string text() const
    {
        const std::unique_ptr<char, void (*)(char*)> hexadecimal(BN_bn2hex(number.get()), [](char* p) { OPENSSL_free(p); });
        return hexadecimal.get();
    }
    std::string bytes(int length) const // big-endian, zeros in front
    {
        std::string out(static_cast<std::size_t>(length), '\0');
        BN_bn2binpad(number.get(), reinterpret_cast<unsigned char*>(out.data()), length);
        return out;
    }
    vrno::ZIRC_BN ours() const
    {
        vrno::ZIRC_BN a;
        unsigned char bytes[vrno::bnBytes];
        bnFromBytes(a, bytes, BN_bn2bin(number.get(), bytes));
        return a;
    }
};

} // namespace test
