#include "list_record.h"

#include <cstdlib>
#include <utility>

namespace {

// qsort() hands no datum on, so a sort leaves its comparison here, for the whole process.
ListCompare listSortFunc = nullptr;
void* listSortData = nullptr;

} // namespace

int list_qsort_compare(const void* a, const void* b) {
    const void* first = *static_cast<void* const*>(a);
    const void* second = *static_cast<void* const*>(b);
    return listSortFunc == nullptr ? zv::compare_values(first, second)
                                   : listSortFunc(first, second, listSortData);
}

int list_sort(LIST* list, ListCompare compare, void* datum) {
    if (list == nullptr)
        return ZV_LIST_NO_LIST;
    listSortFunc = compare;
    listSortData = datum;
    std::qsort(list->items, static_cast<size_t>(list->count), sizeof(void*), list_qsort_compare);
    return 0;
}

int list_exchange(LIST* list, int i, int j) {
    if (list == nullptr || !zv::holds(*list, i) || !zv::holds(*list, j))
        return 0;
    std::swap(list->items[i], list->items[j]);
    return 1;
}
