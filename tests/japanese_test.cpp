#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <map>
#include <tuple>

#include "jaconv.h"
#include "mbutil.h"
#include "models/japanese_model.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

using namespace test;

// Every two-byte character that iconv knows in Japanese EUC.
std::string repertoire() {
    std::string text;
    for (int code = 0xA1A1; code <= 0xFEFE; ++code) {
        const char character[] = {char(code >> 8), char(code)};
        if (iconv_text("EUC-JP", "UTF-8", {character, 2}))
            text.append(character, 2);
    }
    return text;
}

TEST(JapaneseConverters, AgreeWithIconvOverTheWholeRepertoire) {
    const std::string euc = repertoire();
    EXPECT_EQ(euc.size(), 2 * 6879u) << "JIS X 0208";
    std::map<int, std::string> forms = {{ZV_EUC, euc},
                                        {ZV_SJIS, *iconv_text("EUC-JP", "SJIS", euc)},
                                        {ZV_JIS, *iconv_text("EUC-JP", "ISO-2022-JP", euc)}};
    forms[ZV_JIS].back() = 'J'; // iconv returns to single-byte text with ESC ( B
    for (const auto& direction : kJapanese) {
        const std::string text = forms[direction.from];
        const size_t room = direction.growth * text.size() + direction.extra;
        EXPECT_EQ(convert_guarded(direction.convert, text, room), forms[direction.to])
            << direction.name;
    }
}

TEST(JapaneseConverters, WriteNothingBehindTheirResult) {
    const std::string ends[] = {"\xE4",          "\xE4\n",    "\xE4\nx",     "\xE4\xA4",
                                "\x8E",          "\x8E\xB1",  "\xB1",        "\x1B$B",
                                "\x1B$B0!\x1B(", "\x1B$B0!0", "\xE4\xA4\xE4"};
    std::string ascii, pairs;
    for (size_t n = 0; n < 130; ++n) {
        for (const std::string& front : {ascii, "\xE4\xA4" + ascii, pairs, "x" + pairs}) {
            for (const std::string& end : ends) {
                for (const auto& direction : kJapanese) {
                    const std::string text = front + end;
                    const std::string expected = japanese_model(direction, text);
                    ASSERT_EQ(convert_guarded(direction.convert, text, expected.size() + 1),
                              expected)
                        << direction.name << ' ' << text;
                }
            }
        }
        ascii += "x";
        pairs += "\xE4\xA4";
    }
}

#if defined(__x86_64__) && defined(__OPTIMIZE__) && defined(NDEBUG) &&                             \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) &&                             \
    !defined(ZVUTIL_OTHER_MACHINE)
// How many instructions a process takes from here to the end of a conversion.
int instructions_of(char* (*convert)(const char*, char*), const std::string& text) {
    std::string room(2 * text.size() + 1, '\0');
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(1);
        raise(SIGSTOP);
        convert(text.c_str(), room.data());
        _exit(0);
    }
    int count = 0;
    for (int status; waitpid(child, &status, 0) == child && WIFSTOPPED(status); ++count)
        ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr);
    return count;
}

TEST(JapaneseKernels, AreTheWidestThatTheProcessorRuns) {
    const char* const tunables = getenv("GLIBC_TUNABLES");
    const std::string_view without = tunables == nullptr ? "" : tunables;
    const bool wide = __builtin_cpu_supports("avx2") && !without.ends_with("-AVX2");
    const bool widest =
        wide && __builtin_cpu_supports("avx512vbmi2") && !without.ends_with("-AVX512BW");
    const auto for_kanji = [](size_t count) {
        return instructions_of(shift2eucx, std::string(2 * count, '\x91'));
    };
    const int few = for_kanji(1 << 9);
    if (few < 2)
        GTEST_SKIP() << "tracing is refused";
    // They take about 44, 78 and 189 for 64 bytes.
    const int limit = widest ? 60 : wide ? 120 : 250;
    EXPECT_LT(for_kanji((1 << 9) + (1 << 11)) - few, 64 * limit);
}
#endif

TEST(JapaneseCharacters, ShiftJisAndJisAreInverse) {
    for (int lead = 0x81; lead <= 0xEF; ++lead) {
        for (int trail = 0x40; is_lead(lead) && trail <= 0xFC; ++trail) {
            int first = lead, second = trail;
            sjis2jis(&first, &second);
            ASSERT_TRUE(between(first, 0x21, 0x7E)) << lead << ' ' << trail;
            ASSERT_TRUE(between(second, 0x21, 0x7E)) << lead << ' ' << trail;
            jis2sjis(&first, &second);
            // 7F is no trail byte of Shift-JIS proper; it stands for the cell of 80.
            ASSERT_EQ(std::pair(first, second), std::pair(lead, trail == 0x7F ? 0x80 : trail));
        }
    }
}

TEST(JapaneseCharacters, AnnouncedLengthsAndEscapeSequences) {
    for (int byte = 0; byte < 256; ++byte) {
        const char text[] = {char(byte), 0};
        EXPECT_EQ(bytesInEucChar(text), mblenExt(text, 1, ZV_EUC)) << byte;
        EXPECT_EQ(bytesInShiftChar(text), mblenExt(text, 1, ZV_SJIS)) << byte;
    }
    EXPECT_EQ(bytesInEucChar(nullptr), 0);
    EXPECT_EQ(bytesInShiftChar(nullptr), 0);
    for (int i = 0; i < 16; ++i) {
        const int c = "$(KH"[i % 4], before = i / 4 % 2, after = c == '$' || c == 'K';
        GuardedText rest(i < 8 ? "B" : "");
        const unsigned char* at = rest.bytes();
        int mode = before;
        EXPECT_EQ(SkipESCSeq(&at, c, &mode), after != before) << i;
        EXPECT_EQ(mode, after) << i;
        EXPECT_EQ(at - rest.bytes(), i < 8 && i % 4 < 2) << i;
    }
}

TEST(Estimators, SaturateBeyondTheLargestNumber) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer keeps a record of every byte";
#endif
#ifdef ZVUTIL_OTHER_MACHINE
    GTEST_SKIP() << "an emulated processor takes minutes, one of 32 bits has no room for the text";
#endif
    constexpr size_t kMost = INT_MAX;
    // One byte longer in EUC, two in EUC-TW; two shorter in Shift-JIS and in Big5.
    constexpr char kEnd[] = "\xC9@\x8E\xB1\x8E\xB1";
    const size_t size = (2 * kMost / kPiece + 2) * kPiece;
    char* const end = repeated_piece(size, 'x', MAP_PRIVATE) + size - 1;
    memcpy(end + 1 - sizeof kEnd, kEnd, sizeof kEnd);
    using Form = std::tuple<const char*, int (*)(const char*), int>; // which grows by so much
    for (const auto& [name, length, growth] :
         {Form("eucLength", eucLength, 1), Form("euchLength", euchLength, 2),
          Form("shiftLength", shiftLength, -2), Form("big5Length", big5Length, -2),
          Form("MaxStringLengthOnWinAndUnix", MaxStringLengthOnWinAndUnix, 0)}) {
#ifdef NDEBUG // Loops that are not optimised take minutes.
        const auto fits = static_cast<size_t>(long{INT_MAX} - growth);
        EXPECT_EQ(length(end - (fits - 1)), INT_MAX - 1) << name;
        EXPECT_EQ(length(end - (fits + 1)), INT_MAX) << name;
#endif
        EXPECT_EQ(length(end - (2 * kMost + 12)), INT_MAX) << name;
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
    const std::string normalised = output_of(kNormalise);
    ASSERT_EQ(normalised.size(), 63u * 4 * 2);
    for (const int code_set : {int(ZV_SJIS), int(ZV_EUC), 1}) {
        SCOPED_TRACE(code_set);
        for (size_t i = 0; i < normalised.size(); i += 2) {
            const bool euc = code_set == ZV_EUC;
            const size_t plain = code_set == 1 ? i - i % 8 : i;
            const std::string mark(1, "\1\xDE\xDF\xB1"[i / 2 % 4]);
            GuardedText rest(euc ? "\x8E" + mark : mark);
            const unsigned char* at = rest.bytes();
            int first = int(i / 8) + 0xA1, second = -1;
            han2zen(&at, &first, &second, code_set);
            EXPECT_EQ((std::string{char(first), char(second)}), normalised.substr(plain, 2)) << i;
            const bool merged = normalised.substr(plain, 2) != normalised.substr(i - i % 8, 2);
            EXPECT_EQ(at - rest.bytes(), merged ? 1 + euc : 0) << i;
        }
    }
    GuardedText mark("\xDE");
    for (const int code_set : {int(ZV_SJIS), 1}) {
        const unsigned char* at = code_set == 1 ? nullptr : mark.bytes();
        int other = 0xE0, second = 0;
        han2zen(&at, &other, &second, code_set);
        EXPECT_EQ(other, 0xE0) << "no katakana";
        EXPECT_EQ(second, code_set == 1 ? 0 : 0xDE) << "what was looked at";
    }
}

} // namespace
