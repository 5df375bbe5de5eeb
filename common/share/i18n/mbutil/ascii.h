#ifndef ZVUTIL_MBUTIL_ASCII_H
#define ZVUTIL_MBUTIL_ASCII_H

namespace zv {

// Letter case of ASCII alone: a Turkish process locale must not change what a name means.
constexpr char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool starts_with_ignoring_case(const char* text, const char* prefix) {
    for (; *prefix != '\0'; ++text, ++prefix) {
        if (ascii_lower(*text) != ascii_lower(*prefix))
            return false;
    }
    return true;
}

constexpr bool equals_ignoring_case(const char* a, const char* b) {
    while (*a != '\0' && ascii_lower(*a) == ascii_lower(*b))
        ++a, ++b;
    return *a == *b;
}

} // namespace zv

#endif
