#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>

#include "osutils.h"

int pellorAlarmIsSet = 0;

void OSSleep(unsigned seconds) {
    sleep(seconds);
}

void OSSignalProcess(pid_t process, int signal_number) {
    if (process >= 0)
        kill(process, signal_number);
}

void OSSetProcPrio(int) {}

void OSSetProcLimits() {
    rlimit descriptors;
    if (getrlimit(RLIMIT_NOFILE, &descriptors) != 0)
        return;
    descriptors.rlim_cur = descriptors.rlim_max;
    setrlimit(RLIMIT_NOFILE, &descriptors);
}

void OSInitAlarms() {}

void OSSetAlarmProc(const struct sigaction* action, struct sigaction* old_action) {
    sigaction(SIGALRM, action, old_action);
}

unsigned OSAlarm(unsigned seconds) {
    // Any thread may arm the alarm.
    std::atomic_ref(pellorAlarmIsSet).store(seconds != 0, std::memory_order_relaxed);
    return alarm(seconds);
}

void OSSetDefaultStreamMode() {}
