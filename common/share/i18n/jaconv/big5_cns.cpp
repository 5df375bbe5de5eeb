#include "big5_cns.h"

#include "big5_cns_tables.h"
#include "jaconv.h"
#include "kernels.h"

namespace zv {
namespace {

constexpr size_t kPairSize = 2;
constexpr size_t kShiftedSize = 4; // the shift, the plane and a pair
// A character of four bytes is shorter in Big5 by half.
constexpr size_t kSafeFromEucTw = 2 * kBlockSize;
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

// A block of pairs in a table. The first entry, which is empty, stands for what is not in it.
struct TableBlock {
    PairBlock lead;
    PairBlock trail;

    explicit TableBlock(ByteBlock bytes) : lead(first_of(bytes)), trail(second_of(bytes)) {}

    static PairBlock is_within(PairBlock bytes, std::int16_t first, std::int16_t last) {
        const SignedPairBlock values = std::bit_cast<SignedPairBlock>(bytes);
        return std::bit_cast<PairBlock>((values >= first) & (values <= last));
    }
    static PairBlock is_gr(PairBlock bytes) { return is_within(bytes, 0xA1, 0xFE); }

    template <class Map>
    PairBlock look_up(const Map& map, PairBlock cells, PairBlock in_table) const {
        const PairBlock places = ((lead - 0xA0) * Map::kRowSize + cells) & in_table;
        PairBlock codes{};
#pragma GCC unroll 8
        for (size_t i = 0; i < kBlockSize / kPairSize; ++i)
            codes[i] = map.codes[places[i]];
        return codes;
    }
};

// The kernels of characters of plane 1, which holds nearly all of those in use.
struct PairKernel {
    static constexpr size_t kCharacter = kPairSize;
};

struct Big5ToEucTwPairs : PairKernel {
    static constexpr size_t kSafeLeft = kBlockSize;

    static PairBlock high_trails(TableBlock block) { return TableBlock::is_gr(block.trail); }
    static PairBlock in_table(TableBlock block) {
        return TableBlock::is_gr(block.lead) &
               (TableBlock::is_within(block.trail, 0x40, 0x7E) | high_trails(block));
    }
    static PairBlock not_plain(ByteBlock bytes) { return ~in_table(TableBlock(bytes)); }
    static PairBlock convert(ByteBlock bytes) {
        const TableBlock block(bytes);
        const PairBlock offset = 0x40 + (high_trails(block) & (0x62 - 0x40));
        return block.look_up(kCnsOfBig5, block.trail - offset, in_table(block));
    }
    static PairBlock rejected(PairBlock cns) { return ~cns; }
};

struct EucTwToBig5Pairs : PairKernel {
    static constexpr size_t kSafeLeft = kSafeFromEucTw;

    static PairBlock in_table(TableBlock block) {
        return TableBlock::is_gr(block.lead) & TableBlock::is_gr(block.trail);
    }
    static PairBlock not_plain(ByteBlock bytes) { return ~in_table(TableBlock(bytes)); }
    static PairBlock convert(ByteBlock bytes) {
        const TableBlock block(bytes);
        return block.look_up(kBig5OfCns, block.trail - 0xA1, in_table(block));
    }
    static PairBlock rejected(PairBlock big5) { return ~(big5 | kSecondHighBit); }
};

} // namespace

// Behind each run of plain characters some go by the rule, so that text which is rarely plain is
// rarely looked up twice.
constexpr int kByRule = 4;

Converted big5_to_euc_tw(Source source, Byte* out) {
    while (source.next != source.end) {
        out = convert_run<Big5ToEucTwPairs>(source, out);
        for (int i = 0; i < kByRule && source.next != source.end; ++i) {
            const Byte* in = source.next;
            if (*in < 0x80) {
                out = copy_ascii(source, out);
                break;
            }
            if (!is_gr(*in)) {
                *out++ = *source.next++;
            } else if (source.left() < kPairSize) {
                return {source.next, out};
            } else {
                out = put_cns(out, kCnsOfBig5.find(in[0], in[1]));
                source.next += kPairSize;
            }
        }
    }
    return {source.next, out};
}

Converted euc_tw_to_big5(Source source, Byte* out) {
    while (source.next != source.end) {
        out = convert_run<EucTwToBig5Pairs>(source, out);
        for (int i = 0; i < kByRule && source.next != source.end; ++i) {
            const Byte* in = source.next;
            const bool shifted = *in == kSingleShift2;
            const size_t size = shifted ? kShiftedSize : kPairSize;
            if (*in < 0x80) {
                out = copy_ascii<kSafeFromEucTw>(source, out);
                break;
            }
            if (!shifted && !is_gr(*in)) {
                *out++ = *source.next++;
            } else if (source.left() < size) {
                return {source.next, out};
            } else {
                const unsigned plane = shifted ? in[1] - 0xA0u : 1;
                const bool known = in_range(plane, 1, kCnsPlanes);
                source.next += size;
                out = put_big5(out, known ? kBig5OfCns.find(source.next[-2], source.next[-1], plane)
                                          : 0);
            }
        }
    }
    return {source.next, out};
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
    // Only what moves to another plane than the first grows, by two bytes.
    while (source.left() >= zv::kPairSize) {
        zv::skip_run<zv::Big5ToEucTwPairs>(source);
        for (int i = 0; i < zv::kByRule && source.left() >= zv::kPairSize; ++i) {
            if (*source.next < 0x80) {
                zv::skip_ascii(source);
                break;
            }
            if (zv::is_gr(*source.next)) {
                const zv::TextCode cns = zv::kCnsOfBig5.find(source.next[0], source.next[1]);
                length += cns != 0 && zv::plane_of(cns) != 1 ? 2 : 0;
                source.next += zv::kPairSize;
            } else {
                ++source.next;
            }
        }
    }
    return static_cast<int>(length);
}

int big5Length(const char* s) {
    zv::Source source(s);
    size_t length = source.left();
    // Only four-byte characters shrink, by two bytes.
    while (source.left() >= zv::kShiftedSize) {
        if (*source.next < 0x80) {
            zv::skip_ascii(source);
        } else if (*source.next == zv::kSingleShift2) {
            length -= 2;
            source.next += zv::kShiftedSize;
        } else if (zv::is_gr(*source.next)) {
            source.next += zv::kPairSize;
            // In most texts more of them follow.
            while (source.left() >= 4 && zv::is_gr(source.next[0]) && zv::is_gr(source.next[2]))
                source.next += 4;
        } else {
            ++source.next;
        }
    }
    return static_cast<int>(length);
}
