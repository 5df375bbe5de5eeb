// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "big5_cns_kernels.h"

#include <algorithm>
#include <array>

#include "big5_cns_tables.h"
#include "kernels.h"

namespace zv {
namespace {

#ifdef __AVX512VBMI2__
// Characters are converted by the runs of their rows, as if a pair began at each byte of a block.

__m512i as_vector(ByteBlock bytes) {
    return std::bit_cast<__m512i>(bytes);
}
Mask at_least(ByteBlock bytes, ByteBlock limits) {
    return _mm512_cmpge_epu8_mask(as_vector(bytes), as_vector(limits));
}
Mask at_least(ByteBlock bytes, Byte limit) {
    return at_least(bytes, ByteBlock{} + limit);
}
// Adds where a mask says so.
ByteBlock add_at(Mask mask, ByteBlock bytes, int distance) {
    const ByteBlock sums = bytes + static_cast<Byte>(distance);
    return std::bit_cast<ByteBlock>(_mm512_mask_mov_epi8(as_vector(bytes), mask, as_vector(sums)));
}

// What stands in a table at places, of which the lowest six bits count, where a mask says so.
using Table = Byte[kBlockSize];
ByteBlock look_up(const Table& table, ByteBlock places, ByteBlock elsewhere = ByteBlock{},
                  Mask wanted = kAllMarked) {
    return std::bit_cast<ByteBlock>(_mm512_mask_permutexvar_epi8(
        as_vector(elsewhere), wanted, as_vector(places), as_vector(load_block(table))));
}

// The bytes moved on by one place, behind the last one of another block.
ByteBlock moved_on_behind(ByteBlock before, ByteBlock bytes) {
    return [=]<size_t... places>(std::index_sequence<places...>) {
        return __builtin_shufflevector(before, bytes, (kBlockSize - 1 + places)...);
    }
    (std::make_index_sequence<kBlockSize>());
}

struct Big5ToEucTw {
    static constexpr const CnsRunsOfBig5& kRuns = kCnsRunsOfBig5;
    static constexpr int kTargetCells = kCnsCells;

    static ByteBlock places(ByteBlock leads) { return leads; }
    static Mask other_pairs(ByteBlock leads, ByteBlock trails) {
        return at_least(leads, 0xE1) | range_mask(trails, 0x7F, 0xA0);
    }
    static ByteBlock cells(ByteBlock trails) {
        return add_at(at_least(trails, 0x7F), trails - 0x40, 0x40 - 0x62);
    }
    static ByteBlock trails(ByteBlock cells) { return cells + 0xA1; }
    static Mask other_singles(ByteBlock) { return 0; }
};

struct EucTwToBig5 {
    static constexpr const Big5RunsOfCns& kRuns = kBig5RunsOfCns;
    static constexpr int kTargetCells = kBig5Cells;

    static ByteBlock places(ByteBlock leads) {
        return add_at(at_least(leads, 0xC0), leads - 0xA1, 0xA1 - 0xC0);
    }
    static Mask other_pairs(ByteBlock leads, ByteBlock) { return range_mask(leads, 0xA5, 0xC3); }
    static ByteBlock cells(ByteBlock trails) { return trails - 0xA1; }
    static ByteBlock trails(ByteBlock cells) {
        return add_at(at_least(cells, 0x3F), cells + 0x40, 0x62 - 0x40);
    }
    static Mask other_singles(ByteBlock bytes) { return byte_mask(bytes, kSingleShift2); }
};

// What pairs become, and which are left to the rule.
struct Pairs {
    ByteBlock first, second;
    Mask others;
};

template <class Direction>
Pairs convert_pairs(ByteBlock leads, ByteBlock trails) {
    const auto& runs = Direction::kRuns;
    const ByteBlock places = Direction::places(leads);
    const ByteBlock cells = Direction::cells(trails);

    Mask others =
        Direction::other_pairs(leads, trails) | at_least(cells, look_up(runs.end, places));
    for (const auto& pair : runs.exceptions)
        others |= range_mask(cells - look_up(pair, places), 0, 1);

    const Mask second = at_least(cells, look_up(runs.second_begin, places));
    ByteBlock lead = look_up(runs.second_lead, places, look_up(runs.first_lead, places), second);
    ByteBlock cell =
        cells + look_up(runs.second_cell, places, look_up(runs.first_cell, places), second);
    constexpr int kCells = Direction::kTargetCells;
    for (int reach = 0xFF; reach > kCells; reach -= kCells) {
        const Mask beyond = at_least(cell, kCells);
        lead = add_at(beyond, lead, 1);
        cell = add_at(beyond, cell, -kCells);
    }
    return {lead, Direction::trails(cell), others};
}

template <class Direction>
Converted convert(Source source, Byte* out) {
    LeadWalk walk;
    ByteBlock seconds_before{};
    while (source.next != source.end) {
        const size_t length = std::min(source.left(), kBlockSize);
        const ByteBlock bytes = load_up_to(source.next, length);
        ByteBlock converted = bytes;
        Mask others = 0;
        if ((high_bits(bytes) | walk.carried()) != 0) {
            const Pairs pairs =
                convert_pairs<Direction>(bytes, load_up_to(source.next + 1, source.left() - 1));
            walk.enter(range_mask(bytes, 0xA1, 0xFE));
            others = (pairs.others & walk.leads()) |
                     (Direction::other_singles(bytes) & ~walk.behind_leads());
            converted = choose(walk.leads(), pairs.first, walk.behind_leads(),
                               moved_on_behind(seconds_before, pairs.second), bytes);
            seconds_before = pairs.second;
        }
        if ((others | (kBlockSize - length)) != 0) {
            const size_t taken = others != 0 ? count_before(others) : length;
            store_front(out, converted, taken);
            return {source.next + taken, out + taken};
        }
        store_block(out, converted);
        source.next += kBlockSize;
        out += kBlockSize;
    }
    return {source.next, out};
}

#else
// Two bytes over and over.
ByteBlock alternate(Byte first, Byte second) {
    return std::bit_cast<ByteBlock>(PairBlock{} + text_code(pair_code(first, second)));
}
ByteBlock larger_of(ByteBlock a, ByteBlock b) {
    return a > b ? a : b;
}
ByteBlock smaller_of(ByteBlock a, ByteBlock b) {
    return a < b ? a : b;
}

// What a direction looks up: where pairs stand in the table, and the bits that are set in codes of
// plane 1.
struct Big5ToEucTw {
    using Table = CnsOfBig5;
    static constexpr const Table& kTable = kCnsOfBig5;
    static constexpr bool kShrinks = false;

    static ByteBlock rows_and_columns(ByteBlock bytes) {
        const ByteBlock low =
            smaller_of(bytes - alternate(0xA1, 0x40), alternate(Table::kLastRow, Table::kNoColumn));
        return low + larger_of(bytes, alternate(0xFF, 0xA0)) - alternate(0xFF, 0xA0);
    }
    static constexpr TextCode kPlain = kHighBits;
};

struct EucTwToBig5 {
    using Table = Big5OfCns;
    static constexpr const Table& kTable = kBig5OfCns;
    static constexpr bool kShrinks = true; // characters of four bytes, by half

    static ByteBlock rows_and_columns(ByteBlock bytes) {
        return smaller_of(bytes - 0xA1, alternate(Table::kLastRow, Table::kNoColumn));
    }
    static constexpr TextCode kPlain = kFirstHighBit;
};

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

    // Where the pairs of a block stand in the table. That goes through memory: a processor loads
    // each place as fast as it could take it out of a vector.
    class Places {
    public:
        Places() { asm("" : "+m"(columns_)); } // shifts and sums would take longer than a product

        void find(ByteBlock bytes) {
            const ByteBlock both = Direction::rows_and_columns(bytes);
            places_ = first_of(both) * columns_ + second_of(both);
            asm("" : "+m"(places_));
        }
        TextCode code(size_t i) const { return Direction::kTable.codes[places_[i]]; }

    private:
        PairBlock places_;
        PairBlock columns_ = PairBlock{} + Direction::Table::kColumns;
    };
    static bool is_plain(unsigned codes) { return (~codes & Direction::kPlain) == 0; }

    // Writes what becomes of a block. Whether all pairs are plain.
    bool put_all(const Places& places) {
        Byte* const out = out_;
        unsigned all = ~0u;
#pragma GCC unroll 64
        for (size_t i = 0; i < kPairs; ++i) {
            const unsigned code = places.code(i);
            put_code(out + i * kPairSize, static_cast<TextCode>(code));
            all &= code;
            asm("" : "+r"(all) : "r"(code)); // one by one, without copies
        }
        return is_plain(all);
    }

    // Up to ASCII or the end. False where that begins with what is not plain.
    bool take_pairs() {
        Places places;
        for (;;) {
            const ByteBlock bytes = load_up_to(source_.next, source_.left());
            const Mask ascii = ~high_bits(bytes) & kFirsts;
            places.find(bytes);
            if (ascii == 0 && has_room(kBlockSize) && put_all(places)) {
                advance(kBlockSize);
                continue;
            }
            const size_t end = count_before(ascii | ~kAllMarked) / kPairSize;
            size_t i = 0;
            for (; i < end && is_plain(places.code(i)); ++i)
                put_code(out_ + i * kPairSize, places.code(i));
            advance(i * kPairSize);
            return i != 0;
        }
    }

    Source source_;
    Byte* out_;
};

template <class Direction>
// NOLINTNEXTLINE(readability-non-const-parameter): a kernel has this type.
Converted convert(Source source, Byte* out) {
    return Walk<Direction>(source, out).walk();
}
#endif

using Kernels = Big5Kernels<kBlockSize>;

} // namespace

template <>
Converted Kernels::big5_to_euc_tw(Source source, Byte* out) {
    return convert<Big5ToEucTw>(source, out);
}

template <>
Converted Kernels::euc_tw_to_big5(Source source, Byte* out) {
    return convert<EucTwToBig5>(source, out);
}

} // namespace zv
