#include <algorithm>
#include <bitset>
#include <cstring>

#include "character_search.h"
#include "character_sets.h"
#include "two_way.h"

// The C library finds what looks like the character or the string that is looked for; what it finds
// counts where it begins a character. Where much looks alike, text is looked through by blocks:
// what is known to be a boundary moves on with the search, so that nothing is looked at again and
// again.

namespace zv {
namespace {

const char* as_text(const Byte* bytes) {
    return reinterpret_cast<const char*>(bytes);
}

template <class Scanner>
bool always_begins_character(Byte byte) {
    return !ByteClass<ByteRoles<Scanner>::is_trail>::has(byte);
}

Wanted only(Byte byte) {
    Wanted wanted;
    wanted.add(&byte, 1);
    return wanted;
}

enum class Occurrence { first, last };

// So much may the C library find closely together that is no character.
constexpr int kFew = 4;

const Byte* find_in_next_part(const Byte*& known, const Byte*& text, const Wanted& wanted,
                              Accepts accepts) {
    return with_scanner(native_code_set, [&](auto scanner) {
        return find_in_part<decltype(scanner)>(known, text, wanted, accepts);
    });
}

const Byte* find_first(const Byte* s, Byte byte) {
    const int code_set = native_code_set;
    const Byte* known = s;
    for (int close = 0;;) {
        const Byte* const p = as_bytes(std::strchr(as_text(s), byte));
        if (p == nullptr)
            return nullptr;
        known = last_boundary_in(known, p, code_set);
        if (known == p)
            return p;
        close = p < s + kBlockSize ? close + 1 : 0;
        s = p + 1;
        if (close == kFew) {
            close = 0;
            const auto any = [](const Byte*) { return true; };
            if (const Byte* const found = find_in_next_part(known, s, only(byte), Accepts(any)))
                return found;
        }
    }
}

template <class Scanner>
const Byte* find_last(const Byte* s, Byte byte) {
    const Byte* p = as_bytes(std::strrchr(as_text(s), byte));
    const Byte* run = p; // of lead bytes, in front of the candidate before as well
    for (int close = 0; close < kFew;) {
        if (p == nullptr || always_begins_character<Scanner>(byte))
            return p;
        if (p <= run)
            run = run_before<kPairsOf<Scanner>.leads>(s, p);
        if (boundary_in_run<Scanner>(s, run, p) == p)
            return p;
        const Byte* const near = p - std::min(static_cast<size_t>(p - s), kBlockSize);
        p = static_cast<const Byte*>(memrchr(s, byte, static_cast<size_t>(p - s)));
        close = p >= near ? close + 1 : 0;
    }
    const Byte* found = nullptr;
    const auto remember = [&](const Byte* character) {
        found = character;
        return false;
    };
    for (const Byte* known = s; *s != 0;)
        find_in_next_part(known, s, only(byte), Accepts(remember));
    return found;
}

char* find_byte(const char* s, int c, Occurrence which) {
    if (s == nullptr || c == 0 || c != static_cast<signed char>(c))
        return nullptr;
    const Byte* const text = as_bytes(s);
    const auto byte = static_cast<Byte>(c);
    if (which == Occurrence::first)
        return const_cast<char*>(as_text(find_first(text, byte)));
    return with_current_scanner([&](auto scanner) {
        return const_cast<char*>(as_text(find_last<decltype(scanner)>(text, byte)));
    });
}

const Byte* find_string(const Byte* hay, const Byte* needle, Occurrence which) {
    constexpr size_t kFront = 16; // so much of a needle the C library is asked for
    constexpr size_t kLongest = 4;
    const int code_set = native_code_set;
    const size_t size = std::strlen(as_text(needle));
    Byte copy[kFront + 1];
    const Byte* front = needle;
    if (size > kFront) {
        copy[kFront] = 0;
        std::memcpy(copy, needle, kFront);
        front = copy;
    }
    const Byte* known = hay;
    const Byte* found = nullptr;
    const Byte* sure = nullptr; // up to here, what is equal to the needle has the same characters
    const auto ends_character = [&](const Byte* p) {
        if (sure == nullptr)
            sure = last_boundary_in(needle, needle + size - std::min(size, kLongest - 1), code_set);
        auto end = static_cast<size_t>(sure - needle);
        while (end < size)
            end += static_cast<size_t>(mbbytesinchartype(as_text(p + end), code_set));
        if (end != size)
            return false;
        found = p;
        return which == Occurrence::first;
    };
    const auto is_whole = [&](const Byte* p) {
        known = last_boundary_in(known, p, code_set);
        return known == p && ends_character(p);
    };
    // Long needles that are almost there again and again cost too much to compare.
    const Byte* const begin = hay;
    size_t compared = 0;
    bool gives_up = false;
    const auto stands_at = [&](const Byte* p, size_t equal) {
        compared += size;
        gives_up = size > kFront && compared > kFew * size + static_cast<size_t>(p - begin);
        return gives_up ||
               (std::strncmp(as_text(p) + equal, as_text(needle) + equal, size - equal) == 0 &&
                ends_character(p));
    };
    const Byte* p = hay;
    for (int close = 0;; hay = p + 1) {
        p = as_bytes(std::strstr(as_text(hay), as_text(front)));
        if (p == nullptr)
            return found;
        known = last_boundary_in(known, p, code_set);
        if (known == p && stands_at(p, std::min(size, kFront)))
            break;
        close = p < hay + kBlockSize ? close + 1 : 0;
        if (close == kFew) {
            close = 0;
            Wanted wanted;
            wanted.add(needle, std::min<size_t>(size, 2));
            const auto is_it = [&](const Byte* at) { return stands_at(at, 0); };
            hay = p + 1;
            p = find_in_next_part(known, hay, wanted, Accepts(is_it));
            if (p != nullptr)
                break;
            p = hay - 1;
        }
    }
    if (gives_up)
        find_by_two_ways(p, needle, size, Accepts(is_whole));
    return found;
}

// What the search for a set asks of a code set.
struct Characters {
    int length_at(const Byte* p) const { return *p < 0x80 ? 1 : step(p); }

    int longest;
    int (*step)(const Byte*);
    bool (*always_begin)(Byte);
    const Byte* (*find_in_part)(const Byte*&, const Byte*&, const Wanted&, Accepts, size_t);
};

Characters current_characters() {
    return with_current_scanner([](auto scanner) {
        using Scanner = decltype(scanner);
        return Characters{Scanner::kLongest, step<Scanner>, always_begins_character<Scanner>,
                          find_in_part<Scanner>};
    });
}

// The length of the member of the set that stands at p, 0 when none does. A member that is a
// malformed byte matches by that byte alone.
size_t match_at(const Byte* p, const Byte* set, const Characters& characters) {
    for (int length; *set != 0; set += length) {
        length = characters.length_at(set);
        int i = 0;
        while (i < length && p[i] == set[i])
            ++i;
        if (i == length)
            return static_cast<size_t>(length);
    }
    return 0;
}

// The members of a large set, a bit for each character that there can be.
template <bool HasPlanes>
class Members {
public:
    Members(const Byte* set, const Characters& characters) : characters_(characters) {
        for (int length; *set != 0; set += length) {
            length = characters.length_at(set);
            all_[number(set, length)] = true;
        }
    }
    bool has(const Byte* p) const { return all_[*p] || all_[number(p, characters_.length_at(p))]; }

private:
    static constexpr size_t kPairs = 0x10000;
    static constexpr size_t kRow = 94;
    static constexpr size_t kPlanes = 15;

    // Longer characters than two bytes begin with a single shift, which needs no place.
    static size_t number(const Byte* p, int length) {
        switch (length) {
        case 1:
            return p[0];
        case 2:
            return size_t{p[0]} << 8 | p[1];
        case 3:
            return size_t{p[1] & 0x7Fu} << 8 | p[2];
        default:
            return kPairs + (((p[1] - 0xA2u) * kRow + p[2] - 0xA1) * kRow + p[3] - 0xA1);
        }
    }

    const Characters& characters_;
    std::bitset<kPairs + (HasPlanes ? kPlanes * kRow * kRow : 0)> all_;
};

// The first character that is wanted and accepted, or the terminator.
const Byte* find_member(const Byte* s, const Wanted& wanted, Accepts accepts,
                        const Characters& characters) {
    const Byte* known = s;
    for (size_t part = kPart / 16; *s != 0; part = std::min(4 * part, kPart)) {
        if (const Byte* const p = characters.find_in_part(known, s, wanted, accepts, part))
            return p;
    }
    return s;
}

template <bool HasPlanes>
[[gnu::noinline]] SetMatch find_in_large_set(const Byte* s, const Byte* set, const Wanted& wanted,
                                             const Characters& characters) {
    const Members<HasPlanes> members(set, characters);
    const auto is_member = [&](const Byte* p) { return members.has(p); };
    const Byte* const p = find_member(s, wanted, Accepts(is_member), characters);
    return {static_cast<size_t>(p - s), match_at(p, set, characters)};
}

SetMatch find_in_set(const Byte* s, const Byte* set) {
    constexpr int kLarge = 16;
    const Characters characters = current_characters();
    Wanted wanted;
    int members = 0;
    bool c_library_serves = true;
    for (const Byte* member = set; *member != 0; ++members) {
        const auto length = static_cast<size_t>(characters.length_at(member));
        c_library_serves &= length == 1 && characters.always_begin(*member);
        wanted.add(member, length);
        member += length;
    }
    if (c_library_serves) {
        const size_t offset = std::strcspn(as_text(s), as_text(set));
        return {offset, s[offset] != 0};
    }
    if (members > kLarge)
        return characters.longest == 4 ? find_in_large_set<true>(s, set, wanted, characters)
                                       : find_in_large_set<false>(s, set, wanted, characters);
    size_t length = 0;
    const auto is_member = [&](const Byte* p) {
        length = match_at(p, set, characters);
        return length != 0;
    };
    const Byte* const p = find_member(s, wanted, Accepts(is_member), characters);
    return {static_cast<size_t>(p - s), length};
}

char* find_string(const char* hay, const char* needle, Occurrence which) {
    return const_cast<char*>(as_text(find_string(as_bytes(hay), as_bytes(needle), which)));
}

} // namespace

SetMatch find_in_set(const char* s, const char* set) {
    return find_in_set(as_bytes(s), as_bytes(set));
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
    return zv::find_string(hay, needle, zv::Occurrence::first);
}

char* mbstrrstr(const char* hay, const char* needle) {
    zv::ensure_initialised();
    if (hay == nullptr || needle == nullptr)
        return const_cast<char*>(hay);
    return *needle == '\0' ? nullptr : zv::find_string(hay, needle, zv::Occurrence::last);
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
