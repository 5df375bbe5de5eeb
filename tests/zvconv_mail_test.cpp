// Mail headers that zvconv writes and reads.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/zvconv.h"

namespace {

using namespace test;
using ZvconvMail = WithConverters;

TEST_F(ZvconvMail, StandardSubjectsAreReadByAllAndDecodedAgain) {
    const Zvconv tool;
    const struct {
        std::string sample, from, to;
    } cases[] = {{"japanese.euc", "EUC", "EUC"},       {"japanese.sjis", "SJIS", "JIS"},
                 {"japanese.jis", "JIS", "UTF-8"},     {"chinese.big5", "BIG5", "EUC_H"},
                 {"russian.8859-5", "8859_5", "1251"}, {"polish.8859-2", "8859_2", "8859_2"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sample);
        // The sample, all of it in one line, and what needs care at the edges of a word.
        const std::string lines =
            tool.convert("--katakana=keep -t UTF-8 -f " + c.from, sample(c.sample));
        const std::string kanji = lines.substr(0, lines.find('\n'));
        std::string long_line = lines;
        std::replace(long_line.begin(), long_line.end(), '\n', ' ');
        std::string text = lines + "x" + long_line + "x\n" + "Re: " + kanji + " is  it\n" +
                           "two  spaces " + kanji + "\nlast \n x =?x?= _ = ?\n" +
                           std::string(100, 'w') + " " + kanji + "\n" + std::string(70, 'v') + " " +
                           kanji + "\n";
        if (c.from == "SJIS" || c.from == "EUC") // what becomes JIS has full-width katakana
            text = tool.convert("-f JIS -t UTF-8", tool.convert("-f UTF-8 -t JIS", text));
        tool.write("in", text);
        tool.expect(0, "-f UTF-8 -s --standard in -o out -t " + c.to);
        // Folded lines are joined first, as a parser of mail does.
        EXPECT_EQ(tool.subjects_by("sed -z 's/\\n / /g' out"), text);
        std::istringstream folded(tool.read("out"));
        for (std::string line; std::getline(folded, line);) {
            const size_t word = line.find("=?");
            if (word == line.npos)
                continue;
            EXPECT_LE(line.size(), 76u) << line;
            EXPECT_LE(line.find("?= ", word) == line.npos ? line.size() - word : 0, 75u) << line;
        }
        tool.expect(0, "--decode-headers -t UTF-8 out -o decoded");
        EXPECT_EQ(output_of("sed 's/^Subject: //' " + tool.folder / "decoded"), text);
    }
}

TEST_F(ZvconvMail, HeadersAreDecodedFromAnyCharset) {
    const Zvconv tool;
    const struct {
        int status;
        const char *header, *text;
    } cases[] = {
        {0, "Subject: =?UTF-8?Q?a_=E3=81=82?=\n", "Subject: a \xE3\x81\x82\n"},
        {0, "From: =?windows-1250?q?=A3?= <a@b>\r\nTo: x\r\n", "From: \xC5\x81 <a@b>\r\nTo: x\r\n"},
        {0, "A: =?Shift_JIS?B?iJ8=?=\n  =?shift_jis*ja?B?iA==?=\n\t=?SHIFT_JIS?B?nw==?= b\n c\n",
         "A: \xE4\xBA\x9C\xE4\xBA\x9C b c\n"},
        {0, "A: =?ISO-2022-JP?B?GyRCMCEbKEI=?= =?iso-2022-jp?B?GyRCMCE=?= \n",
         "A: \xE4\xBA\x9C\xE4\xBA\x9C \n"},
        {0, "A: =?koi8-r?Q?=C1?=x", "A: \xD0\xB0x"},
        {0, "A: =?x =?utf-8?Q?x\n\nB: =?=?\n", "A: =?x =?utf-8?Q?x\n\nB: =?=?\n"},
        {0, "A: =?utf-8?B?@?= =?utf-8?B?YQ==?=\n", "A: =?utf-8?B?@?= a\n"},
        {0, "\xE3\x81\x82 raw\n", "\xE3\x81\x82 raw\n"},
        {1, "A: =?nosuch?Q?x?= =?utf-8?Q?y?=\n", "A: =?nosuch?Q?x?= y\n"},
        {1, "A: x\nB: =?utf-8?Q?y?=\n =?utf-8?Q?=FF?=\n", "A: x\nB: y\xEF\xBF\xBD\n"}};
    for (const auto& c : cases) {
        tool.write("in", c.header);
        tool.expect(c.status, "--decode-headers -t UTF-8 in");
        EXPECT_EQ(tool.read("stdout"), c.text) << c.header;
    }
    EXPECT_TRUE(tool.says("in:2: offset 5: malformed UTF-8: FF")) << tool.read("stderr");
    EXPECT_EQ(tool.convert("--decode-headers -f EUC -t SJIS", "\xB0\xA1 =?utf-8?B?5LqcCg==?="),
              "\x88\x9F \x88\x9F\n");
    tool.write("in", std::string("a\0b\n", 4));
    tool.expect(1, "-f EUC -t EUC -s --standard in", "in:1: a zero byte in a subject");
    tool.expect(2, "-f EUC -t UTF-7 -s --standard in", "no mail is written in UTF-7");
}

} // namespace
