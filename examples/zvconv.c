/*
 * zvconv: converts text files between code sets and writes mail subjects.
 *
 * A host program of libzvutil as its users write them: the code set is fixed first, then text is
 * read in pieces that never split a character, converted and written.
 */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "jaconv.h"
#include "mbutil.h"

enum {
    DETECT = -1, /* the code set of '-f auto' before it is known */
    BLOCK = 64 * 1024,
    SHIFT = 3,                           /* room in front of a piece for ESC $ B */
    CONVERTED = 5 * (SHIFT + BLOCK) + 4, /* the worst case of any conversion, see convertStrExt() */
    SUBJECT = 64 * BLOCK + 64            /* the same of convertSubjectForMail() */
};

struct job {
    int from, to;
    bool subjects;
    const char *in_name, *out_name;
    FILE *in, *out;
    char* temporary;        /* path of the file that becomes out_name; NULL when written directly */
    bool keeps_tabs;        /* tabs stand outside the text, as line ends do */
    int two_byte;           /* shift state of JIS text at the front of the block */
    unsigned long replaced; /* characters that became control codes */
    unsigned long line;
};

static const char* const kNames[] = {
    "WESTERN", "JIS",    "EUC",         "SJIS",        "GB",     "EUC_C",   "BIG5",
    "EUC_H",   "EUC_K",  "KSC_5601_87", "KSC_5601_92", "8859_2", "8859_3",  "8859_4",
    "8859_5",  "8859_6", "8859_7",      "8859_8",      "8859_9", "8859_10", "1250",
    "1251",    "1253",   "1254",        "1255",        "1256",   "1257",    "1258"};

static bool complain(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    fputs("zvconv: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
    return false;
}

static bool complain_of(const char* name) {
    return complain("%s: %s", name, strerror(errno));
}

static void usage(FILE* stream) {
    fputs("usage: zvconv -f FROM -t TO [-s] [-o OUT] [FILE]\n"
          "       zvconv -l\n"
          "Converts FILE, or standard input, from one code set into another.\n"
          "  -f FROM  code set of FILE; 'auto' detects Japanese text\n"
          "  -t TO    code set of the result\n"
          "  -s       write each line as a mail header \"Subject:\" in the mail code set of TO\n"
          "  -o OUT   write to the file OUT, which is replaced only when all went well\n"
          "  -l       list the names of the code sets and the conversions\n",
          stream);
}

static const char* name_of(int code_set) {
    for (size_t i = 0; i < sizeof kNames / sizeof *kNames; ++i) {
        if (mbGetCodeSet(kNames[i]) == code_set)
            return kNames[i];
    }
    return "unknown";
}

/* Whether a pair has a converter: a pair without one would be copied as it is. */
static bool is_served(int from, int to) {
    static const int pairs[][2] = {
        {ZV_JIS, ZV_EUC},       {ZV_JIS, ZV_SJIS},      {ZV_EUC, ZV_SJIS},
        {ZV_EUC, ZV_JIS},       {ZV_SJIS, ZV_EUC},      {ZV_SJIS, ZV_JIS},
        {ZV_BIG5, ZV_EUC_H},    {ZV_EUC_H, ZV_BIG5},    {ZV_8859_2, ZV_CP1250},
        {ZV_CP1250, ZV_8859_2}, {ZV_8859_5, ZV_CP1251}, {ZV_CP1251, ZV_8859_5}};
    for (size_t i = 0; i < sizeof pairs / sizeof *pairs; ++i) {
        if (pairs[i][0] == from && pairs[i][1] == to)
            return true;
    }
    return from == to;
}

static void list(void) {
    const size_t count = sizeof kNames / sizeof *kNames;
    for (size_t i = 0; i < count; ++i) {
        fputs(kNames[i], stdout);
        const char* separator = "  to ";
        for (size_t k = 0; k < count; ++k) {
            if (i != k && is_served(mbGetCodeSet(kNames[i]), mbGetCodeSet(kNames[k]))) {
                printf("%s%s", separator, kNames[k]);
                separator = ", ";
            }
        }
        putchar('\n');
    }
}

static bool parse_code_set(const char* name, int* code_set) {
    *code_set = mbGetCodeSet(name);
    if (*code_set == ZV_WESTERN && strstr(name, "WESTERN") == NULL)
        return complain("unknown code set '%s' (zvconv -l lists them)", name);
    return true;
}

/* Detection reads ahead, so what cannot be positioned is spooled to a temporary file first. */
static bool detect(struct job* job) {
    if (fseek(job->in, 0, SEEK_CUR) != 0) {
        FILE* spool = tmpfile();
        static char block[BLOCK];
        size_t got;
        if (spool == NULL)
            return complain_of("temporary file");
        while ((got = fread(block, 1, sizeof block, job->in)) > 0) {
            if (fwrite(block, 1, got, spool) != got)
                return complain_of("temporary file");
        }
        if (ferror(job->in))
            return complain_of(job->in_name);
        job->in = spool;
        rewind(spool);
    }
    const long start = ftell(job->in);
    job->from = DetectJPCodeType(job->in);
    if (ferror(job->in) || fseek(job->in, start, SEEK_SET) != 0)
        return complain_of(job->in_name);
    if (job->from == ZV_EUC_OR_SJIS)
        complain("%s: fits EUC and SJIS, taken as EUC", job->in_name);
    if (job->from == ZV_WESTERN || job->from == ZV_EUC_OR_SJIS)
        job->from = ZV_EUC; /* without any Japanese character it is the same as all others */
    return true;
}

static bool open_output(struct job* job) {
    struct stat status;
    const bool exists = job->out_name != NULL && stat(job->out_name, &status) == 0;
    if (job->out_name == NULL) {
        job->out = stdout;
        return true;
    }
    if (exists && !S_ISREG(status.st_mode)) { /* a device or a pipe cannot be replaced */
        job->out = fopen(job->out_name, "wb");
        return job->out != NULL || complain_of(job->out_name);
    }
    const size_t room = strlen(job->out_name) + sizeof ".XXXXXX";
    job->temporary = malloc(room);
    if (job->temporary == NULL)
        return complain_of(job->out_name);
    snprintf(job->temporary, room, "%s.XXXXXX", job->out_name);
    const int descriptor = mkstemp(job->temporary);
    if (descriptor < 0) {
        free(job->temporary);
        job->temporary = NULL;
        return complain_of(job->out_name);
    }
    const mode_t mask = umask(0);
    umask(mask);
    job->out = fdopen(descriptor, "wb");
    if (job->out == NULL || fchmod(descriptor, exists ? status.st_mode : 0666 & ~mask) != 0)
        return complain_of(job->out_name);
    return true;
}

/* Closes the output; the temporary file takes its place only when everything has been written. */
static bool close_output(struct job* job, bool good) {
    const char* name = job->out_name != NULL ? job->out_name : "standard output";
    if (job->out != NULL && (fflush(job->out) != 0 || ferror(job->out) || fclose(job->out) != 0))
        good = good && complain_of(name);
    if (job->temporary != NULL) {
        if (good && rename(job->temporary, job->out_name) != 0)
            good = complain_of(name);
        if (!good)
            unlink(job->temporary);
        free(job->temporary);
    }
    return good;
}

static unsigned long control_codes(const char* s) {
    unsigned long count = 0;
    for (; *s != '\0'; ++s)
        count += *s > 0 && *s < 0x0F;
    return count;
}

static bool write_text(struct job* job, const char* text, size_t length) {
    return fwrite(text, 1, length, job->out) == length ||
           complain_of(job->out_name != NULL ? job->out_name : "standard output");
}

/* Converts a piece of text, in front of which SHIFT bytes are free. */
static bool convert_piece(struct job* job, char* piece) {
    static char converted[CONVERTED];
    if (job->two_byte) {
        piece -= SHIFT;
        memcpy(piece, "\x1B$B", SHIFT);
    }
    convertStrExt(piece, job->from, converted, job->to);
    if (job->from != job->to && (job->to == ZV_8859_5 || job->to == ZV_8859_2))
        job->replaced += control_codes(converted) - control_codes(piece);
    return write_text(job, converted, strlen(converted));
}

static bool write_subject(struct job* job, char* line, size_t length) {
    static char native[CONVERTED];
    static char subject[SUBJECT];
    ++job->line;
    if (length > 0 && line[length - 1] == '\r')
        line[--length] = '\0';
    if (strlen(line) != length)
        return complain("%s:%lu: a zero byte in a subject", job->in_name, job->line);
    int code_set = job->from;
    if (code_set == ZV_JIS) { /* its characters show only in the light of the escape sequences */
        line = convertStrExt(line, ZV_JIS, native, ZV_EUC);
        code_set = ZV_EUC;
    }
    convertSubjectForMail(subject, line, mbGetCodeSetForMail(job->to), code_set);
    return write_text(job, "Subject: ", 9) && write_text(job, subject, strlen(subject)) &&
           write_text(job, "\n", 1);
}

/* How much of a block without a line end may be converted by itself, and the shift state there. */
static size_t whole_characters(const struct job* job, const char* block, size_t length,
                               int* two_byte) {
    const size_t limit = length - 4; /* leaves room for a character or an escape sequence */
    if (job->from != ZV_JIS)
        return mbidx(block, (unsigned)limit);
    const unsigned char* const text = (const unsigned char*)block;
    const unsigned char* p = text;
    while (p < text + limit) {
        const unsigned char byte = *p++;
        if (byte == 0x1B) {
            const int c = *p++;
            SkipESCSeq(&p, c, two_byte);
        } else if (*two_byte) {
            ++p;
        }
    }
    return (size_t)(p - text);
}

/* Converts the front of a block that holds one long piece of a line. Gives its length, 0 when that
 * failed. */
static size_t convert_front(struct job* job, char* block, size_t length) {
    if (job->subjects) {
        complain("%s:%lu: the line is too long for a subject", job->in_name, job->line + 1);
        return 0;
    }
    int two_byte = job->two_byte;
    const size_t used = whole_characters(job, block, length, &two_byte);
    const char kept = block[used];
    block[used] = '\0';
    const bool good = convert_piece(job, block);
    block[used] = kept;
    job->two_byte = two_byte;
    return good ? used : 0;
}

/*
 * Line ends stay outside the text that is converted: the way from ISO to Windows code pages gives
 * the low control codes another meaning, and a character cut at a line's end takes none with it.
 */
static bool is_layout(const struct job* job, char c) {
    if (job->subjects)
        return c == '\n';
    return c == '\n' || c == '\r' || c == '\0' || (c == '\t' && job->keeps_tabs);
}

/* Converts the pieces of a block that layout characters end. Gives the length of all, -1 when one
 * failed. */
static long convert_pieces(struct job* job, char* block, size_t length) {
    size_t begin = 0;
    for (size_t end = 0; end < length; ++end) {
        const char c = block[end];
        if (!is_layout(job, c))
            continue;
        block[end] = '\0';
        const bool good = job->subjects
                              ? write_subject(job, block + begin, end - begin)
                              : convert_piece(job, block + begin) && write_text(job, &c, 1);
        if (!good)
            return -1;
        job->two_byte = 0;
        begin = end + 1;
    }
    return (long)begin;
}

static bool convert_rest(struct job* job, char* block, size_t length) {
    if (length == 0)
        return true;
    return job->subjects ? write_subject(job, block, length) : convert_piece(job, block);
}

static bool convert_stream(struct job* job) {
    static char room[SHIFT + BLOCK + 1];
    char* const block = room + SHIFT;
    size_t filled = 0;
    size_t got;
    while ((got = fread(block + filled, 1, BLOCK - filled, job->in)) > 0) {
        filled += got;
        block[filled] = '\0';
        long used = convert_pieces(job, block, filled);
        if (used < 0)
            return false;
        if (used == 0 && filled == BLOCK && (used = (long)convert_front(job, block, filled)) == 0)
            return false;
        filled -= (size_t)used;
        memmove(block, block + used, filled + 1);
    }
    if (ferror(job->in))
        return complain_of(job->in_name);
    return convert_rest(job, block, filled);
}

static bool run(struct job* job) {
    if (strcmp(job->in_name, "-") != 0) {
        job->in = fopen(job->in_name, "rb");
        struct stat status;
        if (job->in == NULL)
            return complain_of(job->in_name);
        if (fstat(fileno(job->in), &status) == 0 && S_ISDIR(status.st_mode)) {
            errno = EISDIR;
            return complain_of(job->in_name);
        }
    }
    if (job->from == DETECT && !detect(job))
        return false;
    const int target = job->subjects ? mbGetCodeSetForMail(job->to) : job->to;
    if (!is_served(job->from, target))
        return complain("no conversion from %s to %s", name_of(job->from), name_of(target));
    job->keeps_tabs = job->from != job->to && (job->from == ZV_8859_5 || job->from == ZV_8859_2);

    /* The current code set is that of the text at hand. */
    InitMbutilExt(job->subjects && job->from == ZV_JIS ? ZV_EUC : job->from);
    const bool good = open_output(job) && convert_stream(job);
    if (good && job->replaced > 0)
        complain("%lu characters that %s lacks became control codes", job->replaced,
                 name_of(job->to));
    return close_output(job, good);
}

int main(int argc, char** argv) {
    struct job job = {.in_name = "-", .in = stdin};
    const char* from = NULL;
    const char* to = NULL;
    int option;
    while ((option = getopt(argc, argv, "f:t:so:lh")) != -1) {
        switch (option) {
        case 'f':
            from = optarg;
            break;
        case 't':
            to = optarg;
            break;
        case 's':
            job.subjects = true;
            break;
        case 'o':
            job.out_name = optarg;
            break;
        case 'l':
            list();
            return EXIT_SUCCESS;
        case 'h':
            usage(stdout);
            return EXIT_SUCCESS;
        default:
            usage(stderr);
            return EXIT_FAILURE;
        }
    }
    if (from == NULL || to == NULL || argc - optind > 1) {
        usage(stderr);
        return EXIT_FAILURE;
    }
    if (optind < argc)
        job.in_name = argv[optind];
    if (strcmp(from, "auto") == 0)
        job.from = DETECT;
    else if (!parse_code_set(from, &job.from))
        return EXIT_FAILURE;
    if (!parse_code_set(to, &job.to))
        return EXIT_FAILURE;
    return run(&job) ? EXIT_SUCCESS : EXIT_FAILURE;
}
