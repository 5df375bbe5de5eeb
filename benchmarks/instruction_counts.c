/* Converts texts with the library and with iconv under an emulator that logs each instruction and
 * each system call; getppid() is called before and behind what is to be counted.
 *   instruction_counts FOLDER      of the sample texts */
#include <iconv.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <jaconv.h>

enum { kRepetitions = 16 }; /* of a sample of about 250 bytes */

static const struct conversion {
    const char *function, *sample, *from, *to; /* as iconv names them */
    char* (*convert)(const char*, char*);
} kConversions[] = {
    {"shift2eucx", "japanese.sjis.txt", "SJIS", "EUC-JP", shift2eucx},
    {"euc2shiftx", "japanese.euc.txt", "EUC-JP", "SJIS", euc2shiftx},
    {"jis2eucx", "japanese.jis.txt", "ISO-2022-JP", "EUC-JP", jis2eucx},
    {"big2euchx", "chinese.big5.txt", "BIG5", "EUC-TW", big2euchx},
    {"c8859_5To1251x", "russian.8859-5.txt", "ISO-8859-5", "CP1251", c8859_5To1251x},
};

static char text[8 * 1024], out[4 * sizeof text];

static size_t read_sample(const char* name) {
    size_t length = 0;
    for (int i = 0; i < kRepetitions; ++i) {
        FILE* sample = fopen(name, "r");
        if (sample == NULL)
            perror(name), exit(1);
        length += fread(text + length, 1, sizeof text - 1 - length, sample);
        fclose(sample);
    }
    text[length] = '\0';
    return length;
}

static void convert_with_iconv(iconv_t converter, size_t length) {
    char *in_at = text, *out_at = out;
    size_t out_left = sizeof out;
    if (iconv(converter, &in_at, &length, &out_at, &out_left) == (size_t)-1 ||
        iconv(converter, NULL, NULL, &out_at, &out_left) == (size_t)-1)
        perror("iconv"), exit(1);
}

int main(int argc, char** argv) {
    if (argc != 2 || chdir(argv[1]) != 0)
        return 2;
    for (const struct conversion* c = kConversions; c < kConversions + 5; ++c) {
        const size_t length = read_sample(c->sample);
        const iconv_t converter = iconv_open(c->to, c->from);
        if (converter == (iconv_t)-1)
            return perror(c->from), 1;
        printf("%s %s %s %zu\n", c->function, c->from, c->to, length);
        getppid();
        c->convert(text, out);
        getppid();
        convert_with_iconv(converter, length);
        getppid();
        iconv_close(converter);
    }
    return 0;
}
