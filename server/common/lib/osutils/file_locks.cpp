#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "file_descriptor.h"
#include "osutils.h"

namespace zv {
namespace {

struct flock whole_file(int type) {
    struct flock request {};
    request.l_type = static_cast<short>(type);
    request.l_whence = SEEK_SET;
    // Length 0 reaches to the end, however far the file grows.
    return request;
}

bool lock_despite_signals(int descriptor, int command, int type) {
    for (;;) {
        struct flock request = whole_file(type);
        if (fcntl(descriptor, command, &request) == 0)
            return true;
        if (errno != EINTR)
            return false;
    }
}

} // namespace
} // namespace zv

unsigned char OSLockFileFd(int descriptor, int lock_type, int wait) {
    const int command = wait == 1 ? F_SETLKW : F_SETLK;
    const int type = lock_type == ZV_LOCK_WRITE ? F_WRLCK : F_RDLCK;
    // NOLINTNEXTLINE(misc-redundant-expression): by the second attempt the other may be done.
    return zv::lock_despite_signals(descriptor, command, type) ||
           zv::lock_despite_signals(descriptor, command, type);
}

unsigned char OSLockZVFile(ZVFILE* stream, int lock_type, int wait) {
    return OSLockFileFd(zv::descriptor_of(stream), lock_type, wait);
}

unsigned char OSLockFile(FILE* stream, int lock_type, int wait) {
    return OSLockFileFd(zv::descriptor_of(stream), lock_type, wait);
}

unsigned char OSUnLockFileFd(int descriptor) {
    struct flock request = zv::whole_file(F_UNLCK);
    return fcntl(descriptor, F_SETLK, &request) == 0;
}

unsigned char OSUnLockZVFile(ZVFILE* stream) {
    return OSUnLockFileFd(zv::descriptor_of(stream));
}

unsigned char OSUnLockFile(FILE* stream) {
    return OSUnLockFileFd(zv::descriptor_of(stream));
}
