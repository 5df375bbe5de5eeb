#include "support/failing_allocation.h"

#include <cerrno>
#include <cstddef>

// The allocator beneath: the C library's, or where there is one, a sanitizer's in its place.
#define ALLOCATOR_BENEATH(result, name, ...)                                                       \
    extern "C" result __libc_##name(__VA_ARGS__);                                                  \
    extern "C" [[gnu::weak]] result __interceptor_##name(__VA_ARGS__);
#define BENEATH(name) (__interceptor_##name ? __interceptor_##name : __libc_##name)

ALLOCATOR_BENEATH(void*, malloc, size_t)
ALLOCATOR_BENEATH(void*, calloc, size_t, size_t)
ALLOCATOR_BENEATH(void*, realloc, void*, size_t)
ALLOCATOR_BENEATH(void, free, void*)

namespace {

constinit thread_local long live = 0;
constinit thread_local int until_failure = 0;
constinit thread_local bool has_failed = false;

template <class... Arguments>
void* allocate(void* (*beneath)(Arguments...), Arguments... arguments) {
    if (until_failure != 0 && --until_failure == 0) {
        has_failed = true;
        errno = ENOMEM;
        return nullptr;
    }
    void* block = beneath(arguments...);
    live += block != nullptr;
    return block;
}

} // namespace

long test::live_blocks() { return live; }

bool test::fail_allocation(int nth) {
    until_failure = nth;
    return std::exchange(has_failed, false);
}

extern "C" void* malloc(size_t size) { return allocate(BENEATH(malloc), size); }
extern "C" void* calloc(size_t count, size_t size) {
    return allocate(BENEATH(calloc), count, size);
}
extern "C" void* realloc(void* block, size_t size) {
    void* moved = allocate(BENEATH(realloc), block, size);
    // The old block is gone where it has moved, or was released by the size 0.
    live -= block != nullptr && (moved != nullptr || size == 0);
    return moved;
}
extern "C" void free(void* block) {
    live -= block != nullptr;
    BENEATH(free)(block);
}
