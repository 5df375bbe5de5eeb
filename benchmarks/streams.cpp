// The buffered streams against stdio, on a file that the system holds in memory.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bench.h"
#include "zvstdio.h"

namespace bench {
namespace {

constexpr size_t kFileSize = 1024 * 1024;
constexpr char kLine[] = "A line of sixty-four bytes, which is written again and again...\n";

// A descriptor of a file without a name that holds lines of prose.
int open_file() {
    const std::string text = text_of("EUC-JP", kJapanese, kFileSize);
    char path[] = P_tmpdir "/zvutil_bench.XXXXXX";
    const int descriptor = mkstemp(path);
    if (descriptor < 0 || unlink(path) != 0 ||
        pwrite(descriptor, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        fail("no temporary file");
    return descriptor;
}

struct Zvutil {
    using Stream = ZVFILE;
    static constexpr auto kOpen = ZVfdopen;
    static constexpr auto kClose = ZVfclose;
    static constexpr auto kRewind = ZVrewind;
    static constexpr auto kGetByte = ZVfgetc;
    static constexpr auto kGetLine = ZVfgets;
    static constexpr auto kRead = ZVfread;
    static constexpr auto kPutLine = ZVfputs;
    static void write_at_once(Stream*) {} // as it always does
};

struct Stdio {
    using Stream = std::FILE;
    static constexpr auto kOpen = fdopen;
    static constexpr auto kClose = std::fclose;
    static constexpr auto kRewind = std::rewind;
    static constexpr auto kGetByte = std::fgetc;
    static constexpr auto kGetLine = std::fgets;
    static constexpr auto kRead = std::fread;
    static constexpr auto kPutLine = std::fputs;
    static void write_at_once(Stream* stream) { std::setvbuf(stream, nullptr, _IONBF, 0); }
};

struct GetBytes {
    template <class Api>
    static void run(typename Api::Stream* stream) {
        for (size_t i = 0; i < kFileSize; ++i)
            benchmark::DoNotOptimize(Api::kGetByte(stream));
    }
};

struct GetLines {
    template <class Api>
    static void run(typename Api::Stream* stream) {
        char line[256];
        while (Api::kGetLine(line, sizeof line, stream) != nullptr)
            benchmark::DoNotOptimize(line[0]);
    }
};

template <size_t size>
struct ReadBlocks {
    template <class Api>
    static void run(typename Api::Stream* stream) {
        char block[size];
        while (Api::kRead(block, 1, size, stream) == size)
            benchmark::DoNotOptimize(block[0]);
    }
};

struct PutLines {
    template <class Api>
    static void run(typename Api::Stream* stream) {
        Api::write_at_once(stream);
        for (size_t written = 0; written < kFileSize; written += sizeof kLine - 1)
            Api::kPutLine(kLine, stream);
    }
};

// The job over the whole file, from its start.
template <class Api, class Job>
auto over_file() {
    using Stream = typename Api::Stream;
    std::unique_ptr<Stream, int (*)(Stream*)> stream(Api::kOpen(open_file(), "r+"), Api::kClose);
    return [stream = std::move(stream)] {
        Api::kRewind(stream.get());
        Job::template run<Api>(stream.get());
    };
}

template <class Job>
void add(const char* operation, const char* text) {
    Row("streams", operation, text, kFileSize, "byte")
        .measure("zvutil", over_file<Zvutil, Job>)
        .measure("stdio", over_file<Stdio, Job>);
}

} // namespace

void add_streams() {
    add<GetBytes>("ZVfgetc", "bytes");
    add<GetLines>("ZVfgets", "lines of prose");
    add<ReadBlocks<256>>("ZVfread", "blocks of 256 bytes");
    add<ReadBlocks<4096>>("ZVfread", "blocks of 4096 bytes");
    add<PutLines>("ZVfputs", "lines, each written at once");
}

} // namespace bench
