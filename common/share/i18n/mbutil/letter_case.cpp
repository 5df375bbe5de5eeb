#include <cctype>

#include "scanner_choice.h"

namespace {

using zv::Byte;
using Change = int (*)(int);

template <class Scanner>
int change_character(Byte* p, Change change) {
    const int length = zv::step<Scanner>(p);
    if (length == 1)
        *p = static_cast<Byte>(change(*p));
    return length;
}

int change_one(char* p, Change change) {
    return zv::with_current_scanner(
        [&](auto scanner) { return change_character<decltype(scanner)>(zv::as_bytes(p), change); });
}

unsigned change_all(char* s, Change change) {
    zv::ensure_initialised();
    if (s == nullptr)
        return 0;
    return zv::with_current_scanner([&](auto scanner) {
        Byte* p = zv::as_bytes(s);
        while (*p != 0)
            p += change_character<decltype(scanner)>(p, change);
        return static_cast<unsigned>(p - zv::as_bytes(s));
    });
}

} // namespace

int mbtoupper(char* p) {
    return change_one(p, std::toupper);
}
int mbtolower(char* p) {
    return change_one(p, std::tolower);
}
unsigned mbstrtoupper(char* s) {
    return change_all(s, std::toupper);
}
unsigned mbstrtolower(char* s) {
    return change_all(s, std::tolower);
}
