/* A file that is written: standard output, a device, or one that replaces another. */
#ifndef ZVCONV_OUTPUT_H
#define ZVCONV_OUTPUT_H

#include <stdbool.h>

#include "buffer.h"
#include "replacement.h"

struct output {
    const char* name; /* as the user knows it */
    int descriptor;
    bool replaces;
    bool failed;  /* to write: nothing more need be tried */
    bool written; /* something has been */
    bool idle;    /* what is written is what was read: a file in place may stay */
    struct replacement replacement;
};

/* NULL and "-" stand for standard output. */
bool output_open(struct output* output, const char* name);

/* Whether a file that is read would receive what is made of it. */
bool output_feeds(const struct output* output, const struct stat* input);

/* Ends the output: takes its place when all went well, else leaves everything as it was. See
 * replacement_commit(). */
bool output_close(struct output* output, bool good, const struct replacing* replacing,
                  const struct stat* read);

/* Writes what a buffer holds, and empties it. */
bool output_write(struct output* output, struct buffer* bytes);

#endif
