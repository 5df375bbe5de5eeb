#include "big5_cns.h"

#include <algorithm>
#include <array>

#include "big5_cns_tables.h"
#include "jaconv.h"
#include "kernel_choice.h"
#include "kernels.h"

namespace zv {
namespace {

constexpr size_t kPairSize = 2;
constexpr size_t kShiftedSize = 4; // the shift, the plane and a pair
constexpr TextCode kUnknown = text_code(pair_code('?', '?'));

Byte* put_code(Byte* out, TextCode code) {
    std::memcpy(out, &code, kPairSize);
    return out + kPairSize;
}

Byte* put_cns(Byte* out, TextCode cns) {
    if (cns == 0)
        return put_code(out, kUnknown);
    if (plane_of(cns) != 1)
        out = put_pair(out, kSingleShift2, 0xA0 + plane_of(cns));
    return put_code(out, cns | kHighBits);
}

Byte* put_big5(Byte* out, TextCode big5) {
    return put_code(out, big5 == 0 ? kUnknown : big5);
}

// The kernels take ASCII and characters of plane 1, which holds nearly all of those in use.

Mask find_gr(ByteBlock bytes) {
    return range_mask(bytes, 0xA1, 0xFE);
}

// What a direction looks up: where pairs stand in the table, and which codes are those of plane 1.
struct Big5ToEucTw {
    static constexpr const CnsOfBig5& kTable = kCnsOfBig5;
    static constexpr bool kShrinks = false;

    static Mask find_pairs(ByteBlock bytes) {
        const Mask gr = find_gr(bytes);
        return even_pairs<Mask>(gr, gr | range_mask(bytes, 0x40, 0x7E));
    }
    static PairBlock cells(ByteBlock bytes) {
        const PairBlock trails = second_of(bytes);
        return trails - 0x40 - (trails >> 7) * (0x62 - 0x40);
    }
    static bool all_plain(unsigned codes) { return (~codes & kHighBits) == 0; }
};

struct EucTwToBig5 {
    static constexpr const Big5OfCns& kTable = kBig5OfCns;
    static constexpr bool kShrinks = true; // characters of four bytes, by half

    static Mask find_pairs(ByteBlock bytes) {
        const Mask gr = find_gr(bytes);
        return even_pairs<Mask>(gr, gr);
    }
    static PairBlock cells(ByteBlock bytes) { return second_of(bytes) - 0xA1; }
    static bool all_plain(unsigned codes) { return (codes & kFirstHighBit) != 0; }
};

// Walks through plain text and writes what becomes of it, or only tells where it ends.
template <class Direction, bool Writes = true>
class Walk {
public:
    Walk(Source source, Byte* out) : source_(source), out_(out) {}

    Converted walk() {
        while (source_.next != source_.end &&
               (*source_.next < 0x80 ? take_ascii() : take_pairs())) {
        }
        return {source_.next, out_};
    }

private:
    // Whether whatever follows, a whole block may be written.
    bool is_far_from_end() const {
        return source_.left() >= kBlockSize * (Writes && Direction::kShrinks ? 2 : 1);
    }
    void put(size_t i, TextCode code) {
        if constexpr (Writes)
            std::memcpy(out_ + i * kPairSize, &code, kPairSize);
    }
    void advance(size_t length) {
        source_.next += length;
        if constexpr (Writes)
            out_ += length;
    }

    // Most runs in other text are one byte, a line end or a space.
    bool take_ascii() {
        if (source_.left() > 1 && source_.next[1] >= 0x80) {
            if constexpr (Writes)
                *out_ = *source_.next;
            advance(1);
            return true;
        }
        for (std::array<ByteBlock, 4> blocks; source_.left() >= sizeof blocks;) {
            std::memcpy(&blocks, source_.next, sizeof blocks);
            if (high_bits(blocks[0] | blocks[1] | blocks[2] | blocks[3]) != 0)
                break;
            if constexpr (Writes)
                std::memcpy(out_, &blocks, sizeof blocks);
            advance(sizeof blocks);
        }
        const size_t length = std::min(source_.left(), kBlockSize);
        const ByteBlock bytes = load_up_to(source_.next, length);
        const Mask high = high_bits(bytes);
        const size_t run = high != 0 ? count_before(high) : length;
        if constexpr (Writes) {
            if (run == kBlockSize || is_far_from_end())
                store_block(out_, bytes);
            else
                store_front(out_, bytes, run);
        }
        advance(run);
        return true;
    }

    // False at what is not plain. The places go through memory: a processor loads each of them as
    // fast as it could take it out of a vector.
    bool take_pairs() {
        constexpr size_t kPairs = kBlockSize / kPairSize;
        const size_t length = std::min(source_.left(), kBlockSize);
        const ByteBlock bytes = load_up_to(source_.next, length);
        const Mask pairs = Direction::find_pairs(bytes);
        const size_t known = pairs == kAllMarked ? kPairs : count_before(~pairs) / kPairSize;
        const PairBlock rows = first_of(bytes) - 0xA0;
        alignas(kBlockSize) std::uint16_t places[kPairs];
        store_block(reinterpret_cast<Byte*>(places),
                    rows * Direction::kTable.kRowSize + Direction::cells(bytes));
        // The compiler would take them out of the vector one by one.
        asm("" : "+m"(places));
        if (known == kPairs && is_far_from_end()) [[likely]] {
            unsigned codes = ~0u;
#pragma GCC unroll 32
            for (size_t i = 0; i < kPairs; ++i) {
                const TextCode code = Direction::kTable.codes[places[i]];
                codes &= code;
                put(i, code);
            }
            if (Direction::all_plain(codes)) [[likely]] {
                advance(kBlockSize);
                return true;
            }
        }
        size_t i = 0;
        for (; i < known; ++i) {
            const TextCode code = Direction::kTable.codes[places[i]];
            if (!Direction::all_plain(code))
                break;
            put(i, code);
        }
        advance(i * kPairSize);
        return i == known && i != 0;
    }

    Source source_;
    Byte* out_;
};

template <class Direction>
// NOLINTNEXTLINE(readability-non-const-parameter): a kernel has this type.
Converted walk(Source source, Byte* out) {
    return Walk<Direction>(source, out).walk();
}

// Steps over EUC-TW text without characters of four bytes, perhaps beyond its end.
const Byte* skip_pairs(Source source) {
    LeadWalk leads;
    for (; source.next < source.end; source.next += kWindow) {
        const Window bytes = load_window_up_to(source.next, source.left());
        if (find_in(bytes, [](ByteBlock block) { return byte_mask(block, kSingleShift2); }) != 0)
            break;
        leads.enter(find_in(bytes, find_gr));
    }
    return source.next + leads.carried();
}

// The rules.

bool put_big5_as_euc_tw(Source& source, Byte*& out) {
    if (!is_gr(*source.next)) {
        *out++ = *source.next++;
        return true;
    }
    if (source.left() < kPairSize)
        return false;
    out = put_cns(out, kCnsOfBig5.find(source.next[0], source.next[1]));
    source.next += kPairSize;
    return true;
}

bool put_euc_tw_as_big5(Source& source, Byte*& out) {
    const Byte* const in = source.next;
    const bool shifted = *in == kSingleShift2;
    if (!shifted && !is_gr(*in)) {
        *out++ = *source.next++;
        return true;
    }
    const size_t size = shifted ? kShiftedSize : kPairSize;
    if (source.left() < size)
        return false;
    source.next += size;
    const unsigned plane = shifted ? in[1] - 0xA0u : 1;
    const bool known = in_range(plane, 1, kCnsPlanes);
    out = put_big5(out, known ? kBig5OfCns.find(in[size - 2], in[size - 1], plane) : 0);
    return true;
}

// Adds what a Big5 character grows by to a length.
bool measure_big5_as_euc_tw(Source& source, size_t& length) {
    if (!is_gr(*source.next)) {
        ++source.next;
        return true;
    }
    if (source.left() < kPairSize)
        return false;
    const TextCode cns = kCnsOfBig5.find(source.next[0], source.next[1]);
    length += cns != 0 && plane_of(cns) != 1 ? kShiftedSize - kPairSize : 0;
    source.next += kPairSize;
    return true;
}

} // namespace

Converted big5_to_euc_tw(Source source, Byte* out) {
    return convert_with(source, out, walk<Big5ToEucTw>, put_big5_as_euc_tw);
}

Converted euc_tw_to_big5(Source source, Byte* out) {
    return convert_with(source, out, walk<EucTwToBig5>, put_euc_tw_as_big5);
}

} // namespace zv

char* big2euchx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::finish(zv::big5_to_euc_tw(source, zv::as_bytes(dst)), source);
    return dst;
}

char* euch2bigx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::finish(zv::euc_tw_to_big5(source, zv::as_bytes(dst)), source);
    return dst;
}

int Big5ToCnsCodeConvert(const unsigned char* big5, unsigned char* cns) {
    if (Big5Order(big5) < 0)
        return -1;
    const zv::TextCode code = zv::kCnsOfBig5.find(big5[0], big5[1]);
    if (code == 0)
        return -1;
    zv::put_code(cns, code | zv::kHighBits);
    return 0;
}

int Big5Order(const unsigned char* big5) {
    return zv::is_gr(big5[0]) ? zv::big5_ordinal(big5[0], big5[1]) : -1;
}

int CnsOrder(const unsigned char* cns) {
    return zv::is_gr(cns[0]) ? zv::cns_ordinal(cns[0], cns[1]) : -1;
}

int Big5Code(int ordinal, unsigned char* big5) {
    zv::put_code(big5, zv::text_code(zv::big5_code(ordinal)));
    return 0;
}

int CnsCode(int ordinal, unsigned char* cns) {
    zv::put_code(cns, zv::text_code(zv::cns_code(ordinal)));
    return 0;
}

int euchLength(const char* s) {
    zv::Source source(s);
    size_t length = source.left();
    // Only what moves to another plane than the first grows, by two bytes. Behind it some
    // characters go by the rule, so that text full of it is rarely looked up twice.
    constexpr int kByRule = 8;
    while (source.next != source.end && length < INT_MAX) {
        source.next = zv::Walk<zv::Big5ToEucTw, false>(source, nullptr).walk().read;
        for (int i = 0; i < kByRule && source.next != source.end; ++i) {
            if (!zv::measure_big5_as_euc_tw(source, length))
                return zv::saturated(length);
        }
    }
    return zv::saturated(length);
}

int big5Length(const char* s) {
    zv::Source source(s);
    size_t length = source.left();
    if (length / 2 >= INT_MAX)
        return INT_MAX; // it shrinks by half at most
    // Only four-byte characters shrink, by two bytes.
    const zv::Byte* next = zv::skip_pairs(source);
    while (source.end - next >= static_cast<ptrdiff_t>(zv::kShiftedSize)) {
        if (*next == zv::kSingleShift2) {
            length -= zv::kShiftedSize - zv::kPairSize;
            next += zv::kShiftedSize;
        } else {
            next += zv::is_gr(*next) ? zv::kPairSize : 1;
        }
    }
    return zv::saturated(length);
}
