#include <strings.h>

#include <algorithm>
#include <cstring>

#include "../../../platform/letter_case.h"
#include "../jaconv/scanners.h"
#include "characters.h"

namespace {

using zv::Byte;
using zv::Characters;

int order_of(int a, int b) {
    return (a > b) - (a < b);
}

int order_as_signed(Byte a, Byte b) {
    return order_of(static_cast<signed char>(a), static_cast<signed char>(b));
}

// How a comparison takes the characters of two texts, which are equal up to them: the order of the
// first, and how far it reaches in both.
struct Step {
    int order;
    size_t length;
};

// By length first, then as signed bytes; characters of one byte in lower case.
struct IgnoringCase {
    static int end(Byte a, Byte b) { return order_of(a != 0, b != 0); }

    Step operator()(const Byte* a, const Byte* b) const {
        const int length = characters.step(a);
        int order = order_of(length, characters.step(b));
        if (length == 1 && order == 0)
            order = order_of_singles(*a, *b);
        for (int i = 0; i < length && length > 1 && order == 0; ++i)
            order = order_as_signed(a[i], b[i]);
        return {order, static_cast<size_t>(length)};
    }
    int order_of_singles(Byte a, Byte b) const {
        return lower(a) == lower(b)
                   ? 0
                   : order_as_signed(static_cast<Byte>(lower(a)), static_cast<Byte>(lower(b)));
    }

    const Characters& characters;
    zv::LetterCase lower = zv::LetterCase::lower();
};

// As far as the first byte of the one announces, whatever trail bytes it has.
struct AsAnnounced {
    int end(Byte a, Byte b) const { return a != 0 ? 1 : fold && b != 0 ? -1 : 0; }

    Step operator()(const Byte* a, const Byte* b) const {
        const int announced = characters.announced(*a);
        if (announced <= 1)
            return {order_of_singles(*a, *b), 1};
        size_t length = 0;
        while (length < static_cast<size_t>(announced) && a[length] != 0 && a[length] == b[length])
            ++length;
        return {length == static_cast<size_t>(announced) ? 0 : a[length] - b[length], length};
    }

    int order_of_singles(Byte a, Byte b) const { return fold ? lower(a) - lower(b) : a - b; }

    const Characters& characters;
    bool fold; // characters of one byte into lower case
    zv::LetterCase lower = zv::LetterCase::lower();
};

// How far texts are equal of which so much is there, as a boundary of both. No further than
// characters are regular: malformed ones count here as long as announced.
size_t skip_equal(const Characters& characters, const Byte* a, const Byte* b, size_t n) {
    const Byte single_shift = characters.longest > 2 ? zv::kSingleShift2 : 0xFF;
    size_t equal = n;
    for (size_t i = 0; i < equal; i += zv::kBlockSize) {
        const zv::ByteBlock block = zv::load_up_to(a + i, n - i);
        const zv::Mask stops = zv::high_bits((block != zv::load_up_to(b + i, n - i)) |
                                             ((block & 0xFE) == single_shift));
        if (stops != 0)
            equal = i + zv::count_before(stops);
    }
    if ((a[equal] | b[equal]) == 0)
        return equal; // nothing is behind them
    return equal - static_cast<size_t>(a + equal - characters.run_before(a, a + equal)) % 2;
}

// Compares the characters that begin before n.
template <class Rule>
int compare(const char* s, const char* t, size_t n, const Rule& rule) {
    const Byte* const a = zv::as_bytes(s);
    const Byte* const b = zv::as_bytes(t);
    constexpr size_t kNear = 4;
    size_t at = 0;
    size_t common = 0; // so much is known to be there of both
    bool more = true;  // may be
    for (;;) {
        if (more && common < at + zv::kBlockSize && at < n && (at != 0 || *a == *b)) {
            const size_t part = std::min(zv::part_of(a + at), zv::part_of(b + at));
            // With the ends of the texts, if they are near: no boundary is looked for there.
            common = at + part < n || at + part - n < kNear ? at + part : n;
            more = part == zv::kPart && common < n;
        }
        if (at < common)
            at += skip_equal(rule.characters, a + at, b + at, common - at);
        while (at < common && (a[at] | b[at]) < 0x80 && rule.order_of_singles(a[at], b[at]) == 0)
            ++at;
        if (at >= n)
            return 0;
        if (a[at] == 0 || b[at] == 0)
            return rule.end(a[at], b[at]);
        const Step step = rule(a + at, b + at);
        if (step.order != 0)
            return step.order;
        at += step.length;
    }
}

int compare_as_announced(const char* a, const char* b, unsigned n, bool fold) {
    if (a == nullptr || b == nullptr)
        return 0;
    return compare(a, b, n, AsAnnounced{zv::current_characters(), fold});
}

} // namespace

int mbstricmp(const char* a, const char* b) {
    if (!zv::current_is_multibyte())
        return strcasecmp(a, b);
    if (a == nullptr || b == nullptr)
        return 0;
    return compare(a, b, SIZE_MAX, IgnoringCase{zv::current_characters()});
}

int mbstrnicmp(const char* a, const char* b, unsigned n) {
    return zv::current_is_multibyte() ? compare_as_announced(a, b, n, true) : strncasecmp(a, b, n);
}

int mbcharcmp(const char* a, const char* b, unsigned n) {
    if (!zv::current_is_multibyte())
        return order_as_signed(static_cast<Byte>(*a), static_cast<Byte>(*b));
    return compare_as_announced(a, b, n, false);
}
