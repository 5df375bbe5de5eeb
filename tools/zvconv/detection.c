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
    unsigned long pairs, kana, rare; /* characters of two bytes, of them those seldom written */
    unsigned long joined; /* pairs that cannot be a letter with an accent and one without */
    unsigned long lone;   /* pairs that could be two letters with accents in a word of others */
    unsigned long half, malformed; /* half: half-width katakana */
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

/* The row of JIS X 0208 that a character of two bytes stands in, 0 for one that is none. */
static int row_of(const unsigned char* c, int code_set) {
    int first = c[0], second = c[1];
    if (code_set == ZV_SJIS)
        sjis2jis(&first, &second);
    first &= 0x7F;
    return second != 0x7F && between((unsigned char)first, 0x21, 0x7E) ? first - 0x20 : 0;
}

static void count_pair(struct score* s, const unsigned char* c, int code_set, bool behind_pair,
                       bool in_word) {
    const int row = row_of(c, code_set);
    const bool used = (row >= 1 && row <= 8) || row == 13 || (row >= 16 && row <= 84);
    if (!used) {
        ++s->malformed;
        return;
    }
    ++s->pairs;
    const bool kana = row == 4 || row == 5;
    s->kana += kana;
    s->rare += row >= 48; /* kanji of the second level */
    s->joined += behind_pair || c[1] >= 0x80;
    s->lone += in_word && !kana && row != 1;
}

static bool is_letter(unsigned char byte) {
    return between(byte | 0x20, 'a', 'z');
}

/* Whether a pair stands by itself beside a letter of ASCII. */
static bool is_in_word(const struct buffer* text, const unsigned char* pair) {
    const unsigned char* const next = pair + 2;
    const unsigned char after = next < (unsigned char*)text->bytes + text->length ? *next : '\0';
    const unsigned char before = pair > (unsigned char*)text->bytes ? pair[-1] : '\0';
    return after < 0x80 && (is_letter(before) || is_letter(after));
}

static struct score score_of(const struct buffer* sample, int code_set) {
    const unsigned char* text = (const unsigned char*)sample->bytes;
    const unsigned char* const end = text + sample->length;
    struct score s = {0};
    bool behind_pair = false;
    while (text < end) {
        const int length = mblenExt((const char*)text, (unsigned)(end - text), code_set);
        if (length > end - text)
            break;
        const bool half = code_set == ZV_EUC ? *text == 0x8E : length == 1;
        const bool pair = length == 2 && !half;
        if (pair)
            count_pair(&s, text, code_set, behind_pair, !behind_pair && is_in_word(sample, text));
        else if (*text >= 0x80 && length > 0)
            s.half += half;
        else if (*text >= 0x80)
            ++s.malformed;
        behind_pair = pair;
        text += length > 0 ? length : 1;
    }
    return s;
}

/* Few bytes that are no characters, few rare characters, and few that stand alone between ASCII
 * as letters with accents do. */
static bool is_likely(const struct score* s) {
    return s->pairs > 0 && s->malformed * 100 <= s->pairs && s->rare * 4 <= s->pairs &&
           s->half <= 2 * s->pairs && s->lone * 2 <= s->pairs &&
           (s->joined * 2 > s->pairs || s->kana * 4 > s->pairs);
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
    *goes_on = true;
    while (sample->length < SAMPLE) {
        char* room = buffer_extend(sample, BLOCK);
        const long got = room == NULL ? -1 : input_read(input, room, BLOCK);
        if (got < 0)
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
