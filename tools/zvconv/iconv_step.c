#include "iconv_step.h"

#include <errno.h>
#include <string.h>
#include <strings.h>

#include "jaconv.h"
#include "mbutil.h"
#include "messages.h"

enum { LONGEST_CHARACTER = 8 };

static const size_t kFailed = (size_t)-1;

static bool is_open(iconv_t converter) {
    return converter != (iconv_t)-1;
}

static bool has_shifts(const struct encoding* encoding) {
    return strncasecmp(encoding->iconv, "ISO-2022", 8) == 0 ||
           strncasecmp(encoding->iconv, "UTF-7", 5) == 0;
}

/* What stands for malformed bytes and for characters that the encoding lacks. */
static bool make_substitutes(struct iconv_step* s, const struct encoding* to,
                             const char* substitute) {
    const char* lost = substitute != NULL ? substitute : "?";
    const char* malformed = substitute == NULL && is_unicode(to) ? "\xEF\xBF\xBD" : lost;
    return (encode_utf8(malformed, to, &s->malformed) || encode_utf8(lost, to, &s->malformed)) &&
           encode_utf8(lost, to, &s->lost);
}

/* Lets a converter write its byte order mark into nowhere. */
static void drop_mark(iconv_t converter, const struct encoding* from) {
    struct buffer letter = {0};
    char room[16];
    char* out = room;
    size_t left = sizeof room;
    if (encode_utf8("a", from, &letter)) {
        char* in = letter.bytes;
        size_t length = letter.length;
        iconv(converter, &in, &length, &out, &left);
    }
    buffer_free(&letter);
}

bool iconv_step_open(struct iconv_step* s, const struct encoding* from, const struct encoding* to,
                     const char* substitute, bool goes_on) {
    struct troubles* const troubles = s->troubles;
    *s = (struct iconv_step){.unit = unit_of(from),
                             .code_set = from->code_set,
                             .by_sjis =
                                 to->code_set == ZV_EUC && is_unicode(from) && !has_shifts(from),
                             .resets = has_shifts(to),
                             .troubles = troubles};
    s->converter = iconv_open(s->by_sjis ? "SJIS" : to->iconv, from->iconv);
    s->probe = iconv_open("UTF-8", from->iconv);
    s->direct = s->by_sjis ? iconv_open(to->iconv, from->iconv) : (iconv_t)-1;
    if (!is_open(s->converter) || !is_open(s->probe) || (s->by_sjis && !is_open(s->direct))) {
        complain("no conversion from %s to %s: %s", from->name, to->name, strerror(errno));
        iconv_step_close(s);
        return false;
    }
    if (!make_substitutes(s, to, substitute)) {
        complain("'%s' cannot be written in %s", substitute != NULL ? substitute : "?", to->name);
        iconv_step_close(s);
        return false;
    }
    if (goes_on && unit_of(to) > 1)
        drop_mark(s->converter, from);
    return true;
}

void iconv_step_close(struct iconv_step* s) {
    if (is_open(s->converter))
        iconv_close(s->converter);
    if (is_open(s->probe))
        iconv_close(s->probe);
    if (is_open(s->direct))
        iconv_close(s->direct);
    buffer_free(&s->sjis);
    buffer_free(&s->malformed);
    buffer_free(&s->lost);
}

/* Tells whether the text begins with a character, and the length of that or of what is none. */
static enum trouble look_at(const struct iconv_step* s, const char* text, size_t left,
                            size_t* length) {
    const size_t most = left < LONGEST_CHARACTER ? left : LONGEST_CHARACTER;
    for (*length = s->unit; *length <= most; *length += s->unit) {
        char result[4 * LONGEST_CHARACTER];
        char* in = (char*)text; /* iconv does not write there */
        char* out = result;
        size_t in_left = *length, out_left = sizeof result;
        iconv(s->probe, NULL, NULL, NULL, NULL);
        if (iconv(s->probe, &in, &in_left, &out, &out_left) != kFailed && out > result)
            return LOST;
        if (errno == EILSEQ)
            break;
    }
    const int scanned =
        s->code_set == NO_CODE_SET ? -1 : mblenExt(text, (unsigned)left, s->code_set);
    if (scanned > 1 && (size_t)scanned <= left) /* a code without a character */
        *length = (size_t)scanned;
    else if (*length > s->unit) /* the byte that does not fit may begin another character */
        *length -= s->unit;
    if (*length > left)
        *length = left;
    return MALFORMED;
}

static bool replace(struct iconv_step* s, enum trouble trouble, struct buffer* out) {
    const struct buffer* text = trouble == MALFORMED ? &s->malformed : &s->lost;
    if (s->troubles->policy == SKIP)
        return true;
    if (s->resets) {
        size_t left = LONGEST_CHARACTER;
        char* end = buffer_extend(out, left);
        if (end == NULL)
            return false;
        iconv(s->converter, NULL, NULL, &end, &left);
        out->length += LONGEST_CHARACTER - left;
    }
    return buffer_add(out, text->bytes, text->length);
}

static bool tell_and_replace(struct iconv_step* s, enum trouble trouble, const char* text,
                             size_t length, struct buffer* out) {
    if (!s->takes_stand_ins || (unsigned char)*text != STAND_IN)
        troubles_meet(s->troubles, trouble, text, length);
    return replace(s, trouble, out);
}

/* iconv takes several times as long for EUC as for Shift-JIS and the library together. */
static bool make_euc(struct buffer* sjis, struct buffer* out) {
    if (!buffer_add(sjis, "", 1))
        return false;
    const char* text = sjis->bytes;
    const char* const end = text + sjis->length - 1;
    char* euc = buffer_extend(out, 2 * sjis->length);
    if (euc == NULL)
        return false;
    for (;; *euc++ = *text++) { /* a zero byte */
        shift2eucx(text, euc);
        euc += strlen(euc);
        text += strlen(text);
        if (text == end)
            break;
    }
    out->length = (size_t)(euc - out->bytes);
    sjis->length = 0;
    return true;
}

static bool convert_directly(struct iconv_step* s, const char* text, size_t length,
                             struct buffer* out) {
    char* in = (char*)text; /* iconv does not write there */
    size_t room = LONGEST_CHARACTER;
    char* end = buffer_extend(out, room);
    if (end == NULL || iconv(s->direct, &in, &length, &end, &room) == kFailed)
        return false;
    out->length = (size_t)(end - out->bytes);
    return true;
}

bool iconv_step_run(struct iconv_step* s, const char* text, size_t length, bool final,
                    struct buffer* out, size_t* used) {
    char* in = (char*)text; /* iconv does not write there */
    size_t left = length;
    bool flushes = final;
    struct buffer* const made = s->by_sjis ? &s->sjis : out;
    while (left > 0 || flushes) {
        size_t room = 2 * left + 64;
        char* end = buffer_extend(made, room);
        if (end == NULL)
            return false;
        const bool flushing = left == 0;
        const size_t result = flushing ? iconv(s->converter, NULL, NULL, &end, &room)
                                       : iconv(s->converter, &in, &left, &end, &room);
        const int reason = errno;
        made->length = (size_t)(end - made->bytes);
        if (result != kFailed) {
            flushes = flushes && !flushing;
            continue;
        }
        if (reason == E2BIG)
            continue;
        if (reason == EINVAL && !final)
            break;
        size_t bad = left;
        const enum trouble trouble = reason == EINVAL ? MALFORMED : look_at(s, in, left, &bad);
        if (s->by_sjis && !make_euc(&s->sjis, out))
            return false;
        if (!s->by_sjis || trouble == MALFORMED || !convert_directly(s, in, bad, out)) {
            if (!tell_and_replace(s, trouble, in, bad, out))
                return false;
        }
        in += bad;
        left -= bad;
    }
    *used = length - left;
    return !s->by_sjis || make_euc(&s->sjis, out);
}
