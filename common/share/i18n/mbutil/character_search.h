#ifndef ZVUTIL_MBUTIL_CHARACTER_SEARCH_H
#define ZVUTIL_MBUTIL_CHARACTER_SEARCH_H

#include <algorithm>
#include <bitset>
#include <cstring>

#include "../jaconv/character_blocks.h"

namespace zv {

// How far a terminated text is known to go on. What is decided early needs no look at what is far
// behind it.
class KnownText {
public:
    explicit KnownText(const Byte* text) : end_(text) {}

    // Whether a block may be read at s.
    bool has_block(const Byte* s) { return end_ >= s + kBlockSize || has_block_behind(s); }

private:
    static constexpr size_t kLongestReach = size_t{16} * 1024;

    [[gnu::noinline]] bool has_block_behind(const Byte* s) {
        if (at_terminator_)
            return false;
        end_ = s + strnlen(reinterpret_cast<const char*>(s), reach_);
        at_terminator_ = *end_ == 0;
        reach_ = std::min(4 * reach_, kLongestReach);
        return end_ >= s + kBlockSize;
    }

    const Byte* end_;
    size_t reach_ = 4 * kBlockSize;
    bool at_terminator_ = false;
};

// The first bytes that a search looks for. A block is compared with few of them one by one, with
// more only as a range that holds them all.
class WantedBytes {
public:
    void add(Byte byte) {
        if (all_[byte])
            return;
        all_[byte] = true;
        if (count_ == 0)
            std::memset(few_, byte, sizeof few_); // so that unused ones mean nothing else
        if (count_ < kFew)
            few_[count_] = byte;
        lowest_ = std::min(lowest_, byte);
        highest_ = std::max(highest_, byte);
        ++count_;
    }
    bool has(Byte byte) const { return all_[byte]; }

    // Marks those of a block, and perhaps others.
    Mask find(ByteBlock block) const {
        if (count_ > kFew)
            return high_bits((block >= lowest_) & (block <= highest_));
        return high_bits((block == few_[0]) | (block == few_[1]) | (block == few_[2]));
    }

private:
    static constexpr int kFew = 3;

    std::bitset<256> all_;
    Byte few_[kFew] = {};
    Byte lowest_ = 0xFF;
    Byte highest_ = 0;
    int count_ = 0;
};

// Whether a search ends at a character whose first byte is wanted. Refers to a function object that
// outlives the search.
class Accepts {
public:
    template <class Function>
    explicit Accepts(const Function& function)
        : function_(&function), call_([](const void* f, const Byte* p) {
              return (*static_cast<const Function*>(f))(p);
          }) {}
    bool operator()(const Byte* p) const { return call_(function_, p); }

private:
    const void* function_;
    bool (*call_)(const void*, const Byte*);
};

// The first character of a terminated text whose first byte is wanted and which is accepted, or
// null.
template <class Scanner>
const Byte* find_character(const Byte* s, const WantedBytes& wanted, Accepts accepts) {
    KnownText known(s);
    for (;;) {
        if constexpr (Scanner::kLongest > 1) {
            BlockWalk<Scanner> walk;
            for (; known.has_block(s); s += kBlockSize) {
                const ByteBlock block = load_block(s);
                const Mask candidates = wanted.find(block);
                if (!walk.enter(block))
                    break;
                for (Mask left = candidates & walk.starts(); left != 0; left &= left - 1) {
                    const Byte* const p = s + count_before(left);
                    if (wanted.has(*p) && accepts(p))
                        return p;
                }
            }
            s -= walk.carried();
        }
        for (const Byte* const stop = s + kBlockSize; s < stop; s += step<Scanner>(s)) {
            if (*s == 0)
                return nullptr;
            if (wanted.has(*s) && accepts(s))
                return s;
        }
    }
}

} // namespace zv

#endif
