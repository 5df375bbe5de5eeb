/* The line on standard error that shows how far a big file has come. */
#ifndef ZVCONV_PROGRESS_H
#define ZVCONV_PROGRESS_H

#include <stdbool.h>
#include <sys/types.h>

/* Begins a file of a size in bytes. Nothing is ever shown for 64 MiB or less, nor when not wanted,
 * nor unless standard error is a terminal. */
void progress_begin(off_t size, bool wanted);

/* More bytes have been read. The line is written anew ten times a second at most. */
void progress_add(size_t bytes);

/* Takes the line away before anything else is written. */
void progress_erase(void);

/* Ends the file. */
void progress_end(void);

#endif
