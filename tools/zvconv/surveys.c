#include "surveys.h"

#include <string.h>

/* Compiled twice where that pays and the loader can choose: for all processors and for those with
   wide vectors. */
#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GNUC__) && !defined(__clang__) &&       \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define WIDE __attribute__((target_clones("avx2", "default")))
#else
#define WIDE
#endif

enum {
    SPAN = 224, /* whole vectors, and no more bytes than a counter of one byte can count */
    ESCAPE = 0x1B
};

WIDE size_t count_byte(const char* text, size_t length, char byte) {
    size_t count = 0;
    while (length > 0) {
        const size_t span = length < SPAN ? length : SPAN;
        unsigned char found = 0;
        for (size_t i = 0; i < span; ++i)
            found = (unsigned char)(found + (text[i] == byte));
        count += found;
        text += span;
        length -= span;
    }
    return count;
}

WIDE size_t count_line_ends(const char* text, size_t length) {
    size_t count = 0;
    while (length > 0) {
        const size_t span = length < SPAN ? length : SPAN;
        unsigned char found = 0;
        for (size_t i = 0; i < span; ++i)
            found = (unsigned char)(found + ((text[i] == '\n') | (text[i] == '\r')));
        count += found;
        text += span;
        length -= span;
    }
    return count;
}

WIDE bool has_high_byte(const char* text, size_t length) {
    unsigned char all = 0;
    for (size_t i = 0; i < length; ++i)
        all |= (unsigned char)text[i];
    return all >= 0x80;
}

WIDE bool has_foreign_byte(const char* text, size_t length, unsigned char single_shift) {
    const unsigned char allowed = single_shift != 0 ? single_shift : 'A';
    unsigned char found = 0;
    for (size_t i = 0; i < length; ++i) {
        const unsigned char byte = (unsigned char)text[i];
        const unsigned char outside = (unsigned char)(byte - 0x80) <= 0x20;
        found |= (unsigned char)((outside | (byte == 0xFF)) & (byte != allowed));
    }
    return found != 0;
}

WIDE bool is_plain_chinese(const char* text, size_t length, unsigned char single_shift,
                           size_t question_marks) {
    const unsigned char allowed = single_shift != 0 ? single_shift : 'A';
    unsigned char foreign = 0;
    size_t count = 0;
    while (length > 0) {
        const size_t span = length < SPAN ? length : SPAN;
        unsigned char found = 0;
        for (size_t i = 0; i < span; ++i) {
            const unsigned char byte = (unsigned char)text[i];
            const unsigned char outside = (unsigned char)(byte - 0x80) <= 0x20;
            foreign |= (unsigned char)((outside | (byte == 0xFF)) & (byte != allowed));
            found = (unsigned char)(found + (byte == '?'));
        }
        count += found;
        text += span;
        length -= span;
    }
    return foreign == 0 && count == question_marks;
}

/*
 * The arithmetic between the two moves every byte of a pair, but for the lead byte E0. So a byte
 * that stayed is the lead of a pair that is none; an E0 that stayed is one if ASCII follows it.
 */
WIDE bool has_unpaired_euc(const char* euc, const char* sjis, size_t length) {
    unsigned char found = 0;
    for (size_t i = 0; i + 1 < length; ++i) {
        const unsigned char byte = (unsigned char)euc[i];
        const unsigned char next = (unsigned char)euc[i + 1];
        const unsigned char stayed = (byte >= 0x80) & (euc[i] == sjis[i]);
        found |= (unsigned char)(stayed & ((byte != 0xE0) | (next < 0x80)));
    }
    return found != 0 ||
           (length > 0 && (euc[length - 1] & ~0x7F) != 0 && euc[length - 1] == sjis[length - 1]);
}

static bool is_plain_escape(const char* escape) {
    switch (escape[1]) {
    case '$':
        return escape[2] == 'B' || escape[2] == '@';
    case '(':
        return escape[2] == 'B' || escape[2] == 'J';
    default:
        return escape[1] == 'K' || escape[1] == 'H';
    }
}

WIDE bool has_strange_escape(const char* text, size_t length) {
    unsigned char found = 0;
    for (size_t i = 0; i + 2 < length; ++i) {
        const char a = text[i + 1], b = text[i + 2];
        const int plain = ((a == '$') & ((b == 'B') | (b == '@'))) |
                          ((a == '(') & ((b == 'B') | (b == 'J'))) | (a == 'K') | (a == 'H');
        found |= (unsigned char)((text[i] == ESCAPE) & (plain == 0));
    }
    if (found != 0)
        return true;
    for (size_t i = length > 2 ? length - 2 : 0; i < length; ++i) {
        char rest[3] = {text[i]};
        if (i + 1 < length)
            rest[1] = text[i + 1];
        if (rest[0] == ESCAPE && !is_plain_escape(rest))
            return true;
    }
    return false;
}

WIDE void blank_controls(const char* text, char* copy, size_t length) {
    for (size_t i = 0; i < length; ++i)
        copy[i] = (char)((unsigned char)text[i] < 0x20 ? ' ' : text[i]);
}

WIDE bool restore_controls(const char* iso, char* windows, size_t length) {
    unsigned char lost = 0;
    for (size_t i = 0; i < length; ++i) {
        const unsigned char byte = (unsigned char)iso[i];
        windows[i] = (char)(byte < 0x20 ? iso[i] : windows[i]);
        lost |= (unsigned char)((unsigned char)(byte - 0x80) < 0x20);
    }
    return lost == 0;
}

WIDE bool has_no_new_controls(const char* windows, const char* iso, size_t length) {
    unsigned char found = 0;
    for (size_t i = 0; i < length; ++i)
        found |= (unsigned char)(((unsigned char)windows[i] >= 0x80) &
                                 (((unsigned char)iso[i] & 0x60) == 0));
    return found == 0;
}
