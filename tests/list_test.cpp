#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "list.h"
#include "support/failing_allocation.h"

namespace {

struct Free {
    void operator()(LIST* list) const { list_free(list, nullptr, nullptr); }
};
using List = std::unique_ptr<LIST, Free>;

// The tests store characters as items.
void* item(intptr_t value) { return reinterpret_cast<void*>(value); }
intptr_t value_of(const void* listed) { return reinterpret_cast<intptr_t>(listed); }

List list_of(const std::string& items, int capacity = 10) {
    List list(list_create(capacity));
    for (const char c : items) list_addItem(list.get(), c == '.' ? nullptr : item(c));
    return list;
}

std::vector<intptr_t> items_of(const LIST* list) {
    const List copy(list_copyShallow(list));
    std::vector<intptr_t> items;
    for (int i = 0; i < list_size(list); ++i) items.push_back(value_of(list_getNth(copy.get(), i)));
    return items;
}

std::string text_of(const LIST* list) {
    std::string text;
    for (const intptr_t value : items_of(list))
        text.push_back(value == 0 ? '.' : static_cast<char>(value));
    return text;
}

std::string state_of(const LIST* list) {
    return text_of(list) + " at " + std::to_string(list_currentItem(list)) + " of " +
           std::to_string(list_capacity(list));
}

std::string shown(intptr_t result) {
    return result >= 'a' ? std::string(1, static_cast<char>(result)) : std::to_string(result);
}
std::string shown(int result) { return std::to_string(result); }
std::string shown(const void* result) { return shown(value_of(result)); }

int by_value(const void* a, const void* b, void*) {
    return value_of(a) < value_of(b) ? -1 : value_of(a) > value_of(b);
}
int sign_of_two(const void* a, const void* b, void*) { return 2 * by_value(a, b, nullptr); }
// Equal when the first argument is the letter before the second, so that the order shows.
int one_before(const void* a, const void* b, void*) { return value_of(a) + 1 != value_of(b); }
int reversed(const void* a, const void* b, void*) { return by_value(b, a, nullptr); }
int goes_on(void*, void*) { return 0; }

struct Operation {
    const char* name;
    std::string (*run)(LIST*);
    // "result cursor items" of abcde at 2 and of an emptied list at 2, and the result without a
    // list where it is not -2.
    const char* expected;
};
#define OPERATION(...) #__VA_ARGS__, [](LIST * l) { return shown(__VA_ARGS__); }

const Operation kOperations[] = {
    {OPERATION(list_size(l)), "5 2 abcde|0 2 "},
    {OPERATION(list_capacity(l)), "10 2 abcde|10 2 "},
    {OPERATION(list_currentItem(l)), "2 2 abcde|2 2 "},
    {OPERATION(list_addItem(l, item('x'))), "0 5 abcdex|0 0 x"},
    {OPERATION(list_push(l, nullptr)), "0 5 abcde.|0 0 ."},
    {OPERATION(list_addNth(l, 1, item('x'))), "0 1 axcde|0 1 .x"},
    {OPERATION(list_addNth(l, 7, item('x'))), "0 7 abcde..x|0 7 .......x"},
    {OPERATION(list_setAt(l, 5, item('x'))), "0 5 abcdex|0 5 .....x"},
    {OPERATION(list_insertNth(l, 1, item('x'))), "0 1 axbcde|0 1 .x"},
    {OPERATION(list_insertAt(l, 4, item('x'))), "0 4 abcdxe|0 4 ....x"},
    {OPERATION(list_insertAt(l, 6, item('x'))), "0 6 abcde.x|0 6 ......x"},
    {OPERATION(list_addNth(l, -1, item('x'))), "-5 2 abcde|-5 2 "},
    {OPERATION(list_setAt(l, -1, item('x'))), "-5 2 abcde|-5 2 "},
    {OPERATION(list_insertNth(l, INT_MIN, item('x'))), "-5 2 abcde|-5 2 "},
    {OPERATION(list_insertAt(l, -1, item('x'))), "-5 2 abcde|-5 2 "},
    {OPERATION(list_addNth(l, INT_MAX, item('x'))), "-3 2 abcde|-3 2 "},
    {OPERATION(list_insertNth(l, 32767, item('x'))), "-3 2 abcde|-3 2 "},
    {OPERATION(list_addUnique(l, item('c'), nullptr, nullptr)), "-4 2 abcde|0 0 c"},
    {OPERATION(list_addUnique(l, item('e'), one_before, nullptr)), "0 5 abcdee|0 0 e"},
    {OPERATION(list_addSorted(l, item('c'), by_value, nullptr)), "0 3 abccde|0 0 c"},
    {OPERATION(list_addSorted(l, item('c'), sign_of_two, nullptr)), "0 5 abcdec|0 0 c"},
    {OPERATION(list_get(l)), "c 2 abcde|0 2 "},
    {OPERATION(list_getFirst(l)), "a 0 abcde|0 2 "},
    {OPERATION(list_first(l)), "a 0 abcde|0 2 "},
    {OPERATION(list_getLast(l)), "e 4 abcde|0 2 "},
    {OPERATION(list_last(l)), "e 4 abcde|0 2 "},
    {OPERATION(list_getNext(l)), "d 3 abcde|-1 2 "},
    {OPERATION(list_next(l)), "d 3 abcde|-1 2 "},
    {OPERATION(list_getPrev(l)), "b 1 abcde|-1 2 "},
    {OPERATION(list_prev(l)), "b 1 abcde|-1 2 "},
    {OPERATION(list_getNth(l, 4)), "e 4 abcde|-5 2 "},
    {OPERATION(list_getAt(l, 0)), "a 0 abcde|-5 2 "},
    {OPERATION(list_getNth(l, 5)), "-5 2 abcde|-5 2 "},
    {OPERATION(list_getAt(l, -1)), "-5 2 abcde|-5 2 "},
    {OPERATION(list_getNth(l, 65536)), "-5 2 abcde|-5 2 "},
    {OPERATION(list_set(l, item('x'))), "0 2 abxde|-1 2 "},
    {OPERATION(list_setFirst(l, item('x'))), "0 0 xbcde|0 0 x"},
    {OPERATION(list_setLast(l, item('x'))), "0 4 abcdx|0 0 x"},
    {OPERATION(list_setNext(l, item('x'))), "0 3 abcxe|-1 2 "},
    {OPERATION(list_setPrev(l, item('x'))), "0 1 axcde|-1 2 "},
    {OPERATION(list_setNth(l, 4, item('x'))), "0 4 abcdx|-5 2 "},
    {OPERATION(list_setNth(l, 5, item('x'))), "-5 2 abcde|-5 2 "},
    {OPERATION(list_setIndex(l, 0)), "0 0 abcde|-5 2 "},
    {OPERATION(list_setIndex(l, -1)), "-5 2 abcde|-5 2 "},
    {OPERATION(list_deleteNth(l, 0)), "a -1 bcde|-5 2 "},
    {OPERATION(list_deleteAt(l, 4)), "e 3 abcd|-5 2 "},
    {OPERATION(list_deleteNth(l, 5)), "-5 2 abcde|-5 2 "},
    {OPERATION(list_deleteItem(l, item('a'), nullptr, item('d'))), "d 2 abce|-1 2 "},
    {OPERATION(list_deleteItem(l, item('a'), nullptr, nullptr)), "-1 2 abcde|-1 2 "},
    {OPERATION(list_deleteMatching(l, item('e'), one_before, item('a'))), "d 2 abce|-1 2 "},
    {OPERATION(list_deleteMatching(l, item('a'), one_before, item('a'))), "-1 2 abcde|-1 2 "},
    {OPERATION(list_removeAll(l, nullptr, nullptr)), "0 2 |0 2 "},
    {OPERATION(list_pop(l)), "e 3 abcd|-1 2 "},
    {OPERATION(list_findItem(l, item('d'), nullptr, nullptr)), "3 3 abcde|-1 2 "},
    {OPERATION(list_findItem(l, item('b'), one_before, nullptr)), "0 0 abcde|-1 2 "},
    {OPERATION(list_findItem(l, nullptr, nullptr, item('a'))), "-1 2 abcde|-1 2 "},
    {OPERATION(list_getInstanceMatching(l, item('b'), one_before)), "a 0 abcde|-5 2 "},
    {OPERATION(list_getInstanceMatching(l, item('x'), nullptr)), "-5 2 abcde|-5 2 "},
    {OPERATION(list_isUnique(l, item('d'), nullptr, nullptr)), "0 2 abcde|1 2 |0"},
    {OPERATION(list_isUnique(l, item('e'), one_before, nullptr)), "1 2 abcde|1 2 |0"},
    {OPERATION(list_exchange(l, 0, 4)), "1 2 ebcda|0 2 |0"},
    {OPERATION(list_exchange(l, 0, 0)), "1 2 abcde|0 2 |0"},
    {OPERATION(list_exchange(l, 0, 5)), "0 2 abcde|0 2 |0"},
    {OPERATION(list_exchange(l, -1, 0)), "0 2 abcde|0 2 |0"},
    {OPERATION(list_sort(l, reversed, nullptr)), "0 2 edcba|0 2 "},
    {OPERATION(list_perform(l, goes_on, nullptr)), "0 2 abcde|0 2 "},
};

TEST(List, EveryOperationGivesItsResultAndLeavesTheCursor) {
    for (const Operation& operation : kOperations) {
        const List inside = list_of("abcde");
        list_setIndex(inside.get(), 2);
        const List emptied = list_of("xyz");
        list_removeAll(emptied.get(), nullptr, nullptr);
        std::string seen;
        for (LIST* list : {inside.get(), emptied.get()}) {
            seen.append(seen.empty() ? "" : "|").append(operation.run(list)).append(" ");
            seen.append(std::to_string(list_currentItem(list))).append(" ").append(text_of(list));
        }
        const std::string without = operation.run(nullptr);
        if (without != "-2") seen.append("|").append(without);
        EXPECT_EQ(seen, operation.expected) << operation.name;
    }
    EXPECT_EQ(list_free(nullptr, nullptr, nullptr), -2);
    EXPECT_EQ(list_copy(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(list_copyShallow(nullptr), nullptr);
}

TEST(List, HasNoItemAtTheCursorBeforeTheFirst) {
    const List list = list_of("xabcde");
    EXPECT_EQ(list_deleteNth(list.get(), 0), item('x'));
    EXPECT_EQ(list_get(list.get()), nullptr);
    EXPECT_EQ(list_set(list.get(), item('y')), -1);
    EXPECT_EQ(list_getPrev(list.get()), item(-1));
    EXPECT_EQ(list_setPrev(list.get(), item('y')), -1);
    EXPECT_EQ(state_of(list.get()), "abcde at -1 of 10");
    EXPECT_EQ(list_setNext(list.get(), item('A')), 0);
    EXPECT_EQ(list_getPrev(list.get()), item(-1));
    EXPECT_EQ(state_of(list.get()), "Abcde at 0 of 10");
    list_getLast(list.get());
    EXPECT_EQ(list_getNext(list.get()), item(-1));
    EXPECT_EQ(list_setNext(list.get(), item('y')), -1);
    EXPECT_EQ(state_of(list.get()), "Abcde at 4 of 10");
}

// A list as a vector with a cursor, and the two rules of growth.
struct Model {
    std::vector<intptr_t> items;
    int cursor = -1;
    int capacity;

    int count() const { return static_cast<int>(items.size()); }
    intptr_t append(intptr_t value) {
        if (count() == capacity) capacity += capacity / 5 + 5;
        cursor = count();
        items.push_back(value);
        return 0;
    }
    void reach(int position) {
        if (position >= capacity) capacity = position + std::clamp(capacity / 5, 10, 100);
    }
    intptr_t store(int position, intptr_t value) {
        reach(position);
        items.resize(static_cast<size_t>(std::max(count(), position + 1)));
        items[static_cast<size_t>(cursor = position)] = value;
        return 0;
    }
    intptr_t insert(int position, intptr_t value) {
        if (position >= count()) return store(position, value);
        reach(count());
        items.insert(items.begin() + position, value);
        cursor = position;
        return 0;
    }
    intptr_t remove(int position) {
        if (position >= count()) return -5;
        const intptr_t removed = items[static_cast<size_t>(position)];
        items.erase(items.begin() + position);
        cursor = position - 1;
        return removed;
    }
    intptr_t next() { return cursor < count() - 1 ? items[static_cast<size_t>(++cursor)] : -1; }
};

TEST(List, RandomOperationsAgreeWithAVectorStepByStep) {
    struct Step {
        intptr_t (*run)(LIST* list, int position, intptr_t value);
        intptr_t (*model)(Model& model, int position, intptr_t value);
    };
    const Step steps[] = {
        {[](LIST* l, int, intptr_t v) -> intptr_t { return list_addItem(l, item(v)); },
         [](Model& m, int, intptr_t v) { return m.append(v); }},
        {[](LIST* l, int p, intptr_t v) -> intptr_t { return list_addNth(l, p, item(v)); },
         [](Model& m, int p, intptr_t v) { return m.store(p, v); }},
        {[](LIST* l, int p, intptr_t v) -> intptr_t { return list_insertNth(l, p, item(v)); },
         [](Model& m, int p, intptr_t v) { return m.insert(p, v); }},
        {[](LIST* l, int p, intptr_t) { return value_of(list_deleteNth(l, p)); },
         [](Model& m, int p, intptr_t) { return m.remove(p); }},
        {[](LIST* l, int, intptr_t) { return value_of(list_getNext(l)); },
         [](Model& m, int, intptr_t) { return m.next(); }},
        {[](LIST* l, int, intptr_t) -> intptr_t { return list_removeAll(l, nullptr, nullptr); },
         [](Model& m, int, intptr_t) { return m.items.clear(), intptr_t{0}; }},
    };
    std::mt19937 random(5);
    for (int round = 0; round < 20; ++round) {
        Model model{{}, -1, round + 1};
        const List list(list_create(round + 1));
        for (int i = 0; i < 1500; ++i) {
            const intptr_t value = 'A' + static_cast<int>(random() % 60);
            const int position = static_cast<int>(random()) & 127;
            const Step& step = steps[random() % 100 == 0 ? 5 : random() % 5];
            ASSERT_EQ(step.run(list.get(), position, value), step.model(model, position, value));
            ASSERT_EQ(list_currentItem(list.get()), model.cursor) << round << " " << i;
            ASSERT_EQ(list_capacity(list.get()), model.capacity) << round << " " << i;
            ASSERT_EQ(items_of(list.get()), model.items) << round << " " << i;
        }
    }
}

TEST(List, GrowsByItsTwoRules) {
    const List list(list_create(0));
    std::vector<int> capacities;
    for (int i = 0; i < 122; ++i) {
        list_addItem(list.get(), nullptr);
        if (capacities.empty() || capacities.back() != list_capacity(list.get()))
            capacities.push_back(list_capacity(list.get()));
    }
    EXPECT_EQ(capacities, (std::vector{10, 17, 25, 35, 47, 61, 78, 98, 122}));
    const struct {
        int capacity, position, grown;
    } cases[] = {{10, 9, 10},       {10, 10, 20},      {10, 500, 510},
                 {60, 60, 72},      {500, 500, 600},   {1000, 1000, 1100},
                 {1, 32700, 32710}, {1, 32766, 32767}, {32767, 32766, 32767}};
    for (const auto& c : cases) {
        const List positional(list_create(c.capacity));
        EXPECT_EQ(list_addNth(positional.get(), c.position, item('x')), 0);
        EXPECT_EQ(list_capacity(positional.get()), c.grown);
        EXPECT_EQ(list_size(positional.get()), c.position + 1);
    }
    const List full = list_of("abcdefghij");
    EXPECT_EQ(list_insertNth(full.get(), 0, item('x')), 0);
    EXPECT_EQ(state_of(full.get()), "xabcdefghij at 0 of 20");
}

TEST(List, EndsAtTheMostItems) {
    EXPECT_EQ(list_create(32768), nullptr);
    EXPECT_EQ(list_create(INT_MAX), nullptr);
    EXPECT_EQ(list_create(-1), nullptr);
    const List list(new_list(1));
    while (list_addItem(list.get(), item('x')) == 0) ASSERT_LE(list_size(list.get()), 32767);
    EXPECT_EQ(list_size(list.get()), 32767);
    EXPECT_EQ(list_capacity(list.get()), 32767);
    list_setIndex(list.get(), 7);
    EXPECT_EQ(list_addItem(list.get(), nullptr), -3);
    EXPECT_EQ(list_insertNth(list.get(), 0, nullptr), -3);
    EXPECT_EQ(list_addNth(list.get(), 32767, nullptr), -3);
    EXPECT_EQ(list_currentItem(list.get()), 7);
    EXPECT_EQ(list_addNth(list.get(), 32766, item('y')), 0);
    EXPECT_EQ(list_pop(list.get()), item('y'));
    EXPECT_EQ(list_insertNth(list.get(), 0, item('z')), 0);
    EXPECT_EQ(list_getLast(list.get()), item('x'));
    EXPECT_EQ(list_currentItem(list.get()), 32766);
}

// Notes each item it is given, and stops at 'd'.
int note_to_d(void* listed, void* datum) {
    static_cast<std::string*>(datum)->push_back(static_cast<char>(value_of(listed)));
    return value_of(listed) == 'd' ? -7 : 1;
}

TEST(List, ReleaseGoesBackwardsAndStopsOnNegativeResults) {
    for (const auto release : {list_free, list_removeAll}) {
        const List list = list_of("abcd.e");
        std::string noted;
        EXPECT_EQ(release(list.get(), note_to_d, &noted), -7);
        EXPECT_EQ(noted, "ed");
        EXPECT_EQ(state_of(list.get()), "abcd.e at 5 of 10");
        list_setNth(list.get(), 3, item('D'));
        EXPECT_EQ(list_removeAll(list.get(), note_to_d, &noted), 0);
        EXPECT_EQ(noted, "edeDcba");
        EXPECT_EQ(list_addNth(list.get(), 5, nullptr), 0);
        EXPECT_EQ(text_of(list.get()), "......") << "the slots were cleared";
    }
    const long blocks = test::live_blocks();
    LIST* list = list_create(0);
    for (int i = 0; i < 20; ++i) list_addItem(list, i % 3 == 0 ? nullptr : malloc(8));
    EXPECT_EQ(list_free(list, freeListData, nullptr), 0);
    EXPECT_EQ(freeListData(nullptr, nullptr), 0);
    EXPECT_EQ(test::live_blocks(), blocks);
}

TEST(List, PerformSkipsNullItemsAndCopyAsksForThem) {
    const List list = list_of("a.cd.e");
    list_setIndex(list.get(), 1);
    std::string noted;
    const auto note = [](void* listed, void* datum) {
        static_cast<std::string*>(datum)->push_back(static_cast<char>(value_of(listed)));
        return value_of(listed) == 'd' ? 5 : 0;
    };
    EXPECT_EQ(list_perform(list.get(), note, &noted), 5);
    EXPECT_EQ(noted, "acd");
    const auto copy = [](void* listed, void* datum) {
        return item(value_of(listed) + *static_cast<int*>(datum));
    };
    int shift = 1;
    const List copied(list_copy(list.get(), copy, &shift));
    EXPECT_EQ(state_of(copied.get()), "b\1de\1f at 1 of 10");
    list_setFirst(copied.get(), item('x'));
    EXPECT_EQ(state_of(list.get()), "a.cd.e at 1 of 10");
}

TEST(List, SortsAndKeepsSorted) {
    std::mt19937 random(3);
    const List sorted(list_create(0));
    const List kept(list_create(0));
    std::vector<intptr_t> expected;
    for (int i = 0; i < 2000; ++i) {
        const intptr_t value = static_cast<int>(random() % 3000) - 1500;
        expected.push_back(value);
        list_addItem(sorted.get(), item(value));
        list_addSorted(kept.get(), item(value), nullptr, nullptr);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(items_of(kept.get()), expected);
    // qsort() takes memory where it can and does without where it cannot.
    const auto sort = [&](ListCompare compare, int sign) {
        return test::with_failing_allocation(
            1, [&] { return list_sort(sorted.get(), compare, &sign); });
    };
    EXPECT_EQ(sort(nullptr, 1).first, 0);
    EXPECT_EQ(items_of(sorted.get()), expected);
    const auto descending = [](const void* a, const void* b, void* sign) {
        return -*static_cast<int*>(sign) * by_value(a, b, nullptr);
    };
    EXPECT_EQ(sort(descending, 1).first, 0);
    EXPECT_EQ(items_of(sorted.get()), std::vector(expected.rbegin(), expected.rend()));
}

TEST(ListMemory, EachFailingAllocationChangesNothing) {
    const Operation operations[] = {
        {OPERATION(list_addItem(l, item('x'))), "abcdefghijx at 10 of 17"},
        {OPERATION(list_addUnique(l, item('x'), nullptr, nullptr)), "abcdefghijx at 10 of 17"},
        {OPERATION(list_addSorted(l, item('x'), nullptr, nullptr)), "abcdefghijx at 10 of 17"},
        {OPERATION(list_addSorted(l, item('A'), nullptr, nullptr)), "Aabcdefghij at 0 of 20"},
        {OPERATION(list_addNth(l, 11, item('x'))), "abcdefghij.x at 11 of 21"},
        {OPERATION(list_insertNth(l, 3, item('x'))), "abcxdefghij at 3 of 20"},
    };
    const List list = list_of("abcdefghij");
    for (const Operation& operation : operations) {
        const List full(list_copyShallow(list.get()));
        const std::string before = state_of(full.get());
        const long blocks = test::live_blocks();
        int failures = 0;
        const auto result =
            test::after_each_failing_allocation([&] { return operation.run(full.get()); },
                                                [&](const std::string& failure) {
                                                    EXPECT_EQ(failure, "-3") << operation.name;
                                                    EXPECT_EQ(state_of(full.get()), before)
                                                        << operation.name;
                                                    ++failures;
                                                });
        EXPECT_EQ(test::live_blocks(), blocks);
        EXPECT_EQ(failures, 1);
        EXPECT_EQ(result, "0");
        EXPECT_EQ(state_of(full.get()), operation.expected) << operation.name;
    }
    const long blocks = test::live_blocks();
    const auto create = [] { return list_create(5); };
    const auto copy = [&] {
        return list_copy(
            list.get(), [](void*, void*) { return malloc(1); }, nullptr);
    };
    int failures = 0;
    const auto failed = [&](const LIST* made) {
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(test::live_blocks(), blocks);
        ++failures;
    };
    list_free(test::after_each_failing_allocation(create, failed), nullptr, nullptr);
    EXPECT_EQ(failures, 2);
    for (int nth = 1; nth <= 2; ++nth) failed(test::with_failing_allocation(nth, copy).first);
    list_free(copy(), freeListData, nullptr);
    EXPECT_EQ(test::live_blocks(), blocks);
}

} // namespace
