#include "raw_facts.h"

#include "core/codec.h"
#include "core/decimal.h"
#include "raw_stream.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <memory>

namespace imagefile {

namespace {

constexpr double kMaxRational = 4e9; // below 2^32

bool IsKnown(double value)
{
    return std::isfinite(value) && value > 0.0 && value < kMaxRational;
}

// Returns the text of a field without trailing spaces. A zero ends the text unless the text fills the field.
template <std::size_t N> std::string TextOf(const char (&field)[N])
{
    std::string text(field, std::find(field, field + N, '\0'));
    text.resize(text.find_last_not_of(' ') + 1);
    return text;
}

class Builder {
public:
    explicit Builder(RawFacts *facts) : m_facts(facts) { }

    void Field(const char *name, const std::string &text)
    {
        if (!text.empty())
            m_facts->fields.emplace_back(std::string("LibRaw.") + name, text);
    }
    void Field(const char *name, double value)
    {
        if (IsKnown(value))
            Field(name, Decimal(value));
    }
    /// Adds an ID, which may need 64 bits. 0 and all bits set mean unknown.
    void Id(const char *name, unsigned long long id)
    {
        if (id != 0 && id != ~0ull)
            Field(name, std::to_string(id));
    }
    void Exif(const char *key, const std::string &text)
    {
        if (!text.empty())
            m_facts->exif[key] = text;
    }
    void Exif(const char *key, double value, std::uint32_t unit)
    {
        if (IsKnown(value) && value * unit < kMaxRational)
            m_facts->exif[key] = Fraction(value, unit);
    }
    void Exif(const char *key, std::uint16_t value) { m_facts->exif[key] = value; }
    /// Adds several rationals; impossible values become 0/0, which EXIF 2.32 defines as unknown in LensSpecification. A
    /// 0, LibRaw's value for unknown, remains 0.
    void Exif(const char *key, std::initializer_list<float> values, std::uint32_t unit)
    {
        Exiv2::URationalValue list;
        for (float each : values) {
            const auto value = static_cast<double>(each);
            const bool isPossible = std::isfinite(value) && value >= 0.0 && value * unit < kMaxRational;
            list.value_.push_back(isPossible ? Fraction(value, unit) : Exiv2::URational(0, 0));
        }
        m_facts->exif.add(Exiv2::ExifKey(key), &list);
    }

private:
    static Exiv2::URational Fraction(double value, std::uint32_t unit)
    {
        return {static_cast<std::uint32_t>(std::lround(value * unit)), unit};
    }

    RawFacts *m_facts;
};

// Formats a timestamp as local time, because LibRaw interprets the camera's clock as local time.
std::string DateText(std::time_t time)
{
    std::tm parts = {};
    char text[32] = {};
    if (time > 0 && localtime_r(&time, &parts))
        std::strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &parts);
    return text;
}

// Converts LibRaw's rotation to an EXIF orientation; 0 if it is invalid.
std::uint16_t OrientationOf(int flip)
{
    constexpr std::uint16_t kOrientations[] = {1, 2, 4, 3, 5, 8, 6, 7};
    return flip >= 0 && flip < 8 ? kOrientations[flip] : 0;
}

void AddExposure(const libraw_imgother_t &shot, Builder *to)
{
    const auto seconds = static_cast<double>(shot.shutter);
    const double inverse = IsKnown(seconds) ? std::round(1.0 / seconds) : 0.0;
    if (seconds < 0.5 && inverse < kMaxRational && std::abs(inverse * seconds - 1.0) < 0.005)
        to->Exif("Exif.Photo.ExposureTime", 1.0 / inverse, static_cast<std::uint32_t>(inverse));
    else
        to->Exif("Exif.Photo.ExposureTime", seconds, 10000);
    to->Exif("Exif.Photo.FNumber", static_cast<double>(shot.aperture), 100);
    if (IsKnown(static_cast<double>(shot.iso_speed)) && shot.iso_speed < 65535.0f)
        to->Exif("Exif.Photo.ISOSpeedRatings", static_cast<std::uint16_t>(std::lround(shot.iso_speed)));
    to->Exif("Exif.Photo.DateTimeOriginal", DateText(shot.timestamp));
    to->Exif("Exif.Photo.FocalLength", static_cast<double>(shot.focal_len), 100);
}

void AddPosition(const libraw_gps_info_t &gps, Builder *to)
{
    const bool hasPosition = gps.gpsparsed != 0 && (gps.latref == 'N' || gps.latref == 'S')
        && (gps.longref == 'E' || gps.longref == 'W') && gps.gpsstatus != 'V';
    if (!hasPosition)
        return;
    constexpr std::uint32_t kUnit = 1000000; // float seconds are no more precise
    to->Exif("Exif.GPSInfo.GPSLatitudeRef", std::string(1, gps.latref));
    to->Exif("Exif.GPSInfo.GPSLatitude", {gps.latitude[0], gps.latitude[1], gps.latitude[2]}, kUnit);
    to->Exif("Exif.GPSInfo.GPSLongitudeRef", std::string(1, gps.longref));
    to->Exif("Exif.GPSInfo.GPSLongitude", {gps.longitude[0], gps.longitude[1], gps.longitude[2]}, kUnit);
}

void AddLens(const libraw_lensinfo_t &lens, Builder *to)
{
    const libraw_makernotes_lens_t &note = lens.makernotes;
    const std::string name = TextOf(lens.Lens), noteName = TextOf(note.Lens);
    to->Exif("Exif.Photo.LensModel", name.empty() ? noteName : name);
    to->Exif("Exif.Photo.LensMake", TextOf(lens.LensMake));
    if (IsKnown(static_cast<double>(lens.MinFocal)) && IsKnown(static_cast<double>(lens.MaxFocal)))
        to->Exif("Exif.Photo.LensSpecification",
                 {lens.MinFocal, lens.MaxFocal, lens.MaxAp4MinFocal, lens.MaxAp4MaxFocal}, 100);
    if (lens.FocalLengthIn35mmFormat != 0)
        to->Exif("Exif.Photo.FocalLengthIn35mmFilm", lens.FocalLengthIn35mmFormat);

    to->Field("Lens", name);
    to->Field("LensMake", TextOf(lens.LensMake));
    to->Field("NoteLens", noteName);
    to->Id("LensID", note.LensID);
    to->Field("MinFocal", static_cast<double>(lens.MinFocal));
    to->Field("MaxFocal", static_cast<double>(lens.MaxFocal));
    to->Field("MaxApertureAtMinFocal", static_cast<double>(lens.MaxAp4MinFocal));
    to->Field("MaxApertureAtMaxFocal", static_cast<double>(lens.MaxAp4MaxFocal));
    to->Field("FocalLengthIn35mmFilm", static_cast<double>(lens.FocalLengthIn35mmFormat));
    to->Field("NoteFocalLength", static_cast<double>(note.CurFocal));
    to->Field("NoteFocalLengthIn35mmFilm", static_cast<double>(note.FocalLengthIn35mmFormat));
    to->Field("Teleconverter", TextOf(note.Teleconverter));
    to->Id("TeleconverterID", note.TeleconverterID);
    to->Field("Adapter", TextOf(note.Adapter));
}

void AddAll(const libraw_data_t &raw, Builder *to)
{
    to->Exif("Exif.Image.Make", TextOf(raw.idata.make));
    to->Exif("Exif.Image.Model", TextOf(raw.idata.model));
    to->Exif("Exif.Image.Software", TextOf(raw.idata.software));
    to->Exif("Exif.Image.Artist", TextOf(raw.other.artist));
    if (const std::uint16_t orientation = OrientationOf(raw.sizes.flip))
        to->Exif("Exif.Image.Orientation", orientation);
    to->Field("Make", TextOf(raw.idata.normalized_make));
    to->Field("Model", TextOf(raw.idata.normalized_model));
    to->Field("Flip", std::to_string(raw.sizes.flip));
    to->Field("FocalLength", static_cast<double>(raw.other.focal_len));
    to->Field("FNumber", static_cast<double>(raw.other.aperture));
    AddExposure(raw.other, to);
    AddPosition(raw.other.parsed_gps, to);
    AddLens(raw.lens, to);
}

} // namespace

RawFacts ReadRawFacts(const Source &source)
{
    RawFacts facts;
    RawStream stream(source);
    const auto raw = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK);
    if (raw->open_datastream(&stream) != LIBRAW_SUCCESS)
        return facts;
    Builder builder(&facts);
    AddAll(raw->imgdata, &builder);
    return facts;
}

} // namespace imagefile
