#include "detection.h"

#include <stdio.h>
#include <string.h>

#include "buffer.h"
#include "jaconv.h"
#include "mbutil.h"
#include "surveys.h"

enum {
    BLOCK = 64 * 1024,
    SAMPLE = 1024 * 1024 /* of the text from its first block on that is not plain ASCII */
};

/* How Japanese a text looks in a code set. */
struct score {
    unsigned long pairs, kana, adjacent; /* characters of two bytes, and those behind another one */
    unsigned long half, half_adjacent;   /* half-width katakana */
    unsigned long malformed;
};

struct line_end_counts {
    unsigned long lf, crlf, cr;
    bool after_cr;
};

static bool between(unsigned char byte, int first, int last) {
    return byte >= first && byte <= last;
}

static void add_line_ends(struct line_end_counts* c, const char* text, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == '\n' && c->after_cr)
            ++c->crlf, --c->cr;
        else if (text[i] == '\n')
            ++c->lf;
        c->after_cr = text[i] == '\r';
        c->cr += c->after_cr;
    }
}

static const char* name_line_ends(const struct line_end_counts* c) {
    if ((c->lf > 0) + (c->crlf > 0) + (c->cr > 0) > 1)
        return "mixed";
    return c->lf > 0 ? "LF" : c->crlf > 0 ? "CRLF" : c->cr > 0 ? "CR" : "none";
}

/* The length of the UTF-8 character at the front, 0 when there is none; what the end cuts counts
 * as one that reaches over it. */
static size_t utf8_length(const unsigned char* text, size_t left) {
    static const unsigned char kLeads[][4] = {
        /* first and last lead byte, first and last second byte */
        {0xC2, 0xDF, 0x80, 0xBF}, {0xE0, 0xE0, 0xA0, 0xBF}, {0xE1, 0xEC, 0x80, 0xBF},
        {0xED, 0xED, 0x80, 0x9F}, {0xEE, 0xEF, 0x80, 0xBF}, {0xF0, 0xF0, 0x90, 0xBF},
        {0xF1, 0xF3, 0x80, 0xBF}, {0xF4, 0xF4, 0x80, 0x8F}};
    if (*text < 0x80)
        return 1;
    for (size_t i = 0; i < sizeof kLeads / sizeof *kLeads; ++i) {
        if (!between(*text, kLeads[i][0], kLeads[i][1]))
            continue;
        const size_t length = *text < 0xE0 ? 2 : *text < 0xF0 ? 3 : 4;
        for (size_t k = 1; k < length && k < left; ++k) {
            if (!between(text[k], k == 1 ? kLeads[i][2] : 0x80, k == 1 ? kLeads[i][3] : 0xBF))
                return 0;
        }
        return length;
    }
    return 0;
}

/* Whether the text is UTF-8 with more than ASCII in it; only a text that goes on may be cut. */
static bool is_utf8(const struct buffer* sample, bool goes_on) {
    const unsigned char* text = (const unsigned char*)sample->bytes;
    const unsigned char* const end = text + sample->length;
    while (text < end) {
        const size_t length = utf8_length(text, (size_t)(end - text));
        if (length == 0)
            return false;
        if (length > (size_t)(end - text))
            return goes_on;
        text += length;
    }
    return true;
}

/* Whether two bytes are a character in a row that Japanese text uses. */
static bool is_pair(const unsigned char* c, int code_set, bool* kana) {
    if (code_set == ZV_EUC) {
        *kana = (c[0] == 0xA4 && between(c[1], 0xA1, 0xF3)) ||
                (c[0] == 0xA5 && between(c[1], 0xA1, 0xF6));
        return between(c[1], 0xA1, 0xFE) &&
               (between(c[0], 0xA1, 0xA8) || c[0] == 0xAD || between(c[0], 0xB0, 0xF4));
    }
    *kana =
        (c[0] == 0x82 && between(c[1], 0x9F, 0xF1)) || (c[0] == 0x83 && between(c[1], 0x40, 0x96));
    return between(c[1], 0x40, 0xFC) && c[1] != 0x7F &&
           (between(c[0], 0x81, 0x84) || between(c[0], 0x87, 0x9F) || between(c[0], 0xE0, 0xEE));
}

static struct score score_of(const struct buffer* sample, int code_set) {
    const unsigned char* text = (const unsigned char*)sample->bytes;
    const unsigned char* const end = text + sample->length;
    struct score s = {0};
    enum { OTHER, PAIR, HALF } last = OTHER;
    while (text < end) {
        const int scanned = mblenExt((const char*)text, (unsigned)(end - text), code_set);
        bool kana = false;
        if (*text < 0x80) {
            last = OTHER;
            ++text;
            continue;
        }
        if (scanned > end - text)
            break;
        const bool half = code_set == ZV_EUC ? *text == 0x8E : scanned == 1;
        if (half && scanned > 0) {
            ++s.half;
            s.half_adjacent += last == HALF;
            last = HALF;
        } else if (scanned == 3 || (scanned == 2 && is_pair(text, code_set, &kana))) {
            ++s.pairs;
            s.kana += kana;
            s.adjacent += last == PAIR;
            last = PAIR;
        } else {
            ++s.malformed;
            last = OTHER;
        }
        text += scanned > 0 ? scanned : 1;
    }
    return s;
}

/* Characters that stand alone between ASCII are rather letters with accents. */
static bool is_likely(const struct score* s) {
    if (s->malformed * 20 > s->pairs + s->half)
        return false;
    if (s->kana * 8 > s->pairs || s->adjacent * 2 > s->pairs)
        return s->pairs > 0;
    return s->pairs == 0 && s->half_adjacent * 2 > s->half;
}

static int library_guess(const struct buffer* sample) {
    FILE* stream = fmemopen(sample->bytes, sample->length, "rb");
    if (stream == NULL)
        return 0;
    const int code_set = DetectJPCodeType(stream);
    fclose(stream);
    return code_set;
}

/* Decides between the readings of a text that is neither ASCII nor UTF-8. 0 when it cannot. */
static int japanese_guess(const struct buffer* sample, const char** doubt) {
    const int guessed = library_guess(sample);
    if (guessed == ZV_JIS && !has_high_byte(sample->bytes, sample->length))
        return ZV_JIS;
    const struct score euc = score_of(sample, ZV_EUC), sjis = score_of(sample, ZV_SJIS);
    const bool maybe_euc = is_likely(&euc), maybe_sjis = is_likely(&sjis);
    if (maybe_euc != maybe_sjis)
        return maybe_euc ? ZV_EUC : ZV_SJIS;
    if (!maybe_euc) {
        *doubt = "is neither UTF-8 nor Japanese";
        return 0;
    }
    if (euc.kana != sjis.kana)
        return euc.kana > sjis.kana ? ZV_EUC : ZV_SJIS;
    if (guessed == ZV_EUC || guessed == ZV_SJIS)
        return guessed;
    *doubt = "fits EUC and SJIS";
    return 0;
}

/* Reads the part of the text that tells most. *goes_on: there is more of it. */
static bool take_sample(struct input* input, struct buffer* sample, struct line_end_counts* ends,
                        bool* goes_on) {
    bool plain = true;
    long got;
    *goes_on = true;
    while (sample->length < SAMPLE) {
        char* room = buffer_extend(sample, BLOCK);
        if (room == NULL || (got = input_read(input, room, BLOCK)) < 0)
            return false;
        if (got == 0) {
            *goes_on = false;
            return true;
        }
        add_line_ends(ends, room, (size_t)got);
        plain =
            plain && !has_high_byte(room, (size_t)got) && memchr(room, 0x1B, (size_t)got) == NULL;
        if (!plain)
            sample->length += (size_t)got;
    }
    return true;
}

static bool begins_with(const struct buffer* sample, const char* mark, size_t length) {
    return sample->length >= length && memcmp(sample->bytes, mark, length) == 0;
}

static void decide(struct guess* guess, const char* name, const char* found) {
    guess->decided = know_encoding(name, &guess->encoding);
    guess->found = found;
}

static void judge(struct guess* guess, const struct buffer* sample, bool goes_on) {
    if (begins_with(sample, "\xEF\xBB\xBF", 3))
        return decide(guess, "UTF-8", "its byte order mark");
    if (begins_with(sample, "\xFF\xFE\0\0", 4) || begins_with(sample, "\0\0\xFE\xFF", 4))
        return decide(guess, "UTF-32", "its byte order mark");
    if (begins_with(sample, "\xFF\xFE", 2) || begins_with(sample, "\xFE\xFF", 2))
        return decide(guess, "UTF-16", "its byte order mark");
    if (!has_high_byte(sample->bytes, sample->length)) {
        if (memchr(sample->bytes, 0x1B, sample->length) == NULL || library_guess(sample) != ZV_JIS)
            return decide(guess, "ASCII", "seven bits");
    } else if (is_utf8(sample, goes_on)) {
        return decide(guess, "UTF-8", "being well-formed");
    }
    const int code_set = japanese_guess(sample, &guess->found);
    if (code_set != 0)
        decide(guess, encoding_of(code_set).name, "Japanese characters");
}

bool detect(struct input* input, struct guess* guess) {
    struct buffer sample = {0};
    struct line_end_counts ends = {0};
    bool goes_on;
    *guess = (struct guess){0};
    const off_t mark = input_mark(input);
    const bool good =
        mark >= 0 && take_sample(input, &sample, &ends, &goes_on) && input_return(input, mark);
    if (good) {
        judge(guess, &sample, goes_on);
        const bool wide = guess->decided && unit_of(&guess->encoding) > 1;
        if (wide) { /* zero bytes stand between */
            size_t kept = 0;
            for (size_t i = 0; i < sample.length; ++i) {
                if (sample.bytes[i] != '\0')
                    sample.bytes[kept++] = sample.bytes[i];
            }
            ends = (struct line_end_counts){0};
            add_line_ends(&ends, sample.bytes, kept);
        }
        guess->line_ends = name_line_ends(&ends);
    }
    buffer_free(&sample);
    return good;
}
