#ifndef ZVUTIL_MBUTIL_CONVERSION_H
#define ZVUTIL_MBUTIL_CONVERSION_H

#include <cstddef>

namespace zv {

// The most bytes, terminator included, that convertStrExt() writes for `length` bytes of text. The
// one place where the worst case of a conversion is reckoned.
size_t converted_room(int from, int to, size_t length);

// Converts a line and copies as many of its characters as fit into `size` bytes, at least 1, with
// a terminator. The line may stand in dst. False, with dst untouched, when there is no memory.
bool convert_line(char* dst, int size, const char* line, int from, int to);

} // namespace zv

#endif
