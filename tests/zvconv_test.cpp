#include <gtest/gtest.h>

#include <sys/wait.h>

#include <filesystem>

#include "jaconv.h"
#include "support/folder.h"
#include "support/oracle.h"

namespace {

using test::content;
using test::Folder;
using test::write_file;

// A folder in which the tool is run, its standard output and error going to files there.
struct Zvconv {
    Folder folder;

    int run(const std::string& arguments) const {
        const int status = system(
            ("cd " + folder / "" + " && " ZVUTIL_ZVCONV " " + arguments + " >stdout 2>stderr")
                .c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void write(const char* name, const std::string& text) const { write_file(folder / name, text); }
    std::string read(const char* name) const { return content(folder / name); }
    bool says(const char* text) const { return read("stderr").find(text) != std::string::npos; }
};

// The sample texts: what the tool calls their code sets, and what iconv does.
const struct {
    const char *sample, *options, *iconv_from, *iconv_to, *subject_options;
} kSamples[] = {
    {"japanese.sjis", "-f auto -t EUC", "SJIS", "EUC-JP", nullptr},
    {"japanese.euc", "-f auto -t SJIS", "EUC-JP", "SJIS", "-f EUC -t EUC -s"},
    {"japanese.jis", "-f auto -t EUC", "ISO-2022-JP", "EUC-JP", "-f auto -t SJIS -s"},
    {"chinese.big5", "-f BIG5 -t EUC_H", "BIG5", "EUC-TW", nullptr},
    {"chinese.euctw", "-f EUC_H -t BIG5", "EUC-TW", "BIG5", nullptr},
    {"russian.8859-5", "-f 8859_5 -t 1251", "ISO-8859-5", "CP1251", "-f 8859_5 -t 1251 -s"},
    {"polish.8859-2", "-f 8859_2 -t 1250", "ISO-8859-2", "CP1250", "-f 8859_2 -t 8859_2 -s"}};

TEST(Zvconv, ConvertsTheSampleTextsAsIconvAndAMailProgramDo) {
    const Zvconv tool;
    for (const auto& c : kSamples) {
        std::string text = content(std::string(ZVUTIL_TEXTS "/") + c.sample + ".txt");
        const auto expected = test::iconv_text(c.iconv_from, c.iconv_to, text);
        tool.write("in", text);
        EXPECT_EQ(tool.run(std::string(c.options) + " -o out <in"), 0);
        EXPECT_EQ(tool.read("out"), expected) << c.sample;
        EXPECT_EQ(tool.read("stderr"), "");
        // Detection works on what cannot be positioned, too.
        EXPECT_EQ(tool.run(std::string("-l && cat in | " ZVUTIL_ZVCONV " ") + c.options), 0);
        EXPECT_TRUE(tool.read("stdout").ends_with(*expected)) << c.sample;
        if (c.subject_options == nullptr) continue;
        // Half-width katakana come back full-width.
        if (std::string(c.iconv_from) == "EUC-JP") text.resize(text.find('\n') + 1);
        tool.write("in", text);
        EXPECT_EQ(tool.run(std::string(c.subject_options) + " in"), 0);
        const std::string reader =
            "PYTHONIOENCODING=utf-8 python3 " ZVUTIL_TEXTS "/../read_subjects.py <";
        EXPECT_EQ(test::output_of(reader + tool.folder / "stdout"),
                  test::iconv_text(c.iconv_from, "UTF-8", text))
            << c.sample;
    }
}

TEST(Zvconv, LongLinesAreNeverSplitInsideACharacter) {
    const Zvconv tool;
    std::string euc;
    for (int i = 0; i < 40000; ++i)
        euc += i % 5 == 0 ? "a" : i % 7 == 0 ? "\x8E\xB1" : "\xB0\xA1\xC6\xFC";
    std::string jis(euc.size() * 3 + 4, '\0'), wide(jis.size(), '\0');
    jis = euc2jisx(euc.c_str(), jis.data());
    wide = jis2eucx(jis.c_str(), wide.data()); // with full-width katakana, as JIS holds them
    for (size_t phase = 0; phase < 5; ++phase) {
        const std::string padding(phase, 'x');
        tool.write("jis", padding + jis);
        EXPECT_EQ(tool.run("-f JIS -t EUC jis"), 0);
        EXPECT_EQ(tool.read("stdout"), padding + wide);
        tool.write("euc", padding + euc + "\r\n");
        EXPECT_EQ(tool.run("-f EUC -t SJIS -o sjis euc && " ZVUTIL_ZVCONV " -f SJIS -t EUC sjis"),
                  0);
        EXPECT_EQ(tool.read("stdout"), padding + euc + "\r\n");
    }
    EXPECT_EQ(tool.run("-f EUC -t SJIS -s euc"), 1);
    EXPECT_TRUE(tool.says("too long"));
}

TEST(Zvconv, LayoutStaysAndReplacedCharactersAreCounted) {
    const Zvconv tool;
    tool.write("in", std::string("\xE4\tx\r\n\0\xB5\xA4\n", 10));
    EXPECT_EQ(tool.run("-f 1251 -t 8859_5 in"), 0);
    EXPECT_EQ(tool.read("stdout"), std::string("\xD4\tx\r\n\0\x0A\x01\n", 10));
    EXPECT_TRUE(tool.says("2 characters that 8859_5 lacks"));
    tool.write("in", std::string("\xD4\tx\r\n\0\x01", 7));
    EXPECT_EQ(tool.run("-f 8859_5 -t 1251 in"), 0);
    EXPECT_EQ(tool.read("stdout"), std::string("\xE4\tx\r\n\0\xA4", 7));
}

TEST(Zvconv, FailuresAreToldAndLeaveNothingBehind) {
    const Zvconv tool;
    EXPECT_EQ(tool.run("-l"), 0);
    const std::string list = tool.read("stdout");
    EXPECT_NE(list.find("SJIS  to JIS, EUC\n"), std::string::npos) << list;
    EXPECT_NE(list.find("8859_5  to 1251\n"), std::string::npos);
    tool.write("in", "\x88\x9F\n");
    tool.write("kept", "kept");
    // A file-size limit stands for the disk that fills up on the way.
    tool.write("long", std::string(200000, 'x'));
    const struct {
        const char *arguments, *message;
    } cases[] = {{"-f NOSUCH -t EUC -o out in", "unknown code set 'NOSUCH'"},
                 {"-f SJIS -t sjis -o out in", "unknown code set 'sjis'"},
                 {"-f SJIS -t BIG5 -o kept in", "no conversion from SJIS to BIG5"},
                 {"-f SJIS -t EUC -o kept missing", "missing: No such file or directory"},
                 {"-f SJIS -t EUC -o kept .", "Is a directory"},
                 {"-f SJIS -t EUC -o /dev/full in", "No space left on device"},
                 {"-f SJIS -t EUC in >/dev/full 2>stderr #", "No space left on device"},
                 {"-f SJIS -t EUC -o no/such in", "No such file or directory"},
                 {"-f SJIS -t EUC -o kept in <&- -q", "usage"},
                 {"-f SJIS", "usage"},
                 {"-l; trap '' XFSZ; ulimit -f 100; " ZVUTIL_ZVCONV " -f SJIS -t EUC -o kept long",
                  "too large"}};
    for (const auto& c : cases) {
        EXPECT_EQ(tool.run(c.arguments), 1) << c.arguments;
        EXPECT_TRUE(tool.says(c.message)) << c.arguments << ": " << tool.read("stderr");
    }
    EXPECT_EQ(tool.read("kept"), "kept");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tool.folder / ""), {}), 5)
        << "in, kept, long, stdout, stderr";
}

} // namespace
