#include "source_io.h"

#include <algorithm>
#include <new>

namespace imagefile {

int SourceIo::open()
{
    m_at = 0;
    m_eof = false;
    return 0;
}

long SourceIo::read(Exiv2::byte *buffer, long count)
{
    const std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
    const std::size_t got = m_source.ReadAt(m_at, buffer, wanted);
    m_at += got;
    m_eof = got < wanted;
    return static_cast<long>(got);
}

Exiv2::DataBuf SourceIo::read(long count)
{
    // A damaged file may claim more bytes than it has.
    const auto left = static_cast<long>(m_source.Size() - std::min(m_at, m_source.Size()));
    Exiv2::DataBuf buffer(std::clamp(count, 0L, left));
    buffer.size_ = read(buffer.pData_, buffer.size_);
    m_eof = buffer.size_ < count;
    return buffer;
}

int SourceIo::getb()
{
    Exiv2::byte byte = 0;
    return read(&byte, 1) == 1 ? byte : EOF;
}

void SourceIo::transfer(Exiv2::BasicIo &)
{
    throw Exiv2::Error(Exiv2::kerFunctionNotSupported, "transfer");
}

// Like fseek: the position may be past the end, where nothing is read.
int SourceIo::seek(long offset, Position from)
{
    const long base = from == beg ? 0 : from == cur ? tell() : static_cast<long>(m_source.Size());
    long to = 0;
    if (__builtin_add_overflow(base, offset, &to) || to < 0)
        return 1;
    m_at = static_cast<std::uint64_t>(to);
    m_eof = false;
    return 0;
}

Exiv2::byte *SourceIo::mmap(bool)
{
    if (!m_map.Data() && !m_map.Open(m_source))
        throw std::bad_alloc();
    return m_map.Data();
}

} // namespace imagefile
