#include "two_way.h"

#include <algorithm>

// The two-way algorithm of Crochemore and Perrin. The string is cut where its local period is its
// period: its back is compared forwards first, then its front backwards, and either tells how far
// the string may move on without looking at any byte of the text more than twice.

namespace zv {
namespace {

struct Cut {
    size_t at;
    size_t period; // of the string's back
};

// Where the suffix begins that is the last in the order of bytes, or in the reverse one.
Cut last_suffix(const Byte* string, size_t size, bool reverse) {
    Cut cut{0, 1};
    size_t matched = 0;
    for (size_t other = 1; other + matched < size;) {
        const Byte theirs = string[other + matched];
        const Byte ours = string[cut.at + matched];
        if (theirs == ours) {
            if (++matched == cut.period) {
                other += matched;
                matched = 0;
            }
        } else if ((theirs < ours) != reverse) {
            other += matched + 1;
            matched = 0;
            cut.period = other - cut.at;
        } else {
            cut = {other++, 1};
            matched = 0;
        }
    }
    return cut;
}

} // namespace

TwoWaySearch::TwoWaySearch(const Byte* text, const Byte* string, size_t size)
    : text_(text), end_(text), string_(string), size_(size) {
    const auto later = [](Cut a, Cut b) { return a.at < b.at; };
    const Cut cut =
        std::max(last_suffix(string, size, false), last_suffix(string, size, true), later);
    cut_ = cut.at;
    is_periodic_ = std::memcmp(string, string + cut.period, cut.at) == 0;
    period_ = is_periodic_ ? cut.period : std::max(cut.at, size - cut.at) + 1;
}

const Byte* TwoWaySearch::next() {
    constexpr size_t kReach = 4096;
    for (;;) {
        const auto left = static_cast<size_t>(end_ - text_);
        if (left < size_) {
            const size_t more =
                strnlen(reinterpret_cast<const char*>(end_), std::max(size_, kReach));
            if (left + more < size_)
                return nullptr;
            end_ += more;
        }
        size_t i = std::max(cut_, known_);
        if (known_ == 0 && text_[i] != string_[i]) {
            const void* const place =
                std::memchr(text_ + i, string_[i], static_cast<size_t>(end_ - text_) - i);
            text_ = place == nullptr ? end_ - i : static_cast<const Byte*>(place) - i;
            continue;
        }
        while (i < size_ && string_[i] == text_[i])
            ++i;
        if (i < size_) {
            text_ += i - cut_ + 1;
            known_ = 0;
            continue;
        }
        i = cut_;
        while (i > known_ && string_[i - 1] == text_[i - 1])
            --i;
        const Byte* const place = text_;
        const bool is_whole = i <= known_;
        text_ += period_;
        known_ = is_periodic_ ? size_ - period_ : 0;
        if (is_whole)
            return place;
    }
}

} // namespace zv
