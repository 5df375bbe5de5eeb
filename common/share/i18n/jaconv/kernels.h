#ifndef ZVUTIL_JACONV_KERNELS_H
#define ZVUTIL_JACONV_KERNELS_H

#include <bit>
#include <cstdint>
#include <utility>

#include "bytes.h"

#ifdef __aarch64__
#include <arm_neon.h>
#endif

namespace zv {

// Block loops over a known length that run ahead of the scalar rules and stop at the first byte
// that is not plain. They give byte for byte what the rules give.
//
// A block is stored whole and then counted only as far as it was plain, so what follows overwrites
// the rest. Nothing is stored beyond the end of the result, for which a caller may have measured
// the room: kSafeLeft is how many bytes of source must be left so that a whole block of output is
// certain to come of them. With fewer, only what counts is stored.

#ifdef __AVX2__
#define ZVUTIL_LANES lanes32
#else
#define ZVUTIL_LANES lanes16
#endif

// Each width has names of its own, so that the linker never takes one for the other.
inline namespace ZVUTIL_LANES {

#ifdef __AVX2__
inline constexpr size_t kBlockSize = 32;
#else
inline constexpr size_t kBlockSize = 16;
#endif

// A block as bytes, and as pairs of them.
using ByteBlock [[gnu::vector_size(kBlockSize)]] = Byte;
using SignedByteBlock [[gnu::vector_size(kBlockSize)]] = signed char;
using PairBlock [[gnu::vector_size(kBlockSize)]] = std::uint16_t;
using SignedPairBlock [[gnu::vector_size(kBlockSize)]] = std::int16_t;

inline SignedByteBlock as_signed(ByteBlock bytes) {
    return std::bit_cast<SignedByteBlock>(bytes);
}
inline ByteBlock as_unsigned(SignedByteBlock bytes) {
    return std::bit_cast<ByteBlock>(bytes);
}

// The bytes of a block in pairs. The order of bytes in a number matters here alone.
inline constexpr bool kFirstIsLow = std::endian::native == std::endian::little;
inline PairBlock as_pairs(ByteBlock bytes) {
    return std::bit_cast<PairBlock>(bytes);
}
// The first and the second bytes as numbers.
inline PairBlock first_of(ByteBlock bytes) {
    return kFirstIsLow ? as_pairs(bytes) & 0xFF : as_pairs(bytes) >> 8;
}
inline PairBlock second_of(ByteBlock bytes) {
    return kFirstIsLow ? as_pairs(bytes) >> 8 : as_pairs(bytes) & 0xFF;
}
// The first bytes where the second ones stand, and the other way round; zeros elsewhere.
inline ByteBlock first_to_second(ByteBlock bytes) {
    return std::bit_cast<ByteBlock>(kFirstIsLow ? as_pairs(bytes) << 8 : as_pairs(bytes) >> 8);
}
inline ByteBlock second_to_first(ByteBlock bytes) {
    return std::bit_cast<ByteBlock>(kFirstIsLow ? as_pairs(bytes) >> 8 : as_pairs(bytes) << 8);
}

inline ByteBlock load_block(const Byte* from) {
    ByteBlock block;
    std::memcpy(&block, from, kBlockSize);
    return block;
}

template <class Block>
inline void store_block(Byte* to, Block block) {
    std::memcpy(to, &block, kBlockSize);
}

// Stores the front of a block alone.
template <class Block>
inline void store_front(Byte* to, Block block, size_t length) {
    Byte bytes[kBlockSize];
    store_block(bytes, block);
    copy_short(to, bytes, length);
}

// The block that begins so many bytes earlier.
template <size_t bytes>
inline ByteBlock earlier(ByteBlock before, ByteBlock block) {
    return [=]<size_t... places>(std::index_sequence<places...>) {
        return __builtin_shufflevector(before, block, (kBlockSize - bytes + places)...);
    }
    (std::make_index_sequence<kBlockSize>());
}

// One bit for each byte of a block, the lowest for the first.
using Mask = std::uint32_t;

// The high bits of the bytes.
template <class Block>
inline Mask high_bits(Block block) {
#if defined(__AVX2__)
    using Chars [[gnu::vector_size(kBlockSize)]] = char;
    return static_cast<Mask>(__builtin_ia32_pmovmskb256(std::bit_cast<Chars>(block)));
#elif defined(__SSE2__)
    using Chars [[gnu::vector_size(kBlockSize)]] = char;
    return static_cast<Mask>(__builtin_ia32_pmovmskb128(std::bit_cast<Chars>(block)));
#elif defined(__aarch64__)
    // Each byte keeps a bit of its own, so that sums join them.
    constexpr ByteBlock kBits = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const auto bits =
        std::bit_cast<uint8x16_t>((std::bit_cast<SignedByteBlock>(block) < 0) & kBits);
    return static_cast<Mask>(vaddv_u8(vget_low_u8(bits)) | vaddv_u8(vget_high_u8(bits)) << 8);
#else
    // Each product gathers the eight high bits of a word in its highest byte.
    using Words [[gnu::vector_size(kBlockSize)]] = std::uint64_t;
    constexpr std::uint64_t kGather = kFirstIsLow ? 0x0102040810204080 : 0x8040201008040201;
    const Words bits = (std::bit_cast<Words>(block) >> 7 & 0x0101010101010101) * kGather;
    return static_cast<Mask>(bits[0] >> 56 | bits[1] >> 56 << 8);
#endif
}

// One bit for each byte of two blocks.
using LongMask = std::uint64_t;

template <class Block>
inline LongMask long_mask(Block front, Block back) {
    return high_bits(front) | LongMask{high_bits(back)} << kBlockSize;
}

// How many bytes at the front of a block are none of those that a mask marks; there are some.
inline size_t count_before(Mask marked) {
    return static_cast<size_t>(std::countr_zero(marked));
}

inline size_t last_marked(Mask marked) {
    return static_cast<size_t>(std::bit_width(marked)) - 1;
}

// Every other bit of each run of bits, from its lowest on: in a run of bytes that could be lead
// bytes, leads and trails alternate from the run's first byte. The sum moves the runs that begin at
// an even place out of the way.
inline Mask every_other(Mask runs) {
    constexpr Mask kEven = 0x55555555;
    const Mask starts = runs & ~(runs << 1);
    const Mask from_even = runs & ~(runs + (starts & kEven));
    return (from_even & kEven) | (runs & ~from_even & ~kEven);
}

// Converts the run of plain characters at the front of the source. The `Kernel` marks what is not
// plain by high bits, says what becomes of the rest, how long a character is, and from where on a
// block may be stored whole. A kernel that looks characters up marks in the converted block those
// that have no plain counterpart.
template <class Kernel>
inline Byte* convert_run(Source& source, Byte* out) {
    const auto whole = [](size_t length) {
        return length / Kernel::kCharacter * Kernel::kCharacter;
    };
    while (source.left() >= kBlockSize) {
        const ByteBlock block = load_block(source.next);
        const Mask not_plain = high_bits(Kernel::not_plain(block));
        const auto converted = Kernel::convert(block);
        Mask rejected = 0;
        if constexpr (requires { Kernel::rejected(converted); })
            rejected = high_bits(Kernel::rejected(converted));
        if ((not_plain | rejected) == 0) [[likely]] {
            store_block(out, converted);
            source.next += kBlockSize;
            out += kBlockSize;
            continue;
        }
        if (source.left() >= Kernel::kSafeLeft) [[likely]] {
            store_block(out, converted);
            // What comes next need not wait for what was looked up.
            size_t plain = not_plain != 0 ? whole(count_before(not_plain)) : kBlockSize;
            if ((rejected & ((std::uint64_t{1} << plain) - 1)) != 0) [[unlikely]]
                plain = whole(count_before(rejected));
            source.next += plain;
            return out + plain;
        }
        const size_t plain = whole(count_before(not_plain | rejected));
        store_front(out, converted, plain);
        source.next += plain;
        return out + plain;
    }
    return out;
}

struct AsciiKernel {
    static constexpr size_t kCharacter = 1;
    static ByteBlock not_plain(ByteBlock bytes) { return bytes; }
};

// Copies the run of ASCII at the front of the source, which is not empty. Most runs in other text
// are one byte, a line end or a space, or end in their first block; most others are long. What
// follows a single byte need not wait until its block has been looked through.
template <size_t SafeLeft = kBlockSize>
inline Byte* copy_ascii(Source& source, Byte* out) {
    constexpr size_t kBlocks = 4;
    if (source.left() > 1 && source.next[1] >= 0x80) {
        *out = *source.next++;
        return out + 1;
    }
    while (source.left() >= kBlockSize) {
        const ByteBlock block = load_block(source.next);
        if (const Mask high = high_bits(block); high != 0) {
            const size_t run = count_before(high);
            if (source.left() >= SafeLeft) [[likely]]
                store_block(out, block);
            else
                copy_short(out, source.next, run);
            source.next += run;
            return out + run;
        }
        store_block(out, block);
        source.next += kBlockSize;
        out += kBlockSize;
        while (source.left() >= kBlocks * kBlockSize) {
            ByteBlock blocks[kBlocks];
            std::memcpy(blocks, source.next, sizeof blocks);
            if (high_bits(blocks[0] | blocks[1] | blocks[2] | blocks[3]) != 0)
                break;
            std::memcpy(out, blocks, sizeof blocks);
            source.next += sizeof blocks;
            out += sizeof blocks;
        }
    }
    while (source.next != source.end && *source.next < 0x80)
        *out++ = *source.next++;
    return out;
}

// Steps over the run of plain characters at the front of the source, as far as whole blocks reach.
template <class Kernel>
inline void skip_run(Source& source) {
    while (source.left() >= kBlockSize) {
        const ByteBlock block = load_block(source.next);
        Mask not_plain = high_bits(Kernel::not_plain(block));
        if constexpr (requires { Kernel::rejected(Kernel::convert(block)); })
            not_plain |= high_bits(Kernel::rejected(Kernel::convert(block)));
        if (not_plain != 0) {
            source.next += count_before(not_plain) / Kernel::kCharacter * Kernel::kCharacter;
            return;
        }
        source.next += kBlockSize;
    }
}

// Steps over the run of ASCII at the front of the source.
inline void skip_ascii(Source& source) {
    skip_run<AsciiKernel>(source);
    while (source.next != source.end && *source.next < 0x80)
        ++source.next;
}

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
