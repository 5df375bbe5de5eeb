#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "file_descriptor.h"
#include "osutils.h"

namespace zv {
namespace {

time_t modified_time(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 ? status.st_mtime : 0;
}

} // namespace
} // namespace zv

unsigned char OSFileExists(const char* path) {
    return access(path, F_OK) == 0;
}

time_t OSZVFileModifiedTime(ZVFILE* stream) {
    return zv::modified_time(zv::descriptor_of(stream));
}

time_t OSFileModifiedTime(FILE* stream) {
    return zv::modified_time(zv::descriptor_of(stream));
}

int OSFileSize(const char* path) {
    struct stat status;
    if (stat(path, &status) != 0)
        return -1;
    if (status.st_size > INT_MAX) {
        errno = EOVERFLOW;
        return -1;
    }
    return static_cast<int>(status.st_size);
}

unsigned char OSFileTruncateFd(int descriptor, int length) {
    return ftruncate(descriptor, std::max(length, 0)) == 0;
}

unsigned char OSZVFileTruncate(ZVFILE* stream, int length) {
    return OSFileTruncateFd(zv::descriptor_of(stream), length);
}

unsigned char OSFileTruncate(FILE* stream, int length) {
    return OSFileTruncateFd(zv::descriptor_of(stream), length);
}
