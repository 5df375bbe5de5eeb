// Expects P_tmpdir, mkostemp(), and Linux's open() with O_TMPFILE, which may fail.
#ifndef ZVUTIL_PLATFORM_TEMPORARY_FILE_H
#define ZVUTIL_PLATFORM_TEMPORARY_FILE_H

namespace zv {

// Opens a new file for reading and writing in the system's directory for temporary files. Nobody
// else can open it: it has no name, and its mode is 0600; programs that the process executes do not
// inherit it. The caller closes the descriptor; -1 with errno when no file can be made.
int open_temporary_file();

} // namespace zv

#endif
