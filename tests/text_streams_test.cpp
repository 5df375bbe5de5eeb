#include <gtest/gtest.h>

#include <filesystem>

#include "mbutil.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

using namespace test;

// One text in each code set that a converter serves; the rest of the pairs copies.
const struct {
    int from, to;
    std::string_view text, converted;
    bool files;
} kPairs[] = {{ZV_JIS, ZV_SJIS, "\x1B$B0!\x1B(J", "\x88\x9F", true},
              {ZV_JIS, ZV_EUC, "\x1B$B0!\x1B(J", "\xB0\xA1", true},
              {ZV_EUC, ZV_SJIS, "\xB0\xA1", "\x88\x9F", true},
              {ZV_EUC, ZV_JIS, "\xB0\xA1", "\x1B$B0!\x1B(J", false},
              {ZV_SJIS, ZV_EUC, "\x88\x9F", "\xB0\xA1", true},
              {ZV_SJIS, ZV_JIS, "\x88\x9F", "\x1B$B0!\x1B(J", false},
              {ZV_BIG5, ZV_EUC_H, "\xC8\x79", "\x8E\xA4\xA1\xA3", true},
              {ZV_EUC_H, ZV_BIG5, "\x8E\xA4\xA1\xA3", "\xC8\x79", true},
              {ZV_8859_2, ZV_CP1250, "\xA1", "\xA5", false},
              {ZV_8859_5, ZV_CP1251, "\xB0", "\xC0", false},
              {ZV_CP1250, ZV_8859_2, "\xA5", "\xA1", false},
              {ZV_CP1251, ZV_8859_5, "\xC0", "\xB0", false}};

TEST(Dispatch, PicksTheConverterOfEachPairAndCopiesAllOthers) {
    for (int from = -1; from <= 66; ++from) {
        InitMbutilExt(from);
        for (int to = -1; to <= 66; ++to) {
            std::string_view text = "\xB0\xA1", expected = text;
            bool files = false;
            for (const auto& pair : kPairs) {
                if (pair.from == from && pair.to == to)
                    text = pair.text, expected = pair.converted, files = pair.files;
            }
            GuardedText source(text);
            GuardedRoom room(text.size() * 5 + 4);
            ASSERT_EQ(convertStrExt(source.data(), from, room.data(), to), room.data());
            ASSERT_EQ(room.text(), expected) << from << ' ' << to;
            ASSERT_EQ(IsConversionSupport(from, to), files) << from << ' ' << to;
            ASSERT_EQ(mbconvertnativestring(room.data(), source.data(), to), 1);
            ASSERT_EQ(room.text(), mbIsMultiByte() ? expected : text) << from << ' ' << to;
        }
    }
}

TEST(Dispatch, TheWindowsFormItsLengthAndTheByteSum) {
    char out[32];
    for (int current = -1; current <= 66; ++current) {
        InitMbutilExt(current);
        const bool euc = current == ZV_EUC || current == ZV_SJIS;
        const bool grows = current == ZV_BIG5 || current == ZV_SJIS;
        EXPECT_STREQ(UnixCodingToWindowsCodingExt("\xB0\xA1", out), euc ? "\x88\x9F" : "\xB0\xA1");
        EXPECT_STREQ(WindowsCodingToUnixCodingExt("\x88\x9F", out), euc ? "\xB0\xA1" : "\x88\x9F");
        EXPECT_EQ(MaxStringLengthOnWinAndUnix("\xC8\x79\xB1"), grows ? 5 : 3) << current;
        EXPECT_EQ(AccumulateAsciiForStr(std::string(5000, '\xFF').c_str()), 5000 * 255);
    }
    EXPECT_FALSE(
        mbconvertnativestring(nullptr, "a", 3) || mbconvertnativestring(out, nullptr, 3) ||
        UnixCodingToWindowsCodingExt(nullptr, out) || UnixCodingToWindowsCodingExt("a", nullptr) ||
        WindowsCodingToUnixCodingExt(nullptr, out) || WindowsCodingToUnixCodingExt("a", nullptr) ||
        AccumulateAsciiForStr(nullptr) || AccumulateAsciiForStr(""));
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
    InitMbutilExt(ZV_SJIS);
    EXPECT_FALSE(mbfgets(nullptr, 20, stdin, 0) || mbfputs(nullptr, stdout, 0));
    const Stream read_only(fopen("/dev/null", "r"), fclose);
    EXPECT_EQ(mbfputs("a", read_only.get(), ZV_EUC), EOF);
    InitMbutilExt(ZV_8859_2);
    GuardedRoom room(2);
    EXPECT_EQ(mbfreadstring(room.data(), 2, stream_of("abc").get()), 2) << "no terminator";
}

TEST(FileConversion, AppendsRefusesAndKeepsWhatItMay) {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out";
    const auto converts = [&](const char* source, const char* target, char append, int from) {
        return mbconvertfile2native_ex((folder / source).c_str(), (folder / target).c_str(), append,
                                       from);
    };
    InitMbutilExt(ZV_EUC);
    write_file(in, "\x88\x9F");
    EXPECT_FALSE(converts("in", "out", 0, ZV_EUC) || converts("none", "out", 0, ZV_SJIS) ||
                 converts("in", "no/such", 0, ZV_SJIS));
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_TRUE(converts("in", "out", 0, ZV_SJIS) && converts("in", "out", 1, ZV_SJIS));
    EXPECT_EQ(content(out), "\xB0\xA1\xB0\xA1");
    write_file(in, std::string("a\x82\0b\x88\x9F", 6) + std::string(20994, 'c') + "\x88\x9F");
    EXPECT_TRUE(converts("in", "out", 0, ZV_SJIS));
    EXPECT_EQ(content(out), "a\x82\xB0\xA1") << "a zero byte ends its block's text";
    write_file(in, std::string("\x1B$B0!\0", 6) + std::string(20994, 'c') + "0!");
    EXPECT_TRUE(converts("in", "out", 0, ZV_JIS));
    EXPECT_EQ(content(out), "\xB0\xA1"
                            "0!")
        << "and its shift state";
    write_file(in, "");
    EXPECT_TRUE(converts("in", "out", 0, ZV_SJIS));
    EXPECT_EQ(content(out), "");
}

} // namespace
