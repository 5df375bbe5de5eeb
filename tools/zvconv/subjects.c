#include "subjects.h"

#include <string.h>

#include "mbutil.h"
#include "troubles.h"

static bool is_japanese(const struct encoding* encoding) {
    return encoding->code_set == ZV_EUC || encoding->code_set == ZV_SJIS ||
           encoding->code_set == ZV_JIS;
}

struct encoding subject_encoding(const struct encoding* from, const struct encoding* to,
                                 bool standard) {
    if (is_japanese(to)) {
        const bool as_it_is = from->code_set == ZV_SJIS && !standard;
        return encoding_of(as_it_is ? ZV_SJIS : ZV_EUC);
    }
    if (to->code_set == NO_CODE_SET)
        return *to;
    /* Few mail programs know EUC-TW. */
    if (standard && to->code_set == ZV_EUC_H)
        return encoding_of(ZV_BIG5);
    return encoding_of(mbGetCodeSetForMail(to->code_set));
}

bool library_writes_subjects(const struct encoding* to) {
    return to->code_set != NO_CODE_SET;
}

bool holds_ascii(const struct encoding* encoding) {
    static const char kSample[] = "+\n"; /* which UTF-7 writes as "+-", other codes elsewhere */
    const size_t length = strlen(kSample);
    struct buffer same = {0};
    const bool good = /* some begin with an escape sequence */
        encoding->code_set != NO_CODE_SET ||
        (encode_utf8(kSample, encoding, &same) && same.length >= length &&
         memcmp(same.bytes + same.length - length, kSample, length) == 0);
    buffer_free(&same);
    return good;
}

bool write_subject(const char* line, const struct encoding* encoding, const struct encoding* to,
                   struct buffer* out) {
    if (!buffer_add(out, "Subject: ", 9))
        return false;
    char* subject = buffer_extend(out, 64 * strlen(line) + 64);
    if (subject == NULL)
        return false;
    convertSubjectForMail(subject, line, mbGetCodeSetForMail(to->code_set), encoding->code_set);
    out->length += strlen(subject);
    return buffer_add(out, "\n", 1);
}
