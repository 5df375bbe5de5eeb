#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <optional>

#include "faults/faults.h"
#include "mbutil.h"
#include "models/mail_model.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

constexpr int kQuoted = ZV_TRANSFER_QUOTED_PRINTABLE;

// In exactly the room of the output, which lies within the stated one.
std::string encode(const std::string& text) {
    const size_t room = test::model_of_encoder(text).size() + 1;
    EXPECT_LE(room, 3 * text.size() + 3 * (3 * text.size() / 50) + 1);
    return test::convert_guarded([](auto src, auto dst) { convertToQuotedPrintable(dst, src); },
                                 text, room);
}

// In the stated room, and where the text stands.
std::string decode(const std::string& text) {
    const auto convert = [](auto src, auto dst) { convertFromQuotedPrintable(dst, src); };
    test::GuardedText in_place(text);
    convert(in_place.data(), in_place.data());
    EXPECT_EQ(in_place.text(), test::convert_guarded(convert, text, text.size() + 1));
    return in_place.text();
}

TEST(QuotedPrintable, IsWrittenAndReadAsTheModels) {
    EXPECT_EQ(encode("a b=c\xE9\r\n"), "a=20b=3Dc=E9=0D=0A");
    EXPECT_EQ(decode("plain\ttext\x80 only"), "plain\ttext only");
    EXPECT_EQ(MBUTIL_Initialized, 0);
    EXPECT_EQ(decode("caf=E9=e9=4G=G1=\n=\r\nb"), "caf\xE9\xE9"
                                                  "4G=G1");
    EXPECT_EQ(MBUTIL_Initialized, 1);
    const std::string tails[] = {"", "1=\nz", "=41=\r=4\ny"};
    for (unsigned pair = 256; pair < 65536; ++pair) {
        const char bytes[] = {'=', char(pair >> 8), char(pair), 0};
        const std::string text = bytes + tails[pair % 256 == 0 ? 0 : pair % 3];
        ASSERT_EQ(decode(text), test::model_of_decoder(text)) << pair;
    }
    std::mt19937 random(31);
    const std::string alphabets[] = {"\xA4\xA2", "=0aF\n\r\tg\x80z", "=3D text of words, \xFC.",
                                     test::all_bytes(), "abc"};
    for (size_t i = 0; i < 3000; ++i) {
        const std::string text = std::string(i % 64, 'p') +
                                 test::random_text(random, alphabets[i % 5], i % 50 ? 130 : 1200);
        ASSERT_EQ(decode(text), test::model_of_decoder(text));
        std::string encoded = encode(text);
        ASSERT_EQ(encoded, test::model_of_encoder(text));
        for (size_t at; (at = encoded.find("=\n\r")) != encoded.npos;) encoded.erase(at, 3);
        ASSERT_EQ(decode(encoded + "\n=41"), text);
    }
}

// In exactly the room of the output, which lies within the stated one.
std::string base64_words(const std::string& text, std::string charset = "iso-2022-jp") {
    const size_t length = test::model_of_base64_words(text, charset).size();
    EXPECT_LE(length + 1, (text.size() + 1) * (charset.size() + 18));
    return test::convert_guarded(
        [&](auto src, auto dst) {
            const char* end = convertSubjectToBase64(dst, src, charset.c_str());
            EXPECT_EQ(end - dst, text.find('\x1B') == text.npos ? 0 : ptrdiff_t(length));
        },
        text, length + 1);
}

// In exactly the room of the output, which lies within the stated one.
std::string subject_for_mail(const std::string& subject, int mail_code_set, int code_set) {
    const std::string expected = test::model_of_subject(subject, mail_code_set, code_set);
    EXPECT_LT(expected.size(), 64 * subject.size() + 64);
    const std::string written = test::convert_guarded(
        [&](auto src, auto dst) { convertSubjectForMail(dst, src, mail_code_set, code_set); },
        subject, expected.size() + 1);
    EXPECT_EQ(written, expected);
    return written;
}

TEST(Subjects, AreWrittenAsTheModelsWhateverTheBytes) {
    EXPECT_EQ(base64_words("Re: \x1B$B0!\x1B(J"),
              "Re: =?iso-2022-jp?B?GyRCMCE=?=\n \t=?iso-2022-jp?B?GyRCGyhK?=");
    std::mt19937 random(33);
    const std::string densest = "\xB1\x1B"; // makes the most of each byte
    const std::string alphabets[] = {
        "\x1B", densest, "\x1B$B0!0!0!0!0!0!0!0!", "\x81\x1B\xB1\x8E.", test::all_bytes(), "words"};
    for (size_t i = 0; i < 3000 && !HasFailure(); ++i) {
        const std::string text = test::random_text(random, alphabets[i % 6], 150);
        const std::string charset(random() % (i % 8 == 0 ? 90 : 16), 'c');
        EXPECT_EQ(base64_words(text, charset), test::model_of_base64_words(text, charset));
        const int code_set = i % 2 == 0 ? ZV_SJIS : i % 3 == 0 ? ZV_EUC : ZV_BIG5;
        InitMbutilExt(code_set);
        subject_for_mail(text, ZV_JIS, code_set);
        subject_for_mail(text, code_set == ZV_BIG5 ? ZV_EUC_H : ZV_8859_2, code_set);
    }
    InitMbutilExt(ZV_SJIS);
    for (std::string text; text.size() < 200; text += densest[text.size() % 2])
        subject_for_mail(text, ZV_JIS, ZV_SJIS);
}

// A fold beside plain text counts as a blank.
std::string without_blanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\n'; });
    return text;
}

TEST(Subjects, AreReadByAMailProgram) {
    std::string headers, expected;
    const auto add = [&](const std::string& subject, int mail_code_set, int code_set,
                         const char* encoding) {
        InitMbutilExt(code_set);
        headers += "Subject: " + subject_for_mail(subject, mail_code_set, code_set) + "\n\n";
        std::string text = subject;
        if (mail_code_set == ZV_JIS) { // half-width katakana come back full-width
            text.resize(5 * subject.size() + 4);
            text = convertStrExt(subject.c_str(), code_set, text.data(), ZV_JIS);
        }
        expected += without_blanks(*test::iconv_text(encoding, "UTF-8", text));
    };
    std::mt19937 random(34);
    const std::string characters[] = {"a",        "Z",        "5",        "\xA4\xA2", "\xB0\xA1",
                                      "\xC6\xFC", "\xA5\xF6", "\x8E\xB1", "\x8E\xDF", "!"};
    std::string alternating, letters = "plain words, 100% = 'all'. And so on";
    for (int byte = 0xC0; byte < 0x100; ++byte) letters += static_cast<char>(byte);
    for (int i = 0; i < 200; ++i) {
        std::string euc;
        for (size_t left = 1 + random() % 60; left != 0; --left)
            euc += characters[random() % std::size(characters)];
        add(euc, ZV_JIS, ZV_EUC, "ISO-2022-JP");
        add(*test::iconv_text("EUC-JP", "SHIFT_JIS", euc), ZV_JIS, ZV_SJIS, "ISO-2022-JP");
        add(alternating += i % 2 == 0 ? '\xB1' : 'a', ZV_JIS, ZV_SJIS, "ISO-2022-JP");
        add(test::random_text(random, letters, 200), ZV_8859_2, ZV_8859_2, "ISO-8859-2");
        add(test::random_text(random, letters, 200), ZV_8859_5, ZV_CP1251, "CP1251");
    }
    const test::Folder folder;
    const std::string path = folder / "headers";
    test::write_file(path, headers);
    const std::string read = without_blanks(test::output_of(
        std::string("PYTHONIOENCODING=utf-8 python3 " ZVUTIL_READ_SUBJECTS " <") + path));
    EXPECT_EQ(read, expected);
}

// The next line in exactly the stated room; nothing at the end.
std::optional<std::string> next_line(const test::Stream& stream, int size, int from, int kind) {
    test::GuardedRoom room(static_cast<size_t>(size));
    const char* line = getLine(room.data(), size, stream.get(), from, kind, ZV_EUC);
    return line == nullptr ? std::nullopt : std::optional(room.text());
}

TEST(Lines, OfEveryKind) {
    InitMbutilExt(ZV_EUC);
    const struct {
        const char* text;
        int size, kind, from;
        std::vector<std::string> lines;
    } cases[] = {
        {"abc=\ndef\n", 80, kQuoted, ZV_EUC, {"abcdef\n"}},
        {"abc=\ndef\n", 80, 0, ZV_EUC, {"abc=\n", "def\n"}},
        {"a\xE4=B0=A1 b\nlast", 80, kQuoted, ZV_EUC, {"a\xB0\xA1 b\n", "last\n"}},
        {"a=\r\nb\n", 80, kQuoted, ZV_EUC, {"a\n", "b\n"}},
        {"a=\n", 80, kQuoted, ZV_EUC, {}}, // its continuation is missing
        {"=\n=\nx\n", 80, kQuoted, ZV_EUC, {"x\n"}},
        {"=\n\nx", 2000, kQuoted, ZV_EUC, {"\n", "x\n"}},
        {"abcdefgh\n", 5, 0, ZV_EUC, {"abcd", "efgh", "\n"}},
        {"ab=41\ncd\n", 5, kQuoted, ZV_EUC, {"ab41", "cd\n"}}, // "ab=4" counts as continued
        {"x=00y=\nz\n", 80, kQuoted, ZV_EUC, {"xz\n"}},        // zero ends its part of the line
        {"\xB1\xB2\xB3\n\xB1\n", 6, 0, ZV_SJIS, {"\x8E\xB1\x8E\xB2", "\x8E\xB1\n"}}}; // none is cut
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const test::Stream stream = test::stream_of(c.text);
        for (const std::string& line : c.lines)
            EXPECT_EQ(next_line(stream, c.size, c.from, c.kind), line);
        EXPECT_EQ(next_line(stream, c.size, c.from, c.kind), std::nullopt);
    }
    char room[] = "kept";
    EXPECT_EQ(getLine(room, 5, nullptr, ZV_EUC, ZV_TRANSFER_NOTHING, ZV_EUC), room);
    EXPECT_FALSE(getLine(room, 0, nullptr, ZV_EUC, 0, ZV_EUC) ||
                 getLine(nullptr, 5, nullptr, ZV_EUC, 0, ZV_EUC));
    EXPECT_STREQ(room, "kept");
    EXPECT_EQ(next_line(test::stream_of("ab"), 1, ZV_EUC, 0), "");
}

TEST(MailMemory, IsTakenForLongTextsAlone) {
    InitMbutilExt(ZV_SJIS);
    std::string text, line, out(20000, '#');
    // A line in many parts that grows into JIS as much as text can.
    for (; text.size() < 6000; text += "=B1a=\n") line += "\x1B$B%\"\x1B(Ja";
    const std::string subject(9000, 'x');
    const test::Stream stream = test::stream_of(text + "\n");
    const auto read_line = [&](int size) {
        return getLine(out.data(), size, stream.get(), ZV_SJIS, kQuoted, ZV_JIS) != nullptr;
    };
    EXPECT_TRUE(read_line(20000));
    EXPECT_EQ(out.c_str(), line + '\n');
    // Each line of 50 is a word with 20 characters around it, of which the last lacks the fold.
    EXPECT_EQ(strlen(convertSubjectForMail(out.data(), subject.c_str(), ZV_8859_2, ZV_8859_2)),
              180U * (50 + 20) - 3);
    const auto short_texts = [&] {
        convertSubjectForMail(out.data(), "a short one", ZV_8859_2, ZV_8859_2);
        convertSubjectForMail(out.data(), subject.c_str() + 8000, ZV_JIS, ZV_SJIS);
        return fseek(stream.get(), -6, SEEK_END) == 0 && read_line(80);
    };
    EXPECT_EQ(test::with_fault(1, short_texts), std::pair(true, false));
}

} // namespace
