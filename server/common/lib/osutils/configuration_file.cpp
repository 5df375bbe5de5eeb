#include "configuration_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace zv {
namespace {

constexpr size_t kLineRoom = 284; // a longer line arrives in pieces

// What stands behind the key, without the blanks on both sides. The key may end in blanks itself.
std::string_view value_of(std::string_view line, size_t key_length) {
    line.remove_suffix(line.size() - (line.find_last_not_of(" \t\r\n") + 1));
    line.remove_prefix(std::min(key_length, line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    return line;
}

// A pipe or a device in the file's place would keep the reader waiting, or never end.
std::FILE* open_regular_file(const char* path) {
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor == -1)
        return nullptr;
    struct stat status;
    const bool is_regular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    std::FILE* file = is_regular ? fdopen(descriptor, "r") : nullptr;
    if (file == nullptr)
        close(descriptor);
    return file;
}

} // namespace

void read_setting(const char* path, const char* key, char* value) {
    *value = '\0';
    std::FILE* file = open_regular_file(path);
    if (file == nullptr)
        return;
    const size_t key_length = std::strlen(key);
    char line[kLineRoom];
    while (std::fgets(line, sizeof line, file) != nullptr) {
        if (std::strncmp(line, key, key_length) != 0)
            continue;
        const std::string_view found = value_of(line, key_length);
        const size_t length = std::min(found.size(), kLongestSetting);
        std::memcpy(value, found.data(), length);
        value[length] = '\0';
    }
    // What stands before a fault may be what a later line replaces.
    if (std::ferror(file))
        *value = '\0';
    std::fclose(file);
}

} // namespace zv
