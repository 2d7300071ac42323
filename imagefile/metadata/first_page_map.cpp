#include "first_page_map.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace imagefile {

namespace {

constexpr std::size_t kPointerBytes = 4;

// Where the first directory tells of the next one; 0 when there is none.
std::uint64_t NextDirectoryAt(const Source &source)
{
    std::uint8_t head[8] = {}, count[2] = {}, next[kPointerBytes] = {};
    source.ReadAt(0, head, sizeof head);
    const bool isBig = std::memcmp(head, "MM\0*", 4) == 0;
    if (!isBig && std::memcmp(head, "II*\0", 4) != 0)
        return 0;
    const auto number = [isBig](const std::uint8_t *p, std::size_t bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value = value << 8 | p[isBig ? i : bytes - 1 - i];
        return value;
    };
    const std::uint64_t first = number(head + 4, 4);
    source.ReadAt(first, count, sizeof count);
    const std::uint64_t at = first + sizeof count + 12 * number(count, sizeof count);
    return source.ReadAt(at, next, kPointerBytes) == kPointerBytes && number(next, kPointerBytes) != 0 ? at : 0;
}

} // namespace

FirstPageMap::~FirstPageMap()
{
    if (m_data)
        ::munmap(m_data, m_size);
}

void FirstPageMap::Open(const Source &source)
{
    const std::uint64_t at = source.Path().empty() ? 0 : NextDirectoryAt(source);
    const int file = at > 0 ? ::open(source.Path().c_str(), O_RDONLY | O_CLOEXEC) : -1;
    if (file < 0)
        return;
    // Private: what is changed stays in this process.
    void *data =
        ::mmap(nullptr, source.Size(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_NORESERVE, file, /*offset=*/0);
    ::close(file);
    if (data == MAP_FAILED)
        return;
    m_data = static_cast<std::uint8_t *>(data);
    m_size = source.Size();
    std::fill_n(m_data + at, kPointerBytes, std::uint8_t(0));
}

} // namespace imagefile
