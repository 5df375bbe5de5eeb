#include "list_record.h"

#include <algorithm>
#include <cstdlib>

namespace zv {
namespace {

// Gives the list that capacity, or the most that it may have; refuses if this is not above `used`.
bool grow(LIST& list, int used, int capacity) {
    capacity = std::min(capacity, kMostItems);
    if (capacity <= used)
        return false;
    void* moved = std::realloc(list.items, static_cast<size_t>(capacity) * sizeof(void*));
    if (moved == nullptr)
        return false;
    list.items = static_cast<void**>(moved);
    std::fill(list.items + list.capacity, list.items + capacity, nullptr);
    list.capacity = capacity;
    return true;
}

int append(LIST& list, void* item) {
    go_to(list, list.count) = item;
    ++list.count;
    return 0;
}

// Apart from list_addItem(), which then needs no stack frame.
[[gnu::noinline]] int grow_and_append(LIST& list, void* item) {
    if (!grow(list, list.count, list.capacity + list.capacity / 5 + 5))
        return ZV_LIST_NO_MEMORY;
    return append(list, item);
}

// Counts from the position, not from the capacity.
bool grow_for_position(LIST& list, int position) {
    const int increment = std::clamp(list.capacity / 5, 10, 100);
    return position < kMostItems && grow(list, position, position + increment);
}

} // namespace
} // namespace zv

int list_addItem(LIST* list, void* item) {
    if (list == nullptr) [[unlikely]]
        return ZV_LIST_NO_LIST;
    if (list->count == list->capacity) [[unlikely]]
        return zv::grow_and_append(*list, item);
    return zv::append(*list, item);
}

int list_addNth(LIST* list, int position, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    if (position < 0)
        return ZV_LIST_NO_POSITION;
    if (position >= list->capacity && !zv::grow_for_position(*list, position))
        return ZV_LIST_NO_MEMORY;
    zv::go_to(*list, position) = item;
    list->count = std::max(list->count, position + 1);
    return 0;
}

int list_insertNth(LIST* list, int position, void* item) {
    if (list == nullptr || !zv::holds(*list, position))
        return list_addNth(list, position, item);
    if (list->count == list->capacity && !zv::grow_for_position(*list, list->capacity))
        return ZV_LIST_NO_MEMORY;
    void** end = list->items + list->count;
    std::copy_backward(list->items + position, end, end + 1);
    zv::go_to(*list, position) = item;
    ++list->count;
    return 0;
}

int list_addUnique(LIST* list, void* item, ListCompare compare, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    if (!list_isUnique(list, item, compare, datum))
        return ZV_LIST_DUPLICATE;
    return list_addItem(list, item);
}

int list_addSorted(LIST* list, void* item, ListCompare compare, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    for (int i = 0; i < list->count; ++i) {
        const int order = compare == nullptr ? zv::compare_values(item, list->items[i])
                                             : compare(item, list->items[i], datum);
        if (order == -1)
            return list_insertNth(list, i, item);
    }
    return list_addItem(list, item);
}
