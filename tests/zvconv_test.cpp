#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <set>

#include "support/zvconv.h"

namespace {

using namespace test;
using ZvconvUnicode = WithConverters;

TEST(Zvconv, ConvertsTheSampleTextsAsIconvAndAMailProgramDo) {
    const Zvconv tool;
    const struct {
        std::string sample, options;
        const char *iconv_from, *iconv_to;
        std::string subject_options;
    } cases[] = {
        {"japanese.sjis", "-f auto -t EUC", "SJIS", "EUC-JP", ""},
        {"japanese.euc", "-f auto -t SJIS", "EUC-JP", "SJIS", "-f EUC -t EUC -s"},
        {"japanese.jis", "-f auto -t EUC", "ISO-2022-JP", "EUC-JP", "-f auto -t SJIS -s"},
        {"chinese.big5", "-f BIG5 -t EUC_H", "BIG5", "EUC-TW", ""},
        {"chinese.euctw", "-f EUC_H -t BIG5", "EUC-TW", "BIG5", ""},
        {"russian.8859-5", "-f 8859_5 -t 1251", "ISO-8859-5", "CP1251", "-f 8859_5 -t 1251 -s"},
        {"polish.8859-2", "-f 8859_2 -t 1250", "ISO-8859-2", "CP1250", "-f 8859_2 -t 8859_2 -s"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.sample);
        std::string text = sample(c.sample);
        const auto expected = iconv_text(c.iconv_from, c.iconv_to, text);
        tool.write("in", text);
        tool.expect(0, c.options + " -o out <in");
        EXPECT_EQ(tool.read("out"), expected);
        EXPECT_EQ(tool.read("stderr"), "");
        // Detection works on what cannot be positioned, too.
        tool.expect(0, "-V && cat in | " ZVUTIL_ZVCONV " " + c.options);
        EXPECT_TRUE(tool.read("stdout").ends_with(*expected)) << tool.read("stdout");
        tool.expect(0, "-qi --backup " + c.options + " in");
        EXPECT_EQ(tool.read("in"), expected);
        EXPECT_EQ(tool.read("in~"), text);
        std::filesystem::remove(tool.folder / "in~");
        if (c.subject_options.empty())
            continue;
        // Half-width katakana come back full-width.
        if (c.sample == "japanese.euc")
            text.resize(text.find('\n') + 1);
        tool.write("in", text);
        tool.expect(0, c.subject_options + " -o out in");
        EXPECT_EQ(tool.subjects_by("cat out"), iconv_text(c.iconv_from, "UTF-8", text));
    }
    EXPECT_NE(tool.read("out").find("?=\n \t=?iso-"), std::string::npos) << "the library's form";
}

TEST_F(ZvconvUnicode, LongLinesAreNeverSplitInsideACharacter) {
    const Zvconv tool;
    std::string text;
    for (int i = 0; i < 120000; ++i)
        text += i % 5000 == 0 ? "\r" : i % 5 == 0 ? "a" : "\xB0\xA1\xC6\xFC";
    for (const std::string padding : {"x", "xx", "xxx", "xxxx"}) {
        tool.write("euc", padding + text + "\r\n");
        for (const std::string encoding : {"JIS", "SJIS", "UTF-8", "UTF-16"}) {
            tool.expect(0, "-f EUC -o out euc -t " + encoding);
            tool.expect(0, "-t EUC out -f " + encoding);
            EXPECT_TRUE(tool.read("stdout") == padding + text + "\r\n") << encoding << padding;
        }
    }
    tool.expect(1, "-f EUC -t SJIS -s euc", "too long");
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
        {2, "-f SJIS -t EUC -o kept in --inplace", "near to it: --in-place "},
        {2, "-f SJIS", "-t is needed"},
        {2, "-f SJIS -t auto in", "'auto' is for -f alone"},
        {2, "-f SJIS -t EUC -i -o kept in", "exclude each other"},
        {2, "-f SJIS -t EUC -i -- -", "not standard input"},
        {2, "-f SJIS -t EUC -i --backup=/ in", "no suffix"},
        {2, "-f SJIS -t EUC --backup in", "needs -i or -o"},
        {2, "-f SJIS -t EUC --no-sync in", "--no-sync needs -i or -o"},
        {2, "-f SJIS -t EUC -r .", "-r needs -i"},
        {2, "--guess -r", "-r needs a FILE"},
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
        tool.expect(c.status, c.arguments, c.message);
        EXPECT_EQ(tool.read("stderr").find("zvconv: "), 0u) << c.arguments;
    }
    for (const int signal : {SIGHUP, SIGTERM, SIGXCPU}) {
        ::signal(signal, SIG_DFL); // nohup(1) has one ignored
        // The pipe as input holds the conversion at its beginning.
        tool.expect(128 + signal,
                    "-V; mkfifo pipe; " ZVUTIL_ZVCONV " -f SJIS -t EUC -o kept pipe & exec 3>pipe;"
                    "until ls .zvconv-*; do :; done; kill -" +
                        std::to_string(signal) + " $!; wait $!; s=$?; rm pipe; exit $s #");
    }
    EXPECT_EQ(tool.read("kept"), "kept\xFE\xFE");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tool.folder / ""), {}), 5)
        << "in, kept, long, stdout, stderr";
}

TEST(Zvconv, AReplacedFileKeepsItsModeAndItsLinks) {
    const Zvconv tool;
    tool.write("in", "\x88\x9F?\n");
    tool.write("empty", "");
    tool.expect(0, "-V; chmod 640 in; ln -s in link; " ZVUTIL_ZVCONV
                   " -f Shift_JIS -t EUC-JP -i link empty; ls -l in link");
    EXPECT_EQ(tool.read("in"), "\xB0\xA1?\n");
    const std::string listing = tool.read("stdout");
    EXPECT_NE(listing.find("-rw-r-----"), std::string::npos) << listing;
    EXPECT_NE(listing.find("link -> in"), std::string::npos) << listing;
    tool.expect(0, "-f EUC -t SJIS -o in in empty in");
    EXPECT_EQ(tool.read("in"), "\x88\x9F?\n\x88\x9F?\n");
    // What is in the encoding already is not even touched.
    tool.write("in~", "the first backup");
    tool.expect(0, "-f SJIS -t SJIS -i --backup in");
    tool.write("ascii", "a\\b~");
    tool.write("ascii~", "the first backup");
    for (const std::string to : {"SJIS", "JIS", "UTF-8", "1251"})
        tool.expect(0, "-f auto -i --backup ascii -t " + to);
    tool.expect(1, "-f SJIS -t EUC -i --backup in", "in: no backup");
    tool.write("in", "\xFE\xFE");
    tool.expect(0, "-f BIG5 -t EUC_H -i --force --no-sync in");
    EXPECT_EQ(tool.read("in"), "\?\?");
}

TEST(Zvconv, ProgressIsShownOnATerminalAlone) {
    const Zvconv tool;
    if (tool.run("-V; script -qec true log") != 0)
        GTEST_SKIP() << "no pseudo-terminals here";
    tool.write("big", std::string(65 << 20, 'x'));
    const std::string command = "-V; script -qec '" ZVUTIL_ZVCONV " -f EUC -t SJIS -o /dev/null ";
    tool.expect(0, command + "big' log");
    EXPECT_NE(tool.read("log").find("% of 65 MiB"), std::string::npos) << tool.read("log");
    EXPECT_NE(tool.read("log").find(" \r"), std::string::npos) << "erased";
    tool.expect(0, command + "-q big' log");
    EXPECT_EQ(tool.read("log").find('%'), std::string::npos) << tool.read("log");
    tool.expect(0, "-f EUC -t SJIS -o /dev/null big");
    EXPECT_EQ(tool.read("stderr"), "");
    EXPECT_EQ(tool.run("-V; (" ZVUTIL_ZVCONV " -f EUC -t SJIS big | head -c 1)"), 0);
    EXPECT_EQ(tool.read("stderr"), "") << "the reader goes when it has enough";
}

TEST(Zvconv, DirectoriesAreConvertedOnceByAnyNumberOfProcesses) {
    const Zvconv tool;
    const std::string sjis = sample("japanese.sjis"), euc = sample("japanese.euc");
    for (const std::string jobs : {"", "-j 1 ", "-j 3 "}) {
        std::filesystem::remove_all(tool.folder / "tree");
        std::filesystem::create_directories(tool.folder / "tree/a/b");
        std::filesystem::create_directory_symlink("..", tool.folder / "tree/a/loop");
        std::filesystem::create_symlink("missing", tool.folder / "tree/dangling");
        const auto name = [](int i) {
            return (i % 2 ? "tree/a/b/" : "tree/") + std::to_string(i) + ".txt";
        };
        for (int i = 0; i < 40; ++i)
            tool.write(name(i), sjis);
        tool.write("tree/a/other.c", sjis);
        tool.write("tree/a/bad.txt", "\xFF\n");
        tool.expect(1, jobs + "-f SJIS -t EUC -ir --include='*.txt' --include=x tree",
                    "tree/a/bad.txt:1: offset 0: malformed SJIS: FF");
        for (int i = 0; i < 40; ++i)
            EXPECT_EQ(tool.read(name(i)), euc) << jobs << name(i);
        EXPECT_EQ(tool.read("tree/a/other.c"), sjis);
        EXPECT_EQ(tool.read("tree/a/bad.txt"), "\xFF\n");
    }
    tool.expect(1, "-f EUC -t SJIS -i tree/0.txt ./tree/../tree/0.txt tree/a/loop/2.txt",
                "./tree/../tree/0.txt: the same file once more");
    EXPECT_EQ(tool.read("tree/0.txt"), sjis);
    EXPECT_EQ(tool.read("tree/2.txt"), sjis) << "the others are done";
    // A tree that is converted again leaves the backups in it alone.
    std::filesystem::create_directories(tool.folder / "again");
    for (const char* name : {"again/a", "again/b~"})
        tool.write(name, euc);
    tool.expect(0, "-f auto -t SJIS -ir --backup again");
    tool.expect(1, "-f auto -t JIS -ir --backup again", "no backup"); // the first ones stay
    tool.expect(0, "-f SJIS -t EUC -ir --include=*.x again", "no file to convert");
    tool.expect(0, "--guess -r --include='[ab]*' again");
    EXPECT_EQ(tool.read("stdout"), "again/a: SJIS (LF)\nagain/a~: EUC (LF)\n"
                                   "again/b~: SJIS (LF)\nagain/b~~: EUC (LF)\n");
    tool.expect(1, "-f EUC -t SJIS -ir missing tree/a/loop tree/4.txt", "missing: No such file");
    EXPECT_TRUE(tool.says("tree/a/loop: a symbolic link")) << tool.read("stderr");
    EXPECT_EQ(tool.read("tree/4.txt"), sjis);
    tool.expect(1, "-V; ln -s x y; ln -s y x; " ZVUTIL_ZVCONV " -f EUC -t SJIS -i x",
                "x: Too many levels of symbolic links");
}

TEST(Zvconv, AnUnreadableFileIsNamedAndTheOthersAreDone) {
    const Zvconv tool;
    // The super-user reads everything without this.
    const std::string dropping = "setpriv --bounding-set=-dac_override,-dac_read_search ",
                      plainly = geteuid() != 0 ? "" : dropping;
    if (tool.run("-V; " + plainly + "true #") != 0)
        GTEST_SKIP() << "rights cannot be dropped here";
    std::filesystem::create_directories(tool.folder / "tree/shut");
    for (const char* name : {"secret", "open", "tree/shut/deep", "tree/open"})
        tool.write(name, "\x88\x9F");
    tool.expect(1, "-V; chmod 0 secret tree/shut; " + plainly +
                       ZVUTIL_ZVCONV " -f SJIS -t EUC -ir secret tree open 2>stderr; s=$?; "
                                     "chmod 700 secret tree/shut; exit $s #");
    EXPECT_EQ(tool.read("stderr"), "zvconv: tree/shut: Permission denied\n"
                                   "zvconv: secret: Permission denied\n");
    EXPECT_EQ(tool.read("open"), "\xB0\xA1");
    EXPECT_EQ(tool.read("tree/open"), "\xB0\xA1");
    EXPECT_EQ(tool.read("secret"), "\x88\x9F");
    EXPECT_EQ(tool.read("tree/shut/deep"), "\x88\x9F");
}

TEST_F(ZvconvUnicode, AnEndedRunOfManyProcessesLeavesNothingHalfDone) {
    const Zvconv tool;
    const std::string big = repeated("\x88\x9F\x93\xFA\n", 300000);
    for (const char* name : {"1", "2", "3", "4", "5", "6"})
        tool.write(name, big);
    tool.expect(128 + SIGTERM,
                "-V; " ZVUTIL_ZVCONV " -f SJIS -t UTF-8 -i -j 3 1 2 3 4 5 6 & "
                "until ls .zvconv-*; do :; done; kill $!; wait $!; s=$?; for i in $(seq 500);"
                "do ls -A | grep -q '^.zv' || break; sleep 0.01; done; exit $s #");
    for (const auto& entry : std::filesystem::directory_iterator(tool.folder / "")) {
        const std::string name = entry.path().filename();
        EXPECT_NE(name[0], '.') << name;
        if (name.size() != 1)
            continue;
        const auto size = entry.file_size();
        EXPECT_TRUE(size == big.size() || size == 7 * (big.size() / 5)) << name << ": " << size;
    }
}

// The options that a text names.
std::set<std::string> options_in(const std::string& text, const char* pattern) {
    std::set<std::string> names;
    const std::regex option(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), option), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

TEST(Zvconv, HelpManualAndCompletionNameTheSame) {
    const Zvconv tool;
    tool.expect(0, "--version");
    EXPECT_EQ(tool.read("stdout"), "zvconv " ZVUTIL_VERSION_TEXT "\n");
    tool.expect(0, "--help");
    const auto options = options_in(tool.read("stdout"), "--([a-z-]+)");
    std::string manual = content(ZVUTIL_ZVCONV_FOLDER "/zvconv.1");
    manual = std::regex_replace(manual, std::regex(R"(\\-)"), "-");
    EXPECT_EQ(options_in(manual, "--([a-z-]+)"), options);
    // What the shell would offer for some beginnings of a line.
    const struct {
        const char *words, *offers;
    } cases[] = {{"zvconv --from", "--from-code"},
                 {"zvconv -f S", "SJIS"},
                 {"zvconv -if utf", "UTF-8 UTF-16"},
                 {"zvconv --to-code = shift", "shift_jis shift-jis shiftjis"},
                 {"zvconv --line-ends = ''", "lf crlf keep"},
                 {"zvconv -t 125", "1250 1251 1253 1254 1255 1256 1257 1258"},
                 {"zvconv in", ""}};
    const auto offer = [&](const std::string& words) {
        tool.expect(0, "-V; PATH=$(dirname " ZVUTIL_ZVCONV "):$PATH bash -c '"
                       ". " ZVUTIL_ZVCONV_FOLDER "/zvconv.bash; COMP_WORDS=(\"$@\");"
                       "COMP_CWORD=$(($# - 1)); _zvconv;"
                       "printf \"%s \" \"${COMPREPLY[@]}\" >offers' " +
                           words);
        return tool.read("offers");
    };
    for (const auto& c : cases)
        EXPECT_EQ(offer("- " + std::string(c.words)), std::string(c.offers) + " ") << c.words;
    EXPECT_EQ(options_in(offer("- zvconv -"), "--([a-z-]+)"), options);
    EXPECT_EQ(options_in(content(ZVUTIL_ZVCONV_FOLDER "/_zvconv"), "--([a-z-]+)[^a-z-]"), options);
}

} // namespace
