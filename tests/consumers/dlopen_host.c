/* The README's host, but it finds the library and its functions at run time. */
#include <dlfcn.h>
#include <jaconv.h>
#include <mbutil.h>
#include <zvutil_version.h>

#define SONAME_OF(major) "libzvutil.so." #major
#define SONAME(major) SONAME_OF(major)
#define FUNCTION(name) __typeof__(name)* const name##_ = (__typeof__(name)*)dlsym(library, #name)

int main(void) {
    void* library = dlopen(SONAME(ZVUTIL_VERSION_MAJOR), RTLD_NOW);
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    FUNCTION(InitMbutilExt);
    FUNCTION(shift2eucx);
    FUNCTION(convertSubjectForMail);
    char euc[32], subject[256];

    InitMbutilExt_(ZV_EUC);
    shift2eucx_("\x93\x8C\x8B\x9E", euc);
    convertSubjectForMail_(subject, euc, ZV_JIS, ZV_EUC);
    printf("%s\nSubject: %s\n", euc, subject);
    return dlclose(library);
}
