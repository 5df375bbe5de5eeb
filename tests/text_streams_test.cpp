#include <gtest/gtest.h>

#include <filesystem>

#include "jaconv.h"
#include "mbutil.h"
#include "models/strings_model.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

using namespace test;

std::string text_of(const Stream& file) {
    std::string text(5000, '\0');
    rewind(file.get());
    text.resize(fread(text.data(), 1, text.size(), file.get()));
    return text;
}

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

std::string convert(std::string_view text, int from, int to) {
    return convert_guarded([&](const char* s, char* d) { convertStrExt(s, from, d, to); }, text,
                           5 * text.size() + 4);
}

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
    EXPECT_STREQ(UnixCodingToWindowsCodingExt("\xB0\xA1", out), "\xB0\xA1") << "uninitialised";
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

TEST(Numbers, BecomeAsciiCharacterByCharacter) {
    const struct {
        int code_set;
        const MbToSbNumber* table;
        const char *charset, *ascii;
    } cases[] = {{ZV_SJIS, Mb2SbNumberTableInSJIS, "SJIS", "0123456789..//:"},
                 {ZV_EUC, Mb2SbNumberTableInEUC, "EUC-JP", "0123456789.../: ()"},
                 {ZV_GB, Mb2SbNumberTableInGB, "GB2312", "0123456789:/()."},
                 {ZV_KSC_5601_92, Mb2SbNumberTableInKSC92, "EUC-KR", "0123456789:/()."},
                 {ZV_BIG5, Mb2SbNumberTableInBIG5, "BIG5", "0123456789:/()."},
                 {ZV_EUC_H, Mb2SbNumberTableInEUC_H, "BIG5", "0123456789:/().:"}};
    std::mt19937 random(1);
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        std::string wide, ascii;
        for (const MbToSbNumber* row = c.table; row->mb[0] != 0; ++row) {
            const std::string mb(reinterpret_cast<const char*>(row->mb));
            wide += mb;
            ascii += row->sb;
            // The digits are U+FF10 onwards, as a system that knows nothing of us says.
            if (row->sb < '0' || row->sb > '9') continue;
            EXPECT_EQ(iconv_text(c.charset, "UTF-16BE", mb),
                      std::string("\xFF") + char(row->sb - '0' + 0x10));
        }
        EXPECT_EQ(ascii, c.ascii);
        for (int round = 0; round < 5000; ++round) {
            const std::string text = random_text(random, wide + "a\x8E\x8F\xA2\x82", 12);
            std::string expected;
            for (size_t i = 0, length; i < text.size(); i += length) {
                length = static_cast<size_t>(mbbytesinchar(&text[i]));
                size_t row = 0;
                while (row < ascii.size() && wide.compare(2 * row, 2, text, i, length) != 0) ++row;
                expected += row < ascii.size() ? ascii.substr(row, 1) : text.substr(i, length);
            }
            ASSERT_EQ(convert_guarded(ConvertMBNumberToSBNumber, text, text.size() + 1), expected);
        }
    }
    InitMbutilExt(ZV_EUC_C);
    EXPECT_EQ(convert_guarded(ConvertMBNumberToSBNumber, "\xA3\xB0", 3), "\xA3\xB0");
}

TEST(TextStreams, LinesAreConvertedBothWaysAndCutBetweenCharacters) {
    std::mt19937 random(2);
    for (unsigned round = 0; round < 2000; ++round) {
        const auto& pair = kPairs[round % std::size(kPairs)];
        const int current = round % 5 == 0 ? ZV_WESTERN : pair.to,
                  outside = round % 7 ? pair.from : 0;
        InitMbutilExt(current);
        const bool converts = mbIsMultiByte() && outside != 0;
        const std::string text = random_text(random, std::string(pair.text) + "ab\n\xB1", 40);
        const size_t size = 2 + random() % 30;
        const Stream file = stream_of(text), written = stream_of("");
        GuardedRoom room(size);
        for (size_t at = 0; at < text.size();) {
            const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
            const std::string raw = text.substr(at, std::min(end - at, size - 1));
            std::string line = converts ? convert(raw, outside, current) : raw;
            const auto cut = static_cast<unsigned>(std::min(size - 1, line.size()));
            line.resize(mbidx(line.c_str(), cut));
            ASSERT_EQ(mbfgets(room.data(), int(size), file.get(), outside), room.data());
            ASSERT_EQ(room.text(), line) << raw << pair.from << ' ' << pair.to << ' ' << size;
            at += raw.size();
        }
        ASSERT_EQ(mbfgets(room.data(), int(size), file.get(), outside), nullptr);
        ASSERT_GE(mbfputs(GuardedText(text).data(), written.get(), outside), 0);
        ASSERT_EQ(text_of(written), converts ? convert(text, current, outside) : text);
    }
    InitMbutilExt(ZV_SJIS);
    EXPECT_FALSE(mbfgets(nullptr, 20, stdin, 0) || mbfputs(nullptr, stdout, 0));
    const Stream read_only(fopen("/dev/null", "r"), fclose);
    EXPECT_EQ(mbfputs("a", read_only.get(), ZV_EUC), EOF);
}

TEST(TextStreams, BlocksEndBetweenCharacters) {
    std::mt19937 random(3);
    for (unsigned round = 0; round < 2000; ++round) {
        const int code_sets[] = {ZV_SJIS, ZV_EUC, ZV_EUC_H, ZV_JIS, ZV_BIG5};
        InitMbutilExt(code_sets[round % 5]);
        std::string text = random_text(random, "ab\x80\x82\xA0\x8E\xA2\xA1\x8F", 20);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const bool through_pipe = write(ends[1], text.data(), text.size()) >= 0 && round % 2 != 0;
        close(ends[1]);
        const Stream from_pipe(fdopen(ends[0], "rb"), fclose), file = stream_of(text);
        const unsigned size = 1 + round / 5 % 7;
        GuardedRoom room(size + 1);
        for (size_t whole = 1; whole != 0; text.erase(0, whole)) {
            whole = block_size(text, size);
            ASSERT_EQ(mbfreadstring(room.data(), size, through_pipe ? from_pipe.get() : file.get()),
                      int(whole));
            ASSERT_EQ(room.text(), text.substr(0, whole));
        }
    }
    InitMbutilExt(ZV_8859_2);
    GuardedRoom room(2);
    EXPECT_EQ(mbfreadstring(room.data(), 2, stream_of("abc").get()), 2) << "no terminator";
}

TEST(FileConversion, EqualsOneConversionAtEveryPhaseOfTheBlocks) {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out";
    std::mt19937 random(4);
    for (const auto& pair : kPairs) {
        if (!pair.files) continue;
        InitMbutilExt(pair.to);
        const std::string alphabets[] = {std::string(pair.text), std::string(pair.text) + "a\n",
                                         "\x1B$BK(J01\n",
                                         "\x82\xA0\x8E\xA2\xB1\x8F\xFD\x80\x41\xE0\n", all_bytes()};
        for (const std::string& alphabet : alphabets) {
            std::string text;
            while (text.size() < 2 * 21000)
                text += random() % 2 ? std::string(pair.text) : random_text(random, alphabet, 5);
            for (size_t phase = 0; phase < 6; ++phase) {
                const std::string source = std::string(phase, 'x') + text;
                write_file(in, source);
                ASSERT_EQ(mbconvertfile2native_ex(in.c_str(), out.c_str(), 0, pair.from), 1);
                const std::string expected = convert(source, pair.from, pair.to);
                // A pair of JIS bytes above 7F can become a zero byte; the file goes on behind it.
                ASSERT_EQ(content(out).substr(0, expected.size()), expected)
                    << pair.from << ' ' << phase;
            }
        }
    }
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
