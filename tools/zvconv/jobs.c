#include "jobs.h"

#include <errno.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "messages.h"

/* Takes one index after the other, as all the processes do. */
static bool take_turns(atomic_int* next, int count, bool (*work)(void*, int), void* context) {
    bool good = true;
    for (int i; (i = atomic_fetch_add(next, 1)) < count;)
        good = work(context, i) && good;
    return good;
}

/* Waits for a process and tells how it ended. */
static bool ended_well(pid_t process) {
    int status;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR)
            return complain_of("process");
    }
    if (WIFSIGNALED(status))
        return complain("a process was ended by signal %d (%s); files are left unconverted",
                        WTERMSIG(status), strsignal(WTERMSIG(status)));
    return WEXITSTATUS(status) == EXIT_SUCCESS;
}

bool run_jobs(int processes, int count, bool (*work)(void*, int), void* context) {
    atomic_int alone = 0;
    processes = processes < count ? processes : count;
    if (processes <= 1)
        return take_turns(&alone, count, work, context);
    atomic_int* next =
        mmap(NULL, sizeof *next, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    pid_t* started = calloc((size_t)processes, sizeof *started);
    if (next == MAP_FAILED || started == NULL) {
        free(started);
        return complain("no memory");
    }
    const pid_t parent = getpid();
    int running = 0;
    bool good = true;
    while (running < processes) {
        const pid_t process = fork();
        if (process == 0) { /* ends with its parent, as by a signal that it knows */
            if (prctl(PR_SET_PDEATHSIG, SIGTERM) != 0 || getppid() != parent)
                _exit(EXIT_FAILURE);
            _exit(take_turns(next, count, work, context) ? EXIT_SUCCESS : EXIT_FAILURE);
        }
        if (process < 0)
            break;
        started[running++] = process;
    }
    if (running == 0)
        good = take_turns(next, count, work, context);
    for (int i = 0; i < running; ++i)
        good = ended_well(started[i]) && good;
    if (atomic_load(next) < count)
        good = complain("files are left unconverted");
    free(started);
    munmap(next, sizeof *next);
    return good;
}
