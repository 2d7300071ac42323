#include "big_tiff_view.h"

#include "core/tiff_directory.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

constexpr TiffVariant kClassic = {false}, kBig = {true};
constexpr std::size_t kHeadBytes = std::size_t(1) << 20;          // kept as it stands; our metadata is at the begin
constexpr std::uint64_t kMaxValueBytes = std::uint64_t(16) << 20; // profiles, and previews in notes, stay below
constexpr std::size_t kMaxViewBytes = std::size_t(64) << 20;
constexpr std::size_t kDirectoryBytes = 65536; // room for 3,276 fields
constexpr int kMaxDirectories = 8;             // there are four: first, EXIF, GPS, interoperability
constexpr std::uint16_t kTypeLong = 4;

using Bytes = std::vector<std::uint8_t>;

Bytes ReadBytes(const Source &source, std::uint64_t offset, std::uint64_t length)
{
    Bytes bytes(static_cast<std::size_t>(length));
    bytes.resize(source.ReadAt(offset, bytes.data(), bytes.size()));
    return bytes;
}

std::uint32_t Append(const Bytes &bytes, Bytes *view)
{
    view->resize((view->size() + 1) & ~std::size_t(1));
    const auto offset = static_cast<std::uint32_t>(view->size()); // <= kMaxViewBytes + one value
    view->insert(view->end(), bytes.begin(), bytes.end());
    return offset;
}

void SetOffset(std::uint32_t offset, TiffField *field)
{
    field->value.fill(0);
    for (std::size_t i = 0; i < 4; ++i)
        field->value[i] = static_cast<std::uint8_t>(offset >> (8 * i));
}

/// Takes the field's value into the view. False when there is no place for it in a classic file.
bool NarrowValue(const Source &source, TiffField *field, Bytes *view)
{
    const std::uint64_t bytes = TiffValueBytes(*field);
    if (bytes == 0 || bytes > kMaxValueBytes || field->type > 13) // from there on: 64-bit types
        return false;
    if (bytes <= 4)
        return true;
    if (bytes <= 8) {
        SetOffset(Append(Bytes(field->value.begin(), field->value.begin() + static_cast<std::ptrdiff_t>(bytes)), view),
                  field);
        return true;
    }
    const std::uint64_t offset = LittleEndian(field->value.data(), 8);
    if (offset <= kHeadBytes && bytes <= kHeadBytes - offset)
        return true; // in the head, where it stays
    if (view->size() + bytes > kMaxViewBytes)
        return false;
    const Bytes value = ReadBytes(source, offset, bytes);
    SetOffset(Append(value, view), field);
    return value.size() == bytes;
}

// The offset of the directory in the view; 0 when it can't be read. @p left: directories that may still be read,
// because in a damaged file they can lead in circles.
std::uint32_t NarrowDirectory(const Source &source, std::uint64_t offset, int *left, Bytes *view)
{
    TiffFields fields, narrow;
    if (--*left < 0 || !ReadDirectory(ReadBytes(source, offset, kDirectoryBytes), 0, kBig, &fields))
        return 0;
    for (TiffField &field : fields) {
        if (IsDirectoryPointer(field.tag)) {
            const std::uint64_t below = LittleEndian(field.value.data(), 8);
            SetOffset(NarrowDirectory(source, below, left, view), &field);
            field.type = kTypeLong;
            if (LittleEndian(field.value.data(), 4) != 0)
                narrow.push_back(field);
        } else if (NarrowValue(source, &field, view)) {
            narrow.push_back(field);
        }
    }
    return Append(EncodeDirectory(narrow, kClassic), view);
}

} // namespace

bool IsBigTiff(const Source &source)
{
    std::uint8_t head[4] = {};
    return source.ReadAt(0, head, sizeof head) == sizeof head && std::memcmp(head, "II\x2B\0", 4) == 0;
}

std::vector<std::uint8_t> ClassicViewOfBigTiff(const Source &source)
{
    Bytes view = ReadBytes(source, 0, std::min<std::uint64_t>(source.Size(), kHeadBytes));
    if (view.size() < kBig.HeaderBytes())
        return {};
    const std::uint64_t first = LittleEndian(view.data() + kBig.FirstDirectoryAt(), 8);
    int left = kMaxDirectories;
    const std::uint32_t offset = NarrowDirectory(source, first, &left, &view);
    if (offset == 0)
        return {};
    view[2] = 42;
    for (std::size_t i = 0; i < 4; ++i)
        view[kClassic.FirstDirectoryAt() + i] = static_cast<std::uint8_t>(offset >> (8 * i));
    return view;
}

} // namespace imagefile
