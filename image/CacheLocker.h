// Scoped lock of a mutex of the image cache.
#pragma once

#include <QMutex>

#include <mutex>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

/// Lock like QMutexLocker that also informs the thread sanitizer, which doesn't see how threads wait inside Qt.
class CacheLocker {
public:
    explicit CacheLocker(QMutex &mutex) : m_mutex(mutex)
    {
        m_mutex.lock();
        Acquired();
    }
    /// Tries to lock without waiting; check operator bool.
    CacheLocker(QMutex &mutex, std::try_to_lock_t) : m_mutex(mutex), m_isLocked(mutex.tryLock())
    {
        if (m_isLocked)
            Acquired();
    }
    ~CacheLocker()
    {
        if (!m_isLocked)
            return;
#if defined(__SANITIZE_THREAD__)
        __tsan_release(&m_mutex);
#endif
        m_mutex.unlock();
    }
    CacheLocker(const CacheLocker &) = delete;
    CacheLocker &operator=(const CacheLocker &) = delete;

    explicit operator bool() const
    {
        return m_isLocked;
    }

private:
    void Acquired()
    {
#if defined(__SANITIZE_THREAD__)
        __tsan_acquire(&m_mutex);
#endif
    }

    QMutex &m_mutex;
    bool m_isLocked = true;
};
