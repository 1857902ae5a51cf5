// modp_b64 of stringencoders.
#include "bench.h"

#include <modp_b64.h>

namespace bench {
namespace {

Operation encode(const Input& in)
{
    return [out = std::string(modp_b64_encode_len(in.data.size()), 0), &in](Bytes* kept) mutable {
        const auto* const data = reinterpret_cast<const char*>(in.data.data());
        keep(kept, out.data(), modp_b64_encode(out.data(), data, in.data.size()));
    };
}

Operation decode(const Input& in)
{
    return [out = std::string(modp_b64_decode_len(in.data.size()), 0), &in](Bytes* kept) mutable {
        const auto* const data = reinterpret_cast<const char*>(in.data.data());
        const std::size_t length = modp_b64_decode(out.data(), data, in.data.size());
        require(length != static_cast<std::size_t>(-1), "modp_b64_decode");
        keep(kept, out.data(), length);
    };
}

const bool added = addPeer({"modp_b64", "of Debian", {{Work::base64Encode, encode}, {Work::base64Decode, decode}}});

} // namespace
} // namespace bench
