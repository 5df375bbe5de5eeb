#include <unistd.h>

#include <cstdio>

#include "osutils.h"
#include "platform/temporary_file.h"
#include "zvstdio.h"

const char* OSTmpPath() {
    return "/var/tmp/";
}

char* OSTmpName(const char* prefix) {
    // The linker warns of tempnam(): another user may take the name first, as the header says.
    return tempnam(nullptr, prefix);
}

ZVFILE* OSTmpZVFile() {
    const int descriptor = zv::open_temporary_file();
    if (descriptor == -1)
        return nullptr;
    ZVFILE* stream = ZVfdopen(descriptor, "w+");
    if (stream == nullptr)
        close(descriptor);
    return stream;
}

FILE* OSTmpFile() {
    const int descriptor = zv::open_temporary_file();
    if (descriptor == -1)
        return nullptr;
    std::FILE* stream = fdopen(descriptor, "w+");
    if (stream == nullptr)
        close(descriptor);
    return stream;
}

int OSTmpFileFd() {
    return zv::open_temporary_file();
}
