#include <gtest/gtest.h>

#include "jaconv.h"
#include "mbutil.h"
#include "support/guarded.h"
#include "support/texts.h"

namespace {

// The characters of a code set beyond ASCII: the first and the last value of each of their bytes.
struct Rules {
    int code_set;
    int (*scanner)(const unsigned char*, unsigned);
    size_t longest;
    std::vector<std::string_view> characters;
};
const Rules kRules[] = {
    {ZV_EUC, mblenInEUC, 3, {"\xA1\xFE\xA1\xFE", "\x8E\x8E\xA1\xDF", "\x8F\x8F\xA1\xFE\xA1\xFE"}},
    {ZV_SJIS, mblenInSJIS, 2, {"\xA1\xDF", "\x81\x9F\x40\xFC", "\xE0\xEF\x40\xFC"}},
    {ZV_GB, mblenInGB, 2, {"\xA1\xFE\xA1\xFE"}},
    {ZV_EUC_C, mblenInEUC_C, 2, {"\xA1\xFE\xA1\xFE"}},
    {ZV_EUC_K, mblenInEUC_K, 2, {"\xA1\xFE\xA1\xFE"}},
    {ZV_BIG5, mblenInBIG5, 2, {"\xA1\xFE\x40\x7E", "\xA1\xFE\xA1\xFE"}},
    {ZV_EUC_H,
     mblenInEUC_H,
     4,
     {"\xA1\xFE\x40\x7E", "\xA1\xFE\xA1\xFE", "\x8E\x8E\xA2\xB0\xA1\xFE\xA1\xFE"}},
    {ZV_KSC_5601_87, mblenInKSC87, 2, {"\x81\xFE\x41\x5A", "\x81\xFE\x61\x7A", "\x81\xFE\x81\xFE"}},
    {ZV_KSC_5601_92,
     mblenInKSC92,
     2,
     {"\x84\xD3\x41\x7E", "\x84\xD3\x81\xFE", "\xD8\xDE\x41\x7E", "\xD8\xDE\x81\xFE",
      "\xE0\xF9\x41\x7E", "\xE0\xF9\x81\xFE"}}};

int model(const Rules& rules, const std::string& text, size_t n) {
    const auto at = [](std::string_view s, size_t i) { return i < s.size() ? s[i] & 0xFF : 0; };
    if (at(text, 0) < 0x80) return at(text, 0) != 0;
    for (const std::string_view ranges : rules.characters) {
        size_t fit = 0;
        const auto fits = [&](size_t i) {
            return at(text, i) >= at(ranges, 2 * i) && at(text, i) <= at(ranges, 2 * i + 1);
        };
        while (fit < ranges.size() / 2 && fit < n && fits(fit)) ++fit;
        if (fit == std::min(n, ranges.size() / 2)) return static_cast<int>(ranges.size() / 2);
    }
    return -1;
}

void expect_as_model(const Rules& rules, const std::string& text, unsigned n) {
    test::GuardedText guarded(text);
    const int length = model(rules, text, n), step = std::max(model(rules, text, 4), 1);
    ASSERT_EQ(rules.scanner(guarded.bytes(), n), length) << text << ' ' << n;
    ASSERT_EQ(mblenExt(guarded.data(), n, rules.code_set), length) << text << ' ' << n;
    ASSERT_EQ(mb_mblen(guarded.data(), n), length);
    ASSERT_EQ(mbbytesinchartype(guarded.data(), rules.code_set), step);
    ASSERT_EQ(mbbytesinchar(guarded.data()), step);
}

TEST(Scanners, KnowTheCharactersOfTheirCodeSets) {
    std::mt19937 random(1);
    for (const Rules& rules : kRules) {
        SCOPED_TRACE(rules.code_set);
        InitMbutilExt(rules.code_set);
        EXPECT_EQ(mbmaxcharlenExt(rules.code_set), rules.longest);
        EXPECT_EQ(mbmaxcharlen(), rules.longest);
        for (int pair = 0; pair < 65536 && !HasFailure(); ++pair)
            expect_as_model(rules, {char(pair >> 8), char(pair), '\xA1', '\xA1'}, 4);
        const std::string_view edges = "\x8E\x8F\xA1\xFE\xA0\xFF\xA2\xB0\xB1\x81\xE0\x40\x7E";
        for (unsigned round = 0; round < 20000 && !HasFailure(); ++round)
            expect_as_model(rules, test::random_text(random, edges, 4), 1 + round % 5);
        for (int byte = -256; byte < 256; ++byte) {
            const bool ascii = byte >= 0 && byte < 0x80, katakana = byte >= 0xA1 && byte <= 0xDF;
            const bool lead = byte >= 0 && model(rules, {char(byte)}, 1) > 1;
            EXPECT_EQ(isleadbyteExt(byte, rules.code_set), lead) << byte;
            EXPECT_EQ(mb_isleadbyte(byte), lead) << byte;
            EXPECT_EQ(ismbcprintInSJIS(byte), ascii || katakana) << byte;
            EXPECT_EQ(ismbcprint(byte), ascii || (katakana && rules.code_set == ZV_SJIS)) << byte;
        }
        EXPECT_FALSE(rules.scanner(nullptr, 4) || mblenExt("a", 0, rules.code_set));
        EXPECT_EQ(rules.scanner(test::GuardedText("a").bytes(), 0), 0);
    }
}

TEST(Scanners, CodeSetsWithoutCharactersGiveOne) {
    for (const int code_set : {-1, 0, 3, 6, 17, 30, 99}) {
        EXPECT_TRUE(mblenExt(nullptr, 0, code_set) == 1 && mblenExt("\x82", 1, code_set) == 1);
        EXPECT_TRUE(mbmaxcharlenExt(code_set) == 1 && isleadbyteExt(0xA4, code_set) == 0);
    }
}

} // namespace
