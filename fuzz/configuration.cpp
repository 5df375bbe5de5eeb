// The server configuration file, whatever it holds.
#include "input.h"
#include "osutils.h"
#include "support/folder.h"

namespace {

constexpr size_t kPiece = 283, kLongest = 255;

// The last line with the key, of lines cut into pieces that end at a zero byte.
std::string model(const std::string& file, const std::string& key) {
    std::string value;
    for (size_t at = 0, end; at < file.size(); at = end) {
        end = std::min({file.find('\n', at), file.size() - 1, at + kPiece - 1}) + 1;
        std::string line = file.substr(at, end - at).c_str();
        if (line.compare(0, key.size(), key) != 0) continue;
        line.resize(line.find_last_not_of(" \t\r\n") + 1);
        value = line.size() > key.size() ? line.substr(key.size()) : "";
        value.erase(0, value.find_first_not_of(" \t"));
        value.resize(std::min(value.size(), kLongest));
    }
    return value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::Folder folder;
    static const std::string directory = folder / "", path = folder / "zv.conf";
    setenv("ZVCONFIGDIR", directory.c_str(), 1);
    fuzz::Input input(data, size);
    const std::string key = input.text(), file = input.rest();
    FILE* out = fopen(path.c_str(), "w");
    fwrite(file.data(), 1, file.size(), out);
    fclose(out);
    SetZVInstallPath("/fresh"); // empties the caches
    const std::string database = model(file, "Server-directory:");
    fuzz::same(std::string(OSGetServerDbPath()),
               database.empty() || database.size() == kLongest ? "./" : database + "/",
               "OSGetServerDbPath");
    if (key.empty()) return 0;
    fuzz::Text name(key);
    fuzz::Room value(256);
    GetLineFromServerConfigFileDup(name.data(), value.data());
    fuzz::same(value.text(), model(file, key), "GetLineFromServerConfigFileDup");
    return 0;
}
