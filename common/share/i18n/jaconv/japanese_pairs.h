#ifndef ZVUTIL_JACONV_JAPANESE_PAIRS_H
#define ZVUTIL_JACONV_JAPANESE_PAIRS_H

#include "kernels.h"

namespace zv {
inline namespace ZVUTIL_LANES {

// The arithmetic of japanese_codes.h on all bytes of a block: what they become if they are lead
// bytes, and if they are trail bytes. `next` and `before` are the bytes that follow and precede
// them. Sums wrap; comparisons give -1 for true.

// Where `mask` is all ones `a`, where it is zero `b`.
inline ByteBlock choose(SignedByteBlock mask, ByteBlock a, ByteBlock b) {
#ifdef __AVX2__
    return mask < 0 ? a : b;
#else
    return (as_unsigned(mask) & a) | (~as_unsigned(mask) & b);
#endif
}

// The bytes halved, upwards.
inline ByteBlock half(ByteBlock bytes) {
#if defined(__AVX2__)
    using Chars [[gnu::vector_size(kBlockSize)]] = char;
    return std::bit_cast<ByteBlock>(__builtin_ia32_pavgb256(std::bit_cast<Chars>(bytes), Chars{}));
#else
    return (bytes >> 1) + (bytes & 1);
#endif
}

// Flipping bit 5 puts the lead bytes 81-9F and E0-EF of Shift-JIS side by side, as A1-CF.
inline constexpr Byte kJoinLeads = 0x20;

struct ShiftJisToEucBytes {
    static SignedByteBlock could_lead(ByteBlock bytes) {
        return (bytes ^ kJoinLeads) - 0xA1 <= 0xCF - 0xA1;
    }
    static SignedByteBlock could_trail(ByteBlock bytes) { return bytes - 0x40 <= 0xFC - 0x40; }
    // The trail bytes of odd rows, below 9F, become negative, those of even rows do not.
    static SignedByteBlock row_sign(ByteBlock trail) { return as_signed(trail + 0x61); }
    static ByteBlock lead(ByteBlock bytes, ByteBlock next) {
        const ByteBlock joined = bytes ^ kJoinLeads;
        return joined + joined - 0xA0 + as_unsigned(row_sign(next) < 0);
    }
    static ByteBlock trail(ByteBlock, ByteBlock bytes) {
        const SignedByteBlock odd = row_sign(bytes);
        return choose(odd < 0, as_unsigned(odd + (as_signed(bytes) < 0)), bytes + 2);
    }
};

// From EUC, or with high bits of 0 from JIS.
template <Byte HighBit>
struct ToShiftJisBytes {
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
    static SignedByteBlock could_lead(ByteBlock bytes) { return bytes - 0xA1 <= 0xFE - 0xA1; }
    static SignedByteBlock could_trail(ByteBlock bytes) { return could_lead(bytes); }
};

// Kernels of convert_run(): blocks of pairs.

// Where the output never is shorter than the source, what is left of the source is safe. A
// half-width katakana of EUC is shorter in Shift-JIS by half; an escape sequence of JIS leaves
// nothing.
inline constexpr size_t kSafeWhereNothingShrinks = kBlockSize;
inline constexpr size_t kSafeFromEucToShiftJis = 2 * kBlockSize;
inline constexpr size_t kNeverSafe = static_cast<size_t>(-1);

template <size_t SafeLeft>
struct PairKernel {
    static constexpr size_t kCharacter = 2;
    static constexpr size_t kSafeLeft = SafeLeft;

    static SignedByteBlock first_bytes() {
        return std::bit_cast<SignedByteBlock>(PairBlock{} + (kFirstIsLow ? 0x00FF : 0xFF00));
    }
    template <class Bytes>
    static ByteBlock convert_pairs(ByteBlock bytes) {
        return choose(first_bytes(), Bytes::lead(bytes, second_to_first(bytes)),
                      Bytes::trail(first_to_second(bytes), bytes));
    }
};

struct ShiftJisToEucPairs : PairKernel<kSafeWhereNothingShrinks> {
    static ByteBlock not_plain(ByteBlock bytes) {
        return ~choose(first_bytes(), as_unsigned(ShiftJisToEucBytes::could_lead(bytes)),
                       as_unsigned(ShiftJisToEucBytes::could_trail(bytes)));
    }
    static ByteBlock convert(ByteBlock bytes) { return convert_pairs<ShiftJisToEucBytes>(bytes); }
};

struct EucToShiftJisPairs : PairKernel<kSafeFromEucToShiftJis> {
    static ByteBlock not_plain(ByteBlock bytes) {
        return ~as_unsigned(EucToShiftJisBytes::could_lead(bytes));
    }
    static ByteBlock convert(ByteBlock bytes) { return convert_pairs<EucToShiftJisBytes>(bytes); }
};

struct ShiftJisToJisPairs : ShiftJisToEucPairs {
    static ByteBlock convert(ByteBlock bytes) { return ShiftJisToEucPairs::convert(bytes) & 0x7F; }
};

struct EucToJisPairs : PairKernel<kSafeWhereNothingShrinks> {
    static ByteBlock not_plain(ByteBlock bytes) { return EucToShiftJisPairs::not_plain(bytes); }
    static ByteBlock convert(ByteBlock bytes) { return bytes & 0x7F; }
};

// Bytes below 21 may be line ends or the escape, those from 80 on, which are negative, are no JIS.
// 7F is none either, but the arithmetic is the same.
struct JisToEucPairs : PairKernel<kNeverSafe> {
    static SignedByteBlock is_plain(ByteBlock bytes) { return as_signed(bytes) > 0x20; }
    static SignedByteBlock not_plain(ByteBlock bytes) { return ~is_plain(bytes); }
    static ByteBlock convert(ByteBlock bytes) { return bytes | 0x80; }
};

struct JisToShiftJisPairs : JisToEucPairs {
    static ByteBlock convert(ByteBlock bytes) { return convert_pairs<ToShiftJisBytes<0>>(bytes); }
};

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
