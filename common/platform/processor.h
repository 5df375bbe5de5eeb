#ifndef ZVUTIL_PLATFORM_PROCESSOR_H
#define ZVUTIL_PLATFORM_PROCESSOR_H

namespace zv {

// Whether the processor and the system have vectors of 32 bytes (AVX2) and the bit operations that
// come with them.
#ifdef ZVUTIL_AVX2
bool has_avx2();
#else
constexpr bool has_avx2() {
    return false;
}
#endif

} // namespace zv

#endif
