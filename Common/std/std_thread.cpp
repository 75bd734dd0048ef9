#include "Common/std/std_thread.h"

bool std_thread_create(void* (*function)(void*), void* argument, pthread_t* thread) {
    pthread_t handle{};
    if (pthread_create(&handle, nullptr, function, argument) != 0) return false;
    if (handle == pthread_t{}) return false;
    if (thread != nullptr) *thread = handle;
    return true;
}

bool std_thread_wait(pthread_t thread) {
    return thread != pthread_t{} && pthread_join(thread, nullptr) == 0;
}

bool std_thread_kill(pthread_t thread) {
    return thread != pthread_t{} && pthread_cancel(thread) == 0;
}

int std_thread_lock_init(pthread_mutex_t* lock) {
    return pthread_mutex_init(lock, nullptr);
}

int std_thread_lock_enter(pthread_mutex_t* lock) {
    return pthread_mutex_lock(lock);
}

int std_thread_lock_leave(pthread_mutex_t* lock) {
    return pthread_mutex_unlock(lock);
}

int std_thread_lock_delete(pthread_mutex_t* lock) {
    return pthread_mutex_destroy(lock);
}
