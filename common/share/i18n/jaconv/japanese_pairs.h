#ifndef ZVUTIL_JACONV_JAPANESE_PAIRS_H
#define ZVUTIL_JACONV_JAPANESE_PAIRS_H

#include "kernels.h"

namespace zv {

// The arithmetic of japanese_codes.h on eight characters at a time. Comparisons give -1 for true.

inline SignedPairBlock first_bytes(PairBlock pairs) {
    return std::bit_cast<SignedPairBlock>(pairs & 0xFF);
}

inline SignedPairBlock second_bytes(PairBlock pairs) {
    return std::bit_cast<SignedPairBlock>(pairs >> 8);
}

inline PairBlock join(SignedPairBlock first, SignedPairBlock second) {
    return std::bit_cast<PairBlock>(first) | std::bit_cast<PairBlock>(second) << 8;
}

inline PairBlock unless(SignedPairBlock condition) {
    return std::bit_cast<PairBlock>(~condition);
}

// Flipping bit 5 puts the lead bytes 81-9F and E0-EF of Shift-JIS side by side, as A1-CF.
inline constexpr std::int16_t kJoinLeads = 0x20;

struct ShiftJisToEucPairs {
    static PairBlock not_plain(PairBlock pairs) {
        const SignedPairBlock lead = first_bytes(pairs) ^ kJoinLeads;
        const SignedPairBlock trail = second_bytes(pairs);
        return unless((lead > 0xA0) & (lead < 0xD0) & (trail > 0x3F) & (trail < 0xFD));
    }
    static PairBlock convert(PairBlock pairs) {
        const SignedPairBlock lead = first_bytes(pairs) ^ kJoinLeads;
        const SignedPairBlock trail = second_bytes(pairs);
        const SignedPairBlock even_row = trail > 0x9E;
        const SignedPairBlock first = lead + lead - 0xA1 - even_row;
        const SignedPairBlock second = trail + 0x61 + (trail > 0x7F) - (even_row & 0x5E);
        return join(first & 0xFF, second);
    }
};

struct EucToShiftJisPairs {
    static ByteBlock not_plain(PairBlock pairs) {
        const ByteBlock bytes = std::bit_cast<ByteBlock>(pairs);
        return std::bit_cast<ByteBlock>((bytes < 0xA1) | (bytes > 0xFE));
    }
    static PairBlock convert(PairBlock pairs) {
        const SignedPairBlock row = first_bytes(pairs);
        const SignedPairBlock cell = second_bytes(pairs);
        const SignedPairBlock odd_row = -(row & 1);
        const SignedPairBlock lead = (((row - 0x7F) >> 1) + 0x90) ^ kJoinLeads;
        const SignedPairBlock trail = cell - 2 - (odd_row & (0x5F + (cell > 0xDF)));
        return join(lead & 0xFF, trail);
    }
};

struct ShiftJisToJisPairs {
    static PairBlock not_plain(PairBlock pairs) { return ShiftJisToEucPairs::not_plain(pairs); }
    static PairBlock convert(PairBlock pairs) {
        return ShiftJisToEucPairs::convert(pairs) & 0x7F7F;
    }
};

struct EucToJisPairs {
    static ByteBlock not_plain(PairBlock pairs) { return EucToShiftJisPairs::not_plain(pairs); }
    static PairBlock convert(PairBlock pairs) { return pairs & 0x7F7F; }
};

// Bytes below 21 may be line ends or the escape, those above 7E are no JIS at all.
struct JisToEucPairs {
    static ByteBlock not_plain(PairBlock pairs) {
        const ByteBlock bytes = std::bit_cast<ByteBlock>(pairs);
        return std::bit_cast<ByteBlock>((bytes < 0x21) | (bytes > 0x7E));
    }
    static PairBlock convert(PairBlock pairs) { return pairs | 0x8080; }
};

struct JisToShiftJisPairs {
    static ByteBlock not_plain(PairBlock pairs) { return JisToEucPairs::not_plain(pairs); }
    static PairBlock convert(PairBlock pairs) {
        return EucToShiftJisPairs::convert(pairs | 0x8080);
    }
};

} // namespace zv

#endif
