#ifndef ZVUTIL_MBUTIL_STRINGS_KERNELS_H
#define ZVUTIL_MBUTIL_STRINGS_KERNELS_H

#include <algorithm>

#include "../jaconv/character_blocks.h"

namespace zv {

// What a search looks for: single bytes, and bytes with another one behind them. It finds what it
// is, and perhaps more, for it holds the last single ones and the pairs as ranges.
struct Wanted {
    // Its first byte is 0 while it is empty: no text has one.
    struct Range {
        void add(Byte byte) {
            first = first == 0 ? byte : std::min(byte, first);
            last = std::max(byte, last);
        }
        Byte first = 0;
        Byte last = 0;
    };

    void add(const Byte* character, size_t length) {
        if (length == 1) {
            count = std::min(count + 1, std::size(singles));
            singles[count - 1].add(character[0]);
        } else {
            firsts.add(character[0]);
            seconds.add(character[1]);
        }
    }

    Range firsts;
    Range seconds;
    Range singles[3];
    size_t count = 0; // of these
};

// How far the bytes of a text are marked that begin characters, to a multiple of 64 or the end.
// `next` is this one or, behind the first byte of a character of two, the one behind it.
struct Marked {
    size_t end, next;
};

// The walks over texts, for vectors of a size.
template <int VectorSize>
struct StringKernels {
    // Marks what is wanted among so many bytes, one bit for each. False where nothing is.
    static bool find(const Byte* text, size_t size, const Wanted& wanted, std::uint64_t* found);

    // Marks which bytes begin characters, until some come that are not regular.
    template <PairRanges kPairs>
    static Marked mark_starts(const Byte* text, size_t size, Marked marked, std::uint64_t* starts);

    // Where the run of regular lead bytes begins that ends at p, not before `first`.
    template <ByteRanges kLeads>
    static const Byte* run_of_leads(const Byte* first, const Byte* p);

    // Steps over words of well-formed regular characters, so many bytes of which are there. Gives a
    // boundary.
    template <PairRanges kPairs>
    static const Byte* skip_well_formed(const Byte* p, size_t left);
};

using MarkStarts = Marked(const Byte* text, size_t size, Marked marked, std::uint64_t* starts);
using SkipWellFormed = const Byte*(const Byte* p, size_t left);

} // namespace zv

#endif
