/**
 * @file osutils.h
 * @brief Services of the operating system: files, processes, the system log, the machine.
 *
 * Strings are zero-terminated byte strings that are handed to the system as they are, whatever the
 * current code set; lengths and rooms are bytes. Booleans are 1 and 0. Where a function reports a
 * failure, errno gives the reason.
 */
#ifndef ZVUTIL_OSUTILS_H
#define ZVUTIL_OSUTILS_H

#include <stdint.h>
#include <sys/types.h>

#include "zvosutil.h"

struct sigaction;

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup process Process, log, locale and system
 * @brief Alarms and limits of the process, the system log, message catalogues, the machine.
 *
 * The log functions write one message each, at the priority LOG_ERR and to the facility that the
 * process chose with openlog(); the library neither opens nor closes the log. Their format is the
 * one of syslog(), "%m" included. The values are words, passed on unchanged: integers are formatted
 * with "%ld" and its kin, a pointer is cast to intptr_t and formatted with "%s" or "%p". Values
 * that the format does not name are passed as 0. The type that some of them take is ignored.
 * @{
 */

/**
 * 1 after an OSAlarm() that armed the alarm, 0 at first and after one that cancelled it. It stays 1
 * when the alarm goes off. The library never reads it.
 */
extern int pellorAlarmIsSet;

/** Lets the calling thread sleep; a signal may end the sleep early. */
void OSSleep(unsigned seconds);

/**
 * Sends a signal to a process; a failure is not reported.
 * @param process 0 for the caller's process group. A negative id does nothing, so that no mistake
 *                signals every process.
 */
void OSSignalProcess(pid_t process, int signal_number);

/** Does nothing: the system sets the priorities. */
void OSSetProcPrio(int priority);

/** Raises the process's limit of open descriptors to its hard limit; a failure is not reported. */
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
 * Arms the process's one alarm, in place of the one before, and sets #pellorAlarmIsSet.
 * @param seconds 0 cancels the alarm.
 * @return the seconds that the alarm before had left, 0 when there was none.
 */
unsigned OSAlarm(unsigned seconds);

/** Logs a message of five values. */
void OSLogError(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                intptr_t value4, intptr_t value5);

/** The same as OSLogError(). */
void OSLogError2(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                 intptr_t value4, intptr_t value5);

/** Logs a message of four values. */
void OSLogError3(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                 intptr_t value4);

/** Logs a message of five values; the type stands before the last of them. */
void OSLogErrorWithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                        intptr_t value4, int type, intptr_t value5);

/** The same as OSLogErrorWithType(). */
void OSLogError2WithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                         intptr_t value4, int type, intptr_t value5);

/** Logs a message of four values; the type stands before the last of them. */
void OSLogError3WithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                         int type, intptr_t value4);

/** Logs a text as it is, percent signs included. */
void OSLogString(const char* text);

/** Logs a text as it is; the type is ignored. */
void OSLogStringWithType(const char* text, int type);

/** Takes the time of day, as OSGetStatsTime() does. @param stamp receives it. */
void OSGetTimeForStats(ZVStatsTime* stamp);

/** Does nothing: streams have one mode. */
void OSSetDefaultStreamMode(void);

/**
 * Prepares the environment for message catalogues. "LANG" becomes "C" when it is missing or empty.
 * "/usr/lib/locale/%L/LC_MESSAGES/%N" is added behind the value of "NLSPATH", which may be missing
 * or empty; each call adds it again. Without memory, "NLSPATH" stays as it was.
 *
 * Changes the environment: call it before other threads start, and before any locale is used.
 */
void OSInitLanguage(void);

/**
 * Gives the hardware class of the machine, such as "x86_64".
 * @param out room for 258 bytes; emptied on failure.
 * @return 1, or 0 when the system does not tell.
 */
unsigned char OSGetHardware(char* out);

/**
 * Gives the name and the release of the operating system, with a space between them.
 * @param out room for 516 bytes; emptied on failure.
 * @return 1, or 0 when the system does not tell.
 */
unsigned char OSGetOS(char* out);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
