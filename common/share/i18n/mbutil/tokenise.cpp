#include <cstring>

#include "character_sets.h"
#include "current_code_set.h"

namespace {

// Where the next call of mbstrtok() with NULL goes on.
char* resume_position = nullptr;

zv::SetMatch find_delimiter(const char* s, const char* delimiters) {
    return delimiters == nullptr ? zv::SetMatch{std::strlen(s), 0} : zv::find_in_set(s, delimiters);
}

char* next_token(char* s, const char* delimiters, char** resume) {
    if (s != nullptr && *s == '\0')
        return *resume = nullptr;
    char* token = s != nullptr ? s : *resume;
    if (token == nullptr)
        return nullptr;
    zv::SetMatch delimiter = find_delimiter(token, delimiters);
    if (s != nullptr && delimiter.offset == 0) {
        token += delimiter.length;
        delimiter = find_delimiter(token, delimiters);
    }
    char* end = token + delimiter.offset;
    if (delimiter.length == 0) {
        *resume = nullptr;
    } else {
        *end = '\0';
        *resume = end + delimiter.length;
    }
    return token;
}

} // namespace

char* mbstrtok(char* s, const char* delimiters) {
    if (!zv::current_is_multibyte())
        return std::strtok(s, delimiters);
    return next_token(s, delimiters, &resume_position);
}

char* mbstrtok_r(char* s, const char* delimiters, char** save) {
    if (!zv::current_is_multibyte())
        return strtok_r(s, delimiters, save);
    return next_token(s, delimiters, save);
}
