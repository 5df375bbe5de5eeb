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
    *input = (struct input){.name = is_stdin ? "standard input" : name};
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
    if (input->kept != NULL)
        fclose(input->kept);
    close(input->descriptor);
}

off_t input_mark(struct input* input) {
    const off_t mark = lseek(input->descriptor, 0, SEEK_CUR);
    if (mark >= 0)
        return mark;
    input->kept = tmpfile();
    input->keeps = input->kept != NULL;
    return input->keeps || complain_of("temporary file") ? 0 : -1;
}

bool input_return(struct input* input, off_t mark) {
    input->keeps = false;
    const int descriptor = input->kept != NULL ? fileno(input->kept) : input->descriptor;
    return lseek(descriptor, mark, SEEK_SET) == mark || complain_of(input->name);
}

off_t input_size(const struct input* input) {
    const off_t start = lseek(input->descriptor, 0, SEEK_CUR);
    return S_ISREG(input->status.st_mode) && start >= 0 ? input->status.st_size - start : -1;
}

static ssize_t read_some(int descriptor, char* text, unsigned long room) {
    ssize_t got;
    do
        got = read(descriptor, text, room);
    while (got < 0 && errno == EINTR);
    return got;
}

static bool keep(struct input* input, const char* text, size_t length) {
    return (fwrite(text, 1, length, input->kept) == length && fflush(input->kept) == 0) ||
           complain_of("temporary file");
}

long input_read(struct input* input, char* text, unsigned long room) {
    ssize_t got = 0;
    if (input->kept != NULL && !input->keeps)
        got = read_some(fileno(input->kept), text, room);
    if (got == 0 && !input->ended)
        got = read_some(input->descriptor, text, room);
    if (got < 0)
        complain_of(input->name);
    else if (input->keeps && !keep(input, text, (size_t)got))
        return -1;
    else
        progress_add((size_t)got);
    input->ended = input->ended || (input->keeps && got == 0);
    return (long)got;
}
