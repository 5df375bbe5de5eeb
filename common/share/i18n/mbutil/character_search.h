#ifndef ZVUTIL_MBUTIL_CHARACTER_SEARCH_H
#define ZVUTIL_MBUTIL_CHARACTER_SEARCH_H

#include <algorithm>
#include <cstring>

#include "accepts.h"
#include "boundary.h"

namespace zv {

// Terminated texts are looked through in parts of this many bytes, so that what is decided early
// needs no look at what is far behind it.
inline constexpr size_t kPart = 1024;
static_assert(kPart % kBlockSize == 0);

inline size_t part_of(const Byte* text, size_t size = kPart) {
    return strnlen(reinterpret_cast<const char*>(text), size);
}

// What a search looks for: single bytes, and bytes with another one behind them. It marks what it
// is, and perhaps more, for it holds the last single ones and the pairs as ranges.
class Wanted {
public:
    void add(const Byte* character, size_t length) {
        if (length == 1) {
            count_ = std::min(count_ + 1, kSingles);
            singles_[count_ - 1].add(character[0]);
        } else {
            firsts_.add(character[0]);
            seconds_.add(character[1]);
        }
    }
    Mask find(ByteBlock block, ByteBlock next) const {
        SignedByteBlock marks{};
        if (firsts_.first != 0)
            marks = firsts_.marks(block) & seconds_.marks(next);
        for (size_t i = 0; i < count_; ++i)
            marks |= singles_[i].marks(block);
        return high_bits(marks);
    }

private:
    static constexpr size_t kSingles = 3;

    // Its first byte is 0 while it is empty: no text has one.
    struct Range {
        void add(Byte byte) {
            const Byte low = first == 0 ? byte : std::min(byte, first);
            width = static_cast<Byte>(std::max<Byte>(byte, first + width) - low);
            first = low;
        }
        SignedByteBlock marks(ByteBlock bytes) const { return bytes - first <= width; }

        Byte first = 0;
        Byte width = 0;
    };
    Range singles_[kSingles];
    Range firsts_;
    Range seconds_;
    size_t count_ = 0;
};

// Looks through the next part of a terminated text, whole blocks, for a character that is wanted
// and accepted. `text` moves on, and `known` is a boundary not beyond it.
template <class Scanner>
[[gnu::noinline]] const Byte* find_in_part(const Byte*& known, const Byte*& text,
                                           const Wanted& given, Accepts accepts,
                                           size_t part = kPart) {
    const Wanted wanted = given; // which nothing else changes
    for (const Byte* const end = text + part_of(text, part); text != end;) {
        const size_t size = std::min(static_cast<size_t>(end - text), kBlockSize);
        Byte tail[kBlockSize + 1] = {};
        const Byte* bytes = text;
        if (size < kBlockSize) {
            copy_short(tail, text, size);
            bytes = tail;
        }
        const ByteBlock block = load_block(bytes);
        Mask found = wanted.find(block, load_block(bytes + 1)) & kAllMarked >> (kBlockSize - size);
        if (found != 0) {
            known = last_boundary<Scanner>(known, text);
            BlockWalk<Scanner> walk(known != text);
            const bool regular =
                known == text || (known + 1 == text && LeadsOf<Scanner>::has(*known));
            const bool settled = regular && walk.enter(block);
            if (settled)
                found &= walk.starts();
            for (; found != 0; found &= found - 1) {
                const Byte* const p = text + count_before(found);
                if (!settled)
                    known = last_boundary<Scanner>(known, p);
                if ((settled || known == p) && accepts(p))
                    return p;
            }
            if (settled)
                known = text + size - walk.carried();
        }
        text += size;
    }
    return nullptr;
}

} // namespace zv

#endif
