/* The smallest complete host: start-up, one conversion, one mail subject. */
#include <stdio.h>

#include <jaconv.h>
#include <mbutil.h>

int main(void) {
    const char sjis[] = "\x93\x8C\x8B\x9E"; /* Tokyo, in Shift-JIS */
    char euc[2 * sizeof sjis];
    char subject[64 * sizeof euc + 64];

    InitMbutilExt(mbGetCodeSet("EUC")); /* on the main thread, before any other call */
    shift2eucx(sjis, euc);
    convertSubjectForMail(subject, euc, mbGetCodeSetForMail(ZV_EUC), ZV_EUC);
    printf("%s\nSubject: %s\n", euc, subject);
    return 0;
}
