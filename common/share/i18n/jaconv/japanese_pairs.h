#ifndef ZVUTIL_JACONV_JAPANESE_PAIRS_H
#define ZVUTIL_JACONV_JAPANESE_PAIRS_H

#include "kernels.h"

namespace zv {
inline namespace ZVUTIL_LANES {

// The arithmetic of japanese_codes.h on all bytes of a block: what they become if they are lead
// bytes, if they are trail bytes, and in a block of nothing but pairs. `next` and `before` are the
// bytes that follow and precede them. Sums wrap; comparisons give -1 for true.

// The bytes halved, upwards.
inline ByteBlock half(ByteBlock bytes) {
#if defined(__AVX512VBMI2__)
    return std::bit_cast<ByteBlock>(
        _mm512_avg_epu8(std::bit_cast<__m512i>(bytes), _mm512_setzero_si512()));
#elif defined(__AVX2__)
    return std::bit_cast<ByteBlock>(
        _mm256_avg_epu8(std::bit_cast<__m256i>(bytes), _mm256_setzero_si256()));
#else
    return (bytes >> 1) + (bytes & 1);
#endif
}

// Flipping bit 5 puts the lead bytes 81-9F and E0-EF of Shift-JIS side by side, as A1-CF.
inline constexpr Byte kJoinLeads = 0x20;

struct ShiftJisToEucBytes {
    static ByteBlock convert_pairs(ByteBlock bytes) {
        return join_pairs(lead(bytes, second_to_first(bytes)), trail(bytes, bytes));
    }
    static Mask could_lead(ByteBlock bytes) { return range_mask(bytes ^ kJoinLeads, 0xA1, 0xCF); }
    static Mask could_trail(ByteBlock bytes) { return range_mask(bytes, 0x40, 0xFC); }
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
        return join_pairs(lead(bytes, bytes), trail(first_to_second(bytes), bytes));
    }
    static ByteBlock lead(ByteBlock bytes, ByteBlock) {
        constexpr auto kOffset = static_cast<Byte>(0x90 - HighBit / 2);
        return (half(bytes) + kOffset) ^ kJoinLeads;
    }
    static ByteBlock trail(ByteBlock before, ByteBlock bytes) {
        constexpr auto kOffset = static_cast<Byte>(0x7E - HighBit);
        constexpr auto kBefore7f = static_cast<signed char>(0x5F + HighBit);
        const ByteBlock odd_row = -(before & 1);
        return bytes + kOffset - (odd_row & (0x5F + as_unsigned(as_signed(bytes) > kBefore7f)));
    }
};

struct EucToShiftJisBytes : ToShiftJisBytes<0x80> {
    static Mask could_lead(ByteBlock bytes) { return range_mask(bytes, 0xA1, 0xFE); }
    static Mask could_trail(ByteBlock bytes) { return could_lead(bytes); }
};

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
