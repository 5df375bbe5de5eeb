#include "support/private_host.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace test {
namespace {

std::string failed(const char* what) {
    return std::string(what) + ": " + strerror(errno);
}

// Lets a file of this process stand in the place of a system file.
bool replace_file(const char* path, const std::string& content) {
    char name[] = "/tmp/zvutil-private-XXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0)
        return false;
    const bool done =
        write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size()) &&
        mount(name, path, nullptr, MS_BIND, nullptr) == 0;
    const int reason = errno;
    close(fd);
    unlink(name);
    errno = reason;
    return done;
}

} // namespace

std::string enter_private_host(const std::string& node_name, const std::string& hosts) {
    // A process with threads, as the thread sanitizer makes them, gets no user namespace.
    if (unshare(CLONE_NEWUSER | CLONE_NEWUTS | CLONE_NEWNS) != 0 &&
        unshare(CLONE_NEWUTS | CLONE_NEWNS) != 0)
        return failed("no namespaces for a private machine");
    // Without this the mounts could spread beyond the process.
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return failed("no private mounts");
    if (!replace_file("/etc/hosts", hosts) || !replace_file("/etc/nsswitch.conf", "hosts: files\n"))
        return failed("no private resolver");
    if (sethostname(node_name.data(), node_name.size()) != 0)
        return failed("no private node name");
    return "";
}

} // namespace test
