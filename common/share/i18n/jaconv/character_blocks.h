#ifndef ZVUTIL_JACONV_CHARACTER_BLOCKS_H
#define ZVUTIL_JACONV_CHARACTER_BLOCKS_H

#include <array>

#include "kernels.h"
#include "scanners.h"

namespace zv {

// What a multibyte scanner says of single bytes, of which the block rules below are made. Its
// regular characters are one byte, or two of which the second is in the same range for all leads.
template <class Scanner>
struct ByteRoles {
    using Set = std::array<bool, 256>;

    static constexpr Set trails_of(unsigned lead) {
        Set trails{};
        for (unsigned trail = 0; trail < 256 && lead != 0; ++trail) {
            const Byte pair[] = {static_cast<Byte>(lead), static_cast<Byte>(trail)};
            trails[trail] = Scanner::continues(pair, 1);
        }
        return trails;
    }
    // 0 where there is none.
    static constexpr unsigned find_last_lead() {
        unsigned lead = 0xFF;
        while (lead != 0 && Scanner::announced(static_cast<Byte>(lead)) != 2)
            --lead;
        return lead;
    }
    static constexpr Set kTrails = trails_of(find_last_lead());
    static constexpr Set find_leads() {
        Set leads{};
        for (unsigned byte = 0; byte < 256; ++byte)
            leads[byte] =
                Scanner::announced(static_cast<Byte>(byte)) == 2 && trails_of(byte) == kTrails;
        return leads;
    }
    static constexpr Set kLeads = find_leads();

    static constexpr bool is_single(Byte byte) { return Scanner::announced(byte) == 1; }
    static constexpr bool is_lead(Byte byte) { return kLeads[byte]; }
    static constexpr bool is_trail(Byte byte) { return kTrails[byte]; }
    static constexpr bool is_regular(Byte byte) { return is_single(byte) || is_lead(byte); }
    static constexpr bool is_irregular(Byte byte) {
        return Scanner::announced(byte) > 1 && !is_lead(byte);
    }

    // What finding boundaries rests on: a run of lead bytes splits into pairs since each could be a
    // trail byte too, and irregular characters begin with bytes that could not.
    static constexpr bool allow_parity() {
        for (unsigned byte = 0; byte < 256; ++byte) {
            if (is_lead(static_cast<Byte>(byte))
                    ? !kTrails[byte]
                    : is_irregular(static_cast<Byte>(byte)) && kTrails[byte])
                return false;
        }
        return true;
    }
    static_assert(allow_parity());
};

// The bytes of which something holds.
struct ByteRanges {
    Byte first[4], last[4];
    size_t count;
};
template <bool (*Holds)(Byte)>
constexpr ByteRanges find_ranges() {
    ByteRanges ranges{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        if (!Holds(static_cast<Byte>(byte)))
            continue;
        if (byte == 0 || !Holds(static_cast<Byte>(byte - 1)))
            ranges.first[ranges.count++] = static_cast<Byte>(byte);
        ranges.last[ranges.count - 1] = static_cast<Byte>(byte);
    }
    return ranges;
}

// What the regular characters of a code set are made of.
struct PairRanges {
    ByteRanges leads, trails, firsts;
};
template <class Scanner>
inline constexpr PairRanges kPairsOf = {find_ranges<ByteRoles<Scanner>::is_lead>(),
                                        find_ranges<ByteRoles<Scanner>::is_trail>(),
                                        find_ranges<ByteRoles<Scanner>::is_regular>()};

inline namespace ZVUTIL_LANES {

// Code sets whose bytes are alike share what is made of a class.
template <ByteRanges kRanges>
struct RangedBytes {
    static bool has(Byte byte) {
        bool any = false;
        for (size_t i = 0; i < kRanges.count; ++i)
            any |= in_range(byte, kRanges.first[i], kRanges.last[i]);
        return any;
    }
    static Mask find(ByteBlock bytes) {
        Mask found = 0;
#pragma GCC unroll 4
        for (size_t i = 0; i < kRanges.count; ++i)
            found |= range_mask(bytes, kRanges.first[i], kRanges.last[i]);
        return found;
    }
};
template <bool (*Holds)(Byte)>
using ByteClass = RangedBytes<find_ranges<Holds>()>;

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
