#include <gtest/gtest.h>

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

std::string with_encoding(const std::string& document, int code_set) {
    test::GuardedText source(document);
    char* result = source.data();
    SetEncodingForXMLDoc(source.data(), code_set, &result);
    EXPECT_EQ(source.text(), document);
    if (result == nullptr)
        return kNothing;
    const std::unique_ptr<char, decltype(&free)> owner(result, free);
    const size_t block = document.size() + 80;
    EXPECT_EQ(std::string(result, block).find_first_not_of('\0', strlen(result)),
              std::string::npos);
    return result;
}

TEST(XmlEncoding, OnlyTheDeclarationChanges) {
    const struct {
        const char* document;
        int code_set;
        std::string result;
    } cases[] = {
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r/>", ZV_EUC,
         "<?xml version=\"1.0\" encoding=\"euc-jp\"?>\n<r/>"},
        {"<?xml version='1.0' encoding=\"\" standalone=\"yes\" ?>  \n  <r/>", ZV_8859_9,
         "<?xml version='1.0' encoding=\"iso-8859-9\" standalone=\"yes\" ?>\n  <r/>"},
        {"<?xml version=\"1.0\" encoding=x\"a long old value\"?>   <r/>   ", ZV_8859_1,
         "<?xml version=\"1.0\" encoding=\"windows-1252\"?><r/>   "},
        {"encoding=<?xml version=\"1\"?>", 9999, "encoding=\"\"?>"},
        {"<?xml version=\"1\" encoding=\"a\"?>\t <r/>", ZV_8859_15,
         "<?xml version=\"1\" encoding=\"iso-8859-15\"?>\t <r/>"},
        {"<?xml version=\"1.0\"?><r encoding='x'/>", ZV_EUC, kNothing},
        {"<?xml version=\"1.0\" encoding='x'?>", ZV_EUC, kNothing},
        {"<?xml version=\"1.0\" encoding=\"x\" >", ZV_EUC, kNothing},
        {"<?xml  version=\"1.0\" encoding=\"x\"?>", ZV_EUC, kNothing},
        {"<?XML version=\"1.0\" encoding=\"x\"?>", ZV_EUC, kNothing},
        {"", ZV_EUC, kNothing},
    };
    for (int current : {int(ZV_WESTERN), int(ZV_EUC)}) {
        InitMbutilExt(current);
        for (const auto& c : cases)
            EXPECT_EQ(with_encoding(c.document, c.code_set), c.result) << c.document;
    }
    char* result = &std::string("old")[0];
    SetEncodingForXMLDoc(nullptr, ZV_EUC, &result);
    EXPECT_EQ(result, nullptr);

    const std::string inside_character = "<?xml version=\"1\" \x83"
                                         "encoding=\"x\"?>";
    InitMbutilExt(ZV_WESTERN);
    EXPECT_NE(with_encoding(inside_character, ZV_SJIS), kNothing);
    InitMbutilExt(ZV_SJIS);
    EXPECT_EQ(with_encoding(inside_character, ZV_SJIS), kNothing) << "83 65 is one character";
}

TEST(XmlEncoding, OnlyTheFirst80BytesAreSearched) {
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    const std::string rewritten = "<?xml version=\"1.0\" encoding=\"shift_jis\"?>";
    InitMbutilExt(ZV_SJIS);
    for (size_t before = 0; before < 100; ++before) {
        const std::string comment(before, '-'), body = std::string(before, ' ') + "\x83\x41<r/>";
        EXPECT_EQ(with_encoding(comment + declaration + body, ZV_SJIS),
                  before + declaration.size() <= 80 ? comment + rewritten + "\x83\x41<r/>"
                                                    : kNothing)
            << before;
    }
}

TEST(XmlEncoding, ParsersReadTheResult) {
    if (test::output_of("xmllint --version 2>&1").find("using libxml") == std::string::npos)
        GTEST_SKIP() << "there is no xmllint";
    const struct {
        int code_set;
        const char *charset, *text;
    } cases[] = {
        {ZV_EUC, "EUC-JP", "日本"},   {ZV_SJIS, "SHIFT_JIS", "日本"},
        {ZV_BIG5, "BIG5", "中文"},    {ZV_GB, "GBK", "中文"},
        {ZV_EUC_K, "EUC-KR", "한국"}, {ZV_WESTERN, "CP1252", "é€"},
        {ZV_8859_1, "CP1252", "é€"},  {ZV_8859_2, "CP1250", "łž"},
        {ZV_8859_4, "CP1257", "ģų"},  {ZV_8859_5, "CP1251", "Журнал"},
        {ZV_8859_7, "CP1253", "αβ"},  {ZV_8859_9, "ISO-8859-9", "ğ"},
        {ZV_UTF_8, "UTF-8", "日é"},   {ZV_JIS, "ISO-2022-JP", "日本"},
        {ZV_EUC_H, "EUC-TW", "中文"},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        const auto body =
            test::iconv_text("UTF-8", c.charset, std::string("<r>") + c.text + "</r>");
        const test::TemporaryFile file(
            with_encoding("<?xml version=\"1.0\" encoding=\"UTF-16\"?>  " + *body, c.code_set));
        EXPECT_EQ(test::output_of(std::string("xmllint --xpath '//r/text()' ") + file.path()),
                  std::string(c.text) + "\n")
            << c.charset;
    }
}

TEST(XmlEncoding, WithoutMemoryThereIsNoResult) {
    InitMbutilExt(ZV_EUC);
    const long before = test::live_blocks();
    char* result = test::after_each_failing_allocation(
        [] {
            char* out;
            SetEncodingForXMLDoc("<?xml version=\"1\" encoding=\"x\"?>", ZV_EUC, &out);
            return out;
        },
        [&](char* failed) {
            EXPECT_EQ(failed, nullptr);
            EXPECT_EQ(test::live_blocks(), before);
        });
    EXPECT_STREQ(result, "<?xml version=\"1\" encoding=\"euc-jp\"?>");
    free(result);
}

} // namespace
