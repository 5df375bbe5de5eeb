#include <strings.h>

#include <cctype>
#include <cstring>

#include "character_search.h"
#include "scanner_choice.h"

namespace {

using zv::Byte;

int order_of(int a, int b) {
    return (a > b) - (a < b);
}

int order_as_signed(Byte a, Byte b) {
    return order_of(static_cast<signed char>(a), static_cast<signed char>(b));
}

int order_ignoring_case(Byte a, Byte b) {
    if (a == b)
        return 0;
    return order_as_signed(static_cast<Byte>(std::tolower(a)), static_cast<Byte>(std::tolower(b)));
}

// Steps over blocks that are equal, to a boundary of both texts: the last one that is not behind
// their first difference, where one is found.
template <class Scanner>
size_t skip_equal_blocks(const Byte* a, const Byte* b, zv::KnownText& known_a,
                         zv::KnownText& known_b) {
    zv::BlockWalk<Scanner> walk;
    size_t offset = 0;
    for (; known_a.has_block(a + offset) && known_b.has_block(b + offset);
         offset += zv::kBlockSize) {
        const zv::ByteBlock block = zv::load_block(a + offset);
        const auto difference = block != zv::load_block(b + offset);
        const bool reached = walk.carried() != 0;
        if (!walk.enter(block))
            break;
        if (const zv::Mask differ = zv::high_bits(difference); differ != 0) {
            // The lowest bits, up to the first difference.
            const zv::Mask starts = walk.certain_starts() & (differ ^ (differ - 1));
            return starts != 0 ? offset + zv::last_marked(starts) : offset - reached;
        }
    }
    return offset - walk.carried();
}

template <class Scanner>
int compare_ignoring_case(const Byte* a, const Byte* b) {
    constexpr int kByRule = 4; // words that differ in case are short
    zv::KnownText known_a(a);
    zv::KnownText known_b(b);
    for (;;) {
        if constexpr (Scanner::kLongest > 1) {
            const size_t equal = skip_equal_blocks<Scanner>(a, b, known_a, known_b);
            a += equal;
            b += equal;
        }
        for (int n = 0; n < kByRule; ++n) {
            if (*a == 0 || *b == 0)
                return order_of(*a != 0, *b != 0);
            const int length = zv::step<Scanner>(a);
            int order = order_of(length, zv::step<Scanner>(b));
            if (order != 0)
                return order;
            if (length == 1) {
                order = order_ignoring_case(*a, *b);
            } else {
                for (int i = 0; i < length && order == 0; ++i)
                    order = order_as_signed(a[i], b[i]);
            }
            if (order != 0)
                return order;
            a += length;
            b += length;
        }
    }
}

// Compares a with b while a has bytes below n; a character that begins there is compared whole,
// case kept. One-byte characters are folded first. Ends at the first difference.
template <class Scanner, class Fold>
int compare_bounded(const Byte* a, const Byte* b, size_t n, Fold fold, bool a_may_be_shorter) {
    size_t i = 0;
    while (i < n && a[i] != 0) {
        // The first byte alone decides: a character whose trail bytes are bad is compared too.
        const int announced = Scanner::announced(a[i]);
        const size_t length = announced > 1 ? static_cast<size_t>(announced) : 1;
        int order;
        if (length > 1) {
            order = std::strncmp(reinterpret_cast<const char*>(a + i),
                                 reinterpret_cast<const char*>(b + i), length);
        } else {
            order = a[i] == b[i] ? 0 : fold(a[i]) - fold(b[i]);
        }
        if (order != 0)
            return order;
        if (length > 1 && std::memchr(a + i, 0, length) != nullptr)
            return 0; // both end in the same cut character
        i += length;
    }
    return i < n && !a_may_be_shorter && b[i] != 0 ? -1 : 0;
}

} // namespace

int mbstricmp(const char* a, const char* b) {
    if (!zv::current_is_multibyte())
        return strcasecmp(a, b);
    if (a == nullptr || b == nullptr)
        return 0;
    return zv::with_current_scanner([&](auto scanner) {
        return compare_ignoring_case<decltype(scanner)>(zv::as_bytes(a), zv::as_bytes(b));
    });
}

int mbstrnicmp(const char* a, const char* b, unsigned n) {
    if (!zv::current_is_multibyte())
        return strncasecmp(a, b, n);
    if (a == nullptr || b == nullptr)
        return 0;
    const auto fold = [](Byte byte) { return std::tolower(byte); };
    return zv::with_current_scanner([&](auto scanner) {
        return compare_bounded<decltype(scanner)>(zv::as_bytes(a), zv::as_bytes(b), n, fold, false);
    });
}

int mbcharcmp(const char* a, const char* b, unsigned n) {
    if (!zv::current_is_multibyte())
        return order_as_signed(static_cast<Byte>(*a), static_cast<Byte>(*b));
    if (a == nullptr || b == nullptr)
        return 0;
    const auto keep = [](Byte byte) { return static_cast<int>(byte); };
    return zv::with_current_scanner([&](auto scanner) {
        return compare_bounded<decltype(scanner)>(zv::as_bytes(a), zv::as_bytes(b), n, keep, true);
    });
}
