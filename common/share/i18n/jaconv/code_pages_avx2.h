#ifndef ZVUTIL_JACONV_CODE_PAGES_AVX2_H
#define ZVUTIL_JACONV_CODE_PAGES_AVX2_H

#include "wide_kernel.h"

namespace zv {

// Convert whole blocks for processors with AVX2. The output may stand where the source does.
#ifdef ZVUTIL_AVX2
Converted wide_iso_2_to_windows_1250(Source source, Byte* out);
Converted wide_windows_1250_to_iso_2(Source source, Byte* out);
#else
inline constexpr Kernel wide_iso_2_to_windows_1250 = nullptr;
inline constexpr Kernel wide_windows_1250_to_iso_2 = nullptr;
#endif

} // namespace zv

#endif
