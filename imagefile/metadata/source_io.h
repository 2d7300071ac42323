// Adapter from Source to Exiv2.
#pragma once

#include "metadata_map.h"

#include <exiv2/exiv2.hpp>

namespace imagefile {

/// Read-only view of a file that is already open. Exiv2's FileIo would reopen the file by name, which may by then refer
/// to another file, and map TIFFs, which crashes if the file shrinks. Source::Check reports disk failures.
class SourceIo : public Exiv2::BasicIo {
public:
    /// The source must outlive the object.
    explicit SourceIo(const Source &source) : m_source(source) { }

    int open() override;
    int close() override { return 0; }
    long write(const Exiv2::byte *, long) override { return 0; }
    long write(Exiv2::BasicIo &) override { return 0; }
    int putb(Exiv2::byte) override { return EOF; }
    Exiv2::DataBuf read(long count) override;
    long read(Exiv2::byte *buffer, long count) override;
    int getb() override;
    void transfer(Exiv2::BasicIo &) override;
    int seek(long offset, Position from) override;
    /// See MetadataMap. Throws std::bad_alloc.
    Exiv2::byte *mmap(bool isWriteable) override;
    int munmap() override { return 0; }
    long tell() const override { return static_cast<long>(m_at); }
    std::size_t size() const override { return m_source.Size(); }
    bool isopen() const override { return true; }
    int error() const override { return m_source.Check() ? 0 : 1; }
    bool eof() const override { return m_eof; }
    std::string path() const override { return m_source.Path(); }

private:
    const Source &m_source;
    MetadataMap m_map;
    std::uint64_t m_at = 0;
    bool m_eof = false;
};

} // namespace imagefile
