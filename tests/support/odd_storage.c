/*
 * A storage library that gives what the PIN asks for: "LENGTH,RESULT,MESSAGE", the result in hexadecimal. Each item is as many
 * letters e as the length says and the buffer holds. The message "endless" stands for one that fills its 512 bytes and has no end.
 */
#include "vrno.h"

#include <stdio.h>
#include <string.h>

VRNO_API VRNO_STORAGE_READ PKI_STORAGE_Read;

int VRNO_CALL PKI_STORAGE_Read(int item_code, const char* pin, unsigned char* buffer, int* length, char* message)
{
    unsigned int result = 0;
    int wanted = 0;
    (void)item_code;
    sscanf(pin, "%d,%x,%511s", &wanted, &result, message);
    if (strcmp(message, "endless") == 0) memset(message, 'm', 512);
    if (wanted > 0) memset(buffer, 'e', (size_t)(wanted < *length ? wanted : *length));
    *length = wanted;
    return (int)result;
}
