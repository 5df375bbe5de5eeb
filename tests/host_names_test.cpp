#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "mbutil.h"
#include "osutils.h"
#include "support/guarded.h"
#include "support/private_host.h"
#include "zvosutil.h"

// A resolver in place of the system's, when there is one.
static std::function<int(hostent*, hostent**, int*)> answering;
extern "C" int gethostbyname_r(const char* name, hostent* entry, char* buffer, size_t length,
                               hostent** found, int* error) {
    if (answering)
        return answering(entry, found, error);
    static const auto beneath =
        reinterpret_cast<decltype(&gethostbyname_r)>(dlsym(RTLD_NEXT, "gethostbyname_r"));
    return beneath(name, entry, buffer, length, found, error);
}
extern "C" int gethostbyaddr_r(const void*, socklen_t, int, hostent* entry, char*, size_t,
                               hostent** found, int* error) {
    return answering(entry, found, error);
}

namespace {

using namespace test;

void configure(const std::string& server_name) {
    strcpy(serverNameFromConfig, server_name.c_str());
}

// What a function leaves in the room of a name, and "!" before it when it reports a failure.
std::string name_by(auto function) {
    GuardedRoom out(65);
    std::string name;
    if constexpr (std::is_void_v<decltype(function(out.data()))>)
        function(out.data());
    else
        name = function(out.data()) == 1 ? "" : "!";
    return name + (*out.data() == '#' ? "untouched" : out.text());
}
std::string remote_name(const std::string& name) {
    return name_by([&](char* out) { return OSGetRemoteHostnameWithDomain(name.c_str(), out); });
}

using HostNames = PrivateHost;

TEST_F(HostNames, OnlyAFailedLookUpIsReported) {
    EXPECT_EQ(remote_name("DELTA"), "delta.beta.gamma");
    EXPECT_EQ(remote_name("lost"), "!untouched");
    EXPECT_EQ(remote_name(std::string(70000, 'n')), "!untouched");
    sethostname("lost", 4);
    EXPECT_EQ(name_by(OSGetServerNameWithDomain), "!untouched");
    EXPECT_EQ(name_by(OSGetServerNameWithDomain), "lost");
    EXPECT_EQ(IsCurrentServerName("LOST", nullptr), 1);
}

TEST_F(HostNames, ServersTakeTheMachinesDomain) {
    for (const char* node : {"alpha", "delta"}) {
        sethostname(node, 5);
        EXPECT_EQ(name_by(OSGetServerNameWithDomain), "alpha.beta.gamma") << "kept on " << node;
        EXPECT_EQ(name_by(OSGetServerNameNoDomain), "alpha") << "kept on " << node;
    }
    InitHostnameNoDomain();
    EXPECT_EQ(name_by(OSGetHostnameNoDomain), "delta");
    EXPECT_EQ(name_by(OSGetHostnameWithDomain), "alpha.beta.gamma");
    configure("srv.x");
    EXPECT_EQ(name_by(OSGetServerNameWithDomain), "srv.x.beta.gamma");
    EXPECT_EQ(name_by(OSGetServerNameNoDomain), "srv.x");
    memset(serverNameFromConfig, 'u', 65);
    EXPECT_EQ(name_by(OSGetServerNameWithDomain), "!" + std::string(64, 'u')) << "unterminated";
}

TEST_F(HostNames, SomeDesignateThisServer) {
    const char* const names[] = {"Listed", "*", "$listed"};
    const NameList list = {3, names}, empty = {0, names};
    configure("srv");
    for (const char* name : {"@", "ALPHA.beta.gamma", "Alpha", "mirror", "SRV", "srv.Beta.gamma"})
        EXPECT_EQ(IsCurrentServerName(name, &list), 1) << name;
    for (const char* name : {"", "@alpha", "srv.beta", "delta", "beta", "*", "$listed", "lost"})
        EXPECT_EQ(IsCurrentServerName(name, &list), 0) << name;
    EXPECT_EQ(IsCurrentServerName(nullptr, &list), 0);
    EXPECT_EQ(IsCurrentServerName("listed", &list), 1);
    EXPECT_EQ(IsCurrentServerName("listed", &empty), 0);
    EXPECT_EQ(IsCurrentServerName("listed", nullptr), 0);
    configure("SRV-I\xDC"); // with a capital U umlaut
    EXPECT_EQ(IsCurrentServerName("SRV-I\xFC", nullptr), 0) << "no letter without a locale";
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    ASSERT_NE(setlocale(LC_ALL, "tr_TR.ISO8859-9"), nullptr);
    EXPECT_EQ(IsCurrentServerName("srv-i\xFC", nullptr), 1) << "though there i is not I's";
    EXPECT_EQ(IsCurrentServerName("srv-i\xFB", nullptr), 0);
    configure("\x80"); // a capital letter
    ASSERT_NE(setlocale(LC_ALL, "ru_RU.CP1251"), nullptr);
    EXPECT_EQ(IsCurrentServerName("\x90", nullptr), 1);
    configure("\xFF"); // and the last byte
    ASSERT_NE(setlocale(LC_ALL, "ru_RU.KOI8-R"), nullptr);
    EXPECT_EQ(IsCurrentServerName("\xDF", nullptr), 1);
}

TEST(LookUps, GiveWhatTheResolverFoundOrWhyNot) {
    constexpr int kUntouched = 77;
    const struct {
        int status;
        bool finds;
        int code, error;
    } cases[] = {{0, true, 0, kUntouched},
                 {0, true, TRY_AGAIN, TRY_AGAIN},
                 {0, false, HOST_NOT_FOUND, HOST_NOT_FOUND},
                 {ERANGE, false, 0, NETDB_INTERNAL},
                 {ERANGE, true, TRY_AGAIN, NETDB_INTERNAL},
                 {EAGAIN, true, TRY_AGAIN, TRY_AGAIN}};
    hostent entry;
    char buffer[8];
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        answering = [&](hostent* out, hostent** found, int* error) {
            *found = c.finds ? out : nullptr;
            if (c.code != 0)
                *error = c.code;
            return c.status;
        };
        hostent* const expected = c.finds && c.status == 0 ? &entry : nullptr;
        int error = kUntouched;
        EXPECT_EQ(OSGetHostByName("x", &entry, buffer, 8, &error), expected);
        EXPECT_EQ(error, c.error);
        error = kUntouched;
        EXPECT_EQ(OSGetHostByAddr("1234", 4, AF_INET, &entry, buffer, 8, &error), expected);
        EXPECT_EQ(error, c.error);
    }
}

} // namespace
