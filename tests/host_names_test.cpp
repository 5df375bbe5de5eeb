#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>

#include "mbutil.h"
#include "osutils.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

const std::string kHosts = "10.1.2.3 alpha.beta.gamma alpha mirror\n"
                           "10.1.2.4 delta.beta.gamma delta beta\n"
                           "10.1.2.5 solo\n"
                           "10.1.2.6 " +
                           std::string(63, 'a') + "\xA4\xA2" + "b long\n";
const std::string kUntouched(65, '#');
// Together with the domain of alpha 64 and 65 bytes.
const std::string kFits(53, 'f'), kTooLong(54, 't');

void configure(const std::string& server_name) {
    strcpy(serverNameFromConfig, server_name.c_str());
}

// What a function left in the room of a name, and its result.
template <class Function>
std::string written_by(Function function, int expected_result) {
    test::GuardedRoom out(65);
    EXPECT_EQ(function(out.data()), expected_result);
    return memchr(out.data(), 0, 65) != nullptr ? out.text() : std::string(out.data(), 65);
}

std::string remote(const char* name, int result) {
    return written_by(
        [&](char* out) {
            return OSGetRemoteHostnameWithDomain(test::GuardedText(name).data(), out);
        },
        result);
}

TEST(HostNames, MachineAndRemoteNames) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    EXPECT_EQ(written_by(OSGetHostnameWithDomain, 1), "alpha.beta.gamma");
    EXPECT_EQ(written_by([](char* out) { return OSGetHostnameNoDomain(out), 1; }, 1), "alpha");
    EXPECT_EQ(remote("DELTA", 1), "delta.beta.gamma");
    EXPECT_EQ(remote("nowhere", 0), kUntouched);
    EXPECT_EQ(remote("", 0), kUntouched);
    InitMbutilExt(ZV_WESTERN);
    EXPECT_EQ(remote("long", 1), std::string(63, 'a') + "\xA4");
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(remote("long", 1), std::string(63, 'a')) << "no character is cut";
}

TEST(HostNames, AFailedLookUpLeavesTheNodeName) {
    ENTER_PRIVATE_HOST("nowhere", kHosts);
    EXPECT_EQ(IsCurrentServerName("nowhere", nullptr), 0);
    EXPECT_EQ(IsCurrentServerName("nowhere", nullptr), 1);
    EXPECT_EQ(written_by(OSGetHostnameWithDomain, 1), "nowhere");
    EXPECT_EQ(InitHostnameWithDomain(), 0);
}

TEST(HostNames, AFailedLookUpWritesNothing) {
    ENTER_PRIVATE_HOST("nowhere", kHosts);
    EXPECT_EQ(written_by(OSGetServerNameWithDomain, 0), kUntouched);
    EXPECT_EQ(written_by(OSGetServerNameWithDomain, 1), "nowhere");
}

TEST(ServerNames, TakeTheMachinesDomain) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    const struct {
        std::string configured;
        int result;
        std::string with_domain, without;
    } cases[] = {
        {"", 1, "alpha.beta.gamma", "alpha"},      {"srv", 1, "srv.beta.gamma", "srv"},
        {"srv.x", 1, "srv.x.beta.gamma", "srv.x"}, {kFits, 1, kFits + ".beta.gamma", kFits},
        {kTooLong, 0, kTooLong, kTooLong},
    };
    for (const auto& c : cases) {
        configure(c.configured);
        EXPECT_EQ(written_by(OSGetServerNameWithDomain, c.result), c.with_domain);
        EXPECT_EQ(written_by([](char* out) { return OSGetServerNameNoDomain(out), 1; }, 1),
                  c.without);
    }
    memset(serverNameFromConfig, 'u', 65);
    EXPECT_EQ(written_by(OSGetServerNameWithDomain, 0), std::string(64, 'u')) << "unterminated";
}

TEST(ServerNames, AMachineWithoutDomain) {
    ENTER_PRIVATE_HOST("solo", kHosts);
    configure(std::string(64, 's'));
    EXPECT_EQ(written_by(OSGetServerNameWithDomain, 1), std::string(64, 's'));
    EXPECT_EQ(IsCurrentServerName("SOLO", nullptr), 1);
    EXPECT_EQ(IsCurrentServerName("alpha", nullptr), 0);
}

TEST(ServerNames, WhichNamesDesignateThisServer) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    const char* const names[] = {"Listed", "*", "$listed", "\x83\x41"};
    const NameList list = {4, names}, empty = {0, nullptr};
    const struct {
        std::string configured;
        const char* name;
        int result, result_without_list;
    } cases[] = {
        {"", nullptr, 0, 0},
        {"", "", 0, 0},
        {"", "@", 1, 1},
        {"", "@alpha", 0, 0},
        {"*", "*", 0, 0},
        {"$listed", "$listed", 0, 0},
        {"", "listed", 1, 0},
        {"", "listed.beta.gamma", 0, 0},
        {"srv", "SRV", 1, 1},
        {"srv", "Srv.beta.gamma", 1, 1},
        {"srv", "srv.beta", 0, 0},
        {"", "srv", 0, 0},
        {"srv", "alpha.beta.gamma", 1, 1},
        {"", "ALPHA.BETA.GAMMA", 1, 1},
        {"srv", "Alpha", 1, 1},
        {"", "alpha.beta", 0, 0},
        {"", "alph", 0, 0},
        {"", "mirror", 1, 1},
        {"", "delta", 0, 0},
        {"", "beta", 0, 0},
        {"", "nowhere", 0, 0},
        {kFits, "alpha", 1, 1},
        {kTooLong, kTooLong.c_str(), 1, 1},
        {kTooLong, "alpha.beta.gamma", 1, 1},
        {kTooLong, "alpha", 0, 0}, // decided before its turn
        {kTooLong, "mirror", 0, 0},
    };
    for (const auto& c : cases) {
        configure(c.configured);
        EXPECT_EQ(IsCurrentServerName(c.name, &list), c.result) << c.configured << " " << c.name;
        EXPECT_EQ(IsCurrentServerName(c.name, &empty), c.result_without_list) << c.name;
        EXPECT_EQ(IsCurrentServerName(c.name, nullptr), c.result_without_list) << c.name;
    }
    configure("SRV-I");
    setenv("LOCPATH", ZVUTIL_TEST_LOCALES, 1);
    ASSERT_NE(setlocale(LC_ALL, "tr_TR.ISO8859-9"), nullptr);
    EXPECT_EQ(IsCurrentServerName("srv-i", nullptr), 1) << "also where i is not I's small letter";
    InitMbutilExt(ZV_SJIS);
    EXPECT_EQ(IsCurrentServerName("\x83\x41", &list), 1);
    EXPECT_EQ(IsCurrentServerName("\x83\x61", &list), 0) << "a trail byte has no case";
}

TEST(ServerNames, Aliases) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    const struct {
        const char *configured, *name, *expected;
        int result;
    } cases[] = {
        {"srv", "srv", "x", 1},      {"srv", "SRV", "x", 0},
        {"srv", "mirror", "", 1},    {"srv", "nowhere", nullptr, 0},
        {"", "mirror", nullptr, 1},  {"", "mirror", "Alpha.beta.GAMMA", 1},
        {"", "mirror", "mirror", 0}, {"", "nowhere", "nowhere", 0},
    };
    for (const auto& c : cases) {
        configure(c.configured);
        EXPECT_EQ(OSCheckHostnameUsingAlias(c.name, c.expected), c.result)
            << c.configured << " " << c.name;
    }
}

} // namespace
