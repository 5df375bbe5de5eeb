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

    if (locale.find(';') == std::string_view::npos) {
        out.append(locale);
        return;
    }
    while (!locale.empty()) {
        std::string_view category(locale.data(), std::min(locale.find(';'), locale.size()));
        locale.remove_prefix(std::min(category.size() + 1, locale.size()));
        category.remove_prefix(category.find('=') + 1); // none where there is no such sign
        out.append("/");
        out.append(category);
    }
}

} // namespace zv
