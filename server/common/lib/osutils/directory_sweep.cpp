#include <dirent.h>
#include <fnmatch.h>
#include <unistd.h>

#include <cstring>
#include <span>

#include "osutils.h"

namespace zv {
namespace {

constexpr size_t kPathRoom = 512;

// Removes the entries that match. `path` holds the directory's name and "/"; the entries' names go
// into `name`, its rest. Those that do not fit stay.
void remove_matching(DIR* entries, const char* pattern, const char* path, std::span<char> name) {
    while (const dirent* entry = readdir(entries)) {
        const size_t size = std::strlen(entry->d_name) + 1;
        if (size > name.size() || fnmatch(pattern, entry->d_name, 0) != 0)
            continue;
        std::memcpy(name.data(), entry->d_name, size);
        unlink(path);
    }
}

} // namespace
} // namespace zv

int OSRemoveFiles(const char* directory, const char* pattern) {
    char path[zv::kPathRoom];
    const size_t length = std::strlen(directory);
    if (length >= sizeof path)
        return 1;
    DIR* entries = opendir(directory);
    if (entries == nullptr)
        return 1;
    // NOLINTNEXTLINE(bugprone-not-null-terminated-result): a separator and a name follow.
    std::memcpy(path, directory, length);
    path[length] = '/';
    zv::remove_matching(entries, pattern, path, std::span(path).subspan(length + 1));
    closedir(entries);
    return 1;
}
