#ifndef ZVUTIL_TESTS_PRIVATE_HOST_H
#define ZVUTIL_TESTS_PRIVATE_HOST_H

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

// Gives the process a machine of its own: a node name, and a resolver that knows the hosts of a
// text alone; false where the system grants none.
inline bool enter_private_host(const std::string& node_name, const std::string& hosts) {
    const Folder folder;
    write_file(folder / "hosts", hosts);
    write_file(folder / "order", "hosts: files\n");
    return enter_private_namespaces() && mount_over("/etc/hosts", folder / "hosts") &&
           mount_over("/etc/nsswitch.conf", folder / "order") &&
           sethostname(node_name.data(), node_name.size()) == 0;
}

} // namespace test

#endif
