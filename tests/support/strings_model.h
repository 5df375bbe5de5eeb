#ifndef ZVUTIL_TESTS_STRINGS_MODEL_H
#define ZVUTIL_TESTS_STRINGS_MODEL_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "mbutil.h"

namespace test {

inline constexpr int kCodeSets[] = {ZV_JIS,         ZV_EUC,         ZV_SJIS, ZV_GB,
                                    ZV_EUC_C,       ZV_8859_5,      ZV_BIG5, ZV_EUC_H,
                                    ZV_KSC_5601_87, ZV_KSC_5601_92, ZV_EUC_K};

// The models are the plainest statements of the operations: they walk by mbbytesinchar() from the
// start.
inline size_t step(const char* p) { return static_cast<size_t>(mbbytesinchar(p)); }
inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
inline int sign(int order) { return (order > 0) - (order < 0); }

// The first or the last position of a character at which a condition holds; -1 for none.
long find(const std::string& s, bool last, auto holds) {
    long found = -1;
    for (size_t i = 0; i < s.size() && (last || found < 0); i += step(&s[i]))
        if (holds(i)) found = static_cast<long>(i);
    return found;
}

inline size_t boundary(const std::string& s, size_t n) {
    size_t at = 0;
    for (size_t i = 0; i <= std::min(n, s.size()); i += step(&s[i])) at = i;
    return at;
}

inline long find_text(const std::string& s, const std::string& text, bool last) {
    const size_t size = text.size();
    return find(s, last, [&](size_t i) {
        return s.compare(i, size, text) == 0 && boundary(s.substr(i), size) == size;
    });
}

// The length of the member of a set that stands at i; 0 when none does.
inline size_t member(const std::string& s, size_t i, const std::string& set) {
    for (size_t j = 0, length; j < set.size(); j += length) {
        length = step(&set[j]);
        if (s.compare(i, length, set, j, length) == 0) return length;
    }
    return 0;
}

inline std::string changed(std::string s, int (*change)(int)) {
    for (size_t i = 0, length; i < s.size(); i += length) {
        length = step(&s[i]);
        if (length == 1) s[i] = static_cast<char>(change(s[i] & 0xFF));
    }
    return s;
}

// What mbstricmp() orders texts by: the characters' lengths, then their signed bytes.
inline std::string sort_key(std::string s) {
    std::string key;
    s = changed(s, tolower);
    for (size_t i = 0; i < s.size(); i += step(&s[i]))
        key.append(1, static_cast<char>(step(&s[i]))).append(s, i, step(&s[i]));
    for (char& c : key) c ^= '\x80';
    return key;
}

// Compares as far as the characters reach that begin before n, as their first bytes announce.
inline int bounded_order(std::string a, std::string b, size_t n, bool ignoring_case) {
    b.resize(std::max(a.size(), b.size()));
    size_t end = 0;
    while (end < n && end < a.size()) {
        const int first = a[end] & 0xFF, most = mbmaxcharlen();
        if (!mb_isleadbyte(first) && ignoring_case) a[end] = lower(a[end]), b[end] = lower(b[end]);
        const bool longest = most > 2 && first == (most == 3 ? 0x8F : 0x8E);
        end += static_cast<size_t>(longest ? most : 1 + mb_isleadbyte(first));
    }
    return sign(strncmp(a.c_str(), b.c_str(), ignoring_case ? std::max(end, n) : end));
}

inline std::string tokens(const std::string& s, const std::string& set) {
    std::string all = "<";
    for (size_t i = member(s, 0, set); i < s.size();) {
        const size_t delimiter = member(s, i, set);
        all += delimiter != 0 ? "><" : s.substr(i, step(&s[i]));
        i += delimiter != 0 ? delimiter : step(&s[i]);
    }
    all += ">";
    // Single-byte text has no empty tokens.
    for (size_t at; !mbIsMultiByte() && (at = all.find("<>")) != std::string::npos;)
        all.erase(at, 2);
    return s.empty() ? "" : all;
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
        if (length < 1 || (length == 1 && bad)) break;
    }
    return i;
}

} // namespace test

#endif
