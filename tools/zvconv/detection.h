/* Which encoding a text is in, as far as it shows. */
#ifndef ZVCONV_DETECTION_H
#define ZVCONV_DETECTION_H

#include <stdbool.h>

#include "encodings.h"
#include "input.h"

struct guess {
    bool decided;
    struct encoding encoding;
    const char* found;     /* what it was decided by, or why it was not */
    const char* line_ends; /* "LF", "CRLF", "CR", "mixed" or "none" */
};

/* Looks at an input, which can be read from where it was then. A mark decides, then UTF-8 that is
 * well-formed and not ASCII alone, then Japanese. False after a complaint. */
bool detect(struct input* input, struct guess* guess);

#endif
