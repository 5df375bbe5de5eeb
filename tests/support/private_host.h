#ifndef ZVUTIL_TESTS_PRIVATE_HOST_H
#define ZVUTIL_TESTS_PRIVATE_HOST_H

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "support/folder.h"

namespace test {

// Gives the process a node name and mounts that only it sees; false where the system grants none.
inline bool enter_private_namespaces() {
    const std::string user = "0 " + std::to_string(geteuid()) + " 1",
                      group = "0 " + std::to_string(getegid()) + " 1";
    // A process with threads, as the thread sanitizer makes them, gets no user namespace. Mounts
    // must be private before there are others: those could spread beyond the process.
    if (unshare(CLONE_NEWUSER | CLONE_NEWUTS | CLONE_NEWNS) == 0) {
        write_file("/proc/self/uid_map", user);
        write_file("/proc/self/setgroups", "deny");
        write_file("/proc/self/gid_map", group);
    } else if (unshare(CLONE_NEWUTS | CLONE_NEWNS) != 0) {
        return false;
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

inline bool mount_over(const char* system_path, const std::string& own) {
    return mount(own.c_str(), system_path, nullptr, MS_BIND, nullptr) == 0;
}

// A machine of a test's own: its node is "alpha", and its resolver knows these hosts alone.
struct PrivateHost : testing::Test {
    void SetUp() override {
        const Folder folder;
        write_file(folder / "hosts", "10.1.2.3 alpha.beta.gamma alpha mirror\n"
                                     "10.1.2.4 delta.beta.gamma delta beta\n"
                                     "10.1.3.0 one.a a0\n10.1.3.1 two.a a1\n"
                                     "10.1.3.2 three.a a2\n10.1.3.3 four.a a3\n");
        write_file(folder / "order", "hosts: files\n");
        if (!enter_private_namespaces() || !mount_over("/etc/hosts", folder / "hosts") ||
            !mount_over("/etc/nsswitch.conf", folder / "order") || sethostname("alpha", 5) != 0)
            GTEST_SKIP() << "a private host is refused";
    }
};

} // namespace test

#endif
