// GCC's C++ headers are made for glibc. These are the names of it that they ask musl for.
#pragma once
#define __GLIBC_PREREQ(major, minor) 0
#define __locale_t locale_t
#include_next <bits/c++config.h>
#undef _GLIBCXX_USE_PTHREAD_COND_CLOCKWAIT
