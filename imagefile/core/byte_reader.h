// Sequential byte reader, for the formats that we parse ourselves.
#pragma once

#include "source.h"

#include <vector>

namespace imagefile {

/// Decodes a big-endian number of four bytes.
inline std::uint32_t BigEndian32(const std::uint8_t *p)
{
    return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16
        | static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}

/// Buffered reader that starts at any position. A read past the end fails, as does every later one, so callers may read
/// several values and check once.
class ByteReader {
public:
    /// The source must outlive the reader.
    explicit ByteReader(const Source &source, std::uint64_t at = 0);

    bool Failed() const { return m_failed; }
    /// Returns the position of the next byte.
    std::uint64_t Position() const { return m_pieceAt + m_next; }
    /// Returns the number of bytes from there to the end.
    std::uint64_t Remaining() const { return m_source.Size() - Position(); }

    /// Reads the next byte; 0 past the end.
    std::uint8_t Byte() { return m_next < m_piece.size() || Fetch() ? m_piece[m_next++] : std::uint8_t(0); }
    /// Reads a big-endian number of 1 to 8 bytes; 0 past the end.
    std::uint64_t Number(int bytes);
    bool Read(void *data, std::size_t size);
    bool Skip(std::uint64_t size);

private:
    bool Fetch();
    bool Fail();

    const Source &m_source;
    std::uint64_t m_pieceAt;
    std::vector<std::uint8_t> m_piece;
    std::size_t m_next = 0;
    bool m_failed = false;
};

} // namespace imagefile
