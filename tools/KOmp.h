// OpenMP: the number of threads for pixel loops, and a lock class.
#pragma once

#include <omp.h>

/// The number of threads that every parallel region of the kernels requests, and the number of cores. Both are 1 until
/// the tools module has counted the processors. Read anywhere, written only at startup.
extern int komp_num_threads;
extern int komp_num_cores;

/// Returns the calling thread's number in its parallel region, 0 outside one.
int komp_get_thread_num();

/// A non-recursive OpenMP lock, for code inside parallel regions and for the preview's running flag. Other code uses
/// QMutex or std::mutex.
class KOmpMutex {
public:
    KOmpMutex() { omp_init_lock(&m_lock); }
    ~KOmpMutex() { omp_destroy_lock(&m_lock); }
    KOmpMutex(const KOmpMutex &) = delete;
    KOmpMutex &operator=(const KOmpMutex &) = delete;

    /// Returns the lock for KOmpMutexLocker and omp_test_lock(). Still owned by this object.
    omp_lock_t *Lock() { return &m_lock; }

private:
    omp_lock_t m_lock; // 4 bytes with g++, 8 with clang: never share it between code built by both
};

/// Holds a lock for the duration of a scope.
class KOmpMutexLocker {
public:
    explicit KOmpMutexLocker(omp_lock_t *lock) : m_lock(lock) { omp_set_lock(m_lock); }
    ~KOmpMutexLocker() { omp_unset_lock(m_lock); }
    KOmpMutexLocker(const KOmpMutexLocker &) = delete;
    KOmpMutexLocker &operator=(const KOmpMutexLocker &) = delete;

private:
    omp_lock_t *m_lock;
};
