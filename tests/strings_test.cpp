#include <gtest/gtest.h>

#include <cctype>
#include <clocale>
#include <cstring>

#include "mbutil.h"
#include "support/guarded.h"
#include "support/strings_model.h"
#include "support/texts.h"

namespace {

using namespace test;

// Bytes that are lead, trail, both or neither in the several code sets, white space and control
// bytes, and few enough for random texts to meet each other.
constexpr std::string_view kAlphabet = "ab,AZ\n\a\x81\x82\xA0\xA1\xA2\x8E\x8F\xB0[\xE1\xFE\xFF";

// Hands random pairs of texts to a check in every code set, behind every length of ASCII.
void with_random_texts(auto check) {
    std::mt19937 random(1);
    for (const int code_set : kCodeSets) {
        InitMbutilExt(code_set);
        for (size_t round = 0; round < 4096; ++round) {
            const std::string padding(round % 2 * (round / 2 % 64), '/');
            const std::string s = padding + test::random_text(random, kAlphabet, 12);
            check(s, test::random_text(random, kAlphabet, 3), code_set);
            ASSERT_FALSE(testing::Test::HasFailure()) << code_set << " '" << s << "'";
        }
    }
}

long offset(const char* found, const char* s) { return found == nullptr ? -1 : found - s; }

TEST(Strings, SearchesAndTokensAreOfWholeCharacters) {
    with_random_texts([](const std::string& s, const std::string& part, int) {
        GuardedText hay(s), needle(part);
        const char *h = hay.data(), *p = needle.data();
        for (const int c : {*p & 0xFF, *p + 0, -1, 300, 0}) {
            const int wanted = mbIsMultiByte() ? c : static_cast<signed char>(c);
            const auto holds = [&](size_t i) { return s[i] == wanted; };
            const long end = mbIsMultiByte() ? -1 : offset(h + s.size(), h);
            EXPECT_EQ(offset(mbstrchr(h, c), h), c == 0 ? end : find(s, false, holds)) << c;
            EXPECT_EQ(mbstrchrEncr(h, c), mbstrchr(h, c));
            EXPECT_EQ(offset(mbstrrchr(h, c), h), c == 0 ? end : find(s, true, holds)) << c;
        }
        const long any = find(s, false, [&](size_t i) { return member(s, i, part); });
        EXPECT_EQ(offset(mbstrpbrk(h, p), h), any);
        EXPECT_EQ(mbstrcspn(h, p), any < 0 ? s.size() : static_cast<size_t>(any));
        EXPECT_EQ(offset(mbstrstr(h, p), h), part.empty() ? 0 : find_text(s, part, false));
        EXPECT_EQ(offset(mbstrrstr(h, p), h), part.empty() ? -1 : find_text(s, part, true));

        GuardedText cut(s);
        std::string all;
        char *save, *token = mbstrtok(cut.data(), p), *again = mbstrtok_r(hay.data(), p, &save);
        while (token != nullptr && again != nullptr) {
            EXPECT_STREQ(again, token);
            all.append("<").append(token).append(">");
            token = mbstrtok(nullptr, p), again = mbstrtok_r(nullptr, p, &save);
        }
        EXPECT_EQ(token, again) << "both are at the end";
        EXPECT_EQ(all, tokens(s, part));
    });
}

TEST(Strings, BoundariesAndCopiesCutNoCharacter) {
    EXPECT_EQ(mbidxtype("a\x82\xA0", 2, ZV_SJIS), 1u) << "walks before the code set is known";
    EXPECT_EQ(MBUTIL_Initialized, 0);
    with_random_texts([](const std::string& s, const std::string&, int) {
        GuardedText text(s);
        const size_t last = s.size() + (mbIsMultiByte() ? 2 : 0);
        for (size_t i = last - std::min(last, size_t{14}); i <= last; ++i) {
            const auto n = static_cast<unsigned>(i);
            const size_t at = boundary(s, n);
            const size_t behind = at + step(&s[at]), next = behind < s.size() ? behind : 0;
            EXPECT_EQ(mbidx(text.data(), n), at);
            EXPECT_EQ(mbnextidx(text.data(), n), next) << n;
            EXPECT_EQ(mbnextchar(text.data(), n), next == 0 ? nullptr : text.data() + next);
            std::string expected = s.substr(0, at);
            expected.resize(n);
            GuardedRoom copy(n), counted(n);
            EXPECT_EQ(std::string(mbstrncpy(copy.data(), text.data(), n), n), expected);
            EXPECT_EQ(mbstrncpyi(counted.data(), text.data(), n), at);
            EXPECT_EQ(std::string(counted.data(), n), expected);
        }
    });
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(mbidxtype("\xB0\xA1\x82\xA0", 3, ZV_SJIS), 2u) << "not the current code set";
    InitMbutilExt(ZV_8859_5);
    EXPECT_EQ(mbidxtype("a\x82\xA0", 9, ZV_SJIS), 9u);
}

TEST(Strings, ComparisonsKeepCharactersWhole) {
    with_random_texts([](const std::string& s, const std::string& tail, int) {
        // A text that begins alike, but for letter case, and has an end of its own.
        std::string other = s.substr(0, s.size() - std::min(s.size(), tail.size())) + tail;
        if (tail.size() % 2 == 0 && other.size() > 2) other[other.size() - 3] ^= 0x20;
        GuardedText a(s), b(other);
        const char *p = a.data(), *q = b.data();
        const bool multibyte = mbIsMultiByte();
        const int order = sort_key(s).compare(sort_key(other));
        EXPECT_EQ(mbstricmp(p, q), multibyte ? sign(order) : strcasecmp(p, q));
        for (auto n = static_cast<unsigned>(s.size()) + 3; n + 10 > s.size() && n < 99; --n) {
            EXPECT_EQ(sign(mbstrnicmp(p, q, n)), bounded_order(s, other, n, true));
            EXPECT_EQ(sign(mbcharcmp(p, q, n)),
                      multibyte ? bounded_order(s, other, n, false) : sign(*p - *q));
        }
    });
}

TEST(Strings, OneByteCharactersAreChangedAndChecked) {
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    ASSERT_TRUE(setlocale(LC_ALL, "de_DE.ISO8859-1")) << "its letters lie above 80 as well";
    with_random_texts([](const std::string& s, const std::string& part, int current) {
        const std::string begins = part + "q";
        const size_t length = step(begins.c_str());
        const std::string first = begins.substr(0, length), rest = begins.substr(length);
        for (const auto& [change_all, change_one, change] :
             {std::tuple(&mbstrtoupper, &mbtoupper, &toupper),
              std::tuple(&mbstrtolower, &mbtolower, &tolower)}) {
            GuardedText all(s), one(begins);
            EXPECT_EQ(change_all(all.data()), s.size());
            EXPECT_EQ(all.text(), changed(s, change));
            EXPECT_EQ(change_one(one.data()), length);
            EXPECT_EQ(one.text(), changed(first, change) + rest);
        }
        GuardedText text(s);
        const int other = kCodeSets[part.size() * 2];
        for (const int check : {0, 103, 104, 105, 106}) {
            size_t at = bad_position(s, check == 0 ? other : current, check);
            if (check == 0 && !mbIsMultiByte()) at = s.size();
            unsigned bad = 77;
            EXPECT_EQ(check == 0 ? mbvalidatestring(text.data(), &bad, other)
                                 : mbvalidatestringtype(text.data(), &bad, check),
                      at == s.size());
            EXPECT_EQ(bad, mbIsMultiByte() && at < s.size() ? at : 77) << check;
        }
    });
}

TEST(Strings, NullIsNoText) {
    InitMbutilExt(ZV_EUC);
    unsigned bad;
    char text[] = "a,b";
    using Texts = std::pair<char*, char*>;
    for (const auto& [a, b] : {Texts(nullptr, text), Texts(text, nullptr)}) {
        EXPECT_EQ(mbstrstr(a, b), a);
        EXPECT_EQ(mbstrrstr(a, b), a);
        EXPECT_EQ(mbstrncpy(a, b, 3), a);
        EXPECT_FALSE(mbstrncpyi(a, b, 3) || mbstrpbrk(a, b) || mbstricmp(a, b) ||
                     mbstrnicmp(a, b, 1) || mbcharcmp(a, b, 1) ||
                     mbvalidatestring(a, b ? &bad : nullptr, ZV_EUC) ||
                     mbvalidatestringtype(a, b ? &bad : nullptr, 103));
    }
    EXPECT_FALSE(mbstrchr(nullptr, 'a') || mbstrrchr(nullptr, 'a') || mbstrtoupper(nullptr));
    EXPECT_EQ(mbstrcspn(text, nullptr), 3u);
    EXPECT_STREQ(mbstrtok(text, nullptr), "a,b");
    EXPECT_EQ(mbstrtok(nullptr, ","), nullptr);
}

} // namespace
