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
        for (unsigned trail = 0; trail < 256; ++trail) {
            const Byte pair[] = {static_cast<Byte>(lead), static_cast<Byte>(trail)};
            trails[trail] = Scanner::continues(pair, 1);
        }
        return trails;
    }
    static constexpr unsigned find_last_lead() {
        unsigned lead = 0xFF;
        while (Scanner::announced(static_cast<Byte>(lead)) != 2)
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
    static constexpr bool is_irregular(Byte byte) {
        return Scanner::announced(byte) > 1 && !is_lead(byte);
    }

    // A run of lead bytes can be split into pairs only where each could be a trail byte too.
    static constexpr bool leads_are_trails() {
        for (unsigned byte = 0; byte < 256; ++byte) {
            if (kLeads[byte] && !kTrails[byte])
                return false;
        }
        return true;
    }
};

// The bytes of which something holds, as ranges.
template <bool (*Holds)(Byte)>
struct ByteClass {
    struct Range {
        Byte first;
        Byte last;
    };
    static constexpr bool begins_at(unsigned byte) {
        return Holds(static_cast<Byte>(byte)) && (byte == 0 || !Holds(static_cast<Byte>(byte - 1)));
    }
    static constexpr size_t count() {
        size_t ranges = 0;
        for (unsigned byte = 0; byte < 256; ++byte)
            ranges += begins_at(byte);
        return ranges;
    }
    static constexpr auto make_ranges() {
        std::array<Range, count()> ranges{};
        size_t next = 0;
        for (unsigned first = 0; first < 256; ++first) {
            if (!begins_at(first))
                continue;
            unsigned last = first;
            while (last < 255 && Holds(static_cast<Byte>(last + 1)))
                ++last;
            ranges[next++] = {static_cast<Byte>(first), static_cast<Byte>(last)};
        }
        return ranges;
    }
    static constexpr auto kRanges = make_ranges();
};

inline namespace ZVUTIL_LANES {

template <bool (*Holds)(Byte)>
inline Mask find_bytes(ByteBlock bytes) {
    using Marks [[gnu::vector_size(kBlockSize)]] = signed char;
    Marks marks{};
#pragma GCC unroll 8
    for (const auto range : ByteClass<Holds>::kRanges)
        marks |= bytes - range.first <= static_cast<Byte>(range.last - range.first);
    return high_bits(marks);
}

// Walks a text block by block and tells which bytes begin characters, as a walk by step() would
// find them. The first block begins on a boundary.
template <class Scanner>
class BlockWalk {
    using Roles = ByteRoles<Scanner>;
    static_assert(Roles::leads_are_trails());

public:
    // False, with nothing changed, at a block with characters that are not regular.
    bool enter(ByteBlock block) {
        if constexpr (ByteClass<Roles::is_irregular>::count() != 0) {
            if (find_bytes<Roles::is_irregular>(block) != 0)
                return false;
        }
        leads_ = every_other(find_bytes<Roles::is_lead>(block) & ~carried_);
        behind_leads_ = (leads_ << 1 | carried_) & kAll;
        trails_ = behind_leads_ & find_bytes<Roles::is_trail>(block);
        carried_ = leads_ >> (kBlockSize - 1);
        return true;
    }

    // The bytes that begin characters of the block entered last, malformed ones included.
    Mask starts() const { return ~trails_ & kAll; }
    // Those that do so whatever byte may stand behind the lead bytes.
    Mask certain_starts() const { return ~behind_leads_ & kAll; }
    // Its bytes that begin characters of two, whatever byte may stand behind them.
    Mask leads() const { return leads_; }
    // Where the block has something that is no character.
    Mask malformed(ByteBlock block) const {
        const Mask well_formed = find_bytes<Roles::is_single>(block) | leads_ | trails_;
        return (~well_formed & kAll) | (behind_leads_ & ~trails_);
    }

    // Whether the last byte of the block begins a character of two.
    Mask carried() const { return carried_; }

private:
    static constexpr Mask kAll = static_cast<Mask>((std::uint64_t{1} << kBlockSize) - 1);

    Mask leads_ = 0;
    Mask behind_leads_ = 0;
    Mask trails_ = 0;
    Mask carried_ = 0;
};

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
