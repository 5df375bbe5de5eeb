#include "processor.h"

#ifdef ZVUTIL_WIDE_KERNELS
#ifdef __clang__
#define _Bool bool // the system header uses C's name, which GCC knows in C++ too
#endif
#include <sys/platform/x86.h>

namespace zv {
namespace {

int find_vector_size() {
    if (!CPU_FEATURE_ACTIVE(AVX2) || !CPU_FEATURE_ACTIVE(BMI1) || !CPU_FEATURE_ACTIVE(BMI2) ||
        !CPU_FEATURE_ACTIVE(POPCNT) || !CPU_FEATURE_ACTIVE(LZCNT))
        return 16;
    const bool has_avx512 = CPU_FEATURE_ACTIVE(AVX512BW) && CPU_FEATURE_ACTIVE(AVX512VL) &&
                            CPU_FEATURE_ACTIVE(AVX512_VBMI) && CPU_FEATURE_ACTIVE(AVX512_VBMI2);
    return has_avx512 ? 64 : 32;
}

} // namespace

constinit std::atomic<signed char> known_vector_size = 0;

// The C library has asked the processor when the process started; asking it again is slow where the
// machine is a virtual one.
int ask_vector_size() {
    const int size = find_vector_size();
    known_vector_size.store(static_cast<signed char>(size), std::memory_order_relaxed);
    return size;
}

} // namespace zv

#endif
