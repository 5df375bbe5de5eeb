#include <gtest/gtest.h>

#include <clocale>
#include <map>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "zvosutil.h"

namespace {

using namespace test;

int code_set_of(const std::string& name) {
    return mbGetMIMECodeSet(GuardedText(name).data());
}

// Code sets stand by their numbers here, and tables of the guides, which are tested against the
// library, say what each is called.
TEST(MailCharsets, AreReadAsTheyAreWritten) {
    const std::pair<const char*, int> names[] = {
        {"", 0},         {"us-ascii", 0}, {"utf-8", 0},          {"cp1251", 0},
        {"cp-1252", 0},  {"\x82\xA0", 0}, {"iso-8859-11", 0},    {"iso-2022-CN-ext", 7},
        {"cp-1250", 23}, {"cp-1251", 24}, {"ISO-2022-cn-gb", 7}, {"iso-2022-cn-bg5", 9}};
    for (const auto& [name, code_set] : names)
        EXPECT_EQ(code_set_of(name), code_set) << name;
    EXPECT_EQ(mbGetMIMECodeSet(nullptr), 0);
    const std::map<int, int> asian = {{3, 3}, {7, 7}, {9, 7}, {11, 12}, {12, 12}};
    for (int code_set = -1; code_set <= 70; ++code_set) {
        const std::string name = mbGetMIMECharset(code_set);
        const bool european = code_set >= ZV_8859_2 && code_set <= ZV_CP1258;
        const int named = european ? code_set : asian.count(code_set) ? asian.at(code_set) : 0;
        EXPECT_EQ(code_set_of(name), named) << code_set;
        EXPECT_EQ(code_set_of(name + ";"), 0) << name;
        EXPECT_EQ(code_set_of(name.substr(0, name.size() - 1)), 0) << name;
        EXPECT_STREQ(getTransferEncodingFromCodeSet(code_set), code_set == 3 ? "7bit" : "8bit")
            << code_set;
    }
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    ASSERT_NE(setlocale(LC_ALL, "tr_TR.ISO8859-9"), nullptr);
    EXPECT_EQ(mbGetMIMECodeSet("ISO-2022-JP"), ZV_JIS) << "the Turkish small I is no ASCII letter";
}

TEST(CodeSetChoice, ForMailAndForData) {
    const std::map<int, int> partner = {{4, 5}, {5, 4},   {10, 7},  {7, 10},  {8, 9},
                                        {9, 8}, {13, 12}, {12, 13}, {24, 17}, {17, 24}};
    for (int a = -1; a <= 70; ++a) {
        EXPECT_EQ(mbGetCodeSetForMail(a) != 0, a >= ZV_JIS && a <= ZV_CP1258) << a;
        for (int b = -1; b <= 70; ++b)
            EXPECT_EQ(mbGetCodeSetForData(a, b), partner.count(a) && partner.at(a) == b ? b : a)
                << a << ' ' << b;
    }
}

TEST(DocumentCharsets, AreRegisteredNamesInTheStatedRoom) {
    static_assert(sizeof(ConvToCharset) == 36);
    // As registries of character sets give the numbers of the vendor's.
    const std::pair<const char*, const char*> converters[] = {
        {"LATIN-1", "iso-8859-1"},    {"ibm-819", "iso-8859-1"},
        {"ibm-912", "iso-8859-2"},    {"ibm-913", "iso-8859-3"},
        {"ibm-914", "iso-8859-4"},    {"ibm-915", "iso-8859-5"},
        {"ibm-916", "iso-8859-8"},    {"ibm-920", "iso-8859-9"},
        {"ibm-923", "iso-8859-15"},   {"ibm-943", "shift_jis"},
        {"ibm-949", "euc-kr"},        {"ibm-964", "euc-tw"},
        {"ibm-970", "euc-kr"},        {"ibm-1089", "iso-8859-6"},
        {"ibm-1162", "windows-874"},  {"ibm-1363", "cp949"},
        {"ibm-1370", "big5"},         {"ibm-1383", "euc-cn"},
        {"ibm-1386", "gb2312"},       {"ibm-4909", "iso-8859-7"},
        {"ibm-5346", "windows-1250"}, {"ibm-5347", "windows-1251"},
        {"ibm-5348", "windows-1252"}, {"ibm-5349", "windows-1253"},
        {"ibm-5350", "windows-1254"}, {"ibm-5351", "windows-1255"},
        {"ibm-5352", "windows-1256"}, {"ibm-5353", "windows-1257"},
        {"ibm-5354", "windows-1258"}, {"ibm-33722", "euc-jp"},
        {"ISO-2022", "iso-2022-jp"},  {"ISO-2022", "iso-2022-cn"},
        {"ISO-2022", "iso-2022-kr"},  {"UTF8", "utf-8"},
        {"UTF16", "utf-16"}};
    const ConvToCharset* row = _ConvToCharsetTable;
    GuardedRoom room(22);
    for (const auto& [converter, charset] : converters) {
        EXPECT_STREQ(row->converter, converter);
        EXPECT_STREQ(row->charset, charset) << converter;
        EXPECT_TRUE(iconv_text(charset, "UTF-8", "zv")) << charset;
        SetCharset(room.data(), row->code_set);
        EXPECT_EQ(room.text(), charset) << "of code set " << row->code_set;
        ++row;
    }
    EXPECT_STREQ(row->converter, "") << "the end";
    EXPECT_STREQ(row->charset, "");
    SetCharset(room.data(), 31);
    EXPECT_EQ(room.text(), "");
}

} // namespace
