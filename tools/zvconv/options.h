/* The command line. */
#ifndef ZVCONV_OPTIONS_H
#define ZVCONV_OPTIONS_H

#include <stdbool.h>

enum {
    DETECT = -1, /* the code set of '-f auto' */

    EXIT_MISUSED = 2, /* exit status for a command line that cannot be served */
    GO_ON = -1
};

struct options {
    int from, to;
    int target; /* of the conversion: `to`, or the code set in which its mail is written */
    bool subjects, in_place, force, quiet;
    const char* output; /* NULL for standard output */
    const char* backup; /* suffix of the old file's name, NULL for no backup */
    char** files;
    int count;
};

/* Reads the command line. Gives GO_ON or the exit status of a run that is over. */
int parse_options(int argc, char** argv, struct options* options);

#endif
