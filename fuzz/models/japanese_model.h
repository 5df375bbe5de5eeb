#ifndef ZVUTIL_FUZZ_JAPANESE_MODEL_H
#define ZVUTIL_FUZZ_JAPANESE_MODEL_H

#include <string>
#include <string_view>

#include "jaconv.h"
#include "mbutil.h"

namespace test {

struct Direction {
    const char* name;
    char* (*convert)(const char*, char*);
    int from, to;
    size_t growth, extra; // room: growth * length + extra
    int (*length)(const char*) = nullptr;
};
inline constexpr Direction kJapanese[] = {
    {"shift2eucx", shift2eucx, ZV_SJIS, ZV_EUC, 2, 1, eucLength},
    {"euc2shiftx", euc2shiftx, ZV_EUC, ZV_SJIS, 1, 1, shiftLength},
    {"shift2jisx", shift2jisx, ZV_SJIS, ZV_JIS, 5, 4},
    {"euc2jisx", euc2jisx, ZV_EUC, ZV_JIS, 3, 4},
    {"jis2shiftx", jis2shiftx, ZV_JIS, ZV_SJIS, 1, 1},
    {"jis2eucx", jis2eucx, ZV_JIS, ZV_EUC, 1, 1}};

inline bool between(int byte, int first, int last) {
    return byte >= first && byte <= last;
}
inline bool is_lead(int b) {
    return between(b, 0x81, 0x9F) || between(b, 0xE0, 0xEF);
}

// The rules of all six directions, a byte at a time and without a thought for speed.
inline std::string japanese_model(const Direction& d, std::string_view text) {
    std::string out;
    int two_byte = 0;
    const auto put = [&](int first, int second) { (out += char(first)) += char(second); };
    const auto mode = [&](int wanted) {
        if (d.to == ZV_JIS && two_byte != wanted)
            out += (two_byte = wanted) ? "\x1B$B" : "\x1B(J";
    };
    const auto put_jis = [&](int first, int second) {
        const int high = d.to == ZV_EUC ? 0x80 : 0;
        if (d.to == ZV_SJIS)
            jis2sjis(&first, &second);
        mode(1);
        put(first + high, second + high);
    };
    const auto put_katakana = [&](int b) {
        int second = 0;
        const unsigned char* nothing = nullptr;
        if (d.to == ZV_SJIS)
            return void(out += char(b));
        if (d.to == ZV_EUC)
            return put(0x8E, b);
        han2zen(&nothing, &b, &second, 1);
        sjis2jis(&b, &second);
        put_jis(b, second);
    };
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&](size_t at) { return at < text.size() ? text[at] & 0xFF : -1; };
        int b = byte(i), t = byte(i + 1);
        if (d.from == ZV_JIS && b == 0x1B) {
            if (t < 0 || ((t == '$' || t == '(') && byte(i + 2) < 0))
                break;
            two_byte = t == '$' || t == 'K';
            i += t == '$' || t == '(' ? 2 : 1;
        } else if (d.from == ZV_JIS && two_byte && b != '\n' && b != '\r' && t >= 0) {
            put_jis(b, t), ++i;
        } else if (d.from == ZV_JIS) {
            two_byte = 0;
            out += char(b);
        } else if (d.from == ZV_SJIS && is_lead(b) && t >= 0) {
            const bool valid = between(t, 0x40, 0xFC);
            if (valid)
                sjis2jis(&b, &t);
            valid ? put_jis(b, t) : put(b, t);
            ++i;
        } else if (d.from == ZV_SJIS && between(b, 0xA1, 0xDF)) {
            put_katakana(b);
        } else if (d.from == ZV_EUC && b == 0x8E && t >= 0) {
            between(t, 0xA1, 0xDF) ? put_katakana(t) : put(b, t);
            ++i;
        } else if (d.from == ZV_EUC && between(b, 0xA1, 0xFE) && t >= 0) {
            between(t, 0xA1, 0xFE) ? put_jis(b - 0x80, t - 0x80) : put(b, t);
            ++i;
        } else {
            mode(0);
            out += char(b);
        }
    }
    mode(0);
    return out;
}

} // namespace test

#endif
