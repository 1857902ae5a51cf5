// The digests that an operation can be bound to.
#pragma once

namespace vrno {

enum ZIRC_HashId : unsigned int { hashMd5 = 0, hashSha1 = 1 };

} // namespace vrno
