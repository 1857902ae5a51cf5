#include "engine/random/random.h"

#include "base/wipe.h"
#include "engine/digest/kinds.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vrno {

namespace {

constexpr std::size_t poolLength = 1023, digestLength = 20;

struct Pool {
    std::size_t size;  // bytes in use
    std::size_t index; // rolling position, at most poolLength
    std::uint32_t count;
    unsigned char digest[digestLength];
    unsigned char bytes[poolLength];
};

// ---- the process's state, under one lock ----

// In a child all of it is zero, so the child seeds a pool of its own.
struct ProcessState {
    bool isSeeded;
    Pool randPool; // the pools of single calls share its digest
};
static_assert(sizeof(ProcessState) <= platform::maxProcessMemory && std::is_trivial_v<ProcessState>);

class Locked {
public:
    Locked() : m_state(static_cast<ProcessState*>(platform::lockProcessMemory())) {}
    ~Locked() { platform::unlockProcessMemory(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

    ProcessState* operator->() const { return m_state; }

private:
    ProcessState* const m_state;
};

// ---- mixing ----

// Updates with `count` bytes from the position `from`. After the pool's first `size` bytes it continues at the front.
template <class Update> void updateFromRing(const Pool& pool, std::size_t from, std::size_t count, std::size_t size, Update update)
{
    const std::size_t upToEnd = std::min(count, size - std::min(from, size));
    update(pool.bytes + from, upToEnd);
    update(pool.bytes, count - upToEnd);
}

// Mixes data into the pool, twenty bytes at a time. `more` goes into each digest.
void randMix(Pool& pool, const unsigned char* data, std::size_t length, const unsigned char* more, std::size_t moreLength)
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
        updateFromRing(pool, i, piece, poolLength, update);
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

// Fills the output, eight bytes a digest: the second half of `digest` goes to the output, and `feedback` into the pool.
template <class Digest>
void randDraw(Pool& pool, unsigned char* digest, const unsigned char* feedback, unsigned char* output, std::size_t length)
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
        update(digest + half, half);
        update(output, piece);
        updateFromRing(pool, i, piece, pool.size, update);
        Digest::final(state, digest);
        for (std::size_t m = 0; m < piece; ++m) {
            if (i >= pool.size) i = 0;
            pool.bytes[i++] ^= feedback[m];
            *output++ = digest[half + m];
        }
        length -= piece;
    }
    Digest::init(state);
    update(reinterpret_cast<const unsigned char*>(&pool.count), sizeof pool.count);
    ++pool.count;
    update(digest, Digest::size);
    Digest::final(state, digest);
    wipe(&state, sizeof state);
}

std::uint32_t wallClockSeconds() { return static_cast<std::uint32_t>(platform::wallClock().seconds); }

// How a pool is seeded.
struct Seeding {
    std::size_t length; // bytes of the system's random source
    bool withProcess;   // each seed goes in together with the process id and the seed's first word
};
constexpr Seeding ofProcess{88, false};
constexpr Seeding ofCall{92, true};

void randMixSeed(Pool& pool, const Seeding& seeding, std::uint32_t process, const unsigned char* data, std::size_t length)
{
    SecretArea<8> more;
    std::memcpy(more.bytes, &process, 4);
    std::memcpy(more.bytes + 4, data, 4);
    randMix(pool, data, length, more.bytes, seeding.withProcess ? sizeof more.bytes : 0);
}

// Seeds with bytes of the system and the time.
int randSeedFromSystem(Pool& pool, const Seeding& seeding)
{
    SecretArea<92> area;
    if (!platform::randomBytes(area.bytes, seeding.length)) return -1;
    const std::uint32_t time = wallClockSeconds(), process = seeding.withProcess ? platform::processId() : 0;
    randMixSeed(pool, seeding, process, area.bytes, seeding.length);
    randMixSeed(pool, seeding, process, reinterpret_cast<const unsigned char*>(&time), sizeof time);
    return 0;
}

// Seeds the process's pool on first use.
int randSeedProcess(const Locked& state)
{
    if (state->isSeeded) return 0;
    if (randSeedFromSystem(state->randPool, ofProcess) < 0) return -1;
    state->isSeeded = true;
    return 0;
}

} // namespace

int randSeed(const unsigned char* data, int length)
{
    const Locked state;
    if (randSeedProcess(state) < 0) return -1;
    if (length > 0) randMix(state->randPool, data, static_cast<std::size_t>(length), nullptr, 0);
    return 0;
}

int randBytes(unsigned char* output, int length)
{
    const Locked state;
    if (randSeedProcess(state) < 0) return -1;
    Pool& pool = state->randPool;
    if (length > 0) randDraw<Md5Kind>(pool, pool.digest, pool.digest, output, static_cast<std::size_t>(length));
    return 0;
}

int randBytesLocal(unsigned char* output, int length)
{
    if (length < 1) return 0;
    Pool pool{};
    if (randSeedFromSystem(pool, ofCall) < 0) return -1;
    SecretArea<digestLength> digest;
    {
        const Locked state;
        std::memcpy(digest.bytes, state->randPool.digest, digestLength);
    }
    randDraw<Sha1Kind>(pool, digest.bytes, pool.digest, output, static_cast<std::size_t>(length));
    {
        const Locked state;
        std::memcpy(state->randPool.digest, digest.bytes, digestLength);
    }
    wipe(&pool, sizeof pool);
    return 0;
}

} // namespace vrno
