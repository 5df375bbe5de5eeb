#ifndef ZVUTIL_MBUTIL_CURRENT_CODE_SET_H
#define ZVUTIL_MBUTIL_CURRENT_CODE_SET_H

#include "mbutil.h"

namespace zv {

// The current code set; 0 until it has been set.
extern int native_code_set;

// Derives the current code set from the environment's locale when nothing has set it yet.
inline void ensure_initialised() {
    if (MBUTIL_Initialized == 0) [[unlikely]]
        InitMbutil();
}

// What nearly every operation in the current code set begins with.
inline bool current_is_multibyte() {
    ensure_initialised();
    return MBUTIL_I_Am_MultiByte != 0;
}

inline int current_code_set() {
    ensure_initialised();
    return native_code_set;
}

} // namespace zv

#endif
