#include "jaconv.h"
#include "japanese_codes.h"
#include "japanese_pairs.h"

using zv::Byte;
using zv::ShiftJisScanner;

namespace {

void store(zv::Code code, int* first, int* second) {
    *first = static_cast<Byte>(code.first);
    *second = static_cast<Byte>(code.second);
}

zv::SignedByteBlock could_be_katakana(zv::ByteBlock bytes) {
    return bytes - 0xA1 <= 0xDF - 0xA1;
}
zv::SignedByteBlock is_shift(zv::ByteBlock bytes) {
    return bytes == zv::kSingleShift2;
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
    zv::Source source(s);
    size_t length = source.left();
    if (length >= INT_MAX)
        return INT_MAX; // it never shrinks
    // Only half-width katakana grow, by one byte.
    zv::LeadWalk walk;
    for (; source.left() >= zv::kWindow; source.next += zv::kWindow) {
        walk.enter(zv::window_mask(source.next, zv::ShiftJisToEucBytes::could_lead));
        length += static_cast<size_t>(
            std::popcount(zv::window_mask(source.next, could_be_katakana) & ~walk.behind_leads()));
    }
    for (const Byte* p = source.next + walk.carried(); p < source.end; ++p) {
        length += ShiftJisScanner::is_half_katakana(*p);
        p += ShiftJisScanner::is_lead(*p);
    }
    return zv::saturated(length);
}

int shiftLength(const char* s) {
    zv::Source source(s);
    size_t length = source.left();
    if (length / 2 >= INT_MAX)
        return INT_MAX; // it shrinks by half at most
    // Only half-width katakana shrink, by one byte.
    zv::LeadWalk walk;
    for (; source.left() >= zv::kWindow; source.next += zv::kWindow) {
        const zv::LongMask shifts = zv::window_mask(source.next, is_shift);
        walk.enter(zv::window_mask(source.next, zv::EucToShiftJisBytes::could_lead) | shifts);
        // What stands behind the window may be looked at: the terminator at least.
        length -= static_cast<size_t>(std::popcount(
            zv::window_mask(source.next + 1, could_be_katakana) & walk.leads() & shifts));
    }
    for (const Byte* p = source.next + walk.carried(); p < source.end; ++p) {
        length -= *p == zv::kSingleShift2 && ShiftJisScanner::is_half_katakana(p[1]);
        p += zv::is_gr(*p) || *p == zv::kSingleShift2;
    }
    return zv::saturated(length);
}

int bytesInEucChar(const char* s) {
    return s == nullptr ? 0 : zv::EucScanner::announced(static_cast<Byte>(*s));
}

int bytesInShiftChar(const char* s) {
    return s == nullptr ? 0 : ShiftJisScanner::announced(static_cast<Byte>(*s));
}
