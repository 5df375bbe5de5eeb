/* The ends of lines made alike. */
#ifndef ZVCONV_LINE_ENDS_H
#define ZVCONV_LINE_ENDS_H

#include <stdbool.h>

#include "buffer.h"
#include "encodings.h"

enum line_ends { KEEP_LINE_ENDS, LF_LINE_ENDS, CRLF_LINE_ENDS };

struct line_end_filter {
    enum line_ends wanted;
    unsigned unit;     /* of the text, in bytes */
    char cr[4], lf[4]; /* as units */
    bool after_cr;     /* the last unit was one, which LF_LINE_ENDS holds back */
    struct buffer scratch;
};

/* Begins a text in an encoding. False after a complaint. */
bool line_ends_begin(struct line_end_filter* filter, enum line_ends wanted,
                     const struct encoding* encoding);

/* Changes the next part of the text; the last one with `final`. */
bool line_ends_change(struct line_end_filter* filter, struct buffer* text, bool final);

#endif
