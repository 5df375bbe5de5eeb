/* Half-width katakana made full-width. */
#ifndef ZVCONV_KATAKANA_H
#define ZVCONV_KATAKANA_H

#include <stdbool.h>

#include "buffer.h"

/* Adds text to `out`, its half-width katakana full-width and each merged with the sound mark behind
 * it. The code set is EUC or SJIS. One byte behind the text is written. */
bool widen_katakana(struct buffer* text, int code_set, struct buffer* out);

#endif
