#include <gtest/gtest.h>

#include <clocale>
#include <map>

#include "mbutil.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "zvosutil.h"

namespace {

int code_set_of(const std::string& name) {
    return mbGetMIMECodeSet(test::GuardedText(name).data());
}

// Code sets stand by their numbers here.
std::string charset_of(int code_set) {
    const std::map<int, const char*> asian = {
        {3, "jp"}, {7, "cn"}, {9, "cn"}, {11, "kr"}, {12, "kr"}};
    if (asian.count(code_set)) return std::string("iso-2022-") + asian.at(code_set);
    const bool iso = code_set >= ZV_8859_2 && code_set <= ZV_8859_10;
    if (iso) return "iso-8859-" + std::to_string(code_set - 12);
    const bool windows = code_set >= ZV_CP1250 && code_set <= ZV_CP1258; // without 1252
    return windows ? "cp-" + std::to_string(code_set + (code_set < ZV_CP1253 ? 1227 : 1228))
                   : "iso-8859-1";
}

TEST(MailCharsets, NameCodeSetsAndAreRead) {
    for (const char* name : {"us-ascii", "utf-8", "cp1251", "cp-1252", "iso-8859-11", "\x82\xA0"})
        EXPECT_EQ(code_set_of(name), 0) << name;
    EXPECT_EQ(code_set_of("iso-2022-CN-ext"), ZV_GB);
    EXPECT_EQ(code_set_of("ISO-2022-cn-gb"), ZV_GB);
    EXPECT_EQ(code_set_of("iso-2022-cn-bg5"), ZV_BIG5);
    for (int code_set = -1; code_set <= 70; ++code_set) {
        const std::string name = charset_of(code_set);
        const int owner = code_set == 9 ? 7 : code_set == 11 ? 12 : code_set;
        EXPECT_EQ(mbGetMIMECharset(code_set), name) << code_set;
        EXPECT_EQ(code_set_of(name), name == "iso-8859-1" ? 0 : owner);
        EXPECT_FALSE(code_set_of(name + ";") || code_set_of(name.substr(0, name.size() - 1)));
        EXPECT_STREQ(getTransferEncodingFromCodeSet(code_set), code_set == 3 ? "7bit" : "8bit");
    }
    // The Turkish small form of I is no ASCII letter.
    const auto read = [] { return setlocale(LC_ALL, ""), mbGetMIMECodeSet("ISO-2022-JP"); };
    EXPECT_EQ(test::in_fresh_locale("tr_TR.ISO8859-9", read), ZV_JIS);
}

TEST(CodeSetChoice, ForMailAndForData) {
    std::map<int, int> mail = {{4, 3}, {5, 3}, {6, 3}, {23, 14}, {24, 17}};
    const std::map<int, int> partner = {{4, 5}, {5, 4},   {10, 7},  {7, 10},  {8, 9},
                                        {9, 8}, {13, 12}, {12, 13}, {24, 17}, {17, 24}};
    for (int a = -1; a <= 70; ++a) {
        mail.emplace(a, a >= ZV_JIS && a <= ZV_CP1258 ? a : 0);
        EXPECT_EQ(mbGetCodeSetForMail(a), mail[a]) << a;
        for (int b = -1; b <= 70; ++b)
            EXPECT_EQ(mbGetCodeSetForData(a, b), partner.count(a) && partner.at(a) == b ? b : a);
    }
}

TEST(DocumentCharsets, AreRegisteredNamesInTheStatedRoom) {
    static_assert(sizeof(ConvToCharset) == 36);
    std::map<int, std::string> charsets = {{ZV_8859_10, ""}, {ZV_EUC_OR_SJIS, ""}, {31, ""}};
    for (const ConvToCharset* row = _ConvToCharsetTable; row->converter[0] != '\0'; ++row) {
        EXPECT_TRUE(test::iconv_text(row->charset, "UTF-8", "zv")) << row->charset;
        charsets.emplace(row->code_set, row->charset);
    }
    EXPECT_EQ(charsets.size(), 34u + 3);
    EXPECT_EQ(charsets[ZV_WESTERN] + charsets[ZV_KSC_5601_87] + charsets[ZV_EUC_K],
              "windows-1252euc-kreuc-kr");
    for (const auto& [code_set, charset] : charsets) {
        test::GuardedRoom room(22);
        SetCharset(room.data(), code_set);
        EXPECT_EQ(room.text(), charset) << code_set;
    }
}

TEST(DocumentCharsets, ParsersReadTheDeclaration) {
    if (test::output_of("xmllint --version 2>&1").find("using libxml") == std::string::npos)
        GTEST_SKIP() << "there is no xmllint";
    const struct {
        int code_set;
        const char *charset, *text;
    } cases[] = {{ZV_EUC, "EUC-JP", "日本"},   {ZV_SJIS, "SHIFT_JIS", "日本"},
                 {ZV_BIG5, "BIG5", "中文"},    {ZV_GB, "GBK", "中文"},
                 {ZV_EUC_K, "EUC-KR", "한국"}, {ZV_WESTERN, "CP1252", "é€"},
                 {ZV_8859_1, "CP1252", "é€"},  {ZV_8859_2, "CP1250", "łž"},
                 {ZV_8859_4, "CP1257", "ģų"},  {ZV_8859_5, "CP1251", "Журнал"},
                 {ZV_8859_7, "CP1253", "αβ"},  {ZV_8859_9, "ISO-8859-9", "ğ"},
                 {ZV_UTF_8, "UTF-8", "日é"},   {ZV_JIS, "ISO-2022-JP", "日本"},
                 {ZV_EUC_H, "EUC-TW", "中文"}, {ZV_CP1251, "CP1251", "Журнал"}};
    const test::Folder folder;
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        const std::string text = test::iconv_text("UTF-8", c.charset, c.text).value();
        const std::string document =
            R"(<?xml version="1.0" encoding="UTF-16"?>  <r>)" + text + "</r>";
        char* result = nullptr;
        SetEncodingForXMLDoc(document.c_str(), c.code_set, &result);
        ASSERT_TRUE(result);
        test::write_file(folder / "document", result);
        free(result);
        EXPECT_EQ(test::output_of("xmllint --xpath '//r/text()' " + (folder / "document")),
                  c.text + std::string("\n"))
            << c.charset;
    }
}

} // namespace
