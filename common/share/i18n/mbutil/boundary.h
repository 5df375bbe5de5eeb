#ifndef ZVUTIL_MBUTIL_BOUNDARY_H
#define ZVUTIL_MBUTIL_BOUNDARY_H

#include <cstring>

#include "scanner_choice.h"

namespace zv {

// The last character boundary of s that is not beyond n: the length of s when n is beyond that.
inline size_t boundary_at(const char* s, size_t n, int code_set) {
    return with_scanner(code_set, [&](auto scanner) {
        const Byte* text = as_bytes(s);
        const size_t end = strnlen(s, n);
        size_t at = 0;
        size_t last_step = 0;
        while (at < end) {
            last_step = static_cast<size_t>(step<decltype(scanner)>(text + at));
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
