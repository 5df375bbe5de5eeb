#include <gtest/gtest.h>

#include "jaconv.h"
#include "mbutil.h"
#include "models/japanese_model.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

using test::between, test::is_lead;
const auto& kDirections = test::kJapanese;
using Direction = test::JapaneseDirection;

std::string converted(const Direction& direction, std::string_view text) {
    return test::convert_guarded(direction.convert, text,
                                 direction.growth * text.size() + direction.extra);
}

// With exactly the room of the result, which is within the promised one.
void expect_as_model(const Direction& direction, const std::string& text) {
    const std::string expected = test::japanese_model(direction, text);
    ASSERT_LT(expected.size(), direction.growth * text.size() + direction.extra);
    // Sums that wrap can give zero bytes.
    ASSERT_EQ(test::convert_guarded(direction.convert, text, expected.size() + 1), expected.c_str())
        << direction.name;
    test::GuardedText source(text);
    if (direction.convert == shift2eucx) { ASSERT_EQ(eucLength(source.data()), expected.size()); }
    if (direction.convert == euc2shiftx) { ASSERT_EQ(shiftLength(source.data()), expected.size()); }
}

TEST(JapaneseConverters, KeepTheirRulesWhateverTheBytes) {
    std::mt19937 random(3);
    const std::string any = test::all_bytes();
    const std::string_view alphabets[] = {any, "\xB1\x41\x82\xA0\n", "\x8E\xB1\xA4\x41\xA2\x8F\r",
                                          "\x1B$B(JK01\x9F\n", "\xB1\xDF"};
    for (const Direction& direction : kDirections) {
        for (int pair = 0; pair < 65536 && !HasFailure(); ++pair) {
            // The padding changes with the pair, so that all phases of the block loops are met.
            std::string text(direction.from == ZV_JIS ? "\x1B$B" : "");
            text.append(size_t(pair % 64), 'x').append(1, char(pair >> 8)).append(1, char(pair));
            text = text.c_str();
            expect_as_model(direction, text.append(size_t(pair / 7 % 80), 'y'));
        }
        for (int round = 0; round < 20000 && !HasFailure(); ++round)
            expect_as_model(direction, test::random_text(random, alphabets[round % 5],
                                                         round < 10000 ? 7 : 150));
    }
}

// Every two-byte character that iconv knows in Japanese EUC, and the half-width katakana, with
// ASCII between them.
std::string repertoire(bool katakana, int* count) {
    std::string text = "ASCII ";
    for (int first = 0xA1; first <= 0xFE; ++first) {
        for (int second = 0xA1; second <= 0xFE; ++second) {
            const char code[] = {char(first), char(second)};
            if (!test::iconv_text("EUC-JP", "UTF-8", {code, 2})) continue;
            ++*count;
            text.append(code, 2).append(second % 7 == 0 ? "a\n" : "");
        }
    }
    for (int byte = 0xA1; katakana && byte <= 0xDF; ++byte)
        text.append(1, '\x8E').append(1, char(byte));
    return text;
}

TEST(JapaneseConverters, AgreeWithIconvOverTheWholeRepertoire) {
    int count = 0;
    const std::string euc = repertoire(true, &count);
    EXPECT_EQ(count, 6879) << "JIS X 0208";
    const std::string shift_jis = test::iconv_text("EUC-JP", "SJIS", euc).value();
    EXPECT_EQ(converted(kDirections[0], shift_jis), euc);
    EXPECT_EQ(converted(kDirections[1], euc), shift_jis);

    // iconv returns to single-byte text with ESC ( B and has no half-width katakana in JIS.
    const std::string plain_euc = repertoire(false, &count);
    const std::string plain_shift_jis = test::iconv_text("EUC-JP", "SJIS", plain_euc).value();
    std::string jis = test::iconv_text("EUC-JP", "ISO-2022-JP", plain_euc).value();
    EXPECT_EQ(converted(kDirections[4], jis), plain_shift_jis);
    EXPECT_EQ(converted(kDirections[5], jis), plain_euc);
    for (size_t at = 0; (at = jis.find("\x1B(B", at)) != std::string::npos; ++at) jis[at + 2] = 'J';
    EXPECT_EQ(converted(kDirections[2], plain_shift_jis), jis);
    EXPECT_EQ(converted(kDirections[3], plain_euc), jis);
}

TEST(JapaneseCharacters, ShiftJisAndJisAreInverse) {
    for (int lead = 0x81; lead <= 0xEF; ++lead) {
        for (int trail = 0x40; is_lead(lead) && trail <= 0xFC; ++trail) {
            int first = lead, second = trail;
            sjis2jis(&first, &second);
            ASSERT_TRUE(between(first, 0x21, 0x7E) && between(second, 0x21, 0x7E));
            jis2sjis(&first, &second);
            // 7F is no trail byte of Shift-JIS proper; it stands for the cell of 80.
            ASSERT_EQ(first, lead);
            ASSERT_EQ(second, trail == 0x7F ? 0x80 : trail);
        }
    }
}

TEST(JapaneseCharacters, AnnouncedLengthsAndEscapeSequences) {
    for (int byte = 0; byte < 256; ++byte) {
        const char text[] = {char(byte), 0};
        EXPECT_EQ(bytesInEucChar(text), mblenExt(text, 1, ZV_EUC)) << byte;
        EXPECT_EQ(bytesInShiftChar(text), mblenExt(text, 1, ZV_SJIS)) << byte;
    }
    EXPECT_FALSE(bytesInEucChar(nullptr) || bytesInShiftChar(nullptr));
    for (int i = 0; i < 16; ++i) {
        const int c = "$(KH"[i % 4], before = i / 4 % 2, after = c == '$' || c == 'K';
        test::GuardedText rest(i < 8 ? "B" : "");
        const unsigned char* at = rest.bytes();
        int mode = before;
        EXPECT_EQ(SkipESCSeq(&at, c, &mode), after != before) << i;
        EXPECT_EQ(mode, after) << i;
        EXPECT_EQ(at - rest.bytes(), i < 8 && i % 4 < 2) << i;
    }
}

// Every half-width katakana before no mark, a voiced, a semi-voiced mark and another katakana, as
// Unicode's normalisation widens it, alone where that gives no one character of Shift-JIS.
const char kNormalise[] = R"(python3 -c '
import sys, unicodedata
def wide(*code):
    text = unicodedata.normalize("NFKC", bytes(code).decode("cp932"))
    return text.translate({0x3099: 0x309B, 0x309A: 0x309C}).encode("cp932", "replace")
for kana in range(0xA1, 0xE0):
    for mark in 1, 0xDE, 0xDF, 0xB1:
        both = wide(kana, mark)
        sys.stdout.buffer.write(both if len(both) == 2 and mark > 1 else wide(kana))
')";

TEST(Katakana, WidensAsUnicodeNormalisesAndMergesMarks) {
    const std::string normalised = test::output_of(kNormalise);
    ASSERT_EQ(normalised.size(), 63u * 4 * 2);
    for (const int code_set : {int(ZV_SJIS), int(ZV_EUC), 1}) {
        for (size_t i = 0; i < normalised.size(); i += 2) {
            const bool euc = code_set == ZV_EUC;
            const size_t plain = code_set == 1 ? i - i % 8 : i;
            const std::string mark(1, "\1\xDE\xDF\xB1"[i / 2 % 4]);
            test::GuardedText rest(euc ? "\x8E" + mark : mark);
            const unsigned char* at = rest.bytes();
            int first = int(i / 8) + 0xA1, second = -1;
            han2zen(&at, &first, &second, code_set);
            EXPECT_EQ((std::string{char(first), char(second)}), normalised.substr(plain, 2)) << i;
            const bool merged = normalised.substr(plain, 2) != normalised.substr(i - i % 8, 2);
            EXPECT_EQ(at - rest.bytes(), merged ? 1 + euc : 0) << i;
        }
    }
    const unsigned char* nothing = nullptr;
    int other = 0xE0, second = 0;
    han2zen(&nothing, &other, &second, 1);
    EXPECT_EQ(other, 0xE0);
}

TEST(Detection, DecidesAsSoonAsItCan) {
    // What is read stands before the bar.
    const std::pair<int, std::vector<std::string>> cases[] = {
        {0, {"ASCII only|", "|", "\x1B(Jx\x1B$(x|", "\x8E\xFDz|", "\xE0|", "\x80\xA0\xFFz|"}},
        {ZV_JIS, {"a\x1B$B|xyz", "\x1B$@|", "\x1BK|x"}},
        {ZV_SJIS,
         {"\x88|\x9F", "\x8E\x41|z", "\xB1|", "\xB1z|", "\xB0\xE0\xE1\x81z|z", "\xE0\x40|z",
          "\xE0\xA1\x88|z"}},
        {ZV_EUC,
         {"\xA4\xF0|z", "\xB1\xA0\xF1|", "\xB0\xE0\xE1\xFEz|z", "\xB0\xE0\xE1 z\xF1|z", "\xF0|z",
          "\xE0\xFD|z"}},
        {ZV_EUC_OR_SJIS, {"\x8E\xB1z|", "\xB0\xA1|", "\xB0\xE0|", "\xB0\xE0\xFC|", "\xE0\xFC|"}}};
    for (const auto& [result, texts] : cases) {
        for (std::string text : texts) {
            const size_t position = text.find('|');
            const test::Stream file = test::stream_of(text.erase(position, 1));
            EXPECT_EQ(DetectJPCodeType(file.get()), result) << text;
            EXPECT_EQ(ftell(file.get()), position) << text;
        }
    }
}

} // namespace
