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

// The first allocations come before the thread sanitizer is ready to observe anything.
#define UNOBSERVED __attribute__((no_sanitize("thread")))

namespace {

// Initial-exec, so that reaching them allocates nothing.
[[gnu::tls_model("initial-exec")]] constinit thread_local long live = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local int until_failure = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool has_failed = false;

UNOBSERVED bool fails_now() {
    if (until_failure == 0 || --until_failure != 0) return false;
    has_failed = true;
    errno = ENOMEM;
    return true;
}

UNOBSERVED void* counted(void* block) {
    live += block != nullptr;
    return block;
}

} // namespace

namespace test {

long live_blocks() { return live; }

bool fail_allocation(int nth) {
    until_failure = nth;
    return std::exchange(has_failed, false);
}

} // namespace test

extern "C" UNOBSERVED void* malloc(size_t size) {
    return fails_now() ? nullptr : counted(BENEATH(malloc)(size));
}

extern "C" UNOBSERVED void* calloc(size_t count, size_t size) {
    return fails_now() ? nullptr : counted(BENEATH(calloc)(count, size));
}

extern "C" UNOBSERVED void* realloc(void* block, size_t size) {
    if (fails_now()) return nullptr;
    void* moved = BENEATH(realloc)(block, size);
    if (block == nullptr) return counted(moved);
    live -= moved == nullptr && size == 0;
    return moved;
}

extern "C" UNOBSERVED void free(void* block) {
    live -= block != nullptr;
    BENEATH(free)(block);
}
