// Sequences of calls on a stream over a real file, against a file in memory.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "input.h"
#include "models/stream_model.h"
#include "support/folder.h"

using fuzz::same;

namespace {

constexpr size_t kFromLast = 9000, kBeforeBase = 1000;

const struct Mode {
    const char* name;
    int access;
} kModes[] = {{"r", O_RDONLY},  {"r+", O_RDWR},    {"rb+", O_RDWR}, {"r+b", O_RDWR},
              {"w", O_WRONLY},  {"wb+", O_RDWR},   {"a", O_WRONLY}, {"ab+", O_RDWR},
              {"x+", O_RDONLY}, {"rw+", O_RDONLY}, {"+", O_RDONLY}, {"", O_RDONLY}};

// Opens what is not there.
void check_creation(const char* mode, const std::string& path) {
    const mode_t mask = umask(027);
    ZVFILE* stream = ZVfopen(path.c_str(), mode);
    umask(mask);
    struct stat status {};
    const bool creates = mode[0] == 'w' || mode[0] == 'a';
    same(stream != nullptr, creates, "whether a file is created");
    same(stat(path.c_str(), &status), creates ? 0 : -1, "whether there is one");
    same(status.st_mode & 0777, creates ? 0750 : 0, "its permissions");
    ZVfclose(stream);
    unlink(path.c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::Folder folder;
    static const std::string path = folder / "file";
    static const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    static std::set<std::string> created;
    fuzz::Input input(data, size);
    const Mode& mode = input.one_of(kModes);
    fuzz::Text mode_name(mode.name);
    if (created.insert(mode.name).second)
        check_creation(mode_name.data(), folder / "created");
    const bool empties = mode.name[0] == 'w';
    // Either an ordinary file or one whose end lies at the last positions.
    const int64_t base = input.coin() && !empties ? test::kLastPosition - int{kFromLast} : 0;
    size_t length = input.below(10000u);
    if (base != 0 && length % 2 != 0) // up to the last position, or one byte more or less
        length = kFromLast - 1 + length % 3;
    const std::string text = std::string(length, 'o') + "\nold";
    fuzz::require(ftruncate(file, 0) == 0, "file");
    fuzz::require(pwrite(file, text.data(), text.size(), base) == ssize_t(text.size()), "file");
    ZVFILE* stream = ZVfopen(path.c_str(), mode_name.data());
    test::StreamModel model{empties ? "" : text, base, mode.access, mode.name[0] == 'a'};
    if (base != 0) {
        // What is pushed back can lead before the base.
        model.file.insert(0, kBeforeBase, '\0'), model.origin -= int{kBeforeBase};
        same(ZVfseek(stream, long(base), SEEK_SET), 0, "ZVfseek");
        model.seek(base);
    }
    for (int step = 0; !input.empty() && step < 100; ++step) {
        const test::StreamCall call(input, base);
        // In memory that goes on: a system call that meets an inaccessible page only stops short.
        std::string room(call.bytes() + 64, '#');
        errno = 0;
        const auto [result, expected] = call.make(stream, model, room.data());
        same(result, expected, "result");
        same(errno, model.raised, "errno");
        long told = 0;
        same(ZVfgetpos(stream, &told), 0, "ZVfgetpos");
        same(told, model.position, "ZVfgetpos");
        same(ZVftell(stream), model.position, "ZVftell");
        same(ZVfeof(stream), static_cast<int>(model.at_end), "ZVfeof");
        same(ZVferror(stream), model.error, "ZVferror");
        model.taken.resize(room.size(), '#');
        same(room, model.taken, "what was read");
    }
    ZVfclose(stream);
    struct stat status {};
    same(fstat(file, &status), 0, "status");
    same(status.st_size, model.size(), "the file's size");
    std::string left(model.file.size(), '#');
    fuzz::require(pread(file, left.data(), left.size(), model.origin) == std::ssize(left), "file");
    same(left, model.file, "the file");
    return 0;
}
