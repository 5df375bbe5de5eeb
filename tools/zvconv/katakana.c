#include "katakana.h"

#include "jaconv.h"
#include "mbutil.h"

static bool is_half_width(unsigned char byte) {
    return byte >= 0xA1 && byte <= 0xDF;
}

/* Writes the full-width form of the katakana at *text, which moves behind it. */
static void widen(const unsigned char** text, int code_set, char* out) {
    *text += code_set == ZV_EUC; /* the single shift */
    int first = *(*text)++, second = 0;
    han2zen(text, &first, &second, code_set);
    if (code_set == ZV_EUC) {
        sjis2jis(&first, &second);
        first += 0x80;
        second += 0x80;
    }
    out[0] = (char)first;
    out[1] = (char)second;
}

bool widen_katakana(struct buffer* text, int code_set, struct buffer* out) {
    if (!buffer_add(text, "", 1)) /* han2zen looks at the byte behind */
        return false;
    const unsigned char* next = (const unsigned char*)text->bytes;
    const unsigned char* const end = next + text->length - 1;
    char* result = buffer_extend(out, 2 * text->length);
    if (result == NULL)
        return false;
    while (next < end) {
        const int length = mblenExt((const char*)next, (unsigned)(end - next), code_set);
        const bool half = code_set == ZV_EUC ? *next == 0x8E && length == 2 && end - next > 1
                                             : is_half_width(*next);
        if (half) {
            widen(&next, code_set, result);
            result += 2;
            continue;
        }
        int step = length < 1 || length > end - next ? 1 : length;
        while (step-- > 0)
            *result++ = (char)*next++;
    }
    out->length = (size_t)(result - out->bytes);
    return true;
}
