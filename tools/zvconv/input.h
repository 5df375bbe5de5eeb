/* A file that is read. */
#ifndef ZVCONV_INPUT_H
#define ZVCONV_INPUT_H

#include <stdbool.h>
#include <stdio.h>
#include <sys/stat.h>

struct input {
    const char* name; /* as the user knows it */
    int descriptor;
    struct stat status;
    FILE* kept;        /* what was read of one that cannot be positioned, NULL for others */
    bool keeps, ended; /* keeps: what is read now; ended: while it did, a terminal ends but once */
};

/* Opens a file, "-" for standard input; a regular one or none at all when that is asked. */
bool input_open(struct input* input, const char* name, bool regular);
void input_close(struct input* input);

/* From here on the input will be read once more: of one that cannot be positioned, what is read
 * goes to a temporary file, too. Gives the position, -1 after a complaint. */
off_t input_mark(struct input* input);
bool input_return(struct input* input, off_t mark);

/* How many bytes are still to come, -1 when nobody knows. */
off_t input_size(const struct input* input);

/* Reads what there is, up to a number of bytes: 0 at the end, -1 after a complaint. */
long input_read(struct input* input, char* text, unsigned long room);

#endif
