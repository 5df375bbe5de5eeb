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

// Two bytes over and over.
ByteBlock alternate(Byte first, Byte second) {
    return std::bit_cast<ByteBlock>(PairBlock{} + text_code(pair_code(first, second)));
}
ByteBlock at_least(ByteBlock least, ByteBlock bytes) {
    return bytes > least ? bytes : least;
}
ByteBlock at_most(ByteBlock most, ByteBlock bytes) {
    return bytes < most ? bytes : most;
}

// What a direction looks up: where pairs stand in the table, and the bits that are set in codes of
// plane 1.
struct Big5ToEucTw {
    static constexpr const CnsOfBig5& kTable = kCnsOfBig5;
    static constexpr bool kShrinks = false;

    static ByteBlock rows_and_columns(ByteBlock bytes) {
        const ByteBlock low =
            at_most(alternate(0xFF, 0x7F), at_least(alternate(0xA0, 0x3F), bytes));
        const ByteBlock high = at_least(alternate(0xFF, 0xA0), bytes);
        return low + high - alternate(0xA0 - 1, 0x3F + 0xA0);
    }
    static constexpr TextCode kPlain = kHighBits;
};

struct EucTwToBig5 {
    static constexpr const Big5OfCns& kTable = kBig5OfCns;
    static constexpr bool kShrinks = true; // characters of four bytes, by half

    static ByteBlock rows_and_columns(ByteBlock bytes) {
        return at_least(ByteBlock{} + 0xA0, bytes) - 0xA0;
    }
    static constexpr TextCode kPlain = kFirstHighBit;
};

// Of a block from so many bytes before the middle, these are marked.
constexpr auto kMarked = [] {
    std::array<Byte, 2 * kBlockSize> marked{};
    for (size_t i = 0; i < kBlockSize; ++i)
        marked[i] = 0xFF;
    return marked;
}();

// Walks through plain text and writes what becomes of it.
template <class Direction>
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
    static constexpr size_t kPairs = kBlockSize / kPairSize;
    static constexpr size_t kStep = 2;              // blocks
    static constexpr Mask kFirsts = kAllMarked / 3; // of the bytes of pairs

    // Whether whatever follows, so many bytes may be written.
    bool has_room(size_t length) const {
        return source_.left() >= length * (Direction::kShrinks ? 2 : 1);
    }
    void advance(size_t length) {
        source_.next += length;
        out_ += length;
    }

    bool take_ascii() {
        const size_t length = std::min(source_.left(), kBlockSize);
        const ByteBlock bytes = load_up_to(source_.next, length);
        const Mask high = high_bits(bytes);
        const size_t run = high != 0 ? count_before(high) : length;
        if (run == kBlockSize || has_room(kBlockSize))
            store_block(out_, bytes);
        else
            store_front(out_, bytes, run);
        advance(run);
        if (run < kBlockSize)
            return true;
        for (std::array<ByteBlock, 4> blocks; source_.left() >= sizeof blocks;) {
            std::memcpy(&blocks, source_.next, sizeof blocks);
            if (high_bits(blocks[0] | blocks[1] | blocks[2] | blocks[3]) != 0)
                break;
            std::memcpy(out_, &blocks, sizeof blocks);
            advance(sizeof blocks);
        }
        return true;
    }

    // Where the pairs of some blocks stand in the table. That goes through memory: a processor
    // loads each place as fast as it could take it out of a vector.
    class Places {
    public:
        Places() { asm("" : "+m"(columns_)); } // shifts and sums would take longer than a product

        // Of the bytes that a mask marks; the others count as plain.
        void find(size_t block, ByteBlock bytes, PairBlock marked = ~PairBlock{}) {
            constexpr std::uint16_t kNowhere = std::size(Direction::kTable.codes) - 1;
            const ByteBlock both = Direction::rows_and_columns(bytes);
            const PairBlock places = first_of(both) * columns_ + second_of(both);
            store_block(reinterpret_cast<Byte*>(places_ + block * kPairs),
                        (places & marked) | (~marked & kNowhere));
        }
        void settle() { asm("" : "+m"(places_)); }
        TextCode code(size_t i) const { return Direction::kTable.codes[places_[i]]; }

    private:
        alignas(kBlockSize) std::uint16_t places_[kStep * kPairs];
        PairBlock columns_ = PairBlock{} + Direction::kTable.kColumns;
    };
    static bool is_plain(unsigned codes) { return (~codes & Direction::kPlain) == 0; }

    // Writes the first pairs. Whether all are plain.
    template <size_t Pairs>
    bool put_all(Places& places) {
        places.settle();
        Byte* const out = out_;
        unsigned all = ~0u;
#pragma GCC unroll 64
        for (size_t i = 0; i < Pairs; ++i) {
            const unsigned code = places.code(i);
            put_code(out + i * kPairSize, static_cast<TextCode>(code));
            all &= code;
            asm("" : "+r"(all) : "r"(code)); // one by one, without copies
        }
        return is_plain(all);
    }

    // False at what is not plain.
    bool take_pairs() {
        Places places;
        while (has_room(kBlockSize)) {
            const bool has_step = has_room(kStep * kBlockSize);
            const ByteBlock bytes = load_block(source_.next);
            const ByteBlock next = has_step ? load_block(source_.next + kBlockSize) : ByteBlock{};
            if ((high_bits(bytes & next) & kFirsts) == kFirsts) [[likely]] {
                places.find(0, bytes);
                places.find(1, next);
                if (!put_all<kStep * kPairs>(places))
                    break;
                advance(kStep * kBlockSize);
                continue;
            }
            // Up to ASCII, and what of that the block has.
            const Mask high = high_bits(bytes) | ~kAllMarked;
            size_t length = count_before((~high & kFirsts) | ~kAllMarked);
            places.find(0, bytes, as_pairs(load_block(kMarked.data() + kBlockSize - length)));
            if (!put_all<kPairs>(places))
                break;
            if (has_step) {
                store_block(out_ + length, load_block(source_.next + length));
                length = count_before(high >> length << length);
            }
            advance(length);
            if (!has_step || *source_.next < 0x80)
                return true;
        }
        places.find(0, load_up_to(source_.next, source_.left()));
        places.settle();
        size_t i = 0;
        for (; i < kPairs && is_plain(places.code(i)); ++i)
            put_code(out_ + i * kPairSize, places.code(i));
        advance(i * kPairSize);
        return i != 0;
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
        leads.enter(find_in(bytes, [](ByteBlock block) { return range_mask(block, 0xA1, 0xFE); }));
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
    constexpr size_t kPiece = 1024;
    zv::Byte converted[kPiece];
    while (source.next != source.end && length < INT_MAX) {
        const zv::Source piece(source.next, std::min(source.left(), kPiece));
        source.next = zv::walk<zv::Big5ToEucTw>(piece, converted).read;
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
