/* What the example programs show on a UTF-8 terminal. */
#ifndef CONSOLE_H
#define CONSOLE_H

#include "vrno.h"

/* Prints a text in code page 949; a byte that is no text as "?". */
void print_ksc(const char* ksc);

/* Prints what the library says of the last failure, its message and the trail to the place of the fault, and counts its
 * reason. Gives the code back. */
int explain(VRNO_API_CTX* ctx, int code);

/* How often each reason was met. */
void print_reasons(void);

/* Prints the fields and extensions of the loaded certificate; 0, or the code of the first that could not be read. */
int show_certificate(VRNO_API_CTX* ctx);

#endif
