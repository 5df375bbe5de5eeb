// Sequences of list operations, with and without memory, against a vector with a cursor.
#include "input.h"
#include "models/list_model.h"

using fuzz::same, test::item, test::value_of;

namespace {

struct Notes {
    intptr_t last;
    int otherwise;
    std::vector<intptr_t> taken{};
};
// Notes what it is handed, and stops behind the last.
int note(void* listed, void* datum) {
    auto& [last, otherwise, taken] = *static_cast<Notes*>(datum);
    taken.push_back(value_of(listed));
    return taken.back() == last ? -7 : otherwise;
}

// The items that are there are handed on in that order. Gives whether that was stopped.
bool check_handing_on(auto function, LIST* list, std::vector<intptr_t> items, Notes notes) {
    std::erase(items, 0);
    const auto last = std::ranges::find(items, notes.last);
    const bool stops = last != items.end();
    if (stops)
        items.erase(last + 1, items.end());
    same(function(list, note, &notes), stops ? -7 : 0, "result of handing on");
    fuzz::require(notes.taken == items, "what is handed on");
    return stops;
}

// A copy of an item in a block of its own.
void* box(void* listed, void* number) {
    auto* block = static_cast<intptr_t*>(malloc(sizeof(intptr_t)));
    *block = value_of(listed) + value_of(number);
    return block;
}

void check_no_list(test::ListRun& run, fuzz::Input& input) {
    const size_t operation = input.below(run.kOperations);
    run.other = input.coin();
    run.operations[operation]();
    same(run.actual, operation < run.kOperations - 2 ? -2 : 0, "operation without a list");
    same(list_free(nullptr, nullptr, nullptr), -2, "list_free");
    same(list_perform(nullptr, nullptr, nullptr), -2, "list_perform");
    same(list_copy(nullptr, nullptr, nullptr), nullptr, "list_copy");
}

// Goes through the whole list and its copies, and releases them.
void check_whole(test::ListRun& run, intptr_t last) {
    std::vector<intptr_t>& items = run.m.items;
    for (const int nth : {1, 2}) {
        LIST* copy = nullptr;
        if (fuzz::without_its_memory([&] { copy = list_copyShallow(run.l); }, nth))
            same(copy, nullptr, "no copy without memory");
        else
            list_free(copy, nullptr, nullptr);
    }
    LIST *copy = list_copyShallow(run.l), *boxes = list_copy(run.l, box, item(100));
    for (LIST* list : {run.l, copy, boxes}) {
        same(list_currentItem(list), run.m.cursor, "list_currentItem");
        same(list_capacity(list), run.m.capacity, "list_capacity");
    }
    for (int i = 0; i < run.m.count(); ++i) {
        const intptr_t value = items[static_cast<size_t>(i)];
        same(value_of(list_getNth(run.l, i)), value, "item");
        same(value_of(list_getNth(copy, i)), value, "copied item");
        same(*static_cast<intptr_t*>(list_getNth(boxes, i)), value + 100, "boxed item");
    }
    std::ranges::reverse(items);
    if (!check_handing_on(list_removeAll, copy, items, {last, 1}))
        items.clear();
    same(list_size(copy), items.size(), "list_size");
    if (check_handing_on(list_free, copy, items, {last, 1}))
        list_free(copy, nullptr, nullptr);
    same(list_free(boxes, freeListData, nullptr), 0, "list_free");
    list_sort(run.l, nullptr, nullptr);
    void *low = item(-1), *high = item(1);
    fuzz::require(list_qsort_compare(&low, &high) < 0, "list_qsort_compare");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    // Lists of all the slots that there may be are slow.
    const int capacities[] = {0, 1, 2, 5, 9, 30, 60, 600},
              limits[] = {-1, 32760, 32767, 32768, INT_MAX, INT_MIN};
    const unsigned choice = input.byte();
    const int capacity = choice < 250 ? capacities[choice % 8] : limits[choice - 250];
    test::ListRun run;
    run.l = (input.coin() ? list_create : new_list)(capacity);
    same(run.l != nullptr, capacity >= 0 && capacity <= test::kMost, "list_create");
    if (run.l == nullptr)
        return check_no_list(run, input), 0;
    const intptr_t last = input.below(40) - 10;
    run.m = {capacity == 0 ? 10 : capacity};
    const bool is_far = capacity > 10000; // whose items are slow to sort and to copy
    const int steps = is_far ? 15 : 400;
    // So that it allocates nothing below: each step adds one item, behind the last position.
    run.m.items.reserve(static_cast<size_t>(capacity + 256 + steps));
    for (int step = 0; !input.empty() && step < steps; ++step) {
        const size_t operation = input.below(run.kOperations);
        if (is_far && operation == 0)
            continue;
        run.choose(input, capacity);
        const bool may_fail = operation != 0 && input.below(8) == 0;
        const auto before = may_fail ? run.m : test::ListModel{0};
        if (!may_fail)
            run.operations[operation]();
        else if (fuzz::without_its_memory(run.operations[operation]))
            run.m = before, run.expected = -3;
        same(run.actual, run.expected, "result");
        same(list_size(run.l), run.m.count(), "list_size");
        same(list_capacity(run.l), run.m.capacity, "list_capacity");
        same(list_currentItem(run.l), run.m.cursor, "list_currentItem");
    }
    check_handing_on(list_perform, run.l, run.m.items, {last, 0});
    if (!is_far)
        check_whole(run, last);
    same(list_free(run.l, nullptr, nullptr), 0, "list_free");
    return 0;
}
