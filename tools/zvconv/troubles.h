/* What cannot be converted: counted, told where it stands, and what is then written. */
#ifndef ZVCONV_TROUBLES_H
#define ZVCONV_TROUBLES_H

#include <stdbool.h>
#include <stddef.h>

#include "buffer.h"
#include "encodings.h"

/* What a step writes for text that it has told of and the next one is to replace: it begins no
 * character of EUC or SJIS. */
enum { STAND_IN = 0xFF };

enum policy {
    REFUSE, /* the result is not wanted */
    FORCE,  /* the result is wanted as it is */
    SKIP,
    SUBSTITUTE
};

enum trouble {
    MALFORMED, /* bytes that are no text */
    LOST,      /* a character that the other encoding lacks */
    TROUBLES
};

struct troubles {
    const char* name; /* of the input */
    enum policy policy;
    bool verbose; /* tells of each trouble, not of the first of its kind alone */
    struct encoding from, to;
    unsigned long counts[TROUBLES];
    unsigned long control_codes; /* characters that became such codes, as was asked for */

    /* The portion of the input at hand, and where in the input it begins; decoded text comes from
     * there as a whole. */
    const char* portion;
    unsigned long long offset, line;
    bool decoded;

    /* Finds the place in the portion from which a place in intermediate text comes; or NULL. */
    const char* (*origin)(void* context, const char* place, size_t* length);
    void* context;
};

/* Begins the next portion of the input, where the last one ended. */
void troubles_enter(struct troubles* troubles, const char* portion);
/* Ends it after so many bytes. */
void troubles_leave(struct troubles* troubles, size_t length);

void troubles_meet(struct troubles* troubles, enum trouble trouble, const char* place,
                   size_t length);

/* Tells how many there were. False when there were any and they are refused. */
bool troubles_report(const struct troubles* troubles);

/* Writes UTF-8 text in an encoding, without a byte order mark. False when it lacks a character. */
bool encode_utf8(const char* text, const struct encoding* encoding, struct buffer* out);

#endif
