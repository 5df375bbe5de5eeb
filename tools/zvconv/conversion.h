/* The conversion of a whole file, line by line in bounded memory. */
#ifndef ZVCONV_CONVERSION_H
#define ZVCONV_CONVERSION_H

#include <stdbool.h>

#include "input.h"
#include "output.h"

struct conversion {
    int from, to;
    bool subjects; /* each line becomes the header line of a mail */

    /* What was met on the way. */
    unsigned long
        control_codes;       /* characters that became control codes, which the way back reads */
    unsigned long lost;      /* characters without a counterpart */
    unsigned long malformed; /* lines that are not text of `from` */

    /* For the conversion alone. */
    const char* name; /* of the input */
    struct output* output;
    int two_byte; /* shift state of JIS text at the front of the block */
    unsigned long line;
};

/* Converts all of the input. False after a complaint about the input or the output. */
bool convert(struct conversion* conversion, struct input* input, struct output* output);

#endif
