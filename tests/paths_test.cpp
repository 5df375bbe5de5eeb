#include <gtest/gtest.h>

#include <cstdlib>

#include "osutils.h"
#include "support/child.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

const std::string kHosts = "10.1.2.3 alpha.beta.gamma alpha\n";

void install(const std::string& directory) {
    SetZVInstallPath(test::GuardedText(directory).data());
}

TEST(Paths, StartUpFillsWhatANewDirectoryEmpties) {
    if (!test::enter_private_host("alpha", kHosts)) GTEST_SKIP() << "a private host is refused";
    setenv("ZVCONFIGDIR", "", 1);
    SetZVInstallPath("");
    SetZVInstallPath(nullptr);
    EXPECT_EQ(InitializeSrvUtil(), 1);
    EXPECT_STREQ(OSGetServerDbPath(), "./");
    setenv("ZVCONFIGDIR", "/etc/x/", 1);
    EXPECT_STREQ(OSGetZVInstallPath(), "/usr/zv") << "filled at start-up";
    EXPECT_STREQ(OSGetServerConfigPath(), "/usr/zv/conf/zv.conf");
    EXPECT_STREQ(OSGetDBConfigPath(), "/usr/zv/conf/zvdb.conf");
    EXPECT_STREQ(OSGetAuditConfigPath(), "/usr/zv/conf/zvaudit.conf");
    install("/opt/p");
    EXPECT_STREQ(OSGetServerConfigPath(), "/etc/x//zv.conf") << "the environment has precedence";
    unsetenv("ZVCONFIGDIR");
    EXPECT_STREQ(OSGetAuditConfigPath(), "/etc/x//zvaudit.conf");
    SetZVInstallPath(OSGetZVInstallPath());
    TerminateSrvUtil();
    EXPECT_STREQ(OSGetAuditConfigPath(), "/opt/p/conf/zvaudit.conf");
    EXPECT_STREQ(OSGetDBConfigPath(), "/opt/p/conf/zvdb.conf");
    EXPECT_STREQ(OSGetZVQDirectory(), "/usr/zv/conf/zv") << "kept";
    test::GuardedRoom separator(2), line_end(2);
    OSGetDirSeparator(separator.data()), OSGetEol(line_end.data());
    EXPECT_EQ(separator.text() + line_end.text(), "/\n");
}

TEST(Paths, StartUpWithoutAHostNameResolvesNothing) {
    if (!test::enter_private_host("nowhere", kHosts)) GTEST_SKIP() << "a private host is refused";
    EXPECT_EQ(InitializeSrvUtil(), 0);
    setenv("ZVCONFIGDIR", "/later", 1);
    EXPECT_STREQ(OSGetZVConfigPath(), "/later");
}

TEST(Paths, WhatDoesNotFitIsRefusedWhole) {
    for (size_t length = 230; length < 300; ++length) {
        const std::string directory(length, 'd');
        const auto or_else = [&](size_t longest, const char* other) {
            return length <= longest ? directory : other;
        };
        unsetenv("ZVCONFIGDIR");
        install("/p"), install(directory);
        EXPECT_EQ(OSGetAuditConfigPath(), or_else(237, "/p") + "/conf/zvaudit.conf");
        setenv("ZVCONFIGDIR", "/c", 1);
        install("/p"), install(directory);
        EXPECT_EQ(OSGetZVInstallPath(), or_else(255, "/p"));
        setenv("ZVCONFIGDIR", directory.c_str(), 1);
        install("/p");
        EXPECT_EQ(OSGetAuditConfigPath(), or_else(242, "/p/conf") + "/zvaudit.conf");
        setenv("ZVMCONFIGFILE", directory.c_str(), 1);
        test::Child child([&](int out) { dprintf(out, "%s", OSGetZVMonitorConfigFile(nullptr)); });
        EXPECT_EQ(child.finish(), or_else(255, "../conf/zvmonitor.conf"));
    }
}

TEST(Paths, ServerSettingsAreTheLinesThatBeginWithTheKey) {
    const test::Folder folder;
    std::filesystem::create_directory(folder / "conf");
    const std::string key = "Server-directory: ", v(300, 'v');
    const std::pair<std::string, std::string> cases[] = {
        {key + "   /db/dir  \r\n", "/db/dir"},
        {"x\n" + key + "\t /db dir\t\n\n", "/db dir"},
        {" " + key + "/x\nserver-directory: /x\nServer-directory:\n", ""},
        {key + "/1\nother:/2\n" + key + "/3", "/3"},
        {key + "/1\n" + key + " \t\r\n", ""},
        {key + "\n", ""},
        {key + v.substr(0, 254) + "\n", v.substr(0, 254)},
        {key + v + "\n", v.substr(0, 255)},
        {v.substr(0, 283) + key + "/piece\n", "/piece"},
        {v.substr(0, 282) + key + "/no-piece\n", ""},
        {key + std::string("/a\0b\n", 5) + "\n", "/a"},
    };
    for (const auto& [text, value] : cases) {
        test::write_file(folder / "conf/zv.conf", text);
        install(folder / "");
        EXPECT_EQ(OSGetServerDbPath(), value.empty() || value.size() > 254 ? "./" : value + "/");
        test::GuardedRoom setting(256);
        GetLineFromServerConfigFileDup(test::GuardedText(key).data(), setting.data());
        EXPECT_EQ(setting.text(), value) << text;
    }
}

} // namespace
