#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>

#include "mbutil.h"
#include "support/calls.h"
#include "support/child.h"
#include "support/guarded.h"

namespace {

using namespace test;

// Code sets stand by their numbers here. Tables of the guides, which are tested against the
// library, say what all of them and all locales are called.
TEST(CurrentCodeSet, StartsUnknownAndThenSetsTheFlags) {
    EXPECT_EQ(MBUTIL_Initialized, 0);
    EXPECT_EQ(MBUTIL_I_Am_MultiByte, 1);
    EXPECT_EQ(MBUTIL_I_Am_Japanese, 0);
    EXPECT_EQ(InitMbutilExt(-1), 0);
    EXPECT_EQ(MBUTIL_Initialized, 1);
    for (int code_set = 0; code_set <= 70; ++code_set) {
        EXPECT_EQ(InitMbutilExt(code_set), code_set - 1) << "the one before";
        const bool japanese = code_set >= 3 && code_set <= 5;
        const bool multibyte = japanese || (code_set >= 7 && code_set <= 13);
        EXPECT_EQ(MBUTIL_I_Am_Japanese, japanese) << code_set;
        EXPECT_EQ(MBUTIL_I_Am_MultiByte, multibyte) << code_set;
        EXPECT_EQ(mbIsJapanese(), japanese) << code_set;
        EXPECT_EQ(mbIsMultiByte(), multibyte) << code_set;
    }
}

// The code set and the decimal point that a process adopts, whose host may have set a locale
// itself.
std::string adopted(const char* lang, const char* character_type, bool over_the_hosts = false) {
    Child process([=](int out) {
        const char* const converters = getenv("GCONV_PATH");
        clearenv();
        if (converters != nullptr)
            setenv("GCONV_PATH", converters, 1);
        setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
        setenv("LANG", lang, 1);
        setenv("LC_CTYPE", character_type, 1);
        if (over_the_hosts) {
            setlocale(LC_ALL, "");
            setenv("LC_CTYPE", "no_SUCH.locale", 1);
        }
        InitMbutil();
        dprintf(out, "%d%s", InitMbutilExt(0), localeconv()->decimal_point);
    });
    return process.finish();
}

TEST(CurrentCodeSet, ComesFromTheCharacterTypeAndAdoptsAllCategories) {
    EXPECT_EQ(adopted("pl_PL", "ja_JP.eucJP"), "4,");
    EXPECT_EQ(adopted("pl_PL", "ja_JP.eucJP", true), "4,") << "the host's stays";
    EXPECT_EQ(adopted("pl_PL", "no_SUCH.locale", true), "0.");
}

TEST(CurrentCodeSet, IsAdoptedByTheFirstCallThatNeedsIt) {
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    setenv("LC_ALL", "ja_JP.eucJP", 1);
    EXPECT_EQ(mbGetLocaleCodeSet(), ZV_WESTERN) << "the process's, not the environment's";
    const auto check = [](bool adopts, const auto&... calls) {
        for (const auto& [text, make] : {calls...}) {
            MBUTIL_Initialized = 0;
            make();
            EXPECT_EQ(MBUTIL_Initialized, adopts) << text;
        }
    };
    unsigned bad;
    char text[400] = "", *rest = nullptr, line[400] = "=41";
    memset(line + 3, '.', 300); // long enough for the kernels
    check(false, CALL(mbGetMIMECodeSet(nullptr)), CALL(mbGetMIMECodeSet("")),
          CALL(mbidxtype("a\x82\xA0", 2, ZV_SJIS)),
          CALL(convertFromQuotedPrintable(text, "a\x80.")),
          CALL(UnixCodingToWindowsCodingExt("\xB0\xA1", text)));
    // NULL wherever it may be given.
    check(true, CALL(mbmaxcharlen()), CALL(mb_mblen(nullptr, 0)), CALL(mbbytesinchar(nullptr)),
          CALL(mbIsMultiByte()), CALL(mbIsJapanese()), CALL(ismbcprint('a')),
          CALL(mb_isleadbyte('a')), CALL(mbGetMIMECodeSet("x")), CALL(mbidx(text, 0)),
          CALL(mbnextidx(text, 0)), CALL(mbnextchar(text, 0)), CALL(mbstrncpy(nullptr, nullptr, 0)),
          CALL(mbstrncpyi(nullptr, nullptr, 0)), CALL(mbstricmp(nullptr, nullptr)),
          CALL(mbstrnicmp(nullptr, nullptr, 0)), CALL(mbcharcmp(nullptr, nullptr, 0)),
          CALL(mbtoupper(text)), CALL(mbtolower(text)), CALL(mbstrtoupper(nullptr)),
          CALL(mbstrtolower(nullptr)), CALL(mbstrchr(nullptr, 0)), CALL(mbstrchrEncr(nullptr, 0)),
          CALL(mbstrrchr(nullptr, 0)), CALL(mbstrstr(nullptr, nullptr)),
          CALL(mbstrrstr(nullptr, nullptr)), CALL(mbstrpbrk(nullptr, nullptr)),
          CALL(mbstrcspn(text, nullptr)), CALL(mbstrtok(nullptr, nullptr)),
          CALL(mbstrtok_r(nullptr, nullptr, &rest)), CALL(mbvalidatestring(nullptr, &bad, ZV_SJIS)),
          CALL(mbvalidatestringtype(nullptr, &bad, 0)),
          CALL(mbconvertnativestring(text, "", ZV_SJIS)),
          CALL(mbconvertfile2native_ex("", "", 0, ZV_SJIS)), CALL(AccumulateAsciiForStr("a")),
          CALL(ConvertMBNumberToSBNumber("", text)), CALL(mbfgets(text, 1, stdin, 0)),
          CALL(mbfputs(nullptr, stdout, 0)), CALL(mbfreadstring(text, 0, stdin)),
          CALL(convertFromQuotedPrintable(text, "=4G")),
          CALL(convertFromQuotedPrintable(line, line)));
    EXPECT_TRUE(mbIsJapanese()) << "no locale";
}

TEST(CodeSetNames, SubstringsDecideInOrder) {
    const std::pair<const char*, int> cases[] = {
        {nullptr, 0},     {"", 0},           {"EUC_WESTERN", 0},  {"EUC_KR", 13},
        {"EUC_GB", 4},    {"xEUCx", 4},      {"xSJISx", 5},       {"GBK", 7},
        {"CP1251", 24},   {"CP1252", 0},     {"ISO-2022-JIS", 3}, {"8859_10", 22},
        {"ISO8859_1", 0}, {"ISO8859_15", 0}, {"sjis", 0},         {"EUC_T", 4},
        {"EUC_Z", 4},     {"EU", 0},         {"SJI", 0},          {"JI", 0},
        {"G", 0},         {"BIG", 0},        {"KSC_5601_8", 0},   {"125", 0},
        {"8859_", 0},     {"SJIS_WESTER", 5}};
    for (const auto& [name, code_set] : cases)
        EXPECT_EQ(mbGetCodeSet(name), code_set) << (name ? name : "NULL");
}

// The same whether it is written beside the name or over it.
std::string corrected(const std::string& locale) {
    const size_t room = 2 * locale.size() + 8;
    std::string name = locale;
    name.resize(room);
    mbGetCorrectedLocaleForUnix(name.data(), name.data());
    EXPECT_EQ(convert_guarded(mbGetCorrectedLocaleForUnix, locale, room), name.c_str()) << locale;
    return name.c_str();
}

TEST(CodeSetNames, CorrectedLocaleNamesTheWindowsCodePage) {
    const std::pair<const char*, const char*> pages[] = {
        {"1", "cp1252"}, {"15", "cp1252"}, {"10", "cp1252"}, {"2", "cp1250"}, {"5", "cp1251"},
        {"4", "cp1257"}, {"13", "cp1257"}, {"7", "cp1253"},  {"9", "cp1254"}};
    setlocale(LC_ALL, "C"); // tells the code page of a name without one
    for (const std::string modifier : {"", "@euro"}) {
        for (const std::string name : {"ISO8859-", "8859_"})
            for (const auto& [part, page] : pages)
                EXPECT_EQ(corrected("xx_XX." + name + part + modifier),
                          std::string("xx_XX.") + page + modifier);
        for (const std::string other : {"ISO8859-8", "ISO8859", "eucJP", "ISO-5", ""})
            EXPECT_EQ(corrected("xx_XX." + other + modifier), "xx_XX." + other + modifier);
        for (const std::string language : {"", "de"})
            EXPECT_EQ(corrected(language + modifier), language + ".cp1252" + modifier);
    }
    EXPECT_EQ(corrected(std::string(92, 'x') + ".8859-1"), std::string(92, 'x') + ".cp1252");
    const std::string long_name = std::string(93, 'x') + ".8859-1";
    EXPECT_EQ(corrected(long_name), long_name);
}

TEST(CodeSetNames, SameLanguageKnowsThreeGroups) {
    const std::string groups = "___jjj_cccckkk________________";
    for (size_t a = 0; a < groups.size(); ++a) {
        for (size_t b = 0; b < groups.size(); ++b)
            EXPECT_EQ(sameLanguage(int(a), int(b)), groups[a] == groups[b] && groups[a] != '_')
                << a << ' ' << b;
    }
}

} // namespace
