#ifndef ZVUTIL_JACONV_BIG5_CNS_TABLES_H
#define ZVUTIL_JACONV_BIG5_CNS_TABLES_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "scanners.h"

namespace zv {

constexpr int kBig5Cells = 157; // in a row
constexpr int kCnsCells = 94;
constexpr int kCnsPlaneSize = kCnsCells * kCnsCells;
constexpr int kCnsPlanes = 4;

// The place of a trail byte in its row, or -1.
constexpr int big5_cell(unsigned trail) {
    if (!Big5Scanner::is_trail(trail))
        return -1;
    return static_cast<int>(trail) - (trail <= 0x7E ? 0x40 : 0x62);
}
constexpr int cns_cell(unsigned trail) {
    return is_gr(trail) ? static_cast<int>(trail) - 0xA1 : -1;
}

// The running number of a two-byte character, or -1.
constexpr int big5_ordinal(unsigned lead, unsigned trail) {
    const int cell = big5_cell(trail);
    return is_gr(lead) && cell >= 0 ? static_cast<int>(lead - 0xA1) * kBig5Cells + cell : -1;
}
constexpr int cns_ordinal(unsigned lead, unsigned trail) {
    const int cell = cns_cell(trail);
    return is_gr(lead) && cell >= 0 ? static_cast<int>(lead - 0xA1) * kCnsCells + cell : -1;
}

// The code of an ordinal, first byte * 256 + second.
constexpr unsigned pair_code(int first, int second) {
    return static_cast<unsigned>(first) << 8 | static_cast<unsigned>(second);
}
constexpr unsigned big5_code(int ordinal) {
    const int cell = ordinal % kBig5Cells;
    return pair_code(ordinal / kBig5Cells + 0xA1, cell + (cell <= big5_cell(0x7E) ? 0x40 : 0x62));
}
constexpr unsigned cns_code(int ordinal) {
    return pair_code(ordinal / kCnsCells + 0xA1, ordinal % kCnsCells + 0xA1);
}

// A code as it stands in text, so that it is written as it is.
using TextCode = uint16_t;
constexpr TextCode text_code(unsigned code) {
    if constexpr (std::endian::native == std::endian::little)
        code = code << 8 | (code >> 8 & 0xFF);
    return static_cast<TextCode>(code);
}

// Tables by the row of a lead byte and the column of a trail byte. The first and the last of either
// are empty and stand for what is no such byte, so that any two bytes may be looked up. Behind the
// rows is a code of all bits, for places where nothing is looked up.
constexpr unsigned count_above(unsigned byte, unsigned last) {
    return byte > last ? byte - last : 0;
}
inline constexpr unsigned kRowsOfSet = 96;
constexpr unsigned row_of(unsigned lead) {
    return count_above(lead, 0xA0);
}

// The CNS character of each Big5 character: its EUC code, of which the high bits, all set in text,
// tell the plane. Both are set for plane 1, only the second byte's for plane 2, only the first
// byte's for plane 3, none for plane 4.
struct CnsOfBig5 {
    static constexpr unsigned kColumns = 160;
    // The column of 7F is empty too, and stands for all up to A0.
    static constexpr unsigned column(unsigned trail) {
        return std::min(count_above(trail, 0x3F), 0x40u) + count_above(trail, 0xA0);
    }
    constexpr TextCode find(Byte lead, Byte trail) const {
        return codes[row_of(lead) * kColumns + column(trail)];
    }

    TextCode codes[kRowsOfSet * kColumns + 1];
};
extern const CnsOfBig5 kCnsOfBig5;

constexpr TextCode kFirstHighBit = text_code(0x8000);
constexpr TextCode kSecondHighBit = text_code(0x0080);
constexpr TextCode kHighBits = kFirstHighBit | kSecondHighBit;

constexpr TextCode mark_plane(TextCode cns, int plane) {
    const unsigned cleared =
        (plane % 2 == 0 ? kFirstHighBit : 0u) | (plane > 2 ? kSecondHighBit : 0u);
    return static_cast<TextCode>(cns & ~cleared);
}
constexpr unsigned plane_of(TextCode cns) {
    return ((cns & kFirstHighBit) != 0 ? 1u : 2u) + ((cns & kSecondHighBit) != 0 ? 0u : 2u);
}

// The Big5 code of each CNS character. The rows of plane 1 are the first; of the other planes,
// those that have characters follow.
struct Big5OfCns {
    static constexpr unsigned kRows = kRowsOfSet + 90;
    static constexpr unsigned kColumns = 96;
    static constexpr unsigned column(unsigned trail) { return count_above(trail, 0xA0); }
    constexpr TextCode find(Byte lead, Byte trail, unsigned plane) const {
        return codes[rows[plane - 1][row_of(lead)] * kColumns + column(trail)];
    }

    uint8_t rows[kCnsPlanes][kRowsOfSet];
    TextCode codes[kRows * kColumns + 1];
};
extern const Big5OfCns kBig5OfCns;

} // namespace zv

#endif
