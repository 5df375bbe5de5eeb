#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "osutils.h"
#include "support/child.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

// An installation directory whose server configuration file holds what a test gives it.
class Installation {
public:
    Installation() {
        if (mkdtemp(directory_) == nullptr || mkdir((path() + "/conf").c_str(), 0700) != 0)
            abort();
    }
    ~Installation() {
        unlink(file().c_str());
        rmdir((path() + "/conf").c_str());
        rmdir(directory_);
    }
    std::string path() const { return directory_; }
    std::string file() const { return path() + "/conf/zv.conf"; }
    void write(const std::string& text) const { std::ofstream(file()) << text; }

private:
    char directory_[28] = "/tmp/zvutil-install-XXXXXX";
};

std::string setting(const char* key) {
    test::GuardedRoom value(256);
    GetLineFromServerConfigFileDup(test::GuardedText(key).data(), value.data());
    return value.text();
}

std::string database(const std::string& directory) {
    SetZVInstallPath(test::GuardedText(directory).data());
    return OSGetServerDbPath();
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
    ENTER_PRIVATE_HOST("alpha", "10.1.2.3 alpha.beta.gamma alpha\n");
    const std::string audit = OSGetAuditConfigPath();
    EXPECT_EQ(InitializeSrvUtil(), 1);
    setenv("ZVCONFIGDIR", "/etc/x/", 1);
    EXPECT_STREQ(OSGetServerConfigPath(), "/usr/zv/conf/zv.conf") << "filled at start-up";
    EXPECT_EQ(OSGetAuditConfigPath(), audit);
    SetZVInstallPath("/opt/p");
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
    ENTER_PRIVATE_HOST("nowhere", "10.1.2.3 alpha.beta.gamma alpha\n");
    EXPECT_EQ(InitializeSrvUtil(), 0);
    setenv("ZVCONFIGDIR", "/later", 1);
    EXPECT_STREQ(OSGetZVQDirectory(), "/later/zv");
}

TEST(Paths, WhatDoesNotFitIsRefusedWhole) {
    for (size_t length = 230; length < 300; ++length) {
        const std::string directory = std::string(length, 'd');
        unsetenv("ZVCONFIGDIR");
        SetZVInstallPath("/p");
        SetZVInstallPath(test::GuardedText(directory).data());
        EXPECT_EQ(OSGetZVInstallPath(), length <= 237 ? directory : "/p");
        EXPECT_EQ(OSGetAuditConfigPath(),
                  (length <= 237 ? directory : "/p") + "/conf/zvaudit.conf");
        setenv("ZVCONFIGDIR", "/c", 1);
        SetZVInstallPath("/p");
        SetZVInstallPath(test::GuardedText(directory).data());
        EXPECT_EQ(OSGetZVInstallPath(), length <= 255 ? directory : "/p");
        setenv("ZVCONFIGDIR", directory.c_str(), 1);
        SetZVInstallPath("/p");
        EXPECT_EQ(OSGetAuditConfigPath(),
                  (length <= 242 ? directory : "/p/conf") + "/zvaudit.conf");
        setenv("ZVMCONFIGFILE", directory.c_str(), 1);
        const auto monitor = [&](int) {
            return OSGetZVMonitorConfigFile("") ==
                   (length <= 255 ? directory : "../conf/zvmonitor.conf");
        };
        EXPECT_EQ(test::Child(monitor).finish().status, 1) << length;
    }
}

TEST(ServerConfiguration, LinesThatCarryTheKey) {
    const Installation installation;
    const std::string key = "Server-directory:", long_value(300, 'v');
    const struct {
        std::string text, value;
    } cases[] = {
        {"", ""},
        {key + "   /db/dir  \r\n", "/db/dir"},
        {key + "\t /db dir\t\n\n", "/db dir"},
        {"x\n" + key + "/end", "/end"},
        {" " + key + "/x\nserver-directory:/x\nServer-directory\n", ""},
        {key + "/1\nother:/2\n" + key + "/3\n", "/3"},
        {key + "/1\n" + key + "\n", ""},
        {key + "/1\n" + key + " \t\r", ""},
        {key + long_value.substr(0, 255) + "\n", long_value.substr(0, 255)},
        {key + long_value + "\n", long_value.substr(0, 255)},
        {long_value.substr(0, 283) + key + "/piece\n", "/piece"},
        {long_value.substr(0, 282) + key + "/no-piece\n", ""},
        {key + "/x" + std::string(264, ' ') + key + "/2\n", "/2"},
        {key + std::string("/a\0b\n", 5) + "\n", "/a"},
    };
    for (const auto& c : cases) {
        installation.write(c.text);
        EXPECT_EQ(database(installation.path()), c.value.empty()         ? "./"
                                                 : c.value.size() == 255 ? "./"
                                                                         : c.value + "/");
        EXPECT_EQ(setting(key.c_str()), c.value) << c.text;
    }
    installation.write(key + long_value.substr(0, 254));
    EXPECT_EQ(database(installation.path()), long_value.substr(0, 254) + "/");
    installation.write("k: \nk:v");
    EXPECT_EQ(setting("k: "), "") << "the key's own blank is no value";
    EXPECT_EQ(setting("k:"), "v");
    EXPECT_EQ(database("/nowhere"), "./");
    EXPECT_EQ(setting(key.c_str()), "");
}

} // namespace
