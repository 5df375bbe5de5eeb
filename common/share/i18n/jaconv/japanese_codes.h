#ifndef ZVUTIL_JACONV_JAPANESE_CODES_H
#define ZVUTIL_JACONV_JAPANESE_CODES_H

#include "japanese.h"
#include "scanners.h"

namespace zv {

inline constexpr Byte kEscape = 0x1B;

// Two rows of JIS X 0208 share a Shift-JIS lead byte: the odd row has the trail bytes below 9F,
// which leave out 7F. The lead bytes leave out A0-DF.
struct Code {
    unsigned first;
    unsigned second;
};

constexpr Code jis_from_shift_jis(unsigned lead, unsigned trail) {
    const unsigned odd_row = trail < 0x9F;
    const unsigned row_offset = lead < 0xA0 ? 0x70 : 0xB0;
    const unsigned cell_offset = !odd_row ? 0x7E : trail > 0x7F ? 0x20 : 0x1F;
    return {((lead - row_offset) << 1) - odd_row, trail - cell_offset};
}

constexpr Code shift_jis_from_jis(Code jis) {
    const unsigned row_offset = jis.first < 0x5F ? 0x70 : 0xB0;
    const unsigned cell_offset = jis.first % 2 == 0 ? 0x7E : jis.second > 0x5F ? 0x20 : 0x1F;
    return {((jis.first + 1) >> 1) + row_offset, jis.second + cell_offset};
}

constexpr Code euc_from_jis(Code jis) {
    return {jis.first + 0x80, jis.second + 0x80};
}

constexpr Code jis_from_euc(unsigned first, unsigned second) {
    return {first - 0x80, second - 0x80};
}

// The mode behind ESC and the byte c, with the final byte of a designation or without.
constexpr JisMode mode_behind_escape(int c) {
    return c == 'K' || c == '$' ? JisMode::two_byte : JisMode::single_byte;
}

// Whether a designation follows: one more byte belongs to the escape sequence.
constexpr bool is_designation(int c) {
    return c == '$' || c == '(';
}

} // namespace zv

#endif
