/* Bytes in memory that grow as they are added to. */
#ifndef ZVCONV_BUFFER_H
#define ZVCONV_BUFFER_H

#include <stdbool.h>
#include <stddef.h>

struct buffer {
    char* bytes;
    size_t length, room;
};

/* Makes room for more bytes behind those that are there. Gives where they may be written, to be
 * counted in `length` then; NULL after a complaint that there is no memory. */
char* buffer_extend(struct buffer* buffer, size_t more);

bool buffer_add(struct buffer* buffer, const char* bytes, size_t length);

void buffer_free(struct buffer* buffer);

#endif
