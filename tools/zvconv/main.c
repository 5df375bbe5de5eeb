/*
 * zvconv: converts text files between encodings, tells their encodings, writes and reads mail
 * headers.
 *
 * A host program of libzvutil as its users write them: it uses the public headers alone.
 */
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "conversion.h"
#include "detection.h"
#include "files.h"
#include "jobs.h"
#include "mbutil.h"
#include "messages.h"
#include "options.h"
#include "progress.h"

/* No file that is opened later may take the place of a closed standard stream. */
static void occupy_standard_streams(void) {
    for (int i = STDIN_FILENO; i <= STDERR_FILENO; ++i) {
        if (fcntl(i, F_GETFD) < 0) /* opened so that its use is an error, as before */
            (void)!open("/dev/null", i == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

/* What text of ASCII alone is taken for: what it is to become, where that holds ASCII as it is. */
static struct encoding ascii_as(const struct conversion* c) {
    if (c->wishes.full_katakana)
        return encoding_of(ZV_EUC);
    const bool same = c->to.code_set != NO_CODE_SET || strcmp(c->to.iconv, "UTF-8") == 0;
    return same ? c->to : c->from;
}

/* Finds the encoding of an input. */
static bool detect_encoding(const struct options* options, struct input* input,
                            struct conversion* c) {
    struct guess guess;
    if (!detect(input, &guess))
        return false;
    if (!guess.decided)
        return complain("%s: %s; say with -f what it is", input->name, guess.found);
    if (c->wishes.verbose)
        note("%s: taken as %s for %s", input->name, guess.encoding.name, guess.found);
    c->from = guess.encoding;
    if (strcmp(c->from.iconv, "ASCII") == 0)
        c->from = ascii_as(c);
    c->wishes.plain_ascii = true; /* what the user did not call SJIS is read as its EUC would be */
    return !options->conversion.wishes.full_katakana || katakana_can_be_widened(&c->from, &c->to) ||
           complain("%s: --katakana: neither %s nor %s is a Japanese encoding of 8 bits",
                    input->name, c->from.name, c->to.name);
}

/* Whether text without faults stays what it is. */
static bool changes_nothing(const struct conversion* c) {
    return c->content == TEXT && c->line_ends == KEEP_LINE_ENDS && !c->wishes.full_katakana &&
           c->wishes.policy == REFUSE && strcmp(c->from.iconv, c->to.iconv) == 0;
}

static bool convert_input(const struct options* options, struct input* input,
                          struct output* output) {
    struct conversion c = options->conversion;
    if (output_feeds(output, &input->status))
        return complain("%s: is what it would be written to; -i converts a file itself",
                        input->name);
    if (options->detects && !detect_encoding(options, input, &c))
        return false;
    output->idle = changes_nothing(&c);
    progress_begin(input_size(input),
                   !options->quiet && options->jobs <= 1 && !isatty(output->descriptor));
    const bool good = convert(&c, input, output);
    progress_end();
    return good;
}

/* The files that are named, or standard input. */
static char** named_files(const struct options* options, int* count) {
    static char standard_input[] = "-";
    static char* none[] = {standard_input};
    *count = options->count > 0 ? options->count : 1;
    return options->count > 0 ? options->files : none;
}

static bool convert_all(const struct options* options) {
    int count;
    char** const files = named_files(options, &count);
    struct output output;
    bool good = true;
    if (!output_open(&output, options->output))
        return false;
    for (int i = 0; i < count && !output.failed; ++i) {
        struct input input;
        if (input_open(&input, files[i], false)) {
            good = convert_input(options, &input, &output) && good;
            input_close(&input);
        } else {
            good = false;
        }
    }
    return output_close(&output, good, &options->replacing, NULL);
}

static bool convert_in_place(const struct options* options, const char* name) {
    struct input input;
    struct output output;
    if (!input_open(&input, name, true))
        return false;
    bool good = output_open(&output, name);
    if (good) {
        good = convert_input(options, &input, &output);
        good = output_close(&output, good, &options->replacing, &input.status);
    }
    input_close(&input);
    return good;
}

/* What every process knows of the files. */
struct shared {
    const struct options* options;
    const struct files* files;
};

static bool convert_one(void* context, int index) {
    const struct shared* shared = context;
    return convert_in_place(shared->options, shared->files->names[index]);
}

static bool convert_in_places(const struct options* options) {
    struct files files;
    if (!files_collect(&files, options->files, options->count, options->recursive,
                       options->patterns, options->pattern_count, options->replacing.backup)) {
        files_free(&files);
        return false;
    }
    if (files.count == 0 && files.complete)
        note("no file to convert");
    struct shared shared = {options, &files};
    const bool good = run_jobs(options->jobs, files.count, convert_one, &shared) && files.complete;
    files_free(&files);
    return good;
}

static bool guess_one(const char* name) {
    struct input input;
    struct guess guess;
    if (!input_open(&input, name, false))
        return false;
    bool good = detect(&input, &guess);
    if (good && !guess.decided)
        good = complain("%s: %s", input.name, guess.found);
    else if (good)
        printf("%s: %s (%s)\n", input.name, guess.encoding.name, guess.line_ends);
    input_close(&input);
    return good;
}

static bool guess_all(const struct options* options) {
    int count;
    char** names = named_files(options, &count);
    struct files files = {.complete = true};
    bool good = true;
    if (options->recursive) {
        good = files_collect(&files, names, count, true, options->patterns, options->pattern_count,
                             NULL) &&
               files.complete;
        names = files.names;
        count = files.count;
    }
    for (int i = 0; i < count; ++i)
        good = guess_one(names[i]) && good;
    files_free(&files);
    return ((fflush(stdout) == 0 && !ferror(stdout)) || complain_of("standard output")) && good;
}

int main(int argc, char** argv) {
    struct options options;
    occupy_standard_streams();
    signal(SIGXFSZ, SIG_IGN); /* a file that becomes too large is an error to tell */
    signal(SIGPIPE, SIG_IGN); /* a reader that goes leaves no file half done */
    const int status = parse_options(argc, argv, &options);
    if (status != GO_ON)
        return status;
    if (options.quiet)
        silence_notes();
    const bool good = options.guesses    ? guess_all(&options)
                      : options.in_place ? convert_in_places(&options)
                                         : convert_all(&options);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
