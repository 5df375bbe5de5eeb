#ifndef ZVUTIL_MBUTIL_CHARACTER_SETS_H
#define ZVUTIL_MBUTIL_CHARACTER_SETS_H

#include <cstddef>

namespace zv {

// Where a string first holds a character of a set, and how many bytes that member of the set has.
// Without one: the length of the string, and 0.
struct SetMatch {
    size_t offset;
    size_t length;
};

// Looks in the current code set, which is multibyte. Neither pointer is NULL.
SetMatch find_in_set(const char* s, const char* set);

} // namespace zv

#endif
