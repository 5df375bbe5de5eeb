#include "processor.h"

#ifdef ZVUTIL_WIDE_KERNELS
#ifdef __clang__
#define _Bool bool // the system header uses C's name, which GCC knows in C++ too
#endif
#include <sys/platform/x86.h>

#include <atomic>

namespace zv {
namespace {

[[gnu::noinline]] int ask_vector_size() {
    if (!CPU_FEATURE_ACTIVE(AVX2) || !CPU_FEATURE_ACTIVE(BMI1) || !CPU_FEATURE_ACTIVE(BMI2) ||
        !CPU_FEATURE_ACTIVE(POPCNT) || !CPU_FEATURE_ACTIVE(LZCNT))
        return 16;
    const bool has_avx512 = CPU_FEATURE_ACTIVE(AVX512BW) && CPU_FEATURE_ACTIVE(AVX512VL) &&
                            CPU_FEATURE_ACTIVE(AVX512_VBMI) && CPU_FEATURE_ACTIVE(AVX512_VBMI2);
    return has_avx512 ? 64 : 32;
}

} // namespace

// The C library has asked the processor when the process started; asking it again is slow where the
// machine is a virtual one.
int vector_size() {
    static constinit std::atomic<signed char> known = 0;
    int size = known.load(std::memory_order_relaxed);
    if (size == 0) {
        size = ask_vector_size();
        known.store(static_cast<signed char>(size), std::memory_order_relaxed);
    }
    return size;
}

} // namespace zv

#endif
