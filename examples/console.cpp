#include "console.h"

#include "vrno.hpp"

#include <cstdio>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#endif

// ---- code page 949 on a UTF-8 terminal ----

void print_ksc(const char* ksc)
{
#ifdef _WIN32
    SetConsoleOutputCP(CP_UTF8);
#endif
    std::fputs(vrno::toUtf8(ksc).c_str(), stdout);
}

// ---- failures ----

// How often each reason was counted. A value in the message, such as a date out of range, is not part of the reason.
static struct reason {
    int code;
    char text[160];
    int count;
} reasons[32];

static void count_reason(int code, const char* message)
{
    const char* innermost = message;
    for (const char* at = message; (at = strstr(at, "),")) != NULL; at += 2) innermost = at + 2;
    innermost += strspn(innermost, "0123456789Z ");
    for (std::size_t i = 0; i < sizeof reasons / sizeof *reasons; ++i) {
        struct reason* const reason = &reasons[i];
        if (reason->count == 0) {
            reason->code = code;
            snprintf(reason->text, sizeof reason->text, "%s", innermost);
        }
        if (reason->code == code && strncmp(reason->text, innermost, sizeof reason->text - 1) == 0) {
            ++reason->count;
            return;
        }
    }
}

int explain(VRNO_API_CTX* ctx, int code)
{
    char text[4096] = "";
    VRNO_API_GetErrInfo(ctx, (int)sizeof text, text);
    count_reason(code, text);
    printf("  실패 %d  ", code);
    print_ksc(text);
    putchar('\n');
    return code;
}

void print_reasons(void)
{
    for (std::size_t i = 0; i < sizeof reasons / sizeof *reasons && reasons[i].count > 0; ++i) {
        printf("%5d  %d  ", reasons[i].count, reasons[i].code);
        print_ksc(reasons[i].text);
        putchar('\n');
    }
}
