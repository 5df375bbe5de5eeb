/*
 * A server's other needs: start-up, files, streams, lists, threads, look-ups, documents.
 *
 * Prints:
 *   data in /srv/data/
 *   the machine has a name and a system
 *   line 2
 *   SECond
 *   3 calls
 *   the epoch began in 70
 *   <?xml version="1.0" encoding="shift_jis"?><a/>
 *   2\USD\2\JPY\0\
 *   sorted: a b c
 */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "list.h"
#include "mbutil.h"
#include "osutils.h"
#include "zvosutil.h"
#include "zvstdio.h"

/* [process] */
/* What a server does first, on its main thread. */
static void start(void) {
    OSInitLanguage();
    InitMbutilExt(ZV_SJIS);
    OSSetProcLimits();
    if (!InitializeSrvUtil())
        OSLogError3("%s: the machine has no full name", (intptr_t) "services", 0, 0, 0);
}
/* [process] */

/* [paths] */
/* Writes a configuration file and reads where the server's data lies. */
static void print_data_directory(void) {
    FILE* file = fopen("zv.conf", "w");
    if (file == NULL)
        return;
    fputs("Server-directory: /srv/data\n", file);
    fclose(file);
    setenv("ZVCONFIGDIR", ".", 1);
    printf("data in %s\n", OSGetServerDbPath());
}
/* [paths] */

/* [names] */
static void print_machine(void) {
    char host[65], system[516];
    OSGetHostnameNoDomain(host);
    if (host[0] != '\0' && OSGetOS(system))
        puts("the machine has a name and a system");
}
/* [names] */

/* [files] */
/* Adds lines that other processes may be adding to as well, and finds one. */
static void keep_lines(const char* path) {
    if (OSAppendLineToFile(path, "first") == 0 && OSAppendLineToFile(path, "second") == 0 &&
        OSAppendLineToFile(path, "third") == 0)
        printf("line %d\n", OSFindLineInFile(path, "second\n"));
}
/* [files] */

/* [streams] */
/* Reads a line, writes over the beginning of the next and reads that one back. */
static void use_stream(const char* path) {
    char line[16];
    ZVFILE* stream = ZVfopen(path, "r+");
    if (stream == NULL)
        return;
    if (OSLockZVFile(stream, ZV_LOCK_WRITE, 1) && ZVfgets(line, sizeof line, stream) != NULL) {
        const long next = ZVftell(stream);
        if (ZVfputs("SEC", stream) == 3 && ZVfseek(stream, next, SEEK_SET) == 0 &&
            ZVfgets(line, sizeof line, stream) != NULL)
            fputs(line, stdout);
    }
    ZVfclose(stream); /* which releases the lock */
}
/* [streams] */

/* [list] */
static int by_name(const void* a, const void* b, void* unused) {
    (void)unused;
    return strcmp(a, b);
}

/* Sorts names and walks over them with the cursor. */
static void sort_names(void) {
    LIST* names = list_create(0);
    if (names == NULL)
        return;
    if (list_addItem(names, "c") == 0 && list_addItem(names, "a") == 0 &&
        list_addItem(names, "b") == 0 && list_sort(names, by_name, NULL) == 0) {
        fputs("sorted:", stdout);
        for (char* name = list_getFirst(names); name != ZV_LIST_ITEM(ZV_LIST_NO_ITEM);
             name = list_getNext(names))
            printf(" %s", name);
        putchar('\n');
    }
    list_free(names, NULL, NULL);
}
/* [list] */

/* [threads] */
static pthread_mutex_t section;
static int calls;

static void* count_call(void* unused) {
    OSEnterCriticalSection(&section);
    ++calls;
    OSLeaveCriticalSection(&section);
    return unused;
}

static void count_calls(void) {
    pthread_t threads[3];
    OSInitializeCriticalSection(&section);
    for (int i = 0; i < 3; ++i)
        pthread_create(&threads[i], NULL, count_call, NULL);
    for (int i = 0; i < 3; ++i)
        pthread_join(threads[i], NULL);
    OSDeleteCriticalSection(&section);
    printf("%d calls\n", calls);
}
/* [threads] */

/* [lookups] */
static void print_year(time_t seconds) {
    struct tm local;
    if (OSLocalTime(&seconds, &local) != NULL)
        printf("the epoch began in %d\n", local.tm_year);
}
/* [lookups] */

/* [documents] */
/* Names the code set of a document in its declaration. */
static void declare(const char* document, int code_set) {
    char* declared;
    SetEncodingForXMLDoc(document, code_set, &declared);
    if (declared != NULL)
        puts(declared);
    free(declared);
}
/* [documents] */

/* [currencies] */
/* Reads a currency list and writes it again. */
static void copy_currencies(const char* text) {
    CurrencyDetailList list;
    char copy[64];
    unsigned position = 0;
    if (LoadCurrencyDetailList(text, &list) != 0)
        return;
    if (ZVCurrencyDetailListToText(&list, &position, sizeof copy, copy) == 0)
        puts(copy);
    if (list.count != 0)
        free(list.details);
}
/* [currencies] */

int main(void) {
    print_data_directory();
    start();
    print_machine();
    keep_lines("lines");
    use_stream("lines");
    count_calls();
    print_year(86400);
    declare("<?xml version=\"1.0\" encoding=\"x\"?><a/>", ZV_SJIS);
    copy_currencies("2\\USD\\2\\JPY\\0\\");
    sort_names();
    return EXIT_SUCCESS;
}
