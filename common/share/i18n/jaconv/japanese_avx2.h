#ifndef ZVUTIL_JACONV_JAPANESE_AVX2_H
#define ZVUTIL_JACONV_JAPANESE_AVX2_H

#include "japanese.h"
#include "wide_kernel.h"

namespace zv {

// The kernels of the Japanese converters for processors with AVX2.

using JisKernel = Converted (*)(Source, Byte* out, JisMode& mode);

#ifdef ZVUTIL_AVX2
// Through ASCII and two-byte characters in any mixture. Something of the source is left.
Converted wide_shift_jis_to_euc(Source source, Byte* out);
Converted wide_euc_to_shift_jis(Source source, Byte* out);

// Through JIS text with the escape sequences in use, perhaps to its end. The mode is that of the
// text at the front of the source, before and after.
Converted wide_jis_to_shift_jis(Source source, Byte* out, JisMode& mode);
Converted wide_jis_to_euc(Source source, Byte* out, JisMode& mode);
#else
inline constexpr Kernel wide_shift_jis_to_euc = nullptr;
inline constexpr Kernel wide_euc_to_shift_jis = nullptr;
inline constexpr JisKernel wide_jis_to_shift_jis = nullptr;
inline constexpr JisKernel wide_jis_to_euc = nullptr;
#endif

} // namespace zv

#endif
