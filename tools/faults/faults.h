#ifndef ZVUTIL_TOOLS_FAULTS_H
#define ZVUTIL_TOOLS_FAULTS_H

#include <cerrno>
#include <climits>
#include <utility>

namespace test {

// A program that is linked with this has its own malloc(), read() and so on, which the whole
// process uses and which fail when they are told to. They count by thread.

enum Calls : unsigned {
    kMemory = 1,
    kOpen = 2,
    kRead = 4,
    kWrite = 8,
    kSeek = 16,
    kLock = 32,
    kUnlock = 64,
    kStatus = 128,
    kTruncate = 256,
    kSync = 512,
    kMachine = 1024,
};

struct Fault {
    const char* name;
    unsigned calls;                // one number counts them all
    int error;                     // 0: they come back short where they can
    int times = 1;                 // as many calls in a row fail
    bool begins_short = false;     // only the calls behind the first one fail
    void (*meanwhile)() = nullptr; // what somebody else does just before a call fails
};
constexpr int kForever = INT_MAX;
constexpr Fault kNoMemory = {"no memory", kMemory, ENOMEM};

// The blocks that this thread has allocated less those that it has released. A block that has been
// written behind its end ends the process when it is released.
long live_blocks();
// What the block that this thread has released last began with.
unsigned last_released();
// The descriptors that this thread has opened and that the programs it executes would have too.
long inherited_descriptors();

// Makes the nth such call of this thread from now on fail; 0 lets all succeed. Gives whether the
// fault that the call before asked for has been met. Until it has, fopen() and fdopen() give
// streams that go through the calls here.
bool inject(int nth, const Fault& fault = kNoMemory);

// Runs an operation whose nth call fails. Gives its result, and whether there was such a call.
template <class Operation>
auto with_fault(int nth, Operation operation, const Fault& fault = kNoMemory) {
    inject(nth, fault);
    auto result = operation();
    return std::pair(std::move(result), inject(0));
}

} // namespace test

#endif
