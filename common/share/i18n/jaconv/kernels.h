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
// the room: kSafeLeft is how many bytes of source must be left so that a whole block of output is
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

// Whether a block is plain all over, given a block in which the bytes that are not have some bit
// set and all others none.
template <class Block>
inline bool is_plain(Block not_plain) {
    const WordBlock words = std::bit_cast<WordBlock>(not_plain);
    return (words[0] | words[1]) == 0;
}

// How many bytes at the front are plain in a block that is not plain all over.
template <class Block>
inline size_t count_plain(Block not_plain) {
    const WordBlock words = std::bit_cast<WordBlock>(not_plain);
    return words[0] != 0 ? static_cast<size_t>(std::countr_zero(words[0])) / 8
                         : 8 + static_cast<size_t>(std::countr_zero(words[1])) / 8;
}

// Converts the run of plain characters at the front of the source. The `Kernel` says what is plain,
// what becomes of it, how long a character is, and from where on a block may be stored whole.
template <class Kernel>
inline Byte* convert_run(Source& source, Byte* out) {
    while (source.left() >= kBlockSize) {
        const ByteBlock block = load_block(source.next);
        const auto not_plain = Kernel::not_plain(block);
        const auto converted = Kernel::convert(block);
        if (is_plain(not_plain)) [[likely]] {
            store_block(out, converted);
            source.next += kBlockSize;
            out += kBlockSize;
            continue;
        }
        const size_t plain = count_plain(not_plain) / Kernel::kCharacter * Kernel::kCharacter;
        if (source.left() >= Kernel::kSafeLeft)
            store_block(out, converted);
        else
            std::memcpy(out, &converted, plain);
        source.next += plain;
        return out + plain;
    }
    return out;
}

template <size_t SafeLeft>
struct AsciiKernel {
    static constexpr size_t kCharacter = 1;
    static constexpr size_t kSafeLeft = SafeLeft;
    static ByteBlock not_plain(ByteBlock bytes) { return bytes & 0x80; }
    static ByteBlock convert(ByteBlock bytes) { return bytes; }
};

// Copies the run of ASCII at the front of the source.
template <size_t SafeLeft = kBlockSize>
inline Byte* copy_ascii(Source& source, Byte* out) {
    out = convert_run<AsciiKernel<SafeLeft>>(source, out);
    while (source.next != source.end && *source.next < 0x80)
        *out++ = *source.next++;
    return out;
}

// Steps over the run of ASCII at the front of the source.
inline void skip_ascii(Source& source) {
    while (source.left() >= kBlockSize && is_plain(load_block(source.next) & 0x80))
        source.next += kBlockSize;
    while (source.next != source.end && *source.next < 0x80)
        ++source.next;
}

} // namespace zv

#endif
