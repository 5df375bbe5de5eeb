#ifndef ZVUTIL_MBUTIL_TWO_WAY_H
#define ZVUTIL_MBUTIL_TWO_WAY_H

#include "../jaconv/bytes.h"

namespace zv {

// Goes through the places of a terminated text where a string stands. Takes time linear in both,
// whatever they are, and no memory.
class TwoWaySearch {
public:
    TwoWaySearch(const Byte* text, const Byte* string, size_t size);
    // The next place, or null.
    const Byte* next();

private:
    const Byte* text_;
    const Byte* end_; // as far as the text is known to go on
    const Byte* const string_;
    const size_t size_;
    size_t cut_;
    size_t period_;
    bool is_periodic_;
    size_t known_ = 0; // so much of the string's front stands in the text
};

} // namespace zv

#endif
