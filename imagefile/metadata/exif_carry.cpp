#include "exif_carry.h"

#include "core/tiff_directory.h"

#include <algorithm>
#include <iterator>

namespace imagefile {

namespace {

// Tags of a first directory that describe how this one file stores its pixels, or that stand for blocks which travel on
// their own: subfile type (254) to page number (297), transfer function, predictor, colour map, halftones, tiles,
// sub-directories, inks, extra samples, sample format, JPEG tables, YCbCr, XMP, colour filter, IPTC, Photoshop
// resources, directory pointers, ICC, Photoshop layers, and the DNG range.
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

// A value that Exiv2 found inside a maker note. The group "MakerNote" tells of the note's place and byte order.
bool IsDecodedNote(const Exiv2::Exifdatum &datum)
{
    const std::string group = datum.groupName();
    return group != "Image" && group != "Photo" && group != "GPSInfo" && group != "Iop";
}

std::vector<std::uint8_t> ValueBytes(const Exiv2::Exifdatum &datum)
{
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::max(0L, datum.size())));
    if (!bytes.empty())
        datum.copy(bytes.data(), Exiv2::littleEndian);
    return bytes;
}

bool IsSame(const Exiv2::Exifdatum &a, const Exiv2::Exifdatum &b)
{
    return a.key() == b.key() && a.typeId() == b.typeId() && ValueBytes(a) == ValueBytes(b);
}

std::vector<const Exiv2::Exifdatum *> MakerNoteValues(const Exiv2::ExifData &exif)
{
    std::vector<const Exiv2::Exifdatum *> values;
    for (const Exiv2::Exifdatum &datum : exif)
        if (IsDecodedNote(datum) && datum.key() != "Exif.MakerNote.Offset")
            values.push_back(&datum);
    std::stable_sort(values.begin(), values.end(),
                     [](const Exiv2::Exifdatum *a, const Exiv2::Exifdatum *b) { return a->key() < b->key(); });
    return values;
}

// Whether EXIF that was written reads back with the maker note values of the original.
bool KeepsMakerNote(const Exiv2::ExifData &written, const Exiv2::ExifData &original)
{
    Exiv2::ExifData read;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    try {
        const std::vector<std::uint8_t> file = EncodeExif(written);
        Exiv2::TiffParser::decode(read, iptc, xmp, file.data(), static_cast<std::uint32_t>(file.size()));
    } catch (const Exiv2::AnyError &) {
        return false;
    }
    const auto now = MakerNoteValues(read), before = MakerNoteValues(original);
    return std::equal(now.begin(), now.end(), before.begin(), before.end(),
                      [](const Exiv2::Exifdatum *a, const Exiv2::Exifdatum *b) { return IsSame(*a, *b); });
}

} // namespace

bool IsCarried(const Exiv2::Exifdatum &datum)
{
    const std::string group = datum.groupName();
    if (group == "Image")
        return !IsStructure(datum.tag());
    if (group == "Photo")
        return !IsDirectoryPointer(datum.tag());
    // Directories of other pictures in the same file don't go along.
    return !BeginsWithAny(group, {"Thumbnail", "SubImage", "SubThumb", "Image2", "Image3", "PanasonicRaw", "Mpf"});
}

bool IsOfMakerNote(const Exiv2::Exifdatum &datum)
{
    return IsDecodedNote(datum) || (datum.groupName() == "Photo" && datum.tag() == kMakerNote);
}

std::vector<std::uint8_t> EncodeExif(const Exiv2::ExifData &exif)
{
    if (exif.empty())
        return {};
    Exiv2::MemIo io;
    Exiv2::TiffParser::encode(io, nullptr, 0, Exiv2::littleEndian, exif, Exiv2::IptcData(), Exiv2::XmpData());
    io.seek(0, Exiv2::BasicIo::beg);
    const Exiv2::DataBuf bytes = io.read(static_cast<long>(io.size()));
    return std::vector<std::uint8_t>(bytes.pData_, bytes.pData_ + bytes.size_);
}

Exiv2::ExifData ExifToWrite(const Exiv2::ExifData &exif)
{
    Exiv2::ExifData all, withoutDecoded;
    bool hasNote = false;
    for (const Exiv2::Exifdatum &datum : exif) {
        if (!IsCarried(datum))
            continue;
        all.add(datum);
        if (!IsDecodedNote(datum))
            withoutDecoded.add(datum);
        hasNote = hasNote || (IsOfMakerNote(datum) && !IsDecodedNote(datum));
    }
    return hasNote && KeepsMakerNote(withoutDecoded, all) ? withoutDecoded : all;
}

} // namespace imagefile
