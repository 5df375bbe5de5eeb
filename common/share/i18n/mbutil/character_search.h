#ifndef ZVUTIL_MBUTIL_CHARACTER_SEARCH_H
#define ZVUTIL_MBUTIL_CHARACTER_SEARCH_H

#include "characters.h"

namespace zv {

// Goes through the places of a terminated text where what is wanted begins a character, or through
// those before an end.
class CharacterSearch {
public:
    // `boundary` is one that is not behind the text.
    CharacterSearch(const Characters& characters, const Byte* boundary, const Byte* text,
                    const Wanted& wanted, const Byte* end = nullptr)
        : characters_(characters), wanted_(wanted), boundary_(boundary), part_(text), end_(end) {}

    // The next place, or null. There may stand something else that is like what is wanted.
    const Byte* next();
    // Where the text ends, once there is none.
    const Byte* end() const { return part_; }

private:
    bool enter_next_part();

    const Characters& characters_;
    const Wanted& wanted_;
    const Byte* boundary_; // the first one behind the part that was marked last
    const Byte* part_;
    size_t size_ = 0;
    size_t most_ = 16; // bytes of the part; the next one has four times as many
    const Byte* const end_;
    size_t word_ = 0;
    std::uint64_t found_ = 0; // of the word
    std::uint64_t words_found_[kPart / 64];
    Starts starts_;
};

} // namespace zv

#endif
