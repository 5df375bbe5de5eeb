#include <gtest/gtest.h>

#include <clocale>
#include <random>

#include "jaconv.h"
#include "mbutil.h"
#include "models/character_rules.h"
#include "models/strings_model.h"
#include "support/calls.h"
#include "support/guarded.h"

namespace {

using namespace test;
using Properties = StringProperties<GuardedText, GuardedRoom>;

const auto same = [](const auto& actual, const auto& expected, const char* function) {
    EXPECT_EQ(actual, expected) << function;
};

TEST(Characters, OfEveryFirstByteAndCodeSet) {
    for (const Rules& rules : kRules) {
        InitMbutilExt(rules.code_set);
        SCOPED_TRACE(rules.code_set);
        EXPECT_EQ(mbmaxcharlenExt(rules.code_set), rules.longest);
        EXPECT_EQ(mbmaxcharlen(), rules.longest);
        EXPECT_EQ(rules.scanner(nullptr, 4), 0);
        EXPECT_EQ(mbbytesinchartype(nullptr, rules.code_set), 1);
        EXPECT_EQ(mbbytesinchar(nullptr), 1);
        for (int byte = -256; byte < 256; ++byte) {
            const bool ascii = byte >= 0 && byte < 0x80, katakana = byte >= 0xA1 && byte <= 0xDF;
            const bool lead = byte >= 0 && length_by_rules(rules, {char(byte)}, 1) > 1;
            EXPECT_EQ(isleadbyteExt(byte, rules.code_set), lead) << byte;
            EXPECT_EQ(mb_isleadbyte(byte), lead) << byte;
            EXPECT_EQ(ismbcprintInSJIS(byte), ascii || katakana) << byte;
            EXPECT_EQ(ismbcprint(byte), ascii || (katakana && rules.code_set == ZV_SJIS)) << byte;
        }
    }
    for (const int code_set : {-1, 0, 3, 6, 17, 30, 99}) {
        EXPECT_EQ(mblenExt(nullptr, 0, code_set), 1) << code_set;
        EXPECT_EQ(mblenExt("\x82", 1, code_set), 1) << code_set;
        EXPECT_EQ(mbmaxcharlenExt(code_set), 1) << code_set;
        EXPECT_EQ(isleadbyteExt(0xA4, code_set), 0) << code_set;
    }
}

TEST(Strings, NoTrailByteIsFound) {
    const std::string padding(63, '!');
    for (const Rules& rules : kRules) {
        InitMbutilExt(rules.code_set);
        SCOPED_TRACE(rules.code_set);
        for (int pair = 0x8001; pair <= 0xFFFF; ++pair) {
            const char lead = char(pair >> 8), trail = char(pair);
            if (trail == 0 || trail == lead || trail == '!')
                continue;
            const bool whole = length_by_rules(rules, {lead, trail}, rules.longest) == 2;
            // Alone, and across the border of two words of 64 bytes.
            for (const std::string& before : {std::string(), padding}) {
                std::string text = before + lead + trail;
                const size_t at = before.size() + 1, end = text.size();
                const char* const found = whole ? nullptr : &text[at];
                const char set[] = {trail, '\0'};
                const int c = static_cast<signed char>(trail);
                ASSERT_EQ(mbstrchr(text.c_str(), c), found) << pair;
                ASSERT_EQ(mbstrrchr(text.c_str(), c), found) << pair;
                ASSERT_EQ(mbstrcspn(text.c_str(), set), whole ? end : at) << pair;
                ASSERT_EQ(strlen(mbstrtok(text.data(), set)), whole ? end : at) << pair;
            }
        }
    }
}

TEST(Strings, LargeSetsHoldCharactersOfEveryPlane) {
    InitMbutilExt(ZV_EUC_H);
    for (unsigned plane = 0xA2; plane <= 0xB0; ++plane) {
        const std::string row = {'\x8E', char(plane), '\xFE'};
        const std::string set = "abcdefghijklmnopq" + row + '\xFE';
        EXPECT_EQ(mbstrcspn((row + '\xFD' + row + '\xFE').c_str(), set.c_str()), 4u) << plane;
        EXPECT_FALSE(mbstrstr((row + '\xFD').c_str(), row.c_str())) << "ends inside it";
    }
}

TEST(Strings, ThePositionInAnotherCodeSet) {
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(mbidxtype("\xB0\xA1\x82\xA0", 3, ZV_SJIS), 2u) << "not the current code set";
    InitMbutilExt(ZV_8859_5);
    EXPECT_EQ(mbidxtype("a\x82\xA0", 9, ZV_SJIS), 9u);
}

TEST(Strings, OneByteCharactersAreChangedAndCheckedAsTheLocaleSays) {
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    ASSERT_TRUE(setlocale(LC_ALL, "de_DE.ISO8859-1")) << "its letters lie above 80 as well";
    for (const int code_set : kCodeSets) {
        InitMbutilExt(code_set);
        for (int byte = 1; byte < 256; ++byte) {
            SCOPED_TRACE(testing::Message() << code_set << ' ' << byte);
            const std::string part(1023, '!'), tail(20, '!'), many(37, char(byte));
            for (const std::string& text : {"a" + many, part + char(byte) + tail, part + many})
                Properties::changes(text, "", code_set, same);
        }
    }
    ASSERT_TRUE(setlocale(LC_ALL, "tr_TR.ISO8859-9")) << "where i is the small letter of DD";
    InitMbutilExt(ZV_EUC);
    EXPECT_NE(mbstricmp("a\xDD\xA1", "ai\xA1"), 0) << "a character of two is no letter";
}

TEST(Strings, LongNeedlesAmongTheirLikenesses) {
    std::minstd_rand random(1);
    const auto below = [&](size_t bound) { return random() % bound; };
    // A word over and over, with a few of its letters exchanged.
    const auto nearly_repeated = [&](const std::string& word, size_t size, size_t exchanges) {
        std::string text;
        while (text.size() < size)
            text += word;
        text.resize(size);
        while (exchanges-- > 0)
            text[below(size)] ^= 'a' ^ 'b';
        return text;
    };
    InitMbutilExt(ZV_EUC);
    for (int n = 0; n < 10000; ++n) {
        std::string word(1 + below(12), 'a');
        for (char& c : word)
            c = "ab"[below(2)];
        const std::string needle = nearly_repeated(word, 17 + below(30), below(3));
        const std::string text =
            nearly_repeated(below(2) ? word : needle, 200 + below(200), below(8));
        SCOPED_TRACE(text + ' ' + needle);
        Properties::searches(text, needle, same);
    }
}

TEST(Strings, NullIsNoText) {
    InitMbutilExt(ZV_EUC);
    unsigned bad;
    char text[] = "a,b";
    for (const bool first : {true, false}) {
        SCOPED_TRACE(first);
        char *const a = first ? nullptr : text, *const b = first ? text : nullptr;
        unsigned* const position = first ? &bad : nullptr;
        expect_each(long(a), 0, CALL(mbstrstr(a, b)), CALL(mbstrrstr(a, b)),
                    CALL(mbstrncpy(a, b, 3)));
        expect_each(0, 0, CALL(mbstrncpyi(a, b, 3)), CALL(mbstrpbrk(a, b)), CALL(mbstricmp(a, b)),
                    CALL(mbstrnicmp(a, b, 1)), CALL(mbcharcmp(a, b, 1)),
                    CALL(mbvalidatestring(a, position, ZV_EUC)),
                    CALL(mbvalidatestringtype(a, position, ZV_CHECK_PRINTABLE)));
    }
    expect_each(0, 0, CALL(mbstrchr(nullptr, 'a')), CALL(mbstrrchr(nullptr, 'a')),
                CALL(mbstrtoupper(nullptr)));
    EXPECT_EQ(mbstrcspn(text, nullptr), 3u);
    EXPECT_STREQ(mbstrtok(text, nullptr), "a,b");
    EXPECT_EQ(mbstrtok(nullptr, ","), nullptr);
}

} // namespace
