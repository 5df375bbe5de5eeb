#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "mbutil.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "zvosutil.h"

namespace {

// Grave accents stand for double quotes.
std::string quoted(std::string text) {
    std::replace(text.begin(), text.end(), '`', '"');
    return text;
}

// The document with the declaration of that code set; the text "(nothing)" without a result.
std::string declared(const std::string& text, int code_set) {
    test::GuardedText document(quoted(text));
    char* result = document.data();
    SetEncodingForXMLDoc(document.data(), code_set, &result);
    EXPECT_EQ(document.text(), quoted(text));
    if (result == nullptr) return "(nothing)";
    const std::string block(result, text.size() + 80), shown = result;
    EXPECT_EQ(block, shown + std::string(block.size() - shown.size(), '\0'));
    free(result);
    return shown;
}

TEST(XmlEncoding, OnlyTheDeclarationChanges) {
    const std::string xml = "<?xml version=`1`", rest = " encoding=`x`?>";
    const struct {
        std::string document;
        int code_set;
        const char* result;
    } cases[] = {{"<?xml version='1' encoding=`` standalone=`yes` ?>  \n  <r/>", ZV_8859_9,
                  "<?xml version='1' encoding=`iso-8859-9` standalone=`yes` ?>\n  <r/>"},
                 {xml + " encoding=x`a long old value`?>   <r/>   ", ZV_8859_1,
                  "<?xml version=`1` encoding=`windows-1252`?><r/>   "},
                 {"encoding=" + xml + "?>\t ", 9999, "encoding=``?>\t "},
                 {xml + "?><r encoding='x'/>", ZV_EUC, "(nothing)"},
                 {xml + " encoding='x'?>", ZV_EUC, "(nothing)"},
                 {xml + " encoding=`x` >", ZV_EUC, "(nothing)"},
                 {"<?xml  version=`1`" + rest, ZV_EUC, "(nothing)"},
                 {"<?XML version=`1`" + rest, ZV_EUC, "(nothing)"},
                 {"", ZV_EUC, "(nothing)"}};
    for (const int current : {int(ZV_WESTERN), int(ZV_SJIS)}) {
        InitMbutilExt(current);
        for (const auto& c : cases) EXPECT_EQ(declared(c.document, c.code_set), quoted(c.result));
        // 83 65 is one character of Shift-JIS.
        EXPECT_EQ(declared(xml + " \x83\x65ncoding=`x`?>", ZV_EUC) == "(nothing)",
                  current == ZV_SJIS);
    }
    for (size_t before = 0; before < 100; ++before) {
        const std::string comment(before, '-'), blanks(before, ' ');
        EXPECT_EQ(declared(comment + xml + rest + blanks + "\x83\x41", ZV_SJIS),
                  before + (xml + rest).size() > 80
                      ? "(nothing)"
                      : comment + quoted(xml + " encoding=`shift_jis`?>\x83\x41"))
            << "only 80 bytes are searched";
    }
    char old, *result = &old;
    SetEncodingForXMLDoc(nullptr, ZV_EUC, &result);
    EXPECT_EQ(result, nullptr);
}

TEST(XmlEncoding, ParsersReadTheResult) {
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
        const std::string document = "<?xml version=`1.0` encoding=`UTF-16`?>  <r>" + text + "</r>";
        test::write_file(folder / "document", declared(document, c.code_set));
        EXPECT_EQ(test::output_of("xmllint --xpath '//r/text()' " + (folder / "document")),
                  c.text + std::string("\n"))
            << c.charset;
    }
}

} // namespace
