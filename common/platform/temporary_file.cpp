#include "platform/temporary_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace zv {

int open_temporary_file() {
    // A file that never had a name, and cannot be given one.
    const int unnamed = open(P_tmpdir, O_RDWR | O_TMPFILE | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (unnamed != -1)
        return unnamed;
    // Not every file system has such files.
    char name[] = P_tmpdir "/zvXXXXXX";
    const int named = mkostemp(name, O_CLOEXEC);
    if (named != -1)
        unlink(name);
    return named;
}

} // namespace zv
