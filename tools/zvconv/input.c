#include "input.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "messages.h"
#include "progress.h"

bool input_open(struct input* input, const char* name, bool regular) {
    const bool is_stdin = strcmp(name, "-") == 0;
    input->name = is_stdin ? "standard input" : name;
    /* Opening a pipe would wait for its writer. */
    input->descriptor =
        is_stdin ? dup(STDIN_FILENO) : open(name, O_RDONLY | (regular ? O_NONBLOCK : 0));
    if (input->descriptor < 0)
        return complain_of(input->name);
    if (fstat(input->descriptor, &input->status) != 0)
        complain_of(input->name);
    else if (regular && !S_ISREG(input->status.st_mode))
        complain(S_ISDIR(input->status.st_mode) ? "%s: Is a directory, which needs -r"
                                                : "%s: Not a regular file",
                 name);
    else
        return true;
    input_close(input);
    return false;
}

void input_close(struct input* input) {
    close(input->descriptor);
}

/* Copies what cannot be positioned to a temporary file, from which it is read instead. */
static bool spool(struct input* input) {
    static char block[64 * 1024];
    FILE* file = tmpfile();
    if (file == NULL)
        return complain_of("temporary file");
    long got;
    bool good = true;
    while (good && (got = input_read(input, block, sizeof block)) != 0) {
        if (got < 0) {
            good = false;
        } else if (fwrite(block, 1, (size_t)got, file) != (size_t)got) {
            good = complain_of("temporary file");
        }
    }
    if (good && (fflush(file) != 0 || fseek(file, 0, SEEK_SET) != 0 ||
                 dup2(fileno(file), input->descriptor) < 0))
        good = complain_of("temporary file");
    fclose(file);
    return good && (fstat(input->descriptor, &input->status) == 0 || complain_of(input->name));
}

off_t input_mark(struct input* input) {
    if (lseek(input->descriptor, 0, SEEK_CUR) < 0 && !spool(input))
        return -1;
    return lseek(input->descriptor, 0, SEEK_CUR);
}

bool input_return(struct input* input, off_t mark) {
    return lseek(input->descriptor, mark, SEEK_SET) == mark || complain_of(input->name);
}

off_t input_size(const struct input* input) {
    const off_t start = lseek(input->descriptor, 0, SEEK_CUR);
    return S_ISREG(input->status.st_mode) && start >= 0 ? input->status.st_size - start : -1;
}

long input_read(struct input* input, char* text, unsigned long room) {
    ssize_t got;
    do
        got = read(input->descriptor, text, room);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        complain_of(input->name);
    else
        progress_add((size_t)got);
    return (long)got;
}
