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
inline constexpr size_t kPairSize = sizeof(TextCode);
inline Byte* put_code(Byte* out, TextCode code) {
    std::memcpy(out, &code, kPairSize);
    return out + kPairSize;
}

// Tables by the row of a lead byte and the column of a trail byte. What is no such byte, or the
// lead byte of an empty row, has the last row or an empty column, so that any two bytes may be
// looked up.
constexpr unsigned count_up_to(unsigned byte, unsigned first, unsigned most) {
    return std::min((byte - first) & 0xFF, most);
}

// The CNS character of each Big5 character: its EUC code, of which the high bits, all set in text,
// tell the plane. Both are set for plane 1, only the second byte's for plane 2, only the first
// byte's for plane 3, none for plane 4.
struct CnsOfBig5 {
    static constexpr unsigned kLastRow = 0xFA - 0xA1;
    static constexpr unsigned kColumns = 159;
    static constexpr unsigned row(unsigned lead) { return count_up_to(lead, 0xA1, kLastRow); }
    // Between 7E and A1 is one column, which all below 40 have too.
    static constexpr unsigned kNoColumn = 0x7F - 0x40;
    static constexpr unsigned column(unsigned trail) {
        return count_up_to(trail, 0x40, kNoColumn) + (trail > 0xA0 ? trail - 0xA0 : 0);
    }
    constexpr TextCode find(Byte lead, Byte trail) const {
        return codes[row(lead) * kColumns + column(trail)];
    }

    TextCode codes[(kLastRow + 1) * kColumns];
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
    static constexpr unsigned kLastRow = 0xFE - 0xA1; // of plane 1
    static constexpr unsigned kRows = kLastRow + 1 + 90;
    static constexpr unsigned kNoColumn = 0xFF - 0xA1;
    static constexpr unsigned kColumns = kNoColumn + 1;
    static constexpr unsigned row(unsigned lead) { return count_up_to(lead, 0xA1, kLastRow); }
    static constexpr unsigned column(unsigned trail) { return count_up_to(trail, 0xA1, kNoColumn); }
    constexpr TextCode find(Byte lead, Byte trail, unsigned plane) const {
        return codes[rows[plane - 1][row(lead)] * kColumns + column(trail)];
    }

    uint8_t rows[kCnsPlanes][kLastRow + 1];
    TextCode codes[kRows * kColumns];
};
extern const Big5OfCns kBig5OfCns;

// The same for characters of plane 1, in runs whose targets follow one another: at most two in a
// row, and a few exceptions among them. By places of leads as a kernel takes them.
template <int TargetCells, size_t ExceptionPairs>
struct RowRuns {
    static constexpr int kTargetCells = TargetCells;
    static constexpr size_t kPlaces = 64;

    uint8_t first_lead[kPlaces], first_cell[kPlaces]; // of the target of cell 0
    uint8_t second_begin[kPlaces];
    uint8_t second_lead[kPlaces], second_cell[kPlaces]; // as if the second run began at cell 0
    uint8_t end[kPlaces];
    // The first of two cells of which one at least is in no run, or none of the row.
    uint8_t exceptions[ExceptionPairs][kPlaces];
};
using CnsRunsOfBig5 = RowRuns<kCnsCells, 1>;
using Big5RunsOfCns = RowRuns<kBig5Cells, 2>;
extern const CnsRunsOfBig5 kCnsRunsOfBig5;
extern const Big5RunsOfCns kBig5RunsOfCns;

} // namespace zv

#endif
