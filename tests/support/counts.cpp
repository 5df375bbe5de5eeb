#include <cstdlib>

// A test's child that ran to its end leaves by quick_exit(), and so writes what it counted; one
// that was killed or had a fault does not.
extern "C" void __gcov_dump();

[[maybe_unused]] static const int registered = std::at_quick_exit(__gcov_dump);
