/*
 * members: keeps a file of names, one a line, each only once; several processes may add at a time.
 *
 *   members [-c CODE_SET] FILE [NAME]...
 *
 * adds the names that FILE lacks and prints all of them in order. All text is in the code set, such
 * as SJIS; without the option in that of the locale's language.
 *
 * Shows the start-up of a server program, a list, a stream, and locks.
 */
#define _POSIX_C_SOURCE 200809L
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "list.h"
#include "mbutil.h"
#include "osutils.h"
#include "zvstdio.h"

enum { LONGEST_NAME = 255 };

static int by_name(const void* a, const void* b, void* unused) {
    (void)unused;
    const int order = mbstricmp(a, b);
    return (order > 0) - (order < 0);
}

static int print_name(void* name, void* unused) {
    (void)unused;
    return puts(name) == EOF;
}

static int release_name(void* name, void* unused) {
    (void)unused;
    free(name);
    return 0;
}

/* A name is one line of well-formed text. */
static int is_name(const char* text) {
    unsigned bad;
    return strlen(text) <= LONGEST_NAME && mbstrchr(text, '\n') == NULL &&
           mbvalidatestringtype(text, &bad, ZV_CHECK_PRINTABLE);
}

static void cut_line_end(char* line) {
    char* end = mbstrchr(line, '\n');
    if (end != NULL)
        *end = '\0';
}

/* Puts a name in its place unless it is listed. Gives 0 when it was new. */
static int add(LIST* names, const char* name) {
    char* copy = strdup(name);
    if (copy == NULL)
        return ZV_LIST_NO_MEMORY;
    int status = ZV_LIST_DUPLICATE;
    if (list_isUnique(names, copy, by_name, NULL))
        status = list_addSorted(names, copy, by_name, NULL);
    if (status != 0)
        free(copy);
    return status;
}

static int read_names(LIST* names, const char* path) {
    char line[LONGEST_NAME + 2];
    if (!OSFileExists(path))
        return 0;
    ZVFILE* stream = ZVfopen(path, "r");
    if (stream == NULL)
        return -1;
    int status = OSLockZVFile(stream, ZV_LOCK_READ, 1) ? 0 : -1;
    while (status == 0 && ZVfgets(line, sizeof line, stream) != NULL) {
        cut_line_end(line);
        if (add(names, line) == ZV_LIST_NO_MEMORY)
            status = -1;
    }
    if (ZVferror(stream) != 0)
        status = -1;
    ZVfclose(stream); /* which releases the lock */
    return status;
}

/* Start-up, on the main thread. Gives 0 when no code set has the name. */
static int start(const char* code_set_name) {
    OSInitLanguage();
    if (code_set_name == NULL) {
        InitMbutil();
    } else {
        const int code_set = mbGetCodeSet(code_set_name);
        if (code_set == ZV_WESTERN && strcmp(code_set_name, "WESTERN") != 0)
            return 0;
        InitMbutilExt(code_set);
    }
    InitializeSrvUtil();
    signal(SIGXFSZ, SIG_IGN); /* a file that may not grow is an error, rather than the end */
    return 1;
}

int main(int argc, char** argv) {
    const char* code_set_name = NULL;
    int option;
    while ((option = getopt(argc, argv, "c:")) == 'c')
        code_set_name = optarg;
    if (option != -1 || optind == argc) {
        fputs("usage: members [-c CODE_SET] FILE [NAME]...\n", stderr);
        return EXIT_FAILURE;
    }
    if (!start(code_set_name)) {
        fprintf(stderr, "members: no code set is called '%s'\n", code_set_name);
        return EXIT_FAILURE;
    }

    const char* path = argv[optind];
    LIST* names = list_create(0);
    if (names == NULL || read_names(names, path) != 0) {
        perror(path);
        return EXIT_FAILURE;
    }
    int status = EXIT_SUCCESS;
    for (int i = optind + 1; i < argc; ++i) {
        if (!is_name(argv[i])) {
            fprintf(stderr, "members: '%s' cannot be a name\n", argv[i]);
            status = EXIT_FAILURE;
        } else if (add(names, argv[i]) == 0 && OSAppendLineToFile(path, argv[i]) != 0) {
            perror(path);
            status = EXIT_FAILURE;
        }
    }
    list_perform(names, print_name, NULL);
    list_free(names, release_name, NULL);
    TerminateSrvUtil();
    return status;
}
