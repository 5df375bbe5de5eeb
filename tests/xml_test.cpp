#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "mbutil.h"
#include "support/failing_allocation.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/temporary_file.h"
#include "zvosutil.h"

namespace {

const std::string kNothing = "(nothing)";

// Grave accents stand for double quotes.
std::string quoted(std::string text) {
    std::replace(text.begin(), text.end(), '`', '"');
    return text;
}

std::string with_encoding(const std::string& text, int code_set) {
    test::GuardedText document(quoted(text));
    char* result = document.data();
    SetEncodingForXMLDoc(document.data(), code_set, &result);
    EXPECT_EQ(document.text(), quoted(text));
    if (result == nullptr) return kNothing;
    const std::unique_ptr<char, decltype(&free)> owner(result, free);
    const std::string block(result, text.size() + 80);
    EXPECT_EQ(block.find_first_not_of('\0', strlen(result)), std::string::npos);
    return result;
}

TEST(XmlEncoding, OnlyTheDeclarationChanges) {
    const struct {
        const char* document;
        int code_set;
        const char* result;
    } cases[] = {
        {"<?xml version=`1.0` encoding=`UTF-8`?>\n<r/>", ZV_EUC,
         "<?xml version=`1.0` encoding=`euc-jp`?>\n<r/>"},
        {"<?xml version='1' encoding=`` standalone=`yes` ?>  \n  <r/>", ZV_8859_9,
         "<?xml version='1' encoding=`iso-8859-9` standalone=`yes` ?>\n  <r/>"},
        {"<?xml version=`1` encoding=x`a long old value`?>   <r/>   ", ZV_8859_1,
         "<?xml version=`1` encoding=`windows-1252`?><r/>   "},
        {"encoding=<?xml version=`1`?>\t ", 9999, "encoding=``?>\t "},
    };
    const char* const unchanged[] = {
        "<?xml version=`1`?><r encoding='x'/>", "<?xml version=`1` encoding='x'?>",
        "<?xml version=`1` encoding=`x` >",     "<?xml  version=`1` encoding=`x`?>",
        "<?XML version=`1` encoding=`x`?>",     ""};
    for (int current : {int(ZV_WESTERN), int(ZV_SJIS)}) {
        InitMbutilExt(current);
        for (const auto& c : cases)
            EXPECT_EQ(with_encoding(c.document, c.code_set), quoted(c.result));
        for (const char* document : unchanged)
            EXPECT_EQ(with_encoding(document, ZV_EUC), kNothing) << document;
        // 83 65 is one character of Shift-JIS.
        EXPECT_EQ(with_encoding("<?xml version=`1` \x83\x65ncoding=`x`?>", ZV_EUC) == kNothing,
                  current == ZV_SJIS);
    }
    char old, *result = &old;
    SetEncodingForXMLDoc(nullptr, ZV_EUC, &result);
    EXPECT_EQ(result, nullptr);
}

TEST(XmlEncoding, OnlyTheFirst80BytesAreSearched) {
    InitMbutilExt(ZV_SJIS);
    for (size_t before = 0; before < 100; ++before) {
        const std::string comment(before, '-'),
            declaration = "<?xml version=`1` encoding=`UTF-8`?>";
        EXPECT_EQ(
            with_encoding(comment + declaration + std::string(before, ' ') + "\x83\x41", ZV_SJIS),
            before + declaration.size() > 80
                ? kNothing
                : comment + quoted("<?xml version=`1` encoding=`shift_jis`?>\x83\x41"));
    }
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
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        const std::string body = "<r>" + test::iconv_text("UTF-8", c.charset, c.text).value();
        const test::TemporaryFile file(
            with_encoding("<?xml version=`1.0` encoding=`UTF-16`?>  " + body + "</r>", c.code_set));
        EXPECT_EQ(test::output_of(std::string("xmllint --xpath '//r/text()' ") + file.path()),
                  c.text + std::string("\n"))
            << c.charset;
    }
}

TEST(XmlEncoding, WithoutMemoryThereIsNoResult) {
    InitMbutilExt(ZV_EUC);
    const std::string document = quoted("<?xml version=`1` encoding=`x`?>");
    const auto operation = [&] {
        char* result;
        SetEncodingForXMLDoc(document.c_str(), ZV_EUC, &result);
        return result;
    };
    const auto failed = [](char* result) { EXPECT_EQ(result, nullptr); };
    const long blocks = test::live_blocks();
    free(test::after_each_failing_allocation(operation, failed));
    EXPECT_EQ(test::live_blocks(), blocks);
}

} // namespace
