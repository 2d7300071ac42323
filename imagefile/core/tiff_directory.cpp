#include "tiff_directory.h"
#include "limits.h"

#include <algorithm>

namespace imagefile {

namespace {

constexpr TiffVariant kLittleClassic = {false};

// Bytes of one value by field type, 0 to 18; 0 for types that don't exist.
constexpr std::uint8_t kTypeBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

void Append(std::uint64_t number, std::size_t bytes, TiffVariant variant, std::vector<std::uint8_t> *out)
{
    out->resize(out->size() + bytes);
    variant.Put(number, bytes, out->data() + out->size() - bytes);
}

} // namespace

std::uint64_t TiffVariant::Number(const std::uint8_t *data, std::size_t bytes) const
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        number = number << 8 | data[isBigEndian ? i : bytes - 1 - i];
    return number;
}

void TiffVariant::Put(std::uint64_t number, std::size_t bytes, std::uint8_t *data) const
{
    for (std::size_t i = 0; i < bytes; ++i)
        data[isBigEndian ? bytes - 1 - i : i] = static_cast<std::uint8_t>(number >> (8 * i));
}

bool TiffVariantOf(const std::uint8_t *head, TiffVariant *variant)
{
    const bool isBigEndian = head[0] == 'M' && head[1] == 'M';
    if (!isBigEndian && (head[0] != 'I' || head[1] != 'I'))
        return false;
    *variant = {false, isBigEndian};
    const std::uint64_t version = variant->Number(head + 2, 2);
    variant->isBig = version == 43;
    return version == 42 || version == 43;
}

std::uint64_t TiffValueBytes(const TiffField &field)
{
    const std::uint64_t each = field.type < std::size(kTypeBytes) ? kTypeBytes[field.type] : 0;
    return each * std::min<std::uint64_t>(field.count, UINT32_MAX); // <= 2^35
}

bool IsDirectoryPointer(std::uint16_t tag)
{
    return tag == 34665 || tag == 34853 || tag == 40965; // EXIF, GPS, interoperability
}

bool ReadDirectory(const std::vector<std::uint8_t> &file, std::uint64_t offset, TiffVariant variant, TiffFields *fields)
{
    if (offset > file.size() || file.size() - offset < variant.CountBytes())
        return false;
    const std::uint8_t *p = file.data() + offset;
    const std::uint64_t count = variant.Number(p, variant.CountBytes());
    const std::uint64_t left = file.size() - offset - variant.CountBytes();
    if (count > kMaxTiffFields || count * variant.FieldBytes() > left)
        return false;
    p += variant.CountBytes();
    for (std::uint64_t i = 0; i < count; ++i, p += variant.FieldBytes()) {
        TiffField field = {static_cast<std::uint16_t>(variant.Number(p, 2)),
                           static_cast<std::uint16_t>(variant.Number(p + 2, 2)),
                           variant.Number(p + 4, variant.OffsetBytes()),
                           {}};
        std::copy_n(p + 4 + variant.OffsetBytes(), variant.OffsetBytes(), field.value.begin());
        fields->push_back(field);
    }
    return true;
}

std::vector<std::uint8_t> EncodeDirectory(const TiffFields &fields, TiffVariant variant)
{
    std::vector<std::uint8_t> bytes;
    Append(fields.size(), variant.CountBytes(), variant, &bytes);
    for (const TiffField &field : fields) {
        Append(field.tag, 2, variant, &bytes);
        Append(field.type, 2, variant, &bytes);
        Append(field.count, variant.OffsetBytes(), variant, &bytes);
        bytes.insert(bytes.end(), field.value.begin(),
                     field.value.begin() + static_cast<std::ptrdiff_t>(variant.OffsetBytes()));
    }
    Append(0, variant.OffsetBytes(), variant, &bytes); // no next directory
    return bytes;
}

bool WidenField(const std::vector<std::uint8_t> &classic, TiffField *field)
{
    const std::uint64_t bytes = TiffValueBytes(*field);
    if (bytes <= 4 || bytes > 8)
        return true; // already in the field, or still an offset, whose upper half is zero
    const std::uint64_t offset = kLittleClassic.OffsetOf(*field);
    if (offset > classic.size() || classic.size() - offset < bytes)
        return false;
    std::copy_n(classic.data() + offset, bytes, field->value.begin());
    return true;
}

} // namespace imagefile
