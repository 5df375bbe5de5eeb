// Sequences of list operations, against a vector with a cursor.
#include "input.h"
#include "models/list_model.h"

using fuzz::same;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const int capacities[] = {0, 1, 2, 5, 9, 30, 32760, 32767};
    const int capacity = input.one_of(capacities);
    test::ListRun run;
    run.l = list_create(capacity);
    run.m = {capacity == 0 ? 10 : capacity};
    for (int step = 0; !input.empty() && step < 400; ++step) {
        const size_t operation = input.below(run.kOperations);
        run.choose([&](int n) { return static_cast<int>(input.below(static_cast<size_t>(n))); },
                   capacity);
        run.operations[operation]();
        same(run.actual, run.expected, "result");
        same(list_size(run.l), run.m.count(), "list_size");
        same(list_capacity(run.l), run.m.capacity, "list_capacity");
        same(list_currentItem(run.l), run.m.cursor, "list_currentItem");
    }
    LIST* copy = list_copyShallow(run.l);
    for (LIST* list : {run.l, copy}) {
        same(list_currentItem(list), run.m.cursor, "list_currentItem");
        for (int i = 0; i < run.m.count(); ++i)
            same(test::value_of(list_getNth(list, i)), run.m.items[static_cast<size_t>(i)], "item");
        list_free(list, nullptr, nullptr);
    }
    return 0;
}
