#include "options.h"

#include <errno.h>
#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "mbutil.h"
#include "messages.h"
#include "subjects.h"

enum {
    BACKUP = 256,
    DECODE_HEADERS,
    FORCING,
    GUESS,
    INCLUDE,
    KATAKANA,
    LINE_ENDS,
    NO_SYNC,
    SKIPPING,
    STANDARD,
    SUBSTITUTING,
    WINDOWS_CONTROLS,
    MOST_JOBS = 1024
};

static const struct option kOptions[] = {{"from-code", required_argument, NULL, 'f'},
                                         {"to-code", required_argument, NULL, 't'},
                                         {"output", required_argument, NULL, 'o'},
                                         {"in-place", no_argument, NULL, 'i'},
                                         {"backup", optional_argument, NULL, BACKUP},
                                         {"no-sync", no_argument, NULL, NO_SYNC},
                                         {"recursive", no_argument, NULL, 'r'},
                                         {"include", required_argument, NULL, INCLUDE},
                                         {"jobs", required_argument, NULL, 'j'},
                                         {"subjects", no_argument, NULL, 's'},
                                         {"standard", no_argument, NULL, STANDARD},
                                         {"decode-headers", no_argument, NULL, DECODE_HEADERS},
                                         {"line-ends", required_argument, NULL, LINE_ENDS},
                                         {"katakana", required_argument, NULL, KATAKANA},
                                         {"windows-controls", no_argument, NULL, WINDOWS_CONTROLS},
                                         {"force", no_argument, NULL, FORCING},
                                         {"skip", no_argument, NULL, SKIPPING},
                                         {"substitute", required_argument, NULL, SUBSTITUTING},
                                         {"guess", no_argument, NULL, GUESS},
                                         {"quiet", no_argument, NULL, 'q'},
                                         {"verbose", no_argument, NULL, 'v'},
                                         {"list", no_argument, NULL, 'l'},
                                         {"help", no_argument, NULL, 'h'},
                                         {"version", no_argument, NULL, 'V'},
                                         {NULL, 0, NULL, 0}};

static const char kHelp[] =
    "usage: zvconv -f FROM -t TO [OPTION]... [FILE]...\n"
    "       zvconv -f FROM -t TO -i [-r] [OPTION]... FILE...\n"
    "       zvconv --guess [-r] [FILE]...\n"
    "Converts the FILEs, or standard input, from one encoding into another.\n"
    "\n"
    "  -f, --from-code=FROM   encoding of the FILEs; 'auto' tells Japanese and UTF-8\n"
    "  -t, --to-code=TO       encoding of the result\n"
    "  -o, --output=OUT       write to OUT, which is replaced only when all went well\n"
    "  -i, --in-place         convert each FILE itself, only when all went well\n"
    "      --backup[=SUFFIX]  keep what is replaced under its name and SUFFIX, or ~\n"
    "      --no-sync          do not wait until what is replaced is on the disk\n"
    "  -r, --recursive        with -i or --guess, take the files of directories\n"
    "      --include=GLOB     of these, the files whose names match; may be repeated\n"
    "  -j, --jobs=N           with -i, convert N files at once\n"
    "\n"
    "      --force            accept lost characters and malformed text as they come\n"
    "      --skip             leave them out\n"
    "      --substitute=TEXT  write TEXT in their place\n"
    "      --windows-controls let characters that ISO 8859 lacks become control codes,\n"
    "                         which the way back turns into the characters again\n"
    "      --line-ends=ENDS   lf or crlf: make the ends of lines so; keep: leave them\n"
    "      --katakana=WIDTH   full: make half-width katakana full-width; keep them\n"
    "\n"
    "  -s, --subjects         write each line as a mail header \"Subject:\"\n"
    "      --standard         with -s, in words that every mail program reads\n"
    "      --decode-headers   write the text of the encoded words in mail headers\n"
    "\n"
    "      --guess            show the encoding and the line ends of each FILE, and end\n"
    "  -v, --verbose          tell of each fault, and what 'auto' took each FILE for\n"
    "  -q, --quiet            show errors only, no notes and no progress\n"
    "  -l, --list             list the encodings, and end\n"
    "  -h, --help             show this help, and end\n"
    "  -V, --version          show the version, and end\n"
    "\n"
    "Without FILE, or where FILE is -, standard input is read.\n"
    "Exit status: 0 when all was converted, 1 when something was not, 2 when the\n"
    "command line cannot be served.\n";

/* What the command line says, before it is looked at as a whole. */
struct words {
    const char *from, *to;
    unsigned
        policies; /* bits, by enum policy: which of --force, --skip and --substitute there are */
    bool standard;
};

/* Ends a run that only shows something. */
static int shown(void) {
    if (fflush(stdout) == 0 && !ferror(stdout))
        return EXIT_SUCCESS;
    complain_of("standard output");
    return EXIT_FAILURE;
}

static bool parse_jobs(const char* text, int* jobs) {
    char* end;
    errno = 0;
    const long number = strtol(text, &end, 10);
    *jobs = (int)number;
    return (errno == 0 && end != text && *end == '\0' && number >= 1 && number <= MOST_JOBS) ||
           complain("-j: '%s' is no number from 1 to %d", text, MOST_JOBS);
}

static bool parse_line_ends(const char* text, enum line_ends* line_ends) {
    static const char* const kNames[] = {"keep", "lf", "crlf"};
    for (int i = 0; i < 3; ++i) {
        if (strcmp(text, kNames[i]) == 0) {
            *line_ends = (enum line_ends)i;
            return true;
        }
    }
    return complain("--line-ends: '%s' is none of lf, crlf and keep", text);
}

static bool parse_katakana(const char* text, bool* full) {
    *full = strcmp(text, "full") == 0;
    return *full || strcmp(text, "keep") == 0 ||
           complain("--katakana: '%s' is neither full nor keep", text);
}

static bool add_pattern(struct options* options, const char* pattern) {
    if (options->pattern_count == PATTERNS)
        return complain("--include: more than %d patterns", PATTERNS);
    options->patterns[options->pattern_count++] = pattern;
    return true;
}

static void set_policy(struct options* options, struct words* words, enum policy policy,
                       const char* substitute) {
    options->conversion.wishes.policy = policy;
    options->conversion.wishes.substitute = substitute;
    words->policies |= 1U << policy;
}

static bool parse_encodings(struct options* options, const struct words* words) {
    struct conversion* c = &options->conversion;
    const char* from = words->from;
    if (from == NULL && c->content == HEADERS)
        from = "UTF-8";
    if (options->guesses)
        return true;
    if (from == NULL || words->to == NULL)
        return complain("%s needed (zvconv --help shows how)", words->to != NULL ? "-f is"
                                                               : from != NULL    ? "-t is"
                                                                                 : "-f and -t are");
    if (strcmp(words->to, "auto") == 0)
        return complain("-t: 'auto' is for -f alone");
    options->detects = strcmp(from, "auto") == 0;
    if ((!options->detects && !find_encoding(from, &c->from)) || !find_encoding(words->to, &c->to))
        return false;
    if (c->content == SUBJECTS && !library_writes_subjects(&c->to))
        return complain("-s writes subjects of %s with --standard only", c->to.name);
    if (c->content == STANDARD_SUBJECTS && !holds_ascii(&c->to))
        return complain("-s: no mail is written in %s", c->to.name);
    if (c->wishes.full_katakana && !options->detects && !katakana_can_be_widened(&c->from, &c->to))
        return complain("--katakana: neither %s nor %s is a Japanese encoding of 8 bits",
                        c->from.name, c->to.name);
    return true;
}

static bool fit_together(const struct options* options, const struct words* words) {
    const char* backup = options->replacing.backup;
    if (options->in_place && options->output != NULL)
        return complain("-i and -o exclude each other");
    if ((options->in_place || options->recursive) && options->count == 0)
        return complain("%s needs a FILE", options->in_place ? "-i" : "-r");
    for (int i = 0; options->in_place && i < options->count; ++i) {
        if (strcmp(options->files[i], "-") == 0)
            return complain("-i needs files, not standard input");
    }
    if (options->recursive && !options->in_place && !options->guesses)
        return complain("-r needs -i or --guess");
    if (options->jobs > 0 && !options->in_place)
        return complain("-j needs -i");
    if (options->pattern_count > 0 && !options->recursive)
        return complain("--include needs -r");
    if ((backup != NULL || !options->replacing.syncs) && !options->in_place &&
        options->output == NULL)
        return complain("%s needs -i or -o", backup != NULL ? "--backup" : "--no-sync");
    if (backup != NULL && (*backup == '\0' || strchr(backup, '/')))
        return complain("'%s' is no suffix for a file name", backup);
    if ((words->policies & (words->policies - 1)) != 0)
        return complain("--force, --skip and --substitute exclude each other");
    if (words->standard && options->conversion.content != STANDARD_SUBJECTS)
        return complain("--standard needs -s, and not --decode-headers");
    return true;
}

/* Tells what an unknown option may have been meant for. */
static void complain_of_option(const char* word) {
    const char* nearest = NULL;
    size_t least = 3; /* what is further off resembles nothing */
    char name[32];
    snprintf(name, sizeof name, "%.*s", (int)strcspn(word, "="), word);
    for (const struct option* known = kOptions; known->name != NULL; ++known) {
        const size_t next = name_distance(name, known->name);
        if (next < least) {
            least = next;
            nearest = known->name;
        }
    }
    if (nearest != NULL && least < strlen(name))
        complain("near to it: --%s (zvconv --help shows all)", nearest);
    else
        complain("zvconv --help shows how it is used");
}

/* Takes one option. Gives GO_ON or the exit status. */
static int take(int option, struct options* o, struct words* words) {
    struct conversion* c = &o->conversion;
    switch (option) {
    case 'f':
        words->from = optarg;
        return GO_ON;
    case 't':
        words->to = optarg;
        return GO_ON;
    case 'o':
        o->output = optarg;
        return GO_ON;
    case 'i':
        o->in_place = true;
        return GO_ON;
    case BACKUP:
        o->replacing.backup = optarg != NULL ? optarg : "~";
        return GO_ON;
    case NO_SYNC:
        o->replacing.syncs = false;
        return GO_ON;
    case 'r':
        o->recursive = true;
        return GO_ON;
    case INCLUDE:
        return add_pattern(o, optarg) ? GO_ON : EXIT_MISUSED;
    case 'j':
        return parse_jobs(optarg, &o->jobs) ? GO_ON : EXIT_MISUSED;
    case 's':
        c->content = SUBJECTS;
        return GO_ON;
    case STANDARD:
        words->standard = true;
        return GO_ON;
    case DECODE_HEADERS:
        c->content = HEADERS;
        return GO_ON;
    case LINE_ENDS:
        return parse_line_ends(optarg, &c->line_ends) ? GO_ON : EXIT_MISUSED;
    case KATAKANA:
        return parse_katakana(optarg, &c->wishes.full_katakana) ? GO_ON : EXIT_MISUSED;
    case WINDOWS_CONTROLS:
        c->wishes.windows_controls = true;
        return GO_ON;
    case FORCING:
        set_policy(o, words, FORCE, NULL);
        return GO_ON;
    case SKIPPING:
        set_policy(o, words, SKIP, NULL);
        return GO_ON;
    case SUBSTITUTING:
        set_policy(o, words, SUBSTITUTE, optarg);
        return GO_ON;
    case GUESS:
        o->guesses = true;
        return GO_ON;
    case 'v':
        c->wishes.verbose = true;
        return GO_ON;
    case 'q':
        o->quiet = true;
        return GO_ON;
    case 'l':
        list_encodings();
        return shown();
    case 'h':
        fputs(kHelp, stdout);
        return shown();
    case 'V':
        puts("zvconv " ZVCONV_VERSION);
        return shown();
    default:
        return EXIT_MISUSED;
    }
}

int parse_options(int argc, char** argv, struct options* options) {
    static char program[] = "zvconv";
    struct words words = {0};
    int option;
    *options = (struct options){.replacing = {.syncs = true}};
    if (argc > 0)
        argv[0] = program; /* the name in getopt's messages */
    while ((option = getopt_long(argc, argv, "f:t:o:irj:svqlhV", kOptions, NULL)) != -1) {
        if (option == '?') /* which getopt has told; optopt is 0 for a long one */
            complain_of_option(optopt == 0 ? argv[optind - 1] + 2 : "");
        const int status = take(option, options, &words);
        if (status != GO_ON)
            return status;
    }
    options->files = argv + optind;
    options->count = argc - optind;
    if (words.standard && options->conversion.content == SUBJECTS)
        options->conversion.content = STANDARD_SUBJECTS;
    return parse_encodings(options, &words) && fit_together(options, &words) ? GO_ON : EXIT_MISUSED;
}
