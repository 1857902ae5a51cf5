#include "VNCrypto/VNEncrypt.h"

#include "VNCrypto/VNFailure.h"
#include "base/wipe.h"

#include <climits>
#include <cstring>

namespace vrno {

// What encryption and decryption differ in.
struct VNEncrypt::Direction {
    decltype(&ZIRC_EncryptData) run;
    const char* failure;
    const char* scheduleFailure;
    int rsaCode, keyCode, scheduleCode, outputCode, cipherCode;
};

const VNEncrypt::Direction VNEncrypt::encryption{ZIRC_EncryptData,
                                                 "[ZIRC_EncryptData] nAlgID = %d, nEncMode = %d, nPaddintType = %d",
                                                 "ZIRC_GenerateKey error",
                                                 18,
                                                 29,
                                                 30,
                                                 31,
                                                 32};
const VNEncrypt::Direction VNEncrypt::decryption{
    ZIRC_DecryptData, "[ZIRC_DecryptData] nAlgID = %d, nEncMode = %d, nPaddintType = %d", "ZIRC_GenerateKey", 13, 24, 25, 26, 27};

// The engine's numbers for one call.
struct VNEncrypt::Plan {
    int algorithm, mode, padding;

    bool isKeyPairMode() const { return mode == ZIRC_MODE_PUBLIC_KEY || mode == ZIRC_MODE_PRIVATE_KEY; }
};

namespace {

constexpr int ivAreaLength = 32, outputSlack = 512;

// Takes what fits into the area; the count of bytes taken, 0 for more than that.
template <std::size_t length> int take(SecretArea<length>& area, const ByteString& from)
{
    if (from.getLength() > static_cast<int>(length)) return 0;
    std::memcpy(area.bytes, from.getBytes(), static_cast<std::size_t>(from.getLength()));
    return from.getLength();
}

// Room for the output of that much input; null when there is none.
unsigned char* makeOutput(ByteString& block, int length)
{
    if (length < 0 || length >= INT_MAX - outputSlack) return nullptr;
    return block.makeRoom(length + outputSlack);
}

} // namespace

int VNEncrypt::plan(int nAlgID, int nMode, int nPaddingType, Plan& plan, Here at)
{
    if (const int code = mapAlgorithm(*this, nAlgID, plan.algorithm, at)) return code;
    plan.mode = engineMode(nMode);
    if (plan.mode == vnUnsupported) return unsupported(*this, 3, "The Mode(%d) is not supported.", nMode, at);
    plan.padding = plan.isKeyPairMode() ? 0 : enginePadding(nPaddingType);
    if (plan.padding == vnUnsupported) return unsupported(*this, 4, "The PaddingType(%d) is not supported.", nPaddingType, at);
    return 0;
}

int VNEncrypt::cipherFailure(const Direction& direction, const Plan& plan, int code, int result, Here at)
{
    const ByteString what = formatted(direction.failure, plan.algorithm, plan.mode, plan.padding);
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

int VNEncrypt::publicKeyRoad(const Direction& direction, const Plan& plan, ByteString& key, ByteString& iv, Input in,
                             ByteString& out, Here at)
{
    SecretArea<2048> output;
    int length = sizeof output.bytes;
    const int result = direction.run(key.mutableBytes(), key.getLength(), plan.algorithm, plan.mode, output.bytes, &length, in.data,
                                     in.length, iv.mutableBytes(), iv.getLength(), plan.padding);
    if (result != 0) return cipherFailure(direction, plan, direction.rsaCode, result, at);
    if (out.setData(output.bytes, length) > 0)
        return failMemory(*this, direction.outputCode, "Momory allocation is failed.", "", at);
    return 0;
}

int VNEncrypt::symmetricRoad(const Direction& direction, const Plan& plan, ByteString& key, ByteString& iv, Input in,
                             ByteString& out, Here at)
{
    SecretArea<GENKEY_MAX_LEN> schedule;
    SecretArea<ivAreaLength> ivArea;
    const int ivLength = take(ivArea, iv); // none that is too long, which the engine then refuses
    int scheduleLength = GENKEY_MAX_LEN;
    ByteString pKey(key);
    if (pKey.isOutOfMemory()) return failMemory(*this, direction.keyCode, "pKey", "Memory(pKey) allocation is failed.", at);
    if (!plan.isKeyPairMode()) {
        const int result = ZIRC_GenerateKey(schedule.bytes, &scheduleLength, plan.algorithm, pKey.getBytes(), pKey.getLength());
        if (result != 0) return engineFailure(*this, direction.scheduleCode, direction.scheduleFailure, result, at);
    }
    ByteString block;
    unsigned char* const output = makeOutput(block, in.length);
    if (!output) return outputFailure(direction.outputCode, block, at);
    int length = block.getLength();
    const int result = direction.run(schedule.bytes, scheduleLength, plan.algorithm, plan.mode, output, &length, in.data, in.length,
                                     ivArea.bytes, ivLength, plan.padding);
    if (result != 0) return cipherFailure(direction, plan, direction.cipherCode, result, at);
    block.shorten(length);
    out.swap(block);
    return 0;
}

int VNEncrypt::whole(const Direction& direction, int nAlgID, int nMode, ByteString& key, ByteString& iv, Input in, ByteString& out,
                     int nPaddingType, Here at)
{
    Plan plan{};
    if (const int code = this->plan(nAlgID, nMode, nPaddingType, plan, at)) return code;
    const bool isRsa = nAlgID == vnRsa1024 || nAlgID == vnRsa2048;
    return isRsa ? publicKeyRoad(direction, plan, key, iv, in, out, at) : symmetricRoad(direction, plan, key, iv, in, out, at);
}

int VNEncrypt::EncryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, ByteString& in, ByteString& out,
                           int nPaddingType)
{
    return whole(encryption, nAlgID, nMode, key, iv, {in.getBytes(), in.getLength()}, out, nPaddingType, Here::now());
}

int VNEncrypt::EncryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, const unsigned char* in, int inLength,
                           ByteString& out, int nPaddingType)
{
    return whole(encryption, nAlgID, nMode, key, iv, {in, inLength}, out, nPaddingType, Here::now());
}

int VNEncrypt::DecryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, ByteString& in, ByteString& out,
                           int nPaddingType)
{
    return whole(decryption, nAlgID, nMode, key, iv, {in.getBytes(), in.getLength()}, out, nPaddingType, Here::now());
}

int VNEncrypt::DecryptData(int nAlgID, int nMode, ByteString& key, ByteString& iv, const unsigned char* in, int inLength,
                           ByteString& out, int nPaddingType)
{
    return whole(decryption, nAlgID, nMode, key, iv, {in, inLength}, out, nPaddingType, Here::now());
}

// ---- chains of messages ----

int VNEncrypt::GenerateKey(int nAlgID, ByteString& key, ByteString& out)
{
    const Here at = Here::now();
    int engine = 0;
    if (const int code = mapAlgorithm(*this, nAlgID, engine, at)) return code;
    SecretArea<GENKEY_MAX_LEN> schedule;
    int length = GENKEY_MAX_LEN;
    const int result = ZIRC_GenerateKey(schedule.bytes, &length, engine, key.getBytes(), key.getLength());
    if (result != 0) return engineFailure(*this, 3, "ZIRC_GenerateKey", result, at);
    if (out.setData(schedule.bytes, length) > 0) return engineFailure(*this, 3, "ZIRC_GenerateKey", ZIRC_MEMORY_ERROR, at);
    return 0;
}

int VNEncrypt::chained(const Direction& direction, int nAlgID, int nMode, ByteString& schedule, ByteString& iv, Input in,
                       ByteString& out, int nPaddingType, Here at)
{
    Plan plan{};
    if (const int code = this->plan(nAlgID, nMode, nPaddingType, plan, at)) return code;
    ByteString block;
    unsigned char* const output = makeOutput(block, in.length);
    if (!output) return outputFailure(5, block, at);
    SecretArea<ivAreaLength> ivArea;
    const int ivLength = take(ivArea, iv);
    if (schedule.getLength() > GENKEY_MAX_LEN) {
        const ByteString what =
            formatted("The key(%d) is longer than GENKEY_MAX_LEN(%d).", schedule.getLength(), static_cast<int>(GENKEY_MAX_LEN));
        return fail(*this, 9, what.getText(), "", at);
    }
    SecretArea<GENKEY_MAX_LEN> scheduleArea;
    const int scheduleLength = take(scheduleArea, schedule);
    int length = block.getLength();
    const int result = direction.run(scheduleArea.bytes, scheduleLength, plan.algorithm, plan.mode, output, &length, in.data,
                                     in.length, ivArea.bytes, ivLength, plan.padding);
    if (result != 0) return cipherFailure(direction, plan, 10, result, at);
    block.shorten(length);
    out.swap(block);
    // Both keep their lengths, so the new bytes go into the blocks that are there.
    std::memcpy(schedule.mutableBytes(), scheduleArea.bytes, static_cast<std::size_t>(scheduleLength));
    if (ivLength > 0) std::memcpy(iv.mutableBytes(), ivArea.bytes, static_cast<std::size_t>(ivLength));
    return 0;
}

int VNEncrypt::EncryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, ByteString& in, ByteString& out,
                                    int nPaddingType)
{
    return EncryptData_NoGenKey(nAlgID, nMode, schedule, iv, in.getBytes(), in.getLength(), out, nPaddingType);
}

int VNEncrypt::EncryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, const unsigned char* in,
                                    int inLength, ByteString& out, int nPaddingType)
{
    return chained(encryption, nAlgID, nMode, schedule, iv, {in, inLength}, out, nPaddingType, Here::now());
}

int VNEncrypt::DecryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, ByteString& in, ByteString& out,
                                    int nPaddingType)
{
    return DecryptData_NoGenKey(nAlgID, nMode, schedule, iv, in.getBytes(), in.getLength(), out, nPaddingType);
}

int VNEncrypt::DecryptData_NoGenKey(int nAlgID, int nMode, ByteString& schedule, ByteString& iv, const unsigned char* in,
                                    int inLength, ByteString& out, int nPaddingType)
{
    return chained(decryption, nAlgID, nMode, schedule, iv, {in, inLength}, out, nPaddingType, Here::now());
}

} // namespace vrno
