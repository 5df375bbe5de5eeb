#include "output.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include "messages.h"

bool output_open(struct output* output, const char* name) {
    struct stat status;
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

bool output_feeds(const struct output* output, const struct stat* input) {
    struct stat status;
    return fstat(output->descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_dev == input->st_dev && status.st_ino == input->st_ino;
}

bool output_close(struct output* output, bool good, const struct replacing* replacing,
                  const struct stat* read) {
    if (!output->replaces)
        return (close(output->descriptor) == 0 || complain_of(output->name)) && good;
    if (good && !(output->idle && read != NULL))
        return replacement_commit(&output->replacement, replacing, read);
    replacement_abandon(&output->replacement);
    return good;
}

bool output_write(struct output* output, struct buffer* bytes) {
    const char* next = bytes->bytes;
    size_t left = bytes->length;
    bytes->length = 0;
    output->written = output->written || left > 0;
    while (left > 0) {
        const ssize_t written = write(output->descriptor, next, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0) {
            output->failed = true;
            return errno != EPIPE && complain_of(output->name); /* a reader that goes knows why */
        }
        next += written;
        left -= (size_t)written;
    }
    return true;
}
