#include "headers.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include "messages.h"

/* A charset that was met, opened for all that follows. The first is that of the plain parts. */
struct charset {
    char* name;
    bool known;
    struct pipeline pipeline;
    struct charset* next;
};

struct headers {
    const char* name;
    struct encoding to;
    struct wishes wishes;
    struct charset* plain;
    unsigned long unknown; /* words in charsets that nothing here knows */
    struct {
        unsigned long long line, offset;
    } next, begin;           /* of the input, and of the header at hand */
    bool open;               /* a header waits for lines that continue it */
    struct buffer header;    /* its lines, joined */
    struct buffer bytes;     /* of words that belong together */
    struct charset* charset; /* of these */
};

/* An encoded word. */
struct word {
    const char *charset, *text, *end; /* end: behind the whole word */
    size_t charset_length, text_length;
    bool base64;
};

static struct charset* add_charset(struct headers* h, const char* name,
                                   const struct encoding* encoding, bool goes_on) {
    struct charset* charset = calloc(1, sizeof *charset);
    if (charset == NULL || (charset->name = strdup(name)) == NULL) {
        free(charset);
        complain("no memory");
        return NULL;
    }
    struct encoding from;
    charset->known = encoding != NULL || know_encoding(charset->name, &from);
    if (encoding != NULL)
        from = *encoding;
    if (charset->known)
        charset->known =
            pipeline_open(&charset->pipeline, h->name, &from, &h->to, &h->wishes, goes_on);
    charset->pipeline.troubles.decoded = true;
    return charset;
}

static struct charset* find_charset(struct headers* h, const char* name, size_t length) {
    char copy[64];
    const char* language = memchr(name, '*', length);
    length = language != NULL ? (size_t)(language - name) : length;
    length = length < sizeof copy ? length : sizeof copy - 1;
    memcpy(copy, name, length);
    copy[length] = '\0';
    struct charset** next = &h->plain->next;
    while (*next != NULL && strcasecmp((*next)->name, copy) != 0)
        next = &(*next)->next;
    if (*next == NULL)
        *next = add_charset(h, copy, NULL, true);
    return *next;
}

struct headers* headers_open(const char* name, const struct encoding* from,
                             const struct encoding* to, const struct wishes* wishes, bool goes_on) {
    struct headers* h = calloc(1, sizeof *h);
    if (h == NULL) {
        complain("no memory");
        return NULL;
    }
    h->name = name;
    h->to = *to;
    h->wishes = *wishes;
    h->plain = add_charset(h, from->name, from, goes_on);
    if (h->plain != NULL && h->plain->known)
        return h;
    headers_close(h);
    return NULL;
}

void headers_close(struct headers* h) {
    while (h->plain != NULL) {
        struct charset* next = h->plain->next;
        if (h->plain->known)
            pipeline_close(&h->plain->pipeline);
        free(h->plain->name);
        free(h->plain);
        h->plain = next;
    }
    buffer_free(&h->header);
    buffer_free(&h->bytes);
    free(h);
}

/* Converts what belongs together, from its charset. */
static bool flush_bytes(struct headers* h, struct buffer* out) {
    if (h->bytes.length == 0)
        return true;
    struct pipeline* pipeline = &h->charset->pipeline;
    size_t used;
    if (!buffer_add(&h->bytes, "", 1))
        return false;
    pipeline->troubles.line = h->begin.line;
    pipeline->troubles.offset = h->begin.offset;
    pipeline->steps[0].library.shift = 0; /* every word begins in ASCII */
    troubles_enter(&pipeline->troubles, h->bytes.bytes);
    const bool good = pipeline_run(pipeline, h->bytes.bytes, h->bytes.length - 1, true, out, &used);
    h->bytes.length = 0;
    return good;
}

static bool add_bytes(struct headers* h, struct charset* charset, const char* bytes, size_t length,
                      struct buffer* out) {
    if (h->charset != charset && !flush_bytes(h, out))
        return false;
    h->charset = charset;
    return buffer_add(&h->bytes, bytes, length);
}

static const char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";

/* Reads an encoded word at "=?". */
static bool read_word(const char* text, size_t length, struct word* word) {
    const char* const end = text + length;
    word->charset = text + 2;
    const char* mark = memchr(word->charset, '?', (size_t)(end - word->charset));
    if (mark == NULL || end - mark < 5 || mark[2] != '?' || strchr("BbQq", mark[1]) == NULL)
        return false;
    word->charset_length = (size_t)(mark - word->charset);
    word->base64 = mark[1] == 'B' || mark[1] == 'b';
    word->text = mark + 3;
    const char* stop = word->text;
    while (stop + 1 < end && !(stop[0] == '?' && stop[1] == '=') && *stop != ' ' && *stop != '\t')
        ++stop;
    word->text_length = (size_t)(stop - word->text);
    word->end = stop + 2;
    return word->charset_length > 0 && stop + 1 < end && stop[0] == '?' && stop[1] == '=' &&
           memchr(word->charset, ' ', word->charset_length) == NULL &&
           (!word->base64 || strspn(word->text, kBase64) == word->text_length);
}

static int hex_value(char c) {
    static const char kDigits[] = "0123456789ABCDEFabcdef";
    const char* digit = c == '\0' ? NULL : strchr(kDigits, c);
    return digit == NULL ? -1 : (int)(digit - kDigits) - (digit - kDigits > 15 ? 6 : 0);
}

static size_t decode_q(const char* text, size_t length, char* out) {
    size_t made = 0;
    for (size_t i = 0; i < length; ++i) {
        const bool escape = text[i] == '=' && i + 2 < length;
        const int high = escape ? hex_value(text[i + 1]) : -1;
        const int low = escape ? hex_value(text[i + 2]) : -1;
        if (high >= 0 && low >= 0) {
            out[made++] = (char)(high << 4 | low);
            i += 2;
        } else {
            out[made++] = (char)(text[i] == '_' ? ' ' : text[i]);
        }
    }
    return made;
}

static size_t decode_base64(const char* text, size_t length, char* out) {
    unsigned long bits = 0;
    unsigned count = 0;
    size_t made = 0;
    for (size_t i = 0; i < length && text[i] != '='; ++i) {
        bits = bits << 6 | (unsigned long)(strchr(kBase64, text[i]) - kBase64);
        count += 6;
        if (count >= 8) {
            count -= 8;
            out[made++] = (char)(bits >> count & 0xFF);
        }
    }
    return made;
}

/* Adds the text of a word. */
static bool add_word(struct headers* h, struct charset* charset, const struct word* word,
                     struct buffer* out) {
    struct buffer decoded = {0};
    char* room = buffer_extend(&decoded, word->text_length + 1);
    if (room == NULL)
        return false;
    const size_t length = word->base64 ? decode_base64(word->text, word->text_length, room)
                                       : decode_q(word->text, word->text_length, room);
    const bool good = add_bytes(h, charset, room, length, out);
    buffer_free(&decoded);
    return good;
}

static bool is_blank(const char* text, const char* end) {
    while (text < end && (*text == ' ' || *text == '\t'))
        ++text;
    return text == end;
}

/* Decodes a whole header. White space between two words stands for nothing; a word in an unknown
 * charset is left among what is plain. */
static bool decode(struct headers* h, const char* text, size_t length, struct buffer* out) {
    const char* const end = text + length;
    const char* plain = text;
    bool behind_word = false;
    for (const char* at = text; at < end;) {
        struct word word;
        if (at + 1 >= end || at[0] != '=' || at[1] != '?' ||
            !read_word(at, (size_t)(end - at), &word)) {
            ++at;
            continue;
        }
        struct charset* charset = find_charset(h, word.charset, word.charset_length);
        if (charset == NULL)
            return false;
        if (!charset->known) {
            if (h->unknown++ == 0)
                complain_at(h->name, h->begin.line + 1, "unknown charset '%s'", charset->name);
            at = word.end;
            continue;
        }
        if (!(behind_word && is_blank(plain, at)) &&
            !add_bytes(h, h->plain, plain, (size_t)(at - plain), out))
            return false;
        if (!add_word(h, charset, &word, out))
            return false;
        behind_word = true;
        at = plain = word.end;
    }
    return add_bytes(h, h->plain, plain, (size_t)(end - plain), out);
}

static bool end_header(struct headers* h, bool ended, struct buffer* out) {
    if (!h->open)
        return true;
    h->open = false;
    size_t length = h->header.length;
    const bool has_cr = length > 0 && h->header.bytes[length - 1] == '\r';
    length -= has_cr;
    return decode(h, h->header.bytes, length, out) &&
           (!has_cr || add_bytes(h, h->plain, "\r", 1, out)) &&
           (!ended || add_bytes(h, h->plain, "\n", 1, out)) && flush_bytes(h, out);
}

bool headers_take(struct headers* h, const char* line, size_t length, struct buffer* out) {
    const bool continues = h->open && length > 0 && (*line == ' ' || *line == '\t');
    if (!continues) {
        if (!end_header(h, true, out))
            return false;
        h->begin = h->next;
        h->header.length = 0;
    } else if (h->header.length > 0 && h->header.bytes[h->header.length - 1] == '\r') {
        --h->header.length;
    }
    ++h->next.line;
    h->next.offset += length + 1;
    h->open = true;
    return buffer_add(&h->header, line, length);
}

bool headers_finish(struct headers* h, bool ended, struct buffer* out) {
    return end_header(h, ended, out);
}

bool headers_report(const struct headers* h) {
    bool good = h->unknown == 0 || h->wishes.policy != REFUSE;
    if (h->unknown > 0)
        note("%s: words in unknown charsets: %lu (left as they are)", h->name, h->unknown);
    for (const struct charset* charset = h->plain; charset != NULL; charset = charset->next)
        good = (!charset->known || troubles_report(&charset->pipeline.troubles)) && good;
    return good;
}
