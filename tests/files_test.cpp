#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "osutils.h"
#include "support/child.h"
#include "support/failing_allocation.h"
#include "support/guarded.h"
#include "support/temporary_file.h"

namespace {

namespace fs = std::filesystem;

// The number that the next descriptor gets: what has leaked moves it.
int next_descriptor() {
    const int fd = open("/dev/null", O_RDONLY);
    close(fd);
    return fd;
}

// A file in all three forms.
struct OpenFile {
    OpenFile(const char* path, const char* mode)
        : zv(ZVfopen(path, mode)), standard(fopen(path, mode)) {}
    ~OpenFile() {
        ZVfclose(zv);
        fclose(standard);
    }
    ZVFILE* zv;
    FILE* standard;
};

// A second process that locks a file and works on it for a while, or until it is ended.
test::Child locker(const char* path, int lock_type, unsigned milliseconds, const char* line = "") {
    return test::Child([=](int out) {
        const int fd = open(path, O_RDWR | O_APPEND);
        if (!OSLockFileFd(fd, lock_type, 1) || write(out, "L", 1) != 1) return 1;
        usleep(milliseconds * 1000);
        return write(fd, line, strlen(line)) < 0 ? 1 : 0;
    });
}

TEST(FileLocks, ExcludeASecondProcess) {
    const test::TemporaryFile file("text");
    const OpenFile ours(file.path(), "r+");
    const int fd = fileno(ours.standard);
    for (const int theirs : {1, 2, 0}) {
        test::Child other = locker(file.path(), theirs, 60000);
        ASSERT_EQ(other.await(), 'L');
        struct flock seen {};
        seen.l_type = F_WRLCK;
        ASSERT_EQ(fcntl(fd, F_GETLK, &seen), 0);
        EXPECT_EQ(seen.l_type, theirs == ZV_LOCK_WRITE ? F_WRLCK : F_RDLCK);
        EXPECT_EQ(seen.l_pid, other.process());
        EXPECT_EQ(seen.l_start, 0);
        EXPECT_EQ(seen.l_len, 0) << "to the end of the file, wherever it comes to be";
        for (const int type : {1, 2, 0, 7})
            for (const int wait : {0, 2}) {
                const bool granted = theirs != ZV_LOCK_WRITE && type != ZV_LOCK_WRITE;
                errno = 0;
                EXPECT_EQ(OSLockFileFd(fd, type, wait), granted);
                EXPECT_TRUE(granted || errno == EAGAIN || errno == EACCES);
                EXPECT_EQ(OSLockFile(ours.standard, type, wait), granted);
                EXPECT_EQ(OSLockZVFile(ours.zv, type, wait), granted);
            }
    }
}

TEST(FileLocks, AreReleased) {
    const test::TemporaryFile file;
    const OpenFile ours(file.path(), "r+");
    const auto other_may_write = [&] {
        return test::Child(
                   [&](int) { return !OSLockFileFd(open(file.path(), O_RDWR), ZV_LOCK_WRITE, 0); })
                   .finish()
                   .status == 0;
    };
    const auto unlocked_by = [&](auto unlock) {
        return OSLockZVFile(ours.zv, ZV_LOCK_WRITE, 1) == 1 && !other_may_write() &&
               unlock() == 1 && other_may_write();
    };
    EXPECT_TRUE(unlocked_by([&] { return OSUnLockZVFile(ours.zv); }));
    EXPECT_TRUE(unlocked_by([&] { return OSUnLockFile(ours.standard); }));
    EXPECT_TRUE(unlocked_by([&] { return OSUnLockFileFd(ZVfileno(ours.zv)); }));
}

TEST(FileLocks, WaitsOutlastSignals) {
    static volatile sig_atomic_t alarms = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { alarms = alarms + 1; };
    OSSetAlarmProc(&action, nullptr);
    const test::TemporaryFile file;
    const OpenFile ours(file.path(), "r+");
    test::Child other = locker(file.path(), ZV_LOCK_WRITE, 300);
    ASSERT_EQ(other.await(), 'L');
    const itimerval often{{0, 20000}, {0, 20000}};
    const itimerval never{};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(OSLockZVFile(ours.zv, ZV_LOCK_WRITE, 1), 1);
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_GT(alarms, 0) << "signals came";
}

TEST(FileForms, RefuseWhatIsNotOpenForIt) {
    const test::TemporaryFile file("text");
    const OpenFile reader(file.path(), "r");
    EXPECT_EQ(OSLockZVFile(reader.zv, ZV_LOCK_WRITE, 1), 0);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(OSZVFileTruncate(reader.zv, 0), 0);
    EXPECT_EQ(OSFileTruncate(reader.standard, 0), 0);
    EXPECT_EQ(file.contents(), "text");
    long (*const without_stream[])() = {
        [] { return long(OSLockFile(nullptr, ZV_LOCK_READ, 1)); },
        [] { return long(OSLockZVFile(nullptr, ZV_LOCK_READ, 1)); },
        [] { return long(OSUnLockFile(nullptr)); },
        [] { return long(OSUnLockZVFile(nullptr)); },
        [] { return long(OSFileModifiedTime(nullptr)); },
        [] { return long(OSFileTruncate(nullptr, 0)); },
    };
    for (const auto call : without_stream) {
        errno = 0;
        EXPECT_EQ(call(), 0);
        EXPECT_EQ(errno, EBADF);
    }
}

TEST(FileStatus, SizesTimesAndTruncation) {
    const test::TemporaryFile file("0123456789");
    const OpenFile ours(file.path(), "r+");
    EXPECT_EQ(OSFileExists(file.path()), 1);
    EXPECT_EQ(OSFileSize(file.path()), 10);
    EXPECT_EQ(OSFileExists("/no/such"), 0);
    EXPECT_EQ(OSFileSize("/no/such"), -1);

    const timespec times[2] = {{0, UTIME_OMIT}, {987654321, 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, file.path(), times, 0), 0);
    EXPECT_EQ(OSZVFileModifiedTime(ours.zv), 987654321);
    EXPECT_EQ(OSFileModifiedTime(ours.standard), 987654321);

    EXPECT_EQ(OSZVFileTruncate(ours.zv, 4), 1);
    EXPECT_EQ(file.contents(), "0123");
    EXPECT_EQ(OSFileTruncate(ours.standard, 6), 1);
    EXPECT_EQ(file.contents(), std::string("0123\0\0", 6));
    EXPECT_EQ(OSFileTruncateFd(ZVfileno(ours.zv), -5), 1);
    EXPECT_EQ(OSFileSize(file.path()), 0);

    ASSERT_EQ(truncate(file.path(), 0x7FFFFFFF), 0);
    EXPECT_EQ(OSFileSize(file.path()), 0x7FFFFFFF);
    ASSERT_EQ(truncate(file.path(), 0x80000000), 0);
    EXPECT_EQ(OSFileSize(file.path()), -1);
    EXPECT_EQ(errno, EOVERFLOW);
}

TEST(FindLine, ComparesWholeLines) {
    const std::string piece(351, 'x');
    const test::TemporaryFile file("one\n\ntwo\r\n" + std::string("th\0ree\n", 7) + piece +
                                   "yy\ntwo\none\nlast");
    const struct {
        std::string text;
        int number;
    } cases[] = {{"one\n", 1}, {"\n", 2},   {"two\r\n", 3}, {"th", 0},    {piece, 5}, {"yy\n", 6},
                 {"two\n", 7}, {"last", 0}, {"one", 0},     {"ONE\n", 0}, {"", 0},    {"ne\n", 0}};
    for (const auto& c : cases)
        EXPECT_EQ(OSFindLineInFile(file.path(), test::GuardedText(c.text).data()), c.number)
            << c.text;
    EXPECT_EQ(OSFindLineInFile(test::TemporaryFile().path(), "one\n"), 0);
}

TEST(FindLine, WaitsForAWriter) {
    const test::TemporaryFile file;
    test::Child writer = locker(file.path(), ZV_LOCK_WRITE, 100, "late\n");
    ASSERT_EQ(writer.await(), 'L');
    EXPECT_EQ(OSFindLineInFile(file.path(), "late\n"), 1);
}

TEST(LineFiles, FailuresSayWhyAndLeaveNothing) {
    const int before = next_descriptor();
    const auto fails = [](int result, int error) {
        return result == -1 && std::exchange(errno, 0) == error;
    };
    EXPECT_TRUE(fails(OSFindLineInFile("/no/such", "x"), ENOENT));
    EXPECT_TRUE(fails(OSFindLineInFile("/tmp", "x"), EISDIR)) << "opened, but never read";
    EXPECT_TRUE(fails(OSAppendLineToFile("/no/such", "x"), ENOENT));
    EXPECT_TRUE(fails(OSAppendLineToFile("/tmp", "x"), EISDIR));
    EXPECT_TRUE(fails(OSAppendLineToFile("/dev/full", "x"), ENOSPC));
    EXPECT_EQ(next_descriptor(), before);
}

TEST(AppendLine, EightProcessesAtOnce) {
    constexpr int kWriters = 8;
    constexpr size_t kLines = 200;
    const auto line = [](int writer, size_t number) {
        // A few are longer than the room that a formatted text has without memory.
        const size_t length = number % 50 == 0 ? 20000 : number * 37 % 5000;
        return std::to_string(writer) + " " + std::to_string(number) + " " +
               std::string(length, static_cast<char>('a' + writer));
    };
    const test::TemporaryFile file;
    unlink(file.path());
    std::vector<std::unique_ptr<test::Child>> writers;
    for (int writer = 0; writer < kWriters; ++writer)
        writers.push_back(std::make_unique<test::Child>([&, writer](int) {
            for (size_t number = 0; number < kLines; ++number)
                if (OSAppendLineToFile(file.path(), line(writer, number).c_str()) != 0) return 1;
            return 0;
        }));
    for (const auto& writer : writers) EXPECT_EQ(writer->finish().status, 0);

    std::array<size_t, kWriters> next{};
    std::ifstream lines(file.path());
    for (std::string text; std::getline(lines, text);) {
        const int writer = text[0] - '0';
        ASSERT_TRUE(writer >= 0 && writer < kWriters) << text;
        ASSERT_EQ(text, line(writer, next[size_t(writer)]++));
    }
    for (const size_t count : next) EXPECT_EQ(count, kLines);
}

TEST(AppendLine, TakesBackALineThatDoesNotFit) {
    const test::TemporaryFile file("first\n");
    test::Child limited([&](int out) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100, 100};
        setrlimit(RLIMIT_FSIZE, &limit);
        const int result = OSAppendLineToFile(file.path(), std::string(200, 'x').c_str());
        return dprintf(out, "%d %d", result, errno == EFBIG) < 0;
    });
    EXPECT_EQ(limited.finish().output, "-1 1");
    EXPECT_EQ(file.contents(), "first\n");
    EXPECT_EQ(OSAppendLineToFile(file.path(), "100%s"), 0);
    EXPECT_EQ(file.contents(), "first\n100%s\n");
}

// A directory of a test's own, removed with all that is in it.
struct TemporaryDirectory {
    TemporaryDirectory() {
        if (mkdtemp(path) == nullptr) abort();
    }
    ~TemporaryDirectory() { fs::remove_all(path); }
    bool make(const std::string& name) const { return bool(std::ofstream(fs::path(path) / name)); }
    bool has(const std::string& name) const { return fs::exists(fs::path(path) / name); }
    char path[32] = "/tmp/zvutil_test.XXXXXX";
};

TEST(RemoveFiles, SweepsWhatMatches) {
    const TemporaryDirectory dir;
    for (const char* name : {"a.tmp", ".b.tmp", "a.txt", "*.c", "x.c"}) ASSERT_TRUE(dir.make(name));
    fs::create_directory(fs::path(dir.path) / "d.tmp");
    EXPECT_EQ(OSRemoveFiles(dir.path, "*.tmp"), 1);
    EXPECT_EQ(OSRemoveFiles(dir.path, "\\*.c"), 1);
    EXPECT_EQ(OSRemoveFiles(dir.path, "nothing"), 1);
    EXPECT_EQ(OSRemoveFiles("/no/such", "*"), 1);
    EXPECT_FALSE(dir.has("a.tmp") || dir.has(".b.tmp") || dir.has("*.c"));
    EXPECT_TRUE(dir.has("a.txt") && dir.has("d.tmp") && dir.has("x.c"));
}

TEST(RemoveFiles, PathsThatDoNotFitStay) {
    const TemporaryDirectory dir;
    const std::string deep = std::string(200, 'd') + "/" + std::string(200, 'e');
    const std::string base = std::string(dir.path) + "/" + deep;
    fs::create_directories(base);
    const std::string fits(511 - base.size() - 1, 'f');
    ASSERT_TRUE(dir.make(deep + "/" + fits) && dir.make(deep + "/" + fits + "f"));
    OSRemoveFiles(base.c_str(), "*");
    EXPECT_FALSE(dir.has(deep + "/" + fits));
    EXPECT_TRUE(dir.has(deep + "/" + fits + "f"));
    for (const size_t slashes : {511u, 512u, 2000u})
        EXPECT_EQ(OSRemoveFiles((base + std::string(slashes - base.size(), '/')).c_str(), "*"), 1);
    EXPECT_TRUE(dir.has(deep + "/" + fits + "f"));
}

TEST(FileNames, RenameAndCompose) {
    const TemporaryDirectory dir;
    ASSERT_TRUE(dir.make("old") && dir.make("new"));
    const std::string base = std::string(dir.path) + "/";
    EXPECT_EQ(OSRename((base + "old").c_str(), (base + "new").c_str()), 0);
    EXPECT_EQ(OSRename((base + "old").c_str(), (base + "new").c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE(dir.has("new") && !dir.has("old"));

    const auto built = [](const char* directory, const std::string& name) {
        test::GuardedRoom out(256);
        const int result = OSBuildFilename(directory, name.c_str(), out.data());
        EXPECT_EQ(result, out.text().empty() ? 0 : 1);
        return out.text();
    };
    const std::string longest(245, 'x');
    EXPECT_STREQ(OSTmpPath(), "/var/tmp/");
    EXPECT_EQ(built(OSTmpPath(), "x.log"), "/var/tmp/x.log");
    EXPECT_EQ(built(nullptr, "/x.log"), "/x.log");
    EXPECT_EQ(built("/var/tmp//", longest), "/var/tmp//" + longest);
    EXPECT_EQ(built("/var/tmp//", longest + "x"), "");
    EXPECT_EQ(built(nullptr, std::string(255, '/')), std::string(255, '/'));
    EXPECT_EQ(built(nullptr, std::string(256, '/')), "");
}

TEST(TemporaryFiles, NamesAreUnusedAndInTheDirectoryOfTheEnvironment) {
    const TemporaryDirectory dir;
    const auto name = [](const char* prefix) {
        char* made = OSTmpName(prefix);
        const std::string copy = made != nullptr ? made : "";
        free(made);
        EXPECT_FALSE(fs::exists(copy));
        return copy;
    };
    setenv("TMPDIR", dir.path, 1);
    EXPECT_EQ(name("abc").find(std::string(dir.path) + "/abc"), 0u);
    EXPECT_NE(name("abc"), name("abc"));
    unsetenv("TMPDIR");
    EXPECT_EQ(name(nullptr).find(P_tmpdir "/"), 0u);
}

// Whether a descriptor is of an empty file that can be read and written, of which nobody else
// knows.
bool is_private_file(int fd) {
    struct stat status {};
    char byte = 0;
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 0 &&
           (status.st_mode & 07777) == 0600 && status.st_size == 0 && write(fd, "x", 1) == 1 &&
           pread(fd, &byte, 1, 0) == 1 && byte == 'x';
}

bool makes_private_files() {
    ZVFILE* zv = OSTmpZVFile();
    FILE* standard = OSTmpFile();
    const int fd = OSTmpFileFd();
    const bool all_private = zv != nullptr && standard != nullptr &&
                             is_private_file(ZVfileno(zv)) && is_private_file(fileno(standard)) &&
                             is_private_file(fd);
    ZVfclose(zv);
    if (standard != nullptr) fclose(standard);
    close(fd);
    return all_private;
}

TEST(TemporaryFiles, AreKnownToNobodyElse) {
    umask(0);
    const int before = next_descriptor();
    EXPECT_TRUE(makes_private_files());
    EXPECT_EQ(next_descriptor(), before);

    const int fd = OSTmpFileFd();
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    EXPECT_EQ(linkat(AT_FDCWD, link.c_str(), AT_FDCWD, "/tmp/zvutil_test.link", AT_SYMLINK_FOLLOW),
              -1)
        << "nor can it be given a name";
    close(fd);
}

TEST(TemporaryFiles, FailWithoutDescriptors) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_TRUE(OSTmpZVFile() == nullptr && OSTmpFile() == nullptr && OSTmpFileFd() == -1);
    EXPECT_EQ(errno, EMFILE);
    setrlimit(RLIMIT_NOFILE, &limit);
}

// As on a file system that has no files without names.
bool refuse_unnamed_files() {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_openat, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_TMPFILE & ~O_DIRECTORY, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0 &&
           open(P_tmpdir, O_RDWR | O_TMPFILE, 0600) == -1 && errno == EOPNOTSUPP;
}

TEST(TemporaryFiles, LoseTheirNameAtOnceWhereTheyMustHaveOne) {
    constexpr int kNoFilter = 77;
    test::Child child([](int) {
        umask(0);
        return !refuse_unnamed_files() ? kNoFilter : makes_private_files() ? 0 : 1;
    });
    const int status = child.finish().status;
    if (status == kNoFilter) GTEST_SKIP() << "the system lets no process filter its own calls";
    EXPECT_EQ(status, 0);
}

TEST(WithoutMemory, NothingIsChangedAndNothingLeaks) {
    const TemporaryDirectory dir;
    ASSERT_TRUE(dir.make("a.tmp"));
    const test::TemporaryFile file("first\n");
    const std::string text(20000, 'x');
    const int descriptor = next_descriptor();
    const long blocks = test::live_blocks();
    int failures = 0;
    const auto failed = [&](bool as_it_should) {
        EXPECT_TRUE(as_it_should);
        ++failures;
    };

    EXPECT_EQ(test::after_each_failing_allocation(
                  [&] { return OSAppendLineToFile(file.path(), text.c_str()); },
                  [&](int result) { failed(result == -1 && OSFileSize(file.path()) == 6); }),
              0);
    EXPECT_EQ(test::after_each_failing_allocation(
                  [&] { return OSFindLineInFile(file.path(), "first\n"); },
                  [&](int result) { failed(result == -1); }),
              1);
    EXPECT_EQ(test::after_each_failing_allocation(
                  [&] { return OSRemoveFiles(dir.path, "*.tmp"); },
                  [&](int result) { failed(result == 1 && dir.has("a.tmp")); }),
              1);
    EXPECT_FALSE(dir.has("a.tmp"));
    ZVFILE* stream = test::after_each_failing_allocation(
        OSTmpZVFile, [&](ZVFILE* result) { failed(result == nullptr); });
    ASSERT_NE(stream, nullptr);
    ZVfclose(stream);
    char* name = test::after_each_failing_allocation(
        [] { return OSTmpName("abc"); }, [&](char* result) { failed(result == nullptr); });
    ASSERT_NE(name, nullptr);
    free(name);
    EXPECT_EQ(failures, 6);
    EXPECT_EQ(test::live_blocks(), blocks);
    EXPECT_EQ(next_descriptor(), descriptor);
}

} // namespace
