#include "exif_carry.h"

#include "core/memory_check.h"
#include "core/tiff_directory.h"
#include "note_offset.h"

#include <algorithm>
#include <iterator>

namespace imagefile {

namespace {

// Tags of the first directory that describe how the file stores its pixels, or that contain blocks that are copied
// separately. In this order: most tags from subfile type (254) to page number (297), transfer function, predictor,
// color map, halftones, tiles, sub-directories, inks, extra samples, sample format, JPEG tables, YCbCr, XMP, color
// filter, IPTC, Photoshop resources, directory pointers, ICC, Photoshop layers, and the DNG range.
struct TagRange {
    std::uint16_t first, last;
};
constexpr TagRange kStructure[] = {
    {254, 259},     {262, 266},     {273, 273},     {277, 281},     {284, 284},     {288, 293},
    {297, 297},     {300, 301},     {317, 317},     {320, 347},     {400, 405},     {433, 437},
    {512, 532},     {559, 559},     {700, 700},     {33421, 33422}, {33723, 33723}, {34377, 34377},
    {34665, 34665}, {34675, 34675}, {34853, 34853}, {37724, 37724}, {50706, 51125},
};

constexpr std::uint16_t kMakerNote = 37500;

bool IsStructure(std::uint16_t tag)
{
    return std::any_of(std::begin(kStructure), std::end(kStructure),
                       [tag](const TagRange &range) { return tag >= range.first && tag <= range.last; });
}

bool BeginsWithAny(const std::string &group, std::initializer_list<const char *> begins)
{
    return std::any_of(begins.begin(), begins.end(),
                       [&group](const char *begin) { return group.rfind(begin, 0) == 0; });
}

// Returns whether Exiv2 decoded the value from a maker note. This includes the group "MakerNote", which contains the
// note's offset and byte order.
bool IsDecodedNote(const Exiv2::Exifdatum &datum)
{
    const std::string group = datum.groupName();
    return group != "Image" && group != "Photo" && group != "GPSInfo" && group != "Iop";
}

// Returns whether the datum has a TIFF 6.0 type or is a directory offset, and is not empty. Other programs reject a
// whole directory if it contains anything else.
bool IsReadable(const Exiv2::Exifdatum &datum)
{
    return datum.typeId() >= Exiv2::unsignedByte && datum.typeId() <= Exiv2::tiffIfd && datum.count() > 0;
}

bool IsSame(const Exiv2::Exifdatum &a, const Exiv2::Exifdatum &b)
{
    return a.key() == b.key() && a.typeId() == b.typeId() && ValueBytes(a) == ValueBytes(b);
}

std::vector<const Exiv2::Exifdatum *> MakerNoteValues(const Exiv2::ExifData &exif)
{
    std::vector<const Exiv2::Exifdatum *> values;
    for (const Exiv2::Exifdatum &datum : exif)
        if (IsDecodedNote(datum) && IsCarried(datum) && datum.key() != kNoteOffsetKey)
            values.push_back(&datum);
    std::stable_sort(values.begin(), values.end(),
                     [](const Exiv2::Exifdatum *a, const Exiv2::Exifdatum *b) { return a->key() < b->key(); });
    return values;
}

// Returns whether the EXIF in @p written, once encoded, reads back with the maker note values of @p original.
bool KeepsMakerNote(const Exiv2::ExifData &written, const Exiv2::ExifData &original)
{
    Exiv2::ExifData read;
    try {
        const Bytes file = EncodeExif(written);
        DecodeExifTiff(file.data(), file.size(), &read);
    } catch (const Exiv2::AnyError &) {
        return false;
    }
    const auto now = MakerNoteValues(read), before = MakerNoteValues(original);
    return std::equal(now.begin(), now.end(), before.begin(), before.end(),
                      [](const Exiv2::Exifdatum *a, const Exiv2::Exifdatum *b) { return IsSame(*a, *b); });
}

constexpr char kNoteKey[] = "Exif.Photo.MakerNote";
constexpr char kOrderKey[] = "Exif.MakerNote.ByteOrder";

const Exiv2::Exifdatum *Find(const Exiv2::ExifData &exif, const char *key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found != exif.end() && found->count() > 0 ? &*found : nullptr;
}

// Returns the offset of the maker note; 0 if it is unknown, within the first bytes of the EXIF, or too large for
// formats that limit the size of the EXIF, such as JPEG.
std::uint32_t NoteOffsetOf(const Exiv2::ExifData &exif)
{
    constexpr std::int64_t kFirst = 16, kLast = 32768;
    const Exiv2::Exifdatum *datum = Find(exif, kNoteOffsetKey);
    const std::int64_t offset = datum ? datum->toLong() : 0;
    return offset >= kFirst && offset <= kLast ? static_cast<std::uint32_t>(offset) : 0;
}

// Returns the EXIF with the note's original bytes, to be written at offset @p offset, or at any offset if that is 0.
Exiv2::ExifData WithOriginalNote(const Exiv2::ExifData &withoutDecoded, std::uint32_t offset)
{
    Exiv2::ExifData exif = withoutDecoded;
    if (offset > 0)
        exif[kNoteOffsetKey] = offset;
    return exif;
}

bool CannotBeRebuilt(const Exiv2::ExifData &exif, const Bytes &note, std::uint32_t offset)
{
    const Exiv2::Exifdatum *order = Find(exif, kOrderKey);
    return NeedsItsOffset(note, offset, order && WholeText(*order) == "MM");
}

Bytes EncodeAnywhere(const Exiv2::ExifData &exif)
{
    Exiv2::MemIo io;
    Exiv2::TiffParser::encode(io, nullptr, 0, Exiv2::littleEndian, exif, Exiv2::IptcData(), Exiv2::XmpData());
    io.seek(0, Exiv2::BasicIo::beg);
    const Exiv2::DataBuf bytes = io.read(static_cast<long>(io.size()));
    return Bytes(bytes.pData_, bytes.pData_ + bytes.size_);
}

} // namespace

bool IsCarried(const Exiv2::Exifdatum &datum)
{
    const std::string group = datum.groupName();
    if (!IsDecodedNote(datum) && !IsReadable(datum))
        return false;
    if (group == "Image")
        return !IsStructure(datum.tag());
    if (group == "Photo")
        return !IsDirectoryPointer(datum.tag());
    // Directories of other pictures in the same file are not copied.
    return !BeginsWithAny(group, {"Thumbnail", "SubImage", "SubThumb", "Image2", "Image3", "PanasonicRaw", "Mpf"});
}

bool IsOfMakerNote(const Exiv2::Exifdatum &datum)
{
    return IsDecodedNote(datum) || (datum.groupName() == "Photo" && datum.tag() == kMakerNote);
}

Bytes EncodeExif(const Exiv2::ExifData &exif)
{
    if (exif.empty())
        return {};
    const Exiv2::Exifdatum *note = Find(exif, kNoteKey);
    const std::uint32_t offset = NoteOffsetOf(exif);
    if (!note || offset == 0)
        return EncodeAnywhere(exif);
    Exiv2::ExifData rest = exif;
    rest.erase(rest.findKey(Exiv2::ExifKey(kNoteOffsetKey)));
    const Bytes placeholder = NotePlaceholder();
    const Exiv2::DataValue value(placeholder.data(), static_cast<long>(placeholder.size()));
    rest[kNoteKey] = value;
    const Bytes placed = WithNoteAt(EncodeAnywhere(rest), ValueBytes(*note), offset);
    return placed.empty() ? EncodeAnywhere(exif) : placed;
}

Exiv2::ExifData ExifToWrite(const Exiv2::ExifData &exif)
{
    Exiv2::ExifData rebuilt, withoutDecoded;
    for (const Exiv2::Exifdatum &datum : exif) {
        if (!IsCarried(datum) || !IsReadable(datum) || datum.groupName() == "MakerNote")
            continue;
        rebuilt.add(datum);
        if (!IsDecodedNote(datum))
            withoutDecoded.add(datum);
    }
    const Exiv2::Exifdatum *note = Find(withoutDecoded, kNoteKey);
    if (!note)
        return rebuilt;
    const Bytes bytes = ValueBytes(*note);
    const bool keepsAnywhere = KeepsMakerNote(withoutDecoded, exif);
    if (keepsAnywhere && IsMovableNote(bytes))
        return withoutDecoded;
    const std::uint32_t offset = NoteOffsetOf(exif);
    const Exiv2::ExifData placed = WithOriginalNote(withoutDecoded, offset);
    if (offset > 0 && (KeepsMakerNote(placed, exif) || CannotBeRebuilt(exif, bytes, offset)))
        return placed;
    return keepsAnywhere ? withoutDecoded : rebuilt;
}

} // namespace imagefile
