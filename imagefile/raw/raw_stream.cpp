#include "raw_stream.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace imagefile {

int RawStream::read(void *buffer, std::size_t size, std::size_t count)
{
    if (size == 0 || count > m_source.Size() / size + 1) // limit longer requests to the available bytes
        count = size == 0 ? 0 : static_cast<std::size_t>(m_source.Size() / size + 1);
    const std::size_t wanted = size * count;
    std::size_t done = 0;
    if (m_position >= m_bufferAt && m_position < m_bufferAt + m_buffered) {
        const auto at = static_cast<std::size_t>(m_position - m_bufferAt);
        done = std::min(wanted, m_buffered - at);
        std::memcpy(buffer, m_buffer + at, done);
    }
    if (done < wanted && wanted - done < kBufferBytes / 2) { // refill the buffer for small reads
        m_bufferAt = m_position + done;
        m_buffered = m_source.ReadAt(m_bufferAt, m_buffer, kBufferBytes);
        const std::size_t more = std::min(wanted - done, m_buffered);
        std::memcpy(static_cast<char *>(buffer) + done, m_buffer, more);
        done += more;
    } else if (done < wanted) {
        done += m_source.ReadAt(m_position + done, static_cast<char *>(buffer) + done, wanted - done);
    }
    m_position += done;
    return size == 0 ? 0 : static_cast<int>(done / size);
}

int RawStream::seek(INT64 offset, int whence)
{
    const auto end = static_cast<INT64>(m_source.Size());
    const INT64 base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? static_cast<INT64>(m_position) : end;
    INT64 target = 0;
    if (__builtin_add_overflow(base, offset, &target))
        return -1;
    m_position = static_cast<std::uint64_t>(std::clamp<INT64>(target, 0, end));
    return 0;
}

int RawStream::get_char()
{
    unsigned char byte = 0;
    return read(&byte, 1, 1) == 1 ? byte : -1;
}

// Reads a line, like fgets.
char *RawStream::gets(char *text, int size)
{
    int length = 0;
    while (length + 1 < size) {
        const int byte = get_char();
        if (byte < 0)
            break;
        text[length++] = static_cast<char>(byte);
        if (byte == '\n')
            break;
    }
    if (size < 1 || length == 0)
        return nullptr;
    text[length] = '\0';
    return text;
}

// Reads one number and the whitespace character after it.
int RawStream::scanf_one(const char *format, void *value)
{
    char text[64];
    std::size_t length = 0;
    int byte = get_char();
    while (byte > 0 && std::isspace(byte))
        byte = get_char();
    for (; byte > 0 && !std::isspace(byte) && length + 1 < sizeof text; byte = get_char())
        text[length++] = static_cast<char>(byte);
    text[length] = '\0';
    return length > 0 ? std::sscanf(text, format, value) : EOF;
}

} // namespace imagefile
