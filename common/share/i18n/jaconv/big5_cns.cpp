#include "big5_cns.h"

#include "ascii_run.h"
#include "big5_cns_tables.h"
#include "jaconv.h"

namespace zv {
namespace {

constexpr Byte kSingleShift2 = 0x8E;
constexpr ptrdiff_t kPairSize = 2;
constexpr ptrdiff_t kShiftedSize = 4; // the shift, the plane and a pair
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
    static constexpr ptrdiff_t kSize = kCharacters * kPairSize;

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
    Converted at = {source.next, out};
    while (at.read != source.end) {
        while (source.end - at.read >= Block::kSize) {
            const Block block(kCnsOfBig5, at.read);
            if (block.all_have(kHighBits)) {
                for (const TextCode cns : block.codes)
                    at.written = put_code(at.written, cns);
            } else if (block.all_have(kSecondHighBit)) {
                for (const TextCode cns : block.codes)
                    at.written = put_low_plane(at.written, cns);
            } else {
                break;
            }
            at.read += Block::kSize;
        }
        for (int i = 0; i < Block::kCharacters && at.read != source.end; ++i) {
            const Byte* in = at.read;
            if (*in < 0x80) {
                at = copy_ascii(at, source.end);
            } else if (!is_gr(*in)) {
                *at.written++ = *at.read++;
            } else if (source.end - in < kPairSize) {
                return at;
            } else {
                at.written = put_cns(at.written, kCnsOfBig5.find(in[0], in[1]));
                at.read += kPairSize;
            }
        }
    }
    return at;
}

Converted euc_tw_to_big5(Source source, Byte* out) {
    Converted at = {source.next, out};
    while (at.read != source.end) {
        while (source.end - at.read >= Block::kSize) {
            const Block block(kBig5OfCns, at.read);
            if (!block.all_have(kFirstHighBit))
                break;
            for (const TextCode big5 : block.codes)
                at.written = put_code(at.written, big5);
            at.read += Block::kSize;
        }
        for (int i = 0; i < Block::kCharacters && at.read != source.end; ++i) {
            const Byte* in = at.read;
            const bool shifted = *in == kSingleShift2;
            const ptrdiff_t size = shifted ? kShiftedSize : kPairSize;
            if (*in < 0x80) {
                at = copy_ascii(at, source.end);
            } else if (!shifted && !is_gr(*in)) {
                *at.written++ = *at.read++;
            } else if (source.end - in < size) {
                return at;
            } else {
                const unsigned plane = shifted ? in[1] - 0xA0u : 1;
                const bool known = in_range(plane, 1, kCnsPlanes);
                at.read += size;
                at.written = put_big5(at.written,
                                      known ? kBig5OfCns.find(at.read[-2], at.read[-1], plane) : 0);
            }
        }
    }
    return at;
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
    const zv::Source source(s);
    size_t length = source.left();
    const zv::Byte* in = source.next;
    // Only what moves to another plane than the first grows, by two bytes.
    while (source.end - in >= zv::kPairSize) {
        if (*in < 0x80) {
            in = zv::skip_ascii(in, source.end);
            continue;
        }
        if (source.end - in >= zv::Block::kSize) {
            const zv::Block block(zv::kCnsOfBig5, in);
            if (block.all_have(zv::kSecondHighBit)) {
                for (const zv::TextCode cns : block.codes)
                    length += zv::growth(cns);
                in += zv::Block::kSize;
                continue;
            }
        }
        if (zv::is_gr(*in)) {
            const zv::TextCode cns = zv::kCnsOfBig5.find(in[0], in[1]);
            length += cns != 0 && zv::plane_of(cns) != 1 ? 2 : 0;
            in += zv::kPairSize;
        } else {
            ++in;
        }
    }
    return static_cast<int>(length);
}

int big5Length(const char* s) {
    const zv::Source source(s);
    size_t length = source.left();
    const zv::Byte* in = source.next;
    // Only four-byte characters shrink, by two bytes.
    while (source.end - in >= zv::kShiftedSize) {
        if (*in < 0x80) {
            in = zv::skip_ascii(in, source.end);
        } else if (*in == zv::kSingleShift2) {
            length -= 2;
            in += zv::kShiftedSize;
        } else if (zv::is_gr(*in)) {
            in += zv::kPairSize;
            // In most texts more of them follow.
            while (source.end - in >= 4 && zv::is_gr(in[0]) && zv::is_gr(in[2]))
                in += 4;
        } else {
            ++in;
        }
    }
    return static_cast<int>(length);
}
