#ifndef ZVUTIL_FUZZ_LIST_MODEL_H
#define ZVUTIL_FUZZ_LIST_MODEL_H

#include <algorithm>
#include <climits>
#include <cstdint>
#include <functional>
#include <vector>

#include "input.h"
#include "list.h"

namespace test {

// Small numbers serve as items.
inline void* item(intptr_t value) {
    return reinterpret_cast<void*>(value);
}
inline intptr_t value_of(const void* listed) {
    return reinterpret_cast<intptr_t>(listed);
}

// The order times the datum.
inline int order(const void* a, const void* b, void* datum) {
    const intptr_t x = value_of(a), y = value_of(b);
    return int(value_of(datum)) * (x < y ? -1 : x > y);
}
// 0 when the second value is that much and one more behind the first.
inline int distance(const void* a, const void* b, void* datum) {
    return value_of(a) + 1 + value_of(datum) != value_of(b);
}

// The most items of a list.
inline constexpr int kMost = 32767;

// A list as a vector with a cursor, and the two rules of growth.
struct ListModel {
    int capacity, cursor = -1;
    std::vector<intptr_t> items{};

    int count() const { return int(items.size()); }
    bool holds(int position) const { return position >= 0 && position < count(); }
    bool grow(int used, int wanted) {
        if (used < kMost)
            capacity = std::min(wanted, kMost);
        return used < kMost;
    }
    bool reach(int position) {
        return position < kMost && grow(position, position + std::clamp(capacity / 5, 10, 100));
    }
    intptr_t append(intptr_t value) {
        if (count() == capacity && !grow(capacity, capacity + capacity / 5 + 5))
            return -3;
        cursor = count();
        return items.push_back(value), 0;
    }
    intptr_t store(int position, intptr_t value) {
        if (position < 0)
            return -5;
        if (position >= capacity && !reach(position))
            return -3;
        items.resize(size_t(std::max(count(), position + 1)));
        return items[size_t(cursor = position)] = value, 0;
    }
    intptr_t insert(int position, intptr_t value) {
        if (!holds(position))
            return store(position, value);
        if (count() == capacity && !reach(capacity))
            return -3;
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
        if (holds(position))
            items.erase(items.begin() + position), cursor = position - 1;
        return removed;
    }
    intptr_t go_back() {
        if (cursor < 1)
            return -1;
        // A cursor that list_removeAll() left behind comes down through slots without items.
        return --cursor < count() ? items[size_t(cursor)] : 0;
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
        if (!holds(i) || !holds(j))
            return 0;
        return std::swap(items[size_t(i)], items[size_t(j)]), 1;
    }
    intptr_t sort(int sign) {
        std::ranges::sort(items, [=](intptr_t a, intptr_t b) { return sign * a < sign * b; });
        return 0;
    }
};

// A list beside its model, and every operation on the two.
struct ListRun {
    LIST* l = nullptr;
    ListModel m{0};
    static constexpr int kSigns[] = {-1, 1, 2};
    // What the operations work with: one of the two names, an item, a search for others, an order.
    int p = 0, q = 0, sign = 1;
    intptr_t v = 0, sought = 0, same = 0, actual = 0, expected = 0;
    void *x = nullptr, *far = nullptr;
    bool other = false;
    ListCompare match = nullptr, sorting = nullptr;

    // Chooses all that anew; the positions lie here, that far on or where no list reaches.
    void choose(fuzz::Input& input, int far_on) {
        p = input.below(128) - 5 + (input.coin() ? far_on : 0);
        q = p + input.below(9) - 4;
        v = input.below(40) - 10;
        x = item(v);
        other = input.coin();
        match = input.coin() ? distance : nullptr;
        far = item(input.below(3));
        sorting = input.below(3) == 0 ? nullptr : order;
        sign = sorting == nullptr ? 1 : input.one_of(kSigns);
        sought = match ? v - 1 - value_of(far) : v;
        same = match ? v + 1 + value_of(far) : v;
        if (input.below(32) == 0)
            p = INT_MAX - input.below(2);
    }
    void check(auto result, intptr_t model) { actual = intptr_t(result), expected = model; }

    // The first may take memory; the last four are too rough to come often.
    static constexpr size_t kOperations = 29;
    const std::function<void()> operations[kOperations] = {
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
        [&] { check((other ? list_prev : list_getPrev)(l), m.go_back()); },
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
};

} // namespace test

#endif
