#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <list>
#include <set>

#include "faults/faults.h"
#include "osutils.h"
#include "support/calls.h"
#include "support/child.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/private_host.h"

namespace {

using namespace test;

// A file in all three forms.
struct OpenFile {
    OpenFile(const std::string& path, const char* mode)
        : zv(ZVfopen(path.c_str(), mode)), standard(fopen(path.c_str(), mode)) {}
    ~OpenFile() {
        ZVfclose(zv);
        fclose(standard);
    }
    ZVFILE* zv;
    FILE* standard;
};

class Files : public testing::Test {
protected:
    // A second process that locks the file, and writes a line a while later.
    Child locker(int lock_type, unsigned milliseconds) {
        return Child([=, this](int out) {
            const int fd = open(path.c_str(), O_RDWR | O_APPEND);
            lseek(fd, 2, SEEK_SET);
            dprintf(out, "%d", OSLockFileFd(fd, lock_type, 0));
            usleep(milliseconds * 1000);
            if (write(fd, "late\n", 5) != 5)
                abort();
        });
    }
    const Folder folder;
    const std::string path = folder / "file";
};

TEST_F(Files, LocksExcludeASecondProcess) {
    write_file(path, "text");
    const OpenFile ours(path, "r+");
    const int types[] = {ZV_LOCK_WRITE, ZV_LOCK_READ, 0, 7};
    for (const int theirs : types) {
        Child other = locker(theirs, 60000);
        ASSERT_EQ(other.await(), '1');
        struct flock seen {};
        seen.l_type = F_WRLCK;
        ASSERT_EQ(fcntl(ZVfileno(ours.zv), F_GETLK, &seen), 0);
        EXPECT_EQ(seen.l_pid, other.process);
        EXPECT_EQ(seen.l_start + seen.l_len, 0) << "all of the file, wherever its end comes to be";
        for (const int type : types) {
            SCOPED_TRACE(testing::Message() << "their lock " << theirs << ", ours " << type);
            const bool granted = theirs != ZV_LOCK_WRITE && type != ZV_LOCK_WRITE;
            EXPECT_EQ(OSLockFileFd(ZVfileno(ours.zv), type, 0), granted);
            EXPECT_EQ(OSLockFile(ours.standard, type, 0), granted);
            EXPECT_EQ(OSLockZVFile(ours.zv, type, 2), granted);
        }
    }
    const auto unlocks = [&](auto unlock, auto file) {
        EXPECT_EQ(OSLockZVFile(ours.zv, ZV_LOCK_WRITE, 1), 1);
        EXPECT_EQ(locker(ZV_LOCK_READ, 0).await(), '0');
        EXPECT_EQ(unlock(file), 1);
        EXPECT_EQ(locker(ZV_LOCK_WRITE, 0).await(), '1');
    };
    unlocks(OSUnLockZVFile, ours.zv);
    unlocks(OSUnLockFile, ours.standard);
    unlocks(OSUnLockFileFd, ZVfileno(ours.zv));
    const auto lock = [&] { return int{OSLockZVFile(ours.zv, ZV_LOCK_WRITE, 1)}; };
    for (const int error : {ENOLCK, EINTR})
        EXPECT_EQ(with_fault(1, lock, {"once", kLock, error}), std::pair(1, true))
            << "tries a second time";
    EXPECT_EQ(OSUnLockZVFile(ours.zv), 1);

    Child other = locker(ZV_LOCK_WRITE, 200);
    ASSERT_EQ(other.await(), '1');
    EXPECT_EQ(OSLockZVFile(ours.zv, ZV_LOCK_WRITE, 1), 1) << "waits";
}

TEST_F(Files, StatusTruncationAndNames) {
    write_file(path, "0123456789");
    const timespec times[2] = {{0, UTIME_OMIT}, {987654321, 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const OpenFile ours(path, "r+"), reader(path, "r");
    EXPECT_EQ(OSFileExists(path.c_str()), 1);
    EXPECT_EQ(OSFileSize(path.c_str()), 10);
    std::filesystem::create_symlink(path, folder / "link");
    EXPECT_EQ(OSFileSize((folder / "link").c_str()), 10);
    EXPECT_EQ(OSZVFileModifiedTime(ours.zv), 987654321);
    EXPECT_EQ(OSFileModifiedTime(ours.standard), 987654321);
    EXPECT_EQ(OSZVFileTruncate(ours.zv, 4), 1);
    EXPECT_EQ(OSFileTruncate(ours.standard, 6), 1);
    EXPECT_EQ(OSZVFileTruncate(reader.zv, 0), 0);
    EXPECT_EQ(OSFileTruncate(reader.standard, 0), 0);
    EXPECT_EQ(content(path), std::string("0123\0\0", 6));
    EXPECT_EQ(OSFileTruncateFd(ZVfileno(ours.zv), -5), 1);
    EXPECT_EQ(OSFileSize(path.c_str()), 0);
    for (const off_t size : {0x7FFFFFFFLL, 0x80000000LL}) {
        ASSERT_EQ(truncate(path.c_str(), size), 0);
        EXPECT_EQ(OSFileSize(path.c_str()), size == 0x7FFFFFFF ? size : -1) << size;
    }
    EXPECT_EQ(errno, EOVERFLOW);
    EXPECT_EQ(OSRename(path.c_str(), (folder / "new").c_str()), 0);
    EXPECT_EQ(OSRename(path.c_str(), (folder / "new").c_str()), -1);
    EXPECT_EQ(OSFileSize(path.c_str()), -1);
    EXPECT_EQ(OSFileExists(path.c_str()), 0);

    (void)!setreuid(65534, geteuid()); // who may not read what is there
    EXPECT_EQ(OSFileExists("/proc/1/environ"), 1);
    GuardedRoom out(256);
    EXPECT_EQ(OSBuildFilename(nullptr, "/x.log", out.data()), 1);
    EXPECT_EQ(OSTmpPath() + out.text(), "/var/tmp//x.log");
}

TEST_F(Files, FailuresSayWhy) {
    write_file(path, "");
    const OpenFile reader(path, "r");
    expect_each(0, EBADF, CALL(OSLockZVFile(reader.zv, ZV_LOCK_WRITE, 1)),
                CALL(OSLockFile(nullptr, ZV_LOCK_READ, 1)),
                CALL(OSLockZVFile(nullptr, ZV_LOCK_READ, 1)), CALL(OSUnLockFile(nullptr)),
                CALL(OSUnLockZVFile(nullptr)), CALL(OSFileModifiedTime(nullptr)),
                CALL(OSFileTruncate(nullptr, 0)));
    expect_each(-1, ENOENT, CALL(OSFindLineInFile("/no/such", "x")),
                CALL(OSAppendLineToFile("/no/such", "x")));
    expect_each(-1, EISDIR, CALL(OSFindLineInFile("/tmp", "x")),
                CALL(OSAppendLineToFile("/tmp", "x")));
}

TEST_F(Files, WhatStandsBehindATornLineKeepsIt) {
    write_file(path, "first\n");
    // What a writer without a lock has put behind the torn line keeps it there.
    static const std::string* shared;
    shared = &path;
    const auto write_foreign = [] { std::ofstream(*shared, std::ios::app) << "foreign"; };
    const Fault fault = {"another writer", kWrite, ENOSPC, kForever, true, write_foreign};
    const auto append = [&] { return OSAppendLineToFile(path.c_str(), "0123456789"); };
    EXPECT_EQ(with_fault(1, append, fault), std::pair(-1, true));
    EXPECT_EQ(content(path), "first\n01234foreign");
}

TEST_F(Files, ATornLineThatStaysIsToldAsSuch) {
    const int sealed = memfd_create("sealed", MFD_ALLOW_SEALING);
    ASSERT_EQ(fcntl(sealed, F_ADD_SEALS, F_SEAL_SHRINK), 0);
    const std::string place = "/proc/self/fd/" + std::to_string(sealed);
    const auto append = [&] { return OSAppendLineToFile(place.c_str(), "0123456789"); };
    const Fault full = {"full", kWrite, ENOSPC, kForever, true};
    EXPECT_EQ(with_fault(1, append, full), std::pair(-1, true));
    EXPECT_EQ(errno, ENOSPC) << "not that it could not be cut";
}

TEST_F(Files, ALineThatDoesNotFitLeavesNothing) {
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    const auto refuses = [&](int error) {
        write_file(path, "first\n");
        errno = 0;
        EXPECT_EQ(OSAppendLineToFile(path.c_str(), std::string(page, 'l').c_str()), -1) << error;
        EXPECT_EQ(errno, error);
        EXPECT_EQ(OSAppendLineToFile(path.c_str(), "second"), 0) << error;
        EXPECT_EQ(content(path), "first\nsecond\n") << error;
    };
    signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {1000, RLIM_INFINITY}, large = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &small);
    refuses(EFBIG);
    setrlimit(RLIMIT_FSIZE, &large);
    const std::string place = folder / "";
    if (!enter_private_namespaces() || mount("none", place.c_str(), "tmpfs", 0, "nr_blocks=1") != 0)
        GTEST_SKIP() << "a file system of a page is refused: " << strerror(errno);
    refuses(ENOSPC);
    umount2(place.c_str(), MNT_DETACH);
}

TEST_F(Files, SearchesWaitForWriters) {
    write_file(path, "");
    Child writer = locker(ZV_LOCK_WRITE, 100);
    ASSERT_EQ(writer.await(), '1');
    EXPECT_EQ(OSFindLineInFile(path.c_str(), "late\n"), 1);
}

TEST_F(Files, EightProcessesAppendAtOnce) {
    const auto line = [](int writer, size_t number) {
        const std::string digits(number % 50 == 0 ? 20000 : number * 37 % 5000, char('0' + writer));
        // A few need memory to be formatted, but only with the line's end behind them.
        return (std::to_string(number) + "%s" + digits).substr(0, 16383);
    };
    std::list<Child> writers;
    for (int writer = 0; writer < 8; ++writer)
        writers.emplace_back([&](int) {
            for (size_t number = 0; number < 200; ++number)
                if (OSAppendLineToFile(path.c_str(), line(writer, number).c_str()) != 0)
                    abort();
        });
    for (auto& writer : writers)
        EXPECT_EQ(writer.finish(), "");
    size_t next[8] = {};
    std::ifstream lines(path);
    for (std::string text; std::getline(lines, text);) {
        const int writer = text.back() == 's' ? 0 : text.back() - '0';
        ASSERT_EQ(text, line(writer, next[writer & 7]++));
    }
    for (const size_t count : next)
        EXPECT_EQ(count, 200U);
}

TEST_F(Files, SweepsRemoveWhatMatchesAndFits) {
    const std::string deep = std::string(200, 'd') + "/" + std::string(200, 'e'),
                      base = folder / deep.c_str();
    std::filesystem::create_directories(base + "/d.tmp");
    const std::string fits = std::string(511 - base.size() - 5, 'f') + ".tmp";
    for (const std::string& name : {fits, "f" + fits, std::string(".b.tmp"), std::string("a.txt")})
        write_file(base + "/" + name, "");
    EXPECT_EQ(OSRemoveFiles("/no/such", "*"), 1);
    EXPECT_EQ(OSRemoveFiles(base.c_str(), "*.tmp"), 1);
    EXPECT_EQ(OSRemoveFiles(base.c_str(), "\\a*"), 1);
    for (const size_t slashes : {511u, 512u, 2000u})
        EXPECT_EQ(OSRemoveFiles((base + std::string(slashes - base.size(), '/')).c_str(), "*"), 1);
    std::set<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(base))
        left.insert(entry.path().filename());
    EXPECT_EQ(left, (std::set<std::string>{"d.tmp", "f" + fits}));
}

// Temporary files in all three forms are empty, can be read and written, and are known to nobody
// else.
void expect_private_files() {
    umask(0);
    ZVFILE* zv = OSTmpZVFile();
    FILE* standard = OSTmpFile();
    const int own = OSTmpFileFd();
    for (const int fd : {ZVfileno(zv), fileno(standard), own}) {
        struct stat status {};
        char bytes[4] = "";
        EXPECT_EQ(fstat(fd, &status), 0);
        EXPECT_EQ(status.st_mode, mode_t{S_IFREG | 0600});
        EXPECT_EQ(status.st_nlink, 0u);
        EXPECT_EQ(status.st_size, 0);
        EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
        EXPECT_EQ(write(fd, "abc", 3), 3);
        EXPECT_EQ(pread(fd, bytes, 3, 0), 3);
        EXPECT_STREQ(bytes, "abc");
    }
    char bytes[8] = "";
    ZVrewind(zv);
    EXPECT_EQ(ZVfputs("X", zv), 1);
    EXPECT_EQ(ZVfgets(bytes, 8, zv), bytes);
    EXPECT_STREQ(bytes, "bc") << "written over what was there";
    rewind(standard);
    EXPECT_EQ(fputc('X', standard), 'X');
    rewind(standard);
    EXPECT_EQ(fgets(bytes, 8, standard), bytes);
    EXPECT_STREQ(bytes, "Xbc");
    ZVfclose(zv);
    fclose(standard);
    close(own);
}

TEST_F(Files, TemporaryOnesAreKnownToNobodyElse) {
    expect_private_files();
    const int fd = OSTmpFileFd();
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    EXPECT_NE(linkat(AT_FDCWD, link.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW), 0)
        << "nor can they be given a name";
    close(fd);
    close(STDIN_FILENO); // the first descriptor serves, too
    inject(1, {"no files without names", kOpen, EOPNOTSUPP});
    expect_private_files();
    EXPECT_TRUE(inject(0));
    EXPECT_EQ(OSTmpFileFd(), 0);
    close(STDIN_FILENO);
    FILE* const first = OSTmpFile();
    ASSERT_TRUE(first) << "here as well";
    fclose(first);
    expect_private_files();
}

} // namespace
