#include "files.h"

#include <errno.h>
#include <fnmatch.h>
#include <fts.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>

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

static bool matches(const char* name, const char* const* patterns, int count) {
    for (int i = 0; i < count; ++i) {
        if (fnmatch(patterns[i], name, 0) == 0)
            return true;
    }
    return count == 0;
}

static bool add_entry(struct files* files, const FTSENT* entry, const char* const* patterns,
                      int pattern_count) {
    switch (entry->fts_info) {
    case FTS_F:
        /* A file that is named itself is meant, whatever it is called. */
        if (entry->fts_level > 0 && !matches(entry->fts_name, patterns, pattern_count))
            return true;
        return add(files, entry->fts_path);
    case FTS_DNR:
    case FTS_ERR:
    case FTS_NS:
        files->complete = complain("%s: %s", entry->fts_path, strerror(entry->fts_errno));
        return true;
    case FTS_SL:
    case FTS_SLNONE:
        if (entry->fts_level == 0)
            files->complete =
                complain("%s: a symbolic link, which -r does not follow", entry->fts_path);
        return true;
    case FTS_DEFAULT:
        if (entry->fts_level == 0)
            files->complete = complain("%s: Not a regular file", entry->fts_path);
        return true;
    default:
        return true;
    }
}

static int by_name(const FTSENT** a, const FTSENT** b) {
    return strcmp((*a)->fts_name, (*b)->fts_name);
}

static bool walk(struct files* files, char* name, const char* const* patterns, int pattern_count) {
    char* const roots[] = {name, NULL};
    FTS* tree = fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, by_name);
    if (tree == NULL) {
        files->complete = complain_of(name);
        return true;
    }
    bool good = true;
    FTSENT* entry;
    while (good && (errno = 0, entry = fts_read(tree)) != NULL)
        good = add_entry(files, entry, patterns, pattern_count);
    if (good && errno != 0)
        files->complete = complain_of(name);
    fts_close(tree);
    return good;
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
                   const char* const* patterns, int pattern_count) {
    *files = (struct files){.complete = true};
    for (int i = 0; i < count; ++i) {
        if (!(recursive ? walk(files, names[i], patterns, pattern_count) : add(files, names[i])))
            return false;
    }
    return leave_out_repeated(files);
}

void files_free(struct files* files) {
    for (int i = 0; i < files->count; ++i)
        free(files->names[i]);
    free(files->names);
}
