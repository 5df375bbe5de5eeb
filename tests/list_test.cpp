#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <random>
#include <tuple>
#include <vector>

#include "list.h"
#include "support/faults.h"

namespace {

// The tests store small numbers as items.
void* item(intptr_t value) { return reinterpret_cast<void*>(value); }
intptr_t value_of(const void* listed) { return reinterpret_cast<intptr_t>(listed); }

// The order times the datum.
int order(const void* a, const void* b, void* datum) {
    const intptr_t x = value_of(a), y = value_of(b);
    return int(value_of(datum)) * (x < y ? -1 : x > y);
}
// 0 when the second value is that much and one more behind the first.
int distance(const void* a, const void* b, void* datum) {
    return value_of(a) + 1 + value_of(datum) != value_of(b);
}

constexpr int kMost = 32767;

// A list as a vector with a cursor, and the two rules of growth.
struct Model {
    int capacity, cursor = -1;
    std::vector<intptr_t> items{};

    int count() const { return int(items.size()); }
    bool holds(int position) const { return position >= 0 && position < count(); }
    bool grow(int used, int wanted) {
        if (used < kMost) capacity = std::min(wanted, kMost);
        return used < kMost;
    }
    bool reach(int position) {
        return position < kMost && grow(position, position + std::clamp(capacity / 5, 10, 100));
    }
    intptr_t append(intptr_t value) {
        if (count() == capacity && !grow(capacity, capacity + capacity / 5 + 5)) return -3;
        cursor = count();
        return items.push_back(value), 0;
    }
    intptr_t store(int position, intptr_t value) {
        if (position < 0) return -5;
        if (position >= capacity && !reach(position)) return -3;
        items.resize(size_t(std::max(count(), position + 1)));
        return items[size_t(cursor = position)] = value, 0;
    }
    intptr_t insert(int position, intptr_t value) {
        if (!holds(position)) return store(position, value);
        if (count() == capacity && !reach(capacity)) return -3;
        items.insert(items.begin() + position, value);
        return cursor = position, 0;
    }
    intptr_t go(int position, intptr_t otherwise) {
        return holds(position) ? items[size_t(cursor = position)] : otherwise;
    }
    intptr_t replace(int position, intptr_t value, intptr_t otherwise) {
        return holds(position) ? items[size_t(cursor = position)] = value, 0 : otherwise;
    }
    intptr_t remove(int position, intptr_t otherwise) {
        const intptr_t removed = go(position, otherwise);
        if (holds(position)) items.erase(items.begin() + position), cursor = position - 1;
        return removed;
    }
    int previous() const { return cursor < count() ? cursor - 1 : -1; }
    int find(auto matches) const {
        const auto found = std::find_if(items.begin(), items.end(), matches);
        return found == items.end() ? -1 : int(found - items.begin());
    }
    int find(intptr_t value) const {
        return find([=](intptr_t other) { return other == value; });
    }
    intptr_t insert_sorted(intptr_t value, int sign) {
        const int position = find([=](intptr_t other) { return sign * value < sign * other; });
        return position < 0 || sign == 2 ? append(value) : insert(position, value);
    }
    intptr_t exchange(int i, int j) {
        if (!holds(i) || !holds(j)) return 0;
        return std::swap(items[size_t(i)], items[size_t(j)]), 1;
    }
    intptr_t sort(int sign) {
        std::ranges::sort(items, [=](intptr_t a, intptr_t b) { return sign * a < sign * b; });
        return 0;
    }
};

TEST(List, RandomOperationsAgreeWithAModelWithAndWithoutMemory) {
    std::mt19937 random(5);
    LIST* l = nullptr;
    Model m{0};
    // What the operations work with: one of the two names, an item, a search for others, an order.
    int p = 0, q = 0, sign = 1;
    intptr_t v = 0, sought = 0, same = 0, actual = 0, expected = 0;
    void *x = nullptr, *far = nullptr;
    bool other = false;
    const int orders[] = {-1, 1, 2};
    ListCompare match = nullptr, sorting = nullptr;
    const auto check = [&](auto result, intptr_t model) {
        actual = intptr_t(result), expected = model;
    };
    const std::function<void()> operations[] = {
        [&] { check(list_sort(l, sorting, item(sign)), m.sort(sign)); },
        [&] { check((other ? list_push : list_addItem)(l, x), m.append(v)); },
        [&] { check((other ? list_setAt : list_addNth)(l, p, x), m.store(p, v)); },
        [&] { check((other ? list_insertAt : list_insertNth)(l, p, x), m.insert(p, v)); },
        [&] { check(list_addUnique(l, x, match, far), m.find(same) < 0 ? m.append(v) : -4); },
        [&] { check(list_addSorted(l, x, sorting, item(sign)), m.insert_sorted(v, sign)); },
        [&] { check(list_get(l), m.go(m.cursor, 0)); },
        [&] { check((other ? list_first : list_getFirst)(l), m.go(0, 0)); },
        [&] { check((other ? list_last : list_getLast)(l), m.go(m.count() - 1, 0)); },
        [&] { check((other ? list_next : list_getNext)(l), m.go(m.cursor + 1, -1)); },
        [&] { check((other ? list_prev : list_getPrev)(l), m.go(m.previous(), -1)); },
        [&] { check((other ? list_getAt : list_getNth)(l, p), m.go(p, -5)); },
        [&] { check(list_set(l, x), m.replace(m.cursor, v, -1)); },
        [&] {
            m.items.resize(size_t(std::max(m.count(), 1)));
            const int position = other ? 0 : m.count() - 1;
            check((other ? list_setFirst : list_setLast)(l, x), m.replace(position, v, 0));
        },
        [&] { check(list_setNext(l, x), m.replace(m.cursor + 1, v, -1)); },
        [&] { check(list_setPrev(l, x), m.replace(m.previous(), v, -1)); },
        [&] { check(list_setNth(l, p, x), m.replace(p, v, -5)); },
        [&] { check(list_setIndex(l, p), m.replace(p, m.go(p, 0), -5)); },
        [&] { check((other ? list_deleteAt : list_deleteNth)(l, p), m.remove(p, -5)); },
        [&] { check(list_pop(l), m.remove(m.count() - 1, -1)); },
        [&] {
            const auto remove = other ? list_deleteMatching : list_deleteItem;
            check(remove(l, match ? x : far, match, match ? far : x), m.remove(m.find(sought), -1));
        },
        [&] {
            check(list_findItem(l, x, match, far), m.find(sought));
            m.go(m.find(sought), 0);
        },
        [&] { check(list_getInstanceMatching(l, x, match), m.go(m.find(match ? v - 1 : v), -5)); },
        [&] { check(list_size(l), m.count()); },
        [&] { check(list_capacity(l), m.capacity); },
        [&] { check(list_currentItem(l), m.cursor); },
        [&] { check(list_removeAll(l, nullptr, nullptr), (m.items.clear(), 0)); },
        [&] { check(list_isUnique(l, x, match, far), m.find(same) < 0); },
        [&] { check(list_exchange(l, p, q), m.exchange(p, q)); },
    };
    const size_t last = std::size(operations) - 1;
    for (const auto& operation : operations) {
        operation();
        EXPECT_EQ(actual, &operation < &operations[last - 1] ? -2 : 0) << "without a list";
    }
    for (int round = 0; round < 60; ++round) {
        const int capacity = round % 20 == 19 ? 32750 : round % 20;
        l = list_create(capacity);
        m = {capacity == 0 ? 10 : capacity, -1, {}};
        m.items.reserve(kMost + 1); // so that it allocates nothing below
        for (int step = 0; step < (capacity > 100 ? 200 : 600); ++step) {
            p = int(random() % 128) - 5 + (random() % 2 == 0 ? capacity : 0);
            q = p + int(random() % 9) - 4;
            if (step % 100 == 99) p = INT_MAX - int(random() % 2);
            v = int(random() % 40) - 10, x = item(v);
            other = random() % 2 == 0;
            match = random() % 2 == 0 ? distance : nullptr;
            far = item(int(random() % 3)), sorting = random() % 3 == 0 ? nullptr : order;
            sign = sorting == nullptr ? 1 : orders[random() % 3];
            sought = match ? v - 1 - value_of(far) : v, same = match ? v + 1 + value_of(far) : v;
            const size_t operation = random() % (step % 50 == 0 ? last + 1 : last - 3);
            const Model before = m;
            const long blocks = test::live_blocks();
            test::inject(random() % 4 == 0);
            operations[operation]();
            // qsort() takes memory where it can and does without where it cannot.
            if (test::inject(0) && operation != 0) m = before, expected = -3;
            EXPECT_EQ(test::live_blocks(), blocks);
            ASSERT_EQ(actual, expected) << operation;
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
