#include "PictureFacts.h"

#include "DoneBefore_p.h"
#include "MetadataLookup_p.h"
#include "Rational_p.h"
#include "gfl.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

/// A metadata key and its name for display.
struct Source {
    const char *key, *name;
};

// Keys that may contain a fact, the most trustworthy first.
constexpr Source kMakes[] = {{"Exif.Image.Make", "EXIF Make"}, {"LibRaw.Make", "LibRaw"}};
constexpr Source kModels[] = {{"Exif.Image.Model", "EXIF Model"}, {"LibRaw.Model", "LibRaw"}};
constexpr Source kLensMakes[] = {{"Exif.Photo.LensMake", "EXIF LensMake"}, {"LibRaw.LensMake", "LibRaw"}};
constexpr Source kFocals[] = {{"Exif.Photo.FocalLength", "EXIF FocalLength"},
                              {"Exif.Image.FocalLength", "EXIF FocalLength"},
                              {"LibRaw.FocalLength", "LibRaw"},
                              {"LibRaw.NoteFocalLength", "maker note"}};
constexpr Source kFocals35[] = {{"Exif.Photo.FocalLengthIn35mmFilm", "EXIF FocalLengthIn35mmFilm"},
                                {"LibRaw.FocalLengthIn35mmFilm", "LibRaw"},
                                {"LibRaw.NoteFocalLengthIn35mmFilm", "maker note"}};
constexpr Source kDigitalZooms[] = {{"Exif.Photo.DigitalZoomRatio", "EXIF DigitalZoomRatio"}};
constexpr Source kApertures[] = {
    {"Exif.Photo.FNumber", "EXIF FNumber"}, {"Exif.Image.FNumber", "EXIF FNumber"}, {"LibRaw.FNumber", "LibRaw"}};

/// Lens names as text, and lens IDs as Exiv2 prints them.
constexpr Source kLensNames[] = {{"Exif.Photo.LensModel", "EXIF LensModel"},
                                 {"Exif.Canon.LensModel", "maker note"},
                                 {"Exif.OlympusEq.LensModel", "maker note"},
                                 {"Exif.Panasonic.LensType", "maker note"},
                                 {"Exif.NikonLd1.LensIDNumber", "maker note"},
                                 {"Exif.NikonLd2.LensIDNumber", "maker note"},
                                 {"Exif.NikonLd3.LensIDNumber", "maker note"},
                                 {"Exif.Nikon3.Lens", "maker note"}, // numbers only
                                 {"Exif.CanonCs.LensType", "maker note"},
                                 {"Exif.Pentax.LensType", "maker note"},
                                 {"Exif.PentaxDng.LensType", "maker note"},
                                 {"Exif.OlympusEq.LensType", "maker note"},
                                 {"Exif.Sony2.LensID", "maker note"},
                                 {"Exif.Sony1.LensID", "maker note"},
                                 {"Exif.Minolta.LensID", "maker note"},
                                 {"Exif.Samsung2.LensType", "maker note"},
                                 {"Xmp.aux.Lens", "XMP aux:Lens"},
                                 {"Xmp.exifEX.LensModel", "XMP exifEX:LensModel"},
                                 {"LibRaw.Lens", "LibRaw"},
                                 {"LibRaw.NoteLens", "LibRaw"}};

constexpr Source kLensIds[] = {{"Exif.CanonCs.LensType", "maker note"},
                               {"Exif.NikonLd1.LensIDNumber", "maker note"},
                               {"Exif.NikonLd2.LensIDNumber", "maker note"},
                               {"Exif.NikonLd3.LensIDNumber", "maker note"},
                               {"Exif.Pentax.LensType", "maker note"},
                               {"Exif.PentaxDng.LensType", "maker note"},
                               {"Exif.OlympusEq.LensType", "maker note"},
                               {"Exif.Sony2.LensID", "maker note"},
                               {"Exif.Sony1.LensID", "maker note"},
                               {"Exif.Minolta.LensID", "maker note"},
                               {"Exif.Samsung2.LensType", "maker note"},
                               {"Xmp.aux.LensID", "XMP aux:LensID"},
                               {"LibRaw.LensID", "LibRaw"}};

/// A key with a distance in the maker's unit, and the conversion.
struct DistanceRule {
    Source source;
    double (*meters)(double value); // 0: unknown
};

double FromCentimeters(double value)
{
    return value >= 65535.0 ? kInfinite : value / 100.0;
}

/// Converts the distance in Nikon's lens data: 0.01 m times 10^(value / 40), as documented in the package
/// libimage-exiftool-perl.
double FromSteps(double value)
{
    return value > 0.0 ? 0.01 * std::pow(10.0, value / 40.0) : 0.0;
}

double FromMillimeters(double value)
{
    return value / 1000.0;
}

double FromMeters(double value)
{
    return value;
}

constexpr DistanceRule kDistances[] = {
    {{"Exif.Photo.SubjectDistance", "EXIF SubjectDistance"}, FromMeters},
    {{"Exif.CanonSi.SubjectDistance", "maker note"}, FromCentimeters},
    {{"Exif.CanonFi.FocusDistanceUpper", "maker note"}, FromCentimeters},
    {{"Exif.NikonLd3.FocusDistance", "maker note"}, FromSteps},
    {{"Exif.NikonLd2.FocusDistance", "maker note"}, FromSteps},
    {{"Exif.OlympusFi.FocusDistance", "maker note"}, FromMillimeters},
    {{"Xmp.aux.ApproximateFocusDistance", "XMP aux:ApproximateFocusDistance"}, FromMeters},
};

template <size_t count> Fact<QString> FirstText(const MetadataLookup &metadata, const Source (&sources)[count])
{
    for (const Source &source : sources) {
        const QString text = metadata.Text(source.key).raw;
        if (!text.isEmpty())
            return {text, QString::fromLatin1(source.name)};
    }
    return {};
}

template <size_t count> Fact<double> FirstNumber(const MetadataLookup &metadata, const Source (&sources)[count])
{
    for (const Source &source : sources) {
        const double value = metadata.Number(source.key);
        if (value > 0.0)
            return {value, QString::fromLatin1(source.name)};
    }
    return {};
}

/// Returns whether a text names a lens. Texts such as "(165)", "n/a" and dashes mean an unknown lens.
bool IsName(const QString &text)
{
    static const char *const kNone[] = {"none", "n/a", "na", "unknown", "manual lens", "no lens"};
    const bool hasLetters = std::any_of(text.begin(), text.end(), [](QChar one) { return one.isLetter(); });
    return hasLetters && std::none_of(std::begin(kNone), std::end(kNone), [&](const char *none) {
               return text.compare(QLatin1String(none), Qt::CaseInsensitive) == 0;
           });
}

/// Returns whether a number identifies a lens; 0 and 65535 mean no lens or an unidentified one.
bool IsId(const QString &text)
{
    return !text.isEmpty() && text != QLatin1String("0") && text != QLatin1String("65535");
}

/// Adds a text unless it is already in the list.
void AddNew(const QString &text, const Source &source, QVector<Fact<QString>> *to)
{
    const bool isKnown =
        std::any_of(to->cbegin(), to->cend(), [&](const Fact<QString> &known) { return known.value == text; });
    if (!isKnown)
        to->append({text, QString::fromLatin1(source.name)});
}

void ReadLens(const MetadataLookup &metadata, PictureFacts *facts)
{
    facts->lensMake = FirstText(metadata, kLensMakes);
    for (const Source &source : kLensNames) {
        const QString name = metadata.Text(source.key).printed;
        if (IsName(name))
            AddNew(name, source, &facts->lensNames);
    }
    for (const Source &source : kLensIds) {
        const QString id = metadata.Text(source.key).raw;
        if (IsId(id))
            AddNew(id, source, &facts->lensIds);
    }
    const QVector<double> range = metadata.Numbers("Exif.Photo.LensSpecification");
    Fact<double> *const ends[] = {&facts->lensMinFocalMm, &facts->lensMaxFocalMm, &facts->lensMinApertureAtMin,
                                  &facts->lensMinApertureAtMax};
    for (int i = 0; i < 4; ++i) {
        if (range.value(i) > 0.0)
            *ends[i] = {range.value(i), QStringLiteral("EXIF LensSpecification")};
    }
    const QVector<double> canon = metadata.Numbers("Exif.CanonCs.Lens"); // longest, shortest, units per millimeter
    if (!facts->lensMinFocalMm.Known() && canon.value(1) > 0.0 && canon.value(0) >= canon[1] && canon.value(2) > 0.0) {
        facts->lensMinFocalMm = {canon[1] / canon[2], QStringLiteral("maker note")};
        facts->lensMaxFocalMm = {canon[0] / canon[2], QStringLiteral("maker note")};
    }
}

Fact<double> ReadDistance(const MetadataLookup &metadata)
{
    for (const DistanceRule &rule : kDistances) {
        // EXIF 2.3, SubjectDistance: a numerator with all bits set means infinity, whatever the denominator.
        const bool isInfinite = metadata.Text(rule.source.key).raw.startsWith(QLatin1String("4294967295"));
        const double meters = isInfinite ? kInfinite : rule.meters(metadata.Number(rule.source.key));
        if (meters > 0.0)
            return {meters, QString::fromLatin1(rule.source.name)};
    }
    return {};
}

void ReadShot(const MetadataLookup &metadata, PictureFacts *facts)
{
    facts->focalMm = FirstNumber(metadata, kFocals);
    facts->focal35Mm = FirstNumber(metadata, kFocals35);
    facts->digitalZoom = FirstNumber(metadata, kDigitalZooms);
    facts->aperture = FirstNumber(metadata, kApertures);
    facts->distanceM = ReadDistance(metadata);
    const double apex = metadata.Number("Exif.Photo.ApertureValue");
    if (!facts->aperture.Known() && apex > 0.0 && apex < 20.0)
        facts->aperture = {std::exp2(apex / 2.0), QStringLiteral("EXIF ApertureValue")};
}

/// Returns the length in mm of a unit of EXIF FocalPlaneResolutionUnit: an inch if it is absent, 0 if it is unknown.
double UnitMm(double unit)
{
    constexpr double kUnits[] = {25.4, 0.0, 25.4, 10.0, 1.0, 0.001};
    return unit >= 0.0 && unit < 6.0 ? kUnits[static_cast<int>(unit)] : 0.0;
}

void ReadFrame(const MetadataLookup &metadata, PictureFacts *facts)
{
    const double orientation = metadata.Number("Exif.Image.Orientation");
    if (orientation >= 1.0 && orientation <= 8.0)
        facts->orientation = static_cast<Orientation>(orientation);
    const double width = metadata.Number("Exif.Photo.PixelXDimension");
    const double height = metadata.Number("Exif.Photo.PixelYDimension");
    constexpr double kMaxPixels = 1 << 20;
    if (!(width >= 1.0 && width <= kMaxPixels && height >= 1.0 && height <= kMaxPixels))
        return;
    facts->original = {QSize(static_cast<int>(width), static_cast<int>(height)),
                       QStringLiteral("EXIF PixelXDimension")};
    const double resolution = metadata.Number("Exif.Photo.FocalPlaneXResolution");
    const double mm = resolution > 0.0
        ? std::max(width, height) / resolution * UnitMm(metadata.Number("Exif.Photo.FocalPlaneResolutionUnit"))
        : 0.0;
    if (mm > 1.0 && mm < 100.0) // phones to large format
        facts->focalPlaneWidthMm = {mm, QStringLiteral("EXIF FocalPlaneXResolution")};
}

/// Reads the color space. DCF 2.0 marks Adobe RGB as "uncalibrated" plus an interoperability index; some cameras write
/// 2 instead.
void ReadEncoding(const MetadataLookup &metadata, PictureFacts *facts)
{
    const double space = metadata.Number("Exif.Photo.ColorSpace");
    if (space == 1.0)
        facts->encoding = {ColorEncoding::Srgb, QStringLiteral("EXIF ColorSpace")};
    else if (space == 2.0)
        facts->encoding = {ColorEncoding::AdobeRgb, QStringLiteral("EXIF ColorSpace")};
    else if (metadata.Text("Exif.Iop.InteroperabilityIndex").raw == QLatin1String("R03"))
        facts->encoding = {ColorEncoding::AdobeRgb, QStringLiteral("EXIF InteroperabilityIndex")};
}

/// Reads a crop that a raw converter applied.
void ReadCrop(const MetadataLookup &metadata, PictureFacts *facts)
{
    if (facts->raw || !metadata.IsTrue("Xmp.crs.HasCrop") || !metadata.IsTrue("Xmp.crs.AlreadyApplied"))
        return;
    facts->cropTurned = metadata.Number("Xmp.crs.CropAngle") != 0.0;
    constexpr double kRounded = 0.001; // stored values have only a few decimals
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    const auto share = [&](const char *key, double missing) {
        const double value = metadata.Has(key) ? ParseRational(metadata.Text(key).raw).value_or(kNone) : missing;
        return value >= -kRounded && value <= 1.0 + kRounded ? std::clamp(value, 0.0, 1.0) : kNone;
    };
    const double left = share("Xmp.crs.CropLeft", 0.0), right = share("Xmp.crs.CropRight", 1.0);
    const double top = share("Xmp.crs.CropTop", 0.0), bottom = share("Xmp.crs.CropBottom", 1.0);
    facts->cropLost = !(left < right && top < bottom);
    if (!facts->cropLost)
        facts->crop = {QRectF(QPointF(left, top), QPointF(right, bottom)), QStringLiteral("XMP crs:HasCrop")};
}

} // namespace

PictureFacts ReadPictureFacts(const QString &path, QString *error)
{
    PictureFacts facts;
    facts.path = path;
    GFL_FILE_INFORMATION info = {};
    constexpr std::int32_t kAnyFormat = -1;
    if (gflGetFileInformationExUTF8(path.toUtf8().constData(), kAnyFormat, &info, 0) != GFL_NO_ERROR) {
        if (error)
            *error = QString::fromUtf8(gflLastErrorText());
        return facts;
    }
    facts.pixels = QSize(info.Width, info.Height);
    facts.raw = QLatin1String(info.FormatName) == QLatin1String("raw");
    gflFreeFileInformation(&info);

    const MetadataLookup metadata(path);
    facts.make = FirstText(metadata, kMakes);
    facts.model = FirstText(metadata, kModels);
    ReadLens(metadata, &facts);
    ReadShot(metadata, &facts);
    ReadFrame(metadata, &facts);
    ReadEncoding(metadata, &facts);
    ReadCrop(metadata, &facts);
    FindDoneBefore(metadata, &facts);
    return facts;
}
