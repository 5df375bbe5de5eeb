#include "jaconv.h"
#include "japanese_codes.h"
#include "japanese_kernels.h"
#include "kernel_choice.h"

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
        zv::shift_jis_from_jis({static_cast<Byte>(*first), static_cast<Byte>(*second)});
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
    size_t length = source.left();
    if (length >= INT_MAX)
        return INT_MAX; // it never shrinks
    // Only half-width katakana grow, by one byte.
    length += zv::widest(
        []<int Size> { return zv::JapaneseKernels<Size>::count_shift_jis_katakana; })(source);
    return zv::saturated(length);
}

int shiftLength(const char* s) {
    const zv::Source source(s);
    size_t length = source.left();
    if (length / 2 >= INT_MAX)
        return INT_MAX; // it shrinks by half at most
    // Only half-width katakana shrink, by one byte.
    length -=
        zv::widest([]<int Size> { return zv::JapaneseKernels<Size>::count_euc_katakana; })(source);
    return zv::saturated(length);
}

int bytesInEucChar(const char* s) {
    return s == nullptr ? 0 : zv::EucScanner::announced(static_cast<Byte>(*s));
}

int bytesInShiftChar(const char* s) {
    return s == nullptr ? 0 : ShiftJisScanner::announced(static_cast<Byte>(*s));
}
