/*
 * Quick looks over a text and its conversion that tell whether all was plain: well-formed, nothing
 * lost, no line end swallowed. Loops without branches, which the compiler turns into vectors.
 */
#ifndef ZVCONV_SURVEYS_H
#define ZVCONV_SURVEYS_H

#include <stdbool.h>
#include <stddef.h>

size_t count_byte(const char* text, size_t length, char byte);

bool has_high_byte(const char* text, size_t length);

/* Whether a byte stands in the text that no character of two bytes of an EUC encoding or Big5 has:
 * 80-A0, with the single shift, and FF. */
bool has_foreign_byte(const char* text, size_t length);

/* Whether EUC text without foreign bytes and its Shift-JIS form, byte for byte, hold a pair that
 * was passed on because it is no character. */
bool has_unpaired_euc(const char* euc, const char* sjis, size_t length);

/* Whether JIS text has bytes above 7F, or escape sequences besides the usual ones of JIS X 0208 and
 * ASCII. */
bool has_unusual_jis(const char* text, size_t length);

/* Copies a text with blanks for its control bytes. */
void blank_controls(const char* text, char* copy, size_t length);

/* Puts the control bytes of ISO 8859 text back into its Windows form, both of the same length.
 * Whether there are none of 80-9F, which Windows code pages lack. */
bool restore_controls(const char* iso, char* windows, size_t length);

/* Whether every character of Windows text has become one of ISO 8859 and no control code. */
bool has_no_new_controls(const char* windows, const char* iso, size_t length);

#endif
