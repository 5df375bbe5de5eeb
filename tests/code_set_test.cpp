#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

TEST(CurrentCodeSet, StartsUninitialisedAndMultibyte) {
    EXPECT_EQ(MBUTIL_Initialized, 0);
    EXPECT_EQ(MBUTIL_I_Am_MultiByte, 1);
    EXPECT_EQ(MBUTIL_I_Am_Japanese, 0);
    EXPECT_EQ(InitMbutilExt(ZV_SJIS), 0);
    EXPECT_EQ(MBUTIL_Initialized, 1);
}

TEST(CurrentCodeSet, FlagsFollowTheCodeSet) {
    for (int code_set = -1; code_set <= 70; ++code_set) {
        InitMbutilExt(code_set);
        const bool japanese = code_set >= ZV_JIS && code_set <= ZV_SJIS;
        EXPECT_EQ(mbIsJapanese(), japanese) << code_set;
        EXPECT_EQ(mbIsMultiByte(), japanese || (code_set >= ZV_GB && code_set <= ZV_EUC_K))
            << code_set;
    }
    EXPECT_EQ(InitMbutilExt(ZV_EUC), 70);
}

struct LocaleCase {
    const char* lang;
    int native;    // what InitMbutil() makes of it
    int of_locale; // what mbGetLocaleCodeSet() makes of it
};
const LocaleCase kLocaleCases[] = {
    {"ja_JP.eucJP", ZV_EUC, ZV_EUC},
    {"ja_JP.SJIS", ZV_EUC, ZV_EUC},
    {"ko_KR.eucKR", ZV_EUC_K, ZV_EUC_K},
    {"zh_TW.BIG5", ZV_EUC_H, ZV_BIG5},
    {"zh_TW.eucTW", ZV_EUC_H, ZV_EUC_H},
    {"zh_CN.GBK", ZV_EUC_C, ZV_GB},
    {"pl_PL", ZV_WESTERN, ZV_8859_2},
    {"ru_RU.KOI8-R", ZV_WESTERN, ZV_8859_5},
    {"tr_TR.ISO8859-9", ZV_WESTERN, ZV_8859_9},
    {"de_DE.ISO8859-1", ZV_WESTERN, ZV_WESTERN},
    {"POSIX", ZV_WESTERN, ZV_WESTERN},
    {"no_SUCH.locale", ZV_WESTERN, ZV_WESTERN},
};

TEST(CurrentCodeSet, ComesFromRealLocalesOnFirstUse) {
    for (const LocaleCase& c : kLocaleCases) {
        EXPECT_EQ(test::in_fresh_locale(c.lang, [] { return mbmaxcharlen(), InitMbutilExt(0); }),
                  c.native)
            << c.lang;
        EXPECT_EQ(test::in_fresh_locale(c.lang,
                                        [] { return setlocale(LC_ALL, ""), mbGetLocaleCodeSet(); }),
                  c.of_locale)
            << c.lang;
    }
    EXPECT_EQ(test::in_fresh_locale("pl_PL",
                                    [] {
                                        setenv("LC_CTYPE", "ja_JP.eucJP", 1);
                                        return InitMbutil(), InitMbutilExt(0);
                                    }),
              ZV_EUC)
        << "in a mixed locale the character type decides";
    EXPECT_EQ(test::in_fresh_locale("ja_JP.eucJP", [] { return mbGetLocaleCodeSet(); }), ZV_WESTERN)
        << "the query adopts nothing";
}

TEST(CodeSetNames, SubstringsDecideInOrder) {
    const struct {
        const char* name;
        int code_set;
    } cases[] = {
        {nullptr, 0},     {"", 0},           {"WESTERN", 0},      {"EUC_WESTERN", 0},
        {"EUC_TW", 10},   {"EUC_H", 10},     {"EUC_ZH", 8},       {"EUC_C", 8},
        {"EUC_KR", 13},   {"EUC_J", 4},      {"EUC_GB", 4},       {"xEUCx", 4},
        {"SJIS", 5},      {"JIS", 3},        {"ISO-2022-JIS", 3}, {"GB2312", 7},
        {"GBK", 7},       {"BIG5", 9},       {"KSC_5601_87", 11}, {"KSC_5601_92", 12},
        {"1250", 23},     {"CP1251", 24},    {"1253", 25},        {"1258", 30},
        {"CP1252", 0},    {"8859_2", 14},    {"ISO8859_9", 21},   {"8859_10", 22},
        {"ISO8859_1", 0}, {"ISO8859_15", 0}, {"UTF8", 0},         {"sjis", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(mbGetCodeSet(c.name), c.code_set) << (c.name ? c.name : "NULL");
}

TEST(CodeSetNames, SetCodePageAgreesWithTheLocale) {
    const struct {
        const char* locale;
        const char* name;
    } cases[] = {
        {"CZ", "8859_2"},      {"Pl_PL", "8859_2"}, {"sk", "8859_2"},    {"el_GR", "8859_7"},
        {"UTF-8", "UTF8"},     {"utf-8", "UTF8"},   {"ja_JP", "EUC"},    {"ko", "EUC_K"},
        {"lv_LV", "8859_4"},   {"sr_YU", "8859_5"}, {"tr", "8859_9"},    {"zh_tw.big5", "BIG5"},
        {"zh_TW", "EUC_H"},    {"zh.GBK", "EUC_C"}, {"zh_CN", "GB2312"}, {"en_US", "WESTERN"},
        {"/ja_JP", "WESTERN"}, {"", "WESTERN"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(test::convert_guarded(
                      [](const char* locale, char* out) { SetCodePage(locale, out); }, c.locale, 8),
                  c.name)
            << c.locale;
}

std::string corrected(const std::string& locale) {
    return test::convert_guarded(mbGetCorrectedLocaleForUnix, locale, 2 * locale.size() + 8);
}

TEST(CodeSetNames, CorrectedLocaleNamesTheWindowsCodePage) {
    const struct {
        const char* locale;
        const char* expected;
    } cases[] = {
        {"de_DE.ISO8859-1", "de_DE.cp1252"},
        {"de_DE.ISO8859-15@euro", "de_DE.cp1252@euro"},
        {"lt_LT.ISO8859-13", "lt_LT.cp1257"},
        {"xx.8859_4", "xx.cp1257"},
        {"pl_PL.ISO8859-2", "pl_PL.cp1250"},
        {"ru.ISO8859-5", "ru.cp1251"},
        {"el.ISO8859_7", "el.cp1253"},
        {"tr.ISO8859-9@x", "tr.cp1254@x"},
        {"xx.ISO8859-8", "xx.ISO8859-8"},
        {"ja_JP.eucJP", "ja_JP.eucJP"},
        {"de", "de.cp1252"},
        {"de@euro", "de.cp1252@euro"},
        {"", ".cp1252"},
    };
    for (const auto& c : cases) EXPECT_EQ(corrected(c.locale), c.expected) << c.locale;
    const std::string long_name = std::string(96, 'x') + ".8859-1";
    EXPECT_EQ(corrected(long_name), long_name);
    EXPECT_EQ(test::in_fresh_locale("ja_JP.eucJP",
                                    [] {
                                        setlocale(LC_ALL, "");
                                        return int(corrected("ja@x") == "ja.ja@x");
                                    }),
              1);
    EXPECT_EQ(test::in_fresh_locale("pl_PL",
                                    [] {
                                        setlocale(LC_ALL, "");
                                        return int(corrected("pl") == "pl.cp1250");
                                    }),
              1);
}

TEST(CodeSetNames, SameLanguageKnowsThreeGroups) {
    const int group[14] = {0, 0, 0, 1, 1, 1, 0, 2, 2, 2, 2, 3, 3, 3};
    for (int a = 0; a < 30; ++a) {
        for (int b = 0; b < 30; ++b) {
            const int group_a = a < 14 ? group[a] : 0;
            EXPECT_EQ(sameLanguage(a, b), group_a != 0 && b < 14 && group_a == group[b]);
        }
    }
}

} // namespace
