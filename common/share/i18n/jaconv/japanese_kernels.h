#ifndef ZVUTIL_JACONV_JAPANESE_KERNELS_H
#define ZVUTIL_JACONV_JAPANESE_KERNELS_H

#include "japanese.h"

namespace zv {

// The kernels of the Japanese converters for vectors of a size. Each takes ASCII, two-byte
// characters and half-width katakana at the front of the source, perhaps to its end, and stops at
// what is left to the rule.
template <int VectorSize>
struct JapaneseKernels {
    static Converted shift_jis_to_euc(Source source, Byte* out);
    static Converted euc_to_shift_jis(Source source, Byte* out);

    // The mode is that of the text before and behind what is converted. Escape sequences that are
    // not in use are left to the rule.
    static Converted shift_jis_to_jis(Source source, Byte* out, JisMode& mode);
    static Converted euc_to_jis(Source source, Byte* out, JisMode& mode);
    static Converted jis_to_shift_jis(Source source, Byte* out, JisMode& mode);
    static Converted jis_to_euc(Source source, Byte* out, JisMode& mode);

    static size_t count_shift_jis_katakana(Source source);
    static size_t count_euc_katakana(Source source);
};

} // namespace zv

#endif
