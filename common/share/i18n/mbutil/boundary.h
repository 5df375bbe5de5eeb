#ifndef ZVUTIL_MBUTIL_BOUNDARY_H
#define ZVUTIL_MBUTIL_BOUNDARY_H

#include <algorithm>

#include "../../../platform/processor.h"
#include "../jaconv/character_blocks.h"
#include "scanner_choice.h"
#include "strings_kernels.h"

namespace zv {

// Where the run of regular lead bytes begins that ends at p, not before `first`. Most are short.
template <ByteRanges kLeads>
[[gnu::noinline]] const Byte* run_before(const Byte* first, const Byte* p) {
    constexpr ptrdiff_t kNear = 128;
    const Byte* const near = p - first > kNear ? p - kNear : first;
    const Byte* const run = run_of_leads<kLeads>(near, p);
    if (run == first || run != near)
        return run;
    return vector_size() >= kWideVectors ? wide_run_of_leads<kLeads>(first, run)
                                         : run_of_leads<kLeads>(first, run);
}

// The last boundary not beyond p, a byte that could be a trail byte, where `first` is one and `run`
// the run of lead bytes in front of p. So many bytes may be looked at from p on: what is terminated
// ends that by itself.
template <class Scanner>
inline const Byte* boundary_in_run(const Byte* first, const Byte* run, const Byte* p,
                                   size_t readable = Scanner::kLongest) {
    using Irregular = ByteClass<ByteRoles<Scanner>::is_irregular>;
    if (run != first && Irregular::has(run[-1])) {
        const Byte* const lead = run - 1;
        const auto before = static_cast<size_t>(p - lead);
        const auto length =
            static_cast<size_t>(std::max(scan<Scanner>(lead, before + readable), 1));
        if (length > before)
            return lead;
        run = lead + length;
    }
    return p - (p - run) % 2;
}

// As last_boundary(), but out of line.
template <class Scanner>
[[gnu::noinline]] const Byte* boundary_behind_leads(const Byte* first, const Byte* p,
                                                    size_t readable) {
    return boundary_in_run<Scanner>(first, run_before<kPairsOf<Scanner>.leads>(first, p), p,
                                    readable);
}

// The last boundary not beyond p, where `first` is one. A byte that cannot be a trail byte begins a
// character. Any other does behind an even number of lead bytes, since these pair up.
template <class Scanner>
inline const Byte* last_boundary(const Byte* first, const Byte* p,
                                 size_t readable = Scanner::kLongest) {
    if (p == first || !ByteClass<ByteRoles<Scanner>::is_trail>::has(*p))
        return p;
    return boundary_behind_leads<Scanner>(first, p, readable);
}

// The same in a code set.
const Byte* last_boundary_in(const Byte* first, const Byte* p, int code_set);

// How many of the n bytes of a block, n at least 1, belong to whole characters: less than n when
// the block ends inside one. A malformed last byte counts as cut too, since a trail byte may
// follow.
size_t whole_characters(const char* block, size_t n, int code_set);

} // namespace zv

#endif
