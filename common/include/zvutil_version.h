/**
 * @file zvutil_version.h
 * @brief The version of the headers that a host is compiled with.
 *
 * Hosts compiled with a version run with every later one of the same major version: the major
 * version is the number in the library's SONAME.
 */
#ifndef ZVUTIL_VERSION_H
#define ZVUTIL_VERSION_H

/** Changes when hosts have to be compiled again. */
#define ZVUTIL_VERSION_MAJOR 1
/** Grows with every release that adds to the interface. */
#define ZVUTIL_VERSION_MINOR 0
/** Grows with every release that leaves the interface as it is. */
#define ZVUTIL_VERSION_PATCH 0

/** The three numbers with dots between them, such as "1.0.0": a string literal. */
#define ZVUTIL_VERSION                                                                             \
    ZVUTIL_VERSION_TEXT(ZVUTIL_VERSION_MAJOR, ZVUTIL_VERSION_MINOR, ZVUTIL_VERSION_PATCH)

/** @cond */
#define ZVUTIL_VERSION_TEXT(major, minor, patch) ZVUTIL_VERSION_LITERAL(major.minor.patch)
#define ZVUTIL_VERSION_LITERAL(text) #text
/** @endcond */

#endif
