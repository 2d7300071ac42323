// Memory limit for pictures corrected in parallel.
#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <mutex>

/// Returns the maximum number of bytes needed to correct a picture of that size: 48 per pixel (a float picture in the
/// cache, its copy, and all rows of the copy as floats, for a lens with extreme distortion) plus 80 MiB. Pictures of 8
/// and 16 bits need less than half.
qint64 BytesToCorrect(int width, int height);

/// Returns the bytes available without swapping; 0 if the system doesn't report them.
qint64 AvailableBytes();

/// Memory limit shared by several pictures. Threads wait until their picture fits; a single picture is always admitted.
/// Any thread.
class MemoryBudget {
public:
    /// @param bytes  for all pictures together; 0 means no limit.
    explicit MemoryBudget(qint64 bytes) : m_limitBytes(bytes) { }

    /// The share of one picture, released at the end of a scope.
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
    std::mutex m_mutex; // guards m_usedBytes
    std::condition_variable m_freed;
    qint64 m_usedBytes = 0;
};
