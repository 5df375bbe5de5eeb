#ifndef ZVUTIL_JACONV_BIG5_CNS_KERNELS_H
#define ZVUTIL_JACONV_BIG5_CNS_KERNELS_H

#include "bytes.h"

namespace zv {

// The kernels of the Chinese converters for vectors of a size. Each takes ASCII and characters of
// plane 1, which holds nearly all of those in use, at the front of the source, perhaps to its end,
// and stops at what is left to the rule.
template <int VectorSize>
struct Big5Kernels {
    static Converted big5_to_euc_tw(Source source, Byte* out);
    static Converted euc_tw_to_big5(Source source, Byte* out);
};

} // namespace zv

#endif
