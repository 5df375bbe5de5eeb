#ifndef ZVUTIL_TESTS_PRIVATE_HOST_H
#define ZVUTIL_TESTS_PRIVATE_HOST_H

#include <string>

namespace test {

// Gives the process a machine of its own: a node name, and a resolver that knows the hosts of a
// file alone. Only this process sees them. What stands in the way, or nothing when all is done.
std::string enter_private_host(const std::string& node_name, const std::string& hosts);

} // namespace test

// Ends the test as skipped, and says why, where the system grants no namespaces.
#define ENTER_PRIVATE_HOST(node_name, hosts)                                                       \
    do {                                                                                           \
        const std::string obstacle = test::enter_private_host(node_name, hosts);                   \
        if (!obstacle.empty()) GTEST_SKIP() << obstacle;                                           \
    } while (false)

#endif
