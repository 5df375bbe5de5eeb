/*
 * Text in the current code set: a walk, a search and a bounded copy that split no character.
 *
 * Prints:
 *   8 bytes, 6 characters
 *   last part: x.c
 *   field of 7: 6 bytes
 *   a, b, c
 */
#include <stdio.h>
#include <string.h>

#include "mbutil.h"

/* [walk] */
/* Counts the characters of a text. */
static unsigned count_characters(const char* text) {
    unsigned count = 0;
    for (; *text != '\0'; text += mbbytesinchar(text))
        ++count;
    return count;
}
/* [walk] */

/* [search] */
/* Gives the part behind the last backslash. Where the second byte of a character may be 5C, as in
 * Shift-JIS, strrchr() would cut that character in two. */
static const char* last_part(const char* path) {
    const char* separator = mbstrrchr(path, '\\');
    return separator == NULL ? path : separator + 1;
}

/* Fills a field with as much of a text as fits, in whole characters. */
static void fill_field(char field[8], const char* text) {
    mbstrncpy(field, text, 7);
    field[7] = '\0';
}

/* Prints the parts of a list; the string is changed. */
static void print_parts(char* list) {
    char* rest;
    const char* separator = "";
    for (char* part = mbstrtok_r(list, ";", &rest); part != NULL;
         part = mbstrtok_r(NULL, ";", &rest)) {
        printf("%s%s", separator, part);
        separator = ", ";
    }
    putchar('\n');
}
/* [search] */

int main(void) {
    /* [start] */
    InitMbutilExt(mbGetCodeSet("SJIS")); /* on the main thread, before other threads exist */
    /* [start] */
    const char path[] = "\x95\x5C\\x.c\x95\x5C"; /* the character 95 5C ends in a backslash byte */
    char field[8];
    char list[] = "a;b;c";
    printf("%zu bytes, %u characters\n", strlen(path), count_characters(path));
    printf("last part: %.3s\n", last_part(path));
    fill_field(field, "a\x95\x5C\x31\x95\x5C\x95\x5C\x95\x5C");
    printf("field of 7: %zu bytes\n", strlen(field));
    print_parts(list);
    return 0;
}
