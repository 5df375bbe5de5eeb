/**
 * @file zvosutil.h
 * @brief Thread primitives, reentrant look-ups, XML encoding declaration, currency detail lists.
 *
 * Nothing here keeps state of its own. Strings are zero-terminated; rooms are bytes. Pointers are
 * not NULL unless something is said of NULL.
 */
#ifndef ZVUTIL_ZVOSUTIL_H
#define ZVUTIL_ZVOSUTIL_H

#include <netdb.h>
#include <pthread.h>
#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup zvutil_threads Critical sections and thread-local storage
 * @brief Portable names for a mutex and a key; the objects belong to the caller.
 *
 * Initialise a critical section once, enter and leave it from any threads, delete it when none
 * uses it any more. It excludes threads, not processes, and it is not recursive: a thread that
 * enters it twice waits for ever. Failures are not reported, such as that of a key when the system
 * has none left; a host that must know calls the system itself.
 * @par Thread safety
 * Any number of threads at once; initialising and deleting an object only while no other thread
 * uses it.
 * @par Example
 * @snippet services.c threads
 * @{
 */

/** Initialises a critical section. @param section a mutex, not yet initialised. */
void OSInitializeCriticalSection(pthread_mutex_t* section);

/** Waits until the calling thread holds a critical section. @param section an initialised one. */
void OSEnterCriticalSection(pthread_mutex_t* section);

/** Leaves a critical section. @param section one that the calling thread holds. */
void OSLeaveCriticalSection(pthread_mutex_t* section);

/**
 * Releases what a critical section takes of the system.
 * @param section one that no thread holds or awaits.
 */
void OSDeleteCriticalSection(pthread_mutex_t* section);

/**
 * Makes a thread-local storage key, whose value is NULL in every thread.
 * @param key receives the key. It has no destructor: what a thread's value points to is not
 *            released when the thread ends.
 */
void OSTLSAlloc(pthread_key_t* key);

/**
 * Gives the calling thread's value of a key.
 * @param key a key of OSTLSAlloc().
 * @return the value; NULL when the thread has set none.
 */
void* OSTLSGetValue(pthread_key_t key);

/**
 * Sets the calling thread's value of a key.
 * @param key   a key of OSTLSAlloc().
 * @param value any pointer; it is only kept.
 */
void OSTLSSetValue(pthread_key_t key, const void* value);

/**
 * Gives a key back.
 *
 * The values that threads have set are not released.
 * @param key a key of OSTLSAlloc().
 */
void OSTLSFree(pthread_key_t key);
/** @} */

/**
 * @defgroup zvutil_lookups Reentrant look-ups and time
 * @brief The system's look-ups, with their results in the caller's memory.
 *
 * @par Thread safety
 * Any number of threads at once.
 * @par Example
 * @snippet services.c lookups
 * @{
 */

/**
 * Looks a host up by its name.
 * It may ask the network and wait for it.
 * @param name          host name, alias or dotted IPv4 address.
 * @param entry         receives the entry, which has IPv4 addresses; its strings and lists stand in
 *                      @p buffer.
 * @param buffer        work area; 1024 bytes do for most hosts.
 * @param buffer_length room of @p buffer in bytes.
 * @param error         receives the reason of a failure: HOST_NOT_FOUND, TRY_AGAIN, NO_RECOVERY,
 *                      NO_DATA, or NETDB_INTERNAL when the buffer is too small. What it holds after
 *                      a success means nothing.
 * @return @p entry, or NULL.
 */
struct hostent* OSGetHostByName(const char* name, struct hostent* entry, char* buffer,
                                int buffer_length, int* error);

/**
 * Looks a host up by its address.
 * It may ask the network and wait for it.
 * @param address        the address's bytes in network order, a struct in_addr or in6_addr.
 * @param address_length their number: 4 for AF_INET, 16 for AF_INET6.
 * @param address_type   AF_INET or AF_INET6.
 * @param entry          receives the entry; its strings and lists stand in @p buffer.
 * @param buffer         work area; 1024 bytes do for most hosts.
 * @param buffer_length  room of @p buffer in bytes.
 * @param error          receives the reason of a failure, as for OSGetHostByName(); NETDB_INTERNAL
 *                       also when the length does not go with the type.
 * @return @p entry, or NULL.
 */
struct hostent* OSGetHostByAddr(const void* address, int address_length, int address_type,
                                struct hostent* entry, char* buffer, int buffer_length, int* error);

/**
 * Converts a calendar time to local time.
 * @param seconds     seconds since the epoch.
 * @param broken_down receives the local time.
 * @return @p broken_down; NULL with errno.
 * @par Errors
 * - EOVERFLOW: the year does not fit.
 */
struct tm* OSLocalTime(const time_t* seconds, struct tm* broken_down);

/** A time stamp for statistics; good until the year 2106. */
typedef struct ZVStatsTime {
    uint32_t seconds;      /**< Whole seconds since the epoch. */
    uint32_t microseconds; /**< 0 to 999999. */
} ZVStatsTime;

/** Takes the time of day for statistics. @param stamp receives it. */
void OSGetStatsTime(ZVStatsTime* stamp);
/** @} */

/**
 * @defgroup zvutil_xml XML encoding declaration
 * @brief The declaration of an XML document made to name another code set.
 *
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set.
 * @par Example
 * @snippet services.c documents
 * @{
 */

/**
 * Names a code set in the declaration of an XML document, in a copy of the document.
 *
 * The document itself is not converted. Only its first 80 bytes are searched: for "?xml version=",
 * and for "encoding=", a value in double quotes and "?>" behind one another. The value becomes the
 * name of SetCharset(), or that of the Windows code page for ISO 8859-1, -2, -4, -5 and -7. Spaces
 * directly behind the declaration are left out.
 *
 * A value in single quotes is not recognised: all from "encoding=" to the end of the next text in
 * double quotes is replaced then, or nothing is.
 * @param document text in the current code set; may be NULL.
 * @param code_set the code set to name. For one to which SetCharset() gives no name the value
 *                 becomes empty, which parsers refuse.
 * @param result   receives the new document, to be released with free(); NULL when there is no such
 *                 declaration or no memory: use the document as it is then.
 */
void SetEncodingForXMLDoc(const char* document, int code_set, char** result);
/** @} */

/**
 * @defgroup zvutil_currency Currency detail lists
 * @brief Lists of currency details and their text form.
 *
 * The text is the count, then code and value of each record, every one of them followed by a
 * backslash and nothing escaped: `2\USD\2\JPY\0\`.
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set; a list by one thread at a
 * time.
 * @par Example
 * @snippet services.c currencies
 * @{
 */

/** One currency. */
typedef struct CurrencyDetail {
    char code[4];  /**< The code, terminated: at most 3 bytes in the current code set. */
    int32_t value; /**< What the host keeps for it. */
} CurrencyDetail;

/** A counted array of currencies. */
typedef struct CurrencyDetailList {
    uint32_t count;          /**< Number of records. */
    CurrencyDetail* details; /**< The records. */
} CurrencyDetailList;

/** Results of the currency functions other than 0, success. */
enum {
    ZV_CURRENCY_NO_ROOM = -3,    /**< The buffer is too small, or a code has no terminator. */
    ZV_CURRENCY_NO_MEMORY = 300, /**< No memory for the records. */
    ZV_CURRENCY_MALFORMED = 402  /**< The text is no currency detail list. */
};

/**
 * Writes the text form of a list.
 * @param list     may be NULL: nothing is written then.
 * @param position where to write in @p buffer; moved to the terminator of the text on success.
 * @param size     room of @p buffer in bytes. All of it is cleared first, before @p position too.
 * @param buffer   receives the text.
 * @return 0, or #ZV_CURRENCY_NO_ROOM when fewer than 6 bytes are left, the text does not fit, or a
 *         code has no terminator; the buffer is all zero and @p position as it was then.
 */
int ZVCurrencyDetailListToText(const CurrencyDetailList* list, unsigned* position, unsigned size,
                               char* buffer);

/**
 * Reads a list from its text form. Text behind its last record is ignored; a number may begin with
 * blanks and a sign, ends at the first byte that is no digit, and is 0 where none stands.
 * @param text text in the current code set, where a trail byte 5C is no backslash.
 * @param list receives the list. Its array is released by the caller with free(); there is none
 *             when the list is empty and on failure.
 * @return 0; #ZV_CURRENCY_NO_MEMORY; #ZV_CURRENCY_MALFORMED for a text without a backslash, a
 *         negative count, fewer records than announced, a code of more than 3 bytes or a value
 *         beyond 32 bits.
 */
int LoadCurrencyDetailList(const char* text, CurrencyDetailList* list);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
