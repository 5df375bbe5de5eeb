#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <sys/time.h>

#include <cstdlib>
#include <limits>
#include <thread>
#include <vector>

#include "support/guarded.h"
#include "support/private_host.h"
#include "zvosutil.h"

namespace {

template <class Action>
void in_threads(Action action) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(action, i);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(CriticalSection, ThreadsRunOneAfterTheOther) {
    pthread_mutex_t section;
    OSInitializeCriticalSection(&section);
    int rounds = 0;
    in_threads([&](int) {
        for (int i = 0; i < 2000; ++i) {
            OSEnterCriticalSection(&section);
            const int before = rounds;
            if (i % 100 == 0)
                std::this_thread::yield();
            rounds = before + 1;
            OSLeaveCriticalSection(&section);
        }
    });
    EXPECT_EQ(rounds, 8000);
    EXPECT_EQ(pthread_mutex_trylock(&section), 0) << "all have left it";
    EXPECT_NE(pthread_mutex_trylock(&section), 0) << "not recursive";
    OSLeaveCriticalSection(&section);
    OSDeleteCriticalSection(&section);
}

TEST(ThreadLocalStorage, EachThreadHasItsOwnValue) {
    pthread_key_t key;
    int own = 0;
    OSTLSAlloc(&key);
    OSTLSSetValue(key, &own);
    in_threads([&](int) {
        int mine = 0;
        EXPECT_EQ(OSTLSGetValue(key), nullptr);
        OSTLSSetValue(key, &mine);
        std::this_thread::yield();
        EXPECT_EQ(OSTLSGetValue(key), &mine);
    });
    EXPECT_EQ(OSTLSGetValue(key), &own);
    OSTLSFree(key);
    OSTLSAlloc(&key);
    EXPECT_EQ(OSTLSGetValue(key), nullptr) << "a fresh key, whatever the last one held";
}

TEST(HostLookup, ResultsStandInTheCallersMemory) {
    ENTER_PRIVATE_HOST("alpha", "10.1.2.0 alpha.one a0\n10.1.2.1 alpha.two a1\n"
                                "10.1.2.2 alpha.three a2\n10.1.2.3 alpha.four a3\n");
    in_threads([](int thread) {
        const std::string alias = {'a', char('0' + thread)};
        const in_addr address = {htonl(0x0A010200u + unsigned(thread))};
        hostent entry;
        int error, needed = 0;
        for (int length = -1; length <= 1024; length += 5) {
            test::GuardedRoom by_name(size_t(std::max(length, 0))),
                by_address(size_t(std::max(length, 0)));
            if (OSGetHostByName(alias.c_str(), &entry, by_name.data(), length, &error)) {
                needed = needed != 0 ? needed : length;
                EXPECT_EQ(entry.h_aliases[0], alias);
                EXPECT_EQ(memcmp(entry.h_addr_list[0], &address, sizeof address), 0);
            } else {
                EXPECT_TRUE(error == NETDB_INTERNAL && needed == 0) << length;
            }
            if (OSGetHostByAddr(&address, 4, AF_INET, &entry, by_address.data(), length, &error))
                EXPECT_EQ(entry.h_aliases[0], alias);
            else
                EXPECT_TRUE(error == NETDB_INTERNAL && length < 1024) << length;
        }
        EXPECT_GT(needed, 0);
        char buffer[1024];
        EXPECT_EQ(OSGetHostByName("nowhere", &entry, buffer, 1024, &error), nullptr);
        EXPECT_EQ(error, HOST_NOT_FOUND);
        error = 0;
        EXPECT_EQ(OSGetHostByAddr(&address, -1, AF_INET, &entry, buffer, 1024, &error), nullptr);
        EXPECT_EQ(error, HOST_NOT_FOUND);
    });
}

TEST(Time, LocalTimeAndTimeOfDay) {
    setenv("TZ", "EST5", 1);
    in_threads([](int thread) {
        for (time_t day = thread * 400; day < thread * 400 + 400; ++day) {
            const time_t when = day * 86400;
            tm local;
            ASSERT_EQ(OSLocalTime(&when, &local), &local);
            ASSERT_EQ(local.tm_wday, (day + 3) % 7); // 1970 began on a Thursday
            ASSERT_EQ(timegm(&local), when - 5 * 3600);
        }
    });
    const time_t never = std::numeric_limits<time_t>::max();
    tm local;
    EXPECT_EQ(OSLocalTime(&never, &local), nullptr);

    timeval before, after;
    ZVStatsTime stamp;
    gettimeofday(&before, nullptr);
    OSGetStatsTime(&stamp);
    gettimeofday(&after, nullptr);
    const timeval taken = {time_t(stamp.seconds), suseconds_t(stamp.microseconds)};
    EXPECT_FALSE(timercmp(&taken, &before, <) || timercmp(&after, &taken, <));
    EXPECT_LT(stamp.microseconds, 1000000u);
}

} // namespace
