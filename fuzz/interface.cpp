// The exported functions: each gives the codes that its contract lists, and a failure leaves its outputs as they were.
#include "targets.h"

#include "ASN1/ASN1Sequence.h"
#include "ASN1Pkix/records/RPbe.h"
#include "ASN1Pkix/records/RPrivateKeyInfo.h"
#include "support/calls.h"

#include <dlfcn.h>

#include <algorithm>

using namespace vrno;

namespace fuzz {

static Values with(const char* name, Octets input)
{
    Values values{{"password", "quince/cabbage/slat/1984"}};
    values[name] = string(input);
    return values;
}

static Result expectDocumented(VRNO_API_CTX* context, const std::string& line, const Values& values, std::vector<int> codes)
{
    const Result result = call(context, line, values);
    EXPECT_TRUE(std::count(codes.begin(), codes.end(), result.code)) << line << ": " << result.code;
    return result;
}

// A text fits into the room that the message asks for, its last number, and into none that is smaller by a byte.
static void expectExactRoom(const Context& context, const std::string& getter, const std::string& text)
{
    if (getter == "VRNO_CERT_GetPubKey") return; // whose other output has a size of its own
    EXPECT_EQ(call(context, getter + " 0 out").code, VRNO_ERR_BUFFER_TOO_SMALL);
    const std::string message = context.error();
    const int room = std::stoi(message.substr(message.find_last_not_of("0123456789", message.find_last_of("0123456789")) + 1));
    EXPECT_EQ(call(context, getter + " " + std::to_string(room - 1) + " out").code, VRNO_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(call(context, getter + " " + std::to_string(room) + " out").output, text);
}

void certificate(Octets input)
{
    static const std::vector<Step> steps = session("certificate");
    const Values values = with("cert", input);
    const Context context;
    if (input.empty() || call(context, "VRNO_CERT_Load cert", values).code > 0) return;
    for (const Step& step : steps) {
        if (step.line.starts_with("VRNO_CMS")) return;
        std::vector<int> codes = step.failures;
        const std::size_t room = step.line.find(" 16384 ");
        if (room != std::string::npos) codes.push_back(VRNO_ERR_BUFFER_TOO_SMALL);
        const Result result = expectDocumented(context, step.line, values, codes);
        if (room != std::string::npos && result.code == 0) expectExactRoom(context, step.line.substr(0, room), result.output);
    }
}

// A message for the holder of a hostile certificate: one whole element.
void envelope(Octets input)
{
    const std::string line = "VRNO_CMS_EncryptData 2 cert cert 48 out";
    const Result result = expectDocumented(Context(), line, with("cert", input), {0, 1004, 1500, 3001, 3006});
    ByteString message = byteString(result.output);
    ASN1Sequence sequence;
    EXPECT_EQ(sequence.fromASN1Object(message) == 0, result.code == 0);
    if (result.code == 0) {
        EXPECT_EQ(bytes(sequence.toASN1Object()), result.output);
    }
}

// Whether a protected key asks for more time than a run has, in either place where a count can stand.
static bool takesLong(Octets input)
{
    constexpr int enough = 1024;
    ByteString data = copy(input);
    REncryptedPrivateKeyInfo info;
    if (info.fromASN1Object(data) > 0) return false;
    RPBES2_params outer;
    RPBKDF2_params inner;
    RPBEParameter classic;
    ByteString parameters = info.getEncryptionAlgorithm().getParameters();
    if (classic.fromASN1Object(parameters) == 0) return classic.getIterationCount() > enough;
    if (outer.fromASN1Object(parameters) > 0) return false;
    parameters = outer.getKeyDerivationFunc().getParameters();
    return inner.fromASN1Object(parameters) == 0 && inner.getIterationCount() > enough;
}

void protected_key(Octets input)
{
    if (takesLong(input)) return;
    const Result opened =
        expectDocumented(Context(), "VRNO_PRIKEY_Decrypt password blob out", with("blob", input), {0, 1004, 2001, 2004});
    EXPECT_EQ(opened.code == 0, !opened.output.empty());
}

void pair(Octets input)
{
    Values values = with("key", takePiece(input));
    values["cert"] = string(input);
    expectDocumented(Context(), "VRNO_PRIKEY_CheckKeyPair cert key", values, {0, 1004, 2003});
}

// What the program gives when it is taken for a storage library.
static struct {
    int result, length;
    Octets message, randomValue, item;
} answer;

extern "C" __attribute__((visibility("default"))) int PKI_STORAGE_Read(int code, const char*, unsigned char* buffer, int* size,
                                                                       char* message)
{
    const Octets given = code == 0x30 ? answer.randomValue : answer.item;
    std::copy_n(answer.message.begin(), std::min<std::size_t>(answer.message.size(), 512), message);
    std::copy_n(given.begin(), std::min(given.size(), static_cast<std::size_t>(*size)), buffer);
    *size = answer.length == 0 ? static_cast<int>(given.size()) : answer.length;
    return answer.result;
}

static int takeNumber(Octets& input)
{
    const unsigned high = takeOctet(input);
    return static_cast<short>(high << 8 | takeOctet(input));
}

// The input is the type of the data, result, length, message, random value and item.
void storage(Octets input)
{
    const std::string type = std::to_string(takeNumber(input));
    answer = {takeNumber(input), takeNumber(input), takePiece(input), takePiece(input), input};
    if (takesLong(input)) return;
    const Context context;
    static_cast<VRNO_API_CTX*>(context)->hMediaLib = dlopen(nullptr, RTLD_NOW);
    const Values values = with("", {});
    expectDocumented(context, "VRNO_MEDIA_CARD_ReadCert " + type + " 1234 out", values, {0, 2502, 2504, 2514, 2515, 6009});
    expectDocumented(context, "VRNO_MEDIA_CARD_ReadPriKey " + type + " 1234 null out", values, {0, 2502, 2507, 2514, 2515, 6009});
    expectDocumented(context, "VRNO_MEDIA_CARD_ReadPriKey " + type + " 1234 password out", values,
                     {0, 2000, 2001, 2004, 2502, 2507, 2514, 2515, 2519, 6009});
}

} // namespace fuzz
