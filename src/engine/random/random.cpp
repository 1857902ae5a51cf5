#include "engine/random/random.h"

#include "base/wipe.h"
#include "engine/digest/kinds.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace vrno {

namespace {

constexpr std::size_t poolLength = 1023, digestLength = 20;

struct Pool {
    std::size_t size = 0;  // bytes in use
    std::size_t index = 0; // rolling position, at most poolLength
    std::uint32_t count = 0;
    unsigned char digest[digestLength] = {};
    unsigned char bytes[poolLength] = {};
};

// ---- the process's state, under one lock ----

constinit platform::Mutex randMutex;
constinit Pool randPool; // its digest is the running one that the generators of single calls share
constinit std::uint32_t seededProcess = 0;

// Forks wait until nobody is inside, so that a child finds the pool whole and the lock free.
class Locked {
public:
    Locked()
    {
        platform::holdDuringFork(randMutex, [] { seededProcess = 0; }); // a child's pool is its parent's until it is seeded
        randMutex.lock();
    }
    ~Locked() { randMutex.unlock(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

// ---- mixing ----

// The `count` bytes of the pool's first `size` that start at `from` and go on at the front.
template <class Update> void takeRound(const Pool& pool, std::size_t from, std::size_t count, std::size_t size, Update update)
{
    const std::size_t first = std::min(count, size - std::min(from, size));
    update(pool.bytes + from, first);
    update(pool.bytes, count - first);
}

// Mixes data into the pool, twenty bytes at a time. `more` goes into each digest.
void mix(Pool& pool, const unsigned char* data, std::size_t length, const unsigned char* more, std::size_t moreLength)
{
    std::size_t i = pool.index;
    pool.index += length;
    if (pool.index > poolLength) {
        pool.size = poolLength;
        pool.index %= poolLength;
    } else {
        pool.size = std::max(pool.size, pool.index);
    }
    for (std::size_t done = 0; done < length;) {
        const std::size_t piece = std::min(length - done, digestLength);
        SHA1_State state;
        const auto update = [&state](const unsigned char* bytes, std::size_t count) { SHA1_Update(state, bytes, count); };
        SHA1_Init(state);
        update(pool.digest, digestLength);
        update(more, moreLength);
        takeRound(pool, i, piece, poolLength, update);
        update(data + done, piece);
        SHA1_Final(state, pool.digest);
        wipe(&state, sizeof state);
        for (std::size_t m = 0; m < piece; ++m) {
            if (i >= poolLength) i = 0;
            pool.bytes[i++] ^= pool.digest[m];
        }
        done += piece;
    }
}

// Fills the output, eight bytes a digest: half of the digest comes out, and `feedback` goes back into the pool.
template <class Digest>
void draw(Pool& pool, unsigned char* running, const unsigned char* feedback, unsigned char* output, std::size_t length)
{
    constexpr std::size_t half = 8;
    std::size_t i = pool.index;
    pool.index += length;
    if (pool.index > pool.size) pool.index %= pool.size;
    typename Digest::State state;
    const auto update = [&state](const unsigned char* bytes, std::size_t count) { Digest::update(state, bytes, count); };
    while (length > 0) {
        const std::size_t piece = std::min(length, half);
        Digest::init(state);
        update(running + half, half);
        update(output, piece);
        takeRound(pool, i, piece, pool.size, update);
        Digest::final(state, running);
        for (std::size_t m = 0; m < piece; ++m) {
            if (i >= pool.size) i = 0;
            pool.bytes[i++] ^= feedback[m];
            *output++ = running[half + m];
        }
        length -= piece;
    }
    Digest::init(state);
    update(reinterpret_cast<const unsigned char*>(&pool.count), sizeof pool.count);
    ++pool.count;
    update(running, Digest::size);
    Digest::final(state, running);
    wipe(&state, sizeof state);
}

std::uint32_t now()
{
    return static_cast<std::uint32_t>(platform::wallClock().seconds);
}

// Seeds with bytes of the system and the time. `more` is the process and the first word of each seed.
template <std::size_t length> bool seedFromSystem(Pool& pool, bool tellsProcess)
{
    unsigned char bytes[length];
    const bool given = platform::randomBytes(bytes, length);
    const auto seed = [&pool, tellsProcess](const unsigned char* data, std::size_t count) {
        unsigned char more[8];
        const std::uint32_t process = platform::processId();
        std::memcpy(more, &process, 4);
        std::memcpy(more + 4, data, 4);
        mix(pool, data, count, more, tellsProcess ? sizeof more : 0);
        wipe(more, sizeof more);
    };
    const std::uint32_t time = now();
    if (given) {
        seed(bytes, length);
        seed(reinterpret_cast<const unsigned char*>(&time), sizeof time);
    }
    wipe(bytes, length);
    return given;
}

// With the lock held: seeds on first use, and in a child, which throws its parent's pool away, whole or half done. The
// number tells a child that no handler ran in.
bool seedProcess()
{
    const std::uint32_t process = platform::processId();
    if (seededProcess == process) return true;
    randPool = Pool{};
    if (!seedFromSystem<88>(randPool, false)) return false;
    seededProcess = process;
    return true;
}

} // namespace

bool randSeed(const unsigned char* data, int length)
{
    const Locked lock;
    if (!seedProcess()) return false;
    if (length > 0) mix(randPool, data, static_cast<std::size_t>(length), nullptr, 0);
    return true;
}

bool randBytes(unsigned char* output, int length)
{
    const Locked lock;
    if (!seedProcess()) return false;
    if (length > 0) draw<Md5Kind>(randPool, randPool.digest, randPool.digest, output, static_cast<std::size_t>(length));
    return true;
}

bool randBytesLocal(unsigned char* output, int length)
{
    if (length < 1) return true;
    Pool pool;
    if (!seedFromSystem<92>(pool, true)) return false;
    unsigned char running[digestLength];
    {
        const Locked lock;
        std::memcpy(running, randPool.digest, digestLength);
    }
    draw<Sha1Kind>(pool, running, pool.digest, output, static_cast<std::size_t>(length));
    {
        const Locked lock;
        std::memcpy(randPool.digest, running, digestLength);
    }
    wipe(&pool, sizeof pool);
    wipe(running, sizeof running);
    return true;
}

} // namespace vrno
