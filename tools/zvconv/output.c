#include "output.h"

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <string.h>
#include <unistd.h>

#include "messages.h"

/* There is one output at a time. */
static char buffer[5 * 1024 * 1024];
static size_t filled;

bool output_open(struct output* output, const char* name) {
    struct stat status;
    filled = 0;
    *output = (struct output){.name = name};
    if (name == NULL || strcmp(name, "-") == 0) {
        output->name = "standard output";
        output->descriptor = dup(STDOUT_FILENO);
    } else if (stat(name, &status) == 0 && !S_ISREG(status.st_mode)) {
        output->descriptor = open(name, O_WRONLY); /* a device or a pipe cannot be replaced */
    } else {
        output->replaces = true;
        if (!replacement_begin(&output->replacement, name))
            return false;
        output->descriptor = output->replacement.descriptor;
    }
    return output->descriptor >= 0 || complain_of(output->name);
}

bool output_close(struct output* output, bool good, const char* backup_suffix,
                  const struct stat* read) {
    good = output_flush(output) && good;
    if (!output->replaces)
        return (close(output->descriptor) == 0 || complain_of(output->name)) && good;
    if (good)
        return replacement_commit(&output->replacement, backup_suffix, read);
    replacement_abandon(&output->replacement);
    return false;
}

char* output_room(struct output* output, unsigned long bytes) {
    if (bytes > sizeof buffer - filled && !output_flush(output))
        return NULL;
    return buffer + filled;
}

void output_add(unsigned long bytes) {
    filled += bytes;
}

bool output_flush(struct output* output) {
    const char* next = buffer;
    while (filled > 0) {
        const ssize_t written = write(output->descriptor, next, filled);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0) {
            filled = 0;
            output->failed = true;
            return complain_of(output->name);
        }
        next += written;
        filled -= (size_t)written;
    }
    return true;
}
