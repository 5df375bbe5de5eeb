#include "conversion.h"

#include <string.h>

#include "headers.h"
#include "mbutil.h"
#include "messages.h"
#include "progress.h"
#include "subjects.h"

enum {
    BLOCK = 128 * 1024,
    LONGEST_MARK = 4 /* of the byte orders */
};

/* A conversion under way. */
struct run {
    const struct conversion* wanted;
    const char* name;
    struct output* output;
    struct encoding from, text; /* of the input, and of what the pipeline makes of it */
    struct pipeline pipeline;
    struct line_end_filter line_ends;
    struct buffer result, lines; /* lines: text that has to be taken line by line */
    struct headers* headers;
    unsigned long line;
    bool ends_line; /* what was taken last */
};

/* Where the text behind the byte order mark begins. A mark tells the order where the name does not.
 * UTF-8 text that stays what it is keeps it. */
static size_t skip_mark(struct encoding* from, const struct encoding* to, const char* text,
                        size_t length) {
    static const struct {
        const char *bytes, *any_order, *this_order;
        size_t length;
    } kMarks[] = {{"\xFF\xFE\0\0", "UTF-32", "UTF-32LE", 4},
                  {"\0\0\xFE\xFF", "UTF-32", "UTF-32BE", 4},
                  {"\xFF\xFE", "UTF-16", "UTF-16LE", 2},
                  {"\xFE\xFF", "UTF-16", "UTF-16BE", 2},
                  {"\xEF\xBB\xBF", "UTF-8", "UTF-8", 3}};
    for (size_t i = 0; i < sizeof kMarks / sizeof *kMarks; ++i) {
        if (length < kMarks[i].length || memcmp(text, kMarks[i].bytes, kMarks[i].length) != 0)
            continue;
        const bool any_order = strcmp(from->iconv, kMarks[i].any_order) == 0;
        if (!any_order && strcmp(from->iconv, kMarks[i].this_order) != 0)
            continue;
        from->iconv = kMarks[i].this_order;
        return strcmp(from->iconv, to->iconv) == 0 ? 0 : kMarks[i].length;
    }
    return 0;
}

static bool write_result(struct run* r, bool final) {
    return line_ends_change(&r->line_ends, &r->result, final) &&
           output_write(r->output, &r->result);
}

/* Takes a line without its end. */
static bool take_line(struct run* r, char* line, size_t length, bool ends_line) {
    ++r->line;
    r->ends_line = ends_line;
    if (r->wanted->content == HEADERS)
        return headers_take(r->headers, line, length, &r->result);
    if (length > 0 && line[length - 1] == '\r')
        line[--length] = '\0';
    if (strlen(line) != length)
        return complain_at(r->name, r->line, "a zero byte in a subject");
    return r->wanted->content == SUBJECTS
               ? write_subject(line, &r->text, &r->wanted->to, &r->result)
               : write_standard_subject(line, length, &r->text, &r->result);
}

/* Takes the whole lines of what has come together; with `final`, the rest too. */
static bool take_lines(struct run* r, bool final) {
    struct buffer* lines = &r->lines;
    if (buffer_extend(lines, 1) == NULL)
        return false;
    char* next = lines->bytes;
    char* const end = next + lines->length;
    *end = '\n'; /* where the last line ends that has no end of its own */
    while (next < end) {
        char* stop = memchr(next, '\n', (size_t)(end - next) + 1);
        if (stop == end && !final)
            break;
        *stop = '\0';
        if (!take_line(r, next, (size_t)(stop - next), stop < end))
            return false;
        next = stop < end ? stop + 1 : end;
    }
    lines->length = (size_t)(end - next);
    memmove(lines->bytes, next, lines->length);
    return lines->length <= BLOCK ||
           complain_at(r->name, r->line + 1, "the line is too long for mail");
}

static bool run_portion(struct run* r, char* text, size_t length, bool final, size_t* used) {
    *used = length;
    if (r->wanted->content == HEADERS)
        return buffer_add(&r->lines, text, length) && take_lines(r, final) &&
               (!final || headers_finish(r->headers, r->ends_line, &r->result)) &&
               write_result(r, final);
    const bool by_lines = r->wanted->content != TEXT;
    troubles_enter(&r->pipeline.troubles, text);
    if (!pipeline_run(&r->pipeline, text, length, final, by_lines ? &r->lines : &r->result, used))
        return false;
    troubles_leave(&r->pipeline.troubles, *used);
    return (!by_lines || take_lines(r, final)) && write_result(r, final);
}

/* The length of the whole lines in a block, whose first bytes are known to hold no line end. */
static size_t whole_lines(const struct run* r, const char* block, size_t known, size_t length) {
    const size_t unit = r->wanted->content == HEADERS ? 1 : unit_of(&r->from);
    if (unit == 1) {
        const char* end = memrchr(block + known, '\n', length - known);
        return end != NULL ? (size_t)(end - block) + 1 : 0;
    }
    for (size_t end = length - length % unit; end >= known + unit && end > 0; end -= unit) {
        const char* last = block + end - unit;
        const char* low = last[0] == '\n' ? last : last + unit - 1;
        size_t zeros = 0;
        for (size_t i = 0; i < unit; ++i)
            zeros += last[i] == '\0';
        if (*low == '\n' && zeros == unit - 1)
            return end;
    }
    return 0;
}

/* How much of a block that is full and holds one piece of a line may be converted. */
static size_t front(const struct run* r, const char* block, size_t length) {
    const struct step* first = &r->pipeline.steps[0];
    if (r->wanted->content == HEADERS || !first->by_library)
        return length;
    return library_step_front(&first->library, block, length);
}

/* Reads until a byte order mark can be told or the text ends. */
static long read_front(struct input* input, char* block) {
    long filled = 0, got;
    do {
        got = input_read(input, block + filled, BLOCK - (size_t)filled);
        filled += got > 0 ? got : 0;
    } while (got > 0 && filled < LONGEST_MARK);
    return got < 0 ? got : filled;
}

/* Of the headers that are written. */
static const struct encoding kAscii = {"ASCII", "ASCII", NO_CODE_SET};

static bool open_run(struct run* r, const char* block, size_t filled, size_t* skipped) {
    const struct conversion* c = r->wanted;
    r->from = c->from;
    r->text =
        c->content == TEXT ? c->to : subject_encoding(&c->from, &c->to, c->content != SUBJECTS);
    *skipped = 0;
    const bool is_mail = c->content == SUBJECTS || c->content == STANDARD_SUBJECTS;
    if (!line_ends_begin(&r->line_ends, c->line_ends, is_mail ? &kAscii : &c->to))
        return false;
    if (c->content == HEADERS) {
        r->headers = headers_open(r->name, &c->from, &c->to, &c->wishes, r->output->written);
        return r->headers != NULL;
    }
    *skipped = skip_mark(&r->from, &r->text, block, filled);
    /* The current code set is that of the text that the library looks at. */
    const struct encoding* native = c->content == TEXT ? &c->from : &r->text;
    InitMbutilExt(native->code_set == ZV_WESTERN || native->code_set == NO_CODE_SET
                      ? ZV_EUC
                      : native->code_set);
    return pipeline_open(&r->pipeline, r->name, &r->from, &r->text, &c->wishes, r->output->written);
}

/* Converts what has been read, and reads on unless that is all. */
static bool run_all(struct run* r, struct input* input, char* block, size_t filled, bool ended) {
    size_t known = 0; /* so many bytes at the front hold no line end */
    for (;;) {
        size_t used = ended ? filled : whole_lines(r, block, known, filled);
        if (used == 0 && filled == BLOCK)
            used = front(r, block, filled);
        if ((used > 0 || ended) && !run_portion(r, block, used, ended, &used))
            return false;
        if (ended)
            return true;
        filled -= used;
        memmove(block, block + used, filled + 1);
        known = filled;
        const long got = input_read(input, block + filled, BLOCK - filled);
        if (got < 0)
            return false;
        filled += (size_t)got;
        block[filled] = '\0';
        ended = got == 0;
    }
}

static bool report(const struct run* r) {
    return r->headers != NULL ? headers_report(r->headers) : troubles_report(&r->pipeline.troubles);
}

bool convert(const struct conversion* conversion, struct input* input, struct output* output) {
    static char room[BLOCK + 1];
    struct run r = {.wanted = conversion, .name = input->name, .output = output};
    const long filled = read_front(input, room);
    size_t skipped;
    if (filled < 0 || !open_run(&r, room, (size_t)filled, &skipped))
        return false;
    const size_t left = (size_t)filled - skipped;
    memmove(room, room + skipped, left);
    r.pipeline.troubles.offset = skipped;
    const bool good = run_all(&r, input, room, left, filled == 0) && report(&r);
    if (r.headers != NULL)
        headers_close(r.headers);
    else
        pipeline_close(&r.pipeline);
    buffer_free(&r.result);
    buffer_free(&r.lines);
    buffer_free(&r.line_ends.scratch);
    return good;
}
