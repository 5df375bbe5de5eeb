#ifndef ZVUTIL_MBUTIL_BOUNDARY_H
#define ZVUTIL_MBUTIL_BOUNDARY_H

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

} // namespace zv

#endif
