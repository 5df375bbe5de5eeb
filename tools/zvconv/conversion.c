#include "conversion.h"

#include <stddef.h>
#include <string.h>

#include "jaconv.h"
#include "mbutil.h"
#include "messages.h"

enum {
    BLOCK = 64 * 1024,
    SHIFT = 3 /* room in front of a block for ESC $ B */
};

/* The worst cases of convertStrExt() and of convertSubjectForMail(). */
static size_t converted_room(size_t length) {
    return 5 * length + 4;
}
static size_t subject_room(size_t length) {
    return 64 * length + 64;
}

static bool is_single_byte(int code_set) {
    return code_set != ZV_JIS && mbmaxcharlenExt(code_set) == 1;
}

/*
 * Layout stays outside the text that is converted: the way from ISO to Windows code pages gives the
 * low control codes another meaning, and a character cut at a line's end takes none with it.
 */
static bool is_layout(char c) {
    return c == '\n' || c == '\r' || c == '\0';
}

/* Counts a byte that is rare. */
static size_t count_byte(const char* text, size_t length, char byte) {
    const char* const end = text + length;
    size_t count = 0;
    while ((text = memchr(text, (unsigned char)byte, (size_t)(end - text))) != NULL) {
        ++count;
        ++text;
    }
    return count;
}

static bool is_well_formed(const struct conversion* c, const char* text, size_t length) {
    unsigned bad;
    if (c->from != ZV_JIS)
        return mbvalidatestring(text, &bad, c->from) == 1;
    unsigned char all = 0;
    for (size_t i = 0; i < length; ++i)
        all |= (unsigned char)text[i];
    return all < 0x80;
}

/* Counts the characters that have no counterpart in the other code set. */
static size_t count_lost(const struct conversion* c, const char* text, size_t length,
                         const char* result, size_t result_length) {
    if (c->from == ZV_EUC && c->to != ZV_EUC) /* the supplementary characters of three bytes */
        return count_byte(text, length, '\x8F');
    if (c->from == c->to || (c->from != ZV_BIG5 && c->from != ZV_EUC_H))
        return 0;
    /* They become two question marks, and no character of two bytes holds one. */
    const size_t before = count_byte(text, length, '?');
    const size_t after = count_byte(result, result_length, '?');
    return after > before ? (after - before + 1) / 2 : 0;
}

/* Converts text without a zero byte before its end, in front of which SHIFT bytes are free. */
static bool convert_text(struct conversion* c, char* text, size_t length) {
    if (c->two_byte) {
        text -= SHIFT;
        length += SHIFT;
        memcpy(text, "\x1B$B", SHIFT);
    }
    char* result = output_room(c->output, converted_room(length));
    if (result == NULL)
        return false;
    convertStrExt(text, c->from, result, c->to);
    const size_t result_length = strlen(result);
    c->lost += count_lost(c, text, length, result, result_length);
    output_add(result_length);
    return true;
}

static bool write_bytes(struct conversion* c, const char* bytes, size_t length) {
    char* room = output_room(c->output, length);
    if (room == NULL)
        return false;
    memcpy(room, bytes, length);
    output_add(length);
    return true;
}

/* Puts a byte back wherever the text has it. */
static void put_back(char byte, char* result, const char* text, size_t length) {
    const char* const end = text + length;
    for (const char* next = text; (next = memchr(next, byte, (size_t)(end - next))) != NULL; ++next)
        result[next - text] = byte;
}

static unsigned count_control_codes(const char* result, const char* text, size_t length) {
    unsigned count = 0;
    for (size_t i = 0; i < length; ++i)
        count += (unsigned char)(text[i] & ~result[i]) >> 7; /* was not ASCII and now is */
    return count;
}

/* Each byte becomes one byte, so layout and tabs can be put back where they were. */
static bool convert_single_bytes(struct conversion* c, const char* text, size_t length) {
    char* result = output_room(c->output, length + 1);
    if (result == NULL)
        return false;
    for (size_t i = 0; i < length; ++i) { /* a zero byte ends what is converted at once */
        convertStrExt(text + i, c->from, result + i, c->to);
        i += strlen(text + i);
    }
    put_back('\n', result, text, length);
    put_back('\r', result, text, length);
    put_back('\t', result, text, length);
    if (c->from == ZV_CP1250 || c->from == ZV_CP1251)
        c->control_codes += count_control_codes(result, text, length);
    output_add(length);
    return true;
}

/* Writes a line, whose end has been cut off, as a subject. */
static bool write_subject(struct conversion* c, char* line, size_t length) {
    ++c->line;
    if (length > 0 && line[length - 1] == '\r')
        line[--length] = '\0';
    if (strlen(line) != length)
        return complain("%s:%lu: a zero byte in a subject", c->name, c->line);
    c->malformed += !is_well_formed(c, line, length);
    int code_set = c->from;
    if (code_set == ZV_JIS) { /* its characters show only in the light of the escape sequences */
        static char native[2 * BLOCK + 1];
        line = convertStrExt(line, ZV_JIS, native, ZV_EUC);
        code_set = ZV_EUC;
    }
    if (!write_bytes(c, "Subject: ", 9))
        return false;
    char* subject = output_room(c->output, subject_room(length));
    if (subject == NULL)
        return false;
    convertSubjectForMail(subject, line, mbGetCodeSetForMail(c->to), code_set);
    output_add(strlen(subject));
    return write_bytes(c, "\n", 1);
}

/* How much of a block without layout may be converted by itself, and the shift state there. */
static size_t whole_characters(const struct conversion* c, const char* block, size_t length,
                               int* two_byte) {
    const size_t limit = length - 4; /* leaves room for a character or an escape sequence */
    if (c->from != ZV_JIS)
        return mbidx(block, (unsigned)limit);
    const unsigned char* const text = (const unsigned char*)block;
    const unsigned char* p = text;
    while (p < text + limit) {
        const unsigned char byte = *p++;
        if (byte == 0x1B) {
            const int next = *p++;
            SkipESCSeq(&p, next, two_byte);
        } else if (*two_byte) {
            ++p;
        }
    }
    return (size_t)(p - text);
}

/* Converts the front of a block that holds one long piece of a line. Gives its length, 0 when that
 * failed. */
static size_t convert_front(struct conversion* c, char* block, size_t length) {
    if (c->subjects) {
        complain("%s:%lu: the line is too long for a subject", c->name, c->line + 1);
        return 0;
    }
    int two_byte = c->two_byte;
    const size_t used = whole_characters(c, block, length, &two_byte);
    const char kept = block[used];
    block[used] = '\0';
    c->malformed += !is_well_formed(c, block, used);
    const bool good = convert_text(c, block, used);
    block[used] = kept;
    c->two_byte = two_byte;
    return good ? used : 0;
}

/* Converts the pieces of a block one by one; layout ends each. */
static bool convert_pieces(struct conversion* c, char* block, size_t length) {
    size_t begin = 0;
    for (size_t end = 0; end < length; ++end) {
        const char layout = block[end];
        if (!is_layout(layout))
            continue;
        block[end] = '\0';
        if (end > begin) {
            c->malformed += !is_well_formed(c, block + begin, end - begin);
            if (!convert_text(c, block + begin, end - begin))
                return false;
        }
        if (!write_bytes(c, &layout, 1))
            return false;
        c->two_byte = 0;
        begin = end + 1;
    }
    return true;
}

static bool write_subjects(struct conversion* c, char* block, size_t length) {
    char* line = block;
    while (line < block + length) {
        char* end = memchr(line, '\n', (size_t)(block + length - line));
        *end = '\0';
        if (!write_subject(c, line, (size_t)(end - line)))
            return false;
        line = end + 1;
    }
    return true;
}

/* Converts the part of a block that whole lines are. */
static bool convert_lines(struct conversion* c, char* block, size_t length) {
    if (c->subjects)
        return write_subjects(c, block, length);
    /* In well-formed text no character reaches over the end of a line. JIS does not tell. */
    const char kept = block[length];
    block[length] = '\0';
    const bool at_once =
        c->from != ZV_JIS && strlen(block) == length && is_well_formed(c, block, length);
    const bool good = at_once ? convert_text(c, block, length) : convert_pieces(c, block, length);
    block[length] = kept;
    return good;
}

/* The length of the whole lines in a block, whose first bytes are known to hold no line end. */
static size_t whole_lines(const struct conversion* c, const char* block, size_t known,
                          size_t length) {
    while (length > known) {
        const char last = block[length - 1];
        if (c->subjects ? last == '\n' : is_layout(last))
            return length;
        --length;
    }
    return 0;
}

static bool convert_rest(struct conversion* c, char* block, size_t length) {
    if (length == 0)
        return true;
    if (c->subjects)
        return write_subject(c, block, length);
    c->malformed += !is_well_formed(c, block, length);
    return convert_text(c, block, length);
}

bool convert(struct conversion* c, struct input* input, struct output* output) {
    static char room[SHIFT + BLOCK + 1];
    char* const block = room + SHIFT;
    const bool single_byte = !c->subjects && is_single_byte(c->from);
    size_t filled = 0;
    long got;
    c->name = input->name;
    c->output = output;
    /* The current code set is that of the text at hand. */
    InitMbutilExt(c->subjects && c->from == ZV_JIS ? ZV_EUC : c->from);
    while ((got = input_read(input, block + filled, BLOCK - filled)) > 0) {
        const size_t known = filled;
        filled += (size_t)got;
        block[filled] = '\0';
        size_t used = single_byte ? filled : whole_lines(c, block, known, filled);
        bool good = true;
        if (single_byte)
            good = convert_single_bytes(c, block, filled);
        else if (used > 0)
            good = convert_lines(c, block, used);
        else if (filled == BLOCK)
            good = (used = convert_front(c, block, filled)) > 0;
        if (!good || !output_flush(output))
            return false;
        filled -= used;
        memmove(block, block + used, filled + 1);
    }
    return got == 0 && convert_rest(c, block, filled);
}
