// Random-access input of a codec: a file or a block of memory.
#pragma once

#include "status.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace imagefile {

/// A readable range of bytes of fixed size. Several threads may call ReadAt.
class Source {
public:
    /// Creates an empty source: size 0.
    Source() = default;
    /// Wraps memory that the caller keeps alive.
    Source(const void *data, std::size_t size) : m_data(static_cast<const std::uint8_t *>(data)), m_size(size) { }
    ~Source();
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    /// Opens a regular file. Returns GFL_ERROR_FILE_OPEN if it is missing, not readable, or a folder or device.
    Status Open(const std::string &path);

    std::uint64_t Size() const { return m_size; }
    /// Returns the path; empty for memory.
    const std::string &Path() const { return m_path; }
    /// Returns the memory; null for a file.
    const std::uint8_t *Data() const { return m_data; }

    /// Copies up to @p length bytes, starting at @p offset, and returns their number. It is less than @p length at the
    /// end of the source, and after failures that Check reports: a disk error, or a file that became shorter than
    /// Size().
    std::size_t ReadAt(std::uint64_t offset, void *buffer, std::size_t length) const;

    /// Returns GFL_ERROR_FILE_READ once a read has failed for a reason other than the end of the file. Decoders mistake
    /// unreadable bytes for the end, and some accept truncated files: call this before using what was read.
    Status Check() const;

private:
    const std::uint8_t *m_data = nullptr;
    std::uint64_t m_size = 0;
    int m_file = -1;
    mutable std::atomic<int> m_failure{0};     // errno
    mutable std::atomic<bool> m_shrank{false}; // the file has become shorter than m_size
    std::string m_path;
};

} // namespace imagefile
