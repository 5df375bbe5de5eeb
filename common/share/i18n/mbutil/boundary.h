#ifndef ZVUTIL_MBUTIL_BOUNDARY_H
#define ZVUTIL_MBUTIL_BOUNDARY_H

#include <algorithm>

#include "../jaconv/character_blocks.h"
#include "scanner_choice.h"

namespace zv {

// Where the run of regular lead bytes begins that ends at p, not before `first`.
template <class Scanner>
inline const Byte* run_of_leads(const Byte* first, const Byte* p) {
    using Leads = ByteClass<ByteRoles<Scanner>::is_lead>;
    constexpr size_t kBlocks = 4;
    while (static_cast<size_t>(p - first) >= kBlockSize) {
        const Mask leads = high_bits(Leads::marks(load_block(p - kBlockSize)));
        if (leads != kWholeBlock)
            return p - kBlockSize + std::bit_width(~leads & kWholeBlock);
        p -= kBlockSize;
        while (static_cast<size_t>(p - first) >= kBlocks * kBlockSize) {
            const Byte* const blocks = p - kBlocks * kBlockSize;
            auto marks = Leads::marks(load_block(blocks));
            for (size_t i = 1; i < kBlocks; ++i)
                marks &= Leads::marks(load_block(blocks + i * kBlockSize));
            if (high_bits(marks) != kWholeBlock)
                break;
            p = blocks;
        }
    }
    while (p != first && Leads::has(p[-1]))
        --p;
    return p;
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
        const int length = scan<Scanner>(lead, before + readable);
        if (length > static_cast<int>(before))
            return lead;
        run = lead + std::max(length, 1);
    }
    return p - (p - run) % 2;
}

// The last boundary not beyond p, where `first` is one. A byte that cannot be a trail byte begins a
// character. Any other does behind an even number of lead bytes, since these pair up.
template <class Scanner>
inline const Byte* last_boundary(const Byte* first, const Byte* p,
                                 size_t readable = Scanner::kLongest) {
    if (p == first || !ByteClass<ByteRoles<Scanner>::is_trail>::has(*p))
        return p;
    return boundary_in_run<Scanner>(first, run_of_leads<Scanner>(first, p), p, readable);
}

// The last boundary of a text that is not beyond n, a position in it.
inline size_t boundary_at(const char* s, size_t n, int code_set) {
    return with_scanner(code_set, [&](auto scanner) {
        const Byte* const text = as_bytes(s);
        return static_cast<size_t>(last_boundary<decltype(scanner)>(text, text + n) - text);
    });
}

// How many of the n bytes of a block, n at least 1, belong to whole characters: less than n when
// the block ends inside one. A malformed last byte counts as cut too, since a trail byte may
// follow.
inline size_t whole_characters(const char* block, size_t n, int code_set) {
    return with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* const text = as_bytes(block);
        const Byte* const last = last_boundary<Scanner>(text, text + n - 1, 1);
        const auto start = static_cast<size_t>(last - text);
        const size_t left = n - start;
        const int length = scan<Scanner>(last, left);
        return length < 0 || static_cast<size_t>(length) > left ? start : n;
    });
}

} // namespace zv

#endif
