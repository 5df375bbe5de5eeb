#ifndef ZVUTIL_JACONV_JAPANESE_PAIRS_H
#define ZVUTIL_JACONV_JAPANESE_PAIRS_H

#include "kernels.h"

namespace zv {
inline namespace ZVUTIL_LANES {

// The arithmetic of japanese_codes.h on all bytes of a block: what they become if they are lead
// bytes, if they are trail bytes, and in a block of nothing but pairs. `next` and `before` are the
// bytes that follow and precede them. Sums wrap; comparisons give -1 for true.

// The means of two bytes each, rounded upwards.
inline ByteBlock mean(ByteBlock a, ByteBlock b) {
#if defined(__AVX512VBMI2__)
    return std::bit_cast<ByteBlock>(
        _mm512_avg_epu8(std::bit_cast<__m512i>(a), std::bit_cast<__m512i>(b)));
#elif defined(__AVX2__)
    return std::bit_cast<ByteBlock>(
        _mm256_avg_epu8(std::bit_cast<__m256i>(a), std::bit_cast<__m256i>(b)));
#elif defined(__SSE2__)
    return std::bit_cast<ByteBlock>(
        _mm_avg_epu8(std::bit_cast<__m128i>(a), std::bit_cast<__m128i>(b)));
#else
    return (a | b) - ((a ^ b) >> 1);
#endif
}

// The same two bytes over and over.
constexpr ByteBlock pairs_of(unsigned first, unsigned second) {
    return std::bit_cast<ByteBlock>(
        PairBlock{} +
        static_cast<std::uint16_t>(kFirstIsLow ? first | second << 8 : first << 8 | second));
}

// Flipping bit 5 puts the lead bytes 81-9F and E0-EF of Shift-JIS side by side, as A1-CF.
inline constexpr Byte kJoinLeads = 0x20;

struct ShiftJisToEucBytes {
    static constexpr size_t kKatakanaSize = 1;
    static ByteBlock convert_pairs(ByteBlock bytes) {
        using SignedPairs [[gnu::vector_size(kBlockSize)]] = short;
        const ByteBlock joined = bytes ^ pairs_of(kJoinLeads, 0);
        const ByteBlock even = joined + (joined & pairs_of(0xFF, 0)) + pairs_of(0x60, 2);
        const PairBlock sign = (kFirstIsLow ? as_pairs(bytes) : as_pairs(bytes) << 8) + 0x6100;
        const auto odd_row = std::bit_cast<ByteBlock>(std::bit_cast<SignedPairs>(sign) < 0);
        return even + (odd_row & (pairs_of(0xFF, 0x5F) +
                                  as_unsigned(as_signed(bytes) < as_signed(pairs_of(0x80, 0)))));
    }
    static Mask could_lead(ByteBlock bytes) { return range_mask(bytes ^ kJoinLeads, 0xA1, 0xCF); }
    static Mask could_trail(ByteBlock bytes) { return range_mask(bytes, 0x40, 0xFC); }
    static bool is_pair(Byte first, Byte second) {
        return in_range(first ^ kJoinLeads, 0xA1, 0xCF) && in_range(second, 0x40, 0xFC);
    }
    // The trail bytes of odd rows, below 9F, become negative, those of even rows do not.
    static SignedByteBlock row_sign(ByteBlock trail) { return as_signed(trail + 0x61); }
    static ByteBlock lead(ByteBlock bytes, ByteBlock next) {
        const ByteBlock joined = bytes ^ kJoinLeads;
        return joined + joined - 0xA0 + as_unsigned(row_sign(next) < 0);
    }
    static ByteBlock trail(ByteBlock, ByteBlock bytes) {
        const SignedByteBlock odd = row_sign(bytes);
        return odd < 0 ? as_unsigned(odd + (as_signed(bytes) < 0)) : bytes + 2;
    }
};

// From EUC, or with high bits of 0 from JIS.
template <Byte HighBit>
struct ToShiftJisBytes {
    static ByteBlock convert_pairs(ByteBlock bytes) {
        // The mean of a trail byte and itself is the byte.
        const ByteBlock even =
            (mean(bytes, bytes & pairs_of(0, 0xFF)) + pairs_of(kLeadOffset, kTrailOffset)) ^
            pairs_of(kJoinLeads, 0);
#ifdef __AVX512VBMI2__
        const auto codes = std::bit_cast<__m512i>(bytes);
        const __mmask32 odd_row = _mm512_test_epi16_mask(codes, _mm512_set1_epi16(1));
        const __mmask32 behind_7f = _mm512_mask_cmpgt_epi16_mask(
            odd_row, codes, _mm512_set1_epi16(static_cast<short>(kBefore7f << 8 | 0xFF)));
        __m512i result = std::bit_cast<__m512i>(even);
        result = _mm512_mask_sub_epi16(result, odd_row, result, _mm512_set1_epi16(0x5F00));
        result = _mm512_mask_add_epi16(result, behind_7f, result, _mm512_set1_epi16(0x0100));
        return std::bit_cast<ByteBlock>(result);
#else
        const auto odd_row = std::bit_cast<ByteBlock>(-(first_of(bytes) & 1));
        const auto before_7f = as_signed(pairs_of(0x7F, kBefore7f));
        return even - (odd_row & (pairs_of(0, 0x5F) + as_unsigned(as_signed(bytes) > before_7f)));
#endif
    }
    static ByteBlock lead(ByteBlock bytes, ByteBlock) {
        return (mean(bytes, ByteBlock{}) + kLeadOffset) ^ kJoinLeads;
    }
    static ByteBlock trail(ByteBlock before, ByteBlock bytes) {
        const ByteBlock odd_row = -(before & 1);
        const auto before_7f = static_cast<signed char>(kBefore7f);
        return bytes + kTrailOffset -
               (odd_row & (0x5F + as_unsigned(as_signed(bytes) > before_7f)));
    }

private:
    static constexpr auto kLeadOffset = static_cast<Byte>(0x90 - HighBit / 2);
    static constexpr auto kTrailOffset = static_cast<Byte>(0x7E - HighBit);
    static constexpr auto kBefore7f = static_cast<Byte>(0x5F + HighBit);
};

struct EucToShiftJisBytes : ToShiftJisBytes<0x80> {
    static constexpr size_t kKatakanaSize = 2; // with the single shift
    static Mask could_lead(ByteBlock bytes) { return range_mask(bytes, 0xA1, 0xFE); }
    static bool is_pair(Byte first, Byte second) {
        return in_range(first, 0xA1, 0xFE) && in_range(second, 0xA1, 0xFE);
    }
    static Mask could_trail(ByteBlock bytes) { return could_lead(bytes); }
};

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
