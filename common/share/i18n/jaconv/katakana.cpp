#include "katakana.h"

#include "jaconv.h"
#include "mbutil.h"

namespace {

using zv::Byte;
using zv::in_range;

constexpr Byte kVoicedMark = 0xDE;
constexpr Byte kSemiVoicedMark = 0xDF;

// ka to to, ha to ho, and u, which takes the voiced mark only.
bool takes_voiced_mark(int half_width) {
    const unsigned c = static_cast<unsigned>(half_width);
    return in_range(c, 0xB6, 0xC4) || in_range(c, 0xCA, 0xCE) || c == 0xB3;
}

bool takes_semi_voiced_mark(int half_width) {
    return in_range(static_cast<unsigned>(half_width), 0xCA, 0xCE);
}

// What a mark adds to the trail byte of the syllable's full-width code; 0 where they do not join.
int mark_offset(int half_width, Byte mark) {
    constexpr int kFromUToVu = 0x94 - 0x45;
    if (mark == kVoicedMark && takes_voiced_mark(half_width))
        return half_width == 0xB3 ? kFromUToVu : 1;
    if (mark == kSemiVoicedMark && takes_semi_voiced_mark(half_width))
        return 2;
    return 0;
}

} // namespace

void han2zen(const unsigned char** text, int* first, int* second, int code_set) {
    const Byte* next = *text;
    const int half_width = *first;
    int offset = 0;
    const bool shifted = code_set == ZV_EUC && *next == 0x8E;
    if (code_set == ZV_SJIS || shifted) {
        const Byte mark = next[shifted ? 1 : 0];
        *second = mark;
        offset = mark_offset(half_width, mark);
        if (offset != 0)
            *text = next + (shifted ? 2 : 1);
    }
    if (half_width >= 0xA1 && half_width <= 0xDF) {
        const zv::BytePair wide = zv::widen_katakana(static_cast<Byte>(half_width));
        *first = wide.first;
        *second = wide.second + offset;
    }
}
