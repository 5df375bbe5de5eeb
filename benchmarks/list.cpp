// The list against GLib's array of pointers.
#include "list.h"

#include <glib.h>

#include <memory>

#include "bench.h"

namespace bench {
namespace {

constexpr int kItems = 10000;

char items[kItems];

LIST* filled_list() {
    LIST* list = list_create(0);
    for (char& item : items)
        list_addItem(list, &item);
    return list;
}

GPtrArray* filled_array() {
    GPtrArray* array = g_ptr_array_new();
    for (char& item : items)
        g_ptr_array_add(array, &item);
    return array;
}

int touch(void* item, void*) {
    benchmark::DoNotOptimize(item);
    return 0;
}

void touch_pointer(void* item, void*) {
    benchmark::DoNotOptimize(item);
}

// Makes a walk through a filled list.
template <class Walk>
auto through_list(Walk walk) {
    return [=] {
        struct Free {
            void operator()(LIST* list) const { list_free(list, nullptr, nullptr); }
        };
        return [=, list = std::unique_ptr<LIST, Free>(filled_list())] { walk(list.get()); };
    };
}

template <class Walk>
auto through_array(Walk walk) {
    return [=] {
        return [=, array = std::unique_ptr<GPtrArray, void (*)(GPtrArray*)>(
                       filled_array(), g_ptr_array_unref)] { walk(array.get()); };
    };
}

} // namespace

void add_list() {
    Row("list", "list_addItem", "append to a new list", kItems, "item")
        .measure("zvutil", [] { return [] { list_free(filled_list(), nullptr, nullptr); }; })
        .measure("GPtrArray", [] { return [] { g_ptr_array_unref(filled_array()); }; });
    Row("list", "list_perform", "apply a function", kItems, "item")
        .measure("zvutil", through_list([](LIST* list) { list_perform(list, touch, nullptr); }))
        .measure("GPtrArray", through_array([](GPtrArray* array) {
                     g_ptr_array_foreach(array, touch_pointer, nullptr);
                 }));
    Row("list", "list_getNext", "walk with the cursor", kItems, "item")
        .measure("zvutil", through_list([](LIST* list) {
                     benchmark::DoNotOptimize(list_getFirst(list));
                     for (int i = 1; i < kItems; ++i)
                         benchmark::DoNotOptimize(list_getNext(list));
                 }))
        .measure("GPtrArray", through_array([](GPtrArray* array) {
                     for (guint i = 0; i < array->len; ++i)
                         benchmark::DoNotOptimize(g_ptr_array_index(array, i));
                 }));
}

} // namespace bench
