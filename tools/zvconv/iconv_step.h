/* The conversion of text by iconv(3), where the library has no converter. */
#ifndef ZVCONV_ICONV_STEP_H
#define ZVCONV_ICONV_STEP_H

#include <iconv.h>
#include <stdbool.h>

#include "buffer.h"
#include "troubles.h"

struct iconv_step {
    iconv_t converter;
    iconv_t probe;  /* reads single characters, to tell malformed ones from lost ones */
    iconv_t direct; /* for characters of EUC that Shift-JIS lacks */
    bool by_sjis;   /* converter writes Shift-JIS, which the library makes EUC of */
    struct buffer sjis;
    unsigned unit;                 /* of the text that is read */
    int code_set;                  /* of that text, where the library knows it */
    bool resets;                   /* what is written has shift states */
    struct buffer malformed, lost; /* what is written instead */
    bool takes_stand_ins;          /* from the step before */
    struct troubles* troubles;
};

/* Opens a step. With `goes_on`, the result stands behind other text and needs no byte order mark.
 * False after a complaint. */
bool iconv_step_open(struct iconv_step* step, const struct encoding* from,
                     const struct encoding* to, const char* substitute, bool goes_on);
void iconv_step_close(struct iconv_step* step);

/* Converts text; `used` receives how much of it: all but the beginning of a character, and with
 * `final` that too. */
bool iconv_step_run(struct iconv_step* step, const char* text, size_t length, bool final,
                    struct buffer* out, size_t* used);

#endif
