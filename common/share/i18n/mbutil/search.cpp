#include <bitset>
#include <cstring>

#include "character_sets.h"
#include "scanner_choice.h"

namespace zv {
namespace {

const char* as_text(const Byte* bytes) {
    return reinterpret_cast<const char*>(bytes);
}

int as_char_value(Byte byte) {
    return static_cast<signed char>(byte);
}

// Where a byte cannot be a trail byte, every occurrence begins a character and the C library's
// vectorised searches give the exact result.
template <class Scanner>
constexpr bool always_begins_character(Byte byte) {
    return Scanner::kLongest == 1 || (byte < Scanner::kLowestTrail && byte < 0x80);
}

// The same of a search character, which is a char value: only -128 to 127 can be found.
template <class Scanner>
constexpr bool c_library_finds(int c) {
    return c != 0 && in_range(static_cast<unsigned>(c + 128), 0, 255) &&
           always_begins_character<Scanner>(static_cast<Byte>(c));
}

template <class Scanner>
const Byte* find_first(const Byte* s, int c) {
    if (c_library_finds<Scanner>(c))
        return as_bytes(std::strchr(as_text(s), c));
    for (; *s != 0; s += step<Scanner>(s)) {
        if (as_char_value(*s) == c)
            return s;
    }
    return nullptr;
}

template <class Scanner>
const Byte* find_last(const Byte* s, int c) {
    if (c_library_finds<Scanner>(c))
        return as_bytes(std::strrchr(as_text(s), c));
    const Byte* last = nullptr;
    for (; *s != 0; s += step<Scanner>(s)) {
        if (as_char_value(*s) == c)
            last = s;
    }
    return last;
}

// Whether whole characters at hay spell the needle. A needle that ends inside a character differs
// there by its terminator.
template <class Scanner>
bool spells(const Byte* hay, const Byte* needle) {
    while (*needle != 0) {
        if (*hay == 0)
            return false;
        const int length = step<Scanner>(hay);
        for (int i = 0; i < length; ++i) {
            if (hay[i] != needle[i])
                return false;
        }
        hay += length;
        needle += length;
    }
    return true;
}

template <class Scanner>
const Byte* find_string(const Byte* hay, const Byte* needle) {
    const int first = as_char_value(*needle);
    while ((hay = find_first<Scanner>(hay, first)) != nullptr) {
        if (spells<Scanner>(hay, needle))
            return hay;
        hay += step<Scanner>(hay);
    }
    return nullptr;
}

template <class Scanner>
const Byte* find_last_string(const Byte* hay, const Byte* needle) {
    const Byte* last = nullptr;
    while ((hay = find_string<Scanner>(hay, needle)) != nullptr) {
        last = hay;
        hay += step<Scanner>(hay);
    }
    return last;
}

// The length of the member of the set that stands at p, 0 when none does. A member that is a
// malformed byte matches by that byte alone.
template <class Scanner>
size_t match_at(const Byte* p, const Byte* set) {
    for (int length; *set != 0; set += length) {
        length = step<Scanner>(set);
        int i = 0;
        while (i < length && p[i] == set[i])
            ++i;
        if (i == length)
            return static_cast<size_t>(length);
    }
    return 0;
}

template <class Scanner>
SetMatch find_in_set(const char* s, const char* set) {
    std::bitset<256> first_bytes;
    bool c_library_serves = true;
    for (const Byte* q = as_bytes(set); *q != 0; q += step<Scanner>(q)) {
        first_bytes[*q] = true;
        c_library_serves &= always_begins_character<Scanner>(*q);
    }
    if (c_library_serves) {
        const size_t offset = std::strcspn(s, set);
        return {offset, s[offset] != '\0'};
    }
    const Byte* p = as_bytes(s);
    for (; *p != 0; p += step<Scanner>(p)) {
        if (!first_bytes[*p])
            continue;
        if (const size_t length = match_at<Scanner>(p, as_bytes(set)); length != 0)
            return {static_cast<size_t>(p - as_bytes(s)), length};
    }
    return {static_cast<size_t>(p - as_bytes(s)), 0};
}

char* as_result(const Byte* found) {
    return const_cast<char*>(as_text(found));
}

} // namespace

SetMatch find_in_set(const char* s, const char* set) {
    return with_current_scanner(
        [&](auto scanner) { return find_in_set<decltype(scanner)>(s, set); });
}

} // namespace zv

char* mbstrchr(const char* s, int c) {
    if (!zv::current_is_multibyte())
        return const_cast<char*>(std::strchr(s, c));
    if (s == nullptr)
        return nullptr;
    return zv::with_current_scanner([&](auto scanner) {
        return zv::as_result(zv::find_first<decltype(scanner)>(zv::as_bytes(s), c));
    });
}

char* mbstrchrEncr(const char* s, int c) {
    return mbstrchr(s, c);
}

char* mbstrrchr(const char* s, int c) {
    if (!zv::current_is_multibyte())
        return const_cast<char*>(std::strrchr(s, c));
    if (s == nullptr)
        return nullptr;
    return zv::with_current_scanner([&](auto scanner) {
        return zv::as_result(zv::find_last<decltype(scanner)>(zv::as_bytes(s), c));
    });
}

char* mbstrstr(const char* hay, const char* needle) {
    if (!zv::current_is_multibyte())
        return const_cast<char*>(std::strstr(hay, needle));
    if (hay == nullptr || needle == nullptr || *needle == '\0')
        return const_cast<char*>(hay);
    return zv::with_current_scanner([&](auto scanner) {
        return zv::as_result(
            zv::find_string<decltype(scanner)>(zv::as_bytes(hay), zv::as_bytes(needle)));
    });
}

char* mbstrrstr(const char* hay, const char* needle) {
    zv::ensure_initialised();
    if (hay == nullptr || needle == nullptr)
        return const_cast<char*>(hay);
    if (*needle == '\0')
        return nullptr;
    return zv::with_current_scanner([&](auto scanner) {
        return zv::as_result(
            zv::find_last_string<decltype(scanner)>(zv::as_bytes(hay), zv::as_bytes(needle)));
    });
}

char* mbstrpbrk(const char* s, const char* set) {
    if (!zv::current_is_multibyte())
        return const_cast<char*>(std::strpbrk(s, set));
    if (s == nullptr || set == nullptr)
        return nullptr;
    const zv::SetMatch match = zv::find_in_set(s, set);
    return match.length == 0 ? nullptr : const_cast<char*>(s) + match.offset;
}

unsigned mbstrcspn(const char* s, const char* set) {
    if (!zv::current_is_multibyte())
        return static_cast<unsigned>(std::strcspn(s, set));
    return static_cast<unsigned>(set == nullptr ? std::strlen(s) : zv::find_in_set(s, set).offset);
}
