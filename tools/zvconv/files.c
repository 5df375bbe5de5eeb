#include "files.h"

#include <dirent.h>
#include <fnmatch.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include "messages.h"

static bool add(struct files* files, const char* name) {
    if (files->count == files->room) {
        const int room = files->room == 0 ? 64 : 2 * files->room;
        char** names = realloc(files->names, (size_t)room * sizeof *names);
        if (names == NULL)
            return complain("no memory");
        files->names = names;
        files->room = room;
    }
    char* copy = strdup(name);
    if (copy == NULL)
        return complain("no memory");
    files->names[files->count++] = copy;
    return true;
}

/* Which files of directories are meant. */
struct patterns {
    const char* const* each;
    int count;
    const char* backup; /* what the names of backups end in, or NULL */
};

static bool matches(const char* name, struct patterns patterns) {
    for (int i = 0; i < patterns.count; ++i) {
        if (fnmatch(patterns.each[i], name, 0) == 0)
            return true;
    }
    return patterns.count == 0;
}

/* Whether a file was kept under this name when it was replaced. */
static bool is_backup(char* path, const char* suffix) {
    const size_t length = strlen(path), extra = suffix != NULL ? strlen(suffix) : length;
    if (extra >= length || path[length - extra - 1] == '/' ||
        strcmp(path + length - extra, suffix) != 0)
        return false;
    path[length - extra] = '\0';
    struct stat status;
    const bool replaced = lstat(path, &status) == 0;
    path[length - extra] = *suffix;
    return replaced;
}

static int is_within(const struct dirent* entry) {
    return strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0;
}

static int by_name(const struct dirent** a, const struct dirent** b) {
    return strcmp((*a)->d_name, (*b)->d_name);
}

/* Puts what is in a directory on a stack, the first name uppermost. */
static bool push_entries(struct files* stack, const char* directory) {
    struct dirent** entries;
    int count = scandir(directory, &entries, is_within, by_name);
    if (count < 0) {
        stack->complete = complain_of(directory);
        return true;
    }
    const char* separator = directory[strlen(directory) - 1] == '/' ? "" : "/";
    bool good = true;
    while (--count >= 0) {
        char* path;
        if (good && asprintf(&path, "%s%s%s", directory, separator, entries[count]->d_name) < 0)
            good = complain("no memory");
        if (good) {
            good = add(stack, path);
            free(path);
        }
        free(entries[count]);
    }
    free(entries);
    return good;
}

/* Not with fts(3): where a long has 32 bits, glibc's says nothing and ends a directory at an entry
 * whose number has more. */
static bool walk(struct files* files, const char* directory, struct patterns patterns) {
    struct files stack = {.complete = true};
    bool good = push_entries(&stack, directory);
    while (good && stack.count > 0) {
        char* path = stack.names[--stack.count];
        struct stat status;
        if (lstat(path, &status) != 0)
            stack.complete = complain_of(path);
        else if (S_ISDIR(status.st_mode))
            good = push_entries(&stack, path);
        else if (S_ISREG(status.st_mode) && matches(strrchr(path, '/') + 1, patterns) &&
                 !is_backup(path, patterns.backup))
            good = add(files, path);
        free(path);
    }
    files->complete = files->complete && stack.complete;
    files_free(&stack);
    return good;
}

/* A file that is named itself is meant, whatever it is called. */
static bool walk_named(struct files* files, const char* name, struct patterns patterns) {
    struct stat status;
    if (lstat(name, &status) != 0)
        files->complete = complain_of(name);
    else if (S_ISDIR(status.st_mode))
        return walk(files, name, patterns);
    else if (S_ISREG(status.st_mode))
        return add(files, name);
    else if (S_ISLNK(status.st_mode))
        files->complete = complain("%s: a symbolic link, which -r does not follow", name);
    else
        files->complete = complain("%s: Not a regular file", name);
    return true;
}

/* A file by the place where it is. */
struct place {
    char* path;
    int index;
};

static int by_path(const void* a, const void* b) {
    const struct place *x = a, *y = b;
    const int order = strcmp(x->path, y->path);
    return order != 0 ? order : x->index - y->index;
}

/* Takes out every name of a file but the first, which would convert it a second time. */
static bool leave_out_repeated(struct files* files) {
    struct place* places = calloc((size_t)files->count + 1, sizeof *places);
    if (places == NULL)
        return complain("no memory");
    int count = 0;
    for (int i = 0; i < files->count; ++i) {
        places[count] = (struct place){realpath(files->names[i], NULL), i};
        count += places[count].path != NULL; /* else opening the file will tell */
    }
    qsort(places, (size_t)count, sizeof *places, by_path);
    for (int i = 1; i < count; ++i) {
        if (strcmp(places[i - 1].path, places[i].path) != 0)
            continue;
        char** name = &files->names[places[i].index];
        files->complete = complain("%s: the same file once more", *name);
        free(*name);
        *name = NULL;
    }
    for (int i = 0; i < count; ++i)
        free(places[i].path);
    free(places);
    int kept = 0;
    for (int i = 0; i < files->count; ++i) {
        if (files->names[i] != NULL)
            files->names[kept++] = files->names[i];
    }
    files->count = kept;
    return true;
}

bool files_collect(struct files* files, char** names, int count, bool recursive,
                   const char* const* patterns, int pattern_count, const char* backup) {
    *files = (struct files){.complete = true};
    const struct patterns meant = {patterns, pattern_count, backup};
    for (int i = 0; i < count; ++i) {
        if (!(recursive ? walk_named(files, names[i], meant) : add(files, names[i])))
            return false;
    }
    return leave_out_repeated(files);
}

void files_free(struct files* files) {
    for (int i = 0; i < files->count; ++i)
        free(files->names[i]);
    free(files->names);
}
