// mutex.h - the standard mutex, its lock and its condition variable, with the annotations of kernel/thread_safety.h.
#pragma once

#include "kernel/thread_safety.h"

#include <condition_variable>
#include <mutex>
#include <shared_mutex>

namespace platform::kernel {

class CAPABILITY("mutex") Mutex {
public:
    constexpr Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // Most locks are held for tens of nanoseconds, but putting a thread to sleep and waking it takes microseconds. So a
    // thread tries several times before it sleeps.
    void lock() ACQUIRE()
    {
        for (int attempt = 0; attempt < 50; ++attempt) {
            if (mutex_.try_lock())
                return;
        }
        mutex_.lock();
    }
    void unlock() RELEASE() { mutex_.unlock(); }

private:
    friend class Condition;

    std::mutex mutex_;
};

// Holds the mutex from construction to destruction, except between unlock() and lock().
class SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : lock_(mutex) {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;
    ~MutexLock() RELEASE() {}

    void lock() ACQUIRE() { lock_.lock(); }
    void unlock() RELEASE() { lock_.unlock(); }

private:
    std::unique_lock<Mutex> lock_;
};

// A mutex that is held by one thread alone, or shared by any number of threads.
class CAPABILITY("mutex") SharedMutex {
public:
    SharedMutex() = default;
    SharedMutex(const SharedMutex&) = delete;
    SharedMutex& operator=(const SharedMutex&) = delete;

    void lock() ACQUIRE() { mutex_.lock(); }
    void unlock() RELEASE() { mutex_.unlock(); }
    void lockShared() ACQUIRE_SHARED() { mutex_.lock_shared(); }
    void unlockShared() RELEASE_SHARED() { mutex_.unlock_shared(); }

private:
    std::shared_mutex mutex_;
};

class SCOPED_CAPABILITY ExclusiveLock {
public:
    explicit ExclusiveLock(SharedMutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex.lock(); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;
    ~ExclusiveLock() RELEASE() { mutex_.unlock(); }

private:
    SharedMutex& mutex_;
};

class SCOPED_CAPABILITY SharedLock {
public:
    explicit SharedLock(SharedMutex& mutex) ACQUIRE_SHARED(mutex) : mutex_(mutex) { mutex.lockShared(); }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;
    ~SharedLock() RELEASE() { mutex_.unlockShared(); }

private:
    SharedMutex& mutex_;
};

// The reverse of MutexLock: releases a mutex that the caller holds, and locks it again at the end of the block.
class SCOPED_CAPABILITY MutexUnlock {
public:
    explicit MutexUnlock(Mutex& mutex) RELEASE(mutex) : mutex_(mutex) { mutex.unlock(); }
    MutexUnlock(const MutexUnlock&) = delete;
    MutexUnlock& operator=(const MutexUnlock&) = delete;
    // On the destructor of a SCOPED_CAPABILITY class, RELEASE tells clang that the destructor undoes what the
    // constructor did. This constructor unlocks the mutex, so after the destructor clang treats the mutex as held.
    ~MutexUnlock() RELEASE() { mutex_.lock(); }

private:
    Mutex& mutex_;
};

// A wait releases the mutex, and locks it again before it returns. It can return without a notification.
class Condition {
public:
    void wait(Mutex& mutex) REQUIRES(mutex)
    {
        std::unique_lock<std::mutex> held(mutex.mutex_, std::adopt_lock);
        variable_.wait(held);
        held.release();
    }

    template <class Clock, class Duration>
    void waitUntil(Mutex& mutex, const std::chrono::time_point<Clock, Duration>& due) REQUIRES(mutex)
    {
        std::unique_lock<std::mutex> held(mutex.mutex_, std::adopt_lock);
        variable_.wait_until(held, due);
        held.release();
    }

    void notifyAll() { variable_.notify_all(); }

private:
    std::condition_variable variable_;
};

}  // namespace platform::kernel
