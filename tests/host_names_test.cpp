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
const std::string kFits(53, 'f'), kTooLong(54, 't');

// What a function that is to fail or to succeed leaves in the room of a name.
template <class Function>
std::string written_by(Function function, bool succeeds = true) {
    test::GuardedRoom out(65);
    const auto call = [&] { return function(out.data()); };
    if constexpr (std::is_void_v<decltype(call())>)
        call();
    else
        EXPECT_EQ(call(), succeeds);
    return *out.data() == '#' ? "(untouched)" : out.text();
}

TEST(HostNames, MachineAndRemoteNames) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    const auto remote = [](const char* name, bool resolves) {
        const auto resolve = [&](char* out) { return OSGetRemoteHostnameWithDomain(name, out); };
        return written_by(resolve, resolves);
    };
    EXPECT_EQ(written_by(OSGetHostnameWithDomain), "alpha.beta.gamma");
    EXPECT_EQ(written_by(OSGetHostnameNoDomain), "alpha");
    EXPECT_EQ(remote("DELTA", true), "delta.beta.gamma");
    EXPECT_EQ(remote("nowhere", false), "(untouched)");
    EXPECT_EQ(remote("", false), "(untouched)");
    InitMbutilExt(ZV_WESTERN);
    EXPECT_EQ(remote("long", true), std::string(63, 'a') + "\xA4");
    InitMbutilExt(ZV_EUC);
    EXPECT_EQ(remote("long", true), std::string(63, 'a')) << "no character is cut";
}

TEST(HostNames, OnlyTheFailedLookUpIsReported) {
    ENTER_PRIVATE_HOST("nowhere", kHosts);
    EXPECT_EQ(written_by(OSGetServerNameWithDomain, false), "(untouched)");
    EXPECT_EQ(written_by(OSGetServerNameWithDomain), "nowhere");
    EXPECT_EQ(IsCurrentServerName("NOWHERE", nullptr), 1);
    EXPECT_EQ(InitHostnameWithDomain(), 0);
}

TEST(ServerNames, TakeTheMachinesDomain) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    for (const std::string& name : {std::string("srv"), std::string("srv.x"), kFits, kTooLong}) {
        strcpy(serverNameFromConfig, name.c_str());
        EXPECT_EQ(written_by(OSGetServerNameWithDomain, name != kTooLong),
                  name == kTooLong ? name : name + ".beta.gamma");
        EXPECT_EQ(written_by(OSGetServerNameNoDomain), name);
    }
    memset(serverNameFromConfig, 'u', 65);
    EXPECT_EQ(written_by(OSGetServerNameWithDomain, false), std::string(64, 'u')) << "unterminated";
    *serverNameFromConfig = '\0';
    EXPECT_EQ(written_by(OSGetServerNameWithDomain), "alpha.beta.gamma");
    EXPECT_EQ(written_by(OSGetServerNameNoDomain), "alpha");
}

TEST(ServerNames, AMachineWithoutDomain) {
    ENTER_PRIVATE_HOST("solo", kHosts);
    strcpy(serverNameFromConfig, std::string(64, 's').c_str());
    EXPECT_EQ(written_by(OSGetServerNameWithDomain), std::string(64, 's'));
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
         {nullptr, "", "@alpha", "srv", "alpha.beta", "alph", "delta", "beta", "nowhere"}},
        {"srv", {"SRV", "Srv.beta.gamma", "alpha.beta.gamma", "ALPHA", "mirror"}, {"srv.beta"}},
        {"*", {}, {"*"}},
        {"$listed", {}, {"$listed"}},
        {kFits, {"alpha"}, {}},
        {kTooLong, {kTooLong.c_str(), "alpha.beta.gamma"}, {"alpha", "mirror"}},
    };
    for (const auto& c : cases) {
        strcpy(serverNameFromConfig, c.configured.c_str());
        for (const NameList* others : {&list, &empty, static_cast<const NameList*>(nullptr)}) {
            for (const char* name : c.designate)
                EXPECT_EQ(IsCurrentServerName(name, others), 1) << c.configured << " " << name;
            for (const char* name : c.do_not)
                EXPECT_EQ(IsCurrentServerName(name, others), 0) << c.configured << " " << name;
            EXPECT_EQ(IsCurrentServerName("listed", others), others == &list);
        }
    }
    strcpy(serverNameFromConfig, "SRV-I");
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
    } cases[] = {{"srv", "srv", "x", 1},      {"srv", "SRV", "x", 0},
                 {"srv", "mirror", "", 1},    {"srv", "nowhere", nullptr, 0},
                 {"", "mirror", nullptr, 1},  {"", "mirror", "Alpha.beta.GAMMA", 1},
                 {"", "mirror", "mirror", 0}, {"", "nowhere", "nowhere", 0}};
    for (const auto& c : cases) {
        strcpy(serverNameFromConfig, c.configured);
        EXPECT_EQ(OSCheckHostnameUsingAlias(c.name, c.expected), c.result)
            << c.configured << c.name;
    }
}

} // namespace
