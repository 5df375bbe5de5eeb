#include <cstdlib>

// A test's child that ran to its end leaves by quick_exit(), and so writes what it counted; one
// that was killed or had a fault does not.
extern "C" void __gcov_dump();

[[gnu::constructor]] static void dump_at_quick_exit() {
    std::at_quick_exit(__gcov_dump);
}
