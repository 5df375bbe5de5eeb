// The other names of list operations.
#include "list.h"

LIST* new_list(int capacity) {
    return list_create(capacity);
}

LIST* list_copyShallow(const LIST* list) {
    return list_copy(list, nullptr, nullptr);
}

int list_push(LIST* list, void* item) {
    return list_addItem(list, item);
}

int list_setAt(LIST* list, int position, void* item) {
    return list_addNth(list, position, item);
}

int list_insertAt(LIST* list, int position, void* item) {
    return list_insertNth(list, position, item);
}

void* list_first(LIST* list) {
    return list_getFirst(list);
}

void* list_last(LIST* list) {
    return list_getLast(list);
}

void* list_next(LIST* list) {
    return list_getNext(list);
}

void* list_prev(LIST* list) {
    return list_getPrev(list);
}

void* list_getAt(LIST* list, int position) {
    return list_getNth(list, position);
}

void* list_deleteAt(LIST* list, int position) {
    return list_deleteNth(list, position);
}

void* list_deleteMatching(LIST* list, const void* key, ListCompare compare, void* datum) {
    return list_deleteItem(list, key, compare, datum);
}
