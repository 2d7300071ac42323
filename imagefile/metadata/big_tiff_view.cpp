#include "big_tiff_view.h"

#include "core/limits.h"
#include "core/tiff_directory.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

constexpr std::size_t kHeadBytes = std::size_t(1) << 20; // copied unchanged; our writer puts the metadata there
constexpr std::size_t kDirectoryBytes = 65536;           // room for 3,276 fields
constexpr std::uint16_t kTypeLong = 4;

// Fields whose loss gives a warning: XMP, IPTC, Photoshop resources, ICC profile, maker note. Other fields that exceed
// the limits describe how pixels are stored.
constexpr std::uint16_t kMetadataTags[] = {700, 33723, 34377, 34675, 37500};

Bytes ReadBytes(const Source &source, std::uint64_t offset, std::uint64_t length)
{
    Bytes bytes(static_cast<std::size_t>(length));
    bytes.resize(source.ReadAt(offset, bytes.data(), bytes.size()));
    return bytes;
}

std::uint32_t Append(const Bytes &bytes, Bytes *view)
{
    const auto offset = static_cast<std::uint32_t>(view->size()); // <= kMaxBigTiffViewBytes + one value
    view->insert(view->end(), bytes.begin(), bytes.end());
    return offset;
}

/// Builder of the classic view of a BigTIFF.
class ViewBuilder {
public:
    ViewBuilder(const Source &source, bool isBigEndian)
        : m_source(source), m_classic{false, isBigEndian}, m_big{true, isBigEndian}
    {
    }

    Bytes Make();

private:
    void SetOffset(std::uint32_t offset, TiffField *field) const;
    bool NarrowValue(TiffField *field);
    std::uint32_t NarrowDirectory(std::uint64_t offset);

    const Source &m_source;
    const TiffVariant m_classic, m_big;
    Bytes m_view;
    int m_left = kMaxMetadataDirectories; // directories left to read; those of a damaged file can form a cycle
};

void ViewBuilder::SetOffset(std::uint32_t offset, TiffField *field) const
{
    field->value.fill(0);
    m_classic.Put(offset, m_classic.OffsetBytes(), field->value.data());
}

/// Copies the field's value into the view. Returns false if a classic TIFF can't store it, or if it is too large or
/// can't be read.
bool ViewBuilder::NarrowValue(TiffField *field)
{
    const std::uint64_t bytes = TiffValueBytes(*field);
    if (bytes == 0 || bytes > kMaxBigTiffValueBytes || field->type > 13) // types above 13 are 64-bit
        return false;
    if (bytes <= 4)
        return true;
    if (bytes <= 8) {
        const auto end = field->value.begin() + static_cast<std::ptrdiff_t>(bytes);
        SetOffset(Append(Bytes(field->value.begin(), end), &m_view), field);
        return true;
    }
    const std::uint64_t offset = m_big.OffsetOf(*field);
    if (offset <= kHeadBytes && bytes <= kHeadBytes - offset) { // already copied as part of the head
        SetOffset(static_cast<std::uint32_t>(offset), field);
        return true;
    }
    if (m_view.size() + bytes > kMaxBigTiffViewBytes)
        return false;
    const Bytes value = ReadBytes(m_source, offset, bytes);
    SetOffset(Append(value, &m_view), field);
    return value.size() == bytes;
}

// Copies a directory and those below it into the view. Returns its offset in the view; 0 if it can't be read.
std::uint32_t ViewBuilder::NarrowDirectory(std::uint64_t offset)
{
    TiffFields fields, narrow;
    if (--m_left < 0 || !ReadDirectory(ReadBytes(m_source, offset, kDirectoryBytes), 0, m_big, &fields))
        return 0;
    for (TiffField &field : fields) {
        if (IsDirectoryPointer(field.tag)) {
            // Some writers use 32-bit offsets (LONG, IFD).
            const std::size_t bytes = TiffValueBytes(field) == 4 ? 4 : 8;
            const std::uint32_t below = NarrowDirectory(m_big.Number(field.value.data(), bytes));
            SetOffset(below, &field);
            field.type = kTypeLong;
            if (below != 0)
                narrow.push_back(field);
        } else if (NarrowValue(&field)) {
            narrow.push_back(field);
        } else if (std::find(std::begin(kMetadataTags), std::end(kMetadataTags), field.tag) != std::end(kMetadataTags)
                   && TiffValueBytes(field) > 0) {
            Warn(Text("damaged metadata is left out: TIFF field %u is too large or damaged", field.tag).c_str());
        }
    }
    return Append(EncodeDirectory(narrow, m_classic), &m_view);
}

Bytes ViewBuilder::Make()
{
    m_view = ReadBytes(m_source, 0, std::min<std::uint64_t>(m_source.Size(), kHeadBytes));
    if (m_view.size() < m_big.HeaderBytes())
        return {};
    const std::uint32_t offset = NarrowDirectory(m_big.Number(m_view.data() + m_big.FirstDirectoryAt(), 8));
    if (offset == 0)
        return {};
    m_classic.Put(42, 2, m_view.data() + 2);
    m_classic.Put(offset, 4, m_view.data() + m_classic.FirstDirectoryAt());
    return std::move(m_view);
}

bool ReadVariant(const Source &source, TiffVariant *variant)
{
    std::uint8_t head[4] = {};
    return source.ReadAt(0, head, sizeof head) == sizeof head && TiffVariantOf(head, variant);
}

} // namespace

bool IsBigTiff(const Source &source)
{
    TiffVariant variant = {};
    return ReadVariant(source, &variant) && variant.isBig;
}

Bytes ClassicViewOfBigTiff(const Source &source)
{
    TiffVariant variant = {};
    return ReadVariant(source, &variant) ? ViewBuilder(source, variant.isBigEndian).Make() : Bytes();
}

} // namespace imagefile
