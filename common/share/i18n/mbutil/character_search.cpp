#include "character_search.h"

#include "../jaconv/kernel_choice.h"

namespace zv {

const Byte* CharacterSearch::next() {
    while (found_ == 0) {
        if (64 * ++word_ >= size_ && !enter_next_part())
            return nullptr;
        found_ = words_found_[word_] & starts_.of_word(word_);
    }
    const Byte* const place = part_ + 64 * word_ + std::countr_zero(found_);
    found_ &= found_ - 1;
    return place;
}

// A part in which nothing looks like what is wanted needs no look at its characters.
bool CharacterSearch::enter_next_part() {
    const auto find = widest([]<int Size> { return StringKernels<Size>::find; });
    do {
        part_ += size_;
        most_ = std::min(4 * most_, kPart);
        size_ = end_ == nullptr ? part_of(part_, most_)
                                : std::min(most_, static_cast<size_t>(end_ - part_));
        if (size_ == 0)
            return false;
    } while (!find(part_, size_, wanted_, words_found_));
    if (boundary_ < part_) {
        boundary_ = characters_.last_boundary_in(boundary_, part_);
        if (boundary_ < part_)
            boundary_ += characters_.step(boundary_);
    }
    auto first = static_cast<size_t>(boundary_ - part_);
    starts_.mark(characters_, part_, size_, first);
    boundary_ = part_ + size_ + first;
    word_ = 0;
    return true;
}

} // namespace zv
