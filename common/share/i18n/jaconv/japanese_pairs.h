#ifndef ZVUTIL_JACONV_JAPANESE_PAIRS_H
#define ZVUTIL_JACONV_JAPANESE_PAIRS_H

#include "kernels.h"

namespace zv {

// The arithmetic of japanese_codes.h on the eight characters of a block. Comparisons give -1 for
// true.

inline SignedPairBlock first_bytes(ByteBlock bytes) {
    return std::bit_cast<SignedPairBlock>(std::bit_cast<PairBlock>(bytes) & 0xFF);
}

inline SignedPairBlock second_bytes(ByteBlock bytes) {
    return std::bit_cast<SignedPairBlock>(std::bit_cast<PairBlock>(bytes) >> 8);
}

inline ByteBlock join(SignedPairBlock first, SignedPairBlock second) {
    return std::bit_cast<ByteBlock>(std::bit_cast<PairBlock>(first) |
                                    std::bit_cast<PairBlock>(second) << 8);
}

inline ByteBlock outside(ByteBlock bytes, Byte first, Byte last) {
    return std::bit_cast<ByteBlock>((bytes < first) | (bytes > last));
}

// Where the output never is shorter than the source, what is left of the source is safe. A
// half-width katakana of EUC is shorter in Shift-JIS by half; an escape sequence of JIS leaves
// nothing.
inline constexpr size_t kSafeWhereNothingShrinks = kBlockSize;
inline constexpr size_t kSafeFromEucToShiftJis = 2 * kBlockSize;
inline constexpr size_t kNeverSafe = static_cast<size_t>(-1);

// Flipping bit 5 puts the lead bytes 81-9F and E0-EF of Shift-JIS side by side, as A1-CF.
inline constexpr std::int16_t kJoinLeads = 0x20;

template <size_t SafeLeft>
struct PairKernel {
    static constexpr size_t kCharacter = 2;
    static constexpr size_t kSafeLeft = SafeLeft;
};

struct ShiftJisToEucPairs : PairKernel<kSafeWhereNothingShrinks> {
    static SignedPairBlock not_plain(ByteBlock bytes) {
        const SignedPairBlock lead = first_bytes(bytes) ^ kJoinLeads;
        const SignedPairBlock trail = second_bytes(bytes);
        return (lead < 0xA1) | (lead > 0xCF) | (trail < 0x40) | (trail > 0xFC);
    }
    static ByteBlock convert(ByteBlock bytes) {
        const SignedPairBlock lead = first_bytes(bytes) ^ kJoinLeads;
        const SignedPairBlock trail = second_bytes(bytes);
        const SignedPairBlock even_row = trail > 0x9E;
        const SignedPairBlock first = lead + lead - 0xA1 - even_row;
        const SignedPairBlock second = trail + 0x61 + (trail > 0x7F) - (even_row & 0x5E);
        return join(first & 0xFF, second);
    }
};

struct EucToShiftJisPairs : PairKernel<kSafeFromEucToShiftJis> {
    static ByteBlock not_plain(ByteBlock bytes) { return outside(bytes, 0xA1, 0xFE); }
    static ByteBlock convert(ByteBlock bytes) {
        const SignedPairBlock row = first_bytes(bytes);
        const SignedPairBlock cell = second_bytes(bytes);
        const SignedPairBlock odd_row = -(row & 1);
        const SignedPairBlock lead = (((row - 0x7F) >> 1) + 0x90) ^ kJoinLeads;
        const SignedPairBlock trail = cell - 2 - (odd_row & (0x5F + (cell > 0xDF)));
        return join(lead & 0xFF, trail);
    }
};

struct ShiftJisToJisPairs : ShiftJisToEucPairs {
    static ByteBlock convert(ByteBlock bytes) { return ShiftJisToEucPairs::convert(bytes) & 0x7F; }
};

struct EucToJisPairs : PairKernel<kSafeWhereNothingShrinks> {
    static ByteBlock not_plain(ByteBlock bytes) { return outside(bytes, 0xA1, 0xFE); }
    static ByteBlock convert(ByteBlock bytes) { return bytes & 0x7F; }
};

// Bytes below 21 may be line ends or the escape, those above 7E are no JIS at all.
struct JisToEucPairs : PairKernel<kNeverSafe> {
    static ByteBlock not_plain(ByteBlock bytes) { return outside(bytes, 0x21, 0x7E); }
    static ByteBlock convert(ByteBlock bytes) { return bytes | 0x80; }
};

struct JisToShiftJisPairs : JisToEucPairs {
    static ByteBlock convert(ByteBlock bytes) { return EucToShiftJisPairs::convert(bytes | 0x80); }
};

} // namespace zv

#endif
