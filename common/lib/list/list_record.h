#ifndef ZVUTIL_LIST_RECORD_H
#define ZVUTIL_LIST_RECORD_H

#include <cstddef>
#include <cstdint>

#include "list.h"

// The slots from `count` on are always null.
struct LIST {
    int cursor;
    int count;
    int capacity;
    void** items;
};

namespace zv {

// The most items and slots of a list.
constexpr int kMostItems = 32767;

inline void* status_item(int status) {
    return ZV_LIST_ITEM(status);
}

inline bool holds(const LIST& list, int position) {
    return position >= 0 && position < list.count;
}

// Moves the cursor to a slot that there is.
inline void*& go_to(LIST& list, int position) {
    list.cursor = position;
    return list.items[position];
}

// The order of items where the caller gives none.
inline int compare_values(const void* a, const void* b) {
    const auto x = reinterpret_cast<intptr_t>(a);
    const auto y = reinterpret_cast<intptr_t>(b);
    return x < y ? -1 : x > y;
}

} // namespace zv

#endif
