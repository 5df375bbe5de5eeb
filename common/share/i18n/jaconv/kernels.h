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
// the rest. That stays within the room of every conversion in which each source byte may give a
// byte of output: where 16 bytes of source are left, so are 16 bytes of room.

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

// Copies the run of ASCII at the front of the source.
inline Byte* copy_ascii(Source& source, Byte* out) {
    size_t plain = kBlockSize;
    while (plain == kBlockSize && source.left() >= kBlockSize) {
        const ByteBlock block = load_block(source.next);
        store_block(out, block);
        plain = plain_bytes(block & 0x80);
        source.next += plain;
        out += plain;
    }
    while (source.next != source.end && *source.next < 0x80)
        *out++ = *source.next++;
    return out;
}

// Converts the run of plain two-byte characters at the front of the source; what is plain and what
// becomes of it is for `Pairs` to say, see japanese_pairs.h.
template <class Pairs>
inline Byte* convert_pairs(Source& source, Byte* out) {
    size_t plain = kBlockSize;
    while (plain == kBlockSize && source.left() >= kBlockSize) {
        const PairBlock pairs = std::bit_cast<PairBlock>(load_block(source.next));
        store_block(out, Pairs::convert(pairs));
        plain = plain_bytes(Pairs::not_plain(pairs)) / 2 * 2;
        source.next += plain;
        out += plain;
    }
    return out;
}

} // namespace zv

#endif
