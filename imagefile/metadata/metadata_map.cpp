#include "metadata_map.h"

#include "core/bytes.h"
#include "core/limits.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>

namespace imagefile {

namespace {

// Always read: cameras put their metadata, and the data that maker notes point to, in the first few megabytes.
constexpr std::uint64_t kHeadBytes = std::uint64_t(4) << 20;
// Extra bytes read after a maker note, whose length may be understated.
constexpr std::uint64_t kNoteMargin = std::uint64_t(256) << 10;
constexpr std::uint16_t kSubDirectories = 330, kMakerNote = 37500;

// Also true for raw files with a different version number in the header: "IIRO", "IIU\0".
bool IsTiffLike(const std::uint8_t *head)
{
    const bool hasOrder = std::memcmp(head, "II", 2) == 0 || std::memcmp(head, "MM", 2) == 0;
    return hasOrder && std::memcmp(head + 6, "HEAP", 4) != 0; // CIFF has its directory at the end
}

} // namespace

MetadataMap::~MetadataMap()
{
    if (m_data)
        ::munmap(m_data, m_size);
}

bool MetadataMap::Open(const Source &source)
{
    std::uint8_t head[10] = {};
    m_size = std::max<std::uint64_t>(source.Size(), 1);
    void *data = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (data == MAP_FAILED)
        return false;
    m_data = static_cast<std::uint8_t *>(data);
    m_budget = kMaxMappedBytes;
    m_left = kMaxTiffDirectories;
    source.ReadAt(0, head, sizeof head);
    if (!IsTiffLike(head)) {
        Read(source, 0, source.Size());
        return true;
    }
    Read(source, 0, kHeadBytes);
    m_variant = {false, head[0] == 'M'};
    const std::uint64_t first = m_variant.Number(head + 4, 4);
    ReadDirectoryTree(source, first);
    if (m_variant.Number(head + 2, 2) == 42)
        CutNextDirectory(first);
    return true;
}

void MetadataMap::Read(const Source &source, std::uint64_t offset, std::uint64_t length)
{
    if (offset >= source.Size())
        return;
    length = std::min({length, source.Size() - offset, m_budget});
    if (offset + length <= kHeadBytes && m_budget < kMaxMappedBytes)
        return; // already read
    m_budget -= source.ReadAt(offset, m_data + offset, length);
}

void MetadataMap::ReadDirectoryTree(const Source &source, std::uint64_t offset)
{
    constexpr std::uint64_t kLongest = 65536; // bytes of a directory with its count and the next one's offset
    if (--m_left < 0 || offset >= source.Size())
        return;
    Read(source, offset, kLongest);
    const std::uint64_t length = std::min(kLongest, source.Size() - offset);
    TiffFields fields;
    if (!ReadDirectory(Bytes(m_data + offset, m_data + offset + length), 0, m_variant, &fields))
        return;
    for (const TiffField &field : fields)
        ReadField(source, field);
}

void MetadataMap::ReadField(const Source &source, const TiffField &field)
{
    const std::uint64_t bytes = TiffValueBytes(field), offset = m_variant.OffsetOf(field);
    if (IsDirectoryPointer(field.tag) || (field.tag == kSubDirectories && bytes == 4))
        return ReadDirectoryTree(source, offset);
    if (bytes <= 4)
        return;
    Read(source, offset, bytes + (field.tag == kMakerNote ? kNoteMargin : 0));
    if (field.tag != kSubDirectories)
        return;
    for (std::uint64_t at = offset; at + 4 <= offset + bytes && at + 4 <= source.Size() && m_left > 0; at += 4)
        ReadDirectoryTree(source, m_variant.Number(m_data + at, 4));
}

void MetadataMap::CutNextDirectory(std::uint64_t first)
{
    if (m_size < 2 || first > m_size - 2)
        return;
    const std::uint64_t next = first + 2 + 12 * m_variant.Number(m_data + first, 2);
    if (next <= m_size && m_size - next >= 4)
        std::fill_n(m_data + next, 4, std::uint8_t(0));
}

} // namespace imagefile
