// thread_safety.h - annotations that say which mutex guards which data. With -Wthread-safety, clang reports a use of
// guarded data, or a call of an annotated function, without the mutex. Other compilers ignore the annotations.
//
// The mutexes to use with them are in kernel/mutex.h. Put an annotation after the declaration that it describes:
//
//     int count_ GUARDED_BY(mutex_) = 0;
//     void add(int more) REQUIRES(mutex_);
#pragma once

#if defined(__clang__)
#define THREAD_SAFETY_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define THREAD_SAFETY_ATTRIBUTE(attribute)
#endif

// On a class: its objects are mutexes; `name` appears in warnings.
#define CAPABILITY(name) THREAD_SAFETY_ATTRIBUTE(capability(name))
// On a class: its constructor locks a mutex and its destructor unlocks it, or the reverse.
#define SCOPED_CAPABILITY THREAD_SAFETY_ATTRIBUTE(scoped_lockable)

// On data: the data may be used only while the mutex is held. PT_GUARDED_BY guards the data that a pointer points to,
// and not the pointer itself.
#define GUARDED_BY(mutex) THREAD_SAFETY_ATTRIBUTE(guarded_by(mutex))
#define PT_GUARDED_BY(mutex) THREAD_SAFETY_ATTRIBUTE(pt_guarded_by(mutex))

// On a function. REQUIRES: the caller must hold the mutex. EXCLUDES: the caller must not hold it. ACQUIRE: the function
// locks the mutex. RELEASE: the function unlocks it. TRY_ACQUIRE: the function locks it if the result equals the first
// argument. With _SHARED the mutex is held shared, so other threads can hold it shared at the same time.
// RETURN_CAPABILITY: the function returns the mutex.
#define REQUIRES(...) THREAD_SAFETY_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) THREAD_SAFETY_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) THREAD_SAFETY_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) THREAD_SAFETY_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ACQUIRE_SHARED(...) THREAD_SAFETY_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define RELEASE_SHARED(...) THREAD_SAFETY_ATTRIBUTE(release_shared_capability(__VA_ARGS__))
#define REQUIRES_SHARED(...) THREAD_SAFETY_ATTRIBUTE(requires_shared_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) THREAD_SAFETY_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define RETURN_CAPABILITY(mutex) THREAD_SAFETY_ATTRIBUTE(lock_returned(mutex))

// On a function: clang doesn't check this function. A comment at the function says why the function is correct.
#define NO_THREAD_SAFETY_ANALYSIS THREAD_SAFETY_ATTRIBUTE(no_thread_safety_analysis)
