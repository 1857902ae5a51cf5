/* The fields and extensions of the loaded certificate. */
#include "console.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- fields ---- */

typedef int (*text_getter)(VRNO_API_CTX*, int, char*);

/* Calls the getter with ever larger buffers until the text fits. */
static char* get_text(VRNO_API_CTX* ctx, text_getter get, int* code)
{
    int size = 256;
    char* text = malloc((size_t)size);
    while (text && (*code = get(ctx, size, text)) == VRNO_ERR_BUFFER_TOO_SMALL) {
        free(text);
        size *= 4;
        text = malloc((size_t)size);
    }
    return text;
}

/* Prints a long hexadecimal text by its length and its first digits. */
static void print_value(const char* text, int is_hex)
{
    const size_t length = strlen(text);
    if (is_hex && length > 48) {
        printf("%.48s... (%zu bytes)\n", text, length / 2);
    } else {
        print_ksc(text);
        putchar('\n');
    }
}

static int show_text(VRNO_API_CTX* ctx, const char* label, text_getter get, int is_hex)
{
    int code = VRNO_ERR_MEMORY;
    char* text = get_text(ctx, get, &code);
    printf("  %s", label);
    if (code == 0) {
        print_value(text, is_hex);
    } else {
        putchar('\n');
        explain(ctx, code);
    }
    free(text);
    return code;
}

static int get_public_key(VRNO_API_CTX* ctx, int size, char* text)
{
    char algorithm[50];
    return VRNO_CERT_GetPubKey(ctx, size, algorithm, text);
}

static int get_public_key_algorithm(VRNO_API_CTX* ctx, int size, char* text)
{
    char key[65536];
    return size < 50 ? VRNO_ERR_BUFFER_TOO_SMALL : VRNO_CERT_GetPubKey(ctx, (int)sizeof key, text, key);
}

static int get_validity(VRNO_API_CTX* ctx, int size, char* text)
{
    char from[20], to[20];
    const int code = VRNO_CERT_GetValidity(ctx, from, to);
    if (code == 0) snprintf(text, (size_t)size, "%s ~ %s", from, to);
    return code;
}

static int get_version(VRNO_API_CTX* ctx, int size, char* text)
{
    int version = 0;
    const int code = VRNO_CERT_GetVersion(ctx, &version);
    if (code == 0) snprintf(text, (size_t)size, "%d", version);
    return code;
}

static int show_fields(VRNO_API_CTX* ctx)
{
    static const struct {
        const char* label;
        text_getter get;
        int is_hex;
    } fields[] = {
        {"버전          Version              ", get_version, 0},
        {"일련번호      Serial number        ", VRNO_CERT_GetSerialNum, 1},
        {"서명 알고리즘 Signature algorithm  ", VRNO_CERT_GetSignatureAlgorithm, 0},
        {"발급자        Issuer               ", VRNO_CERT_GetIssuerName, 0},
        {"유효기간      Validity             ", get_validity, 0},
        {"주체          Subject              ", VRNO_CERT_GetSubjectName, 0},
        {"공개키 종류   Public key algorithm ", get_public_key_algorithm, 0},
        {"공개키        Public key           ", get_public_key, 1},
        {"서명          Signature            ", VRNO_CERT_GetSignature, 1},
    };
    int first_failure = 0;
    for (size_t i = 0; i < sizeof fields / sizeof *fields; ++i) {
        const int code = show_text(ctx, fields[i].label, fields[i].get, fields[i].is_hex);
        if (first_failure == 0) first_failure = code;
    }
    return first_failure;
}

/* ---- extensions ---- */

/* Prints a text of several lines below its heading, each line indented. */
static void print_lines(const char* text)
{
    char* const lines = malloc(strlen(text) + 1);
    if (!lines) return;
    strcpy(lines, text);
    for (char* line = strtok(lines, "\r\n"); line; line = strtok(NULL, "\r\n")) {
        printf("      ");
        print_ksc(line);
        putchar('\n');
    }
    free(lines);
}

/* An absent extension is not a failure. */
static int show_extension(VRNO_API_CTX* ctx, const char* heading, text_getter get)
{
    int code = VRNO_ERR_MEMORY;
    char* text = get_text(ctx, get, &code);
    printf("  %s%s\n", heading, code == VRNO_ERR_EXTENSION_ABSENT ? "  없음 (absent)" : "");
    if (code == 0) {
        print_lines(text);
    } else if (code == VRNO_ERR_EXTENSION_ABSENT) {
        code = 0;
    } else {
        explain(ctx, code);
    }
    free(text);
    return code;
}

static int show_extensions(VRNO_API_CTX* ctx)
{
    static const struct {
        const char* heading;
        text_getter get;
    } extensions[] = {
        {"키 용도  Key usage", VRNO_CERT_GetKeyUsage},
        {"기본 제한  Basic constraints", VRNO_CERT_GetBasicConstraints},
        {"주체키 식별자  Subject key identifier", VRNO_CERT_GetSubKeyID},
        {"기관키 식별자  Authority key identifier", VRNO_CERT_GetAuthKeyID},
        {"인증서 정책  Certificate policies", VRNO_CERT_GetCertPolicy},
        {"인증서 정책 식별자  Policy identifiers", VRNO_CERT_GetCertPolicy_PolicyID},
        {"확장 키 용도  Extended key usage", VRNO_CERT_GetExtKeyUsage},
        {"주체 대체 이름  Subject alternative names", VRNO_CERT_GetSubjectAltName},
        {"CRL 배포 지점  CRL distribution points", VRNO_CERT_GetCRLDP},
        {"CRL 배포 지점 주소  Where to fetch a CRL", VRNO_CERT_GetCRLDP_URL},
        {"기관 정보 액세스  Authority information access", VRNO_CERT_GetAIA},
    };
    int first_failure = 0;
    for (size_t i = 0; i < sizeof extensions / sizeof *extensions; ++i) {
        const int code = show_extension(ctx, extensions[i].heading, extensions[i].get);
        if (first_failure == 0) first_failure = code;
    }
    return first_failure;
}

int show_certificate(VRNO_API_CTX* ctx)
{
    const int fields = show_fields(ctx);
    const int extensions = show_extensions(ctx);
    return fields != 0 ? fields : extensions;
}
