#include "surveys.h"

#include <limits.h>
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
    LANES = 64, /* counters of one byte, which a processor holds in vectors */
    ESCAPE = 0x1B
};

WIDE size_t count_byte(const char* text, size_t length, char byte) {
    size_t count = 0;
    for (size_t rounds; length >= LANES; length -= rounds * LANES) {
        unsigned char lanes[LANES] = {0};
        rounds = length / LANES < UCHAR_MAX ? length / LANES : UCHAR_MAX;
        for (size_t round = 0; round < rounds; ++round, text += LANES) {
            for (size_t i = 0; i < LANES; ++i)
                lanes[i] = (unsigned char)(lanes[i] + (text[i] == byte));
        }
        for (size_t i = 0; i < LANES; ++i)
            count += lanes[i];
    }
    for (size_t i = 0; i < length; ++i)
        count += text[i] == byte;
    return count;
}

WIDE bool has_high_byte(const char* text, size_t length) {
    unsigned char all = 0;
    for (size_t i = 0; i < length; ++i)
        all |= (unsigned char)text[i];
    return all >= 0x80;
}

WIDE bool has_foreign_byte(const char* text, size_t length) {
    unsigned char least = UCHAR_MAX, most = 0;
    for (size_t i = 0; i < length; ++i) {
        const unsigned char byte = (unsigned char)text[i];
        const unsigned char flipped = byte ^ 0x80;
        least = flipped < least ? flipped : least;
        most = byte > most ? byte : most;
    }
    return least <= 0x20 || most == 0xFF;
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

WIDE bool has_unusual_jis(const char* text, size_t length) {
    unsigned char found = 0;
    size_t i = 0;
    for (; i + 2 < length; ++i) {
        const char a = text[i + 1], b = text[i + 2];
        const int plain =
            ((a == '$') & ((b | ('@' ^ 'B')) == 'B')) | ((a == '(') & ((b | ('B' ^ 'J')) == 'J'));
        found |= (unsigned char)(((text[i] == ESCAPE) & (plain == 0)) | (text[i] & 0x80));
    }
    for (; i < length; ++i)
        found |= (unsigned char)((text[i] == ESCAPE) | (text[i] & 0x80));
    return found != 0;
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
