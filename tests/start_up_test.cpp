#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "mbutil.h"
#include "osutils.h"
#include "support/child.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

using namespace test;

using StartUpOnHost = PrivateHost;

TEST_F(StartUpOnHost, FillsWhatANewDirectoryEmpties) {
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
    SetZVInstallPath("/opt/p");
    EXPECT_STREQ(OSGetServerConfigPath(), "/etc/x//zv.conf") << "the environment has precedence";
    unsetenv("ZVCONFIGDIR");
    EXPECT_STREQ(OSGetAuditConfigPath(), "/etc/x//zvaudit.conf");
    SetZVInstallPath(OSGetZVInstallPath());
    TerminateSrvUtil();
    EXPECT_STREQ(OSGetAuditConfigPath(), "/opt/p/conf/zvaudit.conf");
    EXPECT_STREQ(OSGetDBConfigPath(), "/opt/p/conf/zvdb.conf");
    EXPECT_STREQ(OSGetZVQDirectory(), "/usr/zv/conf/zv") << "kept";
    GuardedRoom separator(2), line_end(2);
    OSGetDirSeparator(separator.data());
    EXPECT_EQ(separator.text(), "/");
    OSGetEol(line_end.data());
    EXPECT_EQ(line_end.text(), "\n");
}

TEST_F(StartUpOnHost, WithoutAnAddressResolvesNothing) {
    sethostname("nowhere", 7);
    EXPECT_EQ(InitializeSrvUtil(), 0);
    setenv("ZVCONFIGDIR", "/later", 1);
    EXPECT_STREQ(OSGetZVConfigPath(), "/later");
}

TEST_F(StartUpOnHost, ReadsTheConfigurationFileOnce) {
    const Folder folder;
    const auto configure = [&](const std::string& database) {
        write_file(folder / "zv.conf", "Server-directory:" + database + "\nKey: v\n");
    };
    setenv("ZVCONFIGDIR", (folder / "").c_str(), 1);
    configure("/first");
    EXPECT_EQ(InitializeSrvUtil(), 1);
    configure("/second");
    sethostname("later", 5);
    GuardedRoom name(65);
    OSGetHostnameNoDomain(name.data());
    EXPECT_EQ(name.text(), "alpha") << "resolved at start-up";
    EXPECT_STREQ(OSGetServerDbPath(), "/first/");
    SetZVInstallPath("/opt");
    configure("/third");
    EXPECT_STREQ(OSGetServerDbPath(), "/second/") << "read when the directory was set";
    unsetenv("ZVCONFIGDIR");
    EXPECT_EQ(OSGetDBConfigPath(), (folder / "") + "/zvdb.conf");
}

TEST(StartUp, IsNotNeededToReadASetting) {
    const Folder folder;
    write_file(folder / "zv.conf", "Key:  value \n");
    setenv("ZVCONFIGDIR", (folder / "").c_str(), 1);
    GuardedRoom value(256);
    GetLineFromServerConfigFileDup("Key:", value.data());
    EXPECT_EQ(value.text(), "value");
}

// Starts up as a host does, and tells what a hostile environment has broken.
void start_up(int out) {
    OSInitLanguage();
    InitMbutil();
    GuardedRoom name(65);
    OSGetServerNameNoDomain(name.data());
    if (mbGetLocaleCodeSet() != ZV_WESTERN || mbmaxcharlen() != 1)
        dprintf(out, "code set");
    for (const char* path :
         {OSGetZVInstallPath(), OSGetZVConfigPath(), OSGetServerConfigPath(), OSGetDBConfigPath(),
          OSGetAuditConfigPath(), OSGetZVQDirectory(), OSGetServerDbPath()})
        if (*path == '\0' || strnlen(path, 256) > 255)
            dprintf(out, "path %.300s", path);
    const char* const monitor = getenv("ZVMCONFIGFILE");
    const bool fits = monitor != nullptr && strnlen(monitor, 256) - 1 < 255;
    if (OSGetZVMonitorConfigFile(nullptr) != std::string(fits ? monitor : "../conf/zvmonitor.conf"))
        dprintf(out, "path of the monitor");
    struct stat status {};
    for (int i = 0; i < 20; ++i) {
        char* const temporary = OSTmpName("zv");
        if (temporary == nullptr)
            break; // as for a directory with too long a name
        // Whoever plants a link at such a name does not get the next one.
        if (lstat(temporary, &status) == 0 || symlink("/no/such", temporary) != 0)
            dprintf(out, "name %s", temporary);
        unlink(temporary);
        free(temporary);
    }
    if (OSTmpFileFd() == -1)
        dprintf(out, "temporary file");
}

TEST(StartUp, SucceedsInAnyEnvironment) {
    const Folder folder;
    write_file(folder / "file", "");
    std::vector<std::string> values = {
        "", "/", "%s%n%L%N", "\x1B[2J\xFF\x80\x8E", "../../../etc", "LC_CTYPE=;LC_NUMERIC=/;"};
    for (const size_t length : {255u, 256u, 5000u, 1u << 20})
        values.push_back("en." + std::string(length - 3, '8'));
    for (const char* name : {"file", "file/none"})
        values.push_back(folder / name);
    for (const char* variable : {"LANG", "LC_ALL", "LC_CTYPE", "LOCPATH", "NLSPATH", "ZVCONFIGDIR",
                                 "ZVMCONFIGFILE", "TMPDIR"}) {
        for (const std::string& value : values) {
            Child child([&](int out) {
                clearenv();
                setenv(variable, value.c_str(), 1);
                start_up(out);
            });
            EXPECT_EQ(child.finish(), "") << variable << "=" << value.substr(0, 40);
        }
    }
}

TEST(StartUp, ReadsAnythingInTheConfigurationFilesPlace) {
    const Folder folder;
    std::filesystem::current_path(folder / "");
    const std::pair<const char*, const char*> cases[] = {
        {"mkfifo zv.conf", "./"},
        {"mkdir zv.conf", "./"},
        {"ln -s /dev/zero zv.conf", "./"},
        {"ln -s none zv.conf", "./"},
        {"ln -s zv.conf zv.conf", "./"},
        {"{ printf 'Server-directory: /db'; truncate -s 200M /dev/stdout;"
         " printf '\\nServer-directory: /end'; } >>zv.conf",
         "/end/"},
    };
    for (const auto& [making, database] : cases) {
        ASSERT_EQ(system(making), 0) << making;
        Child child([](int out) {
            rusage before{}, after{};
            getrusage(RUSAGE_SELF, &before);
            alarm(100);
            setenv("ZVCONFIGDIR", ".", 1);
            dprintf(out, "%s", OSGetServerDbPath());
            getrusage(RUSAGE_SELF, &after);
            if (after.ru_maxrss - before.ru_maxrss > 4096)
                dprintf(out, " grew");
        });
        EXPECT_EQ(child.finish(), database) << making;
        std::filesystem::remove_all("zv.conf");
    }
}

} // namespace
