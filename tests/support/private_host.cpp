#include "support/private_host.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstring>

#include "support/temporary_file.h"

namespace test {
namespace {

// Lets a file of this process stand in the place of a system file.
bool replace_file(const char* path, const std::string& contents) {
    const TemporaryFile file(contents);
    return mount(file.path(), path, nullptr, MS_BIND, nullptr) == 0;
}

} // namespace

std::string enter_private_host(const std::string& node_name, const std::string& hosts) {
    // A process with threads, as the thread sanitizer makes them, gets no user namespace. Private
    // mounts come first: others could spread beyond the process.
    const bool entered = (unshare(CLONE_NEWUSER | CLONE_NEWUTS | CLONE_NEWNS) == 0 ||
                          unshare(CLONE_NEWUTS | CLONE_NEWNS) == 0) &&
                         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                         replace_file("/etc/hosts", hosts) &&
                         replace_file("/etc/nsswitch.conf", "hosts: files\n") &&
                         sethostname(node_name.data(), node_name.size()) == 0;
    return entered ? "" : std::string("no private host name and resolver: ") + strerror(errno);
}

} // namespace test
