#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "osutils.h"
#include "support/child.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

const std::string kHosts = "10.1.2.3 alpha.beta.gamma alpha\n";

void install(const std::string& directory) {
    SetZVInstallPath(test::GuardedText(directory).data());
}

TEST(Paths, Defaults) {
    setenv("ZVCONFIGDIR", "", 1);
    setenv("ZVMCONFIGFILE", "", 1);
    SetZVInstallPath("");
    SetZVInstallPath(nullptr);
    EXPECT_STREQ(OSGetAuditConfigPath(), "/usr/zv/conf/zvaudit.conf");
    EXPECT_STREQ(OSGetZVInstallPath(), "/usr/zv");
    EXPECT_STREQ(OSGetZVConfigPath(), "/usr/zv/conf");
    EXPECT_STREQ(OSGetServerConfigPath(), "/usr/zv/conf/zv.conf");
    EXPECT_STREQ(OSGetDBConfigPath(), "/usr/zv/conf/zvdb.conf");
    EXPECT_STREQ(OSGetZVQDirectory(), "/usr/zv/conf/zv");
    EXPECT_STREQ(OSGetServerDbPath(), "./");
    EXPECT_STREQ(OSGetZVMonitorConfigFile(nullptr), "../conf/zvmonitor.conf");
    test::GuardedRoom separator(2), line_end(2);
    OSGetDirSeparator(separator.data());
    OSGetEol(line_end.data());
    EXPECT_EQ(separator.text() + line_end.text(), "/\n");
}

TEST(Paths, StartUpFillsWhatANewDirectoryEmpties) {
    ENTER_PRIVATE_HOST("alpha", kHosts);
    EXPECT_EQ(InitializeSrvUtil(), 1);
    setenv("ZVCONFIGDIR", "/etc/x/", 1);
    EXPECT_STREQ(OSGetServerConfigPath(), "/usr/zv/conf/zv.conf") << "filled at start-up";
    EXPECT_STREQ(OSGetAuditConfigPath(), "/usr/zv/conf/zvaudit.conf");
    install("/opt/p");
    EXPECT_STREQ(OSGetZVInstallPath(), "/opt/p");
    EXPECT_STREQ(OSGetServerConfigPath(), "/etc/x//zv.conf") << "the environment has precedence";
    unsetenv("ZVCONFIGDIR");
    EXPECT_STREQ(OSGetAuditConfigPath(), "/etc/x//zvaudit.conf");
    SetZVInstallPath(OSGetZVInstallPath());
    TerminateSrvUtil();
    EXPECT_STREQ(OSGetAuditConfigPath(), "/opt/p/conf/zvaudit.conf");
    EXPECT_STREQ(OSGetDBConfigPath(), "/opt/p/conf/zvdb.conf");
    EXPECT_STREQ(OSGetZVQDirectory(), "/usr/zv/conf/zv") << "kept";
}

TEST(Paths, StartUpWithoutAHostNameResolvesNothing) {
    ENTER_PRIVATE_HOST("nowhere", kHosts);
    EXPECT_EQ(InitializeSrvUtil(), 0);
    setenv("ZVCONFIGDIR", "/later", 1);
    EXPECT_STREQ(OSGetZVQDirectory(), "/later/zv");
}

TEST(Paths, WhatDoesNotFitIsRefusedWhole) {
    for (size_t length = 230; length < 300; ++length) {
        const std::string directory(length, 'd');
        const auto or_else = [&](size_t longest, const char* other) {
            return length <= longest ? directory : other;
        };
        unsetenv("ZVCONFIGDIR");
        install("/p");
        install(directory);
        EXPECT_EQ(OSGetAuditConfigPath(), or_else(237, "/p") + "/conf/zvaudit.conf");
        EXPECT_EQ(OSGetZVInstallPath(), or_else(237, "/p"));
        setenv("ZVCONFIGDIR", "/c", 1);
        install("/p");
        install(directory);
        EXPECT_EQ(OSGetZVInstallPath(), or_else(255, "/p"));
        setenv("ZVCONFIGDIR", directory.c_str(), 1);
        install("/p");
        EXPECT_EQ(OSGetAuditConfigPath(), or_else(242, "/p/conf") + "/zvaudit.conf");
        setenv("ZVMCONFIGFILE", directory.c_str(), 1);
        const std::string monitor = or_else(255, "../conf/zvmonitor.conf");
        test::Child child([&](int) { return OSGetZVMonitorConfigFile("") == monitor; });
        EXPECT_EQ(child.finish().status, 1) << length;
    }
}

TEST(ServerConfiguration, LinesThatCarryTheKey) {
    char directory[] = "/tmp/zvutil_test.XXXXXX";
    const std::string config = mkdtemp(directory) + std::string("/conf"),
                      file = config + "/zv.conf";
    ASSERT_EQ(mkdir(config.c_str(), 0700), 0);
    const std::string key = "Server-directory:", v(300, 'v');
    const std::pair<std::string, std::string> cases[] = {
        {key + "   /db/dir  \r\n", "/db/dir"},
        {key + "\t /db dir\t\n\n", "/db dir"},
        {"x\n" + key + "/end", "/end"},
        {" " + key + "/x\nserver-directory:/x\nServer-directory\n", ""},
        {key + "/1\nother:/2\n" + key + "/3\n", "/3"},
        {key + "/1\n" + key + " \t\r\n", ""},
        {key + v.substr(0, 254) + "\n", v.substr(0, 254)},
        {key + v + "\n", v.substr(0, 255)},
        {v.substr(0, 283) + key + "/piece\n", "/piece"},
        {v.substr(0, 282) + key + "/no-piece\n", ""},
        {key + "/x" + std::string(264, ' ') + key + "/2\n", "/2"},
        {key + std::string("/a\0b\n", 5) + "\n", "/a"},
    };
    const auto setting = [](const std::string& name) {
        test::GuardedRoom value(256);
        GetLineFromServerConfigFileDup(test::GuardedText(name).data(), value.data());
        return value.text();
    };
    for (const auto& [text, value] : cases) {
        std::ofstream(file) << text;
        install(directory);
        EXPECT_EQ(OSGetServerDbPath(), value.empty() || value.size() > 254 ? "./" : value + "/");
        EXPECT_EQ(setting(key), value) << text;
    }
    std::ofstream(file) << "k: \nk:v";
    EXPECT_EQ(setting("k: "), "") << "the key's own blank is no value";
    unlink(file.c_str());
    EXPECT_EQ(setting("k:"), "");
    rmdir(config.c_str());
    rmdir(directory);
}

} // namespace
