#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "jaconv.h"
#include "models/big5_cns_model.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/texts.h"

namespace {

using test::is_high, test::order_of, test::pair_of;

// The two bytes that a function writes, and no more.
std::string written_by(auto function, auto key, int result) {
    unsigned char out[] = "###";
    EXPECT_EQ(function(key, out), result);
    EXPECT_EQ(out[2], '#');
    return pair_of(out[0], out[1]);
}

struct Model : test::Big5CnsModel {
    // Both conversions, with a guarded source and not a byte more room than the result takes.
    void expect(const std::string& text) const {
        const std::string euc_tw = euc_tw_of(text), big5 = big5_of(text);
        ASSERT_EQ(test::convert_guarded(big2euchx, text, euc_tw.size() + 1), euc_tw);
        ASSERT_EQ(test::convert_guarded(euch2bigx, text, big5.size() + 1), big5);
        ASSERT_EQ(euchLength(test::GuardedText(text).data()), euc_tw.size());
        ASSERT_EQ(big5Length(test::GuardedText(text).data()), big5.size());
        ASSERT_TRUE(euc_tw.size() <= 2 * text.size() && big5.size() <= text.size());
    }
};

TEST(Big5Cns, EveryCodeOfTwoAndFourBytes) {
    const Model model;
    int big5_order = 0, cns_order = 0;
    for (int first = 0; first < 256; ++first) {
        std::string lines, run, shifted;
        for (int second = 0; second < 256; ++second) {
            const std::string code = pair_of(first, second);
            const bool cns = is_high(first) && is_high(second);
            const bool big5 = cns || (is_high(first) && second >= 0x40 && second <= 0x7E);
            ASSERT_EQ(order_of(Big5Order, first * 256 + second), big5 ? big5_order : -1);
            ASSERT_EQ(order_of(CnsOrder, first * 256 + second), cns ? cns_order : -1);
            if (big5) { ASSERT_EQ(written_by(Big5Code, big5_order++, 0), code); }
            if (cns) { ASSERT_EQ(written_by(CnsCode, cns_order++, 0), code); }
            const auto found = model.to_euc_tw.find(code);
            const bool known = found != model.to_euc_tw.end();
            const auto* bytes = reinterpret_cast<const unsigned char*>(code.data());
            ASSERT_EQ(written_by(Big5ToCnsCodeConvert, bytes, known ? 0 : -1),
                      known ? found->second.substr(found->second.size() - 2) : "##");
            if (first == 0 || second == 0) continue;
            lines += code + "\n";
            run += code;
            // All of the planes that are in use, and a few of the others.
            for (int plane : {0x20, 0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xB1, 0xFF})
                shifted += pair_of(0x8E, plane) + code;
        }
        for (const std::string& text : {lines, run, shifted}) model.expect(text);
    }
    EXPECT_EQ(Big5Order(test::GuardedText("").bytes()), -1);
    EXPECT_EQ(CnsOrder(test::GuardedText("").bytes()), -1);
    const auto is_before = [](const Big5CnsRange& a, const Big5CnsRange& b) {
        return a.first_big5 < b.first_big5;
    };
    EXPECT_TRUE(std::is_sorted(Big5ToCnsTable, Big5ToCnsTable + Big5CnsTableSize, is_before));
    EXPECT_EQ(CnsToBig5Table[0].first_cns, 0);
}

TEST(Big5Cns, MixedTextBehindEveryPadding) {
    const Model model;
    // From characters of two bytes alone to four-byte, malformed and cut ones and ASCII among them.
    constexpr std::string_view alphabet = "\xA4\xE5\xC9\x40\xA2\xA1\x8E\xB1\xF9\xFF\x80 a\n";
    std::mt19937 random(1);
    for (size_t i = 0; i < 10000 && !HasFailure(); ++i)
        model.expect(std::string(i % 64, 'a') +
                     test::random_text(random, alphabet.substr(0, 3 + i % 12), 40));
}

TEST(Big5Cns, KnownCharactersAndIconv) {
    // The second codes of two characters, a gap, what is beyond the last row, no trail byte.
    const std::string big5 = "\xA1\xF6\xC8\x79\xC9\x40\xC9\x4A\xDD\xFC\xA3\xE1\xF9\xFE\xA1\x30";
    const std::string euc_tw =
        "\xA2\xD8\x8E\xA4\xA1\xA3\x8E\xA2\xA1\xA1\xC4\xC2\x8E\xA2\xC1\xF6??????";
    const std::string again = "\xA1\xF6\xC8\x79\xC9\x40\xA4\x61\xDC\xD1??????";
    EXPECT_EQ(test::convert_guarded(big2euchx, big5, 2 * big5.size() + 1), euc_tw);
    EXPECT_EQ(test::convert_guarded(euch2bigx, euc_tw, again.size() + 1), again);
    // The others are Latin numerals, radicals and duplicates that iconv lacks, and some dashes,
    // primes and numerals on whose Unicode characters the two character sets' tables differ.
    struct Counts {
        int same, other, unknown_to_iconv;
        void add(const std::optional<std::string>& theirs, const char* ours) {
            ++(!theirs ? unknown_to_iconv : *theirs == ours ? same : other);
        }
        bool operator==(const Counts&) const = default;
    } to_euc_tw{}, to_big5{};
    for (int order = 0; order < 94 * 157; ++order) {
        const std::string code = written_by(Big5Code, order, 0);
        char there[5], back[5];
        if (strcmp(big2euchx(code.c_str(), there), "??") == 0) continue;
        to_euc_tw.add(test::iconv_text("BIG5", "EUC-TW", code), there);
        to_big5.add(test::iconv_text("EUC-TW", "BIG5", there), euch2bigx(there, back));
    }
    EXPECT_EQ(to_euc_tw, (Counts{13442, 11, 107}));
    EXPECT_EQ(to_big5, (Counts{13444, 8, 108}));
}

} // namespace
