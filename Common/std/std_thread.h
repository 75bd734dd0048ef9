#pragma once

#include <pthread.h>

#include "Common/Export.h"

/// \file
/// Thin wrappers of POSIX threads and mutexes. All may be called from any thread.

/// Starts a thread with default attributes. It is neither joined nor detached: the caller ends it with
/// std_thread_wait or detaches it.
/// \param thread  receives the handle when the thread was started; may be null.
/// \return true when the thread was started.
KRUTEIN_API bool std_thread_create(void* (*function)(void*), void* argument, pthread_t* thread);

/// Joins the thread. \return false for a zero handle or a failed join.
KRUTEIN_API bool std_thread_wait(pthread_t thread);

/// Requests the thread's cancellation; it ends at its next cancellation point. The caller still joins it.
/// \return false for a zero handle or a refused request.
KRUTEIN_API bool std_thread_kill(pthread_t thread);

/// \{
/// pthread_mutex_init with default attributes, _lock, _unlock and _destroy. The mutex belongs to the caller.
/// \return the call's result: 0, or an error number.
KRUTEIN_API int std_thread_lock_init(pthread_mutex_t* lock);
KRUTEIN_API int std_thread_lock_enter(pthread_mutex_t* lock);
KRUTEIN_API int std_thread_lock_leave(pthread_mutex_t* lock);
KRUTEIN_API int std_thread_lock_delete(pthread_mutex_t* lock);
/// \}
