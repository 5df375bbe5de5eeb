#ifndef ZVUTIL_JACONV_SCANNERS_H
#define ZVUTIL_JACONV_SCANNERS_H

#include "bytes.h"

namespace zv {

// The byte rules of the multibyte code sets, one scanner a code set. A scanner tells
//   kLongest            the length of its longest character,
//   announced(lead)     the length that a first byte announces; 0 for NUL, -1 for no first byte,
//   continues(s, i)     whether byte i of the character at s, behind its first, is in range.
// No trail byte is NUL, so a scan of terminated text stops at the terminator by itself.

constexpr bool is_gr(unsigned byte) {
    return in_range(byte, 0xA1, 0xFE);
}

// What introduces a half-width katakana in Japanese EUC, and a plane in EUC-TW.
inline constexpr Byte kSingleShift2 = 0x8E;

// Text without multibyte characters.
struct SingleByteScanner {
    static constexpr int kLongest = 1;
    static constexpr int announced(Byte) { return 1; }
    static constexpr bool continues(const Byte*, int) { return true; }
};

struct EucScanner {
    static constexpr int kLongest = 3;
    static constexpr int announced(Byte lead) {
        if (lead < 0x80)
            return lead != 0;
        if (is_gr(lead) || lead == kSingleShift2)
            return 2;
        return lead == 0x8F ? 3 : -1;
    }
    static constexpr bool continues(const Byte* s, int i) {
        return s[0] == kSingleShift2 ? in_range(s[i], 0xA1, 0xDF) : is_gr(s[i]);
    }
};

struct ShiftJisScanner {
    static constexpr int kLongest = 2;
    static constexpr bool is_lead(unsigned byte) {
        return in_range(byte, 0x81, 0x9F) || in_range(byte, 0xE0, 0xEF);
    }
    static constexpr bool is_half_katakana(unsigned byte) { return in_range(byte, 0xA1, 0xDF); }
    static constexpr bool is_trail(unsigned byte) { return in_range(byte, 0x40, 0xFC); }
    static constexpr int announced(Byte lead) {
        if (lead < 0x80)
            return lead != 0;
        if (is_lead(lead))
            return 2;
        return is_half_katakana(lead) ? 1 : -1;
    }
    static constexpr bool continues(const Byte* s, int i) { return is_trail(s[i]); }
};

// GB 2312, simplified Chinese EUC and Korean EUC: two bytes of A1-FE.
struct GrPairScanner {
    static constexpr int kLongest = 2;
    static constexpr int announced(Byte lead) {
        if (lead < 0x80)
            return lead != 0;
        return is_gr(lead) ? 2 : -1;
    }
    static constexpr bool continues(const Byte* s, int i) { return is_gr(s[i]); }
};

struct Big5Scanner {
    static constexpr int kLongest = 2;
    static constexpr bool is_trail(unsigned byte) {
        return in_range(byte, 0x40, 0x7E) || is_gr(byte);
    }
    static constexpr int announced(Byte lead) { return GrPairScanner::announced(lead); }
    static constexpr bool continues(const Byte* s, int i) { return is_trail(s[i]); }
};

// EUC-TW; its two-byte characters may have the trail bytes of Big5.
struct EucTwScanner {
    static constexpr int kLongest = 4;
    static constexpr int announced(Byte lead) {
        return lead == kSingleShift2 ? 4 : GrPairScanner::announced(lead);
    }
    static constexpr bool continues(const Byte* s, int i) {
        if (s[0] != kSingleShift2)
            return Big5Scanner::is_trail(s[i]);
        return i == 1 ? in_range(s[1], 0xA2, 0xB0) : is_gr(s[i]);
    }
};

struct Ksc87Scanner {
    static constexpr int kLongest = 2;
    static constexpr int announced(Byte lead) {
        if (lead < 0x80)
            return lead != 0;
        return in_range(lead, 0x81, 0xFE) ? 2 : -1;
    }
    static constexpr bool continues(const Byte* s, int i) {
        return in_range(s[i], 0x41, 0x5A) || in_range(s[i], 0x61, 0x7A) ||
               in_range(s[i], 0x81, 0xFE);
    }
};

struct Ksc92Scanner {
    static constexpr int kLongest = 2;
    static constexpr int announced(Byte lead) {
        if (lead < 0x80)
            return lead != 0;
        const bool is_lead =
            in_range(lead, 0x84, 0xD3) || in_range(lead, 0xD8, 0xDE) || in_range(lead, 0xE0, 0xF9);
        return is_lead ? 2 : -1;
    }
    static constexpr bool continues(const Byte* s, int i) {
        return in_range(s[i], 0x41, 0x7E) || in_range(s[i], 0x81, 0xFE);
    }
};

// The length of the character at s, of which n bytes (at least 1) may be looked at: 0 for NUL, -1
// when malformed, above n for the valid beginning of a longer character.
template <class Scanner>
constexpr int scan(const Byte* s, size_t n) {
    const int length = Scanner::announced(s[0]);
    constexpr int kLongest = Scanner::kLongest;
    for (int i = 1; i < kLongest && i < length && static_cast<size_t>(i) < n; ++i) {
        if (!Scanner::continues(s, i))
            return -1;
    }
    return length;
}

// How far a walk through terminated text steps at s: never less than 1.
template <class Scanner>
constexpr int step(const Byte* s) {
    const int length = scan<Scanner>(s, Scanner::kLongest);
    return length > 0 ? length : 1;
}

} // namespace zv

#endif
