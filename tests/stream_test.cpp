#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdint>

#include "faults/faults.h"
#include "support/calls.h"
#include "support/folder.h"
#include "zvstdio.h"

namespace {

using namespace test;

struct Stream {
    ZVFILE* handle;
    ~Stream() { ZVfclose(handle); }
    operator ZVFILE*() const { return handle; }
};
Stream open_stream(const std::string& path, const char* mode) {
    return {ZVfopen(path.c_str(), mode)};
}

TEST(Stream, TakesADescriptorOver) {
    const Folder folder;
    write_file(folder / "file", "0123456789");
    const int descriptor = open((folder / "file").c_str(), O_RDWR);
    lseek(descriptor, 4, SEEK_SET);
    const Stream stream{ZVfdopen(descriptor, "r+a")};
    EXPECT_EQ(ZVfgetc(stream), '4');
    for (const int room : {1 + 4, 4096}) {
        for (int i = 0; i < room; ++i)
            EXPECT_EQ(ZVungetc('p', stream), 'p');
        EXPECT_EQ(ZVungetc('p', stream), -1);
        EXPECT_EQ(ZVftell(stream), (room == 5 ? 1 : 11) - room);
        EXPECT_EQ(ZVfputc('x', stream), 'x') << "drops what was pushed back";
    }
    const int next = dup(descriptor);
    { const Stream closing{ZVfdopen(next, "r")}; }
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}

TEST(Stream, FailuresGiveTheirValuesAndErrno) {
    long position = 7;
    char s[16];
    alignas(16) static char no_stream[8192];
    for (ZVFILE* f : {static_cast<ZVFILE*>(nullptr), reinterpret_cast<ZVFILE*>(no_stream)}) {
        SCOPED_TRACE(f == nullptr ? "NULL" : "no stream");
        expect_each(-1, EBADF, CALL(ZVfclose(f)), CALL(ZVfgetc(f)), CALL(ZVungetc('c', f)),
                    CALL(ZVfread(s, 0, 1, f)), CALL(ZVfputc('c', f)), CALL(ZVfputs("", f)),
                    CALL(ZVftell(f)), CALL(ZVferror(f)), CALL(ZVfseek(f, 0, 0)), CALL(ZVfflush(f)),
                    CALL(ZVfgetpos(f, &position)));
        expect_each(0, EBADF, CALL(ZVfgets(s, 1, f)), CALL(ZVfwrite("c", 0, 1, f)),
                    CALL(ZVfprintf(f, "%s", "x")), CALL(ZVfeof(f)), CALL((ZVrewind(f), 0)),
                    CALL((ZVclearerr(f), 0)));
        expect_each(-1, 0, CALL(ZVfileno(f)));
        EXPECT_EQ(position, 7);
    }
    const Stream full = open_stream("/dev/full", "w"), directory = open_stream("/", "r");
    expect_each(0, ENOSPC, CALL(ZVfwrite("abc", 1, 3, full)));
    expect_each(0, EOVERFLOW, CALL(ZVfwrite(s, SIZE_MAX / 2, 3, full)));
    expect_each(-1, EILSEQ, CALL(ZVfprintf(full, "%ls", L"\x7FFFFFFF")));
    expect_each(-1, EISDIR, CALL(ZVfgetc(directory)));
    expect_each(0, EISDIR, CALL(ZVfread(s, 1, 8, directory)), CALL(ZVfgets(s, 8, directory)),
                CALL(ZVfopen("/", "w")));
    // Not asked for anything, and not at the end.
    expect_each(0, 0, CALL(ZVfread(s, 0, 1, full)), CALL(ZVfeof(directory)));

    const Folder folder;
    const Stream stream = open_stream(folder / "file", "w");
    signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {1000, RLIM_INFINITY}, large = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(ZVfwrite(std::string(5000, 'w').data(), 1, 5000, stream), 0U);
    setrlimit(RLIMIT_FSIZE, &large);
    EXPECT_EQ(ZVferror(stream), EFBIG);
    EXPECT_EQ(ZVftell(stream), 1000) << "what was written stays";
    EXPECT_EQ(ZVfflush(stream), 0);
    EXPECT_EQ(ZVfseek(stream, INT_MAX, SEEK_SET), 0);
    expect_each(-1, EOVERFLOW, CALL(ZVfseek(stream, LONG_MAX, SEEK_CUR)),
                CALL(ZVfseek(stream, LONG_MAX, SEEK_END)));
    expect_each(-1, EBADF, CALL(ZVfgetc(stream))); // not readable, wherever it stands
}

TEST(Stream, FilesReachBeyondTheLastPosition) {
    const Folder folder;
    const std::string path = folder / "file";
    constexpr int64_t kSize = (int64_t{1} << 32) + 2; // 2 in an int
    write_file(path, "012");
    ASSERT_EQ(truncate(path.c_str(), kSize), 0);
    const Stream stream = open_stream(path, "r+"), appending = open_stream(path, "a");
    ASSERT_NE(stream, nullptr);
    ASSERT_NE(appending, nullptr);
    EXPECT_EQ(ZVfgetc(stream), '0');
    EXPECT_EQ(ZVfseek(stream, 0, SEEK_END), -1);
    EXPECT_EQ(ZVferror(stream), EOVERFLOW);
    EXPECT_EQ(ZVfgetc(stream), '1') << "where it stood";
    EXPECT_EQ(ZVfputs("x", appending), -1);
    EXPECT_EQ(ZVferror(appending), EOVERFLOW);
    EXPECT_EQ(std::filesystem::file_size(path), uintmax_t{kSize});
    EXPECT_EQ(ZVfseek(stream, INT_MAX, SEEK_SET), 0);
    char byte;
    const auto read = [&] { return ZVfread(&byte, 1, 1, stream) == 0 ? errno : 0; };
    EXPECT_EQ(with_fault(1, read, {"as a pipe", kSeek, ESPIPE, kForever}),
              std::pair(EOVERFLOW, true));
}

TEST(Stream, ClosedOnesAreNotOpen) {
    EXPECT_EQ(ZVfclose(ZVfopen("/dev/null", "r")), 0);
    EXPECT_EQ(last_released(), 0u) << "the mark of an open stream";
}

TEST(Stream, FormatsWhatACatalogueHolds) {
    const Folder folder;
    const Stream stream = open_stream(folder / "file", "w");
    int before = 0;
    // In writable memory, as translations are: one counts, one leaves its first argument out.
    char counting[] = "%d%n;", second[] = "%2$s;";
    EXPECT_EQ(ZVfprintf(stream, counting, 123, &before), 4);
    EXPECT_EQ(before, 3);
    EXPECT_EQ(ZVfprintf(stream, second, 1, "two"), 4);
    EXPECT_EQ(content(folder / "file"), "123;two;");
}

TEST(Stream, PipesHaveNoPositions) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const Stream reader{ZVfdopen(ends[0], "r")}, writer{ZVfdopen(ends[1], "w")};
    char s[8];
    EXPECT_EQ(ZVfgetc(reader), -1);
    EXPECT_EQ(ZVferror(reader), EAGAIN);
    EXPECT_EQ(ZVfputs("abcde", writer), 5);
    EXPECT_EQ(ZVfgetc(reader), 'a');
    EXPECT_EQ(ZVfseek(reader, 0, SEEK_CUR), -1);
    EXPECT_EQ(ZVferror(reader), ESPIPE);
    EXPECT_STREQ(ZVfgets(s, 8, reader), "bcde") << "the partial line";
    ZVrewind(reader);
    EXPECT_EQ(ZVferror(reader), 0);
    EXPECT_EQ(ZVfputs("xyz", writer), 3);
    EXPECT_EQ(ZVfread(s, 1, 4, reader), 0U) << "nothing, whatever was copied";
    EXPECT_EQ(ZVftell(reader), 8);
    EXPECT_EQ(ZVftell(writer), 8);
    EXPECT_EQ(ZVferror(writer), 0);
}

} // namespace
