/* The command line. */
#ifndef ZVCONV_OPTIONS_H
#define ZVCONV_OPTIONS_H

#include <stdbool.h>

#include "conversion.h"

enum {
    EXIT_MISUSED = 2, /* exit status for a command line that cannot be served */
    GO_ON = -1,
    PATTERNS = 64
};

struct options {
    struct conversion conversion;
    bool detects; /* the encoding of each file */
    bool guesses; /* and does no more */
    bool in_place, recursive, quiet;
    int jobs;
    const char* patterns[PATTERNS];
    int pattern_count;
    const char* output; /* NULL for standard output */
    struct replacing replacing;
    char** files;
    int count;
};

/* Reads the command line. Gives GO_ON or the exit status of a run that is over. */
int parse_options(int argc, char** argv, struct options* options);

#endif
