#include <cstdio>
#include <cstring>

#include "osutils.h"

namespace zv {
namespace {

constexpr size_t kLongestFilename = 255;

} // namespace
} // namespace zv

int OSRename(const char* old_path, const char* new_path) {
    return std::rename(old_path, new_path);
}

unsigned char OSBuildFilename(const char* directory, const char* name, char* out) {
    const char* base = *name == '/' ? "" : directory;
    const size_t base_length = std::strlen(base);
    const size_t name_length = std::strlen(name);
    if (base_length + name_length > zv::kLongestFilename) {
        *out = '\0';
        return 0;
    }
    std::memcpy(out, base, base_length);
    std::memcpy(out + base_length, name, name_length + 1);
    return 1;
}
