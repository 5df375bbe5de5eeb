#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <set>

#include "support/oracle.h"
#include "support/zvconv.h"

namespace {

using test::content;
using test::Zvconv;

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
        std::string text = test::sample(c.sample);
        const auto expected = test::iconv_text(c.iconv_from, c.iconv_to, text);
        tool.write("in", text);
        EXPECT_EQ(tool.run(std::string(c.options) + " -o out <in"), 0);
        EXPECT_EQ(tool.read("out"), expected) << c.sample;
        EXPECT_EQ(tool.read("stderr"), "");
        // Detection works on what cannot be positioned, too.
        EXPECT_EQ(tool.run(std::string("-V && cat in | " ZVUTIL_ZVCONV " ") + c.options), 0);
        EXPECT_TRUE(tool.read("stdout").ends_with(*expected)) << c.sample;
        EXPECT_EQ(tool.run("-qi --backup " + std::string(c.options) + " in"), 0);
        EXPECT_EQ(tool.read("in"), expected);
        EXPECT_EQ(tool.read("in~"), text);
        EXPECT_EQ(tool.run("-i --backup -t EUC -f JIS in"), 1) << "the first backup stays";
        std::filesystem::remove(tool.folder / "in~");
        if (c.subject_options == nullptr)
            continue;
        // Half-width katakana come back full-width.
        if (std::string(c.iconv_from) == "EUC-JP")
            text.resize(text.find('\n') + 1);
        tool.write("in", text);
        EXPECT_EQ(tool.run(std::string(c.subject_options) + " in"), 0);
        const std::string reader =
            "PYTHONIOENCODING=utf-8 python3 " ZVUTIL_TEXTS "/../read_subjects.py <";
        EXPECT_EQ(test::output_of(reader + tool.folder / "stdout"),
                  test::iconv_text(c.iconv_from, "UTF-8", text))
            << c.sample;
    }
    EXPECT_NE(tool.read("stdout").find("?=\n \t=?iso-"), std::string::npos) << "the library's form";
}

using ZvconvUnicode = test::WithConverters;

TEST_F(ZvconvUnicode, LongLinesAreNeverSplitInsideACharacter) {
    const Zvconv tool;
    std::string text;
    for (int i = 0; i < 120000; ++i)
        text += i % 5000 == 0 ? "\r" : i % 5 == 0 ? "a" : "\xB0\xA1\xC6\xFC";
    for (const std::string padding : {"x", "xx", "xxx", "xxxx"}) {
        tool.write("euc", padding + text + "\r\n");
        for (const std::string encoding : {"JIS", "SJIS", "UTF-8", "UTF-16"}) {
            EXPECT_EQ(tool.run("-f EUC -o out euc -t " + encoding), 0);
            EXPECT_EQ(tool.run("-t EUC out -f " + encoding), 0);
            EXPECT_TRUE(tool.read("stdout") == padding + text + "\r\n") << encoding;
        }
    }
    EXPECT_EQ(tool.run("-f EUC -t SJIS -s euc"), 1);
    EXPECT_TRUE(tool.says("too long"));
}

TEST(Zvconv, FailuresAreToldAndLeaveNothingBehind) {
    const Zvconv tool;
    tool.write("in", "\x88\x9F\n");
    tool.write("kept", "kept\xFE\xFE");
    tool.write("long", std::string(200000, 'x'));
    const struct {
        int status;
        const char *arguments, *message;
    } cases[] = {
        {2, "-f NOSUCH -t EUC -o out in", "unknown encoding 'NOSUCH'"},
        {2, "-f SJIS -t utff-8 -o out in", "near to it: UTF-8 "},
        {2, "-f SHIFT_JISS -t EUC -o out in", "near to it: SJIS "},
        {2, "-f '' -t EUC -o out in", "unknown encoding ''"},
        {2, "-f UTF-8 -t EUC-JP//IGNORE -o out in", "'EUC-JP//IGNORE': no suffix but --skip"},
        {2, "-f SJIS -t EUC -o kept in --nosuch", "zvconv: unrecognized option"},
        {2, "-f SJIS", "-t are needed"},
        {2, "-f SJIS -t EUC -i -o kept in", "exclude each other"},
        {2, "-f SJIS -t EUC -i -- -", "not standard input"},
        {2, "-f SJIS -t EUC -i --backup=/ in", "no suffix"},
        {2, "-f SJIS -t EUC --backup in", "needs -i or -o"},
        {2, "-f SJIS -t EUC --no-sync in", "--no-sync needs -i or -o"},
        {2, "-f SJIS -t EUC -r .", "-r needs -i"},
        {2, "-f SJIS -t EUC -j 2 in", "-j needs -i"},
        {2, "-f SJIS -t EUC -i -j 0 in", "no number from 1"},
        {2, "-f SJIS -t EUC -i -j 2x in", "'2x' is no number"},
        {2, "-f SJIS -t EUC -i --include=* in", "--include needs -r"},
        {2, "-f SJIS -t EUC --skip --force in", "exclude each other"},
        {2, "-f SJIS -t EUC --line-ends=cr in", "'cr' is none of lf, crlf"},
        {2, "-f SJIS -t EUC --katakana=half in", "neither full nor keep"},
        {2, "-f BIG5 -t EUC_H --katakana=full in", "neither BIG5 nor EUC_H"},
        {2, "-f SJIS -t EUC --standard in", "--standard needs -s"},
        {2, "-f SJIS -t UTF-8 -s in", "with --standard only"},
        {2, "-f SJIS -t UTF-16 -s --standard in", "no mail is written in UTF-16"},
        {1, "-f SJIS -t EUC --substitute=\xE2\x82\xAC in", "cannot be written in EUC"},
        {1, "-f SJIS -t EUC -o kept in missing", "missing: No such file or directory"},
        {1, "-f SJIS -t EUC -o kept .", "Is a directory"},
        {1, "-f SJIS -t EUC -i . kept", ".: Is a directory, which needs -r"},
        {1, "-f SJIS -t EUC -i /dev/null", "/dev/null: Not a regular file"},
        {1, "-f SJIS -t EUC -i /proc/version", "/proc/version: "},
        {1, "-f BIG5 -t BIG5 -o kept in", "malformed characters of BIG5: 2"},
        {1, "-f BIG5 -t euc-tw -i kept", "without counterpart in EUC_H: 1"},
        {1, "-f auto -t UTF-8 -i kept", "kept: is neither UTF-8 nor Japanese; say with -f"},
        {1, "--guess kept in", "kept: is neither"},
        {1, "--guess missing", "missing: No such file"},
        {1, "-f SJIS -t EUC -o /dev/full in", "No space left on device"},
        {1, "-f SJIS -t EUC in >/dev/full 2>stderr #", "No space left on device"},
        {1, "--help >/dev/full 2>stderr #", "No space left on device"},
        {1, "-f SJIS -t EUC in >&- 2>stderr #", "standard output: Bad file descriptor"},
        {1, "-f SJIS -t EUC kept >>kept 2>stderr #", "what it would be written to"},
        {1, "-f SJIS -t EUC -o no/such in", "No such file or directory"},
        // A file-size limit stands for the disk that fills up on the way.
        {1, "-V; ulimit -f 100; " ZVUTIL_ZVCONV " -f SJIS -t EUC -o kept long", "large"}};
    for (const auto& c : cases) {
        EXPECT_EQ(tool.run(c.arguments), c.status) << c.arguments;
        EXPECT_TRUE(tool.says(c.message)) << c.arguments << ": " << tool.read("stderr");
        EXPECT_EQ(tool.read("stderr").find("zvconv: "), 0u) << c.arguments;
    }
    for (const int signal : {SIGHUP, SIGTERM, SIGXCPU}) {
        ::signal(signal, SIG_DFL); // nohup(1) has one ignored
        // The pipe as input holds the conversion at its beginning.
        EXPECT_EQ(tool.run("-V; mkfifo pipe; " ZVUTIL_ZVCONV
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
    EXPECT_EQ(tool.run("-V; chmod 640 in; ln -s in link; " ZVUTIL_ZVCONV
                       " -f Shift_JIS -t EUC-JP -i link empty; ls -l in link"),
              0);
    EXPECT_EQ(tool.read("in"), "\xB0\xA1?\n");
    const std::string listing = tool.read("stdout");
    EXPECT_NE(listing.find("-rw-r-----"), std::string::npos) << listing;
    EXPECT_NE(listing.find("link -> in"), std::string::npos) << listing;
    EXPECT_EQ(tool.run("-f EUC -t SJIS -o in in empty in"), 0);
    EXPECT_EQ(tool.read("in"), "\x88\x9F?\n\x88\x9F?\n");
    // What is in the encoding already is not even touched.
    tool.write("in~", "the first backup");
    EXPECT_EQ(tool.run("-f SJIS -t SJIS -i --backup in"), 0);
    tool.write("ascii", "a\\b~");
    tool.write("ascii~", "the first backup");
    for (const std::string to : {"SJIS", "JIS", "UTF-8", "1251"})
        EXPECT_EQ(tool.run("-f auto -i --backup ascii -t " + to), 0) << to;
    EXPECT_EQ(tool.run("-f SJIS -t EUC -i --backup in"), 1);
    EXPECT_TRUE(tool.says("in: no backup"));
    tool.write("in", "\xFE\xFE");
    EXPECT_EQ(tool.run("-f BIG5 -t EUC_H -i --force --no-sync in"), 0);
    EXPECT_EQ(tool.read("in"), "\?\?");
}

TEST(Zvconv, ProgressIsShownOnATerminalAlone) {
    const Zvconv tool;
    if (tool.run("-V; script -qec true log") != 0)
        GTEST_SKIP() << "no pseudo-terminals here";
    tool.write("big", std::string(65 << 20, 'x'));
    const std::string command = "-V; script -qec '" ZVUTIL_ZVCONV " -f EUC -t SJIS -o /dev/null ";
    EXPECT_EQ(tool.run(command + "big' log"), 0);
    EXPECT_NE(tool.read("log").find("% of 65 MiB"), std::string::npos) << tool.read("log");
    EXPECT_NE(tool.read("log").find(" \r"), std::string::npos) << "erased";
    EXPECT_EQ(tool.run(command + "-q big' log"), 0);
    EXPECT_EQ(tool.read("log").find('%'), std::string::npos) << tool.read("log");
    EXPECT_EQ(tool.run("-f EUC -t SJIS -o /dev/null big"), 0);
    EXPECT_EQ(tool.read("stderr"), "");
}

TEST(Zvconv, DirectoriesAreConvertedOnceByAnyNumberOfProcesses) {
    const Zvconv tool;
    const std::string sjis = test::sample("japanese.sjis"), euc = test::sample("japanese.euc");
    for (const std::string jobs : {"", "-j 1 ", "-j 3 "}) {
        std::filesystem::remove_all(tool.folder / "tree");
        std::filesystem::create_directories(tool.folder / "tree/a/b");
        std::filesystem::create_directory_symlink("..", tool.folder / "tree/a/loop");
        std::filesystem::create_symlink("missing", tool.folder / "tree/dangling");
        for (int i = 0; i < 40; ++i)
            tool.write(((i % 2 ? "tree/a/b/" : "tree/") + std::to_string(i) + ".txt").c_str(),
                       sjis);
        tool.write("tree/a/other.c", sjis);
        tool.write("tree/a/bad.txt", "\xFF\n");
        EXPECT_EQ(tool.run(jobs + "-f SJIS -t EUC -ir --include='*.txt' --include=x tree"), 1);
        EXPECT_TRUE(tool.says("tree/a/bad.txt:1: offset 0: malformed SJIS: FF"));
        for (int i = 0; i < 40; ++i)
            EXPECT_EQ(
                tool.read(((i % 2 ? "tree/a/b/" : "tree/") + std::to_string(i) + ".txt").c_str()),
                euc)
                << jobs;
        EXPECT_EQ(tool.read("tree/a/other.c"), sjis);
        EXPECT_EQ(tool.read("tree/a/bad.txt"), "\xFF\n");
    }
    EXPECT_EQ(tool.run("-f EUC -t SJIS -i tree/0.txt ./tree/../tree/0.txt tree/a/loop/2.txt"), 1);
    EXPECT_TRUE(tool.says("./tree/../tree/0.txt: the same file once more"));
    EXPECT_EQ(tool.read("tree/0.txt"), sjis);
    EXPECT_EQ(tool.read("tree/2.txt"), sjis) << "the others are done";
    EXPECT_EQ(tool.run("-f EUC -t SJIS -i tree"), 1);
    EXPECT_TRUE(tool.says("tree: Is a directory"));
    EXPECT_EQ(tool.run("-f EUC -t SJIS -ir missing tree/a/loop tree/4.txt"), 1);
    EXPECT_TRUE(tool.says("missing: No such file"));
    EXPECT_TRUE(tool.says("tree/a/loop: a symbolic link"));
    EXPECT_EQ(tool.read("tree/4.txt"), sjis);
    EXPECT_EQ(tool.run("-V; ln -s x y; ln -s y x; " ZVUTIL_ZVCONV " -f EUC -t SJIS -i x"), 1);
    EXPECT_TRUE(tool.says("x: Too many levels of symbolic links"));
}

TEST(Zvconv, AnUnreadableFileIsNamedAndTheOthersAreDone) {
    const Zvconv tool;
    // The super-user reads everything without this.
    const std::string plainly = geteuid() != 0 ? ""
                                               : "setpriv --bounding-set=-dac_override,"
                                                 "-dac_read_search ";
    if (tool.run("-V; " + plainly + "true #") != 0)
        GTEST_SKIP() << "rights cannot be dropped here";
    std::filesystem::create_directories(tool.folder / "tree/shut");
    for (const char* name : {"secret", "open", "tree/shut/deep", "tree/open"})
        tool.write(name, "\x88\x9F");
    EXPECT_EQ(tool.run("-V; chmod 0 secret tree/shut; " + plainly +
                       ZVUTIL_ZVCONV " -f SJIS -t EUC -ir secret tree open 2>stderr; s=$?; "
                                     "chmod 700 secret tree/shut; exit $s #"),
              1);
    EXPECT_EQ(tool.read("stderr"), "zvconv: tree/shut: Permission denied\n"
                                   "zvconv: secret: Permission denied\n");
    EXPECT_EQ(tool.read("open"), "\xB0\xA1");
    EXPECT_EQ(tool.read("tree/open"), "\xB0\xA1");
    EXPECT_EQ(tool.read("secret"), "\x88\x9F");
    EXPECT_EQ(tool.read("tree/shut/deep"), "\x88\x9F");
}

TEST_F(ZvconvUnicode, AnEndedRunOfManyProcessesLeavesNothingHalfDone) {
    const Zvconv tool;
    std::string big;
    for (int i = 0; i < 300000; ++i)
        big += "\x88\x9F\x93\xFA\n";
    for (const char* name : {"1", "2", "3", "4", "5", "6"})
        tool.write(name, big);
    EXPECT_EQ(
        tool.run(
            "-V; " ZVUTIL_ZVCONV " -f SJIS -t UTF-8 -i -j 3 1 2 3 4 5 6 & "
            "until ls .zvconv-*; do :; done; kill $!; wait $!; s=$?; "
            "for i in $(seq 500); do ls -A | grep -q '^.zv' || break; sleep 0.01; done; exit $s #"),
        128 + SIGTERM);
    for (const auto& entry : std::filesystem::directory_iterator(tool.folder / "")) {
        const std::string name = entry.path().filename();
        EXPECT_NE(name[0], '.') << name;
        if (name.size() != 1)
            continue;
        const auto size = entry.file_size();
        EXPECT_TRUE(size == big.size() || size == 7 * (big.size() / 5)) << name << ": " << size;
    }
}

// The options that a text names, one a line.
std::string options_in(const std::string& text, const char* pattern) {
    std::set<std::string> names;
    const std::regex option(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), option), end; match != end; ++match)
        names.insert((*match)[1]);
    std::string lines;
    for (const std::string& name : names)
        lines += name + "\n";
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
                 {"zvconv -f UTF", "UTF-8 UTF-16"},
                 {"zvconv --line-ends = ''", "lf crlf keep"},
                 {"zvconv -t 125", "1250 1251 1253 1254 1255 1256 1257 1258"},
                 {"zvconv in", ""}};
    const auto offer = [&](const std::string& words) {
        EXPECT_EQ(tool.run("-V; PATH=$(dirname " ZVUTIL_ZVCONV "):$PATH bash -c '"
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
    std::string zsh = content(ZVUTIL_ZVCONV_FOLDER "/_zvconv");
    EXPECT_EQ(options_in(zsh, "--([a-z-]+)[^a-z-]"), options);
}

} // namespace
