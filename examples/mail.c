/*
 * The headers of a mail in the code set that its readers expect, and a quoted-printable line.
 *
 * Prints:
 *   Content-Type: text/plain; charset=iso-2022-jp
 *   Content-Transfer-Encoding: 7bit
 *   Subject: =?iso-2022-jp?B?GyRCRWw1fg==?=
 *    	=?iso-2022-jp?B?GyRCGyhK?=
 *   caf=E9 ends in E9 again
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "mbutil.h"

/* [names] */
/* Prints the headers that tell how a body is encoded. */
static void print_body_headers(int code_set) {
    const int mail_code_set = mbGetCodeSetForMail(code_set);
    printf("Content-Type: text/plain; charset=%s\n", mbGetMIMECharset(mail_code_set));
    printf("Content-Transfer-Encoding: %s\n", getTransferEncodingFromCodeSet(mail_code_set));
}
/* [names] */

/* [subject] */
/* Prints a subject in the current code set as a header line. */
static int print_subject(const char* subject, int code_set) {
    char* encoded = malloc(64 * strlen(subject) + 64);
    if (encoded == NULL)
        return -1;
    convertSubjectForMail(encoded, subject, mbGetCodeSetForMail(code_set), code_set);
    printf("Subject: %s\n", encoded);
    free(encoded);
    return 0;
}

/* Encodes a short word and decodes it again. */
static void print_quoted(const char* word) {
    char encoded[64], decoded[64];
    convertToQuotedPrintable(encoded, word);
    convertFromQuotedPrintable(decoded, encoded);
    printf("%s ends in %02X again\n", encoded, (unsigned char)decoded[strlen(decoded) - 1]);
}
/* [subject] */

int main(void) {
    InitMbutilExt(ZV_EUC);
    print_body_headers(ZV_EUC);
    if (print_subject("\xC5\xEC\xB5\xFE", ZV_EUC) != 0)
        return EXIT_FAILURE;
    print_quoted("caf\xE9");
    return EXIT_SUCCESS;
}
