#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "mbutil.h"
#include "osutils.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

const std::string kHosts = "10.1.2.3 alpha.beta.gamma alpha mirror\n"
                           "10.1.2.4 delta.beta.gamma delta beta\n"
                           "10.1.2.5 solo\n"
                           "10.1.2.6 " +
                           std::string(63, 'a') + "\xA4\xA2 long\n";
// Together with the domain of alpha 64 and 65 bytes.
const std::string kFits(53, 'f'), kTooLong(54, 't'), kRefused = std::string(1, '!') + kTooLong;

void configure(const std::string& server_name) {
    strcpy(serverNameFromConfig, server_name.c_str());
}

// What a function leaves in the room of a name, and "!" before it when it reports a failure.
std::string name_by(int (*function)(char*)) {
    test::GuardedRoom out(65);
    std::string name(function(out.data()) == 1 ? "" : "!");
    return name.append(*out.data() == '#' ? "untouched" : out.text());
}

std::string full_server_name() { return name_by(OSGetServerNameWithDomain); }
std::string short_server_name() {
    return name_by([](char* out) { return OSGetServerNameNoDomain(out), 1; });
}

TEST(HostNames, OfMachines) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    EXPECT_EQ(name_by(OSGetHostnameWithDomain), "alpha.beta.gamma");
    EXPECT_EQ(name_by([](char* out) { return OSGetRemoteHostnameWithDomain("DELTA", out); }),
              "delta.beta.gamma");
    EXPECT_EQ(name_by([](char* out) { return OSGetRemoteHostnameWithDomain("lost", out); }),
              "!untouched");
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(name_by([](char* out) { return OSGetRemoteHostnameWithDomain("long", out); }),
              std::string(63, 'a'))
        << "no character is cut";
}

TEST(HostNames, OnlyTheFailedLookUpIsReported) {
    ENTER_PRIVATE_HOST("lost", kHosts);
    EXPECT_EQ(full_server_name(), "!untouched");
    EXPECT_EQ(full_server_name(), "lost");
    EXPECT_EQ(IsCurrentServerName("LOST", nullptr), 1);
    EXPECT_EQ(InitHostnameWithDomain(), 0);
}

TEST(ServerNames, TakeTheMachinesDomain) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    EXPECT_EQ(full_server_name() + short_server_name(), "alpha.beta.gammaalpha");
    for (const std::string& name : {std::string("srv"), std::string("srv.x"), kFits, kTooLong}) {
        configure(name);
        EXPECT_EQ(full_server_name(), name == kTooLong ? kRefused : name + ".beta.gamma");
        EXPECT_EQ(short_server_name(), name);
    }
    memset(serverNameFromConfig, 'u', 65);
    EXPECT_EQ(full_server_name(), std::string(65, 'u').replace(0, 1, "!")) << "unterminated";
}

TEST(ServerNames, AMachineWithoutDomain) {
    ENTER_PRIVATE_HOST("solo", kHosts);
    configure(std::string(64, 's'));
    EXPECT_EQ(full_server_name(), std::string(64, 's'));
    EXPECT_EQ(IsCurrentServerName("SOLO", nullptr), 1);
    EXPECT_EQ(IsCurrentServerName("alpha", nullptr), 0);
}

TEST(ServerNames, WhichNamesDesignateThisServer) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    const char* const names[] = {"Listed", "*", "$listed", "\x83\x41"};
    const NameList list = {4, names}, empty = {0, names};
    const struct {
        std::string configured;
        std::vector<const char*> designate, do_not;
    } cases[] = {
        {"",
         {"@", "ALPHA.BETA.GAMMA", "Alpha", "mirror"},
         {nullptr, "", "@alpha", "srv", "alpha.beta", "alph", "delta", "beta", "lost"}},
        {"srv", {"SRV", "Srv.beta.gamma", "alpha.beta.gamma", "ALPHA", "mirror"}, {"srv.beta"}},
        {"*", {}, {"*"}},
        {"$listed", {}, {"$listed"}},
        {kFits, {"alpha"}, {}},
        {kTooLong, {kTooLong.c_str(), "alpha.beta.gamma"}, {"alpha", "mirror"}},
    };
    for (const auto& c : cases) {
        configure(c.configured);
        for (const NameList* others : {&list, &empty, static_cast<const NameList*>(nullptr)}) {
            for (const char* name : c.designate)
                EXPECT_EQ(IsCurrentServerName(name, others), 1) << c.configured << " " << name;
            for (const char* name : c.do_not)
                EXPECT_EQ(IsCurrentServerName(name, others), 0) << c.configured << " " << name;
            EXPECT_EQ(IsCurrentServerName("listed", others), others == &list);
        }
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
    EXPECT_EQ(OSCheckHostnameUsingAlias("mirror", nullptr), 1);
    EXPECT_EQ(OSCheckHostnameUsingAlias("mirror", "Alpha.beta.GAMMA"), 1);
    EXPECT_EQ(OSCheckHostnameUsingAlias("mirror", "mirror"), 0);
    EXPECT_EQ(OSCheckHostnameUsingAlias("lost", "lost"), 0);
    configure("srv");
    EXPECT_EQ(OSCheckHostnameUsingAlias("mirror", ""), 1);
    EXPECT_EQ(OSCheckHostnameUsingAlias("lost", nullptr), 0);
    EXPECT_EQ(OSCheckHostnameUsingAlias("srv", "x"), 1);
    EXPECT_EQ(OSCheckHostnameUsingAlias("SRV", "srv"), 0);
}

} // namespace
