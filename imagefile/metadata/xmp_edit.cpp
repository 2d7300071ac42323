#include "xmp_edit.h"

#include "core/memory_check.h"
#include "xmp_namespaces.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace imagefile {

namespace {

/// Prefixes of raw converter settings, current and saved.
constexpr std::string_view kDevelopPrefixes[] = {"crs", "crss"};

/// Properties to remove, because they describe the source file. Exiv2 doesn't read the extended packets of a JPEG, so
/// these are not copied, and nothing may refer to them.
struct FileProperty {
    std::string_view prefix, name;
};
constexpr FileProperty kExtended = {"xmpNote", "HasExtendedXMP"}; // marks XMP in further segments of a JPEG
constexpr FileProperty kFileProperties[] = {
    {"tiff", "BitsPerSample"},          {"tiff", "Compression"},         {"tiff", "PhotometricInterpretation"},
    {"tiff", "SamplesPerPixel"},        {"tiff", "PlanarConfiguration"}, {"tiff", "YCbCrSubSampling"},
    {"tiff", "YCbCrPositioning"},       {"tiff", "NativeDigest"},        {"exif", "NativeDigest"},
    {"exif", "CompressedBitsPerPixel"}, {"xmp", "Thumbnails"},           kExtended,
};

template <class Drop> void Remove(Exiv2::XmpData *xmp, Drop drop)
{
    for (auto at = xmp->begin(); at != xmp->end();)
        at = drop(*at) ? xmp->erase(at) : std::next(at);
}

bool IsOwnRecord(const Exiv2::Xmpdatum &datum)
{
    return datum.groupName() == "vitrelux";
}

bool IsDevelopSetting(const Exiv2::Xmpdatum &datum)
{
    return std::find(std::begin(kDevelopPrefixes), std::end(kDevelopPrefixes), datum.groupName())
        != std::end(kDevelopPrefixes);
}

/// Returns whether @p datum is the property or part of it. Parts of a structure or array are named after it:
/// "Thumbnails[1]/xmpGImg:image".
bool IsNamed(const Exiv2::Xmpdatum &datum, const FileProperty &property)
{
    const std::string tag = datum.tagName();
    return datum.groupName() == property.prefix && tag.substr(0, tag.find_first_of("[/")) == property.name;
}

bool DescribesSourceFile(const Exiv2::Xmpdatum &datum)
{
    return std::any_of(std::begin(kFileProperties), std::end(kFileProperties),
                       [&](const FileProperty &one) { return IsNamed(datum, one); });
}

bool AreSettingsApplied(const Exiv2::XmpData &xmp)
{
    const auto found = xmp.findKey(Exiv2::XmpKey("Xmp.crs.AlreadyApplied"));
    const std::string text = found == xmp.end() ? std::string() : WholeText(*found);
    return text == "True" || text == "true" || text == "1";
}

void SetIfPresent(const char *key, long value, Exiv2::XmpData *xmp)
{
    if (const auto found = xmp->findKey(Exiv2::XmpKey(key)); found != xmp->end())
        found->setValue(std::to_string(value));
}

void UpdateXmp(PictureSize size, const Exiv2::ExifData &exif, Exiv2::XmpData *xmp)
{
    if (std::any_of(xmp->begin(), xmp->end(), [](const Exiv2::Xmpdatum &one) { return IsNamed(one, kExtended); }))
        Warn("metadata is left out: the part of the XMP that does not fit into one segment of the JPEG");
    if (!AreSettingsApplied(*xmp))
        Remove(xmp, IsDevelopSetting);
    Remove(xmp, IsOwnRecord);
    Remove(xmp, DescribesSourceFile);
    SetIfPresent("Xmp.tiff.ImageWidth", size.width, xmp);
    SetIfPresent("Xmp.tiff.ImageLength", size.height, xmp);
    SetIfPresent("Xmp.exif.PixelXDimension", size.width, xmp);
    SetIfPresent("Xmp.exif.PixelYDimension", size.height, xmp);
    if (const auto turn = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation")); turn != exif.end())
        SetIfPresent("Xmp.tiff.Orientation", turn->toLong(), xmp);
}

void Set(const Exiv2::XmpData &record, Exiv2::XmpData *xmp)
{
    for (const Exiv2::Xmpdatum &datum : record) {
        Remove(xmp, [&](const Exiv2::Xmpdatum &old) { return old.key() == datum.key(); });
        if (datum.size() > 0)
            xmp->add(datum);
    }
}

/// Encodes the properties as an XMP packet; empty if Exiv2 can't write them.
Bytes EncodeXmp(const Exiv2::XmpData &xmp)
{
    std::string packet;
    const XmpWriting use;
    RestoreXmpPrefixes(use);
    const MemoryCheck memory;
    try {
        if (Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat) != 0)
            packet.clear();
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &) {
        packet.clear();
    }
    memory.Require();
    return Bytes(packet.begin(), packet.end());
}

/// Reads the properties of a packet. Returns false if the packet is damaged; @p xmp then contains the properties before
/// the damage, or none if the packet isn't well-formed XML.
bool Decode(const Bytes &packet, Exiv2::XmpData *xmp)
{
    const MemoryCheck memory;
    bool isRead = false;
    try {
        ReadXmp([&] {
            const XmpReading use;
            isRead = packet.empty() || Exiv2::XmpParser::decode(*xmp, std::string(packet.begin(), packet.end())) == 0;
        });
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &) { // damaged
    }
    memory.Require();
    return isRead;
}

} // namespace

void UpdateExif(PictureSize size, Exiv2::ExifData *exif)
{
    const auto orientation = exif->findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
    if (orientation != exif->end() && (orientation->toLong() < 1 || orientation->toLong() > 8))
        exif->erase(orientation);
    if (exif->empty())
        return;
    const auto width = static_cast<std::uint32_t>(size.width), height = static_cast<std::uint32_t>(size.height);
    (*exif)["Exif.Photo.PixelXDimension"] = width;
    (*exif)["Exif.Photo.PixelYDimension"] = height;
    if (exif->findKey(Exiv2::ExifKey("Exif.Iop.RelatedImageWidth")) == exif->end())
        return;
    (*exif)["Exif.Iop.RelatedImageWidth"] = width;
    (*exif)["Exif.Iop.RelatedImageLength"] = height;
}

Bytes EditedXmp(const Bytes &xmp, const Exiv2::XmpData &record, PictureSize size, const Exiv2::ExifData &exif)
{
    Exiv2::XmpData edited;
    if (!Decode(xmp, &edited))
        Warn("damaged metadata is left out: the XMP can't be read");
    UpdateXmp(size, exif, &edited);
    Set(record, &edited);
    Bytes packet = EncodeXmp(edited);
    if (!packet.empty() || edited.empty())
        return packet;
    Warn("damaged metadata is left out: the XMP can't be written again");
    return EncodeXmp(record);
}

} // namespace imagefile
