#ifndef ZVUTIL_FUZZ_MEMORY_H
#define ZVUTIL_FUZZ_MEMORY_H

#include <cstddef>

#ifndef ZVUTIL_ADDRESS_SANITIZER
#include "faults/faults.h"
#include "support/guarded.h"
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace fuzz {

#ifdef ZVUTIL_ADDRESS_SANITIZER

// A heap block of exactly that room, whose ends the address sanitizer guards.
class Room {
public:
    explicit Room(size_t size) : block_(new char[size]) { memset(block_.get(), '#', size); }
    char* data() { return block_.get(); }
    const unsigned char* bytes() const { return reinterpret_cast<unsigned char*>(block_.get()); }
    // The string that stands at the front of the room.
    std::string text() const { return block_.get(); }

private:
    std::unique_ptr<char[]> block_;
};

// A string whose terminator is the last byte of its block.
class Text : public Room {
public:
    explicit Text(std::string_view text) : Room(text.size() + 1) {
        data()[text.copy(data(), text.size())] = '\0';
    }
};

// The sanitizer counts by itself, and its own allocations do not fail.
inline long live_blocks() {
    return 0;
}
bool without_its_memory(auto action, int = 1) {
    return action(), false;
}

#else

// Memory that ends at an inaccessible page.
using Room = test::GuardedRoom;
using Text = test::GuardedText;

using test::live_blocks;

// Runs an action whose nth allocation fails, which leaves nothing behind. Gives whether there was
// one.
bool without_its_memory(auto action, int nth = 1) {
    const long blocks = test::live_blocks();
    test::inject(nth);
    action();
    const bool failed = test::inject(0);
    if (failed && test::live_blocks() != blocks)
        std::fputs("\nKeeps memory\n", stderr), abort();
    return failed;
}

#endif

} // namespace fuzz

#endif
