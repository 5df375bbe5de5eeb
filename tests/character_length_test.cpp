#include <gtest/gtest.h>

#include "jaconv.h"
#include "mbutil.h"
#include "models/character_rules.h"
#include "support/guarded.h"
#include "support/texts.h"

namespace {

using test::length_by_rules, test::Rules;

void expect_as_model(const Rules& rules, const std::string& text, unsigned n) {
    test::GuardedText guarded(text);
    const int length = length_by_rules(rules, text, n),
              step = std::max(length_by_rules(rules, text, 4), 1);
    ASSERT_EQ(rules.scanner(guarded.bytes(), n), length) << text << ' ' << n;
    ASSERT_EQ(mblenExt(guarded.data(), n, rules.code_set), length) << text << ' ' << n;
    ASSERT_EQ(mb_mblen(guarded.data(), n), length);
    ASSERT_EQ(mbbytesinchartype(guarded.data(), rules.code_set), step);
    ASSERT_EQ(mbbytesinchar(guarded.data()), step);
}

TEST(Scanners, KnowTheCharactersOfTheirCodeSets) {
    std::mt19937 random(1);
    for (const Rules& rules : test::kRules) {
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
            const bool lead = byte >= 0 && length_by_rules(rules, {char(byte)}, 1) > 1;
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
