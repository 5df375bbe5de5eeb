#include "support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace test {

GuardedRoom::GuardedRoom(size_t size) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t usable = (size + page - 1) / page * page;
    mapped_ = usable + page;
    void* mapping =
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        abort();
    mapping_ = static_cast<char*>(mapping);
    if (mprotect(mapping_ + usable, page, PROT_NONE) != 0)
        abort();
    data_ = mapping_ + usable - size;
    // What a function must write itself, such as a terminator, is not there by chance.
    memset(data_, '#', size);
}

GuardedRoom::~GuardedRoom() {
    munmap(mapping_, mapped_);
}

GuardedText::GuardedText(std::string_view text) : GuardedRoom(text.size() + 1) {
    memcpy(data(), text.data(), text.size());
    data()[text.size()] = '\0';
}

} // namespace test
