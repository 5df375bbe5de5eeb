// Runs a fuzz target as a test: over its seeds, and over inputs made out of them, the same ones in
// every run. Prints the digest of all results, which is the same on every machine.
//   property_TARGET COUNT WORDS INPUTS     files, or folders of them
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "input.h"
#include "support/folder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using Texts = std::vector<std::string>;

constexpr size_t kLongest = 1000;
constexpr unsigned kSecondsForOne = 20;

// Of a file, or of all those in a folder.
Texts inputs_of(const std::filesystem::path& place) {
    std::vector<std::filesystem::path> paths;
    if (std::filesystem::is_directory(place))
        std::copy(std::filesystem::directory_iterator(place), {}, std::back_inserter(paths));
    else
        paths.push_back(place);
    std::sort(paths.begin(), paths.end());
    Texts inputs;
    for (const auto& path : paths)
        inputs.push_back(test::content(path).substr(0, kLongest));
    return inputs;
}

class Maker {
public:
    Maker(const Texts& seeds, const Texts& words) : seeds_(seeds), words_(words) {}

    std::string input() {
        std::string made = one_of(seeds_);
        if (below(2) != 0)
            made.resize(std::min(made.size(), below(80))); // short ones are quick
        for (size_t changes = 1 + below(6); changes != 0; --changes)
            change(made);
        made.resize(std::min(made.size(), kLongest));
        return made;
    }

private:
    size_t below(size_t bound) { return random_() % bound; }
    const std::string& one_of(const Texts& texts) { return texts[below(texts.size())]; }
    char byte() {
        // Where the classes of bytes begin and end in one encoding or another.
        static constexpr char kEdges[] = "\x1B\n @AZaz~\x7F\x80\x81\x8E\x8F\x9F\xA0\xA1\xB0\xDF\xE0"
                                         "\xEF\xF0\xFC\xFD\xFE\xFF";
        return below(2) != 0 ? kEdges[below(sizeof kEdges)] : static_cast<char>(below(256));
    }
    // Numbers are drawn one a statement: compilers differ in the order of a call's arguments.
    std::string part_of(const std::string& text) {
        const size_t length = 1 + below(40);
        return text.empty() ? text : text.substr(below(text.size()), length);
    }
    std::string piece(const std::string& made) {
        std::string bytes(1 + below(6), '\0');
        const size_t length = 1 + below(70);
        const size_t kind = below(5);
        if (kind == 0)
            return one_of(words_);
        if (kind == 1)
            return part_of(one_of(seeds_));
        if (kind == 2)
            return part_of(made);
        if (kind == 3)
            return std::string(length, byte());
        std::generate(bytes.begin(), bytes.end(), [&] { return byte(); });
        return bytes;
    }
    void change(std::string& made) {
        const std::string put = piece(made);
        const size_t at = below(made.size() + 1), choices = std::min(made.size(), size_t{5});
        const size_t kind = below(4);
        if (kind == 0)
            made.insert(at, put);
        else if (kind == 1)
            made.replace(at, put.size(), put);
        else if (kind == 2)
            made.erase(at, put.size());
        else if (choices != 0)
            made[below(choices)] = byte();
    }

    const Texts &seeds_, &words_;
    std::mt19937 random_{1};
};

// Where the process that runs the inputs leaves the one at hand, whatever becomes of it.
struct Progress {
    bool finished;
    uint64_t digest;
    size_t size;
    uint8_t input[kLongest];
};

void run(const std::string& input, Progress& progress) {
    progress.size = input.size();
    memcpy(progress.input, input.data(), input.size());
    alarm(kSecondsForOne);
    const std::vector<uint8_t> exact(input.begin(), input.end());
    const auto blocks_left = [&] {
        const long before = fuzz::live_blocks();
        LLVMFuzzerTestOneInput(exact.data(), exact.size());
        return fuzz::live_blocks() - before;
    };
    // What an input is the first to need, the next one finds.
    if (blocks_left() > 0)
        fuzz::require(blocks_left() <= 0, "all memory is released");
}

void run_all(const Texts& seeds, const Texts& words, size_t count, Progress& progress) {
    Maker maker(seeds, words);
    fuzz::digesting = true;
    for (const std::string& seed : seeds)
        run(seed, progress);
    for (size_t made = 0; made < count; ++made)
        run(maker.input(), progress);
    alarm(0);
    progress.digest = fuzz::digest;
    progress.finished = true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4)
        return std::fprintf(stderr, "usage: %s COUNT WORDS INPUTS\n", argv[0]), 2;
    // The files of some targets change thousands of times a second.
    if (access("/dev/shm", W_OK) == 0)
        setenv("TMPDIR", "/dev/shm", 0);
    const Texts seeds = inputs_of(argv[3]), words = inputs_of(argv[2]);
    if (seeds.empty() || words.empty())
        return std::fputs("no seeds or no words\n", stderr), 2;
    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        return std::perror("mmap"), 2;
    auto& progress = *static_cast<Progress*>(shared);
    const pid_t child = fork();
    if (child == 0)
        return run_all(seeds, words, std::stoul(argv[1]), progress), 0;
    int status = -1;
    if (waitpid(child, &status, 0) == child && status == 0 && progress.finished)
        return std::printf("Digest of all results: %016" PRIx64 "\n", progress.digest), 0;
    std::fprintf(stderr, "\n%s: status %x", argv[0], static_cast<unsigned>(status));
    std::fputs(progress.finished ? " at the end" : " with the input, in hexadecimal:\n", stderr);
    for (size_t i = 0; i < progress.size && !progress.finished; ++i)
        std::fprintf(stderr, "%02X", progress.input[i]);
    std::fputc('\n', stderr);
    return 1;
}
