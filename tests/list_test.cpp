#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <tuple>

#include "faults/faults.h"
#include "list.h"
#include "models/list_model.h"

namespace {

using namespace test;

TEST(List, RandomOperationsAgreeWithAModelWithAndWithoutMemory) {
    std::mt19937 random(5);
    ListRun run;
    const size_t last = ListRun::kOperations - 1;
    for (const auto& operation : run.operations) {
        operation();
        EXPECT_EQ(run.actual, &operation < &run.operations[last - 1] ? -2 : 0) << "without a list";
    }
    for (int round = 0; round < 60; ++round) {
        const int capacity = round % 20 == 19 ? 32750 : round % 20;
        LIST* l = run.l = list_create(capacity);
        ListModel& m = run.m = {capacity == 0 ? 10 : capacity, -1, {}};
        m.items.reserve(kMost + 1); // so that it allocates nothing below
        for (int step = 0; step < (capacity > 100 ? 200 : 600); ++step) {
            run.choose([&](int n) { return int(random() % unsigned(n)); }, capacity);
            if (step % 100 == 99) run.p = INT_MAX - int(random() % 2);
            const size_t operation = random() % (step % 50 == 0 ? last + 1 : last - 3);
            const ListModel before = m;
            const long blocks = test::live_blocks();
            test::inject(random() % 4 == 0);
            run.operations[operation]();
            // qsort() takes memory where it can and does without where it cannot.
            if (test::inject(0) && operation != 0) m = before, run.expected = -3;
            EXPECT_EQ(test::live_blocks(), blocks);
            ASSERT_EQ(run.actual, run.expected) << operation;
            LIST* copy = list_copyShallow(l);
            ASSERT_EQ(std::tuple(list_size(copy), list_capacity(copy), list_currentItem(copy)),
                      std::tuple(m.count(), m.capacity, m.cursor))
                << operation;
            for (int i = 0; i < m.count(); ++i)
                ASSERT_EQ(value_of(list_getNth(copy, i)), m.items[size_t(i)]) << operation;
            list_free(copy, nullptr, nullptr);
        }
        list_free(l, nullptr, nullptr);
    }
}

int note_to_d(void* listed, void* noted) {
    static_cast<std::string*>(noted)->push_back(char(value_of(listed)));
    return value_of(listed) == 'd' ? -7 : 0;
}
void* copy_in_small(void* listed, void* difference) {
    return listed == nullptr ? malloc(1) : item(value_of(listed) + value_of(difference));
}

TEST(List, ItemsAreHandedOnUntilAFunctionStops) {
    LIST* list = new_list(0);
    for (const char c : std::string("abcd.e")) list_addItem(list, c == '.' ? nullptr : item(c));
    std::string noted;
    EXPECT_EQ(list_perform(list, note_to_d, &noted), -7);
    EXPECT_EQ(list_removeAll(list, note_to_d, &noted), -7);
    EXPECT_EQ(list_free(list, note_to_d, &noted), -7);
    EXPECT_EQ(noted, "abcdeded");
    LIST* copy = list_copy(list, copy_in_small, item('A' - 'a'));
    EXPECT_EQ(list_getFirst(copy), item('A'));
    ASSERT_NE(list_getNth(copy, 4), nullptr) << "also of items that are not there";
    EXPECT_EQ(freeListData(list_get(copy), nullptr), 0);
    EXPECT_EQ(list_setNth(copy, 4, nullptr), 0);
    EXPECT_EQ(list_removeAll(copy, note_to_d, &noted), 0);
    EXPECT_EQ(noted, "abcdededEDCBA");
    EXPECT_EQ(list_free(copy, nullptr, nullptr) + list_free(list, nullptr, nullptr), 0);
}

TEST(List, RefusesWhatItCannotHold) {
    const int refused[] = {-1, INT_MIN, kMost + 1, INT_MAX};
    for (const int capacity : refused) EXPECT_EQ(list_create(capacity), nullptr);
    EXPECT_EQ(list_copy(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(list_free(nullptr, nullptr, nullptr) + list_perform(nullptr, nullptr, nullptr), -4);
    EXPECT_EQ(list_setFirst(nullptr, nullptr) + list_setLast(nullptr, nullptr), -4);
    LIST* list = list_create(5);
    void *a = item(-1), *b = item(1);
    EXPECT_EQ(list_sort(list, nullptr, nullptr), 0);
    EXPECT_LT(list_qsort_compare(&a, &b), 0);
    list_free(list, nullptr, nullptr);
}

} // namespace
