/* The files of a run: those that are named, and those of the directories that are. */
#ifndef ZVCONV_FILES_H
#define ZVCONV_FILES_H

#include <stdbool.h>

struct files {
    char** names;
    int count, room;
    bool complete; /* every name that was given could be served */
};

/* Collects files, each once: a second name of the same is an error. With `recursive`, the regular
 * files of directories whose names match one of the patterns, or all, but for those that are
 * backups of others by the suffix `backup`; no symbolic link is followed there. Gives false after
 * a complaint that there is no memory. */
bool files_collect(struct files* files, char** names, int count, bool recursive,
                   const char* const* patterns, int pattern_count, const char* backup);
void files_free(struct files* files);

#endif
