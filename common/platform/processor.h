// Expects, for wide vectors, an x86-64 processor and glibc's <sys/platform/x86.h>, which says what
// both processor and system support; cmake/sources.cmake looks for it. Elsewhere nothing.
#ifndef ZVUTIL_PLATFORM_PROCESSOR_H
#define ZVUTIL_PLATFORM_PROCESSOR_H

#ifdef ZVUTIL_WIDE_KERNELS
#include <atomic>
#endif

namespace zv {

// What is compiled for wide vectors alone asks for this size.
inline constexpr int kWideVectors = 32;

// How many bytes the processor's and the system's vectors have: 64 with the AVX-512 instructions
// that move single bytes (VBMI2), 32 with AVX2, each with the bit operations that come with them,
// else 16.
#ifdef ZVUTIL_WIDE_KERNELS
extern constinit std::atomic<signed char> known_vector_size; // 0 before it is asked
int ask_vector_size();
inline int vector_size() {
    const int size = known_vector_size.load(std::memory_order_relaxed);
    return size != 0 ? size : ask_vector_size();
}
#else
constexpr int vector_size() {
    return 16;
}
#endif

} // namespace zv

#endif
