// OpenMP: how many threads the pixel loops use, and its lock as an object.
#pragma once

#include <omp.h>

/// Threads that every parallel region of the kernels asks for, and cores of the machine; both are 1 until the tools
/// module has counted the processors. Read anywhere, written only at start-up.
extern int komp_num_threads;
extern int komp_num_cores;

/// Number of the calling thread within its parallel region, 0 outside of one.
int komp_get_thread_num();

/// An OpenMP lock, for code inside parallel regions, and the preview's running flag; everything else uses QMutex. Not
/// recursive.
class KOmpMutex {
public:
    KOmpMutex() { omp_init_lock(&m_lock); }
    ~KOmpMutex() { omp_destroy_lock(&m_lock); }
    KOmpMutex(const KOmpMutex &) = delete;
    KOmpMutex &operator=(const KOmpMutex &) = delete;

    /// The lock itself, for KOmpMutexLocker and omp_test_lock(). Stays owned by this object.
    omp_lock_t *Lock() { return &m_lock; }

private:
    omp_lock_t m_lock; // 4 bytes under g++, 8 under clang: never shared between code of both
};

/// Holds a lock for the length of a scope.
class KOmpMutexLocker {
public:
    explicit KOmpMutexLocker(omp_lock_t *lock) : m_lock(lock) { omp_set_lock(m_lock); }
    ~KOmpMutexLocker() { omp_unset_lock(m_lock); }
    KOmpMutexLocker(const KOmpMutexLocker &) = delete;
    KOmpMutexLocker &operator=(const KOmpMutexLocker &) = delete;

private:
    omp_lock_t *m_lock;
};
