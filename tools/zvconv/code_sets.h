/* The code sets by name, and which of them can be converted into which. */
#ifndef ZVCONV_CODE_SETS_H
#define ZVCONV_CODE_SETS_H

#include <stdbool.h>

/* Finds a code set by its name or by its charset name, such as Shift_JIS, in any case. */
bool find_code_set(const char* name, int* code_set);

const char* name_of_code_set(int code_set);

/* Whether a pair has a converter: a pair without one would be copied as it is. */
bool is_served(int from, int to);

/* Prints a line a code set, with what it can be converted into. */
void list_code_sets(void);

#endif
