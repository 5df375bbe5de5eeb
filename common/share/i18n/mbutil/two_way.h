#ifndef ZVUTIL_MBUTIL_TWO_WAY_H
#define ZVUTIL_MBUTIL_TWO_WAY_H

#include "accepts.h"

namespace zv {

// Where a terminated text first holds a string in an accepted place, or null. Takes time linear in
// both, whatever they are, and no memory.
const Byte* find_by_two_ways(const Byte* text, const Byte* string, size_t size, Accepts accepts);

} // namespace zv

#endif
