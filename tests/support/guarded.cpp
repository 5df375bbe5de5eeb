#include "support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace test {

namespace {

constexpr size_t kStep = 64 * 1024;

// The ends of the mappings of a size that this thread does not use: making one takes far longer
// than most tests' calls.
std::vector<char*>& unused(size_t capacity) {
    static thread_local std::map<size_t, std::vector<char*>> ends;
    return ends[capacity];
}

char* map_with_guard(size_t capacity) {
    const int access = PROT_READ | PROT_WRITE, flags = MAP_PRIVATE | MAP_ANONYMOUS;
    void* mapping = mmap(nullptr, capacity + kStep, access, flags, -1, 0);
    if (mapping == MAP_FAILED) abort();
    char* end = static_cast<char*>(mapping) + capacity;
    if (mprotect(end, kStep, PROT_NONE) != 0) abort();
    return end;
}

} // namespace

GuardedRoom::GuardedRoom(size_t size) : capacity_((size / kStep + 1) * kStep) {
    if (unused(capacity_).empty()) unused(capacity_).push_back(map_with_guard(capacity_));
    end_ = unused(capacity_).back();
    unused(capacity_).pop_back();
    // What a function must write itself, such as a terminator, is not there by chance.
    data_ = static_cast<char*>(memset(end_ - size, '#', size));
}

GuardedRoom::~GuardedRoom() { unused(capacity_).push_back(end_); }

} // namespace test
