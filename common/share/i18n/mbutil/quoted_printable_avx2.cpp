// Compiled for processors with AVX2: nothing that others run may be compiled here.
#include "quoted_printable_avx2.h"

#include <immintrin.h>

namespace zv {
namespace {

__m128i load(const Byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
void store(Byte* to, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
}
unsigned marks(__m128i comparison) {
    return static_cast<unsigned>(_mm_movemask_epi8(comparison));
}
__m128i all(int byte) {
    return _mm_set1_epi8(static_cast<char>(byte));
}

size_t count(unsigned mask) {
    return static_cast<size_t>(__builtin_popcount(mask));
}

__m128i is_equals_sign(__m128i bytes) {
    return _mm_cmpeq_epi8(bytes, all('='));
}
// From `first` up to 7E; "=" is among them.
__m128i is_printable(__m128i bytes, int first) {
    return _mm_andnot_si128(_mm_cmpeq_epi8(bytes, all(0x7F)),
                            _mm_cmpgt_epi8(bytes, all(first - 1)));
}

// How four bytes are encoded, of which some are escaped: where each byte of the result stands in a
// block of these bytes, their high digits, their low digits and equals signs.
struct QuadShuffles {
    Byte places[16][16];
};
constexpr QuadShuffles make_quad_shuffles() {
    QuadShuffles shuffles{};
    for (unsigned escaped = 0; escaped < 16; ++escaped) {
        Byte* place = shuffles.places[escaped];
        for (unsigned i = 0; i < 4; ++i) {
            if ((escaped >> i & 1) == 0) {
                *place++ = static_cast<Byte>(i);
                continue;
            }
            *place++ = static_cast<Byte>(12 + i);
            *place++ = static_cast<Byte>(4 + i);
            *place++ = static_cast<Byte>(8 + i);
        }
    }
    return shuffles;
}
alignas(16) constexpr QuadShuffles kQuadShuffles = make_quad_shuffles();

// The places of those of eight bytes that are kept.
struct KeptBytes {
    Byte places[256][8];
};
constexpr KeptBytes make_kept_bytes() {
    KeptBytes kept{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        Byte* place = kept.places[mask];
        for (unsigned i = 0; i < 8; ++i) {
            if ((mask >> i & 1) != 0)
                *place++ = static_cast<Byte>(i);
        }
    }
    return kept;
}
constexpr KeptBytes kKeptBytes = make_kept_bytes();

void put_quad(Byte* out, __m128i quad, unsigned escaped) {
    store(out, _mm_shuffle_epi8(quad, load(kQuadShuffles.places[escaped])));
}

// Writes what becomes of all bytes; that of the first ones counts.
Byte* encode_block(Byte* out, __m128i bytes, __m128i digits, size_t length) {
    const __m128i low_digit = all(0x0F);
    const __m128i plain = _mm_andnot_si128(is_equals_sign(bytes), is_printable(bytes, 0x21));
    const unsigned escaped = ~marks(plain) & 0xFFFF;
    const __m128i high =
        _mm_shuffle_epi8(digits, _mm_and_si128(_mm_srli_epi16(bytes, 4), low_digit));
    const __m128i low = _mm_shuffle_epi8(digits, _mm_and_si128(bytes, low_digit));
    const __m128i signs = all('=');
    const __m128i front = _mm_unpacklo_epi32(bytes, high);
    const __m128i front_rest = _mm_unpacklo_epi32(low, signs);
    const __m128i back = _mm_unpackhi_epi32(bytes, high);
    const __m128i back_rest = _mm_unpackhi_epi32(low, signs);
    // Where each quad begins follows from the mask alone, so that none waits for the one before.
    put_quad(out, _mm_unpacklo_epi64(front, front_rest), escaped & 15);
    put_quad(out + 4 + 2 * count(escaped & 0xF), _mm_unpackhi_epi64(front, front_rest),
             escaped >> 4 & 15);
    put_quad(out + 8 + 2 * count(escaped & 0xFF), _mm_unpacklo_epi64(back, back_rest),
             escaped >> 8 & 15);
    put_quad(out + 12 + 2 * count(escaped & 0xFFF), _mm_unpackhi_epi64(back, back_rest),
             escaped >> 12);
    return out + length + 2 * count(escaped & ((1u << length) - 1));
}

// Writes eight bytes, of which those that are kept count.
Byte* put_kept(Byte* out, __m128i bytes, unsigned kept) {
    const __m128i places =
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kKeptBytes.places[kept]));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, places));
    return out + count(kept);
}

using Mask = std::uint64_t;

// A block of text to decode, and the two bytes behind it, which may belong to an escape. Blocks
// follow each other at a fixed distance, so that none has to wait for the one before.
constexpr size_t kLookAhead = 2;
struct QuotedBlock {
    __m256i decoded;
    Mask kept;
    Mask dropped_behind; // of what follows the block
    Mask end;            // marks what cannot be decoded here

    QuotedBlock(const Byte* text, Mask dropped) {
        const __m256i bytes = load(text);
        const __m256i first = load(text + 1);
        const __m256i second = load(text + 2);
        const __m256i equals_signs = _mm256_cmpeq_epi8(bytes, all('='));
        const Mask signs = marks(equals_signs);
        const Mask first_digits = find_digits(first);
        const Mask second_digits = first_digits >> 1 | Mask{is_digit(text[kWideBlockSize + 1])}
                                                           << (kWideBlockSize - 1);
        const Mask escapes = signs & first_digits & second_digits;
        const Mask breaks = signs & marks(_mm256_cmpeq_epi8(first, all('\n')));
        const Mask digits_and_ends = escapes << 1 | escapes << 2 | breaks << 1;
        const __m256i high = _mm256_and_si256(_mm256_slli_epi16(values(first), 4), all(0xF0));
        const __m256i low = _mm256_and_si256(values(second), all(0x0F));
        decoded = _mm256_blendv_epi8(bytes, _mm256_or_si256(high, low), equals_signs);
        kept = ~(breaks | digits_and_ends | dropped) & kAll;
        dropped_behind = digits_and_ends >> kWideBlockSize;
        const Mask printable = marks(_mm256_andnot_si256(_mm256_cmpeq_epi8(bytes, all(0x7F)),
                                                         _mm256_cmpgt_epi8(bytes, all(0x1F))));
        end = (kept & ~printable) | (signs & ~escapes & ~breaks);
    }

    Byte* put(Byte* out) const {
        const __m128i low = _mm256_castsi256_si128(decoded);
        const __m128i high = _mm256_extracti128_si256(decoded, 1);
        out = put_kept(out, low, kept & 0xFF);
        out = put_kept(out, _mm_srli_si128(low, 8), kept >> 8 & 0xFF);
        out = put_kept(out, high, kept >> 16 & 0xFF);
        return put_kept(out, _mm_srli_si128(high, 8), kept >> 24 & 0xFF);
    }

    // Writes what becomes of the first bytes, and nothing else.
    Byte* put_front(Byte* out, size_t length) const {
        QuotedBlock front = *this;
        front.kept &= (Mask{1} << length) - 1;
        Byte block[kWideBlockSize];
        const size_t left = static_cast<size_t>(front.put(block) - block);
        copy_short(out, block, left);
        return out + left;
    }

private:
    static constexpr Mask kAll = (Mask{1} << kWideBlockSize) - 1;

    static __m256i load(const Byte* from) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }
    static __m256i all(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
    static Mask marks(__m256i comparison) {
        return static_cast<unsigned>(_mm256_movemask_epi8(comparison));
    }

    static bool is_digit(Byte byte) {
        return in_range(byte, '0', '9') || in_range(byte | 0x20u, 'a', 'f');
    }
    static Mask find_digits(__m256i bytes) {
        const __m256i small = _mm256_or_si256(bytes, all(0x20));
        const __m256i decimal = _mm256_and_si256(_mm256_cmpgt_epi8(bytes, all('0' - 1)),
                                                 _mm256_cmpgt_epi8(all('9' + 1), bytes));
        const __m256i letters = _mm256_and_si256(_mm256_cmpgt_epi8(small, all('a' - 1)),
                                                 _mm256_cmpgt_epi8(all('f' + 1), small));
        return marks(_mm256_or_si256(decimal, letters));
    }
    // The values of digits in the low halves of the bytes; the high halves mean nothing.
    static __m256i values(__m256i digits) {
        const __m256i letters = _mm256_cmpgt_epi8(digits, all('9'));
        return _mm256_add_epi8(digits, _mm256_and_si256(letters, all(9)));
    }
};

} // namespace

Converted wide_encode_quoted(Source source, Byte* out) {
    const __m128i digits = load(reinterpret_cast<const Byte*>("0123456789ABCDEF"));
    for (; source.left() >= kQuotedBlock; source.next += kQuotedBlock)
        out = encode_block(out, load(source.next), digits, kQuotedBlock);
    if (source.next != source.end) {
        Byte rest[kQuotedBlock] = {};
        copy_short(rest, source.next, source.left());
        out = encode_block(out, load(rest), digits, source.left());
    }
    return {source.end, out};
}

Converted wide_decode_quoted(Source source, Byte* out) {
    Mask dropped = 0; // of the front of the block, what belongs to an escape before it
    while (source.left() >= kWideBlockSize + kLookAhead) {
        const QuotedBlock block(source.next, dropped);
        if (block.end != 0) {
            const size_t length = static_cast<size_t>(__builtin_ctzll(block.end));
            return {source.next + length, block.put_front(out, length)};
        }
        out = block.put(out);
        source.next += kWideBlockSize;
        dropped = block.dropped_behind;
    }
    Byte rest[2 * kWideBlockSize] = {};
    const size_t left = source.left();
    copy_short(rest, source.next, left < kWideBlockSize ? left : kWideBlockSize);
    if (left > kWideBlockSize)
        rest[kWideBlockSize] = source.next[kWideBlockSize];
    const QuotedBlock block(rest, dropped);
    // Zeros end it, if not what cannot be decoded.
    const bool is_whole = block.end == 0;
    const size_t length =
        is_whole ? kWideBlockSize : static_cast<size_t>(__builtin_ctzll(block.end));
    const size_t behind =
        is_whole ? static_cast<size_t>(__builtin_popcountll(block.dropped_behind)) : 0;
    return {source.next + length + behind, block.put_front(out, length)};
}

} // namespace zv
