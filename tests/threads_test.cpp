#include <gtest/gtest.h>

#include <netinet/in.h>

#include <atomic>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "osutils.h"
#include "support/guarded.h"
#include "support/private_host.h"
#include "zvosutil.h"

// The mutex that was given back last. The thread sanitizer looks at them by itself.
#ifndef __SANITIZE_THREAD__
static std::atomic<const pthread_mutex_t*> destroyed;
extern "C" int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept {
    destroyed = mutex;
    return 0;
}
#endif

namespace {

using namespace test;

template <class Action>
void in_threads(Action action) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(action, i);
}

TEST(Threads, ExcludeEachOtherAndKeepTheirValuesApart) {
    pthread_mutex_t section;
    pthread_key_t key;
    int rounds = 0;
    memset(&section, 0xFF, sizeof section);
    OSInitializeCriticalSection(&section);
    OSTLSAlloc(&key);
    OSTLSSetValue(key, &rounds);
    in_threads([&](int own) {
        EXPECT_EQ(OSTLSGetValue(key), nullptr);
        OSTLSSetValue(key, &own);
        for (int i = 0; i < 2000; ++i) {
            OSEnterCriticalSection(&section);
            const int before = rounds;
            if (i % 100 == 0)
                std::this_thread::yield();
            rounds = before + 1;
            OSLeaveCriticalSection(&section);
        }
        EXPECT_EQ(OSTLSGetValue(key), &own);
    });
    EXPECT_EQ(rounds, 8000);
    OSDeleteCriticalSection(&section);
#ifndef __SANITIZE_THREAD__
    EXPECT_EQ(destroyed, &section);
#endif
    OSTLSFree(key);
    // A process has 1,024 keys at once.
    for (int i = 0; i < 2000; ++i) {
        key = pthread_key_t(-1);
        OSTLSAlloc(&key);
        ASSERT_EQ(OSTLSGetValue(key), nullptr) << "a fresh key, whatever the last one held";
        OSTLSSetValue(key, &rounds);
        ASSERT_EQ(OSTLSGetValue(key), &rounds) << i;
        OSTLSFree(key);
    }
}

using ThreadsOnHost = PrivateHost;

TEST_F(ThreadsOnHost, LookUpHostsIntoTheirOwnMemory) {
    in_threads([](int thread) {
        const std::string alias = {'a', char('0' + thread)};
        const in_addr address = {htonl(0x0A010300u + unsigned(thread))};
        GuardedRoom room(1024);
        hostent entry;
        int error = 0;
        for (const bool by_name : {true, false}) {
            SCOPED_TRACE(by_name ? "by name" : "by address");
            const auto look_up = [&](const char* name, int length) {
                char* buffer = room.data() + 1024 - length;
                return by_name ? OSGetHostByName(name, &entry, buffer, length, &error)
                               : OSGetHostByAddr(&address, *name == 'a' ? 4 : -1, AF_INET, &entry,
                                                 buffer, length, &error);
            };
            int length = -8;
            for (; look_up(alias.c_str(), length) == nullptr && length < 1024; length += 8)
                EXPECT_EQ(std::exchange(error, 0), NETDB_INTERNAL) << length;
            EXPECT_EQ(entry.h_aliases[0], alias);
            EXPECT_EQ(memcmp(entry.h_addr_list[0], &address, sizeof address), 0);
            EXPECT_EQ(look_up("nowhere", 1024), nullptr);
            EXPECT_EQ(error, HOST_NOT_FOUND);
        }
    });
}

TEST_F(ThreadsOnHost, ReadNamesThatAreResolvedAgain) {
    ASSERT_EQ(InitHostnameWithDomain(), 1);
    in_threads([](int thread) {
        for (int i = 0; i < 500; ++i) {
            char name[65];
            if (thread == 0)
                InitHostnameWithDomain();
            ASSERT_EQ(OSGetHostnameWithDomain(name), 1);
            ASSERT_STREQ(name, "alpha.beta.gamma");
        }
    });
}

TEST(Threads, ConvertTimesAtOnce) {
    setenv("TZ", "EST5", 1);
    in_threads([](int thread) {
        tm local;
        for (time_t when = thread; when < 40000000; when += 86400) {
            ASSERT_EQ(OSLocalTime(&when, &local), &local) << when;
            ASSERT_EQ(timegm(&local), when - 5 * 3600) << when;
        }
        // No year that an int holds, but where seconds end in 2038.
        const time_t last = std::numeric_limits<time_t>::max();
        EXPECT_EQ(OSLocalTime(&last, &local), sizeof last > 4 ? nullptr : &local);
    });
    ZVStatsTime stamp[2];
    OSGetStatsTime(&stamp[0]);
    usleep(1500);
    OSGetStatsTime(&stamp[1]);
    const double seconds = stamp[1].seconds - stamp[0].seconds +
                           (double(stamp[1].microseconds) - stamp[0].microseconds) / 1e6;
    EXPECT_GT(seconds, 0.001);
    EXPECT_LT(seconds, 1);
}

} // namespace
