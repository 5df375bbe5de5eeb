#ifndef ZVUTIL_TESTS_FOLDER_H
#define ZVUTIL_TESTS_FOLDER_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace test {

// A folder of a test's own, gone with it.
class Folder {
public:
    Folder() {
        std::string name = std::filesystem::temp_directory_path() / "zvutil-test-XXXXXX";
        path_ = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline std::string content(const std::string& path, std::streamoff from = 0) {
    std::ifstream in(path, std::ios::binary);
    in.seekg(from);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string repeated(const std::string& unit, int times) {
    std::string text;
    while (times-- > 0)
        text += unit;
    return text;
}

inline void write_file(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

} // namespace test

#endif
