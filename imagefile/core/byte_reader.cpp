#include "byte_reader.h"

#include <algorithm>

namespace imagefile {

namespace {

constexpr std::size_t kPieceBytes = 65536;

} // namespace

ByteReader::ByteReader(const Source &source, std::uint64_t at)
    : m_source(source), m_pieceAt(std::min(at, source.Size())), m_failed(at > source.Size())
{
}

bool ByteReader::Fail()
{
    m_failed = true;
    m_pieceAt = m_source.Size();
    m_piece.clear();
    m_next = 0;
    return false;
}

bool ByteReader::Fetch()
{
    m_pieceAt += m_piece.size();
    m_next = 0;
    m_piece.resize(kPieceBytes);
    m_piece.resize(m_source.ReadAt(m_pieceAt, m_piece.data(), kPieceBytes));
    return m_piece.empty() ? Fail() : true;
}

std::uint64_t ByteReader::Number(int bytes)
{
    std::uint64_t number = 0;
    for (int i = 0; i < bytes; ++i)
        number = number << 8 | Byte();
    return m_failed ? 0 : number;
}

bool ByteReader::Read(void *data, std::size_t size)
{
    auto *out = static_cast<std::uint8_t *>(data);
    while (size > 0) {
        if (m_next == m_piece.size() && !Fetch())
            return false;
        const std::size_t count = std::min(size, m_piece.size() - m_next);
        out = std::copy_n(m_piece.begin() + static_cast<std::ptrdiff_t>(m_next), count, out);
        m_next += count;
        size -= count;
    }
    return !m_failed;
}

bool ByteReader::Skip(std::uint64_t size)
{
    if (m_failed || size > Remaining())
        return Fail();
    const std::uint64_t to = Position() + size;
    if (to <= m_pieceAt + m_piece.size()) {
        m_next = static_cast<std::size_t>(to - m_pieceAt);
        return true;
    }
    m_pieceAt = to;
    m_piece.clear();
    m_next = 0;
    return true;
}

} // namespace imagefile
