#include "VNCrypto/VNEncrypt.h"

#include "VNCrypto/VNFailure.h"
#include "base/wipe.h"

#include <climits>
#include <cstring>

namespace vrno {

namespace {

using Area = std::span<unsigned char>;

constexpr int ivAreaLength = 32, outputSlack = 512; // which holds the longest result of RSA

// Copies what fits into the area; the area's part that holds it, empty for more than that.
template <std::size_t room> Area fillArea(SecretArea<room>& area, const ByteString& from)
{
    const Octets octets = from.octets();
    if (octets.size() > room) return {area.bytes, 0};
    std::memcpy(area.bytes, octets.data(), octets.size());
    return {area.bytes, octets.size()};
}

// Room for the output of so much input and `more`; empty when there is no memory, or for more than a ByteString holds.
Area makeOutput(ByteString& block, std::size_t length, int more)
{
    if (length >= INT_MAX - outputSlack) return {};
    const int room = static_cast<int>(length) + more;
    return {block.makeRoom(room), static_cast<std::size_t>(block.getLength())};
}

// A length for the engine, which refuses the largest.
int engineLength(Octets octets) { return octets.size() < INT_MAX ? static_cast<int>(octets.size()) : INT_MAX; }

} // namespace

// What encryption and decryption differ in.
struct VNEncrypt::Direction {
    decltype(&ZIRC_EncryptData) run;
    const char* failure;
    const char* scheduleFailure;
    int rsaCode, keyCode, scheduleCode, outputCode, cipherCode;
};

const VNEncrypt::Direction VNEncrypt::encryption{
    .run = ZIRC_EncryptData,
    .failure = "[ZIRC_EncryptData] nAlgID = %d, nEncMode = %d, nPaddintType = %d",
    .scheduleFailure = "ZIRC_GenerateKey error",
    .rsaCode = 18,
    .keyCode = 29,
    .scheduleCode = 30,
    .outputCode = 31,
    .cipherCode = 32,
};

const VNEncrypt::Direction VNEncrypt::decryption{
    .run = ZIRC_DecryptData,
    .failure = "[ZIRC_DecryptData] nAlgID = %d, nEncMode = %d, nPaddintType = %d",
    .scheduleFailure = "ZIRC_GenerateKey",
    .rsaCode = 13,
    .keyCode = 24,
    .scheduleCode = 25,
    .outputCode = 26,
    .cipherCode = 27,
};

// The arguments of an operation.
struct VNEncrypt::Job {
    int nAlgID, nMode;
    ByteString& key; // or its schedule
    ByteString& iv;
    Octets in;
    ByteString& out;
    int nPaddingType;
};

// The same for the engine, in its numbers and on areas that it may write.
struct VNEncrypt::EngineJob {
    int algorithm = 0, mode = 0, padding = 0;
    Octets in;
    Area key, iv, out;

    bool isKeyPairMode() const { return mode == ZIRC_MODE_PUBLIC_KEY || mode == ZIRC_MODE_PRIVATE_KEY; }

    int run(const Direction& direction, int& produced)
    {
        produced = engineLength(out);
        return direction.run(key.data(), engineLength(key), algorithm, mode, out.data(), &produced, in.data(), engineLength(in),
                             iv.data(), engineLength(iv), padding);
    }
};

int VNEncrypt::mapCodes(const Job& job, EngineJob& engineJob, Here at)
{
    engineJob.in = job.in;
    if (const int code = mapAlgorithm(*this, job.nAlgID, engineJob.algorithm, at)) return code;
    engineJob.mode = engineMode(job.nMode);
    if (engineJob.mode == vnUnsupported) return unsupported(*this, 3, "The Mode(%d) is not supported.", job.nMode, at);
    engineJob.padding = engineJob.isKeyPairMode() ? 0 : enginePadding(job.nPaddingType);
    if (engineJob.padding != vnUnsupported) return 0;
    return unsupported(*this, 4, "The PaddingType(%d) is not supported.", job.nPaddingType, at);
}

int VNEncrypt::cipherFailure(const Direction& direction, const EngineJob& job, int code, int result, Here at)
{
    const ByteString what = formatted(direction.failure, job.algorithm, job.mode, job.padding);
    if (what.isOutOfMemory()) return failMemory(*this, code, direction.failure, memoryFailure, at);
    return engineFailure(*this, code, what.getText(), result, at);
}

// No block for the output: its allocation failed, or the input is too long.
int VNEncrypt::outputFailure(int code, const ByteString& block, Here at)
{
    constexpr const char* name = "Momory allocation is failed.";
    return block.isOutOfMemory() ? failMemory(*this, code, name, "", at) : fail(*this, code, name, "", at);
}

// ---- whole messages ----

int VNEncrypt::publicKeyPath(const Direction& direction, const Job& job, EngineJob& engineJob, Here at)
{
    SecretArea<2048> output;
    engineJob.key = {job.key.mutableBytes(), static_cast<std::size_t>(job.key.getLength())};
    engineJob.iv = {job.iv.mutableBytes(), static_cast<std::size_t>(job.iv.getLength())};
    engineJob.out = output.bytes;
    int length = 0;
    const int result = engineJob.run(direction, length);
    if (result != 0) return cipherFailure(direction, engineJob, direction.rsaCode, result, at);
    if (job.out.setData(output.bytes, length) > 0) return outputFailure(direction.outputCode, job.out, at);
    return 0;
}

int VNEncrypt::symmetricPath(const Direction& direction, const Job& job, EngineJob& engineJob, Here at)
{
    SecretArea<seedScheduleLength> schedule;
    SecretArea<ivAreaLength> ivArea;
    engineJob.iv = fillArea(ivArea, job.iv); // empty for one that is too long, which the engine then refuses
    int scheduleLength = seedScheduleLength;
    ByteString pKey(job.key);
    if (pKey.isOutOfMemory()) return failMemory(*this, direction.keyCode, "pKey", "Memory(pKey) allocation is failed.", at);
    if (!engineJob.isKeyPairMode()) {
        const int result =
            ZIRC_GenerateKey(schedule.bytes, &scheduleLength, engineJob.algorithm, pKey.getBytes(), pKey.getLength());
        if (result != 0) return engineFailure(*this, direction.scheduleCode, direction.scheduleFailure, result, at);
    }
    engineJob.key = {schedule.bytes, static_cast<std::size_t>(scheduleLength)};
    ByteString block;
    engineJob.out = makeOutput(block, job.in.size(), seedBlockLength);
    if (engineJob.out.empty()) return outputFailure(direction.outputCode, block, at);
    int length = 0;
    const int result = engineJob.run(direction, length);
    if (result != 0) return cipherFailure(direction, engineJob, direction.cipherCode, result, at);
    block.shorten(length);
    job.out.swap(block);
    return 0;
}

int VNEncrypt::whole(const Direction& direction, const Job& job, Here at)
{
    EngineJob engineJob;
    if (const int code = mapCodes(job, engineJob, at)) return code;
    const bool isRsa = job.nAlgID == vnRsa1024 || job.nAlgID == vnRsa2048;
    return isRsa ? publicKeyPath(direction, job, engineJob, at) : symmetricPath(direction, job, engineJob, at);
}

int VNEncrypt::EncryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, Octets in, ByteString& out, int nPaddingType)
{
    return whole(encryption, {nAlgID, nMode, key, iv, in, out, nPaddingType}, Here::now());
}

int VNEncrypt::DecryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, Octets in, ByteString& out, int nPaddingType)
{
    return whole(decryption, {nAlgID, nMode, key, iv, in, out, nPaddingType}, Here::now());
}

// ---- chains of messages ----

int VNEncrypt::GenerateKey(int nAlgID, ByteString& key, ByteString& out)
{
    const Here at = Here::now();
    int algorithm = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, algorithm, at)) return code;
    SecretArea<seedScheduleLength> schedule;
    int length = seedScheduleLength;
    const int result = ZIRC_GenerateKey(schedule.bytes, &length, algorithm, key.getBytes(), key.getLength());
    if (result != 0) return engineFailure(*this, 3, "ZIRC_GenerateKey", result, at);
    if (out.setData(schedule.bytes, length) > 0) return engineFailure(*this, 3, "ZIRC_GenerateKey", ZIRC_MEMORY_ERROR, at);
    return 0;
}

int VNEncrypt::chained(const Direction& direction, const Job& job, Here at)
{
    EngineJob engineJob;
    if (const int code = mapCodes(job, engineJob, at)) return code;
    ByteString block;
    engineJob.out = makeOutput(block, job.in.size(), outputSlack);
    if (engineJob.out.empty()) return outputFailure(5, block, at);
    SecretArea<ivAreaLength> ivArea;
    engineJob.iv = fillArea(ivArea, job.iv);
    const int scheduleLength = job.key.getLength();
    if (scheduleLength > GENKEY_MAX_LEN) {
        const int maxLength = GENKEY_MAX_LEN;
        const ByteString what = formatted("The key(%d) is longer than GENKEY_MAX_LEN(%d).", scheduleLength, maxLength);
        return fail(*this, 9, what.getText(), "", at);
    }
    SecretArea<GENKEY_MAX_LEN> scheduleArea;
    engineJob.key = fillArea(scheduleArea, job.key);
    int length = 0;
    const int result = engineJob.run(direction, length);
    if (result != 0) return cipherFailure(direction, engineJob, 10, result, at);
    block.shorten(length);
    job.out.swap(block);
    // Both keep their lengths, so the new bytes go into the blocks that are there.
    std::memcpy(job.key.mutableBytes(), engineJob.key.data(), engineJob.key.size());
    if (!engineJob.iv.empty()) std::memcpy(job.iv.mutableBytes(), engineJob.iv.data(), engineJob.iv.size());
    return 0;
}

int VNEncrypt::EncryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, Octets in, ByteString& out,
                                    int nPaddingType)
{
    return chained(encryption, {nAlgID, nMode, schedule, iv, in, out, nPaddingType}, Here::now());
}

int VNEncrypt::DecryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, Octets in, ByteString& out,
                                    int nPaddingType)
{
    return chained(decryption, {nAlgID, nMode, schedule, iv, in, out, nPaddingType}, Here::now());
}

} // namespace vrno
