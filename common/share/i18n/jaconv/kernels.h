#ifndef ZVUTIL_JACONV_KERNELS_H
#define ZVUTIL_JACONV_KERNELS_H

#include <array>
#include <bit>
#include <cstdint>
#include <utility>

#include "bytes.h"

#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace zv {

// What kernels are made of: vectors as wide as the processor's that the file is compiled for, and
// what the compiler's vector types lack. A kernel is written once and compiled for each width.

#if defined(__AVX512VBMI2__)
#define ZVUTIL_LANES lanes64
#elif defined(__AVX2__)
#define ZVUTIL_LANES lanes32
#else
#define ZVUTIL_LANES lanes16
#endif

// What is a few instructions for the widest vectors is out of line for others. Such functions take
// blocks by reference: where one takes a wide block by value, GCC 12 forgets to clear the upper
// halves of the vectors, and all that follows is slow.
#ifdef __AVX512VBMI2__
#define ZVUTIL_WIDEST_INLINE inline
#else
#define ZVUTIL_WIDEST_INLINE [[gnu::noinline]] inline
#endif

// Each width has names of its own, so that the linker never takes one for the other.
inline namespace ZVUTIL_LANES {

#if defined(__AVX512VBMI2__)
inline constexpr size_t kBlockSize = 64;
#elif defined(__AVX2__)
inline constexpr size_t kBlockSize = 32;
#else
inline constexpr size_t kBlockSize = 16;
#endif

using ByteBlock [[gnu::vector_size(kBlockSize)]] = Byte;
using SignedByteBlock [[gnu::vector_size(kBlockSize)]] = signed char;
using PairBlock [[gnu::vector_size(kBlockSize)]] = std::uint16_t;

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
inline ByteBlock load_block(const Byte* from) {
    ByteBlock block;
    std::memcpy(&block, from, kBlockSize);
    return block;
}

template <class Block>
inline void store_block(Byte* to, Block block) {
    std::memcpy(to, &block, kBlockSize);
}

// One bit for each byte of a block, the lowest for the first.
using Mask = std::conditional_t<kBlockSize == 64, std::uint64_t, std::uint32_t>;

inline constexpr Mask kAllMarked = ~Mask{} >> (8 * sizeof(Mask) - kBlockSize);

// The first bits of a mask; less than all.
inline Mask first_bits(size_t count) {
#ifdef __AVX512VBMI2__
    return _bzhi_u64(kAllMarked, static_cast<unsigned>(count));
#else
    return (Mask{1} << count) - 1;
#endif
}

// The high bits of the bytes.
template <class Block>
inline Mask high_bits(Block block) {
#if defined(__AVX512VBMI2__)
    return _mm512_movepi8_mask(std::bit_cast<__m512i>(block));
#elif defined(__AVX2__)
    return static_cast<Mask>(_mm256_movemask_epi8(std::bit_cast<__m256i>(block)));
#elif defined(__SSE2__)
    return static_cast<Mask>(_mm_movemask_epi8(std::bit_cast<__m128i>(block)));
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

// The bytes of a range, and those that are one byte.
inline Mask range_mask(ByteBlock bytes, Byte first, Byte last) {
    const ByteBlock above_first = bytes - first;
    const auto width = static_cast<Byte>(last - first);
#ifdef __AVX512VBMI2__
    return _mm512_cmple_epu8_mask(std::bit_cast<__m512i>(above_first),
                                  _mm512_set1_epi8(static_cast<char>(width)));
#else
    return high_bits(above_first <= width);
#endif
}
inline Mask byte_mask(ByteBlock bytes, Byte byte) {
#ifdef __AVX512VBMI2__
    return _mm512_cmpeq_epi8_mask(std::bit_cast<__m512i>(bytes),
                                  _mm512_set1_epi8(static_cast<char>(byte)));
#else
    return high_bits(bytes == byte);
#endif
}

// How many bytes at the front of a block are none of those that a mask marks; there are some.
inline size_t count_before(std::uint64_t marked) {
    return static_cast<size_t>(std::countr_zero(marked));
}

inline size_t last_marked(std::uint64_t marked) {
    return static_cast<size_t>(std::bit_width(marked)) - 1;
}

inline size_t count_marked(std::uint64_t marked) {
    return static_cast<size_t>(std::popcount(marked));
}

// The bytes that a mask marks are all ones, the others zero.
inline ByteBlock spread(Mask mask) {
#ifdef __AVX512VBMI2__
    return std::bit_cast<ByteBlock>(_mm512_movm_epi8(mask));
#else
    using Words [[gnu::vector_size(kBlockSize)]] = std::uint64_t;
#ifdef __AVX2__
    using Masks [[gnu::vector_size(kBlockSize)]] = Mask;
    const ByteBlock copies = std::bit_cast<ByteBlock>(Masks{} + mask);
    const ByteBlock eights =
        __builtin_shufflevector(copies, copies, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 18,
                                18, 18, 18, 18, 18, 18, 18, 19, 19, 19, 19, 19, 19, 19, 19);
#else
    constexpr std::uint64_t kCopies = 0x0101010101010101;
    const auto eights =
        std::bit_cast<ByteBlock>(Words{(mask & 0xFF) * kCopies, (mask >> 8 & 0xFF) * kCopies});
#endif
    constexpr std::uint64_t kBitOfPlace = kFirstIsLow ? 0x8040201008040201 : 0x0102040810204080;
    const auto bits = std::bit_cast<ByteBlock>(Words{} + kBitOfPlace);
    return as_unsigned((eights & bits) == bits);
#endif
}

// The bytes of one block where a mask marks them, those of another where another mask does, those
// of a third elsewhere.
inline ByteBlock choose(Mask mask_a, ByteBlock a, Mask mask_b, ByteBlock b, ByteBlock other) {
#ifdef __AVX512VBMI2__
    const __m512i chosen =
        _mm512_mask_mov_epi8(std::bit_cast<__m512i>(other), mask_a, std::bit_cast<__m512i>(a));
    return std::bit_cast<ByteBlock>(
        _mm512_mask_mov_epi8(chosen, mask_b, std::bit_cast<__m512i>(b)));
#else
    const ByteBlock is_a = spread(mask_a), is_b = spread(mask_b);
    return (is_a & a) | (is_b & b) | (other & ~(is_a | is_b));
#endif
}

// The bytes moved on or back by one place, with a zero at the end that becomes free.
inline ByteBlock moved_on(ByteBlock bytes) {
#if defined(__AVX2__) || !defined(__SIZEOF_INT128__)
    return [=]<size_t... places>(std::index_sequence<places...>) {
        return __builtin_shufflevector(ByteBlock{}, bytes, (kBlockSize - 1 + places)...);
    }
    (std::make_index_sequence<kBlockSize>());
#else
    using Whole [[gnu::vector_size(kBlockSize)]] = unsigned __int128;
    const auto whole = std::bit_cast<Whole>(bytes);
    return std::bit_cast<ByteBlock>(kFirstIsLow ? whole << 8 : whole >> 8);
#endif
}
inline ByteBlock moved_back(ByteBlock bytes) {
#if defined(__AVX2__) || !defined(__SIZEOF_INT128__)
    return [=]<size_t... places>(std::index_sequence<places...>) {
        return __builtin_shufflevector(bytes, ByteBlock{}, (1 + places)...);
    }
    (std::make_index_sequence<kBlockSize>());
#else
    using Whole [[gnu::vector_size(kBlockSize)]] = unsigned __int128;
    const auto whole = std::bit_cast<Whole>(bytes);
    return std::bit_cast<ByteBlock>(kFirstIsLow ? whole >> 8 : whole << 8);
#endif
}

// A number of whose bytes the first is the lowest.
template <class Word>
inline std::uint64_t load_number(const Byte* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    if constexpr (!kFirstIsLow)
        word = static_cast<Word>(__builtin_bswap64(word) >> (64 - 8 * sizeof word));
    return word;
}

// The same of less than eight bytes, which are put together in registers, since a processor waits
// where it loads at once what was stored in parts.
ZVUTIL_WIDEST_INLINE std::uint64_t load_short_number(const Byte* from, size_t length) {
#ifdef __AVX512VBMI2__
    const auto all = static_cast<__mmask16>(_bzhi_u32(0xFF, static_cast<unsigned>(length)));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_maskz_loadu_epi8(all, from)));
#else
    if (length >= 4)
        return load_number<std::uint32_t>(from) | load_number<std::uint32_t>(from + length - 4)
                                                      << 8 * (length - 4);
    if (length == 0)
        return 0;
    const std::uint64_t middle = from[length / 2], last = from[length - 1];
    return from[0] | middle << 8 * (length / 2) | last << 8 * (length - 1);
#endif
}

// The next eight bytes, with zeros behind a shorter text.
inline std::uint64_t load_word(const Byte* from, size_t left) {
    return left >= 8 ? load_number<std::uint64_t>(from) : load_short_number(from, left);
}

// Sixteen bytes, of which a text has fewer: zeros behind them.
using TwoWords [[gnu::vector_size(16)]] = std::uint64_t;
inline TwoWords load_words(const Byte* from, size_t length) {
    if constexpr (!kFirstIsLow) {
        TwoWords words{};
        std::memcpy(&words, from, length);
        return words;
    }
    const std::uint64_t second =
        length > 8 ? load_number<std::uint64_t>(from + length - 8) >> 8 * (16 - length) : 0;
    return TwoWords{load_word(from, length), second};
}

// The front of a block, less than all; zeros behind it.
ZVUTIL_WIDEST_INLINE ByteBlock load_front(const Byte* from, size_t length) {
#if defined(__AVX512VBMI2__)
    return std::bit_cast<ByteBlock>(_mm512_maskz_loadu_epi8(first_bits(length), from));
#elif defined(__AVX2__)
    // What a shuffle takes, by the number of bytes by which it moves them back.
    static constexpr auto kPlaces = [] {
        std::array<Byte, 32> places{};
        for (unsigned i = 0; i < places.size(); ++i)
            places[i] = static_cast<Byte>(i < 16 ? i : 0x80);
        return places;
    }();
    const auto load = [](const Byte* text) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    };
    if (length < 16)
        return std::bit_cast<ByteBlock>(
            _mm256_zextsi128_si256(std::bit_cast<__m128i>(load_words(from, length))));
    const __m128i rest =
        _mm_shuffle_epi8(load(from + length - 16), load(kPlaces.data() + 32 - length));
    return std::bit_cast<ByteBlock>(_mm256_set_m128i(rest, load(from)));
#else
    return std::bit_cast<ByteBlock>(load_words(from, length));
#endif
}

// The front of a text, which may be shorter than a block.
inline ByteBlock load_up_to(const Byte* from, size_t left) {
    return left >= kBlockSize ? load_block(from) : load_front(from, left);
}

// Stores the front of a block, less than all of it, and nothing else.
ZVUTIL_WIDEST_INLINE void store_front(Byte* to, const ByteBlock& block, size_t length) {
#ifdef __AVX512VBMI2__
    _mm512_mask_storeu_epi8(to, first_bits(length), std::bit_cast<__m512i>(block));
#else
    copy_short(to, reinterpret_cast<const Byte*>(&block), length);
#endif
}

// As wide kernels write in pieces, what they wrote last may be followed by so many bytes that mean
// nothing.
inline constexpr size_t kOvershoot = 64;

#if (defined(__AVX2__) && !defined(__AVX512VBMI2__)) || defined(__aarch64__)
// Where those of eight bytes stand that a mask marks.
inline constexpr auto kMarkedPlaces = [] {
    std::array<std::array<Byte, 8>, 256> places{};
    for (unsigned mask = 0; mask < places.size(); ++mask) {
        size_t length = 0;
        for (unsigned i = 0; i < 8; ++i) {
            if ((mask >> i & 1) != 0)
                places[mask][length++] = static_cast<Byte>(i);
        }
    }
    return places;
}();
#endif

// Writes the bytes that a mask marks.
[[gnu::always_inline]] inline Byte* put_kept_at_once(Byte* out, const ByteBlock& bytes, Mask kept) {
#if defined(__AVX512VBMI2__)
    store_block(out, _mm512_maskz_compress_epi8(kept, std::bit_cast<__m512i>(bytes)));
    return out + count_marked(kept);
#elif defined(__AVX2__)
    const auto put_half = [&](__m128i half, Mask front, Mask back) {
        const auto places = [](Mask mask) {
            return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kMarkedPlaces[mask].data()));
        };
        const __m128i second = _mm_add_epi8(places(back), _mm_set1_epi8(8));
        const __m128i chosen = _mm_shuffle_epi8(half, _mm_unpacklo_epi64(places(front), second));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), chosen);
        out += count_marked(front);
        _mm_storeh_pi(reinterpret_cast<__m64*>(out), _mm_castsi128_ps(chosen));
        out += count_marked(back);
    };
    const __m256i all = std::bit_cast<__m256i>(bytes);
    put_half(_mm256_castsi256_si128(all), kept & 0xFF, kept >> 8 & 0xFF);
    put_half(_mm256_extracti128_si256(all, 1), kept >> 16 & 0xFF, kept >> 24);
    return out;
#elif defined(__aarch64__)
    const auto put_half = [&](uint8x8_t half, Mask mask) {
        vst1_u8(out, vtbl1_u8(half, vld1_u8(kMarkedPlaces[mask].data())));
        out += count_marked(mask);
    };
    const auto all = std::bit_cast<uint8x16_t>(bytes);
    put_half(vget_low_u8(all), kept & 0xFF);
    put_half(vget_high_u8(all), kept >> 8 & 0xFF);
    return out;
#else
    for (size_t i = 0; i < kBlockSize; ++i) {
        *out = bytes[i];
        out += kept >> i & 1;
    }
    return out;
#endif
}

// The same where it is no loop's whole work.
ZVUTIL_WIDEST_INLINE Byte* put_kept(Byte* out, const ByteBlock& bytes, Mask kept) {
    return put_kept_at_once(out, bytes, kept);
}

// The same, and nothing behind them.
ZVUTIL_WIDEST_INLINE Byte* put_kept_alone(Byte* out, const ByteBlock& bytes, Mask kept) {
    const size_t count = count_marked(kept);
#ifdef __AVX512VBMI2__
    const __m512i front = _mm512_maskz_compress_epi8(kept, std::bit_cast<__m512i>(bytes));
    store_front(out, std::bit_cast<ByteBlock>(front), count);
#else
    Byte result[kBlockSize + kOvershoot];
    put_kept(result, bytes, kept);
    copy_short(out, result, count);
#endif
    return out + count;
}

// Stores the bytes in a row that a mask marks in their places.
inline void store_marked(Byte* to, const ByteBlock& bytes, Mask marked) {
#ifdef __AVX512VBMI2__
    _mm512_mask_storeu_epi8(to, marked, std::bit_cast<__m512i>(bytes));
#else
    put_kept_alone(to + count_before(marked), bytes, marked);
#endif
}

// The bytes of two blocks by turns.
inline std::array<ByteBlock, 2> interleave(ByteBlock a, ByteBlock b) {
    return [=]<size_t... places>(std::index_sequence<places...>) {
        return std::array{
            ByteBlock(__builtin_shufflevector(a, b, (places % 2 * kBlockSize + places / 2)...)),
            ByteBlock(__builtin_shufflevector(
                a, b, (places % 2 * kBlockSize + places / 2 + kBlockSize / 2)...))};
    }
    (std::make_index_sequence<kBlockSize>());
}

// The bits of two masks by turns.
inline std::array<Mask, 2> interleave_bits(Mask a, Mask b) {
#ifdef __BMI2__
    const auto half = [&](unsigned from) {
        constexpr std::uint64_t kEven = 0x5555555555555555;
        return static_cast<Mask>(_pdep_u64(a >> from, kEven) | _pdep_u64(b >> from, ~kEven));
    };
    return {half(0), half(kBlockSize / 2)};
#else
    const auto bits = interleave(spread(a), spread(b));
    return {high_bits(bits[0]), high_bits(bits[1])};
#endif
}

// Text is looked through by windows of so many bytes, one for each bit of a long mask at most.
inline constexpr size_t kWindow = kBlockSize == 16 ? 16 : 64;
inline constexpr size_t kBlocks = kWindow / kBlockSize;
using LongMask = std::uint64_t;
inline constexpr LongMask kAllOfWindow = ~LongMask{} >> (64 - kWindow);

inline Mask mask_of_block(LongMask mask, size_t i) {
    return static_cast<Mask>(mask >> i * kBlockSize) & kAllMarked;
}

// A window's blocks; behind a shorter text there are zeros.
using Window = std::array<ByteBlock, kBlocks>;
template <size_t Blocks = kBlocks>
inline std::array<ByteBlock, Blocks> load_window(const Byte* text) {
    std::array<ByteBlock, Blocks> blocks;
#pragma GCC unroll 4
    for (size_t i = 0; i < Blocks; ++i)
        blocks[i] = load_block(text + i * kBlockSize);
    return blocks;
}
template <size_t Blocks = kBlocks>
ZVUTIL_WIDEST_INLINE std::array<ByteBlock, Blocks> load_last_window(const Byte* text, size_t left) {
    std::array<ByteBlock, Blocks> blocks;
    for (size_t i = 0; i < Blocks; ++i) {
        const size_t at = i * kBlockSize;
        blocks[i] = at < left ? load_up_to(text + at, left - at) : ByteBlock{};
    }
    return blocks;
}
template <size_t Blocks = kBlocks>
inline std::array<ByteBlock, Blocks> load_window_up_to(const Byte* text, size_t left) {
    return left >= Blocks * kBlockSize ? load_window<Blocks>(text)
                                       : load_last_window<Blocks>(text, left);
}

// Stores what a function, ByteBlock(ByteBlock), makes of a window.
template <class Convert>
inline void store_window(Byte* to, const Window& blocks, Convert convert) {
#pragma GCC unroll 4
    for (size_t i = 0; i < kBlocks; ++i)
        store_block(to + i * kBlockSize, convert(blocks[i]));
}

// What `find`, Mask(ByteBlock), finds in blocks.
template <size_t Blocks, class Find>
inline LongMask find_in(const std::array<ByteBlock, Blocks>& blocks, Find find) {
    LongMask found = 0;
#pragma GCC unroll 4
    for (size_t i = 0; i < Blocks; ++i)
        found |= LongMask{find(blocks[i])} << i * kBlockSize;
    return found;
}

// The first bits of a long mask; one at least.
constexpr LongMask first_long_bits(size_t count) {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): so it is never by 64.
    return ~LongMask{} >> (64 - count);
}

// The places behind those that a mask marks, and the first one if the window before asks for it.
constexpr LongMask places_behind(LongMask marked, LongMask first) {
    return (marked << 1 | first) & kAllOfWindow;
}

// The bytes of the pairs at even places whose first and second bytes are marked.
template <class Bits>
constexpr Bits even_pairs(Bits could_lead, Bits could_trail) {
    const Bits leads = could_lead & could_trail >> 1 & static_cast<Bits>(0x5555555555555555);
    return leads | leads << 1;
}

// Every other bit of each run of bits, from its lowest on: in a run of bytes that could be lead
// bytes, leads and trails alternate from the run's first byte. The difference leaves ones in the
// runs that begin at an even place and zeros in the others.
template <class Bits>
constexpr Bits every_other(Bits runs) {
    constexpr auto kOdd = static_cast<Bits>(0xAAAAAAAAAAAAAAAA);
    return (((runs << 1 | kOdd) - runs) ^ kOdd) & runs;
}

// The lead bytes of window after window of a size, where what stands behind a lead byte is its
// trail byte whatever it is.
template <size_t kSize>
class LeadWalkOf {
public:
    // What comes before may end with a lead byte.
    explicit LeadWalkOf(LongMask carried = 0) : carried_(carried) {}

    void enter(LongMask could_lead) {
        leads_ = every_other(could_lead & ~carried_);
        behind_leads_ = (leads_ << 1 | carried_) & kAll;
        // The window's last run of possible leads says whether it ends with one; where it is the
        // whole window, what came before does. So windows rarely wait for each other.
        if (could_lead != kAll)
            carried_ = static_cast<LongMask>(std::countl_one(could_lead << (64 - kSize))) & 1;
    }

    LongMask leads() const { return leads_; }
    LongMask behind_leads() const { return behind_leads_; }
    // 1 if the last byte of the window is a lead byte.
    LongMask carried() const { return carried_; }

private:
    static constexpr LongMask kAll = first_long_bits(kSize);

    LongMask leads_ = 0;
    LongMask behind_leads_ = 0;
    LongMask carried_;
};
using LeadWalk = LeadWalkOf<kWindow>;

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
