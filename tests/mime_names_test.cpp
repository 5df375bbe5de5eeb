#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

int code_set_of(const std::string& name) {
    return mbGetMIMECodeSet(test::GuardedText(name).data());
}

TEST(MailCharsets, BothWays) {
    EXPECT_EQ(mbGetMIMECodeSet(nullptr), 0);
    EXPECT_EQ(code_set_of(""), 0);
    EXPECT_EQ(MBUTIL_Initialized, 0);
    EXPECT_EQ(code_set_of("iso-2022-CN-ext"), ZV_GB);
    EXPECT_EQ(MBUTIL_Initialized, 1);
    EXPECT_EQ(code_set_of("iso-2022-cn-gb"), ZV_GB);
    EXPECT_EQ(code_set_of("iso-2022-cn-bg5"), ZV_BIG5);
    for (const char* name : {"us-ascii", "utf-8", "cp1251", "cp-1252", "iso-8859-11", "\x82\xA0"})
        EXPECT_EQ(code_set_of(name), 0) << name;
    const std::string east_asian[] = {
        "iso-2022-jp", "",           "", "", "iso-2022-cn", "", "iso-2022-cn", "",
        "iso-2022-kr", "iso-2022-kr"};
    for (int code_set = -1; code_set <= 70; ++code_set) {
        std::string name;
        if (code_set >= ZV_JIS && code_set <= ZV_KSC_5601_92)
            name = east_asian[code_set - ZV_JIS];
        else if (code_set >= ZV_8859_2 && code_set <= ZV_8859_10)
            name = "iso-8859-" + std::to_string(code_set - ZV_8859_2 + 2);
        else if (code_set >= ZV_CP1250 && code_set <= ZV_CP1258)
            name =
                "cp-" + std::to_string(code_set - ZV_CP1250 + (code_set < ZV_CP1253 ? 1250 : 1251));
        EXPECT_EQ(mbGetMIMECharset(code_set), name.empty() ? "iso-8859-1" : name) << code_set;
        const int first = code_set == ZV_BIG5          ? ZV_GB
                          : code_set == ZV_KSC_5601_87 ? ZV_KSC_5601_92
                                                       : code_set;
        EXPECT_EQ(code_set_of(name), name.empty() ? 0 : first) << code_set;
        EXPECT_EQ(code_set_of(name + ";"), 0);
        EXPECT_STREQ(getTransferEncodingFromCodeSet(code_set), code_set == 3 ? "7bit" : "8bit");
    }
    // The Turkish small form of I is no ASCII letter.
    const auto in_turkish = [] { return setlocale(LC_ALL, ""), code_set_of("ISO-2022-JP"); };
    EXPECT_EQ(test::in_fresh_locale("tr_TR.ISO8859-9", in_turkish), ZV_JIS);
}

TEST(CodeSetChoice, ForMailAndForData) {
    const int mail[][2] = {{-1, 0},  {0, 0},   {2, 0},   {3, 3},   {4, 3},
                           {5, 3},   {6, 3},   {7, 7},   {22, 22}, {23, 14},
                           {24, 17}, {25, 25}, {30, 30}, {31, 0},  {65, 0}};
    for (const auto& [code_set, expected] : mail)
        EXPECT_EQ(mbGetCodeSetForMail(code_set), expected) << code_set;
    const int data[][3] = {{4, 5, 5},    {5, 4, 4},    {7, 10, 10}, {9, 8, 8},
                           {13, 12, 12}, {17, 24, 24}, {4, 4, 4},   {7, 8, 7},
                           {10, 9, 10},  {14, 23, 14}, {0, 5, 0},   {5, 0, 5}};
    for (const auto& [first, second, expected] : data)
        EXPECT_EQ(mbGetCodeSetForData(first, second), expected) << first << ' ' << second;
}

std::string document_charset(int code_set) {
    test::GuardedRoom room(22);
    SetCharset(room.data(), code_set);
    return room.text();
}

TEST(DocumentCharsets, AreRegisteredNamesInTheStatedRoom) {
    static_assert(sizeof(ConvToCharset) == 36);
    int rows = 0;
    for (const ConvToCharset* row = _ConvToCharsetTable; row->converter[0] != '\0'; ++row, ++rows) {
        EXPECT_TRUE(test::iconv_text(row->charset, "UTF-8", "zv")) << row->charset;
        EXPECT_EQ(document_charset(row->code_set), row->charset);
    }
    EXPECT_EQ(rows, 35);
    EXPECT_EQ(document_charset(ZV_WESTERN), "windows-1252");
    EXPECT_EQ(document_charset(ZV_EUC_K), "euc-kr");
    EXPECT_EQ(document_charset(ZV_8859_10), "");
}

} // namespace
