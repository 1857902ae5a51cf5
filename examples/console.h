/* Output of the example programs, for a UTF-8 terminal. */
#ifndef CONSOLE_H
#define CONSOLE_H

#include "vrno.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Prints a text in code page 949. A byte that cannot be converted becomes U+FFFD. */
void print_ksc(const char* ksc);

/* Prints the text of the last failure: the message and, for some failures, the trail to the place where it was found. Counts its
 * reason. Returns the code. */
int explain(VRNO_API_CTX* ctx, int code);

/* Prints how often each reason was counted. */
void print_reasons(void);

/* Prints the fields and extensions of the loaded certificate. Returns 0, or the code of the first that could not be read. */
int show_certificate(VRNO_API_CTX* ctx);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
