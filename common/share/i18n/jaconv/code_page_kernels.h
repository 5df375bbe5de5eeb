#ifndef ZVUTIL_JACONV_CODE_PAGE_KERNELS_H
#define ZVUTIL_JACONV_CODE_PAGE_KERNELS_H

#include "bytes.h"

namespace zv {

// The converters of the single-byte code pages for vectors of a size. They give the end of the
// output, which may stand where the source does.
template <int VectorSize>
struct CodePageKernels {
    static Byte* iso_5_to_windows_1251(Source source, Byte* out);
    static Byte* windows_1251_to_iso_5(Source source, Byte* out);
    static Byte* iso_2_to_windows_1250(Source source, Byte* out);
    static Byte* windows_1250_to_iso_2(Source source, Byte* out);
};

} // namespace zv

#endif
