#ifndef ZVUTIL_JACONV_KERNELS_H
#define ZVUTIL_JACONV_KERNELS_H

#include <bit>
#include <cstdint>

#include "bytes.h"

namespace zv {

// Block loops over a known length that run ahead of the scalar rules and stop at the first byte
// that is not plain. They give byte for byte what the rules give.
//
// A block is stored whole and then counted only as far as it was plain, so what follows overwrites
// the rest. Nothing is stored beyond the end of the result, for which a caller may have measured
// the room: `SafeLeft` is how many bytes of source must be left so that a whole block of output is
// certain to come of them. With fewer, only what counts is stored.

inline constexpr size_t kBlockSize = 16;

// Sixteen bytes, and the same as eight pairs: in a pair the first byte is the low one.
using ByteBlock [[gnu::vector_size(kBlockSize)]] = Byte;
using PairBlock [[gnu::vector_size(kBlockSize)]] = std::uint16_t;
using SignedPairBlock [[gnu::vector_size(kBlockSize)]] = std::int16_t;
using WordBlock [[gnu::vector_size(kBlockSize)]] = std::uint64_t;
static_assert(std::endian::native == std::endian::little);

inline ByteBlock load_block(const Byte* from) {
    ByteBlock block;
    std::memcpy(&block, from, kBlockSize);
    return block;
}

template <class Block>
inline void store_block(Byte* to, Block block) {
    std::memcpy(to, &block, kBlockSize);
}

// How many bytes at the front of a block are plain, given the block in which the bytes that are
// not have some bit set that is set in no plain byte of it.
template <class Block>
inline size_t plain_bytes(Block not_plain) {
    const WordBlock words = std::bit_cast<WordBlock>(not_plain);
    if (words[0] != 0)
        return static_cast<size_t>(std::countr_zero(words[0])) / 8;
    return words[1] != 0 ? 8 + static_cast<size_t>(std::countr_zero(words[1])) / 8 : kBlockSize;
}

template <size_t SafeLeft, class Block>
inline void store_front(Byte* to, Block block, size_t plain, const Source& source) {
    if (plain == kBlockSize || source.left() >= SafeLeft)
        store_block(to, block);
    else
        std::memcpy(to, &block, plain);
}

// Copies the run of ASCII at the front of the source.
template <size_t SafeLeft = kBlockSize>
inline Byte* copy_ascii(Source& source, Byte* out) {
    size_t plain = kBlockSize;
    while (plain == kBlockSize && source.left() >= kBlockSize) {
        const ByteBlock block = load_block(source.next);
        plain = plain_bytes(block & 0x80);
        store_front<SafeLeft>(out, block, plain, source);
        source.next += plain;
        out += plain;
    }
    while (source.next != source.end && *source.next < 0x80)
        *out++ = *source.next++;
    return out;
}

// Steps over the run of ASCII at the front of the source.
inline void skip_ascii(Source& source) {
    size_t plain = kBlockSize;
    while (plain == kBlockSize && source.left() >= kBlockSize) {
        plain = plain_bytes(load_block(source.next) & 0x80);
        source.next += plain;
    }
    while (source.next != source.end && *source.next < 0x80)
        ++source.next;
}

// Converts the run of plain two-byte characters at the front of the source; what is plain and what
// becomes of it is for `Pairs` to say, see japanese_pairs.h.
template <class Pairs>
inline Byte* convert_pairs(Source& source, Byte* out) {
    size_t plain = kBlockSize;
    while (plain == kBlockSize && source.left() >= kBlockSize) {
        const PairBlock pairs = std::bit_cast<PairBlock>(load_block(source.next));
        plain = plain_bytes(Pairs::not_plain(pairs)) / 2 * 2;
        store_front<Pairs::kSafeLeft>(out, Pairs::convert(pairs), plain, source);
        source.next += plain;
        out += plain;
    }
    return out;
}

} // namespace zv

#endif
