// What zvconv makes of text: every pair of encodings, faults, detection, line ends, katakana.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <sstream>
#include <vector>

#include "support/zvconv.h"

namespace {

using namespace test;
using ZvconvText = WithConverters;

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line + "\n");
    return lines;
}

TEST_F(ZvconvText, UnicodeIsWhatIconvMakesAndComesBack) {
    const Zvconv tool;
    for (const auto& c : kSamples) {
        // JIS as the library writes it.
        const std::string text = c.name == std::string("JIS")
                                     ? tool.convert("-f EUC -t JIS", sample("japanese.euc"))
                                     : sample(c.sample);
        for (const std::string unicode : {"UTF-8", "UTF-16", "UTF-16BE", "UTF-32", "utf7"}) {
            const std::string encoded =
                tool.convert("-f " + std::string(c.name) + " -t " + unicode, text);
            EXPECT_EQ(encoded, iconv_text(c.iconv, unicode.c_str(), text)) << c.name << unicode;
            EXPECT_EQ(tool.convert("-f " + unicode + " -t " + c.name, encoded), text)
                << c.name << unicode;
        }
        EXPECT_EQ(tool.read("stderr"), "");
    }
    // All that EUC has, of which Shift-JIS lacks a half.
    std::string euc, all;
    for (int code = 0xA1A1; code <= 0xFEFE; ++code) {
        for (const std::string shift : {"", "\x8F"}) {
            const std::string one = shift + char(code >> 8) + char(code);
            const auto text = iconv_text("EUC-JP", "UTF-8", one);
            euc += text ? one + '\0' : "";
            all += text ? *text + '\0' : "";
        }
    }
    EXPECT_TRUE(tool.convert("-f UTF-8 -t EUC", all) == euc) << tool.read("stderr");
}

TEST_F(ZvconvText, MarksAreUnderstoodAndNotCarriedOn) {
    const Zvconv tool;
    const std::string mark = "\xEF\xBB\xBF", be("\xFE\xFF\0a", 4), le("\xFF\xFE\x61\0", 4);
    EXPECT_EQ(tool.convert("-f UTF-8 -t SJIS", mark + "a"), "a");
    EXPECT_EQ(tool.convert("-f UTF-8 -t UTF-8", mark + "a"), mark + "a");
    const auto own = *iconv_text("ASCII", "UTF-16", "a"); // in this machine's byte order
    EXPECT_EQ(tool.convert("-f UTF-8 -t UTF-16", mark + "a"), own);
    const std::pair<std::string, std::string> marked[] = {
        {"UTF-16", be}, {"UTF-16BE", be}, {"UTF-16", le}, {"UTF-16LE", le}, {"auto", be}};
    for (const auto& [from, text] : marked)
        EXPECT_EQ(tool.convert("-f " + from + " -t EUC", text), "a") << from;
    tool.write("in", "a");
    tool.expect(0, "-f SJIS -t UTF-16 in in");
    EXPECT_EQ(tool.read("stdout"), own + own.substr(2)) << "one mark for all";
}

// All single bytes, both ways, against iconv: a byte stays a control code, becomes what iconv makes
// of it, or is lost where iconv refuses it.
TEST_F(ZvconvText, ControlsStayControls) {
    const Zvconv tool;
    const struct {
        std::string iso, windows;
        const char *iconv_iso, *iconv_windows, *lost_layout;
    } pairs[] = {{"8859_5", "1251", "ISO-8859-5", "CP1251", "\xB4\xB5\xBB"},
                 {"8859_2", "1250", "ISO-8859-2", "CP1250", "\xB7\xBB"}};
    for (const auto& p : pairs) {
        const std::string to_iso = " -f " + p.windows + " -t " + p.iso,
                          to_windows = " -f " + p.iso + " -t " + p.windows;
        std::string all, iso, windows;
        for (int byte = 0; byte < 256; ++byte) {
            all += char(byte);
            const auto is_control = [](char c) { return (c & 0xE0) == 0x80; };
            const std::string one(1, char(byte));
            windows += is_control(one[0]) ? "_" : *iconv_text(p.iconv_iso, p.iconv_windows, one);
            // glibc has control codes where 1250 and ISO 8859 have no character.
            const std::string made = iconv_text(p.iconv_windows, p.iconv_iso, one).value_or("_");
            iso += is_control(made[0]) ? "_" : made;
        }
        for (const auto& [options, expected] : {std::pair(to_iso, iso), {to_windows, windows}}) {
            EXPECT_EQ(tool.convert("--substitute=_" + options, all), expected) << options;
            EXPECT_EQ(tool.convert("--skip" + options, all).find('_', 0x60), all.npos) << options;
        }
        // What becomes control codes comes back, but for what would become layout.
        const std::string text = "\t\r\n" + all.substr(0x80);
        const std::string controls =
            tool.convert("--windows-controls --substitute=_" + to_iso, text);
        const auto count = std::count_if(controls.begin() + 3, controls.end(), [](char c) {
            return (c & 0x60) == 0 && !std::strchr("\t\r\n", c);
        });
        EXPECT_TRUE(tool.says("control codes in " + p.iso + ": " + std::to_string(count) + "\n"))
            << tool.read("stderr");
        std::string back = text;
        for (const char lost : std::string(p.lost_layout))
            back[text.find(lost)] = '_';
        EXPECT_EQ(tool.convert("--windows-controls" + to_windows, controls), back) << p.iso;
        EXPECT_EQ(tool.read("stderr"), "") << p.iso;
    }
}

TEST_F(ZvconvText, FaultsAreLocatedAndReplaced) {
    const Zvconv tool;
    const struct {
        const char *options, *text, *result, *message;
        int status;
    } cases[] = {
        {"-f SJIS -t EUC", "a\n\x88\x9Fx\xFFy\n", "a\n\xB0\xA1x\xFFy\n",
         "2: offset 5: malformed SJIS: FF\n", 1},
        {"-f SJIS -t EUC --skip", "\x88\n\xB1\xA0\n", "\n\x8E\xB1\n",
         "1: offset 0: malformed SJIS: 88\n", 0},
        {"-f SJIS -t JIS --substitute=_", "\x88\x9F\xFF\x88\x9F", "\x1B$B0!\x1B(J_\x1B$B0!\x1B(J",
         "1: offset 2: malformed SJIS: FF", 0},
        {"-f EUC -t SJIS", "\xB0\xA1\x8F\xB0\xA1\n\xE0 \n", "\x88\x9F\?\?\n\xE0 \n",
         "1: offset 2: no counterpart in SJIS: 8F B0 A1", 1},
        {"-f EUC -t SJIS", "\x8E\xB1\xE0\n", "\xB1\xE0\n", "1: offset 2: malformed EUC: E0", 1},
        {"-f EUC -t SJIS --skip", "\xE0\xE0\xE0\xF1\xF1\n", "\xE0\xDE\xE0\xEF\n",
         "offset 4: malformed EUC: F1", 0},
        {"-f EUC -t JIS --skip", "\xB0\xA1\x8F\xB0\xA1\xA0z", "\x1B$B0!\x1B(Jz",
         "1: offset 2: no counterpart in JIS: 8F B0 A1", 0},
        {"-f JIS -t EUC --skip", "\x1B$B0!0\n\x1B(Ia\x1B$(Dab\x1B(Bz\xB0", "\xB0\xA1\nz",
         "1: offset 5: malformed JIS: 30", 0},
        {"-f JIS -t SJIS", "\x1B$B0! 0!\x1B(B\n", "\x88\x9F \x88\x9F\n",
         "1: offset 5: malformed JIS: 20", 1},
        {"-f JIS -t UTF-8", "\x1B$B0!-!0!\x1B(B\n", "\xE4\xBA\x9C\xEF\xBF\xBD\xE4\xBA\x9C\n",
         "1: offset 5: malformed JIS: 2D 21", 1},
        {"-f BIG5 -t EUC_H", "?\xA1\x30\xFE\xFE?\n", "?\xA1\x30\?\??\n",
         "1: offset 1: malformed BIG5: A1", 1},
        {"-f EUC_H -t BIG5 --substitute=--", "\x8E\xB0\xA1\xA1\x8E\xA1\xA1\xA1\xA1\n",
         "--\xA1\x40--\n", "offset 8: malformed EUC_H: A1", 0},
        {"-f EUC_H -t BIG5", "?\x8E\xA2??\n", "?\x8E\xA2??\n", "1: offset 1: malformed EUC_H: 8E",
         1},
        {"-f EUC_H -t BIG5 --skip", "\x8E\xA1\xA4\n\n?", "\xA1\x43\n\n?",
         "1: offset 0: malformed EUC_H: 8E", 0},
        {"-f BIG5 -t EUC_H", "\xA4\xA4\xA4", "\xC4\xE3\xA4", "1: offset 2: malformed BIG5: A4", 1},
        {"-f UTF-8 -t SJIS", "\xE3\x81\xE3\x81\x82\xE2\x82\xAC\n", "?\x82\xA0?\n",
         "1: offset 5: no counterpart in SJIS: E2 82 AC", 1},
        {"-f UTF-8 -t EUC --substitute='\xE3\x80\x93'", "\n\n\xE2\x82\xAC\n", "\n\n\xA2\xAE\n",
         "3: offset 2: no counterpart in EUC: E2 82 AC", 0},
        {"-f SJIS -t UTF-8 --force", "\x88\x9F\xA0z", "\xE4\xBA\x9C\xEF\xBF\xBDz",
         "1: offset 2: malformed SJIS: A0", 0},
        {"-f UTF-8 -t ISO-2022-KR --skip", "a\xE0\xA4\x95\n", "\x1B$)Ca\n",
         "no counterpart in ISO-2022-KR: E0 A4 95", 0},
        {"-f UTF-8 -t EUC", "abc\xE3", "abc?", "1: offset 3: malformed UTF-8: E3", 1},
        {"-f JIS -t UTF-8 --substitute='\n'", "\xFF\n\x1B$B-!\x1B(B\n", "\n\n\n\n",
         "malformed JIS: FF", 0},
        {"-f JIS -t JIS", "\x1B$B0!0\n", "\x1B$B0!0\n", "1: offset 5: malformed JIS: 30", 1},
        {"-f EUC -t EUC", "\xB0\xA1\xB0\n", "\xB0\xA1\xB0\n", "offset 2: malformed EUC: B0", 1}};
    for (const auto& c : cases) {
        tool.write("text", c.text);
        tool.expect(c.status, std::string(c.options) + " text", c.message);
        EXPECT_EQ(tool.read("stdout"), c.result) << c.options;
    }
    // Far behind the beginning, after several blocks; and in units of two bytes.
    tool.convert("-f EUC -t UTF-8", repeated("\xB0\xA1 x\n", 40000) + "\xFF\n");
    EXPECT_TRUE(tool.says("text:40001: offset 200000: malformed EUC: FF")) << tool.read("stderr");
    tool.convert("-f UTF-16LE -t EUC", std::string("\x0A\x00\x0A\x30\x0A\x00\xAC\x20", 8));
    EXPECT_TRUE(tool.says("text:3: offset 6: no counterpart in EUC: AC 20")) << tool.read("stderr");
    tool.convert("-f auto -t UTF-8", repeated("\xA4\xA2\xA4\xA4", 100) + "\xFF\n");
    EXPECT_TRUE(tool.says("text:1: offset 400: malformed EUC: FF")) << "still Japanese";
    // Each is told with --verbose, up to a limit; none of those accepted with -q.
    const std::string bad(100, '\xFF');
    tool.convert("-v -f EUC -t SJIS", bad);
    EXPECT_EQ(lines_of(tool.read("stderr")).size(), 21u);
    EXPECT_TRUE(tool.says("malformed characters of EUC: 100"));
    // Two steps: both places are told, and the text need not exist in the encoding between.
    const std::string both = "\xFF\x1B$B-!\x1B(B x";
    EXPECT_EQ(tool.convert("--substitute=\xE2\x82\xAC -f JIS -t UTF-8", both),
              "\xE2\x82\xAC\xE2\x82\xAC x");
    EXPECT_EQ(tool.convert("-v --skip -f JIS -t UTF-8", both), " x");
    EXPECT_TRUE(tool.says("offset 4: malformed JIS: 2D 21")) << tool.read("stderr");
    tool.convert("-q --skip --skip -f EUC -t SJIS", bad);
    EXPECT_EQ(tool.read("stderr"), "");
}

TEST_F(ZvconvText, EveryNameOfAnEncodingConverts) {
    const Zvconv tool;
    tool.expect(0, "--list");
    const std::vector<std::string> lines = lines_of(tool.read("stdout"));
    EXPECT_EQ(lines.size(), 31u);
    tool.write("in", "a");
    for (const std::string& line : lines) {
        std::istringstream names(line.substr(0, line.find(' ')) +
                                 line.substr(line.find("also") + 4));
        for (std::string name; names >> name;) {
            std::transform(name.begin(), name.end(), name.begin(),
                           [](char c) { return std::toupper(c); });
            tool.expect(0, "-f UTF-8 -o out in -t " + name);
            tool.expect(0, "-t UTF-8 out -f " + name);
            EXPECT_EQ(tool.read("stdout"), "a") << name;
        }
    }
    EXPECT_EQ(tool.convert("-f cp932 -t utf8", "\\\x87\x40"), "\\\xE2\x91\xA0")
        << "the vendor's table";
    EXPECT_EQ(tool.convert("--skip -f cp1252 -t latin1", "\x80\xE9"), "\xE9") << "C1 is no euro";
}

TEST_F(ZvconvText, GuessesNameEncodingAndLineEnds) {
    const Zvconv tool;
    EXPECT_EQ(tool.convert("-f auto -t UTF-16BE", "a\\b~"), std::string("\0a\0\\\0b\0~", 8));
    for (const auto& c : kSamples)
        tool.write(c.name, sample(c.sample));
    tool.write("ascii", "plain\r\n");
    tool.write("mixed", "a\r\nb\nc\r");
    tool.write("utf16", std::string("\xFF\xFE\x42\x30\x0D\0\x0A\0", 8));
    tool.write("far", std::string(300000, 'x') + "\r" + sample("japanese.sjis"));
    tool.expect(0, "--guess SJIS EUC JIS ascii mixed utf16");
    EXPECT_EQ(tool.read("stdout"),
              "SJIS: SJIS (LF)\nEUC: EUC (LF)\nJIS: JIS (LF)\nascii: ASCII (CRLF)\n"
              "mixed: ASCII (mixed)\nutf16: UTF-16 (CRLF)\n");
    tool.expect(1, "--guess 8859_5 8859_2 SJIS");
    EXPECT_EQ(tool.read("stdout"), "SJIS: SJIS (LF)\n") << "neither Russian nor Polish is Japanese";
    tool.write("words", "warto\xB6\xE6 na po\xB3\xB1\x63zenie\n");
    tool.expect(1, "--guess words", "neither UTF-8 nor"); // letters with accents in twos
    tool.expect(0, "-V && cat far | " ZVUTIL_ZVCONV " --guess");
    EXPECT_NE(tool.read("stdout").find("standard input: SJIS (mixed)\n"), std::string::npos);
    EXPECT_EQ(tool.convert("-f auto -t UTF-8", "\x82\xA0\\~\xB1"), "\xE3\x81\x82\\~\xEF\xBD\xB1")
        << "as EUC and JIS have it";
    // What comes through a pipe is converted before the pipe ends.
    tool.write("long", std::string(2 << 20, '\xA4'));
    EXPECT_EQ(tool.run("-V; (cat long; for i in $(seq 100); do [ -s out ] && exit; sleep 0.1; done;"
                       "echo late) | " ZVUTIL_ZVCONV " -f auto -t EUC >out; tail -c 5 out"),
              0);
    EXPECT_TRUE(tool.read("stdout").ends_with("\xA4")) << "late";
    // No line of UTF-8 is taken for anything else; Japanese lines are what they are or an error.
    for (const auto& c : kSamples) {
        for (const std::string& line : lines_of(sample(c.sample))) {
            const std::string utf8 = *iconv_text(c.iconv, "UTF-8", line);
            const bool japanese = std::string(c.sample).starts_with("japanese");
            EXPECT_EQ(tool.convert("-v -f auto -t UTF-8", utf8), utf8);
            EXPECT_TRUE(tool.says("text: taken as UTF-8 for being well-formed")) << utf8;
            EXPECT_EQ(tool.convert("-f auto -t UTF-8", line), japanese ? utf8 : "") << utf8;
            EXPECT_EQ(tool.says("say with -f"), !japanese) << utf8;
        }
    }
}

TEST_F(ZvconvText, LineEndsAndKatakanaAreMadeAlike) {
    const Zvconv tool;
    const std::string lf = repeated("abc\n", 60000), crlf = repeated("abc\r\n", 60000),
                      mixed = repeated("abc\nabc\r\nabc\r\n", 20000);
    for (const std::string end : {"", "\r", "x\ry", "\r\r\n"}) {
        SCOPED_TRACE(testing::PrintToString(end));
        const std::string ends_lf = end == "\r\r\n" ? "\r\n" : end;
        EXPECT_TRUE(tool.convert("-f SJIS -t EUC --line-ends=lf", mixed + end) == lf + ends_lf);
        EXPECT_TRUE(tool.convert("-f SJIS -t UTF-8 --line-ends=crlf", mixed + end) == crlf + end);
        EXPECT_TRUE(tool.convert("-f SJIS -t EUC --line-ends=keep", mixed + end) == mixed + end);
        EXPECT_TRUE(tool.convert("-f ASCII -t UTF-16 --line-ends=crlf", mixed + end) ==
                    iconv_text("ASCII", "UTF-16", crlf + end));
    }
    const std::string half = "\xB6\xDE\xCA\xDF\xB1 \x88\x9F\xB1\n",
                      full = "\x83K\x83p\x83\x41 \x88\x9F\x83\x41\n";
    const std::string euc = tool.convert("-f SJIS -t EUC", half);
    for (const std::string to : {"SJIS", "EUC", "JIS", "UTF-8", "UTF-16"}) {
        const std::string expected = tool.convert("-f SJIS -t " + to, full);
        EXPECT_EQ(tool.convert("-f SJIS --katakana=full -t " + to, half), expected) << to;
        EXPECT_EQ(tool.convert("-f EUC --katakana=full -t " + to, euc), expected) << to;
    }
    const std::string utf8 = tool.convert("-f SJIS -t UTF-8", half);
    EXPECT_EQ(tool.convert("-f UTF-8 -t SJIS --katakana=full", utf8), full);
    EXPECT_EQ(tool.convert("-f UTF-8 -t SJIS --katakana=keep", utf8), half);
}

// What cuts a stream among machines may rely on: cut at any line ends, the parts give what the
// whole gives, whatever the encodings.
TEST(ZvconvParts, CutAtLineEndsGiveTheWhole) {
    const Zvconv tool;
    std::mt19937 random(1);
    std::vector<std::pair<std::string, std::string>> texts = {
        {"UTF-8", tool.convert("-f EUC -t UTF-8", sample("japanese.euc"))}};
    for (const auto& c : kSamples)
        texts.emplace_back(c.name, sample(c.sample));
    for (const auto& [from, text] : texts) {
        const bool japanese =
            from.find("JIS") != std::string::npos || from == "EUC" || from == "UTF-8";
        for (const std::string to :
             {"UTF-8", japanese ? "JIS" : "UTF-8", japanese ? "EUC" : from.c_str()}) {
            const std::string options = "-f " + from + " -t " + to;
            const std::string whole = tool.convert(options, text + "\n" + text);
            std::string parts, part;
            for (const std::string& line : lines_of(text + "\n" + text)) {
                part += line;
                if (random() % 3 != 0)
                    continue;
                parts += tool.convert(options, part);
                part.clear();
            }
            EXPECT_EQ(parts + tool.convert(options, part), whole) << options;
        }
    }
    if (tool.run("-V && parallel --version") != 0)
        GTEST_SKIP() << "no GNU parallel here";
    const std::string text = repeated(sample("japanese.jis"), 10100);
    tool.write("jis", text);
    tool.expect(0, "-V && parallel --will-cite --pipe --keep-order --block 200k -j 2 " ZVUTIL_ZVCONV
                   " -f JIS -t EUC <jis >parts #");
    EXPECT_TRUE(tool.convert("-f JIS -t EUC", text) == tool.read("parts"));
}

} // namespace
