#ifndef ZVUTIL_MBUTIL_CONVERSION_H
#define ZVUTIL_MBUTIL_CONVERSION_H

#include <cstddef>

namespace zv {

// The most bytes, terminator included, that convertStrExt() writes for `length` bytes of text. The
// one place where the worst case of a conversion is reckoned.
size_t converted_room(int from, int to, size_t length);

} // namespace zv

#endif
