#include <gtest/gtest.h>

#include <clocale>
#include <cstring>

#include "mbutil.h"
#include "models/strings_model.h"
#include "support/guarded.h"
#include "support/texts.h"

namespace {

using namespace test;

// Bytes that are lead, trail, both or neither in the several code sets, white space and control
// bytes, and few enough for random texts to meet each other.
constexpr std::string_view kAlphabet = "ab,AZ\n\a\x81\x82\xA0\xA1\xA2\x8E\x8F\xB0[\xE1\xFE\xFF";

// Hands random pairs of texts to a check in every code set, behind every length of ASCII.
void with_random_texts(auto check) {
    std::mt19937 random(1);
    for (const int code_set : kCodeSets) {
        InitMbutilExt(code_set);
        for (size_t round = 0; round < 4096; ++round) {
            const std::string padding(round % 2 * (round / 2 % 64), '/');
            const std::string s = padding + test::random_text(random, kAlphabet, 12);
            check(s, test::random_text(random, kAlphabet, 3), code_set);
            ASSERT_FALSE(testing::Test::HasFailure()) << code_set << " '" << s << "'";
        }
    }
}

using Properties = StringProperties<GuardedText, GuardedRoom>;
const auto same = [](const auto& actual, const auto& expected, const char* function) {
    EXPECT_EQ(actual, expected) << function;
};

TEST(Strings, SearchesAndTokensAreOfWholeCharacters) {
    with_random_texts([](const std::string& s, const std::string& part, int) {
        Properties::searches(s, part, same);
    });
}

TEST(Strings, BoundariesAndCopiesCutNoCharacter) {
    EXPECT_EQ(mbidxtype("a\x82\xA0", 2, ZV_SJIS), 1u) << "walks before the code set is known";
    EXPECT_EQ(MBUTIL_Initialized, 0);
    with_random_texts([](const std::string& s, const std::string&, int) {
        Properties::boundaries(s, s.size() + (mbIsMultiByte() ? 2 : 0), same);
    });
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(mbidxtype("\xB0\xA1\x82\xA0", 3, ZV_SJIS), 2u) << "not the current code set";
    InitMbutilExt(ZV_8859_5);
    EXPECT_EQ(mbidxtype("a\x82\xA0", 9, ZV_SJIS), 9u);
}

TEST(Strings, ComparisonsKeepCharactersWhole) {
    with_random_texts([](const std::string& s, const std::string& tail, int) {
        Properties::comparisons(s, tail, same);
    });
}

TEST(Strings, OneByteCharactersAreChangedAndChecked) {
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    ASSERT_TRUE(setlocale(LC_ALL, "de_DE.ISO8859-1")) << "its letters lie above 80 as well";
    with_random_texts([](const std::string& s, const std::string& part, int current) {
        Properties::changes(s, part, current, same);
    });
}

TEST(Strings, NullIsNoText) {
    InitMbutilExt(ZV_EUC);
    unsigned bad;
    char text[] = "a,b";
    using Texts = std::pair<char*, char*>;
    for (const auto& [a, b] : {Texts(nullptr, text), Texts(text, nullptr)}) {
        EXPECT_EQ(mbstrstr(a, b), a);
        EXPECT_EQ(mbstrrstr(a, b), a);
        EXPECT_EQ(mbstrncpy(a, b, 3), a);
        EXPECT_FALSE(mbstrncpyi(a, b, 3) || mbstrpbrk(a, b) || mbstricmp(a, b) ||
                     mbstrnicmp(a, b, 1) || mbcharcmp(a, b, 1) ||
                     mbvalidatestring(a, b ? &bad : nullptr, ZV_EUC) ||
                     mbvalidatestringtype(a, b ? &bad : nullptr, 103));
    }
    EXPECT_FALSE(mbstrchr(nullptr, 'a') || mbstrrchr(nullptr, 'a') || mbstrtoupper(nullptr));
    EXPECT_EQ(mbstrcspn(text, nullptr), 3u);
    EXPECT_STREQ(mbstrtok(text, nullptr), "a,b");
    EXPECT_EQ(mbstrtok(nullptr, ","), nullptr);
}

} // namespace
