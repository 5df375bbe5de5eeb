/* Encoded words as RFC 2047 wants them: each complete in itself, of whole characters, at most 75
 * columns long, one a line. Words of plain ASCII at either end of the line stay readable. */
#include <stdio.h>
#include <string.h>
#include <strings.h>

#include "jaconv.h"
#include "mbutil.h"
#include "subjects.h"

enum {
    LONGEST_WORD = 75,
    LONGEST_LINE = 76,
    MOST_BYTES = 64, /* of a word's text: fewer fit as base64 */
    ENCODED_ROOM = 3 * MOST_BYTES + 64
};

struct words {
    const struct encoding* encoding; /* of the text */
    const char* charset;             /* that the words name */
    bool base64;
    size_t column;
    struct buffer* out;
};

/* Text of a word in its charset, and how many bytes that takes. */
static size_t charset_text(const struct words* w, const char* text, size_t length, char* out) {
    memcpy(out, text, length);
    out[length] = '\0';
    if (w->encoding->code_set != ZV_EUC)
        return length;
    char euc[MOST_BYTES + 1];
    memcpy(euc, out, length + 1);
    euc2jisx(euc, out);
    /* What stands between the kanji of EUC text is ASCII, not the Roman set that the library's JIS
     * returns to. */
    for (char* escape = out; (escape = strstr(escape, "\x1B(J")) != NULL; escape += 3)
        escape[2] = 'B';
    return strlen(out);
}

static bool is_literal(unsigned char byte) { /* in Q, also within phrases */
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || (byte != 0 && strchr("!*+-/", byte) != NULL);
}

static size_t encode_base64(const char* bytes, size_t length, char* out) {
    static const char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    size_t made = 0;
    for (size_t i = 0; i < length; i += 3) {
        unsigned long group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < length ? (unsigned char)bytes[i + k] : 0);
        for (size_t k = 0; k < 4; ++k)
            out[made++] = (char)(i + k > length ? '=' : kDigits[group >> (18 - 6 * k) & 0x3F]);
    }
    return made;
}

static size_t encode_q(const char* bytes, size_t length, char* out) {
    size_t made = 0;
    for (size_t i = 0; i < length; ++i) {
        const unsigned char byte = (unsigned char)bytes[i];
        if (byte == ' ')
            out[made++] = '_';
        else if (is_literal(byte))
            out[made++] = bytes[i];
        else
            made += (size_t)snprintf(out + made, 4, "=%02X", byte);
    }
    return made;
}

/* Writes the word of a text. Gives its length. */
static size_t make_word(const struct words* w, const char* text, size_t length, char* word) {
    char bytes[5 * MOST_BYTES + 4];
    const size_t count = charset_text(w, text, length, bytes);
    size_t made = (size_t)snprintf(word, 48, "=?%.32s?%c?", w->charset, w->base64 ? 'B' : 'Q');
    made +=
        w->base64 ? encode_base64(bytes, count, word + made) : encode_q(bytes, count, word + made);
    word[made++] = '?';
    word[made++] = '=';
    return made;
}

static size_t character_length(const struct words* w, const char* text, size_t left) {
    size_t length = 1;
    if (w->encoding->code_set != NO_CODE_SET) {
        const int scanned = mblenExt(text, (unsigned)left, w->encoding->code_set);
        length = scanned < 1 ? 1 : (size_t)scanned;
    } else {
        while (length < left && ((unsigned char)text[length] & 0xC0) == 0x80)
            ++length;
    }
    return length < left ? length : left;
}

static bool is_padded(const char* word, size_t length) {
    return word[length - 3] == '=';
}

/* How much text fits into a word of so many columns: at least a character. Where the text goes on,
 * base64 ends without padding if it can. */
static size_t fitting(const struct words* w, const char* text, size_t length, size_t columns) {
    char word[2 * ENCODED_ROOM];
    size_t fits = 0, unpadded = 0;
    while (fits < length) {
        const size_t next = fits + character_length(w, text + fits, length - fits);
        if (next > MOST_BYTES)
            break;
        const size_t made = make_word(w, text, next, word);
        if (made > columns && fits > 0)
            break;
        fits = next;
        if (!is_padded(word, made))
            unpadded = fits;
        if (made > columns)
            break;
    }
    return fits < length && w->base64 && unpadded > 0 ? unpadded : fits;
}

/* Goes on in a new line, behind the space that stands in the text there or one that is none. */
static bool begin_line(struct words* w) {
    if (w->out->bytes[w->out->length - 1] == ' ')
        --w->out->length;
    w->column = 1;
    return buffer_add(w->out, "\n ", 2);
}

/* Writes text as words. Between two of them a line end and a space stand for nothing. Some readers
 * join base64 words before they decode them and stop at padding, so Q follows a padded one. */
static bool add_words(struct words* w, const char* text, size_t length) {
    char word[2 * ENCODED_ROOM];
    const bool base64 = w->base64;
    while (length > 0) {
        const size_t columns = w->column < LONGEST_LINE ? LONGEST_LINE - w->column : 0;
        size_t part = columns < 24 ? 0
                                   : fitting(w, text, length,
                                             columns < LONGEST_WORD ? columns : LONGEST_WORD);
        if (part == 0 || make_word(w, text, part, word) > columns) {
            if (!begin_line(w))
                return false;
            part = fitting(w, text, length, LONGEST_WORD);
        }
        const size_t made = make_word(w, text, part, word);
        if (!buffer_add(w->out, word, made))
            return false;
        w->column += made;
        text += part;
        length -= part;
        w->base64 = base64 && !(w->base64 && is_padded(word, made));
        if (length > 0 && !begin_line(w))
            return false;
    }
    return true;
}

/* Writes readable text; where a line would become too long, it goes on in front of a space. */
static bool add_plain(struct words* w, const char* text, size_t length) {
    while (length > 0) {
        size_t part = 1;
        while (part < length && text[part] != ' ')
            ++part;
        const bool folds =
            *text == ' ' && part > 1 && w->column > 1 && w->column + part > LONGEST_LINE;
        if ((folds && !buffer_add(w->out, "\n", 1)) || !buffer_add(w->out, text, part))
            return false;
        w->column = (folds ? 0 : w->column) + part;
        text += part;
        length -= part;
    }
    return true;
}

static bool is_readable(const char* text, size_t length) {
    for (size_t i = 0; i < length; ++i) {
        if (text[i] < ' ' || text[i] > '~' || (i + 1 < length && memcmp(text + i, "=?", 2) == 0))
            return false;
    }
    return true;
}

/* Finds what has to be coded: from the first to the last word that is not plain. Spaces that do not
 * stand alone between two words would be lost, so they are coded with the words on both sides. */
static void find_coded(const char* line, size_t length, size_t* begin, size_t* end) {
    size_t last = 0; /* where the word in front begins */
    bool takes_next = false;
    *begin = length;
    *end = 0;
    for (size_t at = 0; at <= length && length > 0;) {
        size_t stop = at;
        while (stop < length && line[stop] != ' ')
            ++stop;
        const bool empty = stop == at;
        if (empty || takes_next || stop - at >= LONGEST_LINE ||
            !is_readable(line + at, stop - at)) {
            const size_t first = empty ? last : at;
            *begin = first < *begin ? first : *begin;
            *end = stop;
        }
        takes_next = empty;
        last = empty ? last : at;
        at = stop + 1;
    }
}

static size_t q_length(const char* text, size_t length) {
    size_t count = 0;
    for (size_t i = 0; i < length; ++i)
        count += text[i] == ' ' || is_literal((unsigned char)text[i]) ? 1 : 3;
    return count;
}

bool write_standard_subject(const char* line, size_t length, const struct encoding* encoding,
                            struct buffer* out) {
    static const char kField[] = "Subject: ";
    struct words w = {.encoding = encoding, .charset = encoding->iconv, .out = out};
    w.column = sizeof kField - 1;
    size_t begin, end;
    find_coded(line, length, &begin, &end);
    w.base64 = true;
    if (encoding->code_set == ZV_EUC) {
        w.charset = "ISO-2022-JP";
    } else if (begin < end) {
        w.base64 = q_length(line + begin, end - begin) > (end - begin + 2) / 3 * 4;
    }
    if (!buffer_add(out, kField, sizeof kField - 1))
        return false;
    if (begin >= end)
        return add_plain(&w, line, length) && buffer_add(out, "\n", 1);
    return add_plain(&w, line, begin) && add_words(&w, line + begin, end - begin) &&
           add_plain(&w, line + end, length - end) && buffer_add(out, "\n", 1);
}
