#include "list_record.h"

namespace {

template <class Matches>
int first_position(const LIST& list, Matches matches) {
    for (int i = 0; i < list.count; ++i) {
        if (matches(list.items[i]))
            return i;
    }
    return ZV_LIST_NO_ITEM;
}

// Without a comparison, an item must be the same as `same`.
int find(const LIST& list, const void* key, const void* same, ListCompare compare, void* datum) {
    if (compare == nullptr)
        return first_position(list, [&](const void* item) { return item == same; });
    return first_position(list, [&](const void* item) { return compare(item, key, datum) == 0; });
}

} // namespace

int list_findItem(LIST* list, const void* key, ListCompare compare, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    const int position = find(*list, key, key, compare, datum);
    if (position >= 0)
        zv::go_to(*list, position);
    return position;
}

void* list_getInstanceMatching(LIST* list, const void* key, ListCompare compare) {
    return list_getNth(list, list_findItem(list, key, compare, nullptr));
}

void* list_deleteItem(LIST* list, const void* key, ListCompare compare, void* datum) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    const int position = find(*list, key, datum, compare, datum);
    return position < 0 ? zv::status_item(position) : list_deleteNth(list, position);
}

int list_isUnique(const LIST* list, const void* item, ListCompare compare, void* datum) {
    if (list == nullptr)
        return 0;
    if (compare == nullptr)
        return first_position(*list, [&](const void* listed) { return listed == item; }) < 0;
    // The new item comes first here.
    return first_position(
               *list, [&](const void* listed) { return compare(item, listed, datum) == 0; }) < 0;
}
