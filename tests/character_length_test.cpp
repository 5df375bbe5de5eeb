#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "jaconv.h"
#include "mbutil.h"
#include "support/guarded.h"

namespace {

using Scanner = int (*)(const unsigned char*, unsigned);

// The byte ranges of each code set once more, as plain data: {lead range, trail ranges}. One-byte
// characters below 0x80 are common to all.
struct Range {
    unsigned first, last;
    bool holds(unsigned byte) const { return byte >= first && byte <= last; }
};
struct Rules {
    int code_set;
    Scanner scanner;
    int longest;
    std::vector<Range> single;
    std::vector<Range> lead;
    std::vector<Range> trail;
};
const Range kHigh = {0xA1, 0xFE};
const Rules kRules[] = {
    {ZV_EUC, mblenInEUC, 3, {}, {kHigh}, {kHigh}},
    {ZV_SJIS, mblenInSJIS, 2, {{0xA1, 0xDF}}, {{0x81, 0x9F}, {0xE0, 0xEF}}, {{0x40, 0xFC}}},
    {ZV_GB, mblenInGB, 2, {}, {kHigh}, {kHigh}},
    {ZV_EUC_C, mblenInEUC_C, 2, {}, {kHigh}, {kHigh}},
    {ZV_BIG5, mblenInBIG5, 2, {}, {kHigh}, {{0x40, 0x7E}, kHigh}},
    {ZV_EUC_H, mblenInEUC_H, 4, {}, {kHigh}, {{0x40, 0x7E}, kHigh}},
    {ZV_KSC_5601_87,
     mblenInKSC87,
     2,
     {},
     {{0x81, 0xFE}},
     {{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}}},
    {ZV_KSC_5601_92,
     mblenInKSC92,
     2,
     {},
     {{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}},
     {{0x41, 0x7E}, {0x81, 0xFE}}},
    {ZV_EUC_K, mblenInEUC_K, 2, {}, {kHigh}, {kHigh}},
};

bool any_holds(const std::vector<Range>& ranges, unsigned byte) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [&](const Range& range) { return range.holds(byte); });
}

// The length that a first byte announces, with the shifts of the two EUC forms.
int announced(const Rules& rules, unsigned lead) {
    if (lead < 0x80) return lead != 0;
    if (rules.code_set == ZV_EUC && lead == 0x8E) return 2;
    if (rules.code_set == ZV_EUC && lead == 0x8F) return 3;
    if (rules.code_set == ZV_EUC_H && lead == 0x8E) return 4;
    return any_holds(rules.single, lead) ? 1 : any_holds(rules.lead, lead) ? 2 : -1;
}

bool trail_fits(const Rules& rules, unsigned lead, int i, unsigned byte) {
    if (lead == 0x8F && rules.code_set == ZV_EUC) return kHigh.holds(byte);
    if (lead == 0x8E && rules.code_set == ZV_EUC) return Range{0xA1, 0xDF}.holds(byte);
    if (lead == 0x8E && rules.code_set == ZV_EUC_H)
        return i == 1 ? Range{0xA2, 0xB0}.holds(byte) : kHigh.holds(byte);
    return any_holds(rules.trail, byte);
}

TEST(Scanners, EveryPairOfBytes) {
    for (const Rules& rules : kRules) {
        SCOPED_TRACE(rules.code_set);
        ASSERT_EQ(mbmaxcharlenExt(rules.code_set), rules.longest);
        for (unsigned lead = 0; lead < 256; ++lead) {
            const int length = announced(rules, lead);
            ASSERT_EQ(isleadbyteExt(int(lead), rules.code_set), length > 1) << lead;
            ASSERT_EQ(isleadbyteExt(int(lead) - 256, rules.code_set), 0) << lead;
            for (unsigned trail = 0; trail < 256; ++trail) {
                const unsigned char bytes[] = {static_cast<unsigned char>(lead),
                                               static_cast<unsigned char>(trail), 0xA1, 0xA1, 0};
                const char* text = reinterpret_cast<const char*>(bytes);
                const int expected = length < 2 || trail_fits(rules, lead, 1, trail) ? length : -1;
                ASSERT_EQ(rules.scanner(bytes, 1), length);
                ASSERT_EQ(rules.scanner(bytes, 2), expected) << lead << ' ' << trail;
                ASSERT_EQ(mblenExt(text, 4, rules.code_set), expected) << lead << ' ' << trail;
                ASSERT_EQ(mbbytesinchartype(text, rules.code_set), std::max(expected, 1));
            }
        }
        EXPECT_EQ(rules.scanner(nullptr, 4), 0);
        EXPECT_EQ(rules.scanner(reinterpret_cast<const unsigned char*>("a"), 0), 0);
    }
}

TEST(Scanners, LongCharactersAndTheirTruncation) {
    const auto scan = [](Scanner scanner, std::string_view text, unsigned n) {
        return scanner(test::GuardedText(text).bytes(), n);
    };
    for (unsigned byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool high = kHigh.holds(byte);
        const auto with = [&](std::string text) { return text.replace(text.find('?'), 1, 1, c); };
        EXPECT_EQ(scan(mblenInEUC, with("\x8F\xA1?"), 3), high ? 3 : -1);
        EXPECT_EQ(scan(mblenInEUC_H, with("\x8E\xA2?\xA1"), 4), high ? 4 : -1);
        EXPECT_EQ(scan(mblenInEUC_H, with("\x8E\xB0\xFE?"), 4), high ? 4 : -1);
    }
    EXPECT_EQ(scan(mblenInEUC, "\x8F\xA1", 2), 3);
    EXPECT_EQ(scan(mblenInEUC, "\x8F\xA1", 3), -1);
    EXPECT_EQ(scan(mblenInEUC_H, "\x8E\xA2", 2), 4);
    EXPECT_EQ(scan(mblenInEUC_H, "\x8E\xA2", 4), -1);
    EXPECT_EQ(scan(mblenInSJIS, "\x82", 2), -1);
}

TEST(Scanners, CodeSetsWithoutCharactersGiveOne) {
    for (const int code_set : std::initializer_list<int>{ZV_WESTERN, ZV_JIS, ZV_EUC_OR_SJIS,
                                                         ZV_8859_5, ZV_CP1258, 99, -1}) {
        EXPECT_EQ(mblenExt(nullptr, 0, code_set), 1);
        EXPECT_EQ(mblenExt("\x82", 1, code_set), 1);
        EXPECT_EQ(mbmaxcharlenExt(code_set), 1);
        EXPECT_EQ(isleadbyteExt(0xA4, code_set), 0);
    }
}

TEST(CurrentScanner, FollowsTheCurrentCodeSet) {
    for (const Rules& rules : kRules) {
        InitMbutilExt(rules.code_set);
        EXPECT_EQ(mb_mblen("\xB0\xA1", 2), rules.code_set == ZV_SJIS ? 1 : 2);
        EXPECT_EQ(mbbytesinchar("\xFF"), 1);
        EXPECT_EQ(mbbytesinchar(""), 1);
        EXPECT_EQ(mb_isleadbyte(0xB0), rules.code_set != ZV_SJIS);
        EXPECT_EQ(mbmaxcharlen(), rules.longest);
        for (int byte = -128; byte < 256; ++byte) {
            const bool katakana = byte >= 0xA1 && byte <= 0xDF;
            const bool ascii = byte >= 0 && byte < 0x80;
            EXPECT_EQ(ismbcprintInSJIS(byte), ascii || katakana);
            EXPECT_EQ(ismbcprint(byte), ascii || (katakana && rules.code_set == ZV_SJIS));
        }
    }
}

} // namespace
