#include "exr_metadata.h"

#include "core/status.h"
#include "metadata/exif_carry.h"
#include "metadata/metadata.h"
#include "metadata/primaries.h"

#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

namespace imagefile {

namespace {

const Exiv2::Exifdatum *Find(const Exiv2::ExifData &exif, const char *key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found != exif.end() && found->count() > 0 ? &*found : nullptr;
}

/// Returns whether the value has at least @p count numbers and all are known: EXIF writes unknown ones with a
/// denominator of 0, to which Exiv2 also converts infinity and NaN.
bool AreKnown(const Exiv2::Exifdatum *numbers, long count)
{
    bool areKnown = numbers && numbers->count() >= count;
    for (long i = 0; areKnown && i < count; ++i)
        areKnown = numbers->toRational(i).second != 0;
    return areKnown;
}

struct NumberRow {
    const char *key;
    void (*add)(Imf::Header &header, const float &value);
};

constexpr NumberRow kNumbers[] = {
    {"Exif.Photo.ExposureTime", Imf::addExpTime},     // s
    {"Exif.Photo.FNumber", Imf::addAperture},         // f-number
    {"Exif.Photo.ISOSpeedRatings", Imf::addIsoSpeed}, // ISO
    {"Exif.Photo.SubjectDistance", Imf::addFocus},    // m
};

struct TextRow {
    const char *key;
    void (*add)(Imf::Header &header, const std::string &value);
};

constexpr TextRow kTexts[] = {
    {"Exif.Photo.DateTimeOriginal", Imf::addCapDate}, // EXIF and OpenEXR both use "YYYY:MM:DD hh:mm:ss", local time
    {"Exif.Image.Artist", Imf::addOwner},
    {"Exif.Image.ImageDescription", Imf::addComments},
};

/// Converts degrees, minutes and seconds; south and west are negative.
bool ReadAngle(const Exiv2::ExifData &exif, const std::string &key, char negative, float *degrees)
{
    const Exiv2::Exifdatum *angle = Find(exif, key.c_str()), *side = Find(exif, (key + "Ref").c_str());
    if (!AreKnown(angle, 3) || !side)
        return false;
    *degrees = angle->toFloat(0) + angle->toFloat(1) / 60.0F + angle->toFloat(2) / 3600.0F;
    if (side->toString()[0] == negative)
        *degrees = -*degrees;
    return true;
}

void AddPosition(const Exiv2::ExifData &exif, Imf::Header *header)
{
    float latitude = 0.0F, longitude = 0.0F;
    if (!ReadAngle(exif, "Exif.GPSInfo.GPSLatitude", 'S', &latitude)
        || !ReadAngle(exif, "Exif.GPSInfo.GPSLongitude", 'W', &longitude))
        return;
    Imf::addLatitude(*header, latitude);
    Imf::addLongitude(*header, longitude);
}

/// Returns Adobe RGB (1998) if the interoperability index of DCF 2.0 names it. Cameras that embed no profile declare it
/// this way.
std::optional<Primaries> NamedPrimaries(const Exiv2::ExifData &exif)
{
    const Exiv2::Exifdatum *index = Find(exif, "Exif.Iop.InteroperabilityIndex");
    if (!index || index->toString().substr(0, 3) != "R03")
        return std::nullopt;
    return Primaries{{0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}, {0.3127, 0.3290}};
}

void AddColors(const Metadata &metadata, Imf::Header *header)
{
    const std::optional<Primaries> colors =
        metadata.icc.empty() ? NamedPrimaries(metadata.exif) : PrimariesOf(metadata.icc);
    const auto point = [](const Chromaticity &color) {
        return Imath::V2f(static_cast<float>(color.x), static_cast<float>(color.y));
    };
    if (colors)
        Imf::addChromaticities(*header,
                               {point(colors->red), point(colors->green), point(colors->blue), point(colors->white)});
    else if (!metadata.icc.empty())
        Warn("metadata is left out: the ICC profile, whose colors OpenEXR can't describe");
}

} // namespace

void AddExrAttributes(const Metadata &metadata, Imf::Header *header)
{
    // Warn about the orientation first, because only the first warning is kept.
    const Exiv2::Exifdatum *turn = Find(metadata.exif, "Exif.Image.Orientation");
    if (turn && turn->toLong() > 1)
        Warn("metadata is left out: the orientation, which OpenEXR can't store; the picture stays as the camera stored "
             "it");
    for (const NumberRow &row : kNumbers) {
        const Exiv2::Exifdatum *number = Find(metadata.exif, row.key);
        if (AreKnown(number, 1))
            row.add(*header, number->toFloat());
    }
    for (const TextRow &row : kTexts) {
        if (const Exiv2::Exifdatum *text = Find(metadata.exif, row.key))
            row.add(*header, text->toString());
    }
    AddPosition(metadata.exif, header);
    AddColors(metadata, header);
    if (!metadata.xmp.empty())
        header->insert("xmp", Imf::StringAttribute(std::string(metadata.xmp.begin(), metadata.xmp.end())));
    if (!metadata.exif.empty() || !metadata.iptc.empty())
        Warn("metadata is left out: IPTC and most of the EXIF, which OpenEXR can't store");
}

} // namespace imagefile
