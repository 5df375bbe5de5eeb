/* What the user is told on standard error: one line each, "zvconv: " in front. */
#ifndef ZVCONV_MESSAGES_H
#define ZVCONV_MESSAGES_H

#include <stdbool.h>

/* An error. Gives false, so that a failing function can return it. */
__attribute__((format(printf, 1, 2))) bool complain(const char* format, ...);

/* The error of errno, about a file. */
bool complain_of(const char* name);

/* An error at a line of a file. */
__attribute__((format(printf, 3, 4))) bool complain_at(const char* name, unsigned long long line,
                                                       const char* format, ...);

/* What is worth knowing but no error; silent after silence_notes(). note() gives true. */
__attribute__((format(printf, 1, 2))) bool note(const char* format, ...);
__attribute__((format(printf, 3, 4))) bool note_at(const char* name, unsigned long long line,
                                                   const char* format, ...);
void silence_notes(void);

#endif
