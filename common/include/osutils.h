/**
 * @file osutils.h
 * @brief Services of the operating system: paths, host names, files, processes, the system log, the
 * machine.
 *
 * Paths and names of hosts are cached: found once, then kept for the life of the process. Fill the
 * caches with InitializeSrvUtil() on one thread before others start; from then on everything here
 * may run in any number of threads at once, unless something else is said.
 *
 * Strings are zero-terminated byte strings that are handed to the system as they are, whatever the
 * current code set; lengths and rooms are bytes. Booleans are 1 and 0. Why a function failed is in
 * errno where its comment says so, and nowhere else. Pointers are not NULL unless something is said
 * of NULL.
 */
#ifndef ZVUTIL_OSUTILS_H
#define ZVUTIL_OSUTILS_H

#include <stdint.h>
#include <stdio.h>
#include <sys/types.h>
#include <time.h>

#include "zvosutil.h"
#include "zvstdio.h"

struct sigaction;

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup zvutil_paths Installation and configuration paths
 * @brief Where the product is installed and where its configuration lies.
 *
 * The results are strings of the library, of at most 255 bytes; they stay valid for the life of
 * the process, and the caller neither changes nor frees them. No function fails. A setting that is
 * empty or would lead to a longer path counts as absent; it is never cut. The file itself is
 * described in @ref zv_conf.
 * @par Thread safety
 * Any number of threads at once for what InitializeSrvUtil() has filled, giving 1; of
 * SetZVInstallPath() and the first call of a getter that finds its path itself one at a time, while
 * no other thread asks for paths.
 * @par Example
 * @snippet services.c paths
 * @{
 */

/**
 * Starts the operating system services of the library.
 *
 * Resolves the machine's names and fills the caches of all paths but those of the audit and monitor
 * configuration files. Names are text in the current code set: set it before, or the environment's
 * locale may be adopted, as by InitMbutil().
 * @return 1, or 0 when the machine's full name cannot be resolved. The node name stands for it
 *         then and nothing else is filled: ask once, before other threads start, for each of the
 *         other names and paths that the host is going to use.
 * @par Thread safety
 * Before other threads start.
 */
int InitializeSrvUtil(void);

/** Does nothing: the caches live as long as the process. */
void TerminateSrvUtil(void);

/**
 * Sets the installation directory and resolves again what depends on it, before or after
 * InitializeSrvUtil().
 *
 * That is the configuration directory, the server, database and audit configuration files and the
 * server database directory, whose strings change in place. What OSGetZVQDirectory() and
 * OSGetZVMonitorConfigFile() have given before stays.
 * @param directory nothing happens when it is NULL, empty or too long: 237 bytes always fit, 255
 *                  where "ZVCONFIGDIR" names the configuration directory.
 * @par Thread safety
 * Only while no other thread asks for paths.
 */
void SetZVInstallPath(const char* directory);

/** Gives the installation directory. @return what was set, else "/usr/zv". */
const char* OSGetZVInstallPath(void);

/**
 * Gives the configuration directory.
 * @return the value of "ZVCONFIGDIR" in the environment (at most 242 bytes), else "conf" in the
 *         installation directory.
 */
const char* OSGetZVConfigPath(void);

/** Gives the server configuration file. @return "zv.conf" in the configuration directory. */
const char* OSGetServerConfigPath(void);

/** Gives the database configuration file. @return "zvdb.conf" in the configuration directory. */
const char* OSGetDBConfigPath(void);

/**
 * Gives the audit configuration file.
 * @return "zvaudit.conf" in the configuration directory.
 * @par Thread safety
 * The first call, also after SetZVInstallPath(), fills a cache that InitializeSrvUtil() does not;
 * make it while no other thread does.
 */
const char* OSGetAuditConfigPath(void);

/** Gives the directory file. @return "zv" in the configuration directory. */
const char* OSGetZVQDirectory(void);

/**
 * Gives the server database directory.
 * @return the "Server-directory:" value of the server configuration file (at most 254 bytes) and
 *         "/"; "./" when there is none.
 */
const char* OSGetServerDbPath(void);

/**
 * Gives the monitor configuration file.
 * @param unused not looked at; may be NULL.
 * @return the value of "ZVMCONFIGFILE" in the environment, else "../conf/zvmonitor.conf".
 * @par Thread safety
 * The first call fills a cache that InitializeSrvUtil() does not; make it while no other thread
 * does.
 */
const char* OSGetZVMonitorConfigFile(const void* unused);

/**
 * Reads a value from the server configuration file.
 *
 * A line that begins with the key, letter case included, gives the rest of the line, without the
 * blanks around it; the last such line counts. A line longer than 283 bytes is looked at in pieces,
 * each as a line of its own. The file is read afresh by every call.
 * @param key   not empty, its colon included.
 * @param value receives the value, cut after 255 bytes, or an empty string when there is none or
 *              the file cannot be read to its end or is no regular file; room for 256 bytes.
 */
void GetLineFromServerConfigFileDup(const char* key, char* value);

/** Gives the character between names in a path. @param out receives "/"; room for 2 bytes. */
void OSGetDirSeparator(char* out);

/** Gives the end of a line. @param out receives "\n"; room for 2 bytes. */
void OSGetEol(char* out);
/** @} */

/**
 * @defgroup zvutil_hostnames Host and server names
 * @brief What this machine and this server are called.
 *
 * Names have at most 64 bytes, in the current code set, which is initialised where nothing has set
 * it; every output has room for 65 bytes. Letter case counts only where that is said; which letters
 * are the same follows from the process locale, but for those of ASCII. A look-up may ask the
 * network and wait for it. Why it failed is not reported.
 * @par Thread safety
 * Any number of threads at once after InitializeSrvUtil() gave 1; after it gave 0, once
 * OSGetHostnameNoDomain() has been called.
 * @par Example
 * @snippet services.c names
 * @{
 */

/**
 * Names the server, as it is configured; empty without a name.
 *
 * The host program writes it, terminated, while no other thread reads it; the library only reads
 * it, afresh on every call.
 */
extern char serverNameFromConfig[65];

/** Names of a server; the list and the names belong to the caller. */
typedef struct NameList {
    unsigned count;           /**< Number of names. */
    const char* const* names; /**< The names. */
} NameList;

/**
 * Resolves and caches the machine's full name.
 *
 * The full name is the official name in the host entry of the node name, cut before a character
 * that would pass byte 64. A call looks it up anew and stores it last.
 * @return 1, or 0 when the node name cannot be looked up. It stands in for the full name then, and
 *         only the call that made the look-up reports the failure.
 * @par Thread safety
 * Before other threads start, as InitializeSrvUtil() calls it, or while none asks for names. A call
 * that finds the same name again disturbs no reader.
 */
int InitHostnameWithDomain(void);

/**
 * Gives the machine's full name, resolving it on first use.
 * @param out receives the name; untouched on failure.
 * @return 1, or 0 when this call had to look the name up and could not.
 */
int OSGetHostnameWithDomain(char* out);

/**
 * Resolves the full name of a host.
 * @param name a host name, alias or dotted address.
 * @param out  receives its official name, cut before a character that would pass byte 64; untouched
 *             on failure.
 * @return 1, or 0 when the name cannot be looked up.
 */
int OSGetRemoteHostnameWithDomain(const char* name, char* out);

/**
 * Gives the full name of the server.
 *
 * That is the configured name with the machine's domain (all from the first dot of its full name),
 * or the machine's full name.
 * @param out receives the name; untouched when the machine's full name cannot be had, the
 *            configured name alone when both together have more than 64 bytes.
 * @return 1, or 0 in these two cases.
 */
int OSGetServerNameWithDomain(char* out);

/**
 * Caches the machine's node name, exactly as the system reports it.
 * @par Thread safety
 * Before other threads start, as InitializeSrvUtil() calls it, or while none asks for names.
 */
void InitHostnameNoDomain(void);

/** Gives the node name, asking for it on first use. @param out receives it, or an empty string. */
void OSGetHostnameNoDomain(char* out);

/** Gives the name of the server. @param out receives the configured name, else the node name. */
void OSGetServerNameNoDomain(char* out);

/**
 * Tells whether a name stands for an expected host.
 * @param name     a host name or alias.
 * @param expected the expected official name; NULL or empty accepts any name that resolves. Where
 *                 one is expected and a server name is configured, @p name is compared with the
 *                 configured name instead, case included, and nothing is looked up.
 * @return 1 or 0; 0 for a name that does not resolve.
 */
int OSCheckHostnameUsingAlias(const char* name, const char* expected);

/**
 * Tells whether a name designates this server.
 *
 * "@" always does; "*" and names that begin with "$" never do. The names known here are, in this
 * order: those of @p list; the configured name; the machine's full name; the configured name with
 * the machine's domain; the full name up to its first dot. Any other name is looked up, and
 * designates this server when its official name, uncut, is the machine's full name.
 *
 * A configured name that has more than 64 bytes together with the domain ends the search: none of
 * the names behind it is tried.
 * @param name may be NULL or empty, which designate nothing.
 * @param list further names of this server; may be NULL.
 * @return 1 or 0; 0 also for a name that is none of the first two when the machine's full name
 *         cannot be had.
 */
int IsCurrentServerName(const char* name, const NameList* list);
/** @} */

/**
 * @defgroup zvutil_files Files
 * @brief Locks, sizes and times, line files, names, temporary files.
 *
 * A name that ends in Fd takes a descriptor, one with ZV in it a stream of zvstdio.h, and the plain
 * name a standard stream. The forms for streams work on the stream's descriptor: they neither flush
 * nor reposition it. A stream that is NULL or no open stream fails with EBADF.
 *
 * The locks are the system's record locks, over the whole file however far it grows. They keep out
 * other processes that ask for one, not other threads, and a child process inherits none. Closing
 * any descriptor of a file releases all locks that the process holds on it; so do
 * OSFindLineInFile() and OSAppendLineToFile().
 * @par Thread safety
 * Any number of threads at once; a stream by one thread at a time.
 * @par Example
 * @snippet services.c files
 * @{
 */

/** Lock types; any other value than #ZV_LOCK_WRITE asks for a read lock. */
enum {
    ZV_LOCK_WRITE = 1, /**< Keeps out all others; the descriptor is open for writing. */
    ZV_LOCK_READ = 2   /**< Keeps out writers; the descriptor is open for reading. */
};

/**
 * Locks a whole file, or changes the lock that the process holds on it.
 * @param descriptor the file.
 * @param lock_type  #ZV_LOCK_WRITE or #ZV_LOCK_READ.
 * @param wait       1 waits until the lock is granted, signals notwithstanding; any other value
 *                   gives up when another process holds a conflicting lock.
 * @return 1; 0 with errno, the process's lock on the file as it was.
 * @par Errors
 * - EACCES, EAGAIN: another process holds a conflicting lock.
 * - EDEADLK: both processes would wait for each other.
 * - EBADF: the descriptor is not open for that type.
 * - ENOLCK: the system has no locks left, or the file system keeps none.
 */
unsigned char OSLockFileFd(int descriptor, int lock_type, int wait);
/**
 * Locks the whole file of a stream of zvstdio.h, as OSLockFileFd() does.
 * @param stream    the file.
 * @param lock_type #ZV_LOCK_WRITE or #ZV_LOCK_READ.
 * @param wait      1 waits until the lock is granted; any other value gives up.
 * @return 1; 0 with errno.
 * @par Errors
 * - EACCES, EAGAIN: another process holds a conflicting lock.
 * - EDEADLK: both processes would wait for each other.
 * - EBADF: the descriptor is not open for that type.
 * - ENOLCK: the system has no locks left, or the file system keeps none.
 */
unsigned char OSLockZVFile(ZVFILE* stream, int lock_type, int wait);
/**
 * Locks the whole file of a standard stream, as OSLockFileFd() does.
 * @param stream    the file.
 * @param lock_type #ZV_LOCK_WRITE or #ZV_LOCK_READ.
 * @param wait      1 waits until the lock is granted; any other value gives up.
 * @return 1; 0 with errno.
 * @par Errors
 * - EACCES, EAGAIN: another process holds a conflicting lock.
 * - EDEADLK: both processes would wait for each other.
 * - EBADF: the descriptor is not open for that type.
 * - ENOLCK: the system has no locks left, or the file system keeps none.
 */
unsigned char OSLockFile(FILE* stream, int lock_type, int wait);

/**
 * Releases the process's locks on a file.
 * @param descriptor the file.
 * @return 1, also when there was none; 0 with errno.
 * @par Errors
 * - EBADF: the descriptor is not open.
 * - ENOLCK: the system has no locks left, or the file system keeps none.
 */
unsigned char OSUnLockFileFd(int descriptor);
/**
 * Releases the process's locks on the file of a stream of zvstdio.h.
 * @param stream the file.
 * @return 1, also when there was none; 0 with errno.
 * @par Errors
 * - EBADF: the stream is not open.
 * - ENOLCK: the system has no locks left, or the file system keeps none.
 */
unsigned char OSUnLockZVFile(ZVFILE* stream);
/**
 * Releases the process's locks on the file of a standard stream.
 * @param stream the file. Flush it before: what it holds back would be written without the lock.
 * @return 1, also when there was none; 0 with errno.
 * @par Errors
 * - EBADF: the stream is not open.
 * - ENOLCK: the system has no locks left, or the file system keeps none.
 */
unsigned char OSUnLockFile(FILE* stream);

/**
 * Tells whether a path leads to something, symbolic links followed.
 * @param path a path.
 * @return 1; 0 with errno.
 * @par Errors
 * - any error of access(), ENOENT among them.
 */
unsigned char OSFileExists(const char* path);

/**
 * Gives the time of a file's last modification.
 * @param stream a stream of zvstdio.h.
 * @return seconds since the epoch; 0 with errno on failure.
 * @par Errors
 * - EBADF: the stream is not open.
 */
time_t OSZVFileModifiedTime(ZVFILE* stream);
/**
 * Gives the time of the last modification of a standard stream's file.
 * @param stream a standard stream.
 * @return seconds since the epoch; 0 with errno on failure.
 * @par Errors
 * - EBADF: the stream is not open.
 */
time_t OSFileModifiedTime(FILE* stream);

/**
 * Gives the size of a file.
 * @param path a path; symbolic links are followed.
 * @return bytes; -1 with errno.
 * @par Errors
 * - EOVERFLOW: the size is beyond 2147483647.
 * - any error of stat().
 */
int OSFileSize(const char* path);

/**
 * Cuts a file, or extends it with zero bytes.
 * @param descriptor the file.
 * @param length     bytes; below 0 is taken as 0.
 * @return 1; 0 with errno.
 * @par Errors
 * - EBADF, EINVAL: the file is not open for writing.
 * - any error of ftruncate().
 */
unsigned char OSFileTruncateFd(int descriptor, int length);
/**
 * Cuts the file of a stream of zvstdio.h, or extends it with zero bytes.
 * @param stream the file.
 * @param length bytes; below 0 is taken as 0.
 * @return 1; 0 with errno.
 * @par Errors
 * - EBADF, EINVAL: the file is not open for writing.
 * - any error of ftruncate().
 */
unsigned char OSZVFileTruncate(ZVFILE* stream, int length);
/**
 * Cuts the file of a standard stream, or extends it with zero bytes.
 * @param stream the file.
 * @param length bytes; below 0 is taken as 0.
 * @return 1; 0 with errno.
 * @par Errors
 * - EBADF, EINVAL: the file is not open for writing.
 * - any error of ftruncate().
 */
unsigned char OSFileTruncate(FILE* stream, int length);

/**
 * Searches a file for a line, under a read lock that it waits for.
 * @param path a path.
 * @param text the whole line, its line feed included; compared byte by byte. A line of more than
 *             351 bytes counts as several, each of 351 bytes but the last.
 * @return the number of the first such line, from 1; 0 when there is none; -1 with errno when the
 *         file cannot be opened, locked or read. A line that the end of the file ends, rather than
 *         a line feed, is none, unless it is a piece of 351 bytes.
 * @par Errors
 * - ENOMEM: no memory for the stream.
 * - EOVERFLOW: the line is not among the first 2147483647 bytes, and the file goes on.
 * - any error of open(), read() and the locking, as OSLockFileFd() gives them.
 */
int OSFindLineInFile(const char* path, const char* text);

/**
 * Appends a line to a file, under a write lock that it waits for.
 *
 * Lines from several processes never mix. Locks do not keep threads of one process apart: the host
 * does, for example with OSEnterCriticalSection(), or lines may be lost. The file is made where
 * there is none, with the permissions 0777 less the umask.
 * @param path a path.
 * @param text the line, without its line feed.
 * @return 0; -1 with errno when the file cannot be opened or locked, or the line not be written
 *         whole. A part of a line is taken away again, unless SIGXFSZ ends the process at the limit
 *         of file sizes: a server ignores that signal. A lock that cannot be released gives -1 too;
 *         the line is in the file then.
 * @par Errors
 * - ENOMEM: no memory for the stream, or for a line of 16383 bytes or more.
 * - EOVERFLOW: the file would have more than 2147483647 bytes.
 * - any error of open(), write() and the locking, as OSLockFileFd() gives them.
 */
int OSAppendLineToFile(const char* path, const char* text);

/**
 * Removes the entries of a directory whose names match a pattern.
 *
 * Directories, what may not be removed, and paths of more than 511 bytes stay. Of a symbolic link
 * the link goes, not what it leads to.
 * @param directory path of the directory, with or without a trailing slash.
 * @param pattern   as in fnmatch(): "*", "?" and "*.[ch]" match leading dots too, a backslash takes
 *                  the next character literally.
 * @return 1 always, also when the directory cannot be opened.
 */
int OSRemoveFiles(const char* directory, const char* pattern);

/**
 * Renames a file as rename() does, in place of one of the new name.
 * @param old_path the file.
 * @param new_path its new path, on the same file system.
 * @return 0; -1 with errno.
 * @par Errors
 * - any error of rename().
 */
int OSRename(const char* old_path, const char* new_path);

/**
 * Composes a file name of a directory and a name.
 * @param directory ends with "/"; not looked at for a name that begins with "/".
 * @param name      the name; it stands alone when it begins with "/".
 * @param out       receives the file name; room for 256 bytes; emptied on failure.
 * @return 1; 0 when the result would have more than 255 bytes.
 */
unsigned char OSBuildFilename(const char* directory, const char* name, char* out);

/** Gives the directory for temporary files that outlive a restart. @return "/var/tmp/", static. */
const char* OSTmpPath(void);

/**
 * Makes up the name of a file that does not exist.
 *
 * The directory is that of the environment variable "TMPDIR", if it exists, or else the system's.
 * Another process may make that file first: open it with O_EXCL, or take a file without a name from
 * OSTmpZVFile(), OSTmpFile() or OSTmpFileFd().
 * @param prefix the first bytes of the name, of which the system takes five; may be NULL. A "/" in
 *               it leads into a directory below, which need not exist.
 * @return the path, to be released with free(); NULL with errno.
 * @par Errors
 * - ENOMEM: no memory for the path.
 * - EEXIST: no unused name was found.
 * - EINVAL: the directory's path leaves no room for a name.
 * - any error of lstat() but ENOENT.
 */
char* OSTmpName(const char* prefix);

/**
 * Opens a temporary file, for reading and writing.
 *
 * It lies in the system's directory for such files (`P_tmpdir`), whatever "TMPDIR" says. It has no
 * name, so that nobody else can open it, and goes when it is closed; programs that the process
 * executes do not inherit it.
 * @return the stream, to be closed with ZVfclose(); NULL with errno.
 * @par Errors
 * - any error of open() or mkstemp(); ENOMEM.
 */
ZVFILE* OSTmpZVFile(void);

/**
 * Opens a temporary file as OSTmpZVFile() does, as a standard stream.
 * @return the stream, to be closed with fclose(); NULL with errno.
 * @par Errors
 * - any error of open() or mkstemp(); ENOMEM.
 */
FILE* OSTmpFile(void);

/**
 * Opens a temporary file as OSTmpZVFile() does, as a descriptor.
 * @return the descriptor, to be closed with close(); -1 with errno.
 * @par Errors
 * - any error of open() or mkstemp().
 */
int OSTmpFileFd(void);
/** @} */

/**
 * @defgroup zvutil_process Process, log, locale and system
 * @brief Alarms and limits of the process, the system log, message catalogues, the machine.
 *
 * The log functions write one message each, at the priority LOG_ERR and to the facility that the
 * process chose with openlog(); the library neither opens nor closes the log. Their format is the
 * one of syslog(), "%m", "%n" and "%2$s" included, so it comes from the program or its message
 * catalogues, never from outside. The values are words, passed on unchanged: integers are formatted
 * with "%ld" and its kin, a pointer is cast to intptr_t and formatted with "%s" or "%p". Pass 0 for
 * values that the format does not name. The type that some of them take is ignored.
 * @par Thread safety
 * Any number of threads at once; the alarm, its action and the environment are the process's.
 * @par Example
 * @snippet services.c process
 * @{
 */

/**
 * Tells whether the last OSAlarm() armed the alarm (1) or cancelled it (0); 0 at first.
 *
 * It stays 1 when the alarm goes off. The library never reads it.
 */
extern int pellorAlarmIsSet;

/**
 * Lets the calling thread sleep.
 * @param seconds how long; a signal may end the sleep early.
 */
void OSSleep(unsigned seconds);

/**
 * Sends a signal to a process; a failure is not reported.
 * @param process       0 for the caller's process group. A negative id does nothing, so that no
 *                      mistake signals every process.
 * @param signal_number the signal.
 */
void OSSignalProcess(pid_t process, int signal_number);

/** Does nothing: the system sets the priorities. @param priority not looked at. */
void OSSetProcPrio(int priority);

/**
 * Raises the process's limit of open descriptors to its hard limit; a failure is not reported.
 *
 * Descriptors from 1024 on do not fit select(); a host that raises the limit uses poll().
 */
void OSSetProcLimits(void);

/** Does nothing: alarms need no preparation. */
void OSInitAlarms(void);

/**
 * Installs the process's action for SIGALRM; a failure is not reported.
 * @param action     the new action, or NULL to leave it.
 * @param old_action receives the action up to now, or NULL.
 */
void OSSetAlarmProc(const struct sigaction* action, struct sigaction* old_action);

/**
 * Arms the process's one alarm, in place of the one before, and sets pellorAlarmIsSet.
 * @param seconds 0 cancels the alarm.
 * @return the seconds that the alarm before had left, 0 when there was none.
 */
unsigned OSAlarm(unsigned seconds);

/**
 * Logs a message of five values.
 *
 * The values and what a format may hold are described in @ref zvutil_process.
 * @param format as for syslog().
 * @param value1 a value, or 0.
 * @param value2 a value, or 0.
 * @param value3 a value, or 0.
 * @param value4 a value, or 0.
 * @param value5 a value, or 0.
 */
void OSLogError(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                intptr_t value4, intptr_t value5);

/**
 * Logs a message of five values; the same as OSLogError().
 * @param format as for syslog().
 * @param value1 a value, or 0.
 * @param value2 a value, or 0.
 * @param value3 a value, or 0.
 * @param value4 a value, or 0.
 * @param value5 a value, or 0.
 */
void OSLogError2(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                 intptr_t value4, intptr_t value5);

/**
 * Logs a message of four values.
 * @param format as for syslog().
 * @param value1 a value, or 0.
 * @param value2 a value, or 0.
 * @param value3 a value, or 0.
 * @param value4 a value, or 0.
 */
void OSLogError3(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                 intptr_t value4);

/**
 * Logs a message of five values, with a type before the last of them.
 * @param format as for syslog().
 * @param value1 a value, or 0.
 * @param value2 a value, or 0.
 * @param value3 a value, or 0.
 * @param value4 a value, or 0.
 * @param type   ignored.
 * @param value5 a value, or 0.
 */
void OSLogErrorWithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                        intptr_t value4, int type, intptr_t value5);

/**
 * Logs a message of five values; the same as OSLogErrorWithType().
 * @param format as for syslog().
 * @param value1 a value, or 0.
 * @param value2 a value, or 0.
 * @param value3 a value, or 0.
 * @param value4 a value, or 0.
 * @param type   ignored.
 * @param value5 a value, or 0.
 */
void OSLogError2WithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                         intptr_t value4, int type, intptr_t value5);

/**
 * Logs a message of four values, with a type before the last of them.
 * @param format as for syslog().
 * @param value1 a value, or 0.
 * @param value2 a value, or 0.
 * @param value3 a value, or 0.
 * @param type   ignored.
 * @param value4 a value, or 0.
 */
void OSLogError3WithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                         int type, intptr_t value4);

/** Logs a text as it is, percent signs included. @param text the message. */
void OSLogString(const char* text);

/**
 * Logs a text as it is, with a type.
 * @param text the message, percent signs included.
 * @param type ignored.
 */
void OSLogStringWithType(const char* text, int type);

/** Takes the time of day for statistics, as OSGetStatsTime() does. @param stamp receives it. */
void OSGetTimeForStats(ZVStatsTime* stamp);

/** Does nothing: streams have one mode. */
void OSSetDefaultStreamMode(void);

/**
 * Prepares the environment for message catalogues.
 *
 * "LANG" becomes "C" when it is missing or empty.
 * "/usr/lib/locale/%L/LC_MESSAGES/%N" is added behind the value of "NLSPATH", which may be missing
 * or empty; each call adds it again. Without memory, "NLSPATH" stays as it was.
 * @par Thread safety
 * Before other threads start, and before any locale is used: it changes the environment.
 */
void OSInitLanguage(void);

/**
 * Gives the hardware class of the machine, such as "x86_64".
 * @param out receives it; room for 258 bytes; emptied on failure.
 * @return 1, or 0 when the system does not tell.
 */
unsigned char OSGetHardware(char* out);

/**
 * Gives the name and the release of the operating system, with a space between them.
 * @param out receives them; room for 516 bytes; emptied on failure.
 * @return 1, or 0 when the system does not tell.
 */
unsigned char OSGetOS(char* out);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
