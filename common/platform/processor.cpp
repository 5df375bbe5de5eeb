#include "processor.h"

#ifdef ZVUTIL_AVX2
#ifdef __clang__
#define _Bool bool // the system header uses C's name, which GCC knows in C++ too
#endif
#include <sys/platform/x86.h>

#include <atomic>

namespace zv {

// The C library has asked the processor when the process started; asking it again is slow where the
// machine is a virtual one.
bool has_avx2() {
    enum : signed char { kUnknown = -1, kAbsent, kPresent };
    static constinit std::atomic<signed char> known = kUnknown;
    signed char answer = known.load(std::memory_order_relaxed);
    if (answer == kUnknown) {
        const bool present =
            CPU_FEATURE_ACTIVE(AVX2) && CPU_FEATURE_ACTIVE(BMI1) && CPU_FEATURE_ACTIVE(BMI2);
        answer = present ? kPresent : kAbsent;
        known.store(answer, std::memory_order_relaxed);
    }
    return answer == kPresent;
}

} // namespace zv

#endif
