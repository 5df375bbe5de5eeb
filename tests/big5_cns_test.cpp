#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "jaconv.h"
#include "models/big5_cns_model.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

using namespace test;

// The two bytes that a function writes, and no more.
std::string written_by(auto function, auto key, int result) {
    unsigned char out[] = "###";
    EXPECT_EQ(function(key, out), result);
    EXPECT_EQ(out[2], '#');
    return pair_of(out[0], out[1]);
}

TEST(Big5Cns, EveryCodeOfTwoAndFourBytes) {
    const Big5CnsModel model;
    int big5_order = 0, cns_order = 0;
    for (int first = 0; first < 256; ++first) {
        std::string text;
        for (int second = 0; second < 256; ++second) {
            const std::string code = pair_of(first, second);
            const bool cns = is_high(first) && is_high(second);
            const bool big5 = cns || (is_high(first) && second >= 0x40 && second <= 0x7E);
            const auto* bytes = reinterpret_cast<const unsigned char*>(code.data());
            SCOPED_TRACE(first * 256 + second);
            ASSERT_EQ(Big5Order(bytes), big5 ? big5_order : -1);
            ASSERT_EQ(CnsOrder(bytes), cns ? cns_order : -1);
            ASSERT_EQ(big5 ? written_by(Big5Code, big5_order++, 0) : code, code);
            ASSERT_EQ(cns ? written_by(CnsCode, cns_order++, 0) : code, code);
            const auto found = model.to_euc_tw.find(code);
            const bool known = found != model.to_euc_tw.end();
            ASSERT_EQ(written_by(Big5ToCnsCodeConvert, bytes, known ? 0 : -1),
                      known ? found->second.substr(found->second.size() - 2) : "##");
            if (first == 0 || second == 0)
                continue;
            text += code + "\n";
            // All of the planes that are in use, and the next ones.
            for (int plane = 0xA0; plane <= 0xA5; ++plane)
                text += pair_of(0x8E, plane) + code;
        }
        const std::string euc_tw = model.euc_tw_of(text), back = model.big5_of(text);
        ASSERT_EQ(convert_guarded(big2euchx, text, euc_tw.size() + 1), euc_tw) << first;
        ASSERT_EQ(convert_guarded(euch2bigx, text, back.size() + 1), back) << first;
    }
    EXPECT_EQ(Big5Order(GuardedText("").bytes()), -1);
    EXPECT_EQ(CnsOrder(GuardedText("").bytes()), -1);
}

TEST(Big5Cns, TheTablesPairTheSameRuns) {
    using Row = std::array<int, 5>;
    const auto row_of = [](const Big5CnsRange& r) {
        return Row{r.first_big5, r.last_big5, r.first_cns, r.last_cns, r.plane};
    };
    std::vector<Row> by_cns;
    for (int i = 0; i < Big5CnsTableSize; ++i) {
        const auto [first_big5, last_big5, first_cns, last_cns, plane] = row_of(Big5CnsTable[i]);
        Row row = {order_of(Big5Order, first_big5), order_of(Big5Order, last_big5),
                   order_of(CnsOrder, first_cns | 0x8080), order_of(CnsOrder, last_cns | 0x8080),
                   plane};
        EXPECT_EQ(row_of(Big5ToCnsTable[i]), row) << i;
        for (const size_t cns : {2u, 3u})
            row[cns] += (plane - 1) * 94 * 94;
        row[4] = 0;
        by_cns.push_back(row);
    }
    std::stable_sort(by_cns.begin(), by_cns.end(),
                     [](const Row& a, const Row& b) { return a[2] < b[2]; });
    for (int i = 0; i < Big5CnsTableSize; ++i)
        EXPECT_EQ(row_of(CnsToBig5Table[i]), by_cns[size_t(i)]) << i;
}

TEST(Big5Cns, AgreesWithIconv) {
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
        if (strcmp(big2euchx(code.c_str(), there), "??") == 0)
            continue;
        to_euc_tw.add(iconv_text("BIG5", "EUC-TW", code), there);
        to_big5.add(iconv_text("EUC-TW", "BIG5", there), euch2bigx(there, back));
    }
    EXPECT_EQ(to_euc_tw, (Counts{13442, 11, 107}));
    EXPECT_EQ(to_big5, (Counts{13444, 8, 108}));
}

TEST(Big5Cns, RadicalsThatIconvLacks) {
    // By number. Row 7 and what follows have all of them in order, one for both 34 and 35.
    constexpr int kRadicals[] = {3,  4,  6,  8,  13, 14, 15, 20, 23,  26,  28,  35, 40,
                                 47, 52, 53, 54, 58, 59, 66, 71, 104, 105, 162, 171};
    int second = 0xBF;
    for (const int radical : kRadicals) {
        const int place = radical - (radical > 34 ? 2 : 1);
        const std::string code = pair_of(0xA7 + place / 94, 0xA1 + place % 94);
        EXPECT_EQ(convert_guarded(big2euchx, pair_of(0xC6, second++), 3), code) << radical;
    }
}

} // namespace
