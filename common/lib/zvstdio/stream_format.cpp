// The checked form of vsnprintf() ends the process at a format that counts with %n or, as
// translations do, leaves an argument out.
#undef _FORTIFY_SOURCE

#include "stream.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

// Longer texts need memory.
constexpr size_t kFormatSize = 16384;

} // namespace

int ZVfprintf(ZVFILE* stream, const char* format, ...) {
    if (!zv::is_open(stream))
        return 0;
    char room[kFormatSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(room, sizeof room, format, arguments);
    va_end(arguments);
    if (length <= 0)
        return length;

    const auto size = static_cast<size_t>(length);
    if (size < sizeof room)
        return static_cast<int>(ZVfwrite(room, 1, size, stream));
    auto* text = static_cast<char*>(std::malloc(size + 1));
    if (text == nullptr)
        return 0;
    va_start(arguments, format);
    std::vsnprintf(text, size + 1, format, arguments);
    va_end(arguments);
    const size_t written = ZVfwrite(text, 1, size, stream);
    std::free(text);
    return static_cast<int>(written);
}
