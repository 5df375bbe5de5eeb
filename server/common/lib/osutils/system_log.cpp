// The checked form of syslog() ends the process at a format that counts with %n or, as translations
// do, leaves an argument out.
#undef _FORTIFY_SOURCE
#include <syslog.h>

#include "osutils.h"

void OSLogError(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                intptr_t value4, intptr_t value5) {
    syslog(LOG_ERR, format, value1, value2, value3, value4, value5);
}

void OSLogError2(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                 intptr_t value4, intptr_t value5) {
    syslog(LOG_ERR, format, value1, value2, value3, value4, value5);
}

void OSLogError3(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                 intptr_t value4) {
    syslog(LOG_ERR, format, value1, value2, value3, value4);
}

void OSLogErrorWithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                        intptr_t value4, int, intptr_t value5) {
    syslog(LOG_ERR, format, value1, value2, value3, value4, value5);
}

void OSLogError2WithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3,
                         intptr_t value4, int, intptr_t value5) {
    syslog(LOG_ERR, format, value1, value2, value3, value4, value5);
}

void OSLogError3WithType(const char* format, intptr_t value1, intptr_t value2, intptr_t value3, int,
                         intptr_t value4) {
    syslog(LOG_ERR, format, value1, value2, value3, value4);
}

void OSLogString(const char* text) {
    syslog(LOG_ERR, "%s", text);
}

void OSLogStringWithType(const char* text, int) {
    syslog(LOG_ERR, "%s", text);
}
