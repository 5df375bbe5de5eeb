/* The conversion of a whole file, in portions of bounded size that end at line ends. */
#ifndef ZVCONV_CONVERSION_H
#define ZVCONV_CONVERSION_H

#include <stdbool.h>

#include "input.h"
#include "line_ends.h"
#include "output.h"
#include "pipeline.h"

enum content {
    TEXT,
    SUBJECTS,          /* each line becomes the header line of a mail, in the library's form */
    STANDARD_SUBJECTS, /* the same in the form that every mail program reads */
    HEADERS            /* mail headers become the text of their encoded words */
};

struct conversion {
    struct encoding from, to;
    enum content content;
    enum line_ends line_ends;
    struct wishes wishes;
};

/* Converts all of the input. False after a complaint. */
bool convert(const struct conversion* conversion, struct input* input, struct output* output);

#endif
