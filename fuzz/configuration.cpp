// The server configuration file, whatever it holds, and what else takes lines and names.
#include "input.h"
#include "osutils.h"
#include "support/folder.h"

using fuzz::same;

namespace {

constexpr size_t kLongest = 255;

// The last line with the key, of lines cut into pieces that end at a zero byte.
std::string model(const std::string& file, const std::string& key) {
    std::string value;
    for (std::string_view left = file; !left.empty();) {
        std::string line = fuzz::take_line(left, 283).c_str();
        if (line.compare(0, key.size(), key) != 0)
            continue;
        line.resize(line.find_last_not_of(" \t\r\n") + 1);
        value = line.size() > key.size() ? line.substr(key.size()) : "";
        value.erase(0, value.find_first_not_of(" \t"));
        value = value.substr(0, kLongest);
    }
    return value;
}

// The number of the first line that is equal to the text, of lines cut into longer pieces.
int model_of_search(std::string_view left, const std::string& text) {
    for (int number = 1;; ++number) {
        const std::string line = fuzz::take_line(left, 351);
        if (line.size() < 351 && !line.ends_with('\n'))
            return 0;
        if (line == text)
            return number;
    }
}

// A directory that is too long counts as none.
void check_directory(const std::string& directory) {
    const auto install = [&] { SetZVInstallPath("/p"), SetZVInstallPath(directory.c_str()); };
    const auto check = [&](const char* actual, size_t longest, const char* other, const char* end) {
        const bool stands = !directory.empty() && directory.size() <= longest;
        same(std::string(actual), (stands ? directory : other) + end, "a directory's path");
    };
    unsetenv("ZVCONFIGDIR"), install();
    check(OSGetAuditConfigPath(), 237, "/p", "/conf/zvaudit.conf");
    setenv("ZVCONFIGDIR", "/c", 1), install();
    check(OSGetZVInstallPath(), 255, "/p", "");
    setenv("ZVCONFIGDIR", directory.c_str(), 1), SetZVInstallPath("/p");
    check(OSGetAuditConfigPath(), 242, "/p/conf", "/zvaudit.conf");
}

void check_filename(const std::string& directory, const std::string& name) {
    const std::string path = (name.starts_with('/') ? "" : directory) + name;
    const bool fits = path.size() <= 255;
    fuzz::Room out(fits ? path.size() + 1 : 1);
    same(OSBuildFilename(directory.c_str(), name.c_str(), out.data()), fits, "OSBuildFilename");
    same(out.text(), fits ? path : "", "OSBuildFilename");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::Folder folder;
    static const std::string directory = folder / "", path = folder / "zv.conf";
    fuzz::Input input(data, size);
    const std::string deep(input.below(256u) + input.below(9u), 'd');
    check_directory(deep);
    setenv("ZVCONFIGDIR", directory.c_str(), 1);
    const std::string key = input.text(), file = input.rest();
    test::write_file(path, file);
    SetZVInstallPath("/fresh"); // empties the caches
    const std::string database = model(file, "Server-directory:");
    same(std::string(OSGetServerDbPath()),
         database.empty() || database.size() == kLongest ? "./" : database + "/",
         "OSGetServerDbPath");
    for (const std::string& text : {key, key + "\n"})
        same(OSFindLineInFile(path.c_str(), fuzz::Text(text).data()), model_of_search(file, text),
             "OSFindLineInFile");
    check_filename(deep, key);
    same(OSAppendLineToFile(path.c_str(), fuzz::Text(key).data()), 0, "OSAppendLineToFile");
    same(test::content(path), file + key + "\n", "OSAppendLineToFile");
    if (key.empty())
        return 0;
    fuzz::Text name(key);
    fuzz::Room value(256);
    GetLineFromServerConfigFileDup(name.data(), value.data());
    same(value.text(), model(file + key + "\n", key), "GetLineFromServerConfigFileDup");
    return 0;
}
