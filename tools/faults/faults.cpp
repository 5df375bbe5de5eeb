#include "faults/faults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

using namespace test;

constinit thread_local long live = 0;
constinit thread_local Fault injected = kNoMemory;
constinit thread_local int until_fault = 0;
constinit thread_local bool has_failed = false;
constinit thread_local long inherited = 0;
constinit thread_local uint32_t released = 0;

enum class Fate { goes_on, comes_short, fails };

Fate fate_of(Calls call) {
    if (until_fault == 0 || (injected.calls & call) == 0)
        return Fate::goes_on;
    if (until_fault > 1)
        return --until_fault, Fate::goes_on;
    const bool first = !std::exchange(has_failed, true);
    if (--injected.times == 0)
        until_fault = 0;
    if (injected.error == 0 || (first && injected.begins_short))
        return Fate::comes_short;
    if (injected.meanwhile != nullptr) {
        const int left = std::exchange(until_fault, 0);
        injected.meanwhile();
        until_fault = left;
    }
    errno = injected.error;
    return Fate::fails;
}

// Behind a block stands a fence, most of it bytes that nobody may write, and at its end where it
// begins. A block without that, as of aligned memory, has none; a sanitizer has its own.
class Fence {
public:
    static bool stands() { return __interceptor_malloc == nullptr; }
    static size_t with_block(size_t size) {
        return stands() && size < SIZE_MAX / 2 ? size + 48 : size;
    }

    explicit Fence(void* block)
        : block_(static_cast<unsigned char*>(block)),
          end_(reinterpret_cast<End*>(block_ + (malloc_usable_size(block) & ~size_t{15})) - 1) {}
    void put(size_t size) {
        std::fill(block_ + size, reinterpret_cast<unsigned char*>(end_), kByte);
        *end_ = {size, mark(size)};
    }
    void take_away() {
        const auto intact = [](unsigned char byte) { return byte == kByte; };
        if (end_->mark != mark(end_->size))
            return;
        if (!std::all_of(block_ + end_->size, reinterpret_cast<unsigned char*>(end_), intact))
            abort();
        end_->mark = 0;
    }

private:
    static constexpr unsigned char kByte = 0xFE;
    struct End {
        size_t size;
        uintptr_t mark;
    };
    uintptr_t mark(size_t size) const { return reinterpret_cast<uintptr_t>(block_) ^ ~size; }

    unsigned char* block_;
    End* end_;
};

void* allocated(void* block, size_t size) {
    live += block != nullptr;
    if (block != nullptr && Fence::stands())
        Fence(block).put(size);
    return block;
}
void release(void* block) {
    if (block != nullptr && Fence::stands())
        Fence(block).take_away();
}

// Calls that handle offsets have a second form with offsets of 64 bits. It is the one that the
// headers mean here, under the first one's name.
template <class Function>
Function* next_in_line(Function*, const char* name, const char* large) {
    void* const found = dlsym(RTLD_NEXT, large);
    return reinterpret_cast<Function*>(found != nullptr ? found : dlsym(RTLD_NEXT, name));
}

template <class Transfer>
ssize_t transfer(Calls call, size_t size, Transfer beneath) {
    const Fate fate = fate_of(call);
    if (fate == Fate::fails)
        return -1;
    return beneath(fate == Fate::comes_short && size > 1 ? size / 2 : size);
}

int descriptor_of(void* cookie) {
    return static_cast<int>(reinterpret_cast<intptr_t>(cookie));
}

// A stream whose system calls are those here, which a standard stream's own are not.
FILE* stream_over(int descriptor, const char* mode) {
    cookie_io_functions_t calls{};
    calls.read = [](void* file, char* to, size_t n) { return read(descriptor_of(file), to, n); };
    calls.write = [](void* file, const char* from, size_t n) {
        ssize_t done = 0, written = 1;
        for (; size_t(done) < n && written > 0; done += std::max<ssize_t>(written, 0))
            written = write(descriptor_of(file), from + done, n - size_t(done));
        return done;
    };
    calls.seek = [](void* file, off64_t* place, int whence) {
        *place = lseek(descriptor_of(file), *place, whence);
        return *place < 0 ? -1 : 0;
    };
    calls.close = [](void* file) { return close(descriptor_of(file)); };
    return fopencookie(reinterpret_cast<void*>(intptr_t{descriptor}), mode, calls);
}

} // namespace

#define NEXT(name) static const auto beneath = next_in_line(name, #name, #name "64")
#define FAULTY(result, name, call, failure, parameters, arguments)                                 \
    extern "C" result name parameters {                                                            \
        NEXT(name);                                                                                \
        return fate_of(call) == Fate::fails ? failure : beneath arguments;                         \
    }

FAULTY(int, mkostemp, kOpen, -1, (char* name, int flags), (name, flags))
FAULTY(DIR*, opendir, kOpen, nullptr, (const char* path), (path))
FAULTY(dirent*, readdir, kRead, nullptr, (DIR * entries), (entries))
FAULTY(off_t, lseek, kSeek, -1, (int fd, off_t place, int whence) noexcept, (fd, place, whence))
FAULTY(int, fstat, kStatus, -1, (int fd, struct stat* to) noexcept, (fd, to))
FAULTY(int, stat, kStatus, -1, (const char* path, struct stat* to) noexcept, (path, to))
FAULTY(int, ftruncate, kTruncate, -1, (int fd, off_t size) noexcept, (fd, size))
FAULTY(int, fsync, kSync, -1, (int fd), (fd))
FAULTY(int, uname, kMachine, -1, (utsname * to) noexcept, (to))

extern "C" ssize_t read(int fd, void* to, size_t size) {
    NEXT(read);
    return transfer(kRead, size, [&](size_t n) { return beneath(fd, to, n); });
}
extern "C" ssize_t pread(int fd, void* to, size_t size, off_t place) {
    NEXT(pread);
    return transfer(kRead, size, [&](size_t n) { return beneath(fd, to, n, place); });
}
extern "C" ssize_t write(int fd, const void* from, size_t size) {
    NEXT(write);
    return transfer(kWrite, size, [&](size_t n) { return beneath(fd, from, n); });
}

extern "C" int open(const char* path, int flags, ...) {
    NEXT(open);
    va_list rest;
    va_start(rest, flags);
    const bool creates = (flags & (O_CREAT | O_TMPFILE)) != 0;
    const mode_t mode = creates ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    inherited += (flags & O_CLOEXEC) == 0;
    return fate_of(kOpen) == Fate::fails ? -1 : beneath(path, flags, mode);
}
extern "C" int fcntl(int fd, int command, ...) {
    NEXT(fcntl);
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    const bool locks = command == F_SETLK || command == F_SETLKW;
    const bool unlocks = locks && static_cast<const struct flock*>(argument)->l_type == F_UNLCK;
    const bool fails = locks && fate_of(unlocks ? kUnlock : kLock) == Fate::fails;
    return fails ? -1 : beneath(fd, command, argument);
}

extern "C" FILE* fopen(const char* path, const char* mode) {
    NEXT(fopen);
    if (until_fault == 0)
        return beneath(path, mode);
    const int writing = O_WRONLY | O_CREAT | (*mode == 'a' ? O_APPEND : O_TRUNC);
    const int fd = open(path, *mode == 'r' ? O_RDONLY : writing, 0666);
    if (fd < 0)
        return nullptr;
    FILE* stream = stream_over(fd, mode);
    if (stream == nullptr)
        close(fd);
    return stream;
}
extern "C" FILE* fdopen(int fd, const char* mode) noexcept {
    NEXT(fdopen);
    return until_fault == 0 ? beneath(fd, mode) : stream_over(fd, mode);
}

extern "C" void* malloc(size_t size) {
    if (fate_of(kMemory) == Fate::fails)
        return nullptr;
    return allocated(BENEATH(malloc)(Fence::with_block(size)), size);
}
extern "C" void* calloc(size_t count, size_t size) {
    size_t total;
    if (__builtin_mul_overflow(count, size, &total))
        total = SIZE_MAX;
    if (fate_of(kMemory) == Fate::fails)
        return nullptr;
    return allocated(BENEATH(calloc)(1, Fence::with_block(total)), total);
}
extern "C" void* realloc(void* block, size_t size) {
    if (fate_of(kMemory) == Fate::fails)
        return nullptr;
    if (block != nullptr && size == 0)
        return free(block), nullptr;
    release(block);
    void* moved = BENEATH(realloc)(block, Fence::with_block(size));
    live -= block != nullptr && moved != nullptr; // the old block is gone where it has moved
    return allocated(moved, size);
}
extern "C" void free(void* block) {
    live -= block != nullptr;
    release(block);
    if (block != nullptr)
        memcpy(&released, block, sizeof released); // no block is smaller
    BENEATH(free)(block);
}

long test::live_blocks() {
    return live;
}
long test::inherited_descriptors() {
    return inherited;
}
unsigned test::last_released() {
    return released;
}

bool test::inject(int nth, const Fault& fault) {
    until_fault = nth;
    injected = fault;
    return std::exchange(has_failed, false);
}
