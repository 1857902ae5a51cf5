/*
 * A storage library for libvrno that reads items from a folder instead of a smart card. It is an example of how to write
 * one; vrno.h has the contract.
 *
 * The environment variable VRNO_STORAGE has the path of the folder. It contains
 *
 *     pin           the PIN, one line; without this file there is no card in the reader
 *     0010.item     the item of code 0x0010, and so on
 *     0010.result   for tests: with "6983 a message", reading this item gives 0x6983 and the message
 *
 * Messages are in code page 949, of which ASCII is a part.
 */
#include "vrno.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#if defined(_WIN32)
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

enum { MESSAGE_SIZE = 512 };

/* No card, and the results of cards (ISO 7816-4). */
enum {
    NO_CARD = 0x100,
    WRONG_PIN = 0x63C0, /* the last digit is the number of tries left */
    WRONG_LENGTH = 0x6700,
    NOT_FOUND = 0x6A82
};

/* What the toolkit calls. The compiler compares it with the definition below. */
EXPORTED VRNO_STORAGE_READ PKI_STORAGE_Read;

static FILE* open_file(const char* name)
{
    char path[4096];
    const char* folder = getenv("VRNO_STORAGE");
    const int size = folder ? snprintf(path, sizeof path, "%s/%s", folder, name) : -1;
    return size > 0 && size < (int)sizeof path ? fopen(path, "rb") : NULL;
}

static int answer(char* message, int result, const char* text)
{
    snprintf(message, MESSAGE_SIZE, "%s", text);
    return result;
}

/* 1 if this is the PIN of the card, 0 if not, -1 without a card. */
static int pin_fits(const char* pin)
{
    char line[128] = "";
    FILE* const file = open_file("pin");
    if (!file) return -1;
    if (!fgets(line, sizeof line, file)) line[0] = '\0';
    fclose(file);
    line[strcspn(line, "\r\n")] = '\0';
    return strcmp(line, pin) == 0;
}

/* The result that a test wants, 0 if it wants none. */
static int wanted_result(int item_code, char* message)
{
    char name[32];
    unsigned int result = 0;
    snprintf(name, sizeof name, "%04x.result", (unsigned int)item_code);
    FILE* const file = open_file(name);
    if (!file) return 0;
    if (fscanf(file, "%x %511[^\n]", &result, message) < 1) result = 0;
    fclose(file);
    return (int)result;
}

EXPORTED int VRNO_CALL PKI_STORAGE_Read(int item_code, const char* pin, unsigned char* buffer, int* length, char* message)
{
    char name[32];
    const int fits = pin_fits(pin);
    if (fits < 0) return answer(message, NO_CARD, "no card");
    if (!fits) return answer(message, WRONG_PIN | 2, "wrong PIN, two tries left");
    const int wanted = wanted_result(item_code, message);
    if (wanted != 0) return wanted;

    snprintf(name, sizeof name, "%04x.item", (unsigned int)item_code);
    FILE* const file = open_file(name);
    if (!file) return answer(message, NOT_FOUND, "no such item");
    const size_t capacity = (size_t)*length;
    const size_t size = fread(buffer, 1, capacity, file);
    const int is_longer = size == capacity && fgetc(file) != EOF;
    fclose(file);
    if (is_longer) return answer(message, WRONG_LENGTH, "the item is longer than the buffer");
    *length = (int)size;
    return 0;
}
