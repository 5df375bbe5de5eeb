/*
 * From one encoding into another: by the library where it serves the pair, by iconv(3) where it
 * does not, and by both where JIS is one of them, which the library reads and writes better.
 */
#ifndef ZVCONV_PIPELINE_H
#define ZVCONV_PIPELINE_H

#include <stdbool.h>

#include "encodings.h"
#include "iconv_step.h"
#include "library_step.h"
#include "troubles.h"

/* How conversions are wanted. */
struct wishes {
    enum policy policy;
    const char* substitute; /* UTF-8 text; NULL but for SUBSTITUTE */
    bool verbose;
    bool windows_controls;
    bool full_katakana;
    bool plain_ascii; /* 5C and 7E of SJIS are a backslash and a tilde to iconv(3), too */
};

struct step {
    struct encoding from, to;
    bool by_library;
    struct library_step library;
    struct iconv_step iconv;
};

struct pipeline {
    struct step steps[2];
    int count;
    bool widens; /* katakana in the result of the first step */
    struct buffer pivot, widened;
    const char* portion; /* of which the pivot text at hand was made */
    size_t portion_length;
    struct troubles troubles;
};

/* Whether katakana can be made full-width on the way: one of the encodings is SJIS or EUC, or both
 * meet in one. */
bool katakana_can_be_widened(const struct encoding* from, const struct encoding* to);

/* Opens a pipeline. With `goes_on`, its result stands behind other text. False after a complaint.
 */
bool pipeline_open(struct pipeline* pipeline, const char* name, const struct encoding* from,
                   const struct encoding* to, const struct wishes* wishes, bool goes_on);
void pipeline_close(struct pipeline* pipeline);

/* Converts a portion, which ends between two characters where the library reads it; one byte behind
 * it is written for a while. `used` receives how much was converted: with `final`, all. */
bool pipeline_run(struct pipeline* pipeline, char* text, size_t length, bool final,
                  struct buffer* out, size_t* used);

#endif
