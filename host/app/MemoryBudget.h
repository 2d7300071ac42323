// Memory for pictures that are corrected at the same time.
#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <mutex>

/// Most bytes that correcting a picture of that size takes: 48 a pixel (a float picture in the cache, its copy, and all
/// rows of the copy at hand, where a lens bends that far) and 80 MiB. Pictures of 8 and 16 bits take less than half.
qint64 BytesToCorrect(int width, int height);

/// Bytes that the system can give without swapping; 0 if it doesn't say.
qint64 AvailableBytes();

/// Memory for several pictures at once. Threads wait in it until there is room for theirs; one picture alone is always
/// let in. Any thread.
class MemoryBudget {
public:
    /// @param bytes  for all pictures together; 0 is no limit.
    explicit MemoryBudget(qint64 bytes) : m_limitBytes(bytes) { }

    /// A picture's share, for a scope.
    class Share {
    public:
        Share(MemoryBudget *budget, qint64 bytes);
        ~Share();
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;

    private:
        MemoryBudget *m_budget;
        qint64 m_bytes;
    };

private:
    const qint64 m_limitBytes;
    std::mutex m_mutex; // of m_usedBytes
    std::condition_variable m_freed;
    qint64 m_usedBytes = 0;
};
