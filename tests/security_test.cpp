#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <functional>

#include "mbutil.h"
#include "osutils.h"
#include "support/child.h"
#include "support/folder.h"
#include "support/guarded.h"

namespace {

// Starts up as a host does, and tells what a hostile environment has broken.
void start_up(int out, const std::string& catalogues) {
    OSInitLanguage();
    if (getenv("NLSPATH") != catalogues) dprintf(out, "NLSPATH");
    InitMbutil();
    test::GuardedRoom name(65);
    OSGetServerNameNoDomain(name.data());
    if (mbGetLocaleCodeSet() != ZV_WESTERN || mbmaxcharlen() != 1) dprintf(out, "code set");
    for (const char* path : {OSGetZVInstallPath(), OSGetZVConfigPath(), OSGetServerConfigPath(),
                             OSGetDBConfigPath(), OSGetAuditConfigPath(), OSGetZVQDirectory(),
                             OSGetServerDbPath(), OSGetZVMonitorConfigFile(nullptr)})
        if (*path == '\0' || strnlen(path, 256) > 255) dprintf(out, "path %.300s", path);
    struct stat status {};
    for (int i = 0; i < 20; ++i) {
        char* const temporary = OSTmpName("zv");
        if (temporary == nullptr) break; // as for a directory with too long a name
        // Whoever plants a link at such a name does not get the next one.
        if (lstat(temporary, &status) == 0 || symlink("/no/such", temporary) != 0)
            dprintf(out, "name %s", temporary);
        unlink(temporary), free(temporary);
    }
    const int fd = OSTmpFileFd();
    if (fstat(fd, &status) != 0 || status.st_nlink != 0 || (status.st_mode & 07777) != 0600)
        dprintf(out, "temporary file");
}

TEST(Security, StartsUpInAnyEnvironment) {
    const std::string system = "/usr/lib/locale/%L/LC_MESSAGES/%N";
    const test::Folder folder;
    test::write_file(folder / "file", "");
    const std::string values[] = {"",
                                  "/",
                                  "%s%n%L%N",
                                  "\x1B[2J\xFF\x80\x8E",
                                  "../../../../etc",
                                  "LC_CTYPE=;LC_NUMERIC=/;",
                                  folder / "file",
                                  folder / "file/none",
                                  std::string(256, '.'),
                                  std::string(5000, '/'),
                                  std::string(1 << 20, 'x'),
                                  "en." + std::string(1 << 20, '8') + "@x"};
    for (const char* variable : {"LANG", "LC_ALL", "LC_CTYPE", "LOCPATH", "NLSPATH", "ZVCONFIGDIR",
                                 "ZVMCONFIGFILE", "TMPDIR"}) {
        for (const std::string& value : values) {
            const bool has_own = variable == std::string("NLSPATH") && !value.empty();
            test::Child child([&](int out) {
                clearenv();
                setenv(variable, value.c_str(), 1);
                start_up(out, has_own ? value + ":" + system : system);
            });
            EXPECT_EQ(child.finish(), "") << variable << "=" << value.substr(0, 40);
        }
    }
}

TEST(Security, AnythingMayStandInTheConfigurationFilesPlace) {
    const test::Folder folder;
    const std::string path = folder / "zv.conf", key = "Server-directory: ";
    const auto link_to = [&](const char* target) { return symlink(target, path.c_str()); };
    const auto gigabyte_line = [&] {
        test::write_file(path, key + "/db");
        const int made = truncate(path.c_str(), 1 << 30);
        std::ofstream(path, std::ios::app) << "\n" << key << "/end";
        return made;
    };
    const struct {
        const char *what, *directory;
        std::function<int()> make;
    } cases[] = {
        {"pipe", "./", [&] { return mkfifo(path.c_str(), 0600); }},
        {"directory", "./", [&] { return mkdir(path.c_str(), 0700); }},
        {"endless device", "./", [&] { return link_to("/dev/zero"); }},
        {"dangling link", "./", [&] { return link_to("none"); }},
        {"circular link", "./", [&] { return link_to("zv.conf"); }},
        {"a line of a gigabyte", "/end/", gigabyte_line},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(c.make(), 0) << c.what;
        test::Child child([&](int out) {
            rusage before{}, after{};
            getrusage(RUSAGE_SELF, &before);
            alarm(100);
            setenv("ZVCONFIGDIR", (folder / "").c_str(), 1);
            dprintf(out, "%s", OSGetServerDbPath());
            getrusage(RUSAGE_SELF, &after);
            if (after.ru_maxrss - before.ru_maxrss > 4096) dprintf(out, " grew");
        });
        EXPECT_EQ(child.finish(), c.directory) << c.what;
        std::filesystem::remove_all(path);
    }
}

} // namespace
