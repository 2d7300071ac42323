// Destinations of a codec's output: a file that replaces its target only when complete, or a block of memory.
#pragma once

#include "status.h"

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace imagefile {

/// Byte storage accessed by position; writes past the end extend it. For one thread at a time.
class Sink {
public:
    virtual ~Sink() = default;
    Sink() = default;
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    std::uint64_t Size() const { return m_size; }
    virtual Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) = 0;
    /// Reads back written bytes; @p count is less than @p length at the end. A disk error gives GFL_ERROR_FILE_WRITE,
    /// because the file can't be completed.
    virtual Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) = 0;

protected:
    std::uint64_t m_size = 0;
};

/// Sets whether the caller will sync the files that this thread creates, even those that replace no existing file. If
/// so, their data is flushed in the background while more is written.
void SetSyncedByCaller(bool isSynced);

/// A temporary file next to its target, so that a failed write neither changes the target nor leaves stray files.
class FileSink : public Sink {
public:
    /// Removes the temporary file unless Commit succeeded.
    ~FileSink() override;

    /// Creates the temporary file. Follows symbolic links: the file that they point to is the target. Returns
    /// GFL_ERROR_FILE_CREATE if the folder is missing or not writable, or if the target is write-protected, a folder or
    /// a device.
    Status Create(const std::string &path);
    /// Closes the file and renames it to the target's name. If the target exists, first copies its permissions and
    /// syncs the new file to disk. A full disk may be reported only here.
    Status Commit();

    Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) override;
    Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) override;

private:
    Status CheckTarget();
    Status OpenTemporary();
    void StartFlush();

    int m_file = -1;
    std::string m_target;
    std::string m_temporary; // empty if there is none
    mode_t m_mode = 0;
    bool m_replaces = false;
    bool m_flushesEarly = false;
    std::uint64_t m_flushed = 0; // flushing has begun for the file's first m_flushed bytes
};

/// A block from the layer's allocator.
class MemorySink : public Sink {
public:
    ~MemorySink() override;

    /// Returns the block, which the caller then owns.
    std::uint8_t *Take();

    Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) override;
    Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) override;

private:
    std::uint8_t *m_data = nullptr;
    std::uint64_t m_capacity = 0;
};

} // namespace imagefile
