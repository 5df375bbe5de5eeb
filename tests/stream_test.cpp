#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <tuple>

#include "support/failing_allocation.h"
#include "support/guarded.h"
#include "support/temporary_file.h"
#include "zvstdio.h"

namespace {

using test::TemporaryFile;

struct Close {
    void operator()(ZVFILE* stream) const { ZVfclose(stream); }
};
using Stream = std::unique_ptr<ZVFILE, Close>;

Stream open_stream(const TemporaryFile& file, const char* mode) {
    return Stream(ZVfopen(file.path(), mode));
}

// A file as a byte array with a position; bytes pushed back lie in front of the rest of the file.
struct Model {
    std::string file;
    bool append;
    long position = 0;
    int at_end = 0;
    int error = 0;
    std::string pushed = ""; // the next one last
    long ahead = 0;          // bytes read or pushed back and not consumed
    long front_room = 0;     // bytes that can be pushed back before them

    // The next byte, 0 to 255, or 256 at the end.
    int next() {
        if (ahead == 0) {
            ahead = std::clamp<long>(static_cast<long>(file.size()) - position, 0, 4096);
            front_room = 4;
            at_end |= ahead == 0;
        }
        if (ahead == 0) return 256;
        const char byte = pushed.empty() ? file[static_cast<size_t>(position)] : pushed.back();
        if (!pushed.empty()) pushed.pop_back();
        ++position;
        --ahead;
        ++front_room;
        return static_cast<unsigned char>(byte);
    }
    std::string take(long most, int last) {
        std::string taken;
        for (int c = -1; c != last && static_cast<long>(taken.size()) < most;) {
            if ((c = next()) == 256) break;
            taken.push_back(static_cast<char>(c));
        }
        return taken;
    }
    long push(int c) {
        if (ahead == 0) front_room = 4096;
        if (front_room == 0) return -1;
        pushed.push_back(static_cast<char>(c));
        --front_room;
        ++ahead;
        --position;
        at_end = 0;
        return c;
    }
    bool move(long place) {
        if (place < 0) {
            error = EINVAL;
            return false;
        }
        position = place;
        pushed.clear();
        ahead = 0;
        return true;
    }
    size_t write(const std::string& text) {
        if (!move(append ? static_cast<long>(file.size()) : position) || text.empty()) return 0;
        const auto place = static_cast<size_t>(position);
        file.resize(std::max(file.size(), place + text.size()));
        file.replace(place, text.size(), text);
        position += static_cast<long>(text.size());
        return text.size();
    }
    long seek(long place) {
        const bool moved = move(place);
        at_end &= !moved;
        return moved ? 0 : -1;
    }
};

class AgainstModel : public testing::TestWithParam<const char*> {};

TEST_P(AgainstModel, RandomOperationsAgreeStepByStep) {
    std::mt19937 random(17);
    const auto below = [&](long n) { return static_cast<long>(random() % (unsigned long)n); };
    const auto random_text = [&](long length) {
        std::string text;
        for (const long newlines = below(2) == 0 ? 9000 : 40; length > 0; --length)
            text.push_back(below(newlines) == 0 ? '\n' : static_cast<char>(1 + below(255)));
        return text;
    };
    TemporaryFile file;
    Stream stream;
    Model model{};
    for (int step = 0; step < 8000; ++step) {
        if (step % 500 == 0) {
            ASSERT_EQ(file.contents(), model.file);
            model = {random_text(below(20000)), GetParam()[0] == 'a'};
            ZVfputs(model.file.c_str(), open_stream(file, "w").get());
            stream = open_stream(file, GetParam());
        }
        ZVFILE* const f = stream.get();
        const long n = below(below(8) == 0 ? 9000 : 40);
        const auto size = static_cast<size_t>(n);
        const std::string text = random_text(n);
        const int c = static_cast<int>(below(400) - 100);
        const long place = below(22000) - 1000;
        test::GuardedRoom room(size);
        std::string taken;
        long result = 0;
        long expected = 0;
        switch (below(10)) {
        case 0:
            result = ZVfgetc(f);
            expected = static_cast<signed char>(std::min(model.next(), 255));
            break;
        case 1:
            for (long i = below(9) == 0 ? 5000 : below(9); i > 0 && result == expected; --i) {
                result = ZVungetc(c, f);
                expected = model.push(c);
            }
            break;
        case 2: {
            const size_t item = 1 + static_cast<size_t>(below(9));
            result = static_cast<long>(ZVfread(room.data(), item, size / item, f));
            taken = model.take(static_cast<long>(size / item * item), 256);
            expected = static_cast<long>(taken.size() / item);
            break;
        }
        case 3:
            result = ZVfgets(room.data(), static_cast<int>(n), f) == room.data();
            taken = model.take(n - 1, '\n');
            expected = !taken.empty();
            taken.append(!taken.empty(), '\0');
            break;
        case 4:
            result = static_cast<long>(ZVfwrite(text.data(), 1, size, f));
            expected = static_cast<long>(model.write(text));
            break;
        case 5:
            result = ZVfputs(text.c_str(), f);
            expected = n == 0 || model.write(text) == 0 ? -1 : n;
            break;
        case 6:
            result = ZVfseek(f, place, SEEK_SET);
            expected = model.seek(place);
            break;
        case 7:
            result = ZVfseek(f, place - 9000, SEEK_CUR);
            expected = model.seek(model.position + place - 9000);
            break;
        case 8:
            result = ZVfseek(f, place - 20000, SEEK_END);
            expected = model.seek(static_cast<long>(model.file.size()) + place - 20000);
            break;
        default:
            ZVrewind(f);
            model.seek(0);
            model.at_end = model.error = 0;
        }
        long position = 0;
        ZVfgetpos(f, &position);
        taken.resize(size, '#');
        ASSERT_EQ(result, expected) << step;
        ASSERT_EQ(std::string(room.data(), size), taken) << step;
        ASSERT_EQ(std::tuple(position, ZVftell(f), ZVfeof(f), ZVferror(f)),
                  std::tuple(model.position, model.position, model.at_end, model.error))
            << step;
    }
}
INSTANTIATE_TEST_SUITE_P(Modes, AgainstModel, testing::Values("r+", "a+"));

TEST(StreamOpen, ModeSelectsAccessAndPlaceOfWrites) {
    const struct {
        const char* mode;
        int access;
        const char* after_write; // of "Z" into "0123"
    } cases[] = {
        {"r", O_RDONLY, "0123"},  {"r+", O_RDWR, "Z123"},    {"rb+", O_RDWR, "Z123"},
        {"r+b", O_RDWR, "Z123"},  {"rw+", O_RDONLY, "0123"}, {"w", O_WRONLY, "Z"},
        {"wb", O_WRONLY, "Z"},    {"w+", O_RDWR, "Z"},       {"a", O_WRONLY, "0123Z"},
        {"ab+", O_RDWR, "0123Z"}, {"x+", O_RDONLY, "0123"},  {"", O_RDONLY, "0123"},
        {"b+", O_RDONLY, "0123"}, {"+", O_RDONLY, "0123"},
    };
    umask(027);
    for (const auto& c : cases) {
        TemporaryFile file("0123");
        Stream stream = open_stream(file, test::GuardedText(c.mode).data());
        EXPECT_EQ(fcntl(ZVfileno(stream.get()), F_GETFL) & (O_ACCMODE | O_APPEND), c.access);
        EXPECT_EQ(ZVftell(stream.get()), 0);
        errno = 0;
        EXPECT_EQ(ZVfputc('Z', stream.get()), c.access == O_RDONLY ? -1 : 'Z');
        EXPECT_EQ(errno, c.access == O_RDONLY ? EBADF : 0);
        EXPECT_EQ(ZVferror(stream.get()), errno);
        EXPECT_EQ(file.contents(), c.after_write) << c.mode;

        unlink(file.path());
        stream = open_stream(file, c.mode);
        struct stat status {};
        const bool creates = c.mode[0] == 'w' || c.mode[0] == 'a';
        EXPECT_EQ(stream != nullptr, creates) << c.mode;
        EXPECT_EQ(stat(file.path(), &status), creates ? 0 : -1);
        EXPECT_EQ(status.st_mode & 0777, creates ? 0750U : 0U);
    }
    EXPECT_EQ(ZVfopen("/", "w"), nullptr);
    EXPECT_EQ(errno, EISDIR);
}

TEST(StreamOpen, DescriptorKeepsItsOffsetAndIsClosedWithTheStream) {
    for (const bool append : {false, true}) {
        TemporaryFile file("0123456789");
        const int descriptor = open(file.path(), O_RDWR);
        lseek(descriptor, 4, SEEK_SET);
        Stream stream(ZVfdopen(descriptor, append ? "r+a" : "w"));
        EXPECT_EQ(ZVfileno(stream.get()), descriptor);
        EXPECT_EQ(ZVftell(stream.get()), 0);
        EXPECT_EQ(ZVfgetc(stream.get()), '4');
        std::ofstream(file.path(), std::ios::app) << "by others";
        EXPECT_EQ(ZVfputs("ab", stream.get()), 2);
        EXPECT_EQ(ZVftell(stream.get()), append ? 21 : 3);
        EXPECT_EQ(file.contents(), append ? "0123456789by othersab" : "0ab3456789by others");
        EXPECT_EQ(ZVfclose(stream.release()), 0);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    }
}

TEST(StreamHandle, InvalidOnesGiveFailureValuesAndEbadf) {
    static char s[4];
    static long position = 7;
    const struct {
        long expected;
        long (*call)(ZVFILE*);
    } cases[] = {
        {-1, [](ZVFILE* f) -> long { return ZVfclose(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfgetc(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVungetc('c', f); }},
        {-1, [](ZVFILE* f) -> long { return static_cast<long>(ZVfread(s, 0, 1, f)); }},
        {0, [](ZVFILE* f) -> long { return ZVfgets(s, 1, f) != nullptr; }},
        {0, [](ZVFILE* f) -> long { return static_cast<long>(ZVfwrite("c", 0, 1, f)); }},
        {0, [](ZVFILE* f) -> long { return ZVfprintf(f, "%s", "x"); }},
        {-1, [](ZVFILE* f) -> long { return ZVfputc('c', f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfputs("", f); }},
        {-1, [](ZVFILE* f) -> long { return ZVftell(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfgetpos(f, &position); }},
        {-1, [](ZVFILE* f) -> long { return ZVfseek(f, 0, SEEK_SET); }},
        {-1, [](ZVFILE* f) -> long { return ZVferror(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfflush(f); }},
        {0, [](ZVFILE* f) -> long { return ZVfeof(f); }},
        {0, [](ZVFILE* f) -> long { return ZVrewind(f), 0; }},
        {0, [](ZVFILE* f) -> long { return ZVclearerr(f), 0; }},
    };
    alignas(16) static char no_stream[8192];
    for (ZVFILE* invalid : {static_cast<ZVFILE*>(nullptr), reinterpret_cast<ZVFILE*>(no_stream)}) {
        for (const auto& c : cases) {
            errno = 0;
            EXPECT_EQ(c.call(invalid), c.expected) << &c - cases;
            EXPECT_EQ(errno, EBADF) << &c - cases;
        }
        errno = 0;
        EXPECT_EQ(ZVfileno(invalid), -1);
        EXPECT_EQ(errno, 0);
    }
    EXPECT_EQ(position, 7);
}

constexpr long kLast = INT32_MAX;

TEST(StreamLimits, NothingPassesTheLastPosition) {
    TemporaryFile file;
    ASSERT_EQ(truncate(file.path(), kLast + 100), 0);
    static char s[10000];
    const struct {
        long start;
        long failure;
        long (*call)(ZVFILE*);
    } cases[] = {
        {kLast, -1, [](ZVFILE* f) -> long { return ZVfgetc(f); }},
        {kLast - 9, 0, [](ZVFILE* f) { return static_cast<long>(ZVfread(s, 5, 2, f)); }},
        {kLast - 9000, 0, [](ZVFILE* f) { return static_cast<long>(ZVfread(s, 9001, 1, f)); }},
        {kLast - 9000, 0, [](ZVFILE* f) -> long { return ZVfgets(s, 9002, f) != nullptr; }},
        {kLast - 9, 0, [](ZVFILE* f) { return static_cast<long>(ZVfwrite(s, 5, 2, f)); }},
        {5, 0, [](ZVFILE* f) { return static_cast<long>(ZVfwrite(s, SIZE_MAX / 2, 3, f)); }},
        {kLast, 0, [](ZVFILE* f) -> long { return ZVfprintf(f, "x"); }},
        {kLast, -1, [](ZVFILE* f) -> long { return ZVfputs("x", f); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, kLast + 1, SEEK_SET); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, kLast - 4, SEEK_CUR); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, LONG_MAX, SEEK_CUR); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, -99, SEEK_END); }},
    };
    const Stream stream = open_stream(file, "r+");
    const Stream appending = open_stream(file, "a+");
    for (const auto& c : cases) {
        EXPECT_EQ(ZVfseek(stream.get(), c.start, SEEK_SET), 0);
        ZVclearerr(stream.get());
        errno = 0;
        EXPECT_EQ(c.call(stream.get()), c.failure) << &c - cases;
        EXPECT_EQ(errno, EOVERFLOW) << &c - cases;
        EXPECT_EQ(ZVferror(stream.get()), EOVERFLOW) << &c - cases;
        EXPECT_EQ(ZVftell(stream.get()), c.start) << &c - cases;
        EXPECT_EQ(lseek(ZVfileno(stream.get()), 0, SEEK_CUR), c.start) << &c - cases;
    }
    EXPECT_EQ(ZVfgetc(appending.get()), 0);
    EXPECT_EQ(ZVfputc('x', appending.get()), -1);
    EXPECT_EQ(ZVferror(appending.get()), EOVERFLOW);
    EXPECT_EQ(ZVftell(appending.get()), 1);
    EXPECT_EQ(lseek(ZVfileno(appending.get()), 0, SEEK_CUR), 1);
    EXPECT_EQ(ZVfseek(appending.get(), -100, SEEK_END), 0);

    // What ends at the last position works, and there the end of the file is still told.
    ASSERT_EQ(truncate(file.path(), kLast), 0);
    EXPECT_EQ(ZVfseek(stream.get(), -9000, SEEK_END), 0);
    EXPECT_EQ(ZVfread(s, 1, 8995, stream.get()), 8995U);
    EXPECT_EQ(ZVfputs("abcde", stream.get()), 5);
    EXPECT_EQ(ZVftell(stream.get()), kLast);
    EXPECT_EQ(ZVfread(s, 1, 5, stream.get()), 0U);
    EXPECT_EQ(ZVfeof(stream.get()), 1);
    EXPECT_EQ(ZVfseek(stream.get(), -5, SEEK_CUR), 0);
    EXPECT_STREQ(ZVfgets(s, 100, stream.get()), "abcde");
}

TEST(StreamWrite, FormatsTextsOfAnyLength) {
    for (const int length : {1, 16383, 16384, 20000}) {
        TemporaryFile file;
        const Stream stream = open_stream(file, "w");
        EXPECT_EQ(ZVfprintf(stream.get(), "%*d", length, 7), length);
        EXPECT_EQ(file.contents(), std::string(static_cast<size_t>(length - 1), ' ') + "7");
    }
    TemporaryFile file("0123");
    const Stream stream = open_stream(file, "a+");
    EXPECT_EQ(ZVfprintf(stream.get(), "%s", ""), 0);
    EXPECT_EQ(ZVfprintf(stream.get(), "%ls", L"\x7FFFFFFF"), -1);
    EXPECT_EQ(ZVftell(stream.get()), 0) << "nothing was positioned";
    EXPECT_EQ(file.contents(), "0123");
}

TEST(StreamWrite, FailureKeepsWhatWasWritten) {
    const Stream full(ZVfopen("/dev/full", "w"));
    EXPECT_EQ(ZVfwrite("abc", 1, 3, full.get()), 0U);
    EXPECT_EQ(ZVferror(full.get()), ENOSPC);

    TemporaryFile file("0123456789");
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {1000, limit.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    const Stream stream = open_stream(file, "r+");
    EXPECT_EQ(ZVfgetc(stream.get()), '0');
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(ZVfwrite(std::string(5000, 'w').data(), 1, 5000, stream.get()), 0U);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(ZVftell(stream.get()), 1000);
    EXPECT_EQ(file.contents(), std::string("0").append(999, 'w'));
    EXPECT_EQ(ZVfgetc(stream.get()), -1) << "the read-ahead is gone";
    EXPECT_EQ(ZVfputs("end", stream.get()), 3);
    EXPECT_EQ(ZVfeof(stream.get()), 1) << "writes leave it alone";
    EXPECT_EQ(ZVferror(stream.get()), EFBIG) << "kept until it is cleared";
    ZVclearerr(stream.get());
    EXPECT_EQ(ZVferror(stream.get()) + ZVfeof(stream.get()), 0);

    const Stream reader = open_stream(file, "r");
    EXPECT_EQ(ZVfgetc(reader.get()), '0');
    EXPECT_EQ(ZVfputs("x", reader.get()), -1);
    EXPECT_EQ(ZVfgetc(reader.get()), 'w') << "the next read starts at the position";
}

TEST(StreamRead, DirectoryGivesErrors) {
    const Stream directory(ZVfopen("/", "r"));
    char s[8];
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(i == 0   ? ZVfgetc(directory.get()) == -1
                    : i == 1 ? ZVfread(s, 1, 8, directory.get()) == 0
                             : ZVfgets(s, 8, directory.get()) == nullptr);
        EXPECT_EQ(ZVferror(directory.get()), EISDIR);
        EXPECT_EQ(ZVfeof(directory.get()), 0);
        ZVrewind(directory.get());
        EXPECT_EQ(ZVferror(directory.get()), 0);
    }
}

struct Pipe {
    Stream reader;
    Stream writer;

    Pipe() {
        int ends[2];
        if (pipe(ends) != 0) abort();
        reader.reset(ZVfdopen(ends[0], "r"));
        writer.reset(ZVfdopen(ends[1], "w"));
    }
};

TEST(StreamPipe, PositionCountsBytes) {
    Pipe pipe;
    EXPECT_EQ(ZVfputs("one\ntwo\n", pipe.writer.get()), 8);
    EXPECT_EQ(ZVfprintf(pipe.writer.get(), "%d", 3), 1);
    EXPECT_EQ(ZVftell(pipe.writer.get()), 9);
    EXPECT_EQ(ZVferror(pipe.writer.get()), 0);
    pipe.writer.reset();
    char s[8];
    EXPECT_STREQ(ZVfgets(s, 8, pipe.reader.get()), "one\n");
    EXPECT_EQ(ZVfseek(pipe.reader.get(), 0, SEEK_CUR), -1);
    EXPECT_EQ(ZVferror(pipe.reader.get()), ESPIPE);
    EXPECT_EQ(ZVfread(s, 2, 4, pipe.reader.get()), 2U) << "a failed positioning changes nothing";
    EXPECT_EQ(ZVftell(pipe.reader.get()), 9);
    EXPECT_EQ(ZVfseek(pipe.reader.get(), 0, SEEK_SET), -1);
    EXPECT_EQ(ZVfeof(pipe.reader.get()), 1);
    ZVrewind(pipe.reader.get());
    EXPECT_EQ(ZVftell(pipe.reader.get()), 9);
    EXPECT_EQ(ZVfeof(pipe.reader.get()) + ZVferror(pipe.reader.get()), 0);
}

// Interrupts the process every few milliseconds; system calls are not restarted.
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { count_ = count_ + 1; };
        sigaction(SIGALRM, &action, nullptr);
        set(3000);
    }
    ~Interruptions() { set(0); }
    int count() const { return count_; }

private:
    static void set(suseconds_t period) {
        const itimerval timer = {{0, period}, {0, period}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
    static inline volatile sig_atomic_t count_ = 0;
};

TEST(StreamInterrupted, ReadsFailAndGoOnLater) {
    Pipe pipe;
    const Interruptions interruptions;
    char s[8];
    EXPECT_EQ(ZVfgetc(pipe.reader.get()), -1);
    EXPECT_EQ(ZVferror(pipe.reader.get()), EINTR);
    EXPECT_EQ(ZVfeof(pipe.reader.get()), 0);
    ZVclearerr(pipe.reader.get());
    EXPECT_EQ(ZVfputs("abcde", pipe.writer.get()), 5);
    EXPECT_EQ(ZVfgetc(pipe.reader.get()), 'a');
    EXPECT_STREQ(ZVfgets(s, 8, pipe.reader.get()), "bcde") << "the partial line";
    EXPECT_EQ(ZVferror(pipe.reader.get()), EINTR);
    EXPECT_EQ(ZVfgets(s, 8, pipe.reader.get()), nullptr);
    EXPECT_EQ(ZVfputs("xyz", pipe.writer.get()), 3);
    EXPECT_EQ(ZVfread(s, 1, 4, pipe.reader.get()), 0U) << "nothing, whatever was copied";
    EXPECT_EQ(ZVftell(pipe.reader.get()), 8);
}

TEST(StreamInterrupted, WritesGoOn) {
    Pipe pipe;
    std::string text(300000, ' ');
    for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i * 7 / 11);
    const pid_t child = fork();
    if (child == 0) {
        usleep(50000); // The writer is interrupted while the pipe is full.
        std::string got(text.size(), '#');
        _exit(ZVfread(got.data(), text.size(), 1, pipe.reader.get()) == 1 && got == text ? 0 : 1);
    }
    const Interruptions interruptions;
    EXPECT_EQ(ZVfwrite(text.data(), 3, text.size() / 3, pipe.writer.get()), text.size() / 3);
    EXPECT_GT(interruptions.count(), 0);
    EXPECT_EQ(ZVferror(pipe.writer.get()), 0);
    int status = -1;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        ;
    EXPECT_EQ(status, 0);
}

TEST(StreamMemory, EachFailingAllocationLeavesEverythingAsItWas) {
    TemporaryFile file("kept");
    const std::string text(16384, 't');
    const Stream appending = open_stream(file, "a");
    const auto free_descriptor = [] {
        const int next = dup(STDERR_FILENO);
        close(next);
        return next;
    };
    const int descriptor = free_descriptor();
    const long blocks = test::live_blocks();
    int failures = 0;
    const auto failed = [&](auto result) {
        EXPECT_FALSE(result);
        EXPECT_EQ(errno, ENOMEM);
        EXPECT_EQ(test::live_blocks(), blocks);
        EXPECT_EQ(free_descriptor(), descriptor);
        EXPECT_EQ(file.contents(), "kept");
        ++failures;
    };
    const auto wrap = [&] { return ZVfdopen(descriptor, "r"); };
    const auto empty = [&] { return ZVfopen(file.path(), "w"); };
    const auto print = [&] { return ZVfprintf(appending.get(), "%s", text.c_str()); };
    ZVfclose(test::after_each_failing_allocation(wrap, failed));
    ZVfclose(test::after_each_failing_allocation(empty, failed));
    EXPECT_EQ(file.contents(), "");
    ZVfputs("kept", appending.get());
    EXPECT_EQ(test::after_each_failing_allocation(print, failed), 16384);
    EXPECT_EQ(test::live_blocks(), blocks);
    EXPECT_EQ(failures, 3);
}

} // namespace
