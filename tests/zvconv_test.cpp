#include <gtest/gtest.h>

#include <sys/wait.h>

#include <filesystem>

#include "mbutil.h"
#include "support/folder.h"
#include "support/oracle.h"

namespace {

using test::content;
using test::Folder;
using test::write_file;

// The exit status of a shell command whose standard output and error go to files of the folder.
int run(const Folder& folder, const std::string& arguments) {
    const std::string command =
        "cd " + folder / "" + " && " ZVUTIL_ZVCONV " " + arguments + " >stdout 2>stderr";
    const int status = system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string sample(const std::string& name) { return content(ZVUTIL_TEXTS "/" + name + ".txt"); }

TEST(Zvconv, ConvertsTheSampleTextsAsIconvDoes) {
    const struct {
        const char *from, *to, *sample, *iconv_from, *iconv_to;
    } cases[] = {
        {"auto", "EUC", "japanese.sjis", "SJIS", "EUC-JP"},
        {"auto", "SJIS", "japanese.euc", "EUC-JP", "SJIS"},
        {"auto", "EUC", "japanese.jis", "ISO-2022-JP", "EUC-JP"},
        {"BIG5", "EUC_H", "chinese.big5", "BIG5", "EUC-TW"},
        {"EUC_H", "BIG5", "chinese.euctw", "EUC-TW", "BIG5"},
        {"8859_5", "1251", "russian.8859-5", "ISO-8859-5", "CP1251"},
        {"8859_2", "1250", "polish.8859-2", "ISO-8859-2", "CP1250"},
    };
    const Folder folder;
    for (const auto& c : cases) {
        const std::string text = sample(c.sample);
        write_file(folder / "in", text);
        EXPECT_EQ(run(folder, std::string("-f ") + c.from + " -t " + c.to + " -o out <in"), 0);
        EXPECT_EQ(content(folder / "out"), test::iconv_text(c.iconv_from, c.iconv_to, text))
            << c.sample;
        EXPECT_EQ(content(folder / "stderr"), "");
        if (std::string(c.from) != "auto") continue;
        // Detection works on what cannot be positioned, too.
        EXPECT_EQ(run(folder,
                      "-l && cat in | " ZVUTIL_ZVCONV " -f auto -o piped -t " + std::string(c.to)),
                  0);
        EXPECT_EQ(content(folder / "piped"), content(folder / "out"));
    }
}

TEST(Zvconv, LongLinesAreNeverSplitInsideACharacter) {
    const Folder folder;
    std::string euc;
    for (int i = 0; i < 40000; ++i)
        euc += i % 5 == 0 ? "a" : i % 7 == 0 ? "\x8E\xB1" : "\xB0\xA1\xC6\xFC";
    std::string jis(euc.size() * 3 + 4, '\0');
    jis = convertStrExt(euc.c_str(), ZV_EUC, jis.data(), ZV_JIS);
    std::string wide(jis.size(), '\0'); // with full-width katakana, as JIS holds them
    wide = convertStrExt(jis.c_str(), ZV_JIS, wide.data(), ZV_EUC);
    for (size_t phase = 0; phase < 5; ++phase) {
        const std::string padding(phase, 'x');
        write_file(folder / "jis", padding + jis);
        EXPECT_EQ(run(folder, "-f JIS -t EUC jis"), 0);
        EXPECT_EQ(content(folder / "stdout"), padding + wide);
        write_file(folder / "euc", padding + euc + "\r\n");
        EXPECT_EQ(
            run(folder, "-f EUC -t SJIS -o sjis euc && " ZVUTIL_ZVCONV " -f SJIS -t EUC sjis"), 0);
        EXPECT_EQ(content(folder / "stdout"), padding + euc + "\r\n");
    }
    EXPECT_EQ(run(folder, "-f EUC -t SJIS -s euc"), 1);
    EXPECT_NE(content(folder / "stderr").find("too long"), std::string::npos);
}

TEST(Zvconv, LayoutStaysAndReplacedCharactersAreCounted) {
    const Folder folder;
    const std::string text("\xE4\tx\r\n\0\xB5\xA4\n", 10);
    write_file(folder / "in", text);
    EXPECT_EQ(run(folder, "-f 1251 -t 8859_5 in"), 0);
    EXPECT_EQ(content(folder / "stdout"), std::string("\xD4\tx\r\n\0\x0A\x01\n", 10));
    EXPECT_NE(content(folder / "stderr").find("2 characters that 8859_5 lacks"), std::string::npos);
    write_file(folder / "in", std::string("\xD4\tx\r\n\0\x01", 7));
    EXPECT_EQ(run(folder, "-f 8859_5 -t 1251 in"), 0);
    EXPECT_EQ(content(folder / "stdout"), std::string("\xE4\tx\r\n\0\xA4", 7));
}

TEST(Zvconv, SubjectsAreReadByAMailProgram) {
    const Folder folder;
    const struct {
        const char *options, *sample, *charset;
    } cases[] = {{"-f auto -t SJIS -s", "japanese.jis", "ISO-2022-JP"},
                 {"-f EUC -t EUC -s", "japanese.euc", "EUC-JP"},
                 {"-f 8859_5 -t 1251 -s", "russian.8859-5", "ISO-8859-5"},
                 {"-f 8859_2 -t 8859_2 -s", "polish.8859-2", "ISO-8859-2"}};
    for (const auto& c : cases) {
        std::string text = sample(c.sample);
        // Half-width katakana come back full-width.
        if (std::string(c.charset) == "EUC-JP") text = text.substr(0, text.find('\n') + 1);
        write_file(folder / "in", text);
        ASSERT_EQ(run(folder, std::string(c.options) + " in"), 0);
        EXPECT_EQ(test::output_of("PYTHONIOENCODING=utf-8 python3 " ZVUTIL_TEXTS
                                  "/../read_subjects.py <" +
                                  folder / "stdout"),
                  test::iconv_text(c.charset, "UTF-8", text))
            << c.sample;
    }
}

TEST(Zvconv, FailuresAreToldAndLeaveNothingBehind) {
    const Folder folder;
    write_file(folder / "in", "\x88\x9F\n");
    write_file(folder / "kept", "kept");
    const struct {
        const char *arguments, *message;
    } cases[] = {
        {"-f NOSUCH -t EUC -o out in", "unknown code set 'NOSUCH'"},
        {"-f SJIS -t sjis -o out in", "unknown code set 'sjis'"},
        {"-f SJIS -t BIG5 -o kept in", "no conversion from SJIS to BIG5"},
        {"-f SJIS -t EUC -o kept missing", "missing: No such file or directory"},
        {"-f SJIS -t EUC -o kept .", "Is a directory"},
        {"-f SJIS -t EUC -o /dev/full in", "No space left on device"},
        {"-f SJIS -t EUC in >/dev/full 2>stderr #", "No space left on device"},
        {"-f SJIS -t EUC -o no/such in", "No such file or directory"},
        {"-f SJIS -t EUC -o kept in <&- -q", "usage"},
        {"-f SJIS", "usage"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(run(folder, c.arguments), 1) << c.arguments;
        EXPECT_NE(content(folder / "stderr").find(c.message), std::string::npos)
            << c.arguments << ": " << content(folder / "stderr");
    }
    EXPECT_EQ(content(folder / "kept"), "kept");
    // A file-size limit stands for the disk that fills up on the way.
    write_file(folder / "long", std::string(200000, 'x'));
    EXPECT_EQ(run(folder,
                  "-l; trap '' XFSZ; ulimit -f 100; " ZVUTIL_ZVCONV " -f SJIS -t EUC -o kept long"),
              1);
    EXPECT_EQ(content(folder / "kept"), "kept");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / ""), {}), 5)
        << "in, kept, long, stdout, stderr";
}

TEST(Zvconv, ListsCodeSetsThatTheLibraryKnows) {
    const Folder folder;
    EXPECT_EQ(run(folder, "-l"), 0);
    const std::string list = content(folder / "stdout");
    EXPECT_NE(list.find("SJIS  to JIS, EUC\n"), std::string::npos) << list;
    EXPECT_NE(list.find("8859_5  to 1251\n"), std::string::npos);
}

} // namespace
