#include "messages.h"

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "progress.h"

static bool silent;

/* In one piece, so that the lines of several processes do not mix. */
static void tell(const char* name, unsigned long long line, const char* format, va_list arguments) {
    char message[8192];
    const size_t room = sizeof message - 1; /* for the end of the line */
    progress_erase();
    fflush(stdout); /* so that lines stand in their order where both go to one place */
    int length = name == NULL ? snprintf(message, room, "zvconv: ")
                              : snprintf(message, room, "zvconv: %s:%llu: ", name, line);
    if (length >= 0 && (size_t)length < room)
        length += vsnprintf(message + length, room - (size_t)length, format, arguments);
    size_t end = length < 0 ? 0 : (size_t)length;
    end = end < room ? end : room - 1;
    message[end] = '\n';
    message[end + 1] = '\0';
    fputs(message, stderr);
    fflush(stderr);
}

bool complain(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    tell(NULL, 0, format, arguments);
    va_end(arguments);
    return false;
}

bool complain_of(const char* name) {
    return complain("%s: %s", name, strerror(errno));
}

bool complain_at(const char* name, unsigned long long line, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    tell(name, line, format, arguments);
    va_end(arguments);
    return false;
}

bool note(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!silent)
        tell(NULL, 0, format, arguments);
    va_end(arguments);
    return true;
}

bool note_at(const char* name, unsigned long long line, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (!silent)
        tell(name, line, format, arguments);
    va_end(arguments);
    return true;
}

void silence_notes(void) {
    silent = true;
}
