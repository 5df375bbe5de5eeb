#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>

#include <filesystem>
#include <regex>
#include <set>

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
        EXPECT_EQ(tool.run("-qi --backup " + std::string(c.options) + " in"), 0);
        EXPECT_EQ(tool.read("in"), expected);
        EXPECT_EQ(tool.read("in~"), text);
        EXPECT_EQ(tool.run("-i --backup -t EUC -f JIS in"), 1) << "the first backup stays";
        std::filesystem::remove(tool.folder / "in~");
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
    std::string text;
    for (int i = 0; i < 40000; ++i) text += i % 5 == 0 ? "a" : "\xB0\xA1\xC6\xFC";
    for (const std::string padding : {"x", "xx", "xxx", "xxxx"}) {
        tool.write("euc", padding + text + "\r\n");
        for (const std::string code_set : {"JIS", "SJIS"}) {
            EXPECT_EQ(tool.run("-f EUC -o out euc -t " + code_set), 0);
            EXPECT_EQ(tool.run("-t EUC out -f " + code_set), 0);
            EXPECT_EQ(tool.read("stdout"), padding + text + "\r\n") << code_set;
        }
    }
    EXPECT_EQ(tool.run("-f EUC -t SJIS -s euc"), 1);
    EXPECT_TRUE(tool.says("too long"));
}

TEST(Zvconv, LayoutStaysAndReplacedCharactersAreCounted) {
    const Zvconv tool;
    tool.write("in", std::string("\xE4\tx\r\n\0\xB5\xA4\n", 10));
    EXPECT_EQ(tool.run("-f 1251 -t 8859_5 in"), 0);
    EXPECT_EQ(tool.read("stdout"), std::string("\xD4\tx\r\n\0\x0A\x01\n", 10));
    EXPECT_TRUE(tool.says("control codes in 8859_5: 2"));
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
    tool.write("kept", "kept\xFE\xFE");
    tool.write("long", std::string(200000, 'x'));
    const struct {
        int status;
        const char *arguments, *message;
    } cases[] = {{2, "-f NOSUCH -t EUC -o out in", "unknown code set 'NOSUCH'"},
                 {2, "-f SJIS -t utf-8 -o out in", "unknown code set 'utf-8'"},
                 {2, "-f SJIS -t BIG5 -o kept in", "no conversion from SJIS to BIG5"},
                 {2, "-f SJIS -t EUC -o kept in --nosuch", "zvconv: unrecognized option"},
                 {2, "-f SJIS", "-t are needed"},
                 {2, "-f SJIS -t EUC -i -o kept in", "exclude each other"},
                 {2, "-f SJIS -t EUC -i -- -", "not standard input"},
                 {2, "-f SJIS -t EUC -i --backup=/ in", "no suffix"},
                 {2, "-f SJIS -t EUC --backup in", "needs -i or -o"},
                 {1, "-f SJIS -t EUC -o kept in missing", "missing: No such file or directory"},
                 {1, "-f SJIS -t EUC -o kept .", "Is a directory"},
                 {1, "-f SJIS -t EUC -i . kept", ".: Not a regular file"},
                 {1, "-f SJIS -t EUC -i /proc/version", "/proc/version: "},
                 {1, "-f BIG5 -t BIG5 -o kept in", "malformed lines of BIG5: 1"},
                 {1, "-f BIG5 -t euc-tw -i kept", "without counterpart in EUC_H: 1"},
                 {1, "-f SJIS -t EUC -o /dev/full in", "No space left on device"},
                 {1, "-f SJIS -t EUC in >/dev/full 2>stderr #", "No space left on device"},
                 {1, "--help >/dev/full 2>stderr #", "No space left on device"},
                 {1, "-f SJIS -t EUC in >&- 2>stderr #", "standard output: Bad file descriptor"},
                 {1, "-f SJIS -t EUC -o no/such in", "No such file or directory"},
                 // A file-size limit stands for the disk that fills up on the way.
                 {1, "-l; ulimit -f 100; " ZVUTIL_ZVCONV " -f SJIS -t EUC -o kept long", "large"}};
    for (const auto& c : cases) {
        EXPECT_EQ(tool.run(c.arguments), c.status) << c.arguments;
        EXPECT_TRUE(tool.says(c.message)) << c.arguments << ": " << tool.read("stderr");
    }
    for (const int signal : {SIGHUP, SIGTERM, SIGPIPE}) {
        // The pipe as input holds the conversion at its beginning.
        EXPECT_EQ(tool.run("-l; mkfifo pipe; " ZVUTIL_ZVCONV
                           " -f SJIS -t EUC -o kept pipe & exec 3>pipe; until ls .zvconv-*; do :; "
                           "done; kill -" +
                           std::to_string(signal) + " $!; wait $!; s=$?; rm pipe; exit $s #"),
                  128 + signal);
    }
    EXPECT_EQ(tool.read("kept"), "kept\xFE\xFE");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tool.folder / ""), {}), 5)
        << "in, kept, long, stdout, stderr";
}

TEST(Zvconv, AReplacedFileKeepsItsModeAndItsLinks) {
    const Zvconv tool;
    tool.write("in", "\x88\x9F?\n");
    tool.write("empty", "");
    EXPECT_EQ(tool.run("-l; chmod 640 in; ln -s in link; " ZVUTIL_ZVCONV
                       " -f Shift_JIS -t EUC-JP -i link empty; ls -l in link"),
              0);
    EXPECT_EQ(tool.read("in"), "\xB0\xA1?\n");
    const std::string listing = tool.read("stdout");
    EXPECT_NE(listing.find("-rw-r-----"), std::string::npos) << listing;
    EXPECT_NE(listing.find("link -> in"), std::string::npos) << listing;
    EXPECT_EQ(tool.run("-f EUC -t SJIS -o in in empty in"), 0);
    EXPECT_EQ(tool.read("in"), "\x88\x9F?\n\x88\x9F?\n");
    tool.write("in", "\xFE\xFE");
    EXPECT_EQ(tool.run("-f BIG5 -t EUC_H -i --force in"), 0);
    EXPECT_EQ(tool.read("in"), "\?\?");
}

TEST(Zvconv, ProgressIsShownOnATerminalAlone) {
    const Zvconv tool;
    if (tool.run("-l; script -qec true log") != 0) GTEST_SKIP() << "no pseudo-terminals here";
    tool.write("big", std::string(65 << 20, 'x'));
    const std::string command = "-l; script -qec '" ZVUTIL_ZVCONV " -f EUC -t SJIS -o /dev/null ";
    EXPECT_EQ(tool.run(command + "big' log"), 0);
    EXPECT_NE(tool.read("log").find("% of 65 MiB"), std::string::npos) << tool.read("log");
    EXPECT_NE(tool.read("log").find(" \r"), std::string::npos) << "erased";
    EXPECT_EQ(tool.run(command + "-q big' log"), 0);
    EXPECT_EQ(tool.read("log").find('%'), std::string::npos) << tool.read("log");
    EXPECT_EQ(tool.run("-f EUC -t SJIS -o /dev/null big"), 0);
    EXPECT_EQ(tool.read("stderr"), "");
}

// The options that a text names, one a line.
std::string options_in(const std::string& text, const char* pattern) {
    std::set<std::string> names;
    const std::regex option(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), option), end; match != end; ++match)
        names.insert((*match)[1]);
    std::string lines;
    for (const std::string& name : names) lines += name + "\n";
    return lines;
}

TEST(Zvconv, HelpManualAndCompletionNameTheSame) {
    const Zvconv tool;
    EXPECT_EQ(tool.run("--version"), 0);
    EXPECT_EQ(tool.read("stdout"), "zvconv " ZVUTIL_VERSION_TEXT "\n");
    EXPECT_EQ(tool.run("--help"), 0);
    const std::string options = options_in(tool.read("stdout"), "--([a-z-]+)");
    std::string manual = content(ZVUTIL_ZVCONV_FOLDER "/zvconv.1");
    manual = std::regex_replace(manual, std::regex(R"(\\-)"), "-");
    EXPECT_EQ(options_in(manual, "--([a-z-]+)"), options);
    // What the shell would offer for some beginnings of a line.
    const struct {
        const char *words, *offers;
    } cases[] = {{"zvconv --from", "--from-code"},
                 {"zvconv -f S", "SJIS"},
                 {"zvconv --from-code = 8859_2 -t ''", "1250"},
                 {"zvconv -f auto --to-code =", "JIS EUC SJIS"},
                 {"zvconv in", ""}};
    const auto offer = [&](const std::string& words) {
        EXPECT_EQ(tool.run("-l; PATH=$(dirname " ZVUTIL_ZVCONV "):$PATH bash -c '"
                           ". " ZVUTIL_ZVCONV_FOLDER "/zvconv.bash; COMP_WORDS=(\"$@\");"
                           "COMP_CWORD=$(($# - 1)); _zvconv;"
                           "printf \"%s \" \"${COMPREPLY[@]}\" >offers' " +
                           words),
                  0);
        return tool.read("offers");
    };
    for (const auto& c : cases)
        EXPECT_EQ(offer("- " + std::string(c.words)), std::string(c.offers) + " ") << c.words;
    EXPECT_EQ(options_in(offer("- zvconv -"), "--([a-z-]+)"), options);
}

} // namespace
