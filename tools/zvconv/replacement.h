/*
 * A new file that takes the place of another one only when all of it is safely on the disk.
 *
 * It is written beside the old one under a name of its own. Until the one rename at the end the old
 * file stays as it is, and whatever goes wrong, a signal too, the new one is gone.
 */
#ifndef ZVCONV_REPLACEMENT_H
#define ZVCONV_REPLACEMENT_H

#include <stdbool.h>
#include <sys/stat.h>

struct replacement {
    const char* name; /* as the user knows it */
    char* target;     /* the file itself, behind all symbolic links */
    bool exists;
    struct stat old; /* of the target, when it exists */
    char* temporary;
    int descriptor; /* where the new file is to be written */
};

/* How files are replaced. */
struct replacing {
    const char* backup; /* suffix of the old file's name, NULL for no backup */
    bool syncs;         /* everything is brought to the disk */
};

/* Creates the new file, readable for its owner alone. Complains when there is no place for it or
 * the old one may not be written. */
bool replacement_begin(struct replacement* replacement, const char* name);

/* Puts the new file in place with the old one's owner, mode and access list, as far as allowed. The
 * old one is kept as `replacing` says. With `read`, the status of
 * the old file when it was opened, a file that has changed since stays as it is. */
bool replacement_commit(struct replacement* replacement, const struct replacing* replacing,
                        const struct stat* read);

/* Removes the new file. */
void replacement_abandon(struct replacement* replacement);

#endif
