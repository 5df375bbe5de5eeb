#include <pthread.h>

#include "zvosutil.h"

void OSInitializeCriticalSection(pthread_mutex_t* section) {
    pthread_mutex_init(section, nullptr);
}

void OSEnterCriticalSection(pthread_mutex_t* section) {
    pthread_mutex_lock(section);
}

void OSLeaveCriticalSection(pthread_mutex_t* section) {
    pthread_mutex_unlock(section);
}

void OSDeleteCriticalSection(pthread_mutex_t* section) {
    pthread_mutex_destroy(section);
}

void OSTLSAlloc(pthread_key_t* key) {
    pthread_key_create(key, nullptr);
}

void* OSTLSGetValue(pthread_key_t key) {
    return pthread_getspecific(key);
}

void OSTLSSetValue(pthread_key_t key, const void* value) {
    pthread_setspecific(key, value);
}

void OSTLSFree(pthread_key_t key) {
    pthread_key_delete(key);
}
