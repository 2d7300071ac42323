// Adapter from Source to LibRaw.
#pragma once

#include "core/source.h"

#include <libraw/libraw.h>

namespace imagefile {

/// Buffered stream, because LibRaw requests single bytes. The source must outlive it.
class RawStream : public LibRaw_abstract_datastream {
public:
    explicit RawStream(const Source &source) : m_source(source) { }

    int valid() override { return 1; }
    int read(void *buffer, std::size_t size, std::size_t count) override;
    int seek(INT64 offset, int whence) override;
    INT64 tell() override { return static_cast<INT64>(m_position); }
    INT64 size() override { return static_cast<INT64>(m_source.Size()); }
    int get_char() override;
    char *gets(char *text, int size) override;
    int scanf_one(const char *format, void *value) override;
    int eof() override { return m_position >= m_source.Size() ? 1 : 0; }
    void *make_jas_stream() override { return nullptr; }

private:
    static constexpr std::size_t kBufferBytes = 16384;

    const Source &m_source;
    std::uint64_t m_position = 0;
    std::uint64_t m_bufferAt = 0; // file position of the buffer's first byte
    std::size_t m_buffered = 0;
    unsigned char m_buffer[kBufferBytes] = {};
};

} // namespace imagefile
