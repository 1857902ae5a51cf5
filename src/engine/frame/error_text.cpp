// ZIRC_GetErrorText.
#include "engine/frame/zirc.h"

#include <cstdio>

namespace vrno {

namespace {

struct ResultText {
    int code;
    const char* name;
    const char* text;
};

constexpr ResultText resultTexts[] = {
    {0, "ZIRC_OK", "Successfully completed."},
    {1, "ZIRC_FAIL", "Incompletely terminated."},
    {101, "ZIRC_INVALID_DATA", "Invalid input or output data."},
    {102, "ZIRC_MEMORY_ERROR", "Memory allocation failed."},
    {103, "ZIRC_NOT_ENOUGH_BUFFER", "Output buffer is not enough."},
    {104, "ZIRC_INVALID_MODE", "Invalid algorithm mode."},
    {105, "ZIRC_INVALID_ALGORITHM", "Invalid algorithm identifier."},
    {106, "ZIRC_INVALID_KEY_POINTER", "Invalid key pointer."},
    {107, "ZIRC_INVALID_KEY", "Invalid key value."},
    {108, "ZIRC_INVALID_DATA_POINTER", "Invalid input or output data pointer"},
    {109, "ZIRC_INVALID_INIT_VECTOR", "Initial vector required."},
    {110, "ZIRC_STAGED_OPERATION_FAILED", "Staged operation failed."},
    {111, "ZIRC_INVALID_FILE_POINTER", "Invalid file pointer."},
    {112, "ZIRC_INVALID_CLASS", "Invalid class."},
    {113, "ZIRC_ASN1_OPERATION_FAILED", "ASN.1 parsing error."},
    {114, "ZIRC_INVALID_ENCRYPTED_DATA", "Invalid encrypted data."},
    {115, "ZIRC_INVALID_SIGNATURE", "Invalid signature format."},
    {116, "ZIRC_VERIFY_FAIL", "Verification of signature or MAC failed."},
    {0, nullptr, nullptr},
};

constexpr const char* stagePrefixes[] = {"", "Init stage;", "Update stage;", "Final stage;"};

} // namespace

ZIRC_ErrorText ZIRC_GetErrorText(int code)
{
    ZIRC_ErrorText result{};
    const int stage = code % 10000 / 1000, base = code % 1000;
    const char* const prefix = stage >= 0 && stage <= 3 ? stagePrefixes[stage] : "";
    for (const ResultText* row = resultTexts; row->text; ++row) {
        if (row->code == base) {
            std::snprintf(result.text, sizeof result.text, "%s %s(%d)", prefix, row->text, code);
            break;
        }
    }
    return result;
}

} // namespace vrno
