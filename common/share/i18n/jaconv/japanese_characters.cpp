#include "jaconv.h"
#include "japanese_codes.h"
#include "scanners.h"

using zv::Byte;
using zv::ShiftJisScanner;

namespace {

void store(zv::Code code, int* first, int* second) {
    *first = static_cast<Byte>(code.first);
    *second = static_cast<Byte>(code.second);
}

} // namespace

void sjis2jis(int* first, int* second) {
    const zv::Code jis =
        zv::jis_from_shift_jis(static_cast<Byte>(*first), static_cast<Byte>(*second));
    store(jis, first, second);
}

void jis2sjis(int* first, int* second) {
    const zv::Code shift_jis =
        zv::shift_jis_from_jis(static_cast<Byte>(*first), static_cast<Byte>(*second));
    store(shift_jis, first, second);
}

int SkipESCSeq(const unsigned char** text, int c, int* two_byte) {
    if (zv::is_designation(c) && **text != 0)
        ++*text;
    const int mode = zv::mode_behind_escape(c) == zv::JisMode::two_byte;
    const int changed = mode != *two_byte;
    *two_byte = mode;
    return changed;
}

int eucLength(const char* s) {
    const zv::Source source(s);
    int length = 0;
    for (const Byte* p = source.next; p != source.end; ++p) {
        const bool pair = ShiftJisScanner::is_lead(*p) && p + 1 != source.end;
        length += pair || ShiftJisScanner::is_half_katakana(*p) ? 2 : 1;
        p += pair;
    }
    return length;
}

int shiftLength(const char* s) {
    const zv::Source source(s);
    int length = 0;
    for (const Byte* p = source.next; p != source.end; ++p) {
        const bool pair = (zv::is_gr(*p) || *p == zv::kSingleShift2) && p + 1 != source.end;
        const bool katakana =
            pair && *p == zv::kSingleShift2 && ShiftJisScanner::is_half_katakana(p[1]);
        length += pair && !katakana ? 2 : 1;
        p += pair;
    }
    return length;
}

int bytesInEucChar(const char* s) {
    return s == nullptr ? 0 : zv::EucScanner::announced(static_cast<Byte>(*s));
}

int bytesInShiftChar(const char* s) {
    return s == nullptr ? 0 : ShiftJisScanner::announced(static_cast<Byte>(*s));
}
