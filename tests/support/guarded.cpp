#include "support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace test {

namespace {

constexpr size_t kPooledSize = 64 * 1024;

// Mappings of kPooledSize that this thread does not use: making one takes far longer than most
// tests' calls.
std::vector<char*>& pool() {
    static thread_local std::vector<char*> mappings;
    return mappings;
}

size_t page_size() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

char* map_with_guard(size_t usable) {
    void* mapping = mmap(nullptr, usable + page_size(), PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED ||
        mprotect(static_cast<char*>(mapping) + usable, page_size(), PROT_NONE) != 0)
        abort();
    return static_cast<char*>(mapping);
}

} // namespace

GuardedRoom::GuardedRoom(size_t size)
    : usable_(size <= kPooledSize ? kPooledSize
                                  : (size + page_size() - 1) / page_size() * page_size()) {
    if (usable_ == kPooledSize && !pool().empty()) {
        mapping_ = pool().back();
        pool().pop_back();
    } else {
        mapping_ = map_with_guard(usable_);
    }
    data_ = mapping_ + usable_ - size;
    // What a function must write itself, such as a terminator, is not there by chance.
    memset(data_, '#', size);
}

GuardedRoom::~GuardedRoom() {
    if (usable_ == kPooledSize)
        pool().push_back(mapping_);
    else
        munmap(mapping_, usable_ + page_size());
}

GuardedText::GuardedText(std::string_view text) : GuardedRoom(text.size() + 1) {
    memcpy(data(), text.data(), text.size());
    data()[text.size()] = '\0';
}

} // namespace test
