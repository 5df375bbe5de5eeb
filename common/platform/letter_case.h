// Expects of glibc its tables of letter case, which are those of the calling thread's locale; of
// another C library tolower() and toupper().
#ifndef ZVUTIL_PLATFORM_LETTER_CASE_H
#define ZVUTIL_PLATFORM_LETTER_CASE_H

#include <ctype.h>

namespace zv {

// Letter case as the process locale has it, for bytes: tolower() and toupper() without their calls,
// for the time of one operation.
class LetterCase {
public:
#ifdef __GLIBC__
    static LetterCase lower() {
        return LetterCase(*__ctype_tolower_loc());
    }
    static LetterCase upper() {
        return LetterCase(*__ctype_toupper_loc());
    }
    int operator()(unsigned char byte) const {
        return to_[byte];
    }

private:
    using To = const __int32_t*;
#else
    static LetterCase lower() {
        return LetterCase(tolower);
    }
    static LetterCase upper() {
        return LetterCase(toupper);
    }
    int operator()(unsigned char byte) const {
        return to_(byte);
    }

private:
    using To = int (*)(int);
#endif
    explicit LetterCase(To to) : to_(to) {}

    To to_;
};

} // namespace zv

#endif
