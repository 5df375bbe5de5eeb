/* What the user is told on standard error: one line each, "zvconv: " in front. */
#ifndef ZVCONV_MESSAGES_H
#define ZVCONV_MESSAGES_H

#include <stdbool.h>

/* An error. Gives false, so that a failing function can return it. */
__attribute__((format(printf, 1, 2))) bool complain(const char* format, ...);

/* The error of errno, about a file. */
bool complain_of(const char* name);

/* What is worth knowing but no error; silent after silence_notes(). */
__attribute__((format(printf, 1, 2))) void note(const char* format, ...);
void silence_notes(void);

#endif
