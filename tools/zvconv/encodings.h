/* The encodings by their names: those of the library, and whatever iconv(3) knows. */
#ifndef ZVCONV_ENCODINGS_H
#define ZVCONV_ENCODINGS_H

#include <stdbool.h>
#include <stddef.h>

enum { NO_CODE_SET = -1 }; /* of an encoding that iconv alone serves */

struct encoding {
    const char* name;  /* as users are shown it */
    const char* iconv; /* what iconv(3) calls it */
    int code_set;      /* the library's identifier, or NO_CODE_SET */
};

/* Finds an encoding by any of its names, in any case. False after a complaint that shows the names
 * nearest to it. */
bool find_encoding(const char* name, struct encoding* encoding);

/* The same without a complaint. */
bool know_encoding(const char* name, struct encoding* encoding);

/* The encoding of a code set of the library, which must be one of those listed. */
struct encoding encoding_of(int code_set);

/* Whether the library has a converter for a pair of code sets; none is needed where they are one.
 */
bool library_serves(int from, int to);

/* How many letters must be put in, taken out or exchanged to make one name the other, in any case.
 */
size_t name_distance(const char* a, const char* b);

/* How many bytes a unit of the encoding has, in which line ends are to be looked for. */
unsigned unit_of(const struct encoding* encoding);

bool is_unicode(const struct encoding* encoding);

/* Prints a line an encoding: its name, what the library converts it into, UTF-8, its other names.
 */
void list_encodings(void);

#endif
