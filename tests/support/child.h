#ifndef ZVUTIL_TESTS_CHILD_H
#define ZVUTIL_TESTS_CHILD_H

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace test {

// A process of its own for an action void(int out), which answers on that descriptor. It ends with
// this object at the latest.
class Child {
public:
    template <class Action>
    explicit Child(Action action) {
        int ends[2];
        if (pipe(ends) != 0 || (process = fork()) < 0)
            abort();
        if (process == 0) {
            action(ends[1]);
            std::quick_exit(0);
        }
        close(ends[1]);
        answers_ = ends[0];
    }
    ~Child() {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        close(answers_);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // The next byte of its answer; 0 when it has ended without one.
    char await() {
        char byte = 0;
        return read(answers_, &byte, 1) == 1 ? byte : '\0';
    }
    // The rest of its answer, and what it ended with if that is not 0.
    std::string finish() {
        std::string answer;
        while (const char byte = await())
            answer.push_back(byte);
        siginfo_t end{};
        waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT);
        return end.si_status == 0 ? answer : answer + " died of " + std::to_string(end.si_status);
    }

    pid_t process;

private:
    int answers_;
};

} // namespace test

#endif
