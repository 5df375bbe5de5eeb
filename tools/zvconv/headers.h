/* Mail headers whose encoded words are turned into their text. */
#ifndef ZVCONV_HEADERS_H
#define ZVCONV_HEADERS_H

#include <stdbool.h>

#include "buffer.h"
#include "pipeline.h"

struct headers;

/* Begins headers whose plain parts are in `from`. NULL after a complaint. */
struct headers* headers_open(const char* name, const struct encoding* from,
                             const struct encoding* to, const struct wishes* wishes, bool goes_on);
void headers_close(struct headers* headers);

/* Takes a line without its line feed. What is complete is added to `out`. False after a complaint.
 */
bool headers_take(struct headers* headers, const char* line, size_t length, struct buffer* out);

/* Ends the last header. `ended`: a line feed stood behind it. */
bool headers_finish(struct headers* headers, bool ended, struct buffer* out);

/* Tells what could not be converted. False when that is refused. */
bool headers_report(const struct headers* headers);

#endif
