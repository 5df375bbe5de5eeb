#ifndef ZVUTIL_TESTS_FAILING_ALLOCATION_H
#define ZVUTIL_TESTS_FAILING_ALLOCATION_H

#include <utility>

namespace test {

// A test built with support/failing_allocation.cpp has its own malloc(), calloc(), realloc() and
// free(), which the whole process uses. They count by thread.

// The blocks that this thread has allocated less those that it has released.
long live_blocks();

// Makes the nth allocation of this thread from now on fail, once, with ENOMEM; 0 lets all succeed.
// Gives whether the allocation that the call before asked for has failed.
bool fail_allocation(int nth);

// Runs an operation whose nth allocation fails. Gives its result, and whether there was such an
// allocation.
template <class Operation>
auto with_failing_allocation(int nth, Operation operation) {
    fail_allocation(nth);
    auto result = operation();
    return std::pair(std::move(result), fail_allocation(0));
}

// Runs an operation with its first allocation failing, then its second and so on, handing each
// result to `failed`, until it succeeds with none left to fail. Gives that result.
template <class Operation, class Failed>
auto after_each_failing_allocation(Operation operation, Failed failed) {
    for (int nth = 1;; ++nth) {
        auto [result, met] = with_failing_allocation(nth, operation);
        if (!met) return result;
        failed(result);
    }
}

} // namespace test

#endif
