#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "osutils.h"
#include "zvstdio.h"

namespace zv {
namespace {

// Longer lines are read and compared in pieces.
constexpr int kLineRoom = 352;

// Leaves errno as it is for what the block does from here on.
class KeptErrno {
public:
    KeptErrno() = default;
    ~KeptErrno() { errno = error_; }
    KeptErrno(const KeptErrno&) = delete;
    KeptErrno& operator=(const KeptErrno&) = delete;

private:
    const int error_ = errno;
};

// An open file with a lock on the whole of it, waited for; released when the file is closed.
class LockedFile {
public:
    LockedFile(const char* path, const char* mode, int lock_type) : stream_(ZVfopen(path, mode)) {
        locked_ = stream_ != nullptr && OSLockZVFile(stream_, lock_type, 1);
    }
    ~LockedFile() {
        const KeptErrno kept;
        ZVfclose(stream_);
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    bool locked() const { return locked_; }
    ZVFILE* stream() const { return stream_; }

private:
    ZVFILE* stream_;
    bool locked_;
};

int find_line(ZVFILE* stream, std::string_view text) {
    char line[kLineRoom];
    int number = 0;
    bool found = false;
    for (long start = 0, end; !found && ZVfgets(line, kLineRoom, stream) != nullptr; start = end) {
        ++number;
        end = ZVftell(stream);
        // The line's own length: it may hold zero bytes.
        found = std::string_view(line, static_cast<size_t>(end - start)) == text;
    }
    if (const int error = ZVferror(stream)) {
        errno = error;
        return -1;
    }
    return found && !ZVfeof(stream) ? number : 0;
}

// Cuts the beginning of a line that could not be written whole.
void cut_torn_line(ZVFILE* stream, off_t size_before) {
    struct stat status;
    const KeptErrno kept;
    // What a writer that takes no lock has put behind it stays.
    if (fstat(ZVfileno(stream), &status) == 0 && status.st_size == ZVftell(stream) &&
        status.st_size > size_before)
        (void)!ftruncate(ZVfileno(stream), size_before);
}

bool append_line(ZVFILE* stream, const char* text) {
    struct stat before;
    if (fstat(ZVfileno(stream), &before) != 0)
        return false;
    if (ZVfprintf(stream, "%s\n", text) > 0)
        return true;
    if (S_ISREG(before.st_mode))
        cut_torn_line(stream, before.st_size);
    return false;
}

} // namespace
} // namespace zv

int OSFindLineInFile(const char* path, const char* text) {
    const zv::LockedFile file(path, "r", ZV_LOCK_READ);
    return file.locked() ? zv::find_line(file.stream(), text) : -1;
}

int OSAppendLineToFile(const char* path, const char* text) {
    const zv::LockedFile file(path, "a", ZV_LOCK_WRITE);
    if (!file.locked() || !zv::append_line(file.stream(), text))
        return -1;
    return OSUnLockZVFile(file.stream()) ? 0 : -1;
}
