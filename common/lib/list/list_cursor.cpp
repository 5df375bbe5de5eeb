#include "list_record.h"

#include <algorithm>

namespace {

bool has_previous(const LIST& list) {
    return list.cursor >= 1;
}

bool has_next(const LIST& list) {
    return list.cursor + 1 < list.count;
}

// An empty list gets a null item, to be replaced.
void ensure_item(LIST& list) {
    if (list.count == 0)
        list.count = 1;
}

int set_at(LIST& list, int position, void* item) {
    zv::go_to(list, position) = item;
    return 0;
}

} // namespace

void* list_get(const LIST* list) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    return zv::holds(*list, list->cursor) ? list->items[list->cursor] : nullptr;
}

void* list_getFirst(LIST* list) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    return list->count == 0 ? nullptr : zv::go_to(*list, 0);
}

void* list_getLast(LIST* list) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    return list->count == 0 ? nullptr : zv::go_to(*list, list->count - 1);
}

void* list_getNext(LIST* list) {
    if (list == nullptr) [[unlikely]]
        return zv::status_item(ZV_LIST_NO_LIST);
    if (!has_next(*list)) [[unlikely]]
        return zv::status_item(ZV_LIST_NO_ITEM);
    return zv::go_to(*list, list->cursor + 1);
}

void* list_getPrev(LIST* list) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    if (!has_previous(*list))
        return zv::status_item(ZV_LIST_NO_ITEM);
    return zv::go_to(*list, list->cursor - 1);
}

void* list_getNth(LIST* list, int position) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    if (!zv::holds(*list, position))
        return zv::status_item(ZV_LIST_NO_POSITION);
    return zv::go_to(*list, position);
}

int list_set(LIST* list, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    return zv::holds(*list, list->cursor) ? set_at(*list, list->cursor, item) : ZV_LIST_NO_ITEM;
}

int list_setFirst(LIST* list, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    ensure_item(*list);
    return set_at(*list, 0, item);
}

int list_setLast(LIST* list, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    ensure_item(*list);
    return set_at(*list, list->count - 1, item);
}

int list_setNext(LIST* list, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    return has_next(*list) ? set_at(*list, list->cursor + 1, item) : ZV_LIST_NO_ITEM;
}

int list_setPrev(LIST* list, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    // list_removeAll() may have left the cursor behind the items, where nothing can be kept.
    const bool keeps = has_previous(*list) && zv::holds(*list, list->cursor - 1);
    return keeps ? set_at(*list, list->cursor - 1, item) : ZV_LIST_NO_ITEM;
}

int list_setNth(LIST* list, int position, void* item) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    return zv::holds(*list, position) ? set_at(*list, position, item) : ZV_LIST_NO_POSITION;
}

int list_setIndex(LIST* list, int position) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    if (!zv::holds(*list, position))
        return ZV_LIST_NO_POSITION;
    zv::go_to(*list, position);
    return 0;
}

void* list_deleteNth(LIST* list, int position) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    if (!zv::holds(*list, position))
        return zv::status_item(ZV_LIST_NO_POSITION);
    void* removed = list->items[position];
    std::copy(list->items + position + 1, list->items + list->count, list->items + position);
    --list->count;
    list->items[list->count] = nullptr;
    list->cursor = position - 1;
    return removed;
}

void* list_pop(LIST* list) {
    if (list == nullptr)
        return zv::status_item(ZV_LIST_NO_LIST);
    if (list->count == 0)
        return zv::status_item(ZV_LIST_NO_ITEM);
    // The cursor ends before the removed item: on the one that is last now.
    return list_deleteNth(list, list->count - 1);
}
