#include "platform/locale_query.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <string_view>

namespace zv {
namespace {

class BoundedText {
public:
    explicit BoundedText(std::span<char> room) : room_(room) { room_[0] = '\0'; }
    void append(std::string_view text) {
        const size_t n = std::min(text.size(), room_.size() - 1 - used_);
        std::memcpy(&room_[used_], text.data(), n);
        used_ += n;
        room_[used_] = '\0';
    }

private:
    std::span<char> room_;
    size_t used_ = 0;
};

} // namespace

void adopt_environment_locale() {
    std::setlocale(LC_ALL, "");
}

void query_locale(std::span<char> name) {
    const char* queried = std::setlocale(LC_ALL, nullptr);
    std::string_view locale = queried != nullptr ? queried : "C";
    BoundedText out(name);

    // glibc writes a mixed locale as "LC_CTYPE=ja_JP;LC_NUMERIC=C;...", the character type first.
    constexpr std::string_view kMixed = "LC_CTYPE=";
    if (std::strncmp(locale.data(), kMixed.data(), kMixed.size()) != 0) {
        out.append(locale);
        return;
    }
    while (!locale.empty()) {
        const std::string_view category(locale.data(), std::min(locale.find(';'), locale.size()));
        locale.remove_prefix(std::min(category.size() + 1, locale.size()));
        out.append("/");
        const size_t equals = category.find('=');
        out.append(std::string_view(category.begin() + equals + 1, category.end()));
    }
}

} // namespace zv
