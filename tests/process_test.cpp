#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/utsname.h>
#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "faults/faults.h"
#include "osutils.h"
#include "support/child.h"
#include "support/guarded.h"
#include "support/oracle.h"
#include "support/private_host.h"

namespace {

using namespace test;

TEST(Process, LogsEachValueInOrder) {
    const Folder devices;
    const int log = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
    sockaddr_un address{AF_UNIX, ""};
    strcpy(address.sun_path, (devices / "log").c_str());
    ASSERT_EQ(bind(log, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    if (!enter_private_namespaces() || !mount_over("/dev", devices / ""))
        GTEST_SKIP() << "a private /dev/log is refused";
    openlog("host", LOG_PID, LOG_DAEMON);
    const intptr_t text = reinterpret_cast<intptr_t>("text");
    OSLogError("%ld %s %lx %ld %ld", 1, text, INTPTR_MAX, -4, 5);
    OSLogError2("%ld %ld %ld %ld %ld", 1, 2, 3, 4, 5);
    OSLogError3("%ld %ld %ld %s", 1, 2, 3, text);
    OSLogErrorWithType("%ld %ld %ld %ld %s", 1, 2, 3, 4, 99, text);
    OSLogError2WithType("%ld %ld %ld %ld %ld", 1, 2, 3, 4, 99, 5);
    OSLogError3WithType("%ld %ld %ld %ld", 1, 2, 3, 99, 4);
    OSLogString("100%s %n %m");
    OSLogStringWithType("%d%%", 99);
    errno = ENOSPC;
    OSLogError("%m", 0, 0, 0, 0, 0);
    int counted = 0;
    // In writable memory, as translations are: one counts, one leaves its first argument out.
    char counting[] = "%ld%n;", second[] = "%2$s";
    OSLogError(counting, 123, reinterpret_cast<intptr_t>(&counted), 0, 0, 0);
    OSLogError3WithType(second, 1, text, 0, 99, 0);
    EXPECT_EQ(counted, 3);
    std::string messages;
    char message[1024];
    for (ssize_t n; (n = recv(log, message, sizeof message, 0)) > 0;)
        messages.append(message, 4).append(strstr(message, "]: "), message + n).append("\n");
    const std::string most = sizeof(long) > 4 ? "7fffffffffffffff" : "7fffffff";
    EXPECT_EQ(messages, "<27>]: 1 text " + most +
                            " -4 5\n<27>]: 1 2 3 4 5\n"
                            "<27>]: 1 2 3 text\n<27>]: 1 2 3 4 text\n<27>]: 1 2 3 4 5\n"
                            "<27>]: 1 2 3 4\n<27>]: 100%s %n %m\n<27>]: %d%%\n"
                            "<27>]: No space left on device\n<27>]: 123;\n<27>]: text\n");
}

TEST(Process, AlarmsGoOffAndEndASleep) {
    static volatile sig_atomic_t alarms = 0;
    struct sigaction action {
    }, before{};
    EXPECT_EQ(pellorAlarmIsSet, 0) << "before the first call";
    action.sa_handler = [](int) { alarms = alarms + 1; };
    OSInitAlarms();
    OSSetAlarmProc(&action, nullptr);
    OSSetAlarmProc(nullptr, &before);
    EXPECT_EQ(before.sa_handler, action.sa_handler);
    EXPECT_EQ(OSAlarm(1000), 0u);
    EXPECT_EQ(pellorAlarmIsSet, 1);
    EXPECT_NEAR(OSAlarm(0), 1000, 2);
    EXPECT_EQ(pellorAlarmIsSet, 0);
    const time_t start = time(nullptr);
    OSAlarm(1);
    OSSleep(60);
    EXPECT_LT(time(nullptr) - start, 30);
    EXPECT_EQ(alarms, 1);
    EXPECT_EQ(pellorAlarmIsSet, 1) << "an alarm that goes off leaves the flag";
}

TEST(Process, SignalsNobodyByANegativeId) {
    sigset_t urgent;
    sigemptyset(&urgent);
    sigaddset(&urgent, SIGURG);
    sigprocmask(SIG_BLOCK, &urgent, nullptr); // It disturbs nobody, should it go too far.
    const auto took_it = [&] {
        const timespec at_once{};
        return sigtimedwait(&urgent, nullptr, &at_once) == SIGURG;
    };
    Child child([&](int out) {
        setpgid(0, 0);
        for (const pid_t process : {-1, -getpid(), 0, getpid()}) {
            OSSignalProcess(process, SIGURG);
            dprintf(out, "%d", took_it());
        }
    });
    EXPECT_EQ(child.finish(), "0011");
    EXPECT_FALSE(took_it());
}

TEST(Process, RaisesTheLimitAndLeavesPriorityAndStreamModes) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t most = limit.rlim_max;
    limit.rlim_cur = most / 2;
    setrlimit(RLIMIT_NOFILE, &limit);
    const int priority = getpriority(PRIO_PROCESS, 0);
    OSSetProcLimits();
    OSSetProcPrio(priority + 5);
    OSSetDefaultStreamMode();
    getrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(limit.rlim_cur, most);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), priority);
}

TEST(Process, CompletesTheLanguageEnvironment) {
    const std::string system = "/usr/lib/locale/%L/LC_MESSAGES/%N";
    const auto completed = [] {
        OSInitLanguage();
        return getenv("LANG") + std::string(" ") + getenv("NLSPATH");
    };
    unsetenv("LANG");
    unsetenv("NLSPATH");
    EXPECT_EQ(completed(), "C " + system);
    setenv("LANG", "", 1);
    setenv("NLSPATH", "", 1);
    EXPECT_EQ(completed(), "C " + system);
    setenv("LANG", "ja", 1);
    setenv("NLSPATH", "/opt/some/%N", 1);
    EXPECT_EQ(completed(), "ja /opt/some/%N:" + system);
    // The environment keeps a block for every new value; nothing else stays.
    const long before = live_blocks();
    setenv("NLSPATH", "/opt/more/%N", 1);
    const long kept = live_blocks() - before;
    for (const int nth : {1, 2}) {
        inject(nth);
        OSInitLanguage();
        EXPECT_TRUE(inject(0)) << nth;
        EXPECT_STREQ(getenv("NLSPATH"), "/opt/more/%N") << nth;
    }
    OSInitLanguage();
    EXPECT_EQ(live_blocks() - before, 2 * kept);
}

TEST(Process, DescribesTheSystem) {
    GuardedRoom hardware(258), system(516);
    EXPECT_EQ(OSGetHardware(hardware.data()), 1);
    EXPECT_EQ(OSGetOS(system.data()), 1);
    EXPECT_EQ(system.text() + "\n", output_of("uname -sr"));
    utsname told; // an emulated one differs from what another program is told
    ASSERT_EQ(uname(&told), 0);
    EXPECT_EQ(hardware.text(), told.machine);
    EXPECT_EQ(hardware.data()[257], '#') << "written behind the answer";
    const Fault refused = {"no answer", kMachine, EFAULT};
    for (const int nth : {1, 2}) {
        memset(system.data(), '#', 516);
        const auto os = [&] { return int{OSGetOS(system.data())}; };
        EXPECT_EQ(with_fault(nth, os, refused), std::pair(0, true)) << nth;
        EXPECT_EQ(system.text(), "") << nth;
    }
    const auto machine = [&] { return int{OSGetHardware(hardware.data())}; };
    EXPECT_EQ(with_fault(1, machine, refused), std::pair(0, true));
    EXPECT_EQ(hardware.text(), "");
    EXPECT_EQ(with_fault(1, InitializeSrvUtil, refused), std::pair(0, true));
    ZVStatsTime stamp{};
    OSGetTimeForStats(&stamp);
    EXPECT_NEAR(double(stamp.seconds), double(time(nullptr)), 2);
    EXPECT_LT(stamp.microseconds, 1000000u);
}

} // namespace
