/* Lines of text written as the header "Subject:" of a mail. */
#ifndef ZVCONV_SUBJECTS_H
#define ZVCONV_SUBJECTS_H

#include <stdbool.h>

#include "buffer.h"
#include "encodings.h"

/* The encoding in which lines are handed to the functions below, for a subject of text in `from`
 * that is written in the mail encoding of `to`. */
struct encoding subject_encoding(const struct encoding* from, const struct encoding* to,
                                 bool standard);

/* Whether the library writes subjects in the encoding. */
bool library_writes_subjects(const struct encoding* to);

/* Whether text of ASCII is the same in the encoding, so that the rest can go into encoded words. */
bool holds_ascii(const struct encoding* encoding);

/* Adds a line, which is terminated, as a header in the library's form. False without memory. */
bool write_subject(const char* line, const struct encoding* encoding, const struct encoding* to,
                   struct buffer* out);

/* Adds a line as a header of words that any reader of RFC 2047 understands. */
bool write_standard_subject(const char* line, size_t length, const struct encoding* encoding,
                            struct buffer* out);

#endif
