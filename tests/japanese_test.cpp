#include <gtest/gtest.h>

#include <memory>

#include "jaconv.h"
#include "mbutil.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

using test::convert_guarded;

struct Direction {
    const char* name;
    char* (*convert)(const char*, char*);
    int from, to;
    size_t growth, extra; // room: growth * length + extra
};
const Direction kDirections[] = {
    {"shift2eucx", shift2eucx, ZV_SJIS, ZV_EUC, 2, 1},
    {"euc2shiftx", euc2shiftx, ZV_EUC, ZV_SJIS, 1, 1},
    {"shift2jisx", shift2jisx, ZV_SJIS, ZV_JIS, 5, 4},
    {"euc2jisx", euc2jisx, ZV_EUC, ZV_JIS, 3, 4},
    {"jis2shiftx", jis2shiftx, ZV_JIS, ZV_SJIS, 1, 1},
    {"jis2eucx", jis2eucx, ZV_JIS, ZV_EUC, 1, 1},
};

// The result, which is given the promised room, or the very room that it needs where that is known.
std::string converted(const Direction& direction, std::string_view text, size_t room = 0) {
    const size_t promised = direction.growth * text.size() + direction.extra;
    EXPECT_LE(room, promised);
    return convert_guarded(direction.convert, text, room != 0 ? room : promised);
}

bool in(int byte, int first, int last) { return byte >= first && byte <= last; }
bool is_lead(int b) { return in(b, 0x81, 0x9F) || in(b, 0xE0, 0xEF); }

// The rules of all six directions, a byte at a time and without a thought for speed.
std::string model(const Direction& d, std::string_view text) {
    std::string out;
    int two_byte = 0;
    const auto put = [&](int first, int second) { (out += char(first)) += char(second); };
    const auto mode = [&](int wanted) {
        if (d.to == ZV_JIS && two_byte != wanted) out += (two_byte = wanted) ? "\x1B$B" : "\x1B(J";
    };
    const auto put_jis = [&](int first, int second) {
        if (d.to == ZV_SJIS) jis2sjis(&first, &second);
        mode(1);
        put(first + (d.to == ZV_EUC ? 0x80 : 0), second + (d.to == ZV_EUC ? 0x80 : 0));
    };
    const auto put_katakana = [&](int b) {
        int second = 0;
        const unsigned char* nothing = nullptr;
        if (d.to == ZV_SJIS) {
            out += char(b);
        } else if (d.to == ZV_EUC) {
            put(0x8E, b);
        } else {
            han2zen(&nothing, &b, &second, 1);
            sjis2jis(&b, &second);
            put_jis(b, second);
        }
    };
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&](size_t at) { return at < text.size() ? text[at] & 0xFF : -1; };
        int b = byte(i), t = byte(i + 1);
        if (d.from == ZV_JIS && b == 0x1B) {
            if (t < 0 || ((t == '$' || t == '(') && byte(i + 2) < 0)) break;
            two_byte = t == '$' || t == 'K';
            i += t == '$' || t == '(' ? 2 : 1;
        } else if (d.from == ZV_JIS && two_byte && b != '\n' && b != '\r' && t >= 0) {
            int first = b, second = t;
            if (d.to == ZV_SJIS) jis2sjis(&first, &second);
            put(first + (d.to == ZV_EUC ? 0x80 : 0), second + (d.to == ZV_EUC ? 0x80 : 0));
            ++i;
        } else if (d.from == ZV_JIS) {
            two_byte = 0;
            out += char(b);
        } else if (d.from == ZV_SJIS && is_lead(b) && t >= 0) {
            if (in(t, 0x40, 0xFC))
                sjis2jis(&b, &t), put_jis(b, t);
            else
                put(b, t);
            ++i;
        } else if (d.from == ZV_SJIS && in(b, 0xA1, 0xDF)) {
            put_katakana(b);
        } else if (d.from == ZV_EUC && (in(b, 0xA1, 0xFE) || b == 0x8E) && t >= 0) {
            if (b == 0x8E && in(t, 0xA1, 0xDF))
                put_katakana(t);
            else if (b != 0x8E && in(t, 0xA1, 0xFE))
                put_jis(b - 0x80, t - 0x80);
            else
                put(b, t);
            ++i;
        } else {
            mode(0);
            out += char(b);
        }
    }
    mode(0);
    // Sums that wrap can give zero bytes too.
    return out;
}

size_t estimated(const Direction& direction, std::string_view text, size_t otherwise) {
    test::GuardedText source(text);
    if (direction.convert == shift2eucx) return static_cast<size_t>(eucLength(source.data()));
    return direction.convert == euc2shiftx ? static_cast<size_t>(shiftLength(source.data()))
                                           : otherwise;
}

TEST(JapaneseConverters, EveryPairOfBytesBehindEveryPadding) {
    for (const Direction& direction : kDirections) {
        SCOPED_TRACE(direction.name);
        EXPECT_EQ(converted(direction, ""), "");
        for (int pair = 0; pair < 65536; ++pair) {
            // The padding changes with the pair, so that all phases of the block loops are met.
            std::string text(direction.from == ZV_JIS ? "\x1B$B" : "");
            text.append(size_t(pair % 64), 'x').append(1, char(pair >> 8)).append(1, char(pair));
            text = text.c_str();
            const std::string expected = model(direction, text);
            ASSERT_EQ(converted(direction, text, expected.size() + 1), expected.c_str()) << pair;
            ASSERT_EQ(estimated(direction, text, expected.size()), expected.size()) << pair;
        }
    }
}

TEST(JapaneseConverters, MalformedTextStaysInItsRoom) {
    std::mt19937 random(3);
    const std::string any = test::all_bytes();
    const std::string_view alphabets[] = {any, "\xB1\x41\x82\xA0\n", "\x8E\xB1\xA4\x41\xA2\x8F\r",
                                          "\x1B$B(JK01\x9F\n", "\xB1\xDF"};
    for (const Direction& direction : kDirections) {
        for (int round = 0; round < 20000; ++round) {
            const std::string text =
                test::random_text(random, alphabets[round % 5], round < 10000 ? 7 : 70);
            const std::string expected = model(direction, text);
            ASSERT_EQ(converted(direction, text, expected.size() + 1), expected.c_str())
                << direction.name;
        }
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
            ASSERT_TRUE(in(first, 0x21, 0x7E) && in(second, 0x21, 0x7E));
            jis2sjis(&first, &second);
            // 7F is no trail byte of Shift-JIS proper; it stands for the cell of 80.
            ASSERT_EQ(first, lead);
            ASSERT_EQ(second, trail == 0x7F ? 0x80 : trail);
        }
    }
}

TEST(JapaneseCharacters, AnnouncedLengths) {
    for (int byte = 0; byte < 256; ++byte) {
        const char text[] = {char(byte), 0};
        const int ascii = byte == 0 ? 0 : byte < 0x80 ? 1 : -1;
        EXPECT_EQ(bytesInEucChar(text), byte == 0x8F                           ? 3
                                        : in(byte, 0xA1, 0xFE) || byte == 0x8E ? 2
                                                                               : ascii);
        EXPECT_EQ(bytesInShiftChar(text), is_lead(byte) ? 2 : in(byte, 0xA1, 0xDF) ? 1 : ascii);
    }
    EXPECT_EQ(bytesInEucChar(nullptr), 0);
    EXPECT_EQ(bytesInShiftChar(nullptr), 0);
}

TEST(JapaneseCharacters, EscapeSequences) {
    const struct {
        int c, before;
        const char* rest;
        int skipped, after;
    } cases[] = {
        {'$', 0, "B0", 1, 1}, {'$', 1, "@", 1, 1}, {'(', 1, "J", 1, 0}, {'(', 0, "I", 1, 0},
        {'K', 0, "0", 0, 1},  {'H', 1, "0", 0, 0}, {'$', 0, "", 0, 1},  {'(', 1, "", 0, 0},
    };
    for (const auto& c : cases) {
        test::GuardedText rest(c.rest);
        const unsigned char* at = rest.bytes();
        int mode = c.before;
        EXPECT_EQ(SkipESCSeq(&at, c.c, &mode), c.before != c.after) << char(c.c);
        EXPECT_EQ(mode, c.after);
        EXPECT_EQ(at - rest.bytes(), c.skipped);
    }
}

TEST(Katakana, WidensAsUnicodeNormalisesAndMergesMarks) {
    // The voiced partners by JIS X 0208: one cell on, the semi-voiced ones two.
    for (int k = 0xA0; k <= 0xE0; ++k) {
        for (const std::string mark : {"\xDE", "\xDF", "\xB1", ""}) {
            for (const int code_set : {int(ZV_SJIS), int(ZV_EUC), 1}) {
                const bool euc = code_set == ZV_EUC;
                test::GuardedText rest(euc && !mark.empty() ? std::string("\x8E") + mark : mark);
                const unsigned char* at = rest.bytes();
                int first = k, second = -1;
                han2zen(&at, &first, &second, code_set);
                if (!in(k, 0xA1, 0xDF)) {
                    EXPECT_EQ(first, k);
                    EXPECT_EQ(at, rest.bytes());
                    continue;
                }
                int plain_first = k, plain_second = 0;
                han2zen(&at, &plain_first, &plain_second, 1);
                const bool ha_row = in(k, 0xCA, 0xCE);
                int more = 0;
                if (mark == "\xDE" && code_set != 1)
                    more = k == 0xB3 ? 0x94 - 0x45 : in(k, 0xB6, 0xC4) || ha_row;
                else if (mark == "\xDF" && code_set != 1)
                    more = ha_row ? 2 : 0;
                EXPECT_EQ(first, plain_first);
                EXPECT_EQ(second, plain_second + more) << k << ' ' << code_set;
                EXPECT_EQ(at - rest.bytes(), more == 0 ? 0 : euc ? 2 : 1);
            }
        }
    }
    std::string wide;
    std::string narrow;
    for (int k = 0xA1; k <= 0xDF; ++k) {
        int first = k, second = 0;
        const unsigned char* nothing = nullptr;
        han2zen(&nothing, &first, &second, 1);
        (wide += char(first)) += char(second);
        narrow += char(k);
    }
    const std::string normalised =
        test::output_of("python3 -c 'import unicodedata as u; "
                        "print(\"\".join(\"\\u309b\\u309c\"[c-0xDE] if c>=0xDE else "
                        "u.normalize(\"NFKC\", bytes([c]).decode(\"cp932\")) for c in range(0xA1, "
                        "0xE0)), end=\"\")'");
    EXPECT_EQ(test::iconv_text("SJIS", "UTF-8", wide), normalised);
}

TEST(Detection, DecidesAsSoonAsItCan) {
    const struct {
        std::string_view text;
        int result;
        long position;
    } cases[] = {
        {"ASCII only", 0, 10},
        {"", 0, 0},
        {"a\x1B$Bxyz", ZV_JIS, 4},
        {"\x1B$@", ZV_JIS, 3},
        {"\x1BKx", ZV_JIS, 2},
        {"\x1B(Jx\x1B$(x", 0, 8},
        {"\x88\x9F", ZV_SJIS, 1},
        {"\x8E\x41z", ZV_SJIS, 2},
        {"\x8E\xB1z", ZV_EUC_OR_SJIS, 3},
        {"\x8E\xFDz", 0, 3},
        {"\xB0\xA1", ZV_EUC_OR_SJIS, 2},
        {"\xA4\xF0z", ZV_EUC, 2},
        {"\xB1", ZV_SJIS, 1},
        {"\xB1z", ZV_SJIS, 2},
        {"\xB1\xA0\xF1", ZV_EUC, 3},
        {"\xB0\xE0\xE1\x81zz", ZV_SJIS, 5},
        {"\xB0\xE0\xE1\xFEzz", ZV_EUC, 5},
        {"\xB0\xE0\xE1 z\xF1z", ZV_EUC, 6},
        {"\xB0\xE0", ZV_EUC_OR_SJIS, 2},
        {"\xF0z", ZV_EUC, 1},
        {"\xE0\x40z", ZV_SJIS, 2},
        {"\xE0\xFDz", ZV_EUC, 2},
        {"\xE0\xA1\x88z", ZV_SJIS, 3},
        {"\xE0", 0, 1},
        {"\x80\xA0\xFFz", 0, 4},
    };
    for (const auto& c : cases) {
        std::unique_ptr<FILE, int (*)(FILE*)> file(tmpfile(), fclose);
        fwrite(c.text.data(), 1, c.text.size(), file.get());
        rewind(file.get());
        EXPECT_EQ(DetectJPCodeType(file.get()), c.result) << c.text;
        EXPECT_EQ(ftell(file.get()), c.position) << c.text;
    }
}

} // namespace
