#include "support/failing_allocation.h"

#include <cerrno>
#include <cstddef>

// The allocator beneath: the C library's, or the one with which a sanitizer replaces it.
#ifndef __has_feature
#define __has_feature(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) ||                               \
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define BENEATH(name) __interceptor_##name
#else
#define BENEATH(name) __libc_##name
#endif
extern "C" void* BENEATH(malloc)(size_t size);
extern "C" void* BENEATH(calloc)(size_t count, size_t size);
extern "C" void* BENEATH(realloc)(void* block, size_t size);
extern "C" void BENEATH(free)(void* block);

namespace {

// Initial-exec, so that reaching them allocates nothing.
[[gnu::tls_model("initial-exec")]] constinit thread_local long live = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local int until_failure = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool has_failed = false;

bool fails_now() {
    if (until_failure == 0 || --until_failure != 0)
        return false;
    has_failed = true;
    errno = ENOMEM;
    return true;
}

void* counted(void* block) {
    live += block != nullptr;
    return block;
}

} // namespace

namespace test {

long live_blocks() {
    return live;
}

bool fail_allocation(int nth) {
    until_failure = nth;
    return std::exchange(has_failed, false);
}

} // namespace test

extern "C" void* malloc(size_t size) {
    return fails_now() ? nullptr : counted(BENEATH(malloc)(size));
}

extern "C" void* calloc(size_t count, size_t size) {
    return fails_now() ? nullptr : counted(BENEATH(calloc)(count, size));
}

extern "C" void* realloc(void* block, size_t size) {
    if (fails_now())
        return nullptr;
    void* moved = BENEATH(realloc)(block, size);
    if (block == nullptr)
        return counted(moved);
    live -= moved == nullptr && size == 0;
    return moved;
}

extern "C" void free(void* block) {
    live -= block != nullptr;
    BENEATH(free)(block);
}
