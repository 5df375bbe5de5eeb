#include <gtest/gtest.h>

#include <clocale>
#include <map>
#include <string>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

std::string upper(std::string text) {
    for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

int code_set_of(const std::string& name) {
    return mbGetMIMECodeSet(test::GuardedText(name).data());
}

TEST(MailCharsets, EveryCodeSet) {
    std::map<int, std::string> names = {{ZV_JIS, "iso-2022-jp"},
                                        {ZV_GB, "iso-2022-cn"},
                                        {ZV_BIG5, "iso-2022-cn"},
                                        {ZV_KSC_5601_87, "iso-2022-kr"},
                                        {ZV_KSC_5601_92, "iso-2022-kr"}};
    for (int part = 2; part <= 10; ++part)
        names[ZV_8859_2 + part - 2] = "iso-8859-" + std::to_string(part);
    for (int page = 1250; page <= 1251; ++page)
        names[ZV_CP1250 + page - 1250] = "cp-" + std::to_string(page);
    for (int page = 1253; page <= 1258; ++page)
        names[ZV_CP1253 + page - 1253] = "cp-" + std::to_string(page);
    const std::map<int, int> named_alike = {{ZV_BIG5, ZV_GB}, {ZV_KSC_5601_87, ZV_KSC_5601_92}};

    for (int code_set = -1; code_set <= 70; ++code_set) {
        SCOPED_TRACE(code_set);
        const bool named = names.count(code_set) != 0;
        const std::string name = mbGetMIMECharset(code_set);
        EXPECT_EQ(name, named ? names[code_set] : "iso-8859-1");
        const int owner = named_alike.count(code_set) ? named_alike.at(code_set) : code_set;
        EXPECT_EQ(code_set_of(name), named ? owner : 0);
        EXPECT_EQ(code_set_of(upper(name)), named ? owner : 0);
        EXPECT_EQ(code_set_of(name + ";"), 0);
        EXPECT_EQ(code_set_of(name.substr(0, name.size() - 1)), 0);
        EXPECT_STREQ(getTransferEncodingFromCodeSet(code_set),
                     code_set == ZV_JIS ? "7bit" : "8bit");
    }
}

TEST(MailCharsets, NamesThatAreOnlyRead) {
    EXPECT_EQ(mbGetMIMECodeSet(nullptr), 0);
    EXPECT_EQ(code_set_of(""), 0);
    EXPECT_EQ(MBUTIL_Initialized, 0);
    EXPECT_EQ(code_set_of("iso-2022-CN-ext"), ZV_GB);
    EXPECT_EQ(MBUTIL_Initialized, 1);
    EXPECT_EQ(code_set_of("iso-2022-cn-gb"), ZV_GB);
    EXPECT_EQ(code_set_of("iso-2022-cn-bg5"), ZV_BIG5);
    for (const char* name : {"us-ascii", "utf-8", "cp1251", "cp-1252", "iso-8859-11", "\x82\xA0"})
        EXPECT_EQ(code_set_of(name), 0) << name;
    // The Turkish small form of I is no ASCII letter.
    EXPECT_EQ(test::in_fresh_locale(
                  "tr_TR.ISO8859-9",
                  [] { return setlocale(LC_ALL, ""), mbGetMIMECodeSet("ISO-2022-JP"); }),
              ZV_JIS);
}

TEST(CodeSetChoice, ForMailAndForData) {
    const std::map<int, int> changed = {{ZV_EUC, ZV_JIS},
                                        {ZV_SJIS, ZV_JIS},
                                        {ZV_EUC_OR_SJIS, ZV_JIS},
                                        {ZV_CP1250, ZV_8859_2},
                                        {ZV_CP1251, ZV_8859_5}};
    const int pairs[][2] = {{4, 5}, {10, 7}, {8, 9}, {13, 12}, {24, 17}};
    for (int a = -1; a <= 70; ++a) {
        const int same = a >= ZV_JIS && a <= ZV_CP1258 ? a : 0;
        EXPECT_EQ(mbGetCodeSetForMail(a), changed.count(a) ? changed.at(a) : same) << a;
        for (int b = -1; b <= 70; ++b) {
            int expected = a;
            for (const auto& pair : pairs) {
                if ((a == pair[0] && b == pair[1]) || (a == pair[1] && b == pair[0])) expected = b;
            }
            EXPECT_EQ(mbGetCodeSetForData(a, b), expected) << a << ' ' << b;
        }
    }
}

TEST(DocumentCharsets, AreRegisteredNamesInTheStatedRoom) {
    static_assert(sizeof(ConvToCharset) == 36);
    int rows = 0;
    for (const ConvToCharset* row = _ConvToCharsetTable; row->converter[0] != '\0'; ++row, ++rows) {
        EXPECT_TRUE(test::iconv_text(row->charset, "UTF-8", "zv")) << row->charset;
        test::GuardedRoom room(22);
        SetCharset(room.data(), row->code_set);
        EXPECT_EQ(room.text(), row->charset);
    }
    EXPECT_EQ(rows, 35);
    const std::map<int, std::string> others = {{ZV_WESTERN, "windows-1252"},
                                               {ZV_8859_1, "iso-8859-1"},
                                               {ZV_KSC_5601_87, "euc-kr"},
                                               {ZV_EUC_K, "euc-kr"},
                                               {ZV_8859_10, ""},
                                               {ZV_UTF_8, "utf-8"},
                                               {ZV_EUC_OR_SJIS, ""},
                                               {31, ""}};
    for (const auto& [code_set, charset] : others) {
        test::GuardedRoom room(22);
        SetCharset(room.data(), code_set);
        EXPECT_EQ(room.text(), charset) << code_set;
    }
}

} // namespace
