#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <functional>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

// Code sets stand by their numbers here. Tables of the guides, which are tested against the
// library, say what all of them and all locales are called.
TEST(CurrentCodeSet, StartsUnknownAndThenSetsTheFlags) {
    EXPECT_TRUE(!MBUTIL_Initialized && MBUTIL_I_Am_MultiByte && !MBUTIL_I_Am_Japanese);
    EXPECT_EQ(InitMbutilExt(-1), 0);
    EXPECT_EQ(MBUTIL_Initialized, 1);
    for (int code_set = 0; code_set <= 70; ++code_set) {
        EXPECT_EQ(InitMbutilExt(code_set), code_set - 1);
        const bool japanese = code_set >= 3 && code_set <= 5;
        const bool multibyte = japanese || (code_set >= 7 && code_set <= 13);
        EXPECT_TRUE(mbIsJapanese() == japanese && MBUTIL_I_Am_Japanese == japanese) << code_set;
        EXPECT_TRUE(mbIsMultiByte() == multibyte && MBUTIL_I_Am_MultiByte == multibyte) << code_set;
    }
}

TEST(CurrentCodeSet, ComesFromRealLocalesOnFirstUse) {
    const struct {
        const char* lang;
        int native, of_locale; // what InitMbutil() and what mbGetLocaleCodeSet() make of it
    } cases[] = {{"ja_JP.eucJP", 4, 4},   {"zh_TW.BIG5", 10, 9}, {"pl_PL", 0, 14},
                 {"ru_RU.KOI8-R", 0, 17}, {"POSIX", 0, 0},       {"no_SUCH.locale", 0, 0}};
    const auto native = [] { return mbmaxcharlen(), InitMbutilExt(0); };
    const auto of_locale = [] { return setlocale(LC_ALL, ""), mbGetLocaleCodeSet(); };
    const auto mixed = [] {
        return setenv("LC_CTYPE", "ja_JP.eucJP", 1), InitMbutil(), InitMbutilExt(0);
    };
    for (const auto& c : cases) {
        EXPECT_EQ(test::in_fresh_locale(c.lang, native), c.native) << c.lang;
        EXPECT_EQ(test::in_fresh_locale(c.lang, of_locale), c.of_locale) << c.lang;
    }
    EXPECT_EQ(test::in_fresh_locale("pl_PL", mixed), ZV_EUC) << "the character type decides";
    EXPECT_EQ(test::in_fresh_locale("ja_JP.eucJP", mbGetLocaleCodeSet), 0) << "adopts nothing";
}

TEST(CurrentCodeSet, IsAdoptedByWhatNeedsItAlone) {
    char out[8];
    EXPECT_FALSE(mbGetMIMECodeSet(nullptr) || mbGetMIMECodeSet(""));
    EXPECT_EQ(mbidxtype("a\x82\xA0", 2, ZV_SJIS), 1u) << "walks by characters";
    EXPECT_STREQ(convertFromQuotedPrintable(out, "a\x80."), "a.");
    EXPECT_STREQ(UnixCodingToWindowsCodingExt("\xB0\xA1", out), "\xB0\xA1");
    EXPECT_EQ(MBUTIL_Initialized, 0);
    std::string text = "=41" + std::string(200, '.'); // long enough for the kernels
    const std::function<void()> adopting[] = {
        [&] { mbGetMIMECodeSet("x"); }, [&] { convertFromQuotedPrintable(out, "=4G"); },
        [&] { convertFromQuotedPrintable(text.data(), text.c_str()); }};
    for (const auto& use : adopting) {
        const auto code_set = [&] { return use(), InitMbutilExt(0); };
        EXPECT_EQ(test::in_fresh_locale("ja_JP.eucJP", code_set), ZV_EUC);
    }
}

TEST(CodeSetNames, SubstringsDecideInOrder) {
    const std::pair<const char*, int> cases[] = {
        {nullptr, 0},        {"", 0},         {"EUC_WESTERN", 0}, {"EUC_KR", 13},    {"EUC_GB", 4},
        {"xEUCx", 4},        {"xSJISx", 5},   {"GBK", 7},         {"CP1251", 24},    {"CP1252", 0},
        {"ISO-2022-JIS", 3}, {"8859_10", 22}, {"ISO8859_1", 0},   {"ISO8859_15", 0}, {"sjis", 0}};
    for (const auto& [name, code_set] : cases)
        EXPECT_EQ(mbGetCodeSet(name), code_set) << (name ? name : "NULL");
}

TEST(CodeSetNames, LocalesNameTheirCodeSets) {
    const std::pair<const char*, const char*> cases[] = {
        {"CZ", "8859_2"},  {"Pl_PL", "8859_2"}, {"zh_tw.big5", "BIG5"}, {"zh_CN", "GB2312"},
        {"UTF-8", "UTF8"}, {"utf-8", "UTF8"},   {"/ja_JP", "WESTERN"},  {"", "WESTERN"}};
    for (const auto& [locale, name] : cases)
        EXPECT_EQ(test::convert_guarded(SetCodePage, locale, 8), name) << locale;
}

// The same whether it is written beside the name or over it.
std::string corrected(const std::string& locale) {
    const size_t room = 2 * locale.size() + 8;
    std::string name = locale;
    name.resize(room);
    mbGetCorrectedLocaleForUnix(name.data(), name.data());
    EXPECT_EQ(test::convert_guarded(mbGetCorrectedLocaleForUnix, locale, room), name.c_str());
    return name.c_str();
}

TEST(CodeSetNames, CorrectedLocaleNamesTheWindowsCodePage) {
    const std::pair<std::string, const char*> cases[] = {
        {"ISO8859-1", "cp1252"},    {"ISO8859-15", "cp1252"}, {"ISO8859-13", "cp1257"},
        {"8859_4", "cp1257"},       {"8859_13", "cp1257"},    {"ISO8859-2", "cp1250"},
        {"ISO8859-5", "cp1251"},    {"ISO8859_7", "cp1253"},  {"ISO8859-9", "cp1254"},
        {"ISO8859-8", "ISO8859-8"}, {"eucJP", "eucJP"}};
    for (const std::string suffix : {"", "@euro"}) {
        for (const auto& [part, page] : cases)
            EXPECT_EQ(corrected("xx_XX." + part + suffix), std::string("xx_XX.") + page + suffix);
        for (const std::string language : {"", "de"})
            EXPECT_EQ(corrected(language + suffix), language + ".cp1252" + suffix);
    }
    const std::string long_name = std::string(96, 'x') + ".8859-1";
    EXPECT_EQ(corrected(long_name), long_name);
    for (const auto& [lang, name] :
         {std::pair("ja_JP.eucJP", "xx.xx@x"), {"pl_PL", "xx.cp1250@x"}}) {
        const auto of_locale = [name = name] {
            return setlocale(LC_ALL, ""), corrected("xx@x") == name;
        };
        EXPECT_TRUE(test::in_fresh_locale(lang, of_locale)) << lang;
    }
}

TEST(CodeSetNames, SameLanguageKnowsThreeGroups) {
    const std::string groups = "___jjj_cccckkk________________";
    for (size_t a = 0; a < groups.size(); ++a) {
        for (size_t b = 0; b < groups.size(); ++b)
            EXPECT_EQ(sameLanguage(int(a), int(b)), groups[a] == groups[b] && groups[a] != '_');
    }
}

} // namespace
