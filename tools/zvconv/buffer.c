#include "buffer.h"

#include <stdlib.h>
#include <string.h>

#include "messages.h"

char* buffer_extend(struct buffer* buffer, size_t more) {
    if (more > buffer->room - buffer->length) {
        const size_t room =
            2 * buffer->room > buffer->length + more ? 2 * buffer->room : buffer->length + more;
        char* bytes = realloc(buffer->bytes, room);
        if (bytes == NULL) {
            complain("no memory");
            return NULL;
        }
        buffer->bytes = bytes;
        buffer->room = room;
    }
    return buffer->bytes + buffer->length;
}

bool buffer_add(struct buffer* buffer, const char* bytes, size_t length) {
    char* room = buffer_extend(buffer, length);
    if (room == NULL)
        return false;
    if (length > 0)
        memcpy(room, bytes, length);
    buffer->length += length;
    return true;
}

void buffer_free(struct buffer* buffer) {
    free(buffer->bytes);
    *buffer = (struct buffer){0};
}
