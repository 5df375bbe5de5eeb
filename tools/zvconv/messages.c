#include "messages.h"

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "progress.h"

static bool silent;

static void tell(const char* format, va_list arguments) {
    progress_erase();
    fputs("zvconv: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
}

bool complain(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    tell(format, arguments);
    va_end(arguments);
    return false;
}

bool complain_of(const char* name) {
    return complain("%s: %s", name, strerror(errno));
}

void note(const char* format, ...) {
    if (silent)
        return;
    va_list arguments;
    va_start(arguments, format);
    tell(format, arguments);
    va_end(arguments);
}

void silence_notes(void) {
    silent = true;
}
