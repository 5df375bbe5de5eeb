#ifndef ZVUTIL_MBUTIL_LOCALE_CODE_SET_H
#define ZVUTIL_MBUTIL_LOCALE_CODE_SET_H

namespace zv {

// The code set in which a host of the process locale holds its text: East Asian ones only.
int native_code_set_of_locale();

} // namespace zv

#endif
