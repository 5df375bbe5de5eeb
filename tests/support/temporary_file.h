#ifndef ZVUTIL_TESTS_TEMPORARY_FILE_H
#define ZVUTIL_TESTS_TEMPORARY_FILE_H

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace test {

// A real file under a name of its own, for the time of a test.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& contents = "") {
        const int descriptor = mkstemp(path_);
        if (descriptor < 0) abort();
        close(descriptor);
        std::ofstream(path_, std::ios::binary) << contents;
    }
    ~TemporaryFile() { unlink(path_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* path() const { return path_; }
    std::string contents() const {
        std::ifstream file(path_, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

private:
    char path_[32] = "/tmp/zvutil_test.XXXXXX";
};

} // namespace test

#endif
