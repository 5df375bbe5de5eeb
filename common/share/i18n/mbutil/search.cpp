#include <cstring>

#include "character_search.h"
#include "character_sets.h"
#include "scanner_choice.h"

namespace zv {
namespace {

const char* as_text(const Byte* bytes) {
    return reinterpret_cast<const char*>(bytes);
}

// Where a byte cannot be a trail byte, every occurrence begins a character and the C library's
// vectorised searches give the exact result.
template <class Scanner>
constexpr bool always_begins_character(Byte byte) {
    return Scanner::kLongest == 1 || byte < std::min<int>(Scanner::kLowestTrail, 0x80);
}

WantedBytes only(Byte byte) {
    WantedBytes wanted;
    wanted.add(byte);
    return wanted;
}

// No other search character finds anything.
constexpr bool is_char_value(int c) {
    return c == static_cast<signed char>(c);
}

enum class Occurrence { first, last };

template <class Scanner>
const Byte* find_byte(const Byte* s, int c, Occurrence which) {
    if (c == 0 || !is_char_value(c))
        return nullptr;
    if (always_begins_character<Scanner>(static_cast<Byte>(c))) {
        const char* const text = as_text(s);
        return as_bytes(which == Occurrence::first ? std::strchr(text, c) : std::strrchr(text, c));
    }
    const Byte* found = nullptr;
    const auto is_it = [&](const Byte* p) {
        found = p;
        return which == Occurrence::first;
    };
    find_character<Scanner>(s, only(static_cast<Byte>(c)), Accepts(is_it));
    return found;
}

char* find_byte(const char* s, int c, Occurrence which) {
    if (s == nullptr)
        return nullptr;
    return with_current_scanner([&](auto scanner) {
        const Byte* const found = find_byte<decltype(scanner)>(as_bytes(s), c, which);
        return const_cast<char*>(as_text(found));
    });
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
    // The C library compares bytes faster; what is equal may still end inside a character.
    const size_t length = std::strlen(as_text(needle));
    const auto spells_needle = [=](const Byte* p) {
        return (p[1] == needle[1] || needle[1] == 0) &&
               std::strncmp(as_text(p), as_text(needle), length) == 0 && spells<Scanner>(p, needle);
    };
    return find_character<Scanner>(hay, only(*needle), Accepts(spells_needle));
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
[[gnu::noinline]] size_t match_at(const Byte* p, const Byte* set) {
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
    WantedBytes first_bytes;
    bool c_library_serves = true;
    for (const Byte* q = as_bytes(set); *q != 0; q += step<Scanner>(q)) {
        first_bytes.add(*q);
        c_library_serves &= always_begins_character<Scanner>(*q);
    }
    if (c_library_serves) {
        const size_t offset = std::strcspn(s, set);
        return {offset, s[offset] != '\0'};
    }
    size_t length = 0;
    const auto is_member = [&](const Byte* p) {
        length = match_at<Scanner>(p, as_bytes(set));
        return length != 0;
    };
    const Byte* const found = find_character<Scanner>(as_bytes(s), first_bytes, Accepts(is_member));
    if (found == nullptr)
        return {std::strlen(s), 0};
    return {static_cast<size_t>(found - as_bytes(s)), length};
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
    return zv::find_byte(s, c, zv::Occurrence::first);
}

char* mbstrchrEncr(const char* s, int c) {
    return mbstrchr(s, c);
}

char* mbstrrchr(const char* s, int c) {
    if (!zv::current_is_multibyte())
        return const_cast<char*>(std::strrchr(s, c));
    return zv::find_byte(s, c, zv::Occurrence::last);
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
