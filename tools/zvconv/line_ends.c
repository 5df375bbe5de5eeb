#include "line_ends.h"

#include <string.h>

#include "messages.h"
#include "troubles.h"

bool line_ends_begin(struct line_end_filter* f, enum line_ends wanted,
                     const struct encoding* encoding) {
    struct buffer ends = {0};
    *f = (struct line_end_filter){.wanted = wanted, .unit = unit_of(encoding)};
    if (wanted == KEEP_LINE_ENDS)
        return true;
    const bool good = encode_utf8("\r\n", encoding, &ends) && ends.length == 2 * (size_t)f->unit;
    if (good) {
        memcpy(f->cr, ends.bytes, f->unit);
        memcpy(f->lf, ends.bytes + f->unit, f->unit);
    }
    buffer_free(&ends);
    return good || complain("--line-ends does not know the line ends of %s", encoding->name);
}

/* The length of the text before the next line feed. */
static size_t before_line_feed(const struct line_end_filter* f, const char* text, size_t length) {
    if (f->unit == 1) {
        const char* end = memchr(text, '\n', length);
        return end != NULL ? (size_t)(end - text) : length;
    }
    size_t before = 0;
    while (before + f->unit <= length && memcmp(text + before, f->lf, f->unit) != 0)
        before += f->unit;
    return before + f->unit <= length ? before : length;
}

bool line_ends_change(struct line_end_filter* f, struct buffer* text, bool final) {
    if (f->wanted == KEEP_LINE_ENDS)
        return true;
    struct buffer* out = &f->scratch;
    const char* next = text->bytes;
    const char* const end = next + text->length;
    out->length = 0;
    while (next < end) {
        const size_t line = before_line_feed(f, next, (size_t)(end - next));
        const bool ends = next + line < end;
        const bool has_cr = line >= f->unit && memcmp(next + line - f->unit, f->cr, f->unit) == 0;
        const bool held = f->after_cr; /* from what came before */
        /* A CR at the end of the text at hand waits for what follows. */
        const size_t kept = has_cr ? line - f->unit : line;
        f->after_cr = has_cr && !ends;
        if ((held && line > 0 && !buffer_add(out, f->cr, f->unit)) || !buffer_add(out, next, kept))
            return false;
        if (ends && ((f->wanted == CRLF_LINE_ENDS && !buffer_add(out, f->cr, f->unit)) ||
                     !buffer_add(out, f->lf, f->unit)))
            return false;
        next += line + (ends ? f->unit : 0);
    }
    if (final && f->after_cr && !buffer_add(out, f->cr, f->unit))
        return false;
    const struct buffer changed = *out;
    *out = *text;
    *text = changed;
    return true;
}
