#include "pipeline.h"

#include <string.h>

#include "katakana.h"
#include "mbutil.h"
#include "messages.h"
#include "surveys.h"

static bool is_euc_or_sjis(const struct encoding* encoding) {
    return encoding->code_set == ZV_EUC || encoding->code_set == ZV_SJIS;
}

/* ISO 8859-1 and the code page 1252 are one code set to the library, but not to readers. */
static bool by_library(const struct encoding* from, const struct encoding* to) {
    return library_serves(from->code_set, to->code_set) &&
           (from->code_set != ZV_WESTERN || strcmp(from->iconv, to->iconv) == 0);
}

/* Finds the encodings that text takes on its way. Gives the number of steps. */
static int plan(const struct encoding* from, const struct encoding* to, const struct wishes* wishes,
                struct encoding route[3]) {
    const bool widens = wishes->full_katakana;
    route[0] = *from;
    route[1] = route[2] = *to;
    if (by_library(from, to)) {
        if (!widens || to->code_set != ZV_JIS || from->code_set == ZV_JIS)
            return 1;
        route[1] = encoding_of(ZV_EUC);
        return 2;
    }
    if (from->code_set == ZV_JIS || (from->code_set == ZV_SJIS && wishes->plain_ascii))
        route[1] = encoding_of(ZV_EUC);
    else if (to->code_set == ZV_JIS)
        route[1] = encoding_of(ZV_SJIS);
    else if (widens && is_euc_or_sjis(from) && !is_euc_or_sjis(to))
        route[1] = *from;
    else
        return 1;
    return 2;
}

bool katakana_can_be_widened(const struct encoding* from, const struct encoding* to) {
    const struct wishes wishes = {.full_katakana = true};
    struct encoding route[3];
    plan(from, to, &wishes, route);
    return is_euc_or_sjis(&route[1]);
}

static bool open_step(struct pipeline* p, int index, const struct wishes* wishes, bool goes_on) {
    struct step* step = &p->steps[index];
    const char* substitute = wishes->policy == SUBSTITUTE ? wishes->substitute : NULL;
    step->by_library = by_library(&step->from, &step->to);
    step->iconv.troubles = &p->troubles;
    if (!step->by_library) {
        const bool good =
            iconv_step_open(&step->iconv, &step->from, &step->to, substitute, goes_on);
        step->iconv.takes_stand_ins = index > 0;
        return good;
    }
    const bool stands_in = index + 1 < p->count && !by_library(&step[1].from, &step[1].to);
    step->library = (struct library_step){.from = step->from.code_set,
                                          .to = step->to.code_set,
                                          .windows_controls = wishes->windows_controls,
                                          .passes_malformed = index + 1 == p->count,
                                          .stands_in = stands_in,
                                          .troubles = &p->troubles};
    return substitute == NULL || stands_in ||
           encode_utf8(substitute, &step->to, &step->library.substitute) ||
           complain("'%s' cannot be written in %s", substitute, step->to.name);
}

static void close_step(struct step* step) {
    if (step->by_library) {
        buffer_free(&step->library.substitute);
        buffer_free(&step->library.scratch);
    } else {
        iconv_step_close(&step->iconv);
    }
}

bool pipeline_open(struct pipeline* p, const char* name, const struct encoding* from,
                   const struct encoding* to, const struct wishes* wishes, bool goes_on) {
    struct encoding route[3];
    *p = (struct pipeline){.widens = wishes->full_katakana};
    p->troubles = (struct troubles){.name = name,
                                    .policy = wishes->policy,
                                    .verbose = wishes->verbose,
                                    .from = *from,
                                    .to = *to};
    p->count = plan(from, to, wishes, route);
    for (int i = 0; i < p->count; ++i) {
        p->steps[i].from = route[i];
        p->steps[i].to = route[i + 1];
    }
    for (int i = 0; i < p->count; ++i) {
        if (!open_step(p, i, wishes, goes_on)) {
            while (i-- > 0)
                close_step(&p->steps[i]);
            return false;
        }
    }
    return true;
}

void pipeline_close(struct pipeline* p) {
    for (int i = 0; i < p->count; ++i)
        close_step(&p->steps[i]);
    buffer_free(&p->pivot);
    buffer_free(&p->widened);
}

static bool run_step(struct step* step, char* text, size_t length, bool final, struct buffer* out,
                     size_t* used) {
    *used = length;
    return step->by_library ? library_step_run(&step->library, text, length, out)
                            : iconv_step_run(&step->iconv, text, length, final, out, used);
}

/* Converts a portion by the first step, and makes its katakana full-width if that is wanted. */
static bool run_first(struct pipeline* p, char* text, size_t length, bool final, struct buffer* out,
                      size_t* used) {
    if (!p->widens)
        return run_step(&p->steps[0], text, length, final, out, used);
    p->widened.length = 0;
    return run_step(&p->steps[0], text, length, final, &p->widened, used) &&
           widen_katakana(&p->widened, p->steps[0].to.code_set, out);
}

/* How many bytes of pivot text a character of the portion became. */
static size_t pivot_length(const struct pipeline* p, const char* text, size_t length, int shift) {
    const int from = p->steps[0].from.code_set;
    if (from == ZV_JIS)
        return *text == '\x1B' ? 0 : shift == 1 ? length : 1;
    return from == ZV_SJIS && length == 1 && (unsigned char)(*text - 0xA1) < 0x3F ? 2 : length;
}

/* Finds the character of the portion from which a place in the pivot text comes, by counting on
 * from the line's beginning; every step keeps the line ends, though a substitute may add some. */
static const char* find_origin(void* context, const char* place, size_t* length) {
    struct pipeline* p = context;
    const struct step* first = &p->steps[0];
    const char* line = p->portion;
    const char* const end = p->portion + p->portion_length;
    const char* pivot_line = p->pivot.bytes;
    const char *next, *source_next;
    while ((next = memchr(pivot_line, '\n', (size_t)(place - pivot_line))) != NULL &&
           (source_next = memchr(line, '\n', (size_t)(end - line))) != NULL) {
        pivot_line = next + 1;
        line = source_next + 1;
    }
    *length = *length < (size_t)(end - line) ? *length : (size_t)(end - line);
    if (!first->by_library)
        return line;
    size_t left = (size_t)(place - pivot_line);
    int shift = 0;
    while (line < end) {
        const int before = shift;
        *length = library_step_character(&first->library, line, (size_t)(end - line), &shift);
        const size_t made = pivot_length(p, line, *length, before);
        if (made > left || line + *length >= end)
            break;
        left -= made;
        line += *length;
    }
    return line;
}

bool pipeline_run(struct pipeline* p, char* text, size_t length, bool final, struct buffer* out,
                  size_t* used) {
    if (p->count == 1)
        return run_first(p, text, length, final, out, used);
    size_t all;
    p->pivot.length = 0;
    if (!run_first(p, text, length, final, &p->pivot, used) || !buffer_add(&p->pivot, "", 1))
        return false;
    p->portion = text;
    p->portion_length = *used;
    p->troubles.context = p;
    p->troubles.origin = find_origin;
    const bool good = run_step(&p->steps[1], p->pivot.bytes, p->pivot.length - 1, final, out, &all);
    p->troubles.origin = NULL;
    return good;
}
