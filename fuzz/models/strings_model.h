#ifndef ZVUTIL_FUZZ_STRINGS_MODEL_H
#define ZVUTIL_FUZZ_STRINGS_MODEL_H

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

#include "mbutil.h"

namespace test {

inline constexpr int kCodeSets[] = {ZV_JIS,         ZV_EUC,         ZV_SJIS, ZV_GB,
                                    ZV_EUC_C,       ZV_8859_5,      ZV_BIG5, ZV_EUC_H,
                                    ZV_KSC_5601_87, ZV_KSC_5601_92, ZV_EUC_K};

// The models are the plainest statements of the operations: they walk by mbbytesinchar() from the
// start.
inline size_t step(const char* p) {
    return static_cast<size_t>(mbbytesinchar(p));
}
inline int as_signed(char c) {
    return static_cast<signed char>(c);
}
inline int sign(int order) {
    return (order > 0) - (order < 0);
}

inline std::string converted(const std::string& text, int from, int to) {
    std::string out(5 * text.size() + 4, '\0');
    return convertStrExt(text.c_str(), from, out.data(), to);
}

inline std::vector<std::string> characters(const std::string& s) {
    std::vector<std::string> all;
    for (size_t i = 0; i < s.size(); i += all.back().size())
        all.push_back(s.substr(i, step(&s[i])));
    return all;
}

// Where the characters of a text begin, and its end.
struct Characters {
    explicit Characters(const std::string& whole) : s(whole) {
        for (size_t i = 0; i < s.size(); i += step(&s[i]))
            starts.push_back(i);
        starts.push_back(s.size());
    }
    // The last of these places that does not lie behind n.
    size_t boundary(size_t n) const { return std::ranges::upper_bound(starts, n)[-1]; }
    // The first or the last position at which a condition holds; -1 for none.
    long find(bool last, auto holds) const {
        long found = -1;
        for (size_t k = 0; k + 1 < starts.size() && (last || found < 0); ++k)
            if (holds(starts[k]))
                found = static_cast<long>(starts[k]);
        return found;
    }
    long find_text(const std::string& text, bool last) const {
        return find(last, [&](size_t i) {
            return s.compare(i, text.size(), text) == 0 &&
                   std::ranges::binary_search(starts, i + text.size());
        });
    }

    const std::string& s;
    std::vector<size_t> starts{};
};

// As many whole characters as n bytes hold.
inline std::string cut(const std::string& s, size_t n) {
    size_t end = 0;
    for (size_t i = 0; i <= std::min(n, s.size()); i += step(&s[i]))
        end = i;
    return s.substr(0, end);
}

inline std::string changed(std::string s, int (*change)(int)) {
    for (size_t i = 0, length; i < s.size(); i += length) {
        length = step(&s[i]);
        if (length == 1)
            s[i] = char(change(s[i] & 0xFF));
    }
    return s;
}

// What mbstricmp() orders texts by: the characters' lengths, then their signed bytes.
inline std::string sort_key(std::string s) {
    std::string key;
    s = changed(s, tolower);
    for (size_t i = 0, length; i < s.size(); i += length) {
        length = step(&s[i]);
        key += char(length);
        key.append(s, i, length);
    }
    for (char& c : key)
        c ^= '\x80';
    return key;
}

// Where the characters begin that first bytes announce, whatever follows them, and the end of the
// last one.
inline std::vector<size_t> announced(const std::string& s) {
    std::vector<size_t> places = {0};
    const int most = mbmaxcharlen();
    while (places.back() < s.size()) {
        const int first = s[places.back()] & 0xFF;
        const bool longest = most > 2 && first == (most == 3 ? 0x8F : 0x8E);
        const int length = longest ? most : mb_isleadbyte(first) != 0 ? 2 : 1;
        places.push_back(places.back() + static_cast<size_t>(length));
    }
    return places;
}

inline std::string lower_at(const std::vector<size_t>& places, std::string s) {
    for (const size_t place : places)
        if (place < s.size())
            s[place] = char(tolower(s[place] & 0xFF));
    return s;
}

// Compares as far as the characters reach that begin before n, which end where the first text's do.
inline int bounded_order(const std::string& a, const std::string& b,
                         const std::vector<size_t>& ends, size_t n, bool ignoring_case) {
    const size_t end = *std::ranges::lower_bound(ends, std::min(n, ends.back()));
    return sign(strncmp(a.c_str(), b.c_str(), ignoring_case ? std::max(end, n) : end));
}

// The length of the character of a set that stands at a place, 0 when none does.
inline size_t member_at(const std::vector<std::string>& set, const std::string& s, size_t i) {
    for (const std::string& member : set)
        if (s[i] == member[0] && s.compare(i, member.size(), member) == 0)
            return member.size();
    return 0;
}

inline std::vector<std::string> tokens(const std::string& s, const std::vector<std::string>& set) {
    std::vector<std::string> all(s.empty() ? 0 : 1);
    for (size_t i = member_at(set, s, 0); i < s.size();) {
        const size_t delimiter = member_at(set, s, i);
        if (delimiter != 0)
            all.emplace_back();
        else
            all.back() += s.substr(i, step(&s[i]));
        i += delimiter != 0 ? delimiter : step(&s[i]);
    }
    if (!mbIsMultiByte())
        std::erase(all, ""); // single-byte text has no empty tokens
    return all;
}

// The first malformed character or one-byte character that does not pass; the end for none.
inline size_t bad_position(const std::string& s, int code_set, int check) {
    size_t i = 0;
    for (int length; i < s.size(); i += static_cast<size_t>(length)) {
        const int byte = s[i] & 0xFF;
        const int bad = check == ZV_CHECK_NO_LOWER                     ? islower(byte)
                        : check == ZV_CHECK_NO_UPPER                   ? isupper(byte)
                        : check != ZV_CHECK_PRINTABLE || isspace(byte) ? 0
                        : mbIsMultiByte()                              ? !ismbcprint(byte)
                                                                       : !isprint(byte);
        length = mblenExt(&s[i], 4, code_set);
        if (length < 1 || (length == 1 && bad))
            break;
    }
    return i;
}

// How much of a text mbfreadstring() reads at once: no character that the end of the room may cut.
inline size_t block_size(const char* text, size_t size, size_t room) {
    if (size < room)
        return size;
    size_t at = 0;
    for (int length; at < room; at += static_cast<size_t>(std::max(length, 1))) {
        const int left = static_cast<int>(room - at);
        length = mb_mblen(text + at, static_cast<unsigned>(left));
        if (length > left || (length < 0 && left == 1))
            break;
    }
    return at;
}

// What holds for any texts, each handed to same(actual, expected, the function). Text and Room
// are memory that ends where the text or the room does.
template <class Text, class Room>
struct StringProperties {
    static void searches(const std::string& s, const std::string& part, auto same) {
        Text hay(s), needle(part);
        const Characters places(s);
        const std::vector<std::string> set = characters(part);
        const char *h = hay.data(), *p = needle.data();
        const auto offset = [&](const char* found) { return found == nullptr ? -1 : found - h; };
        for (const int c : {*p & 0xFF, as_signed(*p), -1, 300, INT_MAX, INT_MAX - 127, 0}) {
            const int wanted = mbIsMultiByte() ? c : static_cast<signed char>(c);
            const auto holds = [&](size_t i) { return as_signed(s[i]) == wanted; };
            const long end = mbIsMultiByte() ? -1 : std::ssize(s);
            same(offset(mbstrchr(h, c)), c == 0 ? end : places.find(false, holds), "mbstrchr");
            same(mbstrchrEncr(h, c), mbstrchr(h, c), "mbstrchrEncr");
            same(offset(mbstrrchr(h, c)), c == 0 ? end : places.find(true, holds), "mbstrrchr");
        }
        const long any = places.find(false, [&](size_t i) { return member_at(set, s, i) != 0; });
        same(offset(mbstrpbrk(h, p)), any, "mbstrpbrk");
        same(mbstrcspn(h, p), any < 0 ? s.size() : static_cast<size_t>(any), "mbstrcspn");
        same(offset(mbstrstr(h, p)), part.empty() ? 0 : places.find_text(part, false), "mbstrstr");
        same(offset(mbstrrstr(h, p)), part.empty() ? -1 : places.find_text(part, true),
             "mbstrrstr");
    }

    static void delimiters(const std::string& s, const std::string& part, auto same) {
        Text hay(s), needle(part), cut(s);
        const char* const p = needle.data();
        std::vector<std::string> all;
        char *save, *token = mbstrtok(cut.data(), p), *again = mbstrtok_r(hay.data(), p, &save);
        while (token != nullptr && again != nullptr) {
            same(std::string(again), token, "mbstrtok_r");
            all.emplace_back(token);
            token = mbstrtok(nullptr, p), again = mbstrtok_r(nullptr, p, &save);
        }
        same(token, again, "mbstrtok_r");
        same(all, tokens(s, characters(part)), "mbstrtok");
    }

    // At the last positions up to one.
    static void boundaries(const std::string& s, size_t last, auto same) {
        Text text(s);
        const Characters places(s);
        for (size_t i = last - std::min(last, size_t{9}); i <= last; ++i) {
            const auto n = static_cast<unsigned>(i);
            const size_t at = places.boundary(i), behind = at + step(&s[at]);
            const size_t next = behind < s.size() ? behind : 0;
            same(mbidx(text.data(), n), at, "mbidx");
            same(mbnextidx(text.data(), n), next, "mbnextidx");
            same(mbnextchar(text.data(), n), next == 0 ? nullptr : text.data() + next,
                 "mbnextchar");
            std::string expected = s.substr(0, at);
            expected.resize(n);
            Room copy(n), counted(n);
            same(std::string(mbstrncpy(copy.data(), text.data(), n), n), expected, "mbstrncpy");
            same(mbstrncpyi(counted.data(), text.data(), n), at, "mbstrncpyi");
            same(std::string(counted.data(), n), expected, "mbstrncpyi");
        }
    }

    static void comparisons(std::string s, const std::string& tail, auto same) {
        // A text that begins alike, but for letter case, and has an end of its own or goes on.
        const size_t cut = tail.size() % 3 == 0 ? 0 : std::min(s.size(), tail.size());
        std::string other = s.substr(0, s.size() - cut) + tail;
        if (tail.size() % 2 == 0 && other.size() > 2)
            other[other.size() - 3] ^= 0x20;
        other.resize(strlen(other.c_str())); // a blank has become its end
        if (tail.size() % 2 == 1)
            std::swap(s, other);
        Text a(s), b(other);
        const char *p = a.data(), *q = b.data();
        const bool multibyte = mbIsMultiByte();
        if (multibyte)
            same(mbstricmp(p, q), sign(sort_key(s).compare(sort_key(other))), "mbstricmp");
        else // the C library decides by how much they differ
            same(sign(mbstricmp(p, q)), sign(strcasecmp(p, q)), "mbstricmp");
        const std::vector<size_t> places = announced(s);
        const std::string small = lower_at(places, s), other_small = lower_at(places, other);
        const int first = sign(as_signed(*p) - as_signed(*q));
        for (size_t i = s.size() - std::min(s.size(), size_t{9}); i <= s.size() + 3; ++i) {
            const auto n = static_cast<unsigned>(i);
            same(sign(mbstrnicmp(p, q, n)), bounded_order(small, other_small, places, n, true),
                 "mbstrnicmp");
            same(sign(mbcharcmp(p, q, n)),
                 multibyte ? bounded_order(s, other, places, n, false) : first, "mbcharcmp");
        }
    }

    static void changes(const std::string& s, const std::string& part, int current, auto same) {
        const std::string begins = part + s.substr(std::min(s.size(), size_t{1}), 4) + "q";
        const size_t length = step(begins.c_str());
        const std::string first = begins.substr(0, length), rest = begins.substr(length);
        for (const auto& [change_all, change_one, change] :
             {std::tuple(&mbstrtoupper, &mbtoupper, &toupper),
              std::tuple(&mbstrtolower, &mbtolower, &tolower)}) {
            Text all(s), one(begins);
            same(change_all(all.data()), s.size(), "case");
            same(all.text(), changed(s, change), "case");
            same(change_one(one.data()), length, "case");
            same(one.text(), changed(first, change) + rest, "case");
        }
        Text text(s);
        const int other = kCodeSets[part.size() * 2 % std::size(kCodeSets)];
        for (const int check : {0, 103, 104, 105, 106}) {
            size_t at = bad_position(s, check == 0 ? other : current, check);
            if (check == 0 && !mbIsMultiByte())
                at = s.size();
            unsigned bad = 77;
            same(check == 0 ? mbvalidatestring(text.data(), &bad, other)
                            : mbvalidatestringtype(text.data(), &bad, check),
                 at == s.size(), "mbvalidatestring");
            same(bad, mbIsMultiByte() && at < s.size() ? at : 77, "mbvalidatestring");
        }
    }
};

} // namespace test

#endif
