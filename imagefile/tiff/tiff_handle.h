// Adapter from sources and sinks to libtiff: one open file, its position, and its first error.
#pragma once

#include "core/sink.h"
#include "core/source.h"

#include <functional>
#include <memory>
#include <tiffio.h>

namespace imagefile {

/// Open TIFF, which the destructor closes. Nothing is ever printed. If opening or setting fields throws std::bad_alloc,
/// the handle becomes unusable; libtiff's memory for it, usually a few KB, may leak.
class TiffHandle {
public:
    TiffHandle();
    ~TiffHandle();
    TiffHandle(const TiffHandle &) = delete;
    TiffHandle &operator=(const TiffHandle &) = delete;

    /// Runs @p step, which opens a directory or sets fields, and returns its result. Throws std::bad_alloc if memory
    /// runs out: libtiff would continue without the field, or with a field that has no values.
    bool RequireMemory(const std::function<bool()> &step) const;

    /// Opens the first directory. The source must outlive the handle.
    Status OpenForReading(const Source &source);
    /// Starts an empty little-endian file, classic or BigTIFF. The sink must outlive the handle.
    Status OpenForWriting(Sink *sink, bool big);

    TIFF *Get() const { return m_tiff; }

    /// These functions open another directory; they return false if it doesn't exist or is damaged.
    bool OpenFirst() const
    {
        return RequireMemory([this] { return TIFFSetDirectory(m_tiff, 0) != 0; });
    }
    bool OpenNext() const
    {
        return RequireMemory([this] { return TIFFReadDirectory(m_tiff) != 0; });
    }
    bool OpenAt(std::uint64_t offset) const
    {
        return RequireMemory([this, offset] { return TIFFSetSubDirectory(m_tiff, offset) != 0; });
    }

    /// Returns the sink's failure if there is one, otherwise @p error with the first message from libtiff.
    Status Failure(GflError error) const;

    /// Returns the first failure of the sink. Check it last: libtiff continues after some of them and reports success.
    const Status &SinkStatus() const;

    /// Returns a field with one value, or @p missing if the file doesn't have it and TIFF defines no default.
    template <class T> T Field(std::uint32_t tag, T missing) const
    {
        T value = missing;
        return TIFFGetFieldDefaulted(m_tiff, tag, &value) ? value : missing;
    }

private:
    struct Client;
    Status Open(const char *mode);

    std::unique_ptr<Client> m_client; // at a fixed address, because libtiff keeps a pointer to it
    TIFF *m_tiff = nullptr;
};

} // namespace imagefile
