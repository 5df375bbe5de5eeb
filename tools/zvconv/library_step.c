#include "library_step.h"

#include <string.h>

#include "jaconv.h"
#include "mbutil.h"
#include "surveys.h"

/* Shift states of JIS text. */
enum { SINGLE_BYTE = 0, TWO_BYTE = 1, FOREIGN_TWO_BYTE, FOREIGN_SINGLE_BYTE };

enum {
    PORTION = 16 * 1024, /* whose looks at text and result find both in the nearest cache */
    ESCAPE = 0x1B,
    PLAIN = TROUBLES
};

/* The worst case of convertStrExt(). */
static size_t converted_room(size_t length) {
    return 5 * length + 4;
}

/* No character reaches over one of these. */
static bool is_layout(char c) {
    return c == '\n' || c == '\r' || c == '\0';
}

static bool in_range(char byte, int first, int last) {
    return (unsigned char)byte >= first && (unsigned char)byte <= last;
}

static bool is_code_page(int code_set) {
    return code_set != ZV_JIS && mbmaxcharlenExt(code_set) == 1;
}

static bool ends_plain(const char* text, size_t length, int* shift);

/* Whether JIS text consists of what its EUC form shows to have been characters: a control byte in
 * a character became one of 80-9F. If so, the shift state becomes that behind it. */
static bool is_plain_jis(struct library_step* s, const char* text, size_t length, const char* euc,
                         size_t euc_length) {
    int shift = SINGLE_BYTE;
    if (has_unusual_jis(text, length) || has_foreign_byte(euc, euc_length) ||
        !ends_plain(text, length, &shift))
        return false;
    s->shift = shift;
    return true;
}

static bool is_well_formed(const struct library_step* s, const char* text) {
    unsigned bad;
    return mbvalidatestring(text, &bad, s->from) == 1;
}

/* Copies EUC text without its single shifts, so that each byte stands where its Shift-JIS form has
 * it, and a blank for each half-width katakana, which does not change. False without memory. */
static bool align_euc(struct buffer* aligned, const char* text, size_t length) {
    const char* const end = text + length;
    aligned->length = 0;
    char* out = buffer_extend(aligned, length);
    if (out == NULL)
        return false;
    while (text < end) {
        const char* shift = memchr(text, 0x8E, (size_t)(end - text));
        const size_t stretch = (size_t)((shift != NULL ? shift : end) - text);
        memcpy(out, text, stretch);
        out += stretch;
        text += stretch;
        for (; text + 1 < end && (unsigned char)*text == 0x8E; text += 2)
            *out++ = ' ';
        if (text + 1 == end && (unsigned char)*text == 0x8E)
            ++text;
    }
    aligned->length = (size_t)(out - aligned->bytes);
    return true;
}

/* A single shift that introduces no katakana stays in the result, which is longer then. */
static bool is_plain_euc(struct library_step* s, const char* text, size_t length,
                         const char* result, size_t result_length) {
    if (has_foreign_byte(text, length)) { /* the single shift, perhaps */
        if (!align_euc(&s->scratch, text, length))
            return false;
        text = s->scratch.bytes;
        length = s->scratch.length;
        if (has_foreign_byte(text, length))
            return false;
    }
    return length == result_length && !has_unpaired_euc(text, result, length);
}

/* Whether EUC text does not end within a pair. */
static bool ends_paired(const char* euc, size_t length) {
    size_t high = 0;
    while (high < length && in_range(euc[length - 1 - high], 0x80, 0xFF))
        ++high;
    return high % 2 == 0;
}

/* What is no character stays what it is, which Big5 shows, and at the end EUC-TW. What has no
 * counterpart becomes ??, but a character of four bytes may have held as many. */
static bool is_plain_chinese(const struct library_step* s, const char* text, size_t length,
                             const char* result, size_t result_length) {
    const bool from_big5 = s->from == ZV_BIG5;
    if (from_big5 ? has_foreign_byte(text, length) || !ends_paired(result, result_length)
                  : has_foreign_byte(result, result_length) || !ends_paired(text, length))
        return false;
    return memchr(result, '?', result_length) == NULL ||
           (memchr(text, 0x8E, length) == NULL &&
            count_byte(text, length, '?') == count_byte(result, result_length, '?'));
}

/* Whether a text was plain; JIS text goes by what EUC shows of it. */
static bool is_plain(struct library_step* s, const char* text, size_t length, const char* result,
                     size_t result_length) {
    if (s->from == ZV_JIS)
        return is_plain_jis(s, text, length, result, result_length);
    if (s->from == s->to)
        return is_well_formed(s, text);
    if (s->to == ZV_JIS) /* only bytes that are no characters stay above 7F */
        return !has_high_byte(result, result_length);
    if (s->from == ZV_EUC)
        return is_plain_euc(s, text, length, result, result_length);
    if (s->from == ZV_BIG5 || s->from == ZV_EUC_H)
        return is_plain_chinese(s, text, length, result, result_length);
    return is_well_formed(s, text);
}

/* Converts terminated text in single-byte mode. *plain tells whether all of it could be; else
 * nothing is added. */
static bool convert_at_once(struct library_step* s, const char* text, size_t length,
                            struct buffer* out, bool* plain) {
    /* EUC shows what was no character of JIS. It and Shift-JIS that is made of it are as long. */
    const bool by_euc = s->from == ZV_JIS && s->to != ZV_EUC;
    char* const result = buffer_extend(out, converted_room(length));
    s->scratch.length = 0;
    char* const shown = by_euc ? buffer_extend(&s->scratch, length + 1) : result;
    if (result == NULL || shown == NULL)
        return false;
    convertStrExt(text, s->from, shown, by_euc ? ZV_EUC : s->to);
    const size_t shown_length = strlen(shown);
    *plain = is_plain(s, text, length, shown, shown_length);
    if (!*plain)
        return true;
    if (s->from == s->to)
        return buffer_add(out, text, length);
    if (by_euc)
        euc2shiftx(shown, result);
    out->length += shown_length;
    return true;
}

/* Converts a stretch of good characters, from the shift state that it begins in. */
static bool convert_stretch(struct library_step* s, const char* text, size_t length, int shift,
                            struct buffer* out) {
    if (length == 0 || s->from == s->to)
        return buffer_add(out, text, length);
    struct buffer* copy = &s->scratch;
    copy->length = 0;
    if ((shift == TWO_BYTE && !buffer_add(copy, "\x1B$B", 3)) || !buffer_add(copy, text, length) ||
        !buffer_add(copy, "", 1))
        return false;
    char* result = buffer_extend(out, converted_room(copy->length));
    if (result == NULL)
        return false;
    convertStrExt(copy->bytes, s->from, result, s->to);
    out->length += strlen(result);
    return true;
}

static bool replace(const struct library_step* s, int trouble, const char* text, size_t length,
                    struct buffer* out) {
    if (s->stands_in)
        return buffer_add(out, (const char[]){(char)STAND_IN}, 1);
    switch (s->troubles->policy) {
    case SKIP:
        return true;
    case SUBSTITUTE:
        return buffer_add(out, s->substitute.bytes, s->substitute.length);
    default:
        return trouble == MALFORMED && s->passes_malformed
                   ? buffer_add(out, text, length)
                   : buffer_add(out, "\?\?", length > 1 && trouble == LOST ? 2 : 1);
    }
}

/* An escape sequence and the state behind it. */
static int look_at_escape(const char* text, size_t left, size_t* length, int* shift) {
    const int a = left > 1 ? text[1] : '\0';
    const int b = left > 2 ? text[2] : '\0';
    *length = left < 3 ? left : 3;
    if (a == '$' && (b == 'B' || b == '@')) {
        *shift = TWO_BYTE;
        return PLAIN;
    }
    if (a == '(' && (b == 'B' || b == 'J')) {
        *shift = SINGLE_BYTE;
        return PLAIN;
    }
    if (a == 'K' || a == 'H') {
        *length = 2;
        *shift = a == 'K' ? TWO_BYTE : SINGLE_BYTE;
        return PLAIN;
    }
    if (a == '$') {
        *shift = FOREIGN_TWO_BYTE;
        *length += b >= '(' && b <= '/' && left > 3;
    } else if (a == '(') {
        *shift = FOREIGN_SINGLE_BYTE;
    } else if (a != '&') {
        *length = 1;
    }
    return MALFORMED;
}

static int look_at_jis(const char* text, size_t left, size_t* length, int* shift) {
    if (*text == ESCAPE)
        return look_at_escape(text, left, length, shift);
    *length = 1;
    const bool graphic = in_range(*text, 0x21, 0x7E);
    switch (*shift) {
    case TWO_BYTE:
        if (!graphic || left < 2 || !in_range(text[1], 0x21, 0x7E))
            return MALFORMED;
        *length = 2;
        return PLAIN;
    case FOREIGN_TWO_BYTE:
        *length = graphic && left > 1 ? 2 : 1;
        return MALFORMED;
    case FOREIGN_SINGLE_BYTE:
        return graphic ? MALFORMED : PLAIN;
    default:
        return in_range(*text, 0x80, 0xFF) ? MALFORMED : PLAIN;
    }
}

/* Tells what the character at the front of a text without layout is, and how long. */
static int look_at(const struct library_step* s, const char* text, size_t left, size_t* length,
                   int* shift) {
    if (s->from == ZV_JIS)
        return look_at_jis(text, left, length, shift);
    /* Plane 1 may be written in four bytes too. */
    const bool long_plane_1 = s->from == ZV_EUC_H && left > 3 && in_range(text[0], 0x8E, 0x8E) &&
                              in_range(text[1], 0xA1, 0xA1) && in_range(text[2], 0xA1, 0xFE) &&
                              in_range(text[3], 0xA1, 0xFE);
    const int scanned = long_plane_1 ? 4 : mblenExt(text, (unsigned)left, s->from);
    *length = scanned < 1 ? 1 : (size_t)scanned < left ? (size_t)scanned : left;
    if (scanned < 1 || (size_t)scanned > left)
        return MALFORMED;
    if (s->from == s->to || scanned == 1)
        return PLAIN;
    if (s->from == ZV_EUC)
        return scanned == 3 ? LOST : PLAIN;
    char character[5] = "", result[16];
    memcpy(character, text, (size_t)scanned);
    return convertStrExt(character, s->from, result, s->to)[0] == '?' ? LOST : PLAIN;
}

/* Converts a piece of a line character by character. */
static bool convert_carefully(struct library_step* s, const char* text, size_t length,
                              struct buffer* out) {
    const char* const end = text + length;
    const char* stretch = text;
    int shift = s->shift;
    while (text < end) {
        size_t step;
        const int found = look_at(s, text, (size_t)(end - text), &step, &shift);
        if (found != PLAIN) {
            if (!convert_stretch(s, stretch, (size_t)(text - stretch), s->shift, out))
                return false;
            troubles_meet(s->troubles, found == LOST ? LOST : MALFORMED, text, step);
            if (!replace(s, found, text, step, out))
                return false;
            s->shift = shift;
            stretch = text + step;
        }
        text += step;
    }
    const bool good = convert_stretch(s, stretch, (size_t)(end - stretch), s->shift, out);
    s->shift = shift;
    return good;
}

/* Converts the pieces of a text between layout one by one, so that a fault in one of them spoils no
 * other. */
static bool convert_pieces(struct library_step* s, char* text, size_t length, struct buffer* out) {
    char* const end = text + length;
    while (text < end) {
        char* stop = text;
        while (stop < end && !is_layout(*stop))
            ++stop;
        const size_t piece = (size_t)(stop - text);
        const char layout = *stop;
        bool plain = piece == 0;
        *stop = '\0';
        const bool good =
            (plain || s->shift != SINGLE_BYTE || convert_at_once(s, text, piece, out, &plain)) &&
            (plain || convert_carefully(s, text, piece, out));
        *stop = layout;
        if (!good || (stop < end && !buffer_add(out, stop, 1)))
            return false;
        if (stop < end)
            s->shift = SINGLE_BYTE;
        text = stop + 1;
    }
    return true;
}

/* Whether the line that the end cuts short consists of characters; the shift state behind it. */
static bool ends_plain(const char* text, size_t length, int* shift) {
    const char* const end = text + length;
    const char* line = end;
    bool plain = true;
    while (line > text && !is_layout(line[-1]))
        --line;
    for (size_t step; line < end; line += step)
        plain = look_at_jis(line, (size_t)(end - line), &step, shift) == PLAIN && plain;
    return plain;
}

static bool convert_multibyte(struct library_step* s, char* text, size_t length,
                              struct buffer* out) {
    bool plain = false;
    if (s->shift == SINGLE_BYTE && memchr(text, '\0', length) == NULL &&
        !convert_at_once(s, text, length, out, &plain))
        return false;
    return plain || convert_pieces(s, text, length, out);
}

/* What ends lines and columns stays what it is even where control codes stand for characters. */
static bool keeps_its_place(char byte) {
    return byte == '\n' || byte == '\r' || byte == '\t';
}

static bool reads_iso(const struct library_step* s) {
    return s->from == ZV_8859_5 || s->from == ZV_8859_2;
}

/* Whether ISO 8859 lacks a character of the Windows code page: it becomes a control code. */
static bool becomes_control(const struct library_step* s, char byte, char result) {
    return !reads_iso(s) && in_range(byte, 0x80, 0xFF) && ((unsigned char)result & 0x60) == 0;
}

/* Such a character, or a control code that the Windows code page lacks. */
static bool is_lost_byte(const struct library_step* s, char byte, char result) {
    if (s->windows_controls)
        return in_range(byte, 0x80, 0xFF) && keeps_its_place(result);
    return reads_iso(s) ? in_range(byte, 0x80, 0x9F) : becomes_control(s, byte, result);
}

/* Writes converted bytes without those that were lost. */
static bool replace_lost_bytes(struct library_step* s, const char* text, size_t length,
                               struct buffer* out) {
    struct buffer* converted = &s->scratch;
    converted->length = 0;
    if (!buffer_add(converted, out->bytes + out->length, length))
        return false;
    size_t kept = 0;
    for (size_t i = 0; i < length; ++i) {
        if (!is_lost_byte(s, text[i], converted->bytes[i]))
            continue;
        troubles_meet(s->troubles, LOST, text + i, 1);
        if (!buffer_add(out, converted->bytes + kept, i - kept) ||
            !replace(s, LOST, text + i, 1, out))
            return false;
        kept = i + 1;
    }
    return buffer_add(out, converted->bytes + kept, length - kept);
}

/* Puts layout back, and counts what became control codes. Whether nothing became layout. */
static bool keep_windows_controls(struct library_step* s, const char* text, char* result,
                                  size_t length) {
    bool plain = true;
    for (size_t i = 0; i < length; ++i) {
        if (keeps_its_place(text[i]))
            result[i] = text[i];
        plain = plain && !is_lost_byte(s, text[i], result[i]);
        s->troubles->control_codes +=
            becomes_control(s, text[i], result[i]) && !keeps_its_place(result[i]);
    }
    return plain;
}

/* Converts bytes of which the library takes control codes for others: by themselves, without. */
static bool convert_without_controls(struct library_step* s, const char* text, size_t length,
                                     char* result) {
    struct buffer* blanked = &s->scratch;
    blanked->length = 0;
    if (buffer_extend(blanked, length + 1) == NULL)
        return false;
    blank_controls(text, blanked->bytes, length);
    blanked->bytes[length] = '\0';
    convertStrExt(blanked->bytes, s->from, result, s->to);
    return true;
}

static bool convert_code_page(struct library_step* s, const char* text, size_t length,
                              struct buffer* out) {
    if (s->from == s->to)
        return buffer_add(out, text, length);
    char* result = buffer_extend(out, length + 1);
    if (result == NULL)
        return false;
    bool plain;
    if (reads_iso(s) && !s->windows_controls) {
        if (!convert_without_controls(s, text, length, result))
            return false;
        plain = restore_controls(text, result, length);
    } else {
        for (size_t i = 0; i < length; ++i) { /* a zero byte ends what is converted at once */
            convertStrExt(text + i, s->from, result + i, s->to);
            i += strlen(text + i);
        }
        plain = s->windows_controls ? keep_windows_controls(s, text, result, length)
                                    : has_no_new_controls(text, result, length);
    }
    if (!plain)
        return replace_lost_bytes(s, text, length, out);
    out->length += length;
    return true;
}

bool library_step_run(struct library_step* s, char* text, size_t length, struct buffer* out) {
    const bool by_bytes = is_code_page(s->from);
    bool good = true;
    while (good && length > 0) {
        const char* line_end =
            length > PORTION ? memchr(text + PORTION, '\n', length - PORTION) : NULL;
        const size_t portion = line_end != NULL ? (size_t)(line_end - text) + 1 : length;
        const char kept = text[portion];
        text[portion] = '\0';
        good = by_bytes ? convert_code_page(s, text, portion, out)
                        : convert_multibyte(s, text, portion, out);
        text[portion] = kept;
        text += portion;
        length -= portion;
    }
    return good;
}

size_t library_step_front(const struct library_step* s, const char* text, size_t length) {
    const size_t limit = length - 4; /* leaves room for a character or an escape sequence */
    if (is_code_page(s->from))
        return length;
    int shift = s->shift;
    size_t front = 0;
    while (front < limit)
        front += library_step_character(s, text + front, length - front, &shift);
    return front;
}

size_t library_step_character(const struct library_step* s, const char* text, size_t length,
                              int* shift) {
    size_t step;
    look_at(s, text, length, &step, shift);
    return step;
}
