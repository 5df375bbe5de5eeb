#include "replacement.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "messages.h"

static const int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU};
enum { SIGNALS = sizeof kSignals / sizeof *kSignals };

/* What a signal removes before it ends the program. Changed only while signals are blocked. */
static const char* unfinished;

static void remove_and_die(int signal_number) {
    if (unfinished != NULL)
        unlink(unfinished);
    raise(signal_number); /* which now does what it does by default */
}

static sigset_t all_signals(void) {
    sigset_t set;
    sigemptyset(&set);
    for (int i = 0; i < SIGNALS; ++i)
        sigaddset(&set, kSignals[i]);
    return set;
}

static void catch_signals(void) {
    struct sigaction action = {.sa_handler = remove_and_die, .sa_flags = (int)SA_RESETHAND};
    action.sa_mask = all_signals();
    for (int i = 0; i < SIGNALS; ++i) {
        struct sigaction old;
        if (sigaction(kSignals[i], NULL, &old) == 0 && old.sa_handler == SIG_DFL)
            sigaction(kSignals[i], &action, NULL);
    }
}

static sigset_t block_signals(void) {
    const sigset_t set = all_signals();
    sigset_t before;
    sigprocmask(SIG_BLOCK, &set, &before);
    return before;
}

static void restore_signals(sigset_t before) {
    sigprocmask(SIG_SETMASK, &before, NULL);
}

/* Joins the folder of a path, with its slash, and a name. */
static char* beside(const char* path, const char* name) {
    const char* slash = strrchr(path, '/');
    const size_t folder = slash == NULL ? 0 : (size_t)(slash - path) + 1;
    const size_t room = folder + strlen(name) + 1;
    char* joined = malloc(room);
    if (joined != NULL)
        snprintf(joined, room, "%.*s%s", (int)folder, path, name);
    return joined;
}

/* Finds the file behind the name; one that does not exist yet is that name. */
static bool find_target(struct replacement* r) {
    struct stat link;
    r->target = realpath(r->name, NULL);
    r->exists = r->target != NULL;
    if (r->exists)
        return stat(r->target, &r->old) == 0 && access(r->target, W_OK) == 0;
    if (errno != ENOENT || lstat(r->name, &link) == 0)
        return false;
    r->target = strdup(r->name);
    return r->target != NULL;
}

bool replacement_begin(struct replacement* r, const char* name) {
    *r = (struct replacement){.name = name, .descriptor = -1};
    if (!find_target(r) || (r->temporary = beside(r->target, ".zvconv-XXXXXX")) == NULL) {
        complain_of(name);
        free(r->target);
        return false;
    }
    catch_signals();
    const sigset_t before = block_signals();
    r->descriptor = mkstemp(r->temporary);
    const bool good = r->descriptor >= 0;
    const int reason = errno;
    if (good)
        unfinished = r->temporary;
    restore_signals(before);
    if (good)
        return true;
    complain("%s: no new file beside it: %s", name, strerror(reason));
    free(r->temporary);
    free(r->target);
    return false;
}

/* Takes over the access list of the old file, or has none, not even one that the folder gave. */
static bool adopt_access_list(const struct replacement* r, bool wanted) {
    static const char kName[] = "system.posix_acl_access";
    char list[8192];
    const ssize_t size = wanted ? getxattr(r->target, kName, list, sizeof list) : 0;
    if (size > 0)
        return fsetxattr(r->descriptor, kName, list, (size_t)size, 0) == 0;
    if (size < 0 && errno == ERANGE)
        return false;
    fremovexattr(r->descriptor, kName);
    return true;
}

/* Gives the new file the rights of the old one, and nobody more than before. */
static bool adopt_rights(const struct replacement* r) {
    if (!r->exists) {
        const mode_t mask = umask(0);
        umask(mask);
        return fchmod(r->descriptor, 0666 & ~mask) == 0;
    }
    mode_t mode = r->old.st_mode & 07777;
    const bool same_group = fchown(r->descriptor, (uid_t)-1, r->old.st_gid) == 0;
    const bool same_owner = fchown(r->descriptor, r->old.st_uid, (gid_t)-1) == 0;
    if (!same_group) /* another group is treated as everybody else */
        mode = (mode & ~(mode_t)S_IRWXG) | (mode & S_IRWXO) << 3;
    if (!same_group || !same_owner)
        mode &= ~(mode_t)(S_ISUID | S_ISGID);
    return adopt_access_list(r, same_group && same_owner) && fchmod(r->descriptor, mode) == 0;
}

static bool has_changed(const struct replacement* r, const struct stat* read) {
    struct stat now;
    return stat(r->target, &now) != 0 || now.st_dev != read->st_dev || now.st_ino != read->st_ino ||
           now.st_size != read->st_size || now.st_mtim.tv_sec != read->st_mtim.tv_sec ||
           now.st_mtim.tv_nsec != read->st_mtim.tv_nsec;
}

/* The backup is a second name of the old file, so it is whole at any moment. One that is there
 * already stays: it may be the only text from before a first conversion. */
static bool keep_backup(const struct replacement* r, const char* suffix) {
    const size_t room = strlen(r->target) + strlen(suffix) + 1;
    char* backup = malloc(room);
    if (backup != NULL)
        snprintf(backup, room, "%s%s", r->target, suffix);
    const bool good = backup != NULL && link(r->target, backup) == 0;
    if (!good)
        complain("%s: no backup %s: %s", r->name, backup != NULL ? backup : "", strerror(errno));
    free(backup);
    return good;
}

/* Makes the rename itself lasting. Some file systems cannot do so for folders. */
static bool sync_folder(const char* path) {
    char* folder = beside(path, ".");
    const int descriptor = folder == NULL ? -1 : open(folder, O_RDONLY | O_DIRECTORY);
    const bool good = descriptor < 0 || fsync(descriptor) == 0 || errno == EINVAL;
    if (descriptor >= 0)
        close(descriptor);
    free(folder);
    return good;
}

static void release(struct replacement* r) {
    free(r->temporary);
    free(r->target);
}

bool replacement_commit(struct replacement* r, const struct replacing* replacing,
                        const struct stat* read) {
    bool good = (adopt_rights(r) && (!replacing->syncs || fsync(r->descriptor) == 0)) ||
                complain_of(r->name);
    if (good && read != NULL && has_changed(r, read))
        good = complain("%s: changed while it was converted", r->name);
    if (!good) {
        replacement_abandon(r);
        return false;
    }
    const sigset_t before = block_signals();
    good = close(r->descriptor) == 0 || complain_of(r->name);
    r->descriptor = -1;
    good = good && (replacing->backup == NULL || !r->exists || keep_backup(r, replacing->backup));
    good = good && (rename(r->temporary, r->target) == 0 || complain_of(r->name));
    if (!good) {
        restore_signals(before);
        replacement_abandon(r);
        return false;
    }
    unfinished = NULL;
    restore_signals(before);
    good = !replacing->syncs || sync_folder(r->target) || complain_of(r->name);
    release(r);
    return good;
}

void replacement_abandon(struct replacement* r) {
    const sigset_t before = block_signals();
    unlink(r->temporary);
    unfinished = NULL;
    restore_signals(before);
    if (r->descriptor >= 0)
        close(r->descriptor);
    release(r);
}
