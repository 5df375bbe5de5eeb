#ifndef ZVUTIL_TESTS_CALLS_H
#define ZVUTIL_TESTS_CALLS_H

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <utility>

namespace test {

// A call in a table of calls: as the source has it, and how to make it.
using Call = std::pair<const char*, std::function<long()>>;
#define CALL(call) test::Call(#call, [&] { return long(call); })

// Each of the calls gives that result and that errno, 0 for one that it leaves alone.
template <class... Calls>
void expect_each(long result, int error, const Calls&... calls) {
    for (const auto& [text, make] : {calls...}) {
        errno = 0;
        EXPECT_EQ(make(), result) << text;
        EXPECT_EQ(errno, error) << text;
    }
}

} // namespace test

#endif
