#ifndef ZVUTIL_TESTS_INTERRUPTIONS_H
#define ZVUTIL_TESTS_INTERRUPTIONS_H

#include <signal.h>
#include <unistd.h>

namespace test {

// While it lives, signals interrupt the process every few milliseconds; the system calls that they
// meet are not restarted.
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { count = count + 1; };
        sigaction(SIGALRM, &action, nullptr);
        ualarm(3000, 3000);
    }
    ~Interruptions() { ualarm(0, 0); }

    static inline volatile sig_atomic_t count = 0;
};

} // namespace test

#endif
