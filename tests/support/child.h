#ifndef ZVUTIL_TESTS_CHILD_H
#define ZVUTIL_TESTS_CHILD_H

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace test {

// What became of an action in a process of its own.
struct ChildResult {
    int status;         // its exit status, or -1 when it did not exit normally
    std::string output; // what it wrote on the descriptor it was given
};

// A process of its own for an action int(int descriptor), which writes to the parent on it.
class Child {
public:
    template <class Action>
    explicit Child(Action action) {
        int ends[2];
        if (pipe(ends) != 0) abort();
        process_ = fork();
        if (process_ == 0) {
            close(ends[0]);
            _exit(action(ends[1]));
        }
        close(ends[1]);
        output_ = ends[0];
    }
    ~Child() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            finish();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Waits until the child has written a byte, and gives it; 0 when it ended without one.
    char await() {
        char byte = 0;
        return read(output_, &byte, 1) == 1 ? byte : '\0';
    }

    ChildResult finish() {
        ChildResult result{-1, {}};
        char buffer[512];
        for (ssize_t n; (n = read(output_, buffer, sizeof buffer)) > 0;)
            result.output.append(buffer, static_cast<size_t>(n));
        close(output_);
        int status = 0;
        if (waitpid(process_, &status, 0) == process_ && WIFEXITED(status))
            result.status = WEXITSTATUS(status);
        process_ = 0;
        return result;
    }

    pid_t process() const { return process_; }

private:
    pid_t process_;
    int output_;
};

} // namespace test

#endif
