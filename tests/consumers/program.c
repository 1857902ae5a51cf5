/* What a user of the installed library builds first in C: prints the serial number of a certificate. */
#include <vrno.h>

#include <stdio.h>

int main(int argc, char** argv)
{
    VRNO_API_CTX* context = NULL;
    VRNO_BINSTR certificate;
    char serial[64];
    int code = VRNO_API_Init(&context, ".");
    VRNO_BINSTR_Create(&certificate);
    if (code == 0) code = VRNO_MEDIA_DISK_ReadCert(context, argc > 1 ? argv[1] : "", &certificate);
    if (code == 0) code = VRNO_CERT_Load(context, &certificate);
    if (code == 0) code = VRNO_CERT_GetSerialNum(context, (int)sizeof serial, serial);
    if (code == 0) puts(serial);
    VRNO_BINSTR_Delete(&certificate);
    VRNO_API_Finish(&context);
    return code == 0 ? 0 : 1;
}
