#ifndef ZVUTIL_FUZZ_CHARACTER_RULES_H
#define ZVUTIL_FUZZ_CHARACTER_RULES_H

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "jaconv.h"
#include "mbutil.h"

namespace test {

// The characters of a code set beyond ASCII: the first and the last value of each of their bytes.
struct Rules {
    int code_set;
    int (*scanner)(const unsigned char*, unsigned);
    size_t longest;
    std::vector<std::string_view> characters;
};
// Rows and cells of 94.
inline constexpr std::string_view kHigh = "\xA1\xFE\xA1\xFE";
inline const Rules kRules[] = {
    {ZV_EUC, mblenInEUC, 3, {kHigh, "\x8E\x8E\xA1\xDF", "\x8F\x8F\xA1\xFE\xA1\xFE"}},
    {ZV_SJIS, mblenInSJIS, 2, {"\xA1\xDF", "\x81\x9F\x40\xFC", "\xE0\xEF\x40\xFC"}},
    {ZV_GB, mblenInGB, 2, {kHigh}},
    {ZV_EUC_C, mblenInEUC_C, 2, {kHigh}},
    {ZV_EUC_K, mblenInEUC_K, 2, {kHigh}},
    {ZV_BIG5, mblenInBIG5, 2, {kHigh, "\xA1\xFE\x40\x7E"}},
    {ZV_EUC_H, mblenInEUC_H, 4, {kHigh, "\xA1\xFE\x40\x7E", "\x8E\x8E\xA2\xB0\xA1\xFE\xA1\xFE"}},
    {ZV_KSC_5601_87, mblenInKSC87, 2, {"\x81\xFE\x41\x5A", "\x81\xFE\x61\x7A", "\x81\xFE\x81\xFE"}},
    {ZV_KSC_5601_92,
     mblenInKSC92,
     2,
     {"\x84\xD3\x41\x7E", "\x84\xD3\x81\xFE", "\xD8\xDE\x41\x7E", "\xD8\xDE\x81\xFE",
      "\xE0\xF9\x41\x7E", "\xE0\xF9\x81\xFE"}}};

// The length of the character that the first n bytes begin or are; -1 when they are malformed.
inline int length_by_rules(const Rules& rules, const std::string& text, size_t n) {
    const auto at = [](std::string_view s, size_t i) { return i < s.size() ? s[i] & 0xFF : 0; };
    if (at(text, 0) < 0x80)
        return at(text, 0) != 0;
    for (const std::string_view ranges : rules.characters) {
        const size_t length = ranges.size() / 2;
        bool fits = true;
        for (size_t i = 0; i < std::min(n, length) && fits; ++i)
            fits = at(text, i) >= at(ranges, 2 * i) && at(text, i) <= at(ranges, 2 * i + 1);
        if (fits)
            return static_cast<int>(length);
    }
    return -1;
}

} // namespace test

#endif
