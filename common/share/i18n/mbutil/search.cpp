#include <cstring>

#include "character_search.h"
#include "two_way.h"

// The C library finds what looks like the character or the string that is looked for; what it finds
// counts where it begins a character. Text with anything else that looks alike is gone through by
// its characters from there on.

namespace zv {
namespace {

enum class Occurrence { first, last };

const Byte* find_first(const Byte* s, const Byte* p, const Wanted& wanted) {
    const Characters& characters = current_characters();
    const Byte* const boundary = characters.last_boundary_in(s, p);
    return boundary == p ? p : CharacterSearch(characters, boundary, p + 1, wanted).next();
}

// Goes back by longer and longer parts, so that what is far before the last one costs nothing.
const Byte* find_last(const Byte* s, const Byte* p, const Wanted& wanted) {
    const Characters& characters = current_characters();
    if (characters.last_boundary_in(s, p) == p)
        return p;
    for (size_t size = 256;; size *= 16) {
        const bool is_whole = static_cast<size_t>(p - s) <= size;
        const Byte* const from = is_whole ? s : characters.last_boundary_in(s, p - size);
        const Byte* found = nullptr;
        CharacterSearch search(characters, from, from, wanted, p);
        while (const Byte* const place = search.next())
            found = place;
        if (found != nullptr || is_whole)
            return found;
    }
}

char* find_byte(const char* s, int c, Occurrence which) {
    if (s == nullptr || c == 0 || c != static_cast<signed char>(c))
        return nullptr;
    const auto byte = static_cast<Byte>(c);
    Wanted wanted;
    wanted.add(&byte, 1);
    const bool is_first = which == Occurrence::first;
    const char* const p = is_first ? std::strchr(s, c) : std::strrchr(s, c);
    if (p == nullptr)
        return nullptr;
    const auto find = is_first ? find_first : find_last;
    return const_cast<char*>(as_text(find(as_bytes(s), as_bytes(p), wanted)));
}

const Byte* find_string(const Byte* hay, const Byte* needle, Occurrence which) {
    constexpr size_t kFront = 16;  // so much of a needle the C library is asked for
    constexpr size_t kLongest = 4; // a character has at most so many bytes
    constexpr size_t kFew = 4;     // so many whole comparisons cost little
    const Characters& characters = current_characters();
    const size_t size = std::strlen(as_text(needle));
    Byte copy[kFront + 1];
    const Byte* front = needle;
    if (size > kFront) {
        copy[kFront] = 0;
        std::memcpy(copy, needle, kFront);
        front = copy;
    }
    const Byte* p = as_bytes(std::strstr(as_text(hay), as_text(front)));
    if (p == nullptr)
        return nullptr;

    const Byte* found = nullptr;
    const Byte* sure = nullptr; // up to here, what is equal to the needle has the same characters
    // Whether the search ends where the needle begins on a boundary.
    const auto ends_at = [&](const Byte* place) {
        if (sure == nullptr)
            sure =
                characters.last_boundary_in(needle, needle + size - std::min(size, kLongest - 1));
        auto end = static_cast<size_t>(sure - needle);
        while (end < size)
            end += static_cast<size_t>(characters.step(place + end));
        if (end != size)
            return false;
        found = place;
        return which == Occurrence::first;
    };
    const auto is_equal = [&](const Byte* place) {
        return std::strncmp(as_text(place), as_text(needle), size) == 0;
    };
    const Byte* boundary = characters.last_boundary_in(hay, p);
    if (boundary == p && is_equal(p) && ends_at(p))
        return p;
    Wanted wanted;
    wanted.add(needle, std::min<size_t>(size, 2));
    CharacterSearch search(characters, boundary, p + 1, wanted);
    // Long needles that are almost there again and again cost too much to compare.
    for (size_t compared = 0;
         size <= kFront || compared <= kFew * size + static_cast<size_t>(p - hay);) {
        p = search.next();
        if (p == nullptr || (is_equal(p) && ends_at(p)))
            return found;
        compared += size;
    }
    boundary = p;
    TwoWaySearch rest(p + 1, needle, size);
    while ((p = rest.next()) != nullptr) {
        boundary = characters.last_boundary_in(boundary, p);
        if (boundary == p && ends_at(p))
            break;
    }
    return found;
}

char* find_string(const char* hay, const char* needle, Occurrence which) {
    return const_cast<char*>(as_text(find_string(as_bytes(hay), as_bytes(needle), which)));
}

} // namespace
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
    return zv::find_string(hay, needle, zv::Occurrence::first);
}

char* mbstrrstr(const char* hay, const char* needle) {
    zv::ensure_initialised();
    if (hay == nullptr || needle == nullptr)
        return const_cast<char*>(hay);
    return *needle == '\0' ? nullptr : zv::find_string(hay, needle, zv::Occurrence::last);
}
