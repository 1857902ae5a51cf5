/*
 * Shows the basic fields and the extensions of certificates on a UTF-8 terminal.
 *
 *     vrno-show FILE...
 *
 * The program includes nothing of libvrno but the public header. The library reads DER; a PEM file is decoded here, with the
 * Base64 function of the library. It exits with 0 when every file could be shown completely.
 */
#define _POSIX_C_SOURCE 200112L

#include "console.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- files ---- */

/* Replaces the bytes of a PEM file by its first certificate in DER. Other files stay as they are. */
static void unwrap_pem(VRNO_API_CTX* ctx, VRNO_BINSTR* file)
{
    const char* begin = file->pData ? strstr((const char*)file->pData, "-----BEGIN CERTIFICATE-----") : NULL;
    const char* end = begin ? strstr(begin, "-----END CERTIFICATE-----") : NULL;
    if (!end) return;
    VRNO_BINSTR text = {malloc((size_t)(end - begin)), 0};
    VRNO_BINSTR der;
    if (!text.pData) return;
    VRNO_BINSTR_Create(&der);
    for (const char* at = begin + strlen("-----BEGIN CERTIFICATE-----"); at < end; ++at) {
        if (*at != '\r' && *at != '\n') text.pData[text.nLen++] = (unsigned char)*at;
    }
    if (VRNO_BASE64_Decode(ctx, &text, &der) == 0) VRNO_BINSTR_SetData(der.pData, der.nLen, file);
    VRNO_BINSTR_Delete(&der);
    free(text.pData);
}

static int show_file(VRNO_API_CTX* ctx, const char* path)
{
    VRNO_BINSTR file;
    VRNO_BINSTR_Create(&file);
    printf("%s\n", path);
    int code = VRNO_MEDIA_DISK_ReadFile(ctx, path, &file);
    if (code == 0) {
        unwrap_pem(ctx, &file);
        code = VRNO_CERT_Load(ctx, &file);
    }
    VRNO_BINSTR_Delete(&file);
    if (code != 0) return explain(ctx, code);
    return show_certificate(ctx);
}

int main(int argc, char** argv)
{
    VRNO_API_CTX* ctx = NULL;
    int shown = 0;
    if (argc < 2) {
        fprintf(stderr, "usage: %s FILE...\n", argv[0]);
        return 2;
    }
    if (VRNO_API_Init(&ctx, ".") != 0) {
        fprintf(stderr, "no memory for a context\n");
        VRNO_API_Finish(&ctx);
        return 2;
    }
    for (int i = 1; i < argc; ++i) {
        shown += show_file(ctx, argv[i]) == 0;
        putchar('\n');
    }
    printf("%d of %d shown in full\n", shown, argc - 1);
    print_reasons();
    VRNO_API_Finish(&ctx);
    return shown == argc - 1 ? 0 : 1;
}
