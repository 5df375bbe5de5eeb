/* Files shared among processes. */
#ifndef ZVCONV_JOBS_H
#define ZVCONV_JOBS_H

#include <stdbool.h>

/* Calls the function for every index below the count, in so many processes at once. False when one
 * of the calls was. Processes that are ended take none of the others' files with them. */
bool run_jobs(int processes, int count, bool (*work)(void* context, int index), void* context);

#endif
