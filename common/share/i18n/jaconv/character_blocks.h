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

inline namespace ZVUTIL_LANES {

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

    static bool has(Byte byte) {
        bool any = false;
        for (const Range range : kRanges)
            any |= in_range(byte, range.first, range.last);
        return any;
    }
    // Marks those of a block by all bits.
    static SignedByteBlock marks(ByteBlock bytes) {
        SignedByteBlock marks{};
#pragma GCC unroll 8
        for (const Range range : kRanges)
            marks |= bytes - range.first <= static_cast<Byte>(range.last - range.first);
        return marks;
    }
    static Mask find(ByteBlock bytes) {
        return high_bits(marks(bytes));
    }
};

// Walks a text block by block and tells which bytes begin characters, as a walk by step() would
// find them. The first block begins on a boundary, or behind a lead byte that does.
template <class Scanner>
class BlockWalk {
    using Roles = ByteRoles<Scanner>;

public:
    explicit BlockWalk(Mask behind_lead = 0) : carried_(behind_lead) {}

    // False, with nothing changed, at a block with characters that are not regular.
    bool enter(ByteBlock block) {
        if (ByteClass<Roles::is_irregular>::find(block) != 0)
            return false;
        leads_ = every_other(ByteClass<Roles::is_lead>::find(block) & ~carried_);
        behind_leads_ = (leads_ << 1 | carried_) & kAllMarked;
        trails_ = behind_leads_ & ByteClass<Roles::is_trail>::find(block);
        carried_ = leads_ >> (kBlockSize - 1);
        return true;
    }

    // The bytes that begin characters of the block entered last, malformed ones included.
    Mask starts() const { return ~trails_ & kAllMarked; }
    // Those that do so whatever byte may stand behind the lead bytes.
    Mask certain_starts() const { return ~behind_leads_ & kAllMarked; }
    // Those that are no characters of two. One that the next block decides about is none either.
    Mask singles() const { return starts() & ~(trails_ >> 1) & ~(carried_ << (kBlockSize - 1)); }
    // Where the block has something that is no character.
    Mask malformed(ByteBlock block) const {
        const Mask well_formed = ByteClass<Roles::is_single>::find(block) | leads_ | trails_;
        return (~well_formed & kAllMarked) | (behind_leads_ & ~trails_);
    }

    // Whether the last byte of the block begins a character of two.
    Mask carried() const { return carried_; }

private:
    Mask leads_ = 0;
    Mask behind_leads_ = 0;
    Mask trails_ = 0;
    Mask carried_;
};

// Where the run of regular lead bytes begins that ends at p, not before `first`.
template <class Scanner>
inline const Byte* run_of_leads(const Byte* first, const Byte* p) {
    using Leads = ByteClass<ByteRoles<Scanner>::is_lead>;
    constexpr size_t kAtOnce = 8;
    const Byte* const end = p;
    while (static_cast<size_t>(p - first) >= kBlockSize) {
        const Mask leads = Leads::find(load_block(p - kBlockSize));
        if (leads != kAllMarked)
            return p - kBlockSize + std::bit_width(~leads & kAllMarked);
        p -= kBlockSize;
        while (static_cast<size_t>(p - first) >= kAtOnce * kBlockSize) {
            const Byte* const blocks = p - kAtOnce * kBlockSize;
            auto marks = Leads::marks(load_block(blocks));
            for (size_t i = 1; i < kAtOnce; ++i)
                marks &= Leads::marks(load_block(blocks + i * kBlockSize));
            if (high_bits(marks) != kAllMarked)
                break;
            p = blocks;
        }
    }
    if (p != end && p != first) { // the rest is the front of a block
        const Mask rest = kAllMarked >> (kBlockSize - static_cast<size_t>(p - first));
        return first + std::bit_width(~Leads::find(load_block(first)) & rest);
    }
    while (p != first && Leads::has(p[-1]))
        --p;
    return p;
}

// Steps over blocks of well-formed text, so much of which is there. Gives a boundary.
template <class Scanner>
inline const Byte* skip_well_formed(const Byte* p, size_t left) {
    BlockWalk<Scanner> walk;
    for (; left >= kBlockSize; left -= kBlockSize) {
        const ByteBlock block = load_block(p);
        const Mask carried = walk.carried();
        if (!walk.enter(block) || walk.malformed(block) != 0)
            return p - carried;
        p += kBlockSize;
    }
    return p - walk.carried();
}

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
