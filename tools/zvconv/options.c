#include "options.h"

#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "code_sets.h"
#include "mbutil.h"
#include "messages.h"

enum { FORCE = 256, BACKUP };

static const struct option kOptions[] = {{"from-code", required_argument, NULL, 'f'},
                                         {"to-code", required_argument, NULL, 't'},
                                         {"output", required_argument, NULL, 'o'},
                                         {"in-place", no_argument, NULL, 'i'},
                                         {"backup", optional_argument, NULL, BACKUP},
                                         {"subjects", no_argument, NULL, 's'},
                                         {"force", no_argument, NULL, FORCE},
                                         {"quiet", no_argument, NULL, 'q'},
                                         {"list", no_argument, NULL, 'l'},
                                         {"help", no_argument, NULL, 'h'},
                                         {"version", no_argument, NULL, 'V'},
                                         {NULL, 0, NULL, 0}};

static const char kHelp[] =
    "usage: zvconv -f FROM -t TO [OPTION]... [FILE]...\n"
    "       zvconv -f FROM -t TO -i [OPTION]... FILE...\n"
    "Converts the FILEs, or standard input, from one code set into another.\n"
    "\n"
    "  -f, --from-code=FROM   code set of the FILEs; 'auto' detects Japanese text\n"
    "  -t, --to-code=TO       code set of the result\n"
    "  -o, --output=OUT       write to OUT, which is replaced only when all went well\n"
    "  -i, --in-place         convert each FILE itself, only when all went well\n"
    "      --backup[=SUFFIX]  keep what is replaced under its name and SUFFIX, or ~\n"
    "  -s, --subjects         write each line as a mail header \"Subject:\"\n"
    "      --force            accept lost characters and malformed text\n"
    "  -q, --quiet            show errors only, no notes and no progress\n"
    "  -l, --list             list the code sets and their conversions, and end\n"
    "  -h, --help             show this help, and end\n"
    "  -V, --version          show the version, and end\n"
    "\n"
    "Without FILE, or where FILE is -, standard input is read.\n"
    "Exit status: 0 when all was converted, 1 when something was not, 2 when the\n"
    "command line cannot be served.\n";

/* Ends a run that only shows something. */
static int shown(void) {
    if (fflush(stdout) == 0 && !ferror(stdout))
        return EXIT_SUCCESS;
    complain_of("standard output");
    return EXIT_FAILURE;
}

static bool parse_code_set(const char* name, int* code_set) {
    return find_code_set(name, code_set) ||
           complain("unknown code set '%s' (zvconv --list shows them)", name);
}

static bool parse_code_sets(struct options* options, const char* from, const char* to) {
    if (from == NULL || to == NULL)
        return complain("-f and -t are needed (zvconv --help shows how)");
    if (strcmp(from, "auto") == 0)
        options->from = DETECT;
    else if (!parse_code_set(from, &options->from))
        return false;
    if (!parse_code_set(to, &options->to))
        return false;
    options->target = options->subjects ? mbGetCodeSetForMail(options->to) : options->to;
    return options->from == DETECT || is_served(options->from, options->target) ||
           complain("no conversion from %s to %s", name_of_code_set(options->from),
                    name_of_code_set(options->target));
}

static bool fit_together(const struct options* options) {
    if (options->in_place && options->output != NULL)
        return complain("-i and -o exclude each other");
    if (options->in_place && options->count == 0)
        return complain("-i needs a FILE");
    for (int i = 0; options->in_place && i < options->count; ++i) {
        if (strcmp(options->files[i], "-") == 0)
            return complain("-i needs files, not standard input");
    }
    if (options->backup != NULL && !options->in_place && options->output == NULL)
        return complain("--backup needs -i or -o");
    if (options->backup != NULL && (*options->backup == '\0' || strchr(options->backup, '/')))
        return complain("'%s' is no suffix for a file name", options->backup);
    return true;
}

int parse_options(int argc, char** argv, struct options* options) {
    static char program[] = "zvconv";
    const char* from = NULL;
    const char* to = NULL;
    int option;
    *options = (struct options){0};
    if (argc > 0)
        argv[0] = program; /* the name in getopt's messages */
    while ((option = getopt_long(argc, argv, "f:t:o:isqlhV", kOptions, NULL)) != -1) {
        switch (option) {
        case 'f':
            from = optarg;
            break;
        case 't':
            to = optarg;
            break;
        case 'o':
            options->output = optarg;
            break;
        case 'i':
            options->in_place = true;
            break;
        case BACKUP:
            options->backup = optarg != NULL ? optarg : "~";
            break;
        case 's':
            options->subjects = true;
            break;
        case FORCE:
            options->force = true;
            break;
        case 'q':
            options->quiet = true;
            break;
        case 'l':
            list_code_sets();
            return shown();
        case 'h':
            fputs(kHelp, stdout);
            return shown();
        case 'V':
            puts("zvconv " ZVCONV_VERSION);
            return shown();
        default:
            complain("zvconv --help shows how it is used");
            return EXIT_MISUSED;
        }
    }
    options->files = argv + optind;
    options->count = argc - optind;
    return parse_code_sets(options, from, to) && fit_together(options) ? GO_ON : EXIT_MISUSED;
}
