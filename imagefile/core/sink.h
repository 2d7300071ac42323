// Where a codec writes to: a file that takes the place of its target only when whole, or a block of memory.
#pragma once

#include "status.h"

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace imagefile {

/// Bytes by position, grown by writing behind the end. One thread at a time.
class Sink {
public:
    virtual ~Sink() = default;
    Sink() = default;
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    std::uint64_t Size() const { return m_size; }
    virtual Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) = 0;
    /// Reads back what was written; @p count is less than @p length at the end. A disk that fails is
    /// GFL_ERROR_FILE_WRITE: the file under way can't become right.
    virtual Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) = 0;

protected:
    std::uint64_t m_size = 0;
};

/// A file under a temporary name beside its target, so that a failed write leaves the target as it was and no rubbish.
class FileSink : public Sink {
public:
    /// Takes the temporary file away unless Commit succeeded.
    ~FileSink() override;

    /// Symbolic links are followed: the file that they lead to is the target. GFL_ERROR_FILE_CREATE when the folder is
    /// missing or closed to us, and when the target is write-protected, a folder or a device.
    Status Create(const std::string &path);
    /// Closes the file and renames it to its target, with the permissions of the file that it replaces, and then only
    /// once it is on the disk. The last errors of a full disk show here.
    Status Commit();

    Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) override;
    Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) override;

private:
    Status CheckTarget();
    Status OpenTemporary();

    int m_file = -1;
    std::string m_target;
    std::string m_temporary; // empty when there is none (any more)
    mode_t m_mode = 0;
    bool m_replaces = false;
};

/// A block of the layer's allocator.
class MemorySink : public Sink {
public:
    ~MemorySink() override;

    /// The block, from now on the caller's.
    std::uint8_t *Take();

    Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) override;
    Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) override;

private:
    std::uint8_t *m_data = nullptr;
    std::uint64_t m_capacity = 0;
};

} // namespace imagefile
