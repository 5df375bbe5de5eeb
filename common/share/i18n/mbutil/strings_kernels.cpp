// Compiled for vectors of 32 bytes.
#include "strings_kernels.h"

#ifdef __AVX2__

namespace zv {

template <class Scanner>
const Byte* wide_run_of_leads(const Byte* first, const Byte* p) {
    return run_of_leads<Scanner>(first, p);
}

template <class Scanner>
const Byte* wide_skip_well_formed(const Byte* p, size_t left) {
    return skip_well_formed<Scanner>(p, left);
}

#define ZVUTIL_FOR_SCANNER(Scanner)                                                                \
    template const Byte* wide_run_of_leads<Scanner>(const Byte*, const Byte*);                     \
    template const Byte* wide_skip_well_formed<Scanner>(const Byte*, size_t);
ZVUTIL_FOR_SCANNER(SingleByteScanner)
ZVUTIL_FOR_SCANNER(EucScanner)
ZVUTIL_FOR_SCANNER(ShiftJisScanner)
ZVUTIL_FOR_SCANNER(GrPairScanner)
ZVUTIL_FOR_SCANNER(Big5Scanner)
ZVUTIL_FOR_SCANNER(EucTwScanner)
ZVUTIL_FOR_SCANNER(Ksc87Scanner)
ZVUTIL_FOR_SCANNER(Ksc92Scanner)

} // namespace zv

#endif
