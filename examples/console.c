#include "console.h"

#include <iconv.h>
#include <stdio.h>
#include <string.h>

/* ---- code page 949 on a UTF-8 terminal ---- */

void print_ksc(const char* ksc)
{
    const iconv_t converter = iconv_open("UTF-8", "CP949");
    char* from = (char*)ksc;
    size_t from_left = strlen(ksc);
    while (from_left > 0) {
        char text[512];
        char* to = text;
        size_t to_left = sizeof text;
        const size_t before = from_left;
        iconv(converter, &from, &from_left, &to, &to_left);
        fwrite(text, 1, sizeof text - to_left, stdout);
        if (from_left == before) { /* a byte that cannot be converted */
            putchar('?');
            ++from;
            --from_left;
        }
    }
    iconv_close(converter);
}

/* ---- failures ---- */

/* How often each reason was counted. A value in the message, such as a date out of range, is not part of the reason. */
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
    for (size_t i = 0; i < sizeof reasons / sizeof *reasons; ++i) {
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
    for (size_t i = 0; i < sizeof reasons / sizeof *reasons && reasons[i].count > 0; ++i) {
        printf("%5d  %d  ", reasons[i].count, reasons[i].code);
        print_ksc(reasons[i].text);
        putchar('\n');
    }
}
