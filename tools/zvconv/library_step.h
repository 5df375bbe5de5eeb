/* The conversion of text by the library's converters, with what they pass on in silence told. */
#ifndef ZVCONV_LIBRARY_STEP_H
#define ZVCONV_LIBRARY_STEP_H

#include <stdbool.h>

#include "buffer.h"
#include "troubles.h"

struct library_step {
    int from, to;
    bool windows_controls; /* characters that ISO 8859 lacks travel as control codes */
    bool passes_malformed; /* on as they are: no other step has to read the result */
    bool stands_in;        /* writes stand-ins for what the next step is to replace */
    struct buffer substitute;
    struct troubles* troubles;
    int shift; /* state of JIS text at the front of what comes next */
    struct buffer scratch;
};

/* Converts text that ends between two characters; one byte behind it is written for a while. */
bool library_step_run(struct library_step* step, char* text, size_t length, struct buffer* out);

/* How much of a text without line ends may be converted by itself. */
size_t library_step_front(const struct library_step* step, const char* text, size_t length);

/* The length of the character at the front of a text in the code set that the step reads, at
 * least 1; escape sequences change the shift state. */
size_t library_step_character(const struct library_step* step, const char* text, size_t length,
                              int* shift);

#endif
