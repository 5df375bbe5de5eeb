#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "jaconv.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

// The conversion once more, character by character, with a search through the exported tables from
// their first rows on.
bool is_high(unsigned byte) { return byte >= 0xA1 && byte <= 0xFE; }
unsigned at(std::string_view text, size_t i) { return static_cast<unsigned char>(text[i]); }
std::string pair_of(int first, int second) {
    return {static_cast<char>(first), static_cast<char>(second)};
}

int big5_ordinal(unsigned first, unsigned second) {
    const int row = (static_cast<int>(first) - 0xA1) * 157;
    if (!is_high(first)) return -1;
    if (second >= 0x40 && second <= 0x7E) return row + static_cast<int>(second) - 0x40;
    return is_high(second) ? row + static_cast<int>(second) - 0x62 : -1;
}
int cns_ordinal(unsigned first, unsigned second) {
    if (!is_high(first) || !is_high(second)) return -1;
    return (static_cast<int>(first) - 0xA1) * 94 + static_cast<int>(second) - 0xA1;
}
std::string big5_code(int ordinal) {
    const int second = ordinal % 157 + 0x40;
    return pair_of(ordinal / 157 + 0xA1, second > 0x7E ? second + 0x22 : second);
}
std::string cns_code(int ordinal) { return pair_of(ordinal / 94 + 0xA1, ordinal % 94 + 0xA1); }

std::optional<std::string> euc_tw_of(int big5) {
    const auto* row = std::find_if(Big5ToCnsTable, Big5ToCnsTable + Big5CnsTableSize,
                                   [&](const Big5CnsRange& r) { return r.last_big5 >= big5; });
    if (row == Big5ToCnsTable + Big5CnsTableSize || big5 < row->first_big5) return std::nullopt;
    const std::string code = cns_code(row->first_cns + big5 - row->first_big5);
    return row->plane == 1 ? code : pair_of(0x8E, 0xA0 + row->plane) + code;
}
std::optional<std::string> big5_of(int cns) {
    const auto* row = std::find_if(CnsToBig5Table, CnsToBig5Table + Big5CnsTableSize,
                                   [&](const Big5CnsRange& r) { return r.last_cns >= cns; });
    if (row == CnsToBig5Table + Big5CnsTableSize || cns < row->first_cns) return std::nullopt;
    return big5_code(row->first_big5 + cns - row->first_cns);
}

std::string model_to_euc_tw(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size();) {
        const size_t size = is_high(at(text, i)) ? 2 : 1;
        if (size == 1 || text.size() - i < size)
            out += text[i];
        else
            out += euc_tw_of(big5_ordinal(at(text, i), at(text, i + 1))).value_or("??");
        i += size;
    }
    return out;
}
std::string model_to_big5(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size();) {
        const size_t size = at(text, i) == 0x8E ? 4 : is_high(at(text, i)) ? 2 : 1;
        if (size == 1 || text.size() - i < size) {
            out += text.substr(i, size);
        } else {
            const int ordinal = cns_ordinal(at(text, i + size - 2), at(text, i + size - 1));
            const int before = size == 4 ? (static_cast<int>(at(text, i + 1)) - 0xA1) * 8836 : 0;
            out += ordinal < 0 ? "??" : big5_of(before + ordinal).value_or("??");
        }
        i += size;
    }
    return out;
}

// The two bytes that a function writes, and no more.
template <class Function, class Key>
std::string written_by(Function function, Key key, int result) {
    unsigned char out[] = "###";
    EXPECT_EQ(function(key, out), result);
    EXPECT_EQ(out[2], '#');
    return pair_of(out[0], out[1]);
}

// Both conversions, with a guarded source and not a byte more room than the result takes.
void expect_as_model(const std::string& text) {
    const std::string euc_tw = model_to_euc_tw(text);
    const std::string big5 = model_to_big5(text);
    ASSERT_EQ(test::convert_guarded(big2euchx, text, euc_tw.size() + 1), euc_tw);
    ASSERT_EQ(test::convert_guarded(euch2bigx, text, big5.size() + 1), big5);
    ASSERT_EQ(euchLength(test::GuardedText(text).data()), euc_tw.size());
    ASSERT_EQ(big5Length(test::GuardedText(text).data()), big5.size());
    ASSERT_LE(euc_tw.size(), 2 * text.size());
    ASSERT_LE(big5.size(), text.size());
}

TEST(Big5Cns, EveryPairOfBytes) {
    for (unsigned first = 0; first < 256; ++first) {
        SCOPED_TRACE(first);
        std::string lines, run;
        for (unsigned second = 0; second < 256; ++second) {
            const std::string code = pair_of(static_cast<int>(first), static_cast<int>(second));
            if (first != 0 && second != 0) {
                lines += code + "\n";
                run += code;
            }
            const auto* bytes = reinterpret_cast<const unsigned char*>(code.data());
            const auto euc_tw = euc_tw_of(big5_ordinal(first, second));
            ASSERT_EQ(Big5Order(bytes), big5_ordinal(first, second));
            ASSERT_EQ(CnsOrder(bytes), cns_ordinal(first, second));
            ASSERT_EQ(written_by(Big5ToCnsCodeConvert, bytes, euc_tw ? 0 : -1),
                      euc_tw ? euc_tw->substr(euc_tw->size() - 2) : "##");
        }
        expect_as_model(lines);
        expect_as_model(run);
    }
    EXPECT_EQ(Big5Order(test::GuardedText("").bytes()), -1);
    EXPECT_EQ(CnsOrder(test::GuardedText("").bytes()), -1);
    for (int ordinal = 0; ordinal < 94 * 157; ++ordinal) {
        ASSERT_EQ(written_by(Big5Code, ordinal, 0), big5_code(ordinal));
        ASSERT_EQ(written_by(CnsCode, ordinal % 8836, 0), cns_code(ordinal % 8836));
    }
}

TEST(Big5Cns, EveryCharacterOfFourBytes) {
    for (int plane = 1; plane < 256; ++plane) {
        std::string text;
        // All of the planes that are in use, one in 17 of the others.
        for (int cell = 0; cell < 65536; cell += plane >= 0xA0 && plane <= 0xA5 ? 1 : 17) {
            if (cell / 256 != 0 && cell % 256 != 0)
                text += pair_of(0x8E, plane) + pair_of(cell / 256, cell % 256);
        }
        SCOPED_TRACE(plane);
        expect_as_model(text);
    }
}

// Runs and mixtures of ASCII, all planes, gaps and malformed bytes behind every length of ASCII,
// some of them cut short by the end.
TEST(Big5Cns, MixedText) {
    const std::string pieces[] = {"\xA4\xA4\xA4\xE5\xB4\xFA\xB8\xD5",
                                  "\xC9\x40",
                                  "\xF9\xD6",
                                  "\xC8\x79",
                                  "\x8E\xA2\xA1\xA1",
                                  "\xA1\x30",
                                  "\xA3\xE1",
                                  "\xFF",
                                  "\x8E\xA4\xA1\xA3",
                                  "\x80\n",
                                  "\x8E\xB1\xA1\xA1",
                                  "0123456789abcdefg",
                                  "\x8E\x20\xA1\xA1",
                                  "\x8E"};
    std::mt19937 random(1);
    for (size_t i = 0; i < 5000; ++i) {
        std::string text(i % 64, 'a');
        for (size_t count = random() % 20; count > 0; --count)
            text += pieces[random() % (i % std::size(pieces) + 1)];
        SCOPED_TRACE(i);
        expect_as_model(text.substr(0, text.size() - std::min(text.size(), random() % 4)));
    }
}

TEST(Big5Cns, KnownCharacters) {
    const struct {
        std::string big5, euc_tw, back;
    } cases[] = {
        {"", "", ""},
        {"\xA1\x40", "\xA1\xA1", "\xA1\x40"},
        {"\xA1\xF6\xA1\xF7", "\xA2\xD8\xA2\xD7", "\xA1\xF6\xA1\xF7"},
        {"\xC8\x79", "\x8E\xA4\xA1\xA3", "\xC8\x79"},
        {"\xC9\x40", "\x8E\xA2\xA1\xA1", "\xC9\x40"},
        // The second codes of two characters.
        {"\xC9\x4A\xDD\xFC", "\xC4\xC2\x8E\xA2\xC1\xF6", "\xA4\x61\xDC\xD1"},
        // A gap, beyond the last row, no trail byte.
        {"\xA3\xE1\xF9\xFE\xA1\x30", "??????", "??????"},
        // What the end cuts short.
        {"a\xA4", "a\xA4", "a\xA4"},
    };
    char out[16];
    for (const auto& [big5, euc_tw, back] : cases) {
        EXPECT_STREQ(big2euchx(big5.c_str(), out), euc_tw.c_str());
        EXPECT_STREQ(euch2bigx(euc_tw.c_str(), out), back.c_str());
    }
    EXPECT_STREQ(euch2bigx("\x8E\xA1\xA1\xA1", out), "\xA1\x40");
    EXPECT_STREQ(euch2bigx("\x8E\xA1\xA1", out), "\x8E\xA1\xA1");
}

// The others are Latin numerals, radicals and duplicates that iconv lacks, and some dashes, primes
// and numerals on whose Unicode characters the two character sets' tables differ.
TEST(Big5Cns, AgreesWithIconv) {
    struct Counts {
        int same, other, unknown_to_iconv;
        void add(const std::optional<std::string>& theirs, const char* ours) {
            ++(!theirs ? unknown_to_iconv : *theirs == ours ? same : other);
        }
    } to_euc_tw{}, to_big5{};
    for (int ordinal = 0; ordinal < 94 * 157; ++ordinal) {
        const std::string big5 = big5_code(ordinal);
        char euc_tw[5], back[5];
        if (strcmp(big2euchx(big5.c_str(), euc_tw), "??") == 0) continue;
        to_euc_tw.add(test::iconv_text("BIG5", "EUC-TW", big5), euc_tw);
        to_big5.add(test::iconv_text("EUC-TW", "BIG5", euc_tw), euch2bigx(euc_tw, back));
    }
    EXPECT_EQ(to_euc_tw.same, 13442);
    EXPECT_EQ(to_euc_tw.other, 11);
    EXPECT_EQ(to_euc_tw.unknown_to_iconv, 107);
    EXPECT_EQ(to_big5.same, 13444);
    EXPECT_EQ(to_big5.other, 8);
    EXPECT_EQ(to_big5.unknown_to_iconv, 108);
}

} // namespace
