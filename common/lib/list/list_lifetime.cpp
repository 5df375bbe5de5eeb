#include "list_record.h"

#include <algorithm>
#include <cstdlib>

namespace zv {
namespace {

constexpr int kDefaultCapacity = 10;

// Gives 0, or the negative result that stopped it.
int release_items(LIST& list, ListRelease release, void* datum) {
    if (release == nullptr)
        return 0;
    for (int i = list.count - 1; i >= 0; --i) {
        const int result = list.items[i] == nullptr ? 0 : release(list.items[i], datum);
        if (result < 0)
            return result;
    }
    return 0;
}

} // namespace
} // namespace zv

LIST* list_create(int capacity) {
    if (capacity == 0)
        capacity = zv::kDefaultCapacity;
    if (capacity < 0 || capacity > zv::kMostItems)
        return nullptr;
    auto* list = static_cast<LIST*>(std::calloc(1, sizeof(LIST)));
    if (list == nullptr)
        return nullptr;
    list->items = static_cast<void**>(std::calloc(static_cast<size_t>(capacity), sizeof(void*)));
    if (list->items == nullptr) {
        std::free(list);
        return nullptr;
    }
    list->cursor = -1;
    list->capacity = capacity;
    return list;
}

int list_free(LIST* list, ListRelease release, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    const int result = zv::release_items(*list, release, datum);
    if (result < 0)
        return result;
    std::free(list->items);
    std::free(list);
    return 0;
}

int list_removeAll(LIST* list, ListRelease release, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    const int result = zv::release_items(*list, release, datum);
    if (result < 0)
        return result;
    std::fill_n(list->items, list->count, nullptr);
    list->count = 0;
    return 0;
}

int freeListData(void* item, void*) {
    std::free(item);
    return 0;
}

LIST* list_copy(const LIST* list, ListCopy copy, void* datum) {
    if (list == nullptr)
        return nullptr;
    LIST* copied = list_create(list->capacity);
    if (copied == nullptr)
        return nullptr;
    copied->cursor = list->cursor;
    copied->count = list->count;
    if (copy == nullptr) {
        std::copy_n(list->items, list->count, copied->items);
        return copied;
    }
    for (int i = 0; i < copied->count; ++i)
        copied->items[i] = copy(list->items[i], datum);
    return copied;
}

int list_size(const LIST* list) {
    return list == nullptr ? ZV_LIST_NO_LIST : list->count;
}

int list_capacity(const LIST* list) {
    return list == nullptr ? ZV_LIST_NO_LIST : list->capacity;
}

int list_currentItem(const LIST* list) {
    return list == nullptr ? ZV_LIST_NO_LIST : list->cursor;
}

int list_perform(const LIST* list, ListApply apply, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    for (int i = 0; i < list->count; ++i) {
        const int result = list->items[i] == nullptr ? 0 : apply(list->items[i], datum);
        if (result != 0)
            return result;
    }
    return 0;
}
