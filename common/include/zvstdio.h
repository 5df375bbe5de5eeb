/**
 * @file zvstdio.h
 * @brief Buffered file streams over descriptors: reads are buffered, writes go out at once.
 *
 * Each function mirrors the standard one of its name without the prefix. A stream has one position
 * for reading and writing, which may be mixed freely: a write goes to the position (to the end of
 * the file in append mode) and drops bytes that were read ahead or pushed back.
 *
 * A handle that is NULL or no open stream makes a function give its failure value with errno EBADF;
 * no other pointer may be NULL. Any other failed read, write or positioning leaves its errno value
 * in the stream as well, see ZVferror(); it does not keep later operations from working.
 *
 * Reads and writes are those of the system. A read that a signal interrupts fails with EINTR. A
 * write to a pipe or socket without a reader raises SIGPIPE, one beyond the limit of file sizes
 * SIGXFSZ: a server ignores both, and gets EPIPE and EFBIG.
 *
 * Positions are bytes from 0 to 2147483647. An operation that would pass the last one fails with
 * EOVERFLOW and leaves the position as it was. On pipes and sockets the position counts the bytes
 * read and written; what a write or ZVrewind() drops cannot be read again there, so read and write
 * a socket through two streams.
 */
#ifndef ZVUTIL_ZVSTDIO_H
#define ZVUTIL_ZVSTDIO_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup zvutil_streams Buffered file streams
 * @brief The standard stream functions over descriptors, with reads and writes freely mixed.
 *
 * @par Thread safety
 * Any number of threads at once, each stream by one thread at a time.
 * @par Example
 * @snippet services.c streams
 * @{
 */

/** An open stream, to be released with ZVfclose(). */
typedef struct ZVFILE ZVFILE;

/**
 * Opens a file.
 * Programs that the process executes inherit the descriptor; where they should not, set FD_CLOEXEC
 * with fcntl() on ZVfileno().
 * @param path a file name, handed to the system as it is. A new file gets the permissions 0777 less
 *             the umask.
 * @param mode "r" to read, "w" to write a file made empty, "a" to write at the end of a file; then
 *             an optional "b", which changes nothing; then "+" to read and write. Any other first
 *             character opens for reading only.
 * @return the stream, at position 0 in every mode; the caller closes it. NULL with errno when the
 *         file cannot be opened or there is no memory (no file is touched then).
 * @par Errors
 * - ENOMEM: no memory for the stream.
 * - any error of open().
 */
ZVFILE* ZVfopen(const char* path, const char* mode);

/**
 * Makes a stream of an open descriptor.
 *
 * The first read is from where the descriptor stands, whatever the position: move one that does not
 * stand at 0 with ZVfseek() before.
 * @param descriptor it is not checked.
 * @param mode       an "a" anywhere in it makes every write go to the end of the file; else
 *                   ignored.
 * @return the stream, at position 0 wherever the descriptor stands; the caller closes it, and the
 *         descriptor with it. NULL with errno when there is no memory.
 * @par Errors
 * - ENOMEM: no memory for the stream.
 */
ZVFILE* ZVfdopen(int descriptor, const char* mode);

/**
 * Closes a stream and its descriptor.
 *
 * What the system says to the closing is not told. To know that a file has reached its disk, call
 * fsync() on ZVfileno() before.
 * @param stream a stream, released by the call: do not use it any more.
 * @return 0; -1 for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
int ZVfclose(ZVFILE* stream);

/**
 * Reads a byte.
 * @param stream a stream.
 * @return the byte as a signed value, -128 to 127; -1 at the end of the file and on errors. Of the
 *         byte FF, which gives -1 too, ZVfeof() and ZVferror() tell these apart, unless what they
 *         tell is from before: it stays until ZVclearerr().
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - any error of read().
 */
int ZVfgetc(ZVFILE* stream);

/**
 * Pushes a byte back, to be read next.
 *
 * The position goes down by 1 and the end of the file is no longer met. At position 0 it becomes
 * -1: until the byte has been read or the position moved, writes fail with EINVAL but in append
 * mode. Four bytes always have room in front of those that one read of the file brought.
 * @param c      its low 8 bits are pushed back, also of -1.
 * @param stream a stream.
 * @return @p c; -1 when there is no room left, errno untouched, and for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
int ZVungetc(int c, ZVFILE* stream);

/**
 * Reads items.
 *
 * Bytes of an incomplete last item are read but not counted.
 * @param dst    receives the bytes; room for @p size * @p count bytes.
 * @param size   bytes of an item; 0 reads nothing.
 * @param count  items to read.
 * @param stream a stream.
 * @return items read, fewer than @p count at the end of the file; 0 on errors, although bytes may
 *         have been read; (size_t)-1 for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - any error of read().
 */
size_t ZVfread(void* dst, size_t size, size_t count, ZVFILE* stream);

/**
 * Reads a line, its newline included.
 *
 * Only a newline (0A) ends a line. The rest of a line that is too long stays for the next call.
 * Zero bytes are read like others; how far ZVftell() moved is the length of such a line.
 * @param s      receives the line, always terminated; room for @p n bytes.
 * @param n      bytes; below 2 nothing is read or stored and the result is NULL.
 * @param stream a stream.
 * @return @p s. When the file ends or fails behind some bytes of a line, these are the line, and
 *         ZVfeof() or ZVferror() tells; when there are none, NULL.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - any error of read().
 */
char* ZVfgets(char* s, int n, ZVFILE* stream);

/**
 * Writes items at the position, or at the end of the file in append mode.
 *
 * A write that a signal interrupts goes on.
 * @param src    @p size * @p count bytes.
 * @param size   bytes of an item; 0 does nothing.
 * @param count  items to write.
 * @param stream a stream.
 * @return @p count; 0 on errors and where @p size is 0. The position counts what was written before
 *         the error.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - any error of write(), or of lseek() but ESPIPE.
 */
size_t ZVfwrite(const void* src, size_t size, size_t count, ZVFILE* stream);

/**
 * Writes formatted text.
 *
 * The C library formats it, the conversions "%n" and "%2$s" included. So a format comes from the
 * program or its message catalogues, never from outside.
 * @param stream a stream.
 * @param format as for printf().
 * @param ...    the values, as for printf().
 * @return bytes written; 0 when the write fails or there is no memory (needed for texts from 16384
 *         bytes), and for an empty text; vsnprintf()'s result when it is negative.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position, or the length of the text, would pass 2147483647.
 * - ENOMEM: no memory for a long text.
 * - any error of write(), or of lseek() but ESPIPE.
 */
int ZVfprintf(ZVFILE* stream, const char* format, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 2, 3)))
#endif
    ;

/**
 * Writes a byte.
 * @param c      its low 8 bits are written.
 * @param stream a stream.
 * @return @p c; -1 on errors.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - any error of write(), or of lseek() but ESPIPE.
 */
int ZVfputc(int c, ZVFILE* stream);

/**
 * Writes a string.
 * @param s      the string, written without its terminator.
 * @param stream a stream.
 * @return its length in bytes; -1 on errors and, errno untouched, for an empty string.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - any error of write(), or of lseek() but ESPIPE.
 */
int ZVfputs(const char* s, ZVFILE* stream);

/**
 * Tells the position.
 * @param stream a stream.
 * @return bytes; below 0 after a push-back at 0; -1 for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
long ZVftell(ZVFILE* stream);

/**
 * Stores the position.
 * @param stream a stream.
 * @param pos    receives the position in bytes.
 * @return 0; -1 for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
int ZVfgetpos(ZVFILE* stream, long* pos);

/**
 * Moves the position.
 *
 * Bytes pushed back are dropped and the end of the file is no longer met.
 * @param stream a stream.
 * @param offset bytes from the place that @p whence names.
 * @param whence SEEK_SET for the start of the file, SEEK_END for its end; any other value for the
 *               position.
 * @return 0; -1 with errno when that is no position or the file has none. Nothing changes then.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 * - EOVERFLOW: the position would pass 2147483647.
 * - EINVAL: the position would lie before the file.
 * - ESPIPE: the descriptor is a pipe or a socket.
 */
int ZVfseek(ZVFILE* stream, long offset, int whence);

/**
 * Moves the position to the start of the file.
 *
 * Clears what ZVclearerr() clears, too. On a pipe or a socket the position stays.
 * @param stream a stream.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
void ZVrewind(ZVFILE* stream);

/**
 * Tells whether a read met the end of the file.
 *
 * It stays so over reads and writes that succeed, until ZVclearerr(), ZVungetc(), ZVfseek() or
 * ZVrewind().
 * @param stream a stream.
 * @return 1 or 0; 0 for an invalid handle too.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
int ZVfeof(ZVFILE* stream);

/**
 * Tells why the last read, write or positioning that failed did.
 *
 * It stays so over operations that succeed, until ZVclearerr() or ZVrewind().
 * @param stream a stream.
 * @return its errno value; 0 when none has failed; -1 for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
int ZVferror(ZVFILE* stream);

/**
 * Forgets errors and that the end of the file was met.
 * @param stream a stream.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
void ZVclearerr(ZVFILE* stream);

/**
 * Does nothing, since no write is held back.
 * @param stream a stream.
 * @return 0; -1 for an invalid handle.
 * @par Errors
 * - EBADF: the handle is NULL or no open stream.
 */
int ZVfflush(ZVFILE* stream);

/**
 * Tells the descriptor.
 * @param stream a stream.
 * @return it; -1 for an invalid handle, errno untouched.
 */
int ZVfileno(ZVFILE* stream);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
