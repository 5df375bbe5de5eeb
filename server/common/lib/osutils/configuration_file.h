#ifndef ZVUTIL_OSUTILS_CONFIGURATION_FILE_H
#define ZVUTIL_OSUTILS_CONFIGURATION_FILE_H

#include <cstddef>

namespace zv {

// The longest value of a setting.
constexpr size_t kLongestSetting = 255;

// Reads the value of the last line that begins with the key, without the blanks on both sides and
// cut at its longest; `value` has room for that and a terminator. Empty when there is no such line,
// or when the file is no regular one or cannot be read to its end.
void read_setting(const char* path, const char* key, char* value);

} // namespace zv

#endif
