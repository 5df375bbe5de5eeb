/* A file that is written: standard output, a device, or one that replaces another. */
#ifndef ZVCONV_OUTPUT_H
#define ZVCONV_OUTPUT_H

#include <stdbool.h>

#include "replacement.h"

struct output {
    const char* name; /* as the user knows it */
    int descriptor;
    bool replaces;
    bool failed; /* to write: nothing more need be tried */
    struct replacement replacement;
};

/* NULL and "-" stand for standard output. */
bool output_open(struct output* output, const char* name);

/* Ends the output: takes its place when all went well, else leaves everything as it was. See
 * replacement_commit(). */
bool output_close(struct output* output, bool good, const char* backup_suffix,
                  const struct stat* read);

/* Room for more bytes, up to 5 MiB; NULL after a complaint. What is then written there counts once
 * output_add() tells how much it is, and is passed on by output_flush() at the latest. */
char* output_room(struct output* output, unsigned long bytes);
void output_add(unsigned long bytes);
bool output_flush(struct output* output);

#endif
