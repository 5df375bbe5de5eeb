#include <algorithm>
#include <climits>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "mbutil.h"
#include "support/calls.h"
#include "support/child.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

using namespace test;

// The pairs that are converted, those of files first. A table of the guides, which is tested
// against the library, says which converter each of them has.
constexpr std::pair<int, int> kPairs[] = {
    {ZV_JIS, ZV_SJIS},      {ZV_JIS, ZV_EUC},       {ZV_EUC, ZV_SJIS},      {ZV_SJIS, ZV_EUC},
    {ZV_BIG5, ZV_EUC_H},    {ZV_EUC_H, ZV_BIG5},    {ZV_EUC, ZV_JIS},       {ZV_SJIS, ZV_JIS},
    {ZV_8859_2, ZV_CP1250}, {ZV_8859_5, ZV_CP1251}, {ZV_CP1250, ZV_8859_2}, {ZV_CP1251, ZV_8859_5}};

TEST(Dispatch, CopiesWhatIsNotConverted) {
    GuardedText text("\x1BK\xB0\xA1"); // which every converter changes
    GuardedRoom room(5 * 4 + 4);
    for (int from = -1; from <= 66; ++from) {
        InitMbutilExt(from);
        for (int to = -1; to <= 66; ++to) {
            const auto* pair = std::find(kPairs, std::end(kPairs), std::pair(from, to));
            ASSERT_EQ(convertStrExt(text.data(), from, room.data(), to), room.data());
            const std::string converted = room.text();
            ASSERT_EQ(converted != text.text(), pair != std::end(kPairs)) << from << ' ' << to;
            ASSERT_EQ(IsConversionSupport(from, to), pair - kPairs < 6) << from << ' ' << to;
            *room.data() = '#';
            ASSERT_EQ(mbconvertnativestring(room.data(), text.data(), to), 1);
            ASSERT_EQ(room.text(), mbIsMultiByte() ? converted : text.text()) << from << ' ' << to;
        }
    }
}

TEST(Dispatch, TheWindowsFormItsLengthAndTheByteSum) {
    char out[32];
    for (int current = -1; current <= 66; ++current) {
        InitMbutilExt(current);
        const bool euc = current == ZV_EUC || current == ZV_SJIS;
        const bool grows = current == ZV_BIG5 || current == ZV_SJIS;
        SCOPED_TRACE(current);
        EXPECT_STREQ(UnixCodingToWindowsCodingExt("\xB0\xA1", out), euc ? "\x88\x9F" : "\xB0\xA1");
        EXPECT_STREQ(WindowsCodingToUnixCodingExt("\x88\x9F", out), euc ? "\xB0\xA1" : "\x88\x9F");
        EXPECT_EQ(MaxStringLengthOnWinAndUnix("\xC8\x79\xB1"), grows ? 5 : 3);
        EXPECT_EQ(AccumulateAsciiForStr(std::string(5000, '\xB1').c_str()), 5000 * 0xB1);
    }
    expect_each(0, 0, CALL(mbconvertnativestring(nullptr, "a", 3)),
                CALL(mbconvertnativestring(out, nullptr, 3)),
                CALL(UnixCodingToWindowsCodingExt(nullptr, out)),
                CALL(UnixCodingToWindowsCodingExt("a", nullptr)),
                CALL(WindowsCodingToUnixCodingExt(nullptr, out)),
                CALL(WindowsCodingToUnixCodingExt("a", nullptr)),
                CALL(AccumulateAsciiForStr(nullptr)), CALL(AccumulateAsciiForStr("")));
}

TEST(Numbers, AreThoseThatIconvKnows) {
    const struct {
        int code_set;
        const MbToSbNumber* table;
        const char *charset, *marks, *ascii; // behind the digits
    } cases[] = {{ZV_SJIS, Mb2SbNumberTableInSJIS, "SJIS", "．。／・：", "..//:"},
                 {ZV_EUC, Mb2SbNumberTableInEUC, "EUC-JP", "．｡。／：　（）", ".../: ()"},
                 {ZV_GB, Mb2SbNumberTableInGB, "GB2312", "：／（）．", ":/()."},
                 {ZV_KSC_5601_92, Mb2SbNumberTableInKSC92, "EUC-KR", "：／（）．", ":/()."},
                 {ZV_BIG5, Mb2SbNumberTableInBIG5, "BIG5", "﹕∕（）﹒", ":/()."},
                 {ZV_EUC_H, Mb2SbNumberTableInEUC_H, "BIG5", "﹕∕（）‘”", ":/().:"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.charset);
        std::string wide;
        for (const MbToSbNumber* row = c.table; row->mb[0] != 0; ++row)
            wide += reinterpret_cast<const char*>(row->mb);
        EXPECT_EQ(iconv_text(c.charset, "UTF-8", wide),
                  std::string("０１２３４５６７８９") + c.marks);
        InitMbutilExt(c.code_set);
        EXPECT_EQ(convert_guarded(ConvertMBNumberToSBNumber, wide, wide.size() + 1),
                  std::string("0123456789") + c.ascii);
    }
    InitMbutilExt(ZV_EUC_C);
    EXPECT_EQ(convert_guarded(ConvertMBNumberToSBNumber, "\xA3\xB0", 3), "\xA3\xB0");
}

TEST(TextStreams, TellWhatCannotBeReadOrWritten) {
    for (const int code_set : {ZV_8859_2, ZV_SJIS}) {
        InitMbutilExt(code_set);
        EXPECT_EQ(mbfgets(nullptr, 20, stdin, 0), nullptr) << code_set;
        EXPECT_EQ(mbfputs(nullptr, stdout, ZV_EUC), 0) << code_set;
    }
    FILE* const zeros = fopen("/dev/zero", "r");
    EXPECT_EQ(mbfputs("a", zeros, ZV_EUC), EOF);
    InitMbutilExt(ZV_8859_2);
    GuardedRoom room(2);
    EXPECT_EQ(mbfreadstring(room.data(), 2, zeros), 2) << "no terminator";
    constexpr size_t kMost = 2147483647;
    char* const large = repeated_piece(kMost + 1, '\0', MAP_SHARED);
    for (const int code_set : {ZV_8859_2, ZV_SJIS}) {
        InitMbutilExt(code_set);
        EXPECT_EQ(mbfreadstring(large, UINT_MAX, zeros), kMost) << "no more than an int counts";
    }
    fclose(zeros);
}

TEST(TextStreams, PipesGetBackWhatIsCut) {
    InitMbutilExt(ZV_EUC_H);
    FILE* const pipe = popen(R"(printf '\216\242\241\261\216\243\301\321')", "r");
    GuardedRoom room(8);
    for (const std::string character : {"\x8E\xA2\xA1\xB1", "\x8E\xA3\xC1\xD1"}) {
        EXPECT_EQ(mbfreadstring(room.data(), 7, pipe), 4);
        EXPECT_EQ(room.text(), character);
    }
    pclose(pipe);
}

TEST(FileConversion, AppendsRefusesAndKeepsWhatItMay) {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out";
    const auto converts = [](const std::string& from, const std::string& to, int append, int set) {
        return mbconvertfile2native_ex(from.c_str(), to.c_str(), char(append), set) != 0;
    };
    InitMbutilExt(ZV_EUC);
    write_file(in, "\x88\x9F");
    EXPECT_FALSE(converts(in, out, 0, ZV_EUC));
    EXPECT_FALSE(converts(folder / "none", out, 0, ZV_SJIS));
    EXPECT_FALSE(converts(in, folder / "no/such", 0, ZV_SJIS));
    EXPECT_FALSE(std::filesystem::exists(out));
    const struct {
        const char* what;
        int from, append;
        std::string text, result;
    } cases[] = {{"made", ZV_SJIS, 0, "\x88\x9F", "\xB0\xA1"},
                 {"appended", ZV_SJIS, 1, "\x88\x9F", "\xB0\xA1\xB0\xA1"},
                 {"any other value appends", ZV_SJIS, -2, "x", "\xB0\xA1\xB0\xA1x"},
                 {"emptied first", ZV_SJIS, 0, "\x88\x9F", "\xB0\xA1"},
                 {"a zero byte ends its block's text", ZV_SJIS, 0,
                  std::string("a\x82\0b\x88\x9F", 6) + std::string(20993, 'c') + "\x88\x9F",
                  "a\x82\xB0\xA1"},
                 {"and its shift state", ZV_JIS, 0,
                  std::string("\x1B$B0!\0", 6) + std::string(20994, 'c') + "V!", "\xB0\xA1V!"},
                 {"nothing", ZV_SJIS, 0, "", ""}};
    for (const auto& c : cases) {
        write_file(in, c.text);
        EXPECT_TRUE(converts(in, out, c.append, c.from)) << c.what;
        EXPECT_EQ(content(out), c.result) << c.what;
    }
}

TEST(FileConversion, TakesPipesThatGiveALittleAtATime) {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out";
    const std::string text = repeated("\x88\x9F\xB1 x\n", 200'000);
    ASSERT_EQ(mkfifo(in.c_str(), 0600), 0);
    const Child writer([&](int) { write_file(in, text); });
    InitMbutilExt(ZV_EUC);
    EXPECT_TRUE(mbconvertfile2native_ex(in.c_str(), out.c_str(), 0, ZV_SJIS));
    EXPECT_TRUE(content(out) == iconv_text("SJIS", "EUC-JP", text));
}

TEST(FileConversion, RefusesAFileOntoItself) {
    const Folder folder;
    const std::string file = folder / "file", text = "\x88\x9F and more";
    std::filesystem::create_directory(folder / "d");
    write_file(file, text);
    std::filesystem::create_symlink("file", folder / "symbolic");
    std::filesystem::create_hard_link(file, folder / "hard");
    InitMbutilExt(ZV_EUC);
    for (const char* same : {"file", "d/../file", "symbolic", "hard"}) {
        for (const char append : {'\0', '\1'}) {
            EXPECT_EQ(
                mbconvertfile2native_ex(file.c_str(), (folder / same).c_str(), append, ZV_SJIS), 0)
                << same;
            EXPECT_EQ(content(file), text) << same;
        }
    }
}

} // namespace
