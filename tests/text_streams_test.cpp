#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <filesystem>
#include <memory>

#include "jaconv.h"
#include "mbutil.h"
#include "support/failing_allocation.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

using test::content;
using test::Folder;
using test::GuardedRoom;
using test::GuardedText;
using test::write_file;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File file_with(std::string_view text) {
    File file(tmpfile(), fclose);
    fwrite(text.data(), 1, text.size(), file.get());
    rewind(file.get());
    return file;
}

// One text in each code set that a converter serves; the rest of the pairs copies.
const struct {
    int from, to;
    std::string_view text, converted;
    bool files;
} kPairs[] = {
    {ZV_JIS, ZV_SJIS, "\x1B$B0!\x1B(J", "\x88\x9F", true},
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
    {ZV_CP1251, ZV_8859_5, "\xC0", "\xB0", false},
};

TEST(Dispatch, PicksTheConverterOfEachPairAndCopiesAllOthers) {
    for (int from = -1; from <= 66; ++from) {
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
        }
    }
}

TEST(Dispatch, NativeStringsAndTheWindowsForm) {
    char out[32];
    EXPECT_STREQ(UnixCodingToWindowsCodingExt("\xB0\xA1", out), "\xB0\xA1") << "uninitialised";
    EXPECT_EQ(MaxStringLengthOnWinAndUnix("\xB1\xB2"), 2);
    const struct {
        int current;
        const char *windows, *native_as_jis;
        int longest;
    } cases[] = {
        {ZV_EUC, "\x88\x9F", "\x1B$B0!\x1B(J", 2}, {ZV_SJIS, "\x88\x9F", "\x1B$B!W!#\x1B(J", 4},
        {ZV_JIS, "\xB0\xA1", "\xB0\xA1", 2},       {ZV_BIG5, "\xB0\xA1", "\xB0\xA1", 2},
        {ZV_8859_5, "\xB0\xA1", "\xB0\xA1", 2},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.current);
        EXPECT_STREQ(UnixCodingToWindowsCodingExt("\xB0\xA1", out), c.windows);
        if (c.current == ZV_EUC || c.current == ZV_SJIS) {
            EXPECT_STREQ(WindowsCodingToUnixCodingExt("\x88\x9F", out), "\xB0\xA1");
        }
        EXPECT_EQ(mbconvertnativestring(out, "\xB0\xA1", ZV_JIS), 1);
        if (c.current != ZV_SJIS) { EXPECT_STREQ(out, c.native_as_jis) << c.current; }
        EXPECT_EQ(MaxStringLengthOnWinAndUnix("\xB0\xA1"), c.longest) << c.current;
    }
    InitMbutilExt(ZV_BIG5);
    EXPECT_EQ(MaxStringLengthOnWinAndUnix("\xC8\x79"), 4);
    InitMbutilExt(ZV_EUC_H);
    EXPECT_EQ(MaxStringLengthOnWinAndUnix("\x8E\xA4\xA1\xA3"), 4);
    EXPECT_EQ(mbconvertnativestring(nullptr, "a", ZV_JIS), 0);
    EXPECT_EQ(mbconvertnativestring(out, nullptr, ZV_JIS), 0);
    EXPECT_EQ(UnixCodingToWindowsCodingExt(nullptr, out), nullptr);
    EXPECT_EQ(WindowsCodingToUnixCodingExt("a", nullptr), nullptr);
}

TEST(Numbers, TablesNameTheFullWidthFormsOfTheirCodeSets) {
    const struct {
        int code_set;
        const MbToSbNumber* table;
        const char* charset;
        const char* ascii;
    } cases[] = {
        {ZV_SJIS, Mb2SbNumberTableInSJIS, "SJIS", "0123456789..//:"},
        {ZV_EUC, Mb2SbNumberTableInEUC, "EUC-JP", "0123456789.../: ()"},
        {ZV_GB, Mb2SbNumberTableInGB, "GB2312", "0123456789:/()."},
        {ZV_KSC_5601_92, Mb2SbNumberTableInKSC92, "EUC-KR", "0123456789:/()."},
        {ZV_BIG5, Mb2SbNumberTableInBIG5, "BIG5", "0123456789:/()."},
        {ZV_EUC_H, Mb2SbNumberTableInEUC_H, nullptr, "0123456789:/().:"},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        std::string wide, ascii;
        for (const MbToSbNumber* row = c.table; row->mb[0] != 0; ++row) {
            const std::string mb(reinterpret_cast<const char*>(row->mb));
            wide += mb;
            ascii += row->sb;
            // The digits are U+FF10 onwards, as a system that knows nothing of us says.
            if (c.charset != nullptr && row->sb >= '0' && row->sb <= '9') {
                EXPECT_EQ(test::iconv_text(c.charset, "UTF-16BE", mb),
                          std::string("\xFF") + char(row->sb - '0' + 0x10));
            }
        }
        EXPECT_EQ(ascii, c.ascii);
        EXPECT_EQ(test::convert_guarded(ConvertMBNumberToSBNumber, wide, wide.size() + 1), ascii);
    }
    const struct {
        int code_set;
        std::string_view text, expected;
    } texts[] = {
        {ZV_SJIS, "\x82\x50\x82\x51\x81\x46\x82\x52\x82\x4F", "12:30"},
        {ZV_SJIS, "a\x82\xA0\x82", "a\x82\xA0\x82"},
        {ZV_EUC, "\x8F\xA2\xA3\xB0", "\x8F\xA2\xA3\xB0"},
        {ZV_EUC_C, "\xA3\xB0", "\xA3\xB0"},
        {ZV_WESTERN, "\xA3\xB0", "\xA3\xB0"},
    };
    for (const auto& c : texts) {
        InitMbutilExt(c.code_set);
        EXPECT_EQ(test::convert_guarded(ConvertMBNumberToSBNumber, c.text, c.text.size() + 1),
                  c.expected);
    }
}

TEST(TextStreams, LinesAreConvertedAndCutBetweenCharacters) {
    const struct {
        int current, file;
        const char* text;
        int size;
        std::vector<std::string> lines;
    } cases[] = {
        {ZV_EUC, ZV_SJIS, "\x88\x9F\nb", 20, {"\xB0\xA1\n", "b"}},
        {ZV_EUC, ZV_SJIS, "\xB1\xB2\xB3\n", 6, {"\x8E\xB1\x8E\xB2"}},
        {ZV_EUC, ZV_SJIS, "\xB1\xB2\xB3\xB4\xB5", 5, {"\x8E\xB1\x8E\xB2", "\x8E\xB5"}},
        {ZV_EUC, 0, "\x88\x9F\n", 20, {"\x88\x9F\n"}},
        {ZV_JIS, ZV_SJIS, "\xB1 \xB1", 40, {"\x1B$B%\"\x1B(J \x1B$B%\"\x1B(J"}},
        {ZV_WESTERN, ZV_SJIS, "\x88\x9F\n", 20, {"\x88\x9F\n"}},
        {ZV_EUC, ZV_SJIS, "", 20, {}},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.current);
        const File file = file_with(c.text);
        GuardedRoom room(static_cast<size_t>(c.size));
        for (const std::string& line : c.lines) {
            ASSERT_EQ(mbfgets(room.data(), c.size, file.get(), c.file), room.data());
            EXPECT_EQ(room.text(), line);
        }
        EXPECT_EQ(mbfgets(room.data(), c.size, file.get(), c.file), nullptr);
    }
    EXPECT_EQ(mbfgets(nullptr, 20, stdin, 0), nullptr);
}

TEST(TextStreams, StringsAreConvertedOnTheirWayOut) {
    std::string kana;
    for (int i = 0; i < 3000; ++i) kana += "\xB1 ";
    InitMbutilExt(ZV_SJIS);
    for (const int code_set : {0, int(ZV_SJIS), int(ZV_EUC), int(ZV_JIS)}) {
        const File file = file_with("");
        EXPECT_GE(mbfputs(kana.c_str(), file.get(), code_set), 0);
        std::string expected(kana.size() * 5 + 4, '\0');
        convertStrExt(kana.c_str(), ZV_SJIS, expected.data(), code_set);
        std::string written(expected.size(), '\0');
        rewind(file.get());
        written.resize(fread(written.data(), 1, written.size(), file.get()));
        EXPECT_EQ(written, expected.c_str());
    }
    EXPECT_EQ(mbfputs(nullptr, stdout, 0), 0);
    const File read_only(fopen("/dev/null", "r"), fclose);
    EXPECT_EQ(mbfputs("a", read_only.get(), ZV_EUC), EOF);
}

TEST(TextStreams, WithoutMemoryTheFailureValueAndNoLeak) {
    const std::string kana(5000, '\xB1');
    InitMbutilExt(ZV_SJIS);
    const File file = file_with(kana);
    std::string line(6000, '\0');
    const long before = test::live_blocks();
    EXPECT_EQ(
        test::with_failing_allocation(1, [&] { return mbfputs(kana.c_str(), file.get(), ZV_JIS); }),
        std::pair(-1, true));
    EXPECT_EQ(test::with_failing_allocation(1, [&] { return AccumulateAsciiForStr(kana.c_str()); }),
              std::pair(-1, true));
    fgetc(file.get()); // the stream has its own buffer now
    const long with_stream = test::live_blocks();
    EXPECT_EQ(test::with_failing_allocation(
                  1, [&] { return mbfgets(line.data(), 6000, file.get(), ZV_EUC); }),
              std::pair(static_cast<char*>(nullptr), true));
    EXPECT_EQ(test::live_blocks(), with_stream);
    EXPECT_LE(with_stream, before + 1);

    Folder folder;
    write_file(folder / "in", kana);
    InitMbutilExt(ZV_EUC);
    const std::string in = folder / "in", out = folder / "out";
    const auto convert = [&] {
        return mbconvertfile2native_ex(in.c_str(), out.c_str(), 0, ZV_SJIS);
    };
    const long before_files = test::live_blocks();
    const auto failed = [&](int result) {
        EXPECT_EQ(test::live_blocks(), before_files);
        EXPECT_TRUE(result == 0 || content(out).size() == 10000) << "stdio can do without buffers";
    };
    EXPECT_EQ(test::after_each_failing_allocation(convert, failed), 1);
}

TEST(TextStreams, BlocksEndBetweenCharacters) {
    const struct {
        int code_set;
        const char* text;
        unsigned size;
        std::vector<std::string> blocks;
    } cases[] = {
        {ZV_SJIS, "abc\x82\xA0", 4, {"abc", "\x82\xA0"}},
        {ZV_SJIS, "abc\x82", 4, {"abc", "\x82"}},
        {ZV_EUC, "ab\x8F\xA1\xA1", 4, {"ab", "\x8F\xA1\xA1"}},
        {ZV_EUC_H,
         "a\x8E\xA2\xA1\xA1"
         "b",
         4,
         {"a", "\x8E\xA2\xA1\xA1", "b"}},
        {ZV_EUC_H, "abc\x8E\xA2\xA1\xA1", 4, {"abc", "\x8E\xA2\xA1\xA1"}},
        {ZV_SJIS,
         "abc\x80"
         "d",
         4,
         {"abc", "\x80"
                 "d"}},
        {ZV_JIS, "abc\x82\xA0", 4, {"abc\x82", "\xA0"}},
        {ZV_SJIS, "\x82\xA0", 1, {}},
    };
    for (const auto& c : cases) {
        for (const bool through_pipe : {false, true}) {
            InitMbutilExt(c.code_set);
            int ends[2];
            ASSERT_EQ(pipe(ends), 0);
            ASSERT_EQ(write(ends[1], c.text, strlen(c.text)), ssize_t(strlen(c.text)));
            close(ends[1]);
            const File from_pipe(fdopen(ends[0], "rb"), fclose);
            const File file = file_with(c.text);
            FILE* stream = through_pipe ? from_pipe.get() : file.get();
            GuardedRoom room(c.size + 1);
            for (const std::string& block : c.blocks) {
                EXPECT_EQ(mbfreadstring(room.data(), c.size, stream), int(block.size()));
                EXPECT_EQ(room.text(), block);
            }
            EXPECT_EQ(mbfreadstring(room.data(), c.size, stream), 0);
        }
    }
    InitMbutilExt(ZV_8859_2);
    const File file = file_with("abc");
    GuardedRoom room(2);
    EXPECT_EQ(mbfreadstring(room.data(), 2, file.get()), 2) << "no terminator in single-byte text";
}

TEST(FileConversion, EqualsOneConversionAtEveryPhaseOfTheBlocks) {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out";
    std::mt19937 random(4);
    for (const auto& pair : kPairs) {
        if (!pair.files) continue;
        InitMbutilExt(pair.to);
        const std::string alphabets[] = {
            std::string(pair.text), std::string(pair.text) + "a\n", "\x1B$BK(J01\n",
            "\x82\xA0\x8E\xA2\xB1\x8F\xFD\x80\x41\xE0\n", test::all_bytes()};
        for (const std::string& alphabet : alphabets) {
            std::string text;
            while (text.size() < 2 * 21000)
                text +=
                    random() % 2 ? std::string(pair.text) : test::random_text(random, alphabet, 5);
            for (size_t phase = 0; phase < 6; ++phase) {
                const std::string source = std::string(phase, 'x') + text;
                write_file(in, source);
                ASSERT_EQ(mbconvertfile2native_ex(in.c_str(), out.c_str(), 0, pair.from), 1);
                const std::string expected = test::convert_guarded(
                    [&](const char* s, char* d) { convertStrExt(s, pair.from, d, pair.to); },
                    source, 5 * source.size() + 4);
                // A pair of JIS bytes above 7F can become a zero byte; the file goes on behind it.
                ASSERT_EQ(content(out).substr(0, expected.size()), expected)
                    << pair.from << ' ' << phase;
            }
        }
    }
}

TEST(FileConversion, AppendsRefusesAndKeepsWhatItMay) {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out", none = folder / "none";
    const auto convert = [](const std::string& source, const std::string& target, char append,
                            int code_set) {
        return mbconvertfile2native_ex(source.c_str(), target.c_str(), append, code_set);
    };
    InitMbutilExt(ZV_EUC);
    write_file(in, "\x88\x9F");
    EXPECT_EQ(convert(in, none, 0, ZV_EUC), 0);
    EXPECT_EQ(convert(none, out, 0, ZV_SJIS), 0);
    EXPECT_FALSE(std::filesystem::exists(none) || std::filesystem::exists(out));
    EXPECT_EQ(convert(in, folder / "no/such", 0, ZV_SJIS), 0);
    EXPECT_EQ(convert(in, out, 0, ZV_SJIS), 1);
    EXPECT_EQ(convert(in, out, 1, ZV_SJIS), 1);
    EXPECT_EQ(content(out), "\xB0\xA1\xB0\xA1");
    write_file(in, std::string("a\x82\0b\x88\x9F", 6) + std::string(20994, 'c') + "\x88\x9F");
    EXPECT_EQ(convert(in, out, 0, ZV_SJIS), 1);
    EXPECT_EQ(content(out), "a\x82\xB0\xA1") << "a zero byte ends its block's text";
    write_file(in, "");
    EXPECT_EQ(convert(in, out, 0, ZV_SJIS), 1);
    EXPECT_EQ(content(out), "");
}

TEST(ByteSum, IsTakenInTheJapaneseEucForm) {
    EXPECT_EQ(AccumulateAsciiForStr(nullptr), 0);
    EXPECT_EQ(AccumulateAsciiForStr(""), 0);
    InitMbutilExt(ZV_SJIS);
    EXPECT_EQ(AccumulateAsciiForStr("abc"), 294);
    EXPECT_EQ(AccumulateAsciiForStr("\xB0\xA1"), 0xB0 + 0xA1);
    EXPECT_EQ(AccumulateAsciiForStr(std::string(5000, '\xFF').c_str()), 5000 * 255);
    InitMbutilExt(ZV_WESTERN);
    EXPECT_EQ(AccumulateAsciiForStr("\xFF"), 255);
}

} // namespace
