#ifndef ZVUTIL_JACONV_JAPANESE_DIRECTIONS_H
#define ZVUTIL_JACONV_JAPANESE_DIRECTIONS_H

#include <array>

#include "japanese_codes.h"
#include "japanese_pairs.h"
#include "japanese_runs.h"
#include "katakana.h"

namespace zv {

// The JIS codes of the full-width characters of the half-width katakana; data alone, which all
// sizes may share.
inline constexpr auto kKatakanaInJis = [] {
    std::array<BytePair, std::size(kFullWidth)> codes{};
    BytePair* next = codes.data();
    for (const BytePair wide : kFullWidth) {
        const Code code = jis_from_shift_jis(wide.first, wide.second);
        *next++ = {static_cast<Byte>(code.first), static_cast<Byte>(code.second)};
    }
    return codes;
}();

inline namespace ZVUTIL_LANES {

inline Mask is_single_shift(ByteBlock bytes) {
    return byte_mask(bytes, kSingleShift2);
}
inline Mask could_be_katakana(ByteBlock bytes) {
    return range_mask(bytes, 0xA1, 0xDF);
}

// What stands where in a window, or in a block.
struct Marks {
    LongMask leads, trails; // of two-byte characters
    LongMask shifts;        // where EUC has a single shift, or JIS an escape sequence
    LongMask others;        // what is not converted; where a trail byte should be, that byte
};

template <class From, size_t Blocks>
inline Marks mark_pairs(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk) {
    walk.enter(find_in(bytes, From::could_lead));
    const LongMask leads = walk.leads(), trails = walk.behind_leads();
    return {leads, trails, 0,
            (trails & ~find_in(bytes, From::could_trail)) |
                (find_in(bytes, not_ascii) & ~(leads | trails))};
}

// The directions: what they mark beside pairs, how they write what they marked, and a character of
// half-width katakana alone. `before` is what stands in the place before the first: a single shift,
// or into JIS a pair.

// Half-width katakana gain or lose the single shift before them.
struct ToEuc : ShiftJisToEucBytes {
    static constexpr bool kIntoJis = false;
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask) {
        Marks marks = mark_pairs<ToEuc>(bytes, walk);
        marks.shifts = find_in(bytes, could_be_katakana) & ~marks.trails;
        marks.others &= ~marks.shifts;
        return marks;
    }
    template <auto put_kept>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts, JisMode&) {
        const auto both = interleave(ByteBlock{} + kSingleShift2, bytes);
        const auto kept = interleave_bits(shifts & taken, taken);
        return put_kept(put_kept(out, both[0], kept[0]), both[1], kept[1]);
    }
    static Byte* put_katakana(Byte* out, Byte katakana) {
        return put_pair(out, kSingleShift2, katakana);
    }
};

struct ToShiftJis : EucToShiftJisBytes {
    static constexpr bool kIntoJis = false;
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask before) {
        const LongMask gr = find_in(bytes, could_lead);
        const LongMask single_shifts = find_in(bytes, is_single_shift);
        walk.enter(gr | single_shifts);
        const LongMask leads = walk.leads(), trails = walk.behind_leads();
        const LongMask shifts = leads & single_shifts;
        const LongMask katakana = places_behind(shifts, before);
        return {leads & ~shifts, trails & ~katakana, shifts,
                (trails & ~gr) | (katakana & ~find_in(bytes, could_be_katakana)) |
                    (find_in(bytes, not_ascii) & ~(leads | trails))};
    }
    template <auto put_kept>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts, JisMode&) {
        return put_kept(out, bytes, taken & ~shifts);
    }
    static Byte* put_katakana(Byte* out, Byte katakana) {
        *out = katakana;
        return out + 1;
    }
};

// Half-width katakana are left to others, since there are few; they become full-width.
template <class From>
struct IntoJis : From {
    static constexpr bool kIntoJis = true;
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask before) {
        Marks marks = mark_pairs<From>(bytes, walk);
        const LongMask pairs = marks.leads | marks.trails;
        marks.shifts = pairs ^ places_behind(pairs, before);
        return marks;
    }
    // Stores all that is left anew behind each escape sequence.
    template <auto>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts, JisMode& mode) {
        const auto put_escape = [&](size_t at) {
            const bool in_pairs = mode == JisMode::two_byte;
            out =
                switch_to(in_pairs ? JisMode::single_byte : JisMode::two_byte, out + at, mode) - at;
        };
        if ((shifts & 1) != 0)
            put_escape(0);
        store_marked(out, bytes, taken);
        Mask left = shifts & taken & ~Mask{1};
        for (; left != 0; left &= left - 1) {
            put_escape(count_before(left));
            store_marked(out, bytes, taken & -(left & -left));
        }
        return out + count_marked(taken);
    }
    static Byte* put_katakana(Byte* out, Byte katakana) {
        const BytePair code = kKatakanaInJis[katakana - 0xA1];
        return put_pair(out, code.first, code.second);
    }
};
struct ShiftJisToJisBytes : ShiftJisToEucBytes {
    static ByteBlock convert_pairs(ByteBlock bytes) {
        return ShiftJisToEucBytes::convert_pairs(bytes) & 0x7F;
    }
    static ByteBlock lead(ByteBlock bytes, ByteBlock next) {
        return ShiftJisToEucBytes::lead(bytes, next) & 0x7F;
    }
    static ByteBlock trail(ByteBlock before, ByteBlock bytes) {
        return ShiftJisToEucBytes::trail(before, bytes) & 0x7F;
    }
};
struct EucToJisBytes : EucToShiftJisBytes {
    static ByteBlock convert_pairs(ByteBlock bytes) { return bytes & 0x7F; }
    static ByteBlock lead(ByteBlock bytes, ByteBlock) { return bytes & 0x7F; }
    static ByteBlock trail(ByteBlock, ByteBlock bytes) { return bytes & 0x7F; }
};

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
