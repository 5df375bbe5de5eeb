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

const Byte* find_by_two_ways(const Byte* text, const Byte* string, size_t size, Accepts accepts) {
    constexpr size_t kReach = 4096;
    const auto later = [](Cut a, Cut b) { return a.at < b.at; };
    const Cut cut =
        std::max(last_suffix(string, size, false), last_suffix(string, size, true), later);
    const bool periodic = std::memcmp(string, string + cut.period, cut.at) == 0;
    const size_t period = periodic ? cut.period : std::max(cut.at, size - cut.at) + 1;
    const Byte* end = text; // as far as the text is known to go on
    // So much of the string's front is known to stand in the text.
    for (size_t known = 0;;) {
        const auto left = static_cast<size_t>(end - text);
        if (left < size) {
            const size_t more = strnlen(reinterpret_cast<const char*>(end), std::max(size, kReach));
            if (left + more < size)
                return nullptr;
            end += more;
        }
        size_t i = std::max(cut.at, known);
        if (known == 0 && text[i] != string[i]) {
            const void* const next =
                std::memchr(text + i, string[i], static_cast<size_t>(end - text) - i);
            text = next == nullptr ? end - i : static_cast<const Byte*>(next) - i;
            continue;
        }
        while (i < size && string[i] == text[i])
            ++i;
        if (i < size) {
            text += i - cut.at + 1;
            known = 0;
            continue;
        }
        i = cut.at;
        while (i > known && string[i - 1] == text[i - 1])
            --i;
        if (i <= known && accepts(text))
            return text;
        text += period;
        known = periodic ? size - period : 0;
    }
}

} // namespace zv
