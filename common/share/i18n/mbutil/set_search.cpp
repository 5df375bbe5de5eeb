#include <cstring>

#include "character_search.h"
#include "character_sets.h"

namespace zv {
namespace {

size_t length_at(const Byte* p, const Characters& characters) {
    return *p < 0x80 ? 1 : static_cast<size_t>(characters.step(p));
}

// The length of the member of the set that stands at p, 0 when none does. A member that is a
// malformed byte matches by that byte alone.
size_t match_at(const Byte* p, const Byte* set, const Characters& characters) {
    for (size_t length; *set != 0; set += length) {
        length = length_at(set, characters);
        size_t i = 0;
        while (i < length && p[i] == set[i])
            ++i;
        if (i == length)
            return length;
    }
    return 0;
}

// The members of a large set, a bit for each character that there can be.
class Members {
public:
    Members(const Byte* set, const Characters& characters) : characters_(characters) {
        std::memset(words_, 0, characters.longest == 4 ? sizeof words_ : kPairs / 8);
        for (size_t length; *set != 0; set += length) {
            length = length_at(set, characters);
            const size_t n = number(set, length);
            words_[n / 64] |= std::uint64_t{1} << n % 64;
        }
    }
    bool has(const Byte* p) const {
        return has_number(p[0]) || has_number(number(p, length_at(p, characters_)));
    }

private:
    static constexpr size_t kPairs = 0x10000;
    static constexpr size_t kRow = 94;
    static constexpr size_t kPlanes = 15;

    // Longer characters than two bytes begin with a single shift, which needs no place.
    static size_t number(const Byte* p, size_t length) {
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
    bool has_number(size_t n) const { return (words_[n / 64] >> n % 64 & 1) != 0; }

    const Characters& characters_;
    std::uint64_t words_[(kPairs + kPlanes * kRow * kRow) / 64 + 1];
};

[[gnu::noinline]] const Byte* find_member_of_many(CharacterSearch& search, const Byte* set,
                                                  const Characters& characters) {
    const Members members(set, characters);
    const Byte* p = search.next();
    while (p != nullptr && !members.has(p))
        p = search.next();
    return p;
}

SetMatch find_in_set(const Byte* s, const Byte* set) {
    constexpr int kLarge = 16;
    const Characters& characters = current_characters();
    Wanted wanted;
    int members = 0;
    bool c_library_serves = true;
    for (const Byte* member = set; *member != 0; ++members) {
        const size_t length = length_at(member, characters);
        c_library_serves &= length == 1 && characters.always_begins(*member);
        wanted.add(member, length);
        member += length;
    }
    if (c_library_serves) {
        const size_t offset = std::strcspn(as_text(s), as_text(set));
        return {offset, s[offset] != 0};
    }
    CharacterSearch search(characters, s, s, wanted);
    const Byte* p = members > kLarge ? find_member_of_many(search, set, characters) : search.next();
    for (; p != nullptr; p = search.next()) {
        if (const size_t length = match_at(p, set, characters); length != 0)
            return {static_cast<size_t>(p - s), length};
    }
    return {static_cast<size_t>(search.end() - s), 0};
}

} // namespace

SetMatch find_in_set(const char* s, const char* set) {
    return find_in_set(as_bytes(s), as_bytes(set));
}

} // namespace zv

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
