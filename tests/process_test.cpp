#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "osutils.h"
#include "support/child.h"
#include "support/failing_allocation.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

constexpr int kNoNamespace = 77;

bool write_file(const char* path, const std::string& text) {
    const int fd = open(path, O_WRONLY);
    const bool written = fd >= 0 && write(fd, text.data(), text.size()) == ssize_t(text.size());
    close(fd);
    return written;
}

// Gives the process mounts of its own, as root or as root of a user namespace of its own.
bool own_mounts() {
    const std::string user = "0 " + std::to_string(getuid()) + " 1";
    const std::string group = "0 " + std::to_string(getgid()) + " 1";
    return unshare(CLONE_NEWNS) == 0 ||
           (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
            write_file("/proc/self/setgroups", "deny") && write_file("/proc/self/uid_map", user) &&
            write_file("/proc/self/gid_map", group));
}

// A socket at /dev/log of which only this process knows; or -1.
int own_log_socket() {
    if (!own_mounts() || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", "/dev", "tmpfs", 0, nullptr) != 0)
        return -1;
    const int log = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
    const sockaddr_un address{AF_UNIX, "/dev/log"};
    return bind(log, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? log : -1;
}

// The messages that an action sends to the system log, one a line: priority, ": " and the text.
test::ChildResult log_of(void (*action)()) {
    return test::Child([action](int out) {
               const int log = own_log_socket();
               if (log < 0) return dprintf(out, "%s", strerror(errno)) > 0 ? kNoNamespace : 1;
               action();
               char message[1024];
               for (ssize_t n; (n = recv(log, message, sizeof message - 1, 0)) > 0;) {
                   message[n] = '\0';
                   const char* text = strstr(message, "]: ");
                   dprintf(out, "%.*s%s\n", int(strchr(message, '>') - message + 1), message,
                           text != nullptr ? text + 1 : "?");
               }
               return 0;
           })
        .finish();
}

TEST(SystemLog, EachFunctionPassesItsValuesInOrder) {
    const test::ChildResult log = log_of([] {
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
        closelog();
        openlog("host", LOG_PID, LOG_USER);
        OSLogString("user");
    });
    if (log.status == kNoNamespace) GTEST_SKIP() << "a private /dev/log is refused: " << log.output;
    EXPECT_EQ(log.output, "<27>: 1 text 7fffffffffffffff -4 5\n"
                          "<27>: 1 2 3 4 5\n"
                          "<27>: 1 2 3 text\n"
                          "<27>: 1 2 3 4 text\n"
                          "<27>: 1 2 3 4 5\n"
                          "<27>: 1 2 3 4\n"
                          "<27>: 100%s %n %m\n"
                          "<27>: %d%%\n"
                          "<27>: No space left on device\n"
                          "<11>: user\n");
}

TEST(Alarm, GoesOffAndEndsASleep) {
    static volatile sig_atomic_t alarms = 0;
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) { alarms = alarms + 1; };
    OSInitAlarms();
    OSSetAlarmProc(&action, nullptr);
    OSSetAlarmProc(nullptr, &before);
    EXPECT_EQ(before.sa_handler, action.sa_handler);

    EXPECT_EQ(pellorAlarmIsSet, 0);
    EXPECT_EQ(OSAlarm(1000), 0u);
    EXPECT_EQ(pellorAlarmIsSet, 1);
    EXPECT_NEAR(OSAlarm(0), 1000, 2);
    EXPECT_EQ(pellorAlarmIsSet, 0);

    const time_t start = time(nullptr);
    EXPECT_EQ(OSAlarm(1), 0u);
    OSSleep(60);
    EXPECT_EQ(alarms, 1);
    EXPECT_LT(time(nullptr) - start, 30);
    EXPECT_EQ(pellorAlarmIsSet, 1) << "an alarm that goes off leaves the flag";
}

// Whether a blocked signal has come, taking it.
bool took(int signal_number) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal_number);
    const timespec at_once{};
    return sigtimedwait(&set, nullptr, &at_once) == signal_number;
}

TEST(SignalProcess, NegativeIdsSignalNobody) {
    // SIGURG disturbs nobody, should it go further than it may.
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGURG);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    OSSignalProcess(getpid(), SIGURG);
    EXPECT_TRUE(took(SIGURG));
    test::Child child([](int out) {
        setpgid(0, 0);
        OSSignalProcess(-1, SIGURG);
        OSSignalProcess(-getpid(), SIGURG);
        const bool by_negative_id = took(SIGURG);
        OSSignalProcess(0, SIGURG);
        return dprintf(out, "%d%d", by_negative_id, took(SIGURG)) == 2 ? 0 : 1;
    });
    EXPECT_EQ(child.finish().output, "01");
    EXPECT_FALSE(took(SIGURG));
}

TEST(ProcessLimits, OpenFilesRiseToTheHardLimit) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit low{limit.rlim_max / 2, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    OSSetProcLimits();
    rlimit raised{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &raised), 0);
    EXPECT_EQ(raised.rlim_cur, limit.rlim_max);
    EXPECT_EQ(raised.rlim_max, limit.rlim_max);
}

#define SYSTEM_CATALOGUES "/usr/lib/locale/%L/LC_MESSAGES/%N"

TEST(InitLanguage, CompletesTheEnvironment) {
    const struct {
        const char *lang, *catalogues, *expected_lang, *expected_catalogues;
    } cases[] = {
        {nullptr, nullptr, "C", SYSTEM_CATALOGUES},
        {"", "", "C", SYSTEM_CATALOGUES},
        {"ja", "/opt/msg/%N", "ja", "/opt/msg/%N:" SYSTEM_CATALOGUES},
        {"C", SYSTEM_CATALOGUES, "C", SYSTEM_CATALOGUES ":" SYSTEM_CATALOGUES},
    };
    const auto set = [](const char* name, const char* value) {
        return value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    };
    for (const auto& c : cases) {
        set("LANG", c.lang);
        set("NLSPATH", c.catalogues);
        OSInitLanguage();
        EXPECT_STREQ(getenv("LANG"), c.expected_lang);
        EXPECT_STREQ(getenv("NLSPATH"), c.expected_catalogues);
    }
}

TEST(InitLanguage, WithoutMemoryLeavesTheCatalogues) {
    setenv("LANG", "ja", 1);
    setenv("NLSPATH", "/opt/more/%N", 1);
    const auto value = [] { return OSInitLanguage(), getenv("NLSPATH"); };
    for (const int nth : {1, 2})
        EXPECT_STREQ(test::with_failing_allocation(nth, value).first, "/opt/more/%N");
    EXPECT_STREQ(value(), "/opt/more/%N:" SYSTEM_CATALOGUES);
}

TEST(SystemInformation, AgreesWithUname) {
    test::GuardedRoom hardware(258);
    EXPECT_EQ(OSGetHardware(hardware.data()), 1);
    EXPECT_EQ(hardware.text() + "\n", test::output_of("uname -m"));
    test::GuardedRoom system(516);
    EXPECT_EQ(OSGetOS(system.data()), 1);
    EXPECT_EQ(system.text() + "\n", test::output_of("uname -sr"));
}

TEST(SystemInformation, TimeStampsFollowTheClock) {
    const time_t before = time(nullptr);
    ZVStatsTime stamp{};
    OSGetTimeForStats(&stamp);
    EXPECT_GE(stamp.seconds, before - 1);
    EXPECT_LE(stamp.seconds, time(nullptr));
    EXPECT_LT(stamp.microseconds, 1000000u);
}

} // namespace
