#ifndef ZVUTIL_MBUTIL_CHARACTER_SEARCH_H
#define ZVUTIL_MBUTIL_CHARACTER_SEARCH_H

#include <algorithm>
#include <cstring>

#include "../jaconv/character_blocks.h"

namespace zv {

// How far a terminated text is known to go on. What is decided early needs no look at what is far
// behind it.
class KnownText {
public:
    explicit KnownText(const Byte* text) : end_(text) {}

    // Whether a block may be read at s.
    bool has_block(const Byte* s) {
        if (end_ < s + kBlockSize && !at_terminator_) {
            end_ = s + strnlen(reinterpret_cast<const char*>(s), reach_);
            at_terminator_ = *end_ == 0;
            reach_ = std::min(4 * reach_, kLongestReach);
        }
        return end_ >= s + kBlockSize;
    }

private:
    static constexpr size_t kLongestReach = size_t{16} * 1024;

    const Byte* end_;
    size_t reach_ = 4 * kBlockSize;
    bool at_terminator_ = false;
};

// The first character of a terminated text whose first byte is wanted and which is accepted, or
// null. `wanted` takes a byte, or a block of which it marks bytes; `accept` takes a position.
template <class Scanner, class Wanted, class Accept>
const Byte* find_character(const Byte* s, Wanted wanted, Accept accept) {
    KnownText known(s);
    for (;;) {
        if constexpr (Scanner::kLongest > 1) {
            BlockWalk<Scanner> walk;
            for (; known.has_block(s); s += kBlockSize) {
                const ByteBlock block = load_block(s);
                const Mask candidates = high_bits(wanted(block));
                if (!walk.enter(block))
                    break;
                for (Mask left = candidates & walk.starts(); left != 0; left &= left - 1) {
                    const Byte* const p = s + count_before(left);
                    if (accept(p))
                        return p;
                }
            }
            s -= walk.carried();
        }
        for (const Byte* const stop = s + kBlockSize; s < stop; s += step<Scanner>(s)) {
            if (*s == 0)
                return nullptr;
            if (wanted(*s) && accept(s))
                return s;
        }
    }
}

} // namespace zv

#endif
