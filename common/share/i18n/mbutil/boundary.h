#ifndef ZVUTIL_MBUTIL_BOUNDARY_H
#define ZVUTIL_MBUTIL_BOUNDARY_H

#include <algorithm>
#include <cstring>

#include "../jaconv/character_blocks.h"
#include "scanner_choice.h"

namespace zv {

// A boundary before `end`, from which a walk reaches the same boundaries as from the beginning: the
// last byte that cannot be a trail byte, if one is near, else the beginning.
template <class Scanner>
inline size_t boundary_before(const Byte* text, size_t end) {
    constexpr size_t kReach = 256;
    constexpr int kFirstOfOthers = std::min(Scanner::kLowestTrail, 0x80);
    const size_t stop = end > kReach ? end - kReach : 0;
    for (size_t at = end; at > stop; --at) {
        if (text[at - 1] < kFirstOfOthers)
            return at - 1;
    }
    return 0;
}

// A boundary that is not beyond `end`, and close before it where the characters are regular: where
// the last one begins if it may reach beyond, else `end`.
template <class Scanner>
inline size_t last_start(const Byte* text, size_t at, size_t end) {
    BlockWalk<Scanner> walk;
    for (; end - at >= kBlockSize; at += kBlockSize) {
        if (!walk.enter(load_block(text + at)))
            return at - walk.carried();
    }
    const size_t left = end - at;
    if (left == 0)
        return end - walk.carried();
    Byte tail[kBlockSize] = {};
    copy_short(tail, text + at, left);
    const Mask carried = walk.carried();
    if (!walk.enter(load_block(tail)))
        return at - carried;
    return end - (walk.leads() >> (left - 1) & 1);
}

// The last character boundary of s that is not beyond n: the length of s when n is beyond that.
inline size_t boundary_at(const char* s, size_t n, int code_set) {
    return with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* text = as_bytes(s);
        const size_t end = strnlen(s, n);
        size_t at = boundary_before<Scanner>(text, end);
        if constexpr (Scanner::kLongest > 1)
            at = last_start<Scanner>(text, at, end);
        size_t last_step = 0;
        while (at < end) {
            last_step = static_cast<size_t>(step<Scanner>(text + at));
            at += last_step;
        }
        return at > end ? at - last_step : at;
    });
}

// How many of the n bytes of a block, n at least 1, belong to whole characters: less than n when
// the block ends inside one. A malformed last byte counts as cut too, since a trail byte may
// follow.
inline size_t whole_characters(const char* block, size_t n, int code_set) {
    return with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* text = as_bytes(block);
        for (size_t at = 0; at < n;) {
            const size_t left = n - at;
            const int length = scan<Scanner>(text + at, left);
            if (length > 0 ? static_cast<size_t>(length) > left : length < 0 && left == 1)
                return at;
            at += length > 0 ? static_cast<size_t>(length) : 1;
        }
        return n;
    });
}

} // namespace zv

#endif
