#include "troubles.h"

#include <iconv.h>
#include <stdio.h>
#include <string.h>

#include "jaconv.h"
#include "mbutil.h"
#include "messages.h"
#include "surveys.h"

enum { TOLD = 20, /* of each kind, with --verbose */ SHOWN_BYTES = 8 };

static unsigned long line_ends(const char* text, size_t length, unsigned unit) {
    if (unit == 1)
        return count_byte(text, length, '\n');
    unsigned long count = 0;
    for (size_t i = 0; i + unit <= length; i += unit) {
        unsigned value = 0, reversed = 0; /* one of them is the value of the unit */
        for (unsigned k = 0; k < unit; ++k) {
            value = value << 8 | (unsigned char)text[i + k];
            reversed = reversed << 8 | (unsigned char)text[i + unit - 1 - k];
        }
        count += value == '\n' || reversed == '\n';
    }
    return count;
}

void troubles_enter(struct troubles* t, const char* portion) {
    t->portion = portion;
}

void troubles_leave(struct troubles* t, size_t length) {
    t->offset += length;
    t->line += line_ends(t->portion, length, unit_of(&t->from));
}

static void tell(const struct troubles* t, enum trouble trouble, const char* place, size_t length) {
    char bytes[3 * SHOWN_BYTES + 4] = "";
    for (size_t i = 0; i < length && i < SHOWN_BYTES; ++i)
        snprintf(bytes + 3 * i, 4, " %02X", (unsigned char)place[i]);
    if (length > SHOWN_BYTES)
        strcat(bytes, "...");
    const size_t before = t->decoded ? 0 : (size_t)(place - t->portion);
    const unsigned long long line = t->line + 1 + line_ends(t->portion, before, unit_of(&t->from));
    const char* what = trouble == MALFORMED ? "malformed" : "no counterpart in";
    const char* encoding = trouble == MALFORMED ? t->from.name : t->to.name;
    (t->policy == REFUSE ? complain_at : note_at)(t->name, line, "offset %llu: %s %s:%s",
                                                  t->offset + before, what, encoding, bytes);
}

void troubles_meet(struct troubles* t, enum trouble trouble, const char* place, size_t length) {
    const unsigned long told = t->verbose ? TOLD : 1;
    if (t->counts[trouble]++ >= told)
        return;
    if (t->origin != NULL)
        place = t->origin(t->context, place, &length);
    tell(t, trouble, place, length);
}

static void report(const struct troubles* t, const char* what, const char* encoding,
                   unsigned long count) {
    static const char* const kDone[] = {"refused; --force, --skip or --substitute accept that",
                                        "accepted", "left out", "replaced"};
    if (count > 0 && t->policy == REFUSE)
        complain("%s: %s %s: %lu (%s)", t->name, what, encoding, count, kDone[t->policy]);
    else if (count > 0)
        note("%s: %s %s: %lu (%s)", t->name, what, encoding, count, kDone[t->policy]);
}

bool troubles_report(const struct troubles* t) {
    report(t, "malformed characters of", t->from.name, t->counts[MALFORMED]);
    report(t, "characters without counterpart in", t->to.name, t->counts[LOST]);
    if (t->control_codes > 0)
        note("%s: characters that became control codes in %s: %lu", t->name, t->to.name,
             t->control_codes);
    return t->policy != REFUSE || (t->counts[MALFORMED] == 0 && t->counts[LOST] == 0);
}

static bool is_mark(const char* bytes, unsigned unit) {
    static const char kMarks[][5] = {"\xFF\xFE", "\xFE\xFF", "\xFF\xFE\0", "\0\0\xFE\xFF"};
    for (size_t i = unit == 2 ? 0 : 2; i < (unit == 2 ? 2 : 4); ++i) {
        if (memcmp(bytes, kMarks[i], unit) == 0)
            return true;
    }
    return false;
}

bool encode_utf8(const char* text, const struct encoding* encoding, struct buffer* out) {
    const bool is_jis = encoding->code_set == ZV_JIS;
    iconv_t converter = iconv_open(is_jis ? "SJIS" : encoding->iconv, "UTF-8");
    if (converter == (iconv_t)-1)
        return false;
    char* in = (char*)text; /* iconv does not write there */
    size_t left = strlen(text);
    char encoded[1024];
    char* end = encoded;
    size_t room = sizeof encoded - 1;
    const bool good = iconv(converter, &in, &left, &end, &room) != (size_t)-1 &&
                      iconv(converter, NULL, NULL, &end, &room) != (size_t)-1;
    iconv_close(converter);
    *end = '\0';
    const unsigned unit = unit_of(encoding);
    const char* begin = unit > 1 && is_mark(encoded, unit) ? encoded + unit : encoded;
    if (good && is_jis) {
        char jis[5 * sizeof encoded + 4];
        shift2jisx(encoded, jis);
        return buffer_add(out, jis, strlen(jis));
    }
    return good && buffer_add(out, begin, (size_t)(end - begin));
}
