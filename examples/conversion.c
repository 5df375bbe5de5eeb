/*
 * Every kind of conversion: by name, between Japanese, Chinese and Cyrillic encodings, of a file.
 *
 * Prints:
 *   EUC: C5 EC B5 FE
 *   JIS: 1B 24 42 45 6C 35 7E 1B 28 4A
 *   EUC-TW: C4 E3
 *   1251: CC
 *   the file is Shift-JIS and its first line becomes C5 EC B5 FE 0A
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "jaconv.h"
#include "mbutil.h"

static void print_bytes(const char* label, const char* text) {
    fputs(label, stdout);
    for (; *text != '\0'; ++text)
        printf(" %02X", (unsigned char)*text);
    putchar('\n');
}

/* [convert] */
/* Converts a text between any two code sets, in a block that the caller releases. */
static char* converted(const char* text, int from, int to) {
    char* result = malloc(5 * strlen(text) + 4); /* enough for every pair */
    return result == NULL ? NULL : convertStrExt(text, from, result, to);
}
/* [convert] */

/* [japanese] */
/* Converts Shift-JIS to EUC in a block of just the size that is needed. */
static char* euc_of(const char* sjis) {
    char* euc = malloc((size_t)eucLength(sjis) + 1);
    return euc == NULL ? NULL : shift2eucx(sjis, euc);
}
/* [japanese] */

/* [chinese] */
/* Converts Big5 to EUC-TW in a block of just the size that is needed. */
static char* euc_tw_of(const char* big5) {
    char* euc = malloc((size_t)euchLength(big5) + 1);
    return euc == NULL ? NULL : big2euchx(big5, euc);
}
/* [chinese] */

/* [cyrillic] */
/* Converts a line from ISO 8859-5 to the Windows code page 1251, in place. */
static void to_windows(char* line) {
    char* end = strchr(line, '\n'); /* a line feed means another character in such text */
    if (end != NULL)
        *end = '\0';
    c8859_5To1251x(line, line);
    if (end != NULL)
        *end = '\n';
}
/* [cyrillic] */

/* [detect] */
/* Detects the encoding of a Japanese file and prints its first line in the current code set. */
static void print_first_line(const char* path) {
    char line[256];
    FILE* file = fopen(path, "r");
    if (file == NULL)
        return;
    const int code_set = DetectJPCodeType(file);
    rewind(file);
    if (mbfgets(line, sizeof line, file, code_set) != NULL) {
        printf("the file is %s", code_set == ZV_SJIS ? "Shift-JIS" : "something else");
        print_bytes(" and its first line becomes", line);
    }
    fclose(file);
}
/* [detect] */

static void print_and_release(const char* label, char* text) {
    if (text != NULL)
        print_bytes(label, text);
    free(text);
}

int main(void) {
    const char tokyo[] = "\x93\x8C\x8B\x9E"; /* in Shift-JIS */
    char russian[] = "\xBC\n";
    InitMbutilExt(ZV_EUC);
    print_and_release("EUC:", euc_of(tokyo));
    print_and_release("JIS:", converted(tokyo, ZV_SJIS, ZV_JIS));
    print_and_release("EUC-TW:", euc_tw_of("\xA4\xA4"));
    to_windows(russian);
    printf("1251: %02X\n", (unsigned char)russian[0]);

    FILE* file = fopen("tokyo.txt", "w");
    if (file == NULL)
        return EXIT_FAILURE;
    fprintf(file, "%s\n", tokyo);
    fclose(file);
    print_first_line("tokyo.txt");
    return EXIT_SUCCESS;
}
