/*
 * zvconv: converts text files between code sets and writes mail subjects.
 *
 * A host program of libzvutil as its users write them: it uses the public headers alone.
 */
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include "code_sets.h"
#include "conversion.h"
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

/* Tells of a loss. False unless it is accepted. */
static bool report_loss(const struct options* options, const char* name, const char* loss,
                        int code_set, unsigned long count) {
    if (count > 0 && !options->force)
        return complain("%s: %s %s: %lu (--force accepts that)", name, loss,
                        name_of_code_set(code_set), count);
    if (count > 0)
        note("%s: %s %s: %lu", name, loss, name_of_code_set(code_set), count);
    return true;
}

static bool report(const struct options* options, const struct conversion* c) {
    if (c->control_codes > 0)
        note("%s: characters that became control codes in %s: %lu", c->name,
             name_of_code_set(c->to), c->control_codes);
    const bool well_formed =
        report_loss(options, c->name, "malformed lines of", c->from, c->malformed);
    return report_loss(options, c->name, "characters without counterpart in", c->to, c->lost) &&
           well_formed;
}

static bool convert_input(const struct options* options, struct input* input,
                          struct output* output) {
    struct conversion c = {.from = options->from, .to = options->to, .subjects = options->subjects};
    if (c.from == DETECT && (c.from = input_detect(input)) == 0)
        return false;
    if (!is_served(c.from, options->target))
        return complain("%s: no conversion from %s to %s", input->name, name_of_code_set(c.from),
                        name_of_code_set(options->target));
    progress_begin(input_size(input), !options->quiet && !isatty(output->descriptor));
    const bool good = convert(&c, input, output);
    progress_end();
    return good && report(options, &c);
}

static bool convert_all(const struct options* options) {
    static char standard_input[] = "-";
    static char* none[] = {standard_input};
    char** const files = options->count > 0 ? options->files : none;
    const int count = options->count > 0 ? options->count : 1;
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
    return output_close(&output, good, options->backup, NULL);
}

static bool convert_in_place(const struct options* options, const char* name) {
    struct input input;
    struct output output;
    if (!input_open(&input, name, true))
        return false;
    bool good = output_open(&output, name);
    if (good) {
        good = convert_input(options, &input, &output);
        good = output_close(&output, good, options->backup, &input.status);
    }
    input_close(&input);
    return good;
}

int main(int argc, char** argv) {
    struct options options;
    occupy_standard_streams();
    signal(SIGXFSZ, SIG_IGN); /* a file that becomes too large is an error to tell */
    const int status = parse_options(argc, argv, &options);
    if (status != GO_ON)
        return status;
    if (options.quiet)
        silence_notes();
    bool good = true;
    if (!options.in_place)
        good = convert_all(&options);
    for (int i = 0; options.in_place && i < options.count; ++i)
        good = convert_in_place(&options, options.files[i]) && good;
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
