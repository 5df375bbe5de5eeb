#include <gtest/gtest.h>

#include <cstring>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/texts.h"

namespace {

using test::GuardedRoom;
using test::GuardedText;

const int kMultibyte[] = {ZV_JIS,  ZV_EUC,   ZV_SJIS,        ZV_GB,          ZV_EUC_C,
                          ZV_BIG5, ZV_EUC_H, ZV_KSC_5601_87, ZV_KSC_5601_92, ZV_EUC_K};

// Bytes that are lead, trail, both or neither in the several code sets, and few enough for random
// texts to meet each other.
constexpr std::string_view kAlphabet = "ab,A\n\x81\x82\xA0\xA1\xA2\x8E\x8F\xB0\x41\x5B\xFE\xFF";

// The plainest statement of each operation: walks by mbbytesinchar() from the start.
namespace model {

size_t step(const char* p) { return static_cast<size_t>(mbbytesinchar(p)); }

long chr(const std::string& s, int c, bool last) {
    long found = -1;
    for (size_t i = 0; i < s.size() && (last || found < 0); i += step(&s[i])) {
        if (static_cast<signed char>(s[i]) == c) found = static_cast<long>(i);
    }
    return found;
}

bool is_boundary(const std::string& s, size_t from, size_t at) {
    while (from < at) from += step(&s[from]);
    return from == at;
}

long find(const std::string& s, const std::string& needle, bool last) {
    long found = -1;
    for (size_t i = 0; i < s.size() && (last || found < 0); i += step(&s[i])) {
        if (s.compare(i, needle.size(), needle) == 0 && is_boundary(s, i, i + needle.size()))
            found = static_cast<long>(i);
    }
    return found;
}

long pbrk(const std::string& s, const std::string& set) {
    for (size_t i = 0; i < s.size(); i += step(&s[i])) {
        for (size_t j = 0; j < set.size(); j += step(&set[j])) {
            if (s.compare(i, step(&set[j]), set, j, step(&set[j])) == 0)
                return static_cast<long>(i);
        }
    }
    return -1;
}

size_t idx(const std::string& s, size_t n) {
    size_t at = 0;
    for (size_t i = 0; i <= std::min(n, s.size()); i += step(&s[i])) at = i;
    return at;
}

} // namespace model

long offset(const char* found, const char* s) { return found == nullptr ? -1 : found - s; }

TEST(Searches, AgreeWithAPlainWalkInEveryCodeSet) {
    std::mt19937 random(1);
    for (const int code_set : kMultibyte) {
        InitMbutilExt(code_set);
        for (int round = 0; round < 4000; ++round) {
            const std::string s = test::random_text(random, kAlphabet, 12);
            const std::string part = test::random_text(random, kAlphabet, 3);
            GuardedText hay(s);
            GuardedText needle(part);
            const char* h = hay.data();
            for (const int c : {part.empty() ? 0 : part[0] & 0xFF, part.empty() ? 300 : part[0]}) {
                EXPECT_EQ(offset(mbstrchr(h, c), h), c == 0 ? -1 : model::chr(s, c, false));
                EXPECT_EQ(offset(mbstrchrEncr(h, c), h), c == 0 ? -1 : model::chr(s, c, false));
                EXPECT_EQ(offset(mbstrrchr(h, c), h), c == 0 ? -1 : model::chr(s, c, true));
            }
            const long any = model::pbrk(s, part);
            EXPECT_EQ(offset(mbstrpbrk(h, needle.data()), h), any);
            EXPECT_EQ(mbstrcspn(h, needle.data()), any < 0 ? s.size() : static_cast<size_t>(any));
            EXPECT_EQ(offset(mbstrstr(h, needle.data()), h),
                      part.empty() ? 0 : model::find(s, part, false));
            EXPECT_EQ(offset(mbstrrstr(h, needle.data()), h),
                      part.empty() ? -1 : model::find(s, part, true));
            ASSERT_FALSE(HasFailure()) << code_set << " '" << s << "' '" << part << "'";
        }
    }
}

TEST(Searches, SeeNoCharacterSplitBehindAnyPadding) {
    // The trail byte of the first character is the lead byte of the second, and 0x5C ends it.
    InitMbutilExt(ZV_SJIS);
    for (size_t padding = 0; padding < 64; ++padding) {
        GuardedText text(std::string(padding, 'x') + "\x83\x83\x83\x5C\\");
        const char* s = text.data();
        EXPECT_EQ(offset(mbstrchr(s, '\\'), s), static_cast<long>(padding) + 4);
        EXPECT_EQ(offset(mbstrrchr(s, static_cast<char>(0x83)), s), static_cast<long>(padding) + 2);
        EXPECT_EQ(offset(mbstrstr(s, "\x83\x5C"), s), static_cast<long>(padding) + 2);
        EXPECT_EQ(mbstrstr(s, "\x5C\\"), nullptr);
        EXPECT_EQ(mbidx(s, static_cast<unsigned>(padding) + 3), padding + 2);
    }
}

TEST(Searches, NullAndTheSingleBytePath) {
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(mbstrchr(nullptr, 'a'), nullptr);
    EXPECT_EQ(mbstrrchr(nullptr, 'a'), nullptr);
    EXPECT_EQ(mbstrstr(nullptr, "a"), nullptr);
    EXPECT_STREQ(mbstrstr("ab", nullptr), "ab");
    EXPECT_EQ(mbstrrstr(nullptr, "a"), nullptr);
    EXPECT_STREQ(mbstrrstr("ab", nullptr), "ab");
    EXPECT_EQ(mbstrpbrk("ab", nullptr), nullptr);
    EXPECT_EQ(mbstrcspn("ab", nullptr), 2u);
    EXPECT_STREQ(mbstrstr("a\nb", "\n"), "\nb");
    InitMbutilExt(ZV_8859_5);
    EXPECT_STREQ(mbstrchr("ab", 0), "") << "the C library finds the terminator";
    EXPECT_STREQ(mbstrchr("a\xA0z", 0xA0), "\xA0z");
    EXPECT_STREQ(mbstrrchr("\xA0z\xA0y", 0xA0), "\xA0y");
    EXPECT_STREQ(mbstrrstr("xaaaa", "aa"), "aa");
    EXPECT_STREQ(mbstrpbrk("a\xA0", "\xA0"), "\xA0");
    EXPECT_EQ(mbstrcspn("a\xA0", "\xA0"), 1u);
}

TEST(Boundaries, AgreeWithAPlainWalk) {
    std::mt19937 random(2);
    for (const int code_set : kMultibyte) {
        InitMbutilExt(code_set);
        for (int round = 0; round < 2000; ++round) {
            const std::string s = test::random_text(random, kAlphabet, 9);
            GuardedText text(s);
            for (unsigned n = 0; n < 12; ++n) {
                const size_t at = model::idx(s, n);
                ASSERT_EQ(mbidx(text.data(), n), at);
                size_t next = at + model::step(&s[at]);
                next = next < s.size() ? next : 0;
                ASSERT_EQ(mbnextidx(text.data(), n), next) << s << ' ' << n << ' ' << code_set;
                ASSERT_EQ(mbnextchar(text.data(), n), next == 0 ? nullptr : text.data() + next);

                GuardedRoom copy(n), counted(n);
                ASSERT_EQ(mbstrncpy(copy.data(), text.data(), n), copy.data());
                ASSERT_EQ(mbstrncpyi(counted.data(), text.data(), n), at);
                std::string expected = s.substr(0, at);
                expected.resize(n);
                ASSERT_EQ(std::string(copy.data(), n), expected);
                ASSERT_EQ(std::string(counted.data(), n), expected);
            }
        }
    }
}

TEST(Boundaries, TheSingleBytePathAndTheUninitialisedOne) {
    EXPECT_EQ(mbidxtype("a\x82\xA0", 2, ZV_SJIS), 1u) << "walks before anything is initialised";
    EXPECT_EQ(MBUTIL_Initialized, 0);
    InitMbutilExt(ZV_8859_5);
    EXPECT_EQ(mbidxtype("a\x82\xA0", 2, ZV_SJIS), 2u);
    EXPECT_EQ(mbidx("ab", 9), 9u);
    EXPECT_EQ(mbnextidx("ab", 0), 1u);
    EXPECT_EQ(mbnextidx("ab", 1), 0u);
    EXPECT_EQ(mbnextidx("", 0), 0u);
    char room[] = "####";
    EXPECT_EQ(mbstrncpyi(room, "ab", 4), 2u);
    EXPECT_EQ(memcmp(room, "ab\0", 4), 0);
    EXPECT_EQ(mbstrncpyi(room, nullptr, 4), 0u);
    InitMbutilExt(ZV_JIS);
    EXPECT_EQ(mbidx("\x82\xA0", 1), 1u) << "JIS steps byte by byte";
    EXPECT_EQ(mbstrncpy(nullptr, "a", 1), nullptr);
    EXPECT_EQ(mbstrncpyi(nullptr, "a", 1), 0u);
}

TEST(Comparison, OrdersByLengthThenSignedBytes) {
    InitMbutilExt(ZV_SJIS);
    const struct {
        const char *a, *b;
        int order;
    } cases[] = {
        {"ABC", "abc", 0},
        {"a", "\x82\xA0", -1},
        {"\x82\xA0", "z", 1},
        {"ab", "a", 1},
        {"a", "ab", -1},
        {"", "", 0},
        {"\xB1", "a", -1},
        {"\x82\xA0", "\x82\x41", -1},
        {"\x82\x41", "\x82\x61", -1},
        {"\x82\xA0q", "\x82\xA0Q", 0},
        {"\x82", "\x82", 0},
        {nullptr, "a", 0},
        {"a", nullptr, 0},
    };
    for (const auto& c : cases) EXPECT_EQ(mbstricmp(c.a, c.b), c.order) << (c.a ? c.a : "NULL");
    InitMbutilExt(ZV_WESTERN);
    EXPECT_EQ(mbstricmp("ABC", "abc"), 0);
    EXPECT_GT(mbstricmp("\xB1", "a"), 0) << "the C library compares unsigned bytes";
}

TEST(Comparison, BoundedOnesCompareAWholeCharacterPastTheBound) {
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    const struct {
        int code_set;
        const char *a, *b;
        unsigned n;
        int ignoring_case, exact;
    } cases[] = {
        {ZV_SJIS, "abc", "ABD", 2, 0, 1},
        {ZV_SJIS, "ab", "abc", 2, 0, 0},
        {ZV_SJIS, "ab", "abc", 5, -1, 0},
        {ZV_SJIS, "abc", "ab", 5, 1, 1},
        {ZV_SJIS, "a\x82\x61", "a\x82\x41", 2, 1, 1},
        {ZV_SJIS, "a\x82\x61", "a\x82\x41", 1, 0, 0},
        {ZV_SJIS, "\x82", "\x82", 9, 0, 0},
        {ZV_SJIS, "\x82", "\x82\xA0", 9, -1, -1},
        {ZV_EUC, "\x8F\xA1", "\x8F\xA1", 9, 0, 0},
        {ZV_EUC, "\x8F\xA1\xA1q", "\x8F\xA1\xA1Q", 9, 0, 1},
        {ZV_EUC, "\xFF", "a", 9, 1, 1},
        {ZV_8859_2, "ab", "AB", 2, 0, 1},
        {ZV_8859_2, "az", "ab", 2, 1, 0},
        {ZV_8859_2, "\xB1", "a", 1, 1, -1},
        {ZV_EUC, "x", "y", 0, 0, 0},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        GuardedText a(c.a), b(c.b);
        EXPECT_EQ(sign(mbstrnicmp(a.data(), b.data(), c.n)), c.ignoring_case) << c.a << ' ' << c.n;
        EXPECT_EQ(sign(mbcharcmp(a.data(), b.data(), c.n)), c.exact) << c.a << ' ' << c.n;
    }
}

TEST(LetterCase, ChangesOneByteCharactersOnly) {
    const struct {
        int code_set;
        const char *text, *upper, *lower;
    } cases[] = {
        {ZV_SJIS, "aZ\x82\x61q", "AZ\x82\x61Q", "az\x82\x61q"},
        {ZV_SJIS, "\x82", "\x82", "\x82"},
        {ZV_EUC, "\x8F\xE1\xE2q", "\x8F\xE1\xE2Q", "\x8F\xE1\xE2q"},
        {ZV_WESTERN, "\x82\x61", "\x82\x41", "\x82\x61"},
        {ZV_JIS, "\x1B$Bab", "\x1B$BAB", "\x1B$bab"},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        GuardedText upper(c.text), lower(c.text);
        EXPECT_EQ(mbstrtoupper(upper.data()), strlen(c.text));
        EXPECT_EQ(mbstrtolower(lower.data()), strlen(c.text));
        EXPECT_EQ(upper.text(), c.upper);
        EXPECT_EQ(lower.text(), c.lower);
    }
    InitMbutilExt(ZV_SJIS);
    char text[] = "\x82\x61q";
    EXPECT_EQ(mbtoupper(text), 2);
    EXPECT_EQ(mbtolower(text + 2), 1);
    EXPECT_STREQ(text, "\x82\x61q");
    EXPECT_EQ(mbstrtoupper(nullptr), 0u);
}

std::string tokens(const std::string& s, const char* delimiters, bool reentrant) {
    GuardedText text(s);
    std::string all;
    char* save = nullptr;
    const auto next = [&](char* from) {
        return reentrant ? mbstrtok_r(from, delimiters, &save) : mbstrtok(from, delimiters);
    };
    for (char* token = next(text.data()); token != nullptr; token = next(nullptr))
        all.append("<").append(token).append(">");
    return all;
}

TEST(Tokeniser, SkipsOneLeadingDelimiterAndKeepsEmptyTokens) {
    const struct {
        int code_set;
        const char *text, *delimiters, *expected;
    } cases[] = {
        {ZV_SJIS, ",a,,b", ",", "<a><><b>"},
        {ZV_SJIS, "a,", ",", "<a><>"},
        {ZV_SJIS, ",,a", ",", "<><a>"},
        {ZV_SJIS, ",", ",", "<>"},
        {ZV_SJIS, "", ",", ""},
        {ZV_SJIS, "a,b", nullptr, "<a,b>"},
        {ZV_SJIS, "\x83\x2C,b", ",", "<\x83><><b>"},
        {ZV_SJIS, "\x83\x5C\\b", "\\", "<\x83\x5C><b>"},
        {ZV_SJIS,
         "\x81\x41"
         "a\x81\x41"
         "b",
         "\x81\x41", "<a><b>"},
        {ZV_EUC_H,
         "a\x8E\xA2\xA1\xA1"
         "b;c",
         ";\x8E\xA2\xA1\xA1", "<a><b><c>"},
        {ZV_WESTERN, ",,a,,b,", ",", "<a><b>"},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        EXPECT_EQ(tokens(c.text, c.delimiters, true), c.expected) << c.text;
        EXPECT_EQ(tokens(c.text, c.delimiters, false), c.expected) << c.text;
    }
}

TEST(Validation, ReportsTheFirstBadByte) {
    const struct {
        int current, code_set;
        const char* text;
        int bad; // -1: valid
    } cases[] = {
        {ZV_SJIS, ZV_SJIS, "a\x82\xA0\xB1", -1},
        {ZV_SJIS, ZV_SJIS, "a\x82\x20", 1},
        {ZV_SJIS, ZV_SJIS, "a\x82", 1},
        {ZV_SJIS, ZV_EUC, "a\x82\xA0", 1},
        {ZV_EUC, ZV_SJIS, "a\x82\xA0\x80", 3},
        {ZV_EUC, ZV_EUC_H, "\x8E\xA2\xA1\xA1", -1},
        {ZV_EUC, ZV_EUC_H, "\xA4\xA1\x8E\xA2\xA1", 2},
        {ZV_8859_5, ZV_SJIS, "\x82", -1},
        {ZV_JIS, ZV_JIS, "\x1B$B\xFF", -1},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.current);
        unsigned bad = 77;
        EXPECT_EQ(mbvalidatestring(GuardedText(c.text).data(), &bad, c.code_set), c.bad < 0)
            << c.text;
        EXPECT_EQ(bad, c.bad < 0 ? 77u : static_cast<unsigned>(c.bad)) << c.text;
    }
    unsigned bad;
    InitMbutilExt(ZV_SJIS);
    EXPECT_EQ(mbvalidatestring(nullptr, &bad, ZV_SJIS), 0);
    EXPECT_EQ(mbvalidatestring("a", nullptr, ZV_SJIS), 0);
}

TEST(Validation, ChecksOneByteCharacters) {
    const struct {
        int code_set;
        const char* text;
        int check, valid;
        unsigned bad; // 77: not written
    } cases[] = {
        {ZV_SJIS, "aB", 105, 0, 0},          {ZV_SJIS, "aB", 106, 0, 1},
        {ZV_SJIS, "B\x82\x61", 105, 1, 77},  {ZV_SJIS, "a\x82\x41", 106, 1, 77},
        {ZV_SJIS, "\x07\xB1\t", 104, 1, 77}, {ZV_SJIS, "a\x82", 200, 0, 1},
        {ZV_JIS, "a\xB1", 104, 0, 1},        {ZV_8859_2, "a b\t", 104, 1, 77},
        {ZV_8859_2, "a\x07", 104, 0, 77},    {ZV_8859_2, "B", 105, 1, 77},
        {ZV_8859_2, "b", 105, 0, 77},        {ZV_8859_2, "B", 106, 0, 77},
        {ZV_8859_2, "\x07", 200, 1, 77},
    };
    for (const auto& c : cases) {
        InitMbutilExt(c.code_set);
        unsigned bad = 77;
        EXPECT_EQ(mbvalidatestringtype(GuardedText(c.text).data(), &bad, c.check), c.valid)
            << c.text << ' ' << c.check;
        EXPECT_EQ(bad, c.bad) << c.text << ' ' << c.check;
    }
    unsigned bad;
    EXPECT_EQ(mbvalidatestringtype(nullptr, &bad, 104), 0);
    EXPECT_EQ(mbvalidatestringtype("a", nullptr, 104), 0);
}

} // namespace
