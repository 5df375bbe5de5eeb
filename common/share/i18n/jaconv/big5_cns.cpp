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

// By how many bytes a character of plane 1 or 2 is longer in EUC-TW than in Big5. No branch: a text
// of both has no pattern that one could foresee.
size_t growth(TextCode cns) {
    return ((cns & kFirstHighBit) == 0) * 2u;
}

// Writes a character of plane 1 or 2. A needless shift is overwritten.
Byte* put_low_plane(Byte* out, TextCode cns) {
    put_pair(out, kSingleShift2, 0xA2);
    return put_code(out + growth(cns), cns | kHighBits);
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

// The counterparts of four two-byte characters, the unit in which a text is converted ahead of the
// rule for one character.
struct Block {
    static constexpr int kCharacters = 4;
    static constexpr size_t kSize = kCharacters * kPairSize;

    TextCode codes[kCharacters];

    template <class Map>
    Block(const Map& map, const Byte* in) {
        for (int i = 0; i < kCharacters; ++i)
            codes[i] = map.find(in[2 * i], in[2 * i + 1]);
    }
    bool all_have(TextCode bits) const {
        return (codes[0] & codes[1] & codes[2] & codes[3] & bits) == bits;
    }
};

} // namespace

// Both converters take whole blocks as long as they can, then as many single characters by the
// rule, so that text which is rarely plain is rarely looked up twice. Plane 1 holds nearly all of
// the characters in use; planes 3 and 4, eleven characters, are left to the rule.
Converted big5_to_euc_tw(Source source, Byte* out) {
    while (source.next != source.end) {
        while (source.left() >= Block::kSize) {
            const Block block(kCnsOfBig5, source.next);
            if (block.all_have(kHighBits)) {
                for (const TextCode cns : block.codes)
                    out = put_code(out, cns);
            } else if (block.all_have(kSecondHighBit)) {
                for (const TextCode cns : block.codes)
                    out = put_low_plane(out, cns);
            } else {
                break;
            }
            source.next += Block::kSize;
        }
        for (int i = 0; i < Block::kCharacters && source.next != source.end; ++i) {
            const Byte* in = source.next;
            if (*in < 0x80) {
                out = copy_ascii(source, out);
            } else if (!is_gr(*in)) {
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
        while (source.left() >= Block::kSize) {
            const Block block(kBig5OfCns, source.next);
            if (!block.all_have(kFirstHighBit))
                break;
            for (const TextCode big5 : block.codes)
                out = put_code(out, big5);
            source.next += Block::kSize;
        }
        for (int i = 0; i < Block::kCharacters && source.next != source.end; ++i) {
            const Byte* in = source.next;
            const bool shifted = *in == kSingleShift2;
            const size_t size = shifted ? kShiftedSize : kPairSize;
            if (*in < 0x80) {
                out = copy_ascii<kSafeFromEucTw>(source, out);
            } else if (!shifted && !is_gr(*in)) {
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
        if (*source.next < 0x80) {
            zv::skip_ascii(source);
            continue;
        }
        if (source.left() >= zv::Block::kSize) {
            const zv::Block block(zv::kCnsOfBig5, source.next);
            if (block.all_have(zv::kSecondHighBit)) {
                for (const zv::TextCode cns : block.codes)
                    length += zv::growth(cns);
                source.next += zv::Block::kSize;
                continue;
            }
        }
        if (zv::is_gr(*source.next)) {
            const zv::TextCode cns = zv::kCnsOfBig5.find(source.next[0], source.next[1]);
            length += cns != 0 && zv::plane_of(cns) != 1 ? 2 : 0;
            source.next += zv::kPairSize;
        } else {
            ++source.next;
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
