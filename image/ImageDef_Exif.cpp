// The EXIF of an image: parsing the image-file layer's texts into a record, and formatting all of them as a table.
#include "ImageDef.h"

#include "CNumbers_p.h"
#include "ExifTags.h"
#include "FullFrame.h"
#include "ImageDatas.h"

#include <QRegExp>
#include <QTextStream>

#include <cstring>
#include <ctime>
#include <memory>

namespace {

/// Results of parsing the texts: the record, and values from which focal length and exposure are determined.
struct Readings {
    ShootingInformation &shooting;
    double realFocalMm = 0.0;
    double focal35mm = 0.0;
    // Resolution of the focal plane, its unit in mm, and the picture's size in pixels.
    float planeX = 0.0F;
    float planeY = 0.0F;
    float planeUnitMm = 0.0F;
    float imageWidth = 0.0F;
    float imageHeight = 0.0F;
    float shutterSpeed = 0.0F;
};

QString Text(const char *value)
{
    return QString::fromUtf8(value);
}

double Number(const char *value)
{
    return FiniteOr(std::strtod(value, nullptr), 0.0);
}

int Integer(const char *value)
{
    constexpr long kMost = std::numeric_limits<int>::max();
    return static_cast<int>(qBound(-kMost, std::strtol(value, nullptr, 10), kMost));
}

/// Returns the number in the parentheses of "Top-left (1)".
int Orientation(const char *value)
{
    int number = 0;
    std::sscanf(value, "%*s (%9d", &number);
    return number;
}

/// Parses a date such as "2010:05:03 18:30:00". Returns 0 if the text isn't one.
qint64 Timestamp(const char *value)
{
    std::tm time = {};
    const int count = std::sscanf(value, "%9d:%9d:%9d %9d:%9d:%9d", &time.tm_year, &time.tm_mon, &time.tm_mday,
                                  &time.tm_hour, &time.tm_min, &time.tm_sec);
    constexpr int kDate = 3;
    if (count < kDate)
        return 0;
    time.tm_year -= 1900;
    time.tm_mon -= 1;
    return std::mktime(&time);
}

float FNumber(const char *value)
{
    float number = 0.0F;
    std::sscanf(value, "%f", &number);
    return FiniteOr(number, 0.0F);
}

struct UnitRow {
    const char *start; // of the value
    float millimeters;
    const char *name;
};

constexpr UnitRow kUnits[] = {
    {"Inch", 25.4F, QT_TRANSLATE_NOOP("ImageDef", "inch")},
    {"cm", 10.0F, QT_TRANSLATE_NOOP("ImageDef", "cm")},
    {"um", 0.001F, QT_TRANSLATE_NOOP("ImageDef", "µm")},
};

/// Returns null for an unknown unit, which then counts as a millimeter.
const UnitRow *UnitOf(const char *value)
{
    for (const UnitRow &unit : kUnits) {
        if (qstrncmp(value, unit.start, qstrlen(unit.start)) == 0)
            return &unit;
    }
    return nullptr;
}

struct TagRow {
    quint32 tag;
    const char *label; // in the summary; null: not listed
    void (*read)(Readings &to, const char *value);
};

constexpr quint32 kPlaneUnitTag = 41488; // its line in the summary has a different form

constexpr TagRow kTags[] = {
    {274, nullptr, [](Readings &to, const char *value) { to.shooting.orientation = Orientation(value); }},
    {271, QT_TRANSLATE_NOOP("ImageDef", "Maker"),
     [](Readings &to, const char *value) { to.shooting.makerName = Text(value); }},
    {272, QT_TRANSLATE_NOOP("ImageDef", "Model"),
     [](Readings &to, const char *value) { to.shooting.modelName = Text(value); }},
    {37386, QT_TRANSLATE_NOOP("ImageDef", "Real focal length"),
     [](Readings &to, const char *value) { to.realFocalMm = Number(value); }},
    {41989, QT_TRANSLATE_NOOP("ImageDef", "35mm f.length"),
     [](Readings &to, const char *value) { to.focal35mm = Number(value); }},
    {33434, QT_TRANSLATE_NOOP("ImageDef", "Exposure time"),
     [](Readings &to, const char *value) { to.shooting.exposureTime = static_cast<double>(ExifParseString(value)); }},
    {37377, QT_TRANSLATE_NOOP("ImageDef", "Shutter speed"),
     [](Readings &to, const char *value) { to.shutterSpeed = ExifParseString(value); }},
    {33437, QT_TRANSLATE_NOOP("ImageDef", "F Number"),
     [](Readings &to, const char *value) { to.shooting.fNumber = static_cast<double>(FNumber(value)); }},
    {36867, QT_TRANSLATE_NOOP("ImageDef", "Date Time"),
     [](Readings &to, const char *value) { to.shooting.timestamp = Timestamp(value); }},
    {34855, QT_TRANSLATE_NOOP("ImageDef", "ISO"),
     [](Readings &to, const char *value) { to.shooting.isoSpeed = Integer(value); }},
    {37380, QT_TRANSLATE_NOOP("ImageDef", "Exposure bias value"),
     [](Readings &to, const char *value) { to.shooting.exposureBias = ExifParseString(value); }},
    {40962, QT_TRANSLATE_NOOP("ImageDef", "Width"),
     [](Readings &to, const char *value) {
         to.shooting.validWidth = Integer(value);
         to.imageWidth = static_cast<float>(to.shooting.validWidth);
     }},
    {40963, QT_TRANSLATE_NOOP("ImageDef", "Height"),
     [](Readings &to, const char *value) {
         to.shooting.validHeight = Integer(value);
         to.imageHeight = static_cast<float>(to.shooting.validHeight);
     }},
    {41486, QT_TRANSLATE_NOOP("ImageDef", "Focal plane res X"),
     [](Readings &to, const char *value) { to.planeX = ExifParseString(value); }},
    {41487, QT_TRANSLATE_NOOP("ImageDef", "Focal plane res Y"),
     [](Readings &to, const char *value) { to.planeY = ExifParseString(value); }},
    {kPlaneUnitTag, QT_TRANSLATE_NOOP("ImageDef", "Focal plan res. unit"),
     [](Readings &to, const char *value) {
         const UnitRow *unit = UnitOf(value);
         to.planeUnitMm = unit ? unit->millimeters : 1.0F;
     }},
    {305, nullptr, [](Readings &to, const char *value) { to.shooting.software = Text(value); }},
};

const TagRow *FindTag(quint32 tag)
{
    for (const TagRow &row : kTags) {
        if (row.tag == tag)
            return &row;
    }
    return nullptr;
}

/// Parses an integer, a decimal or a fraction.
double Component(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('/'));
    return parts.size() < 2 ? text.toDouble() : parts[0].toDouble() / parts[1].toDouble();
}

/// Truncates a text before a search that takes quadratic time: 64,000 digits would take minutes.
QString ShortText(const char *value)
{
    constexpr int kLongest = 256; // characters; cameras write up to 40
    return Text(value).left(kLongest);
}

/// Parses an angle such as "45° 30' 7.5\"". A number with a decimal comma reads as 0.
double Degrees(const char *value)
{
    QRegExp form(QStringLiteral("(\\d+).\\s+(\\d+(?:[\\.,/]\\d+)?)'\\s+(\\d+(?:[\\.,/]\\d+)?)\""));
    if (form.indexIn(ShortText(value)) < 0)
        return ShootingInformation::kUnknownPlace;
    return FiniteOr(form.cap(1).toDouble() + Component(form.cap(2)) / 60.0 + Component(form.cap(3)) / 3600.0,
                    ShootingInformation::kUnknownPlace);
}

/// Parses a direction such as "254.5" or "509/2".
double Direction(const char *value)
{
    const QString text = ShortText(value);
    QRegExp form(QStringLiteral("(\\d+)([\\.,/]\\d+)"));
    if (form.indexIn(text) >= 0 && form.cap(2).contains(QLatin1Char('/')))
        return FiniteOr(form.cap(1).toDouble() / form.cap(2).mid(1).toDouble(), ShootingInformation::kUnknownPlace);
    bool isNumber = false;
    const float direction = text.toFloat(&isNumber);
    return isNumber ? FiniteOr(static_cast<double>(direction), ShootingInformation::kUnknownPlace)
                    : ShootingInformation::kUnknownPlace;
}

struct GpsRow {
    quint32 tag;
    void (*read)(ShootingInformation &to, const char *value);
};

constexpr GpsRow kGpsTags[] = {
    {1, [](ShootingInformation &to, const char *value) { to.gpsLatitudeRef = Text(value); }},
    {2, [](ShootingInformation &to, const char *value) { to.gpsLatitude = Degrees(value); }},
    {3, [](ShootingInformation &to, const char *value) { to.gpsLongitudeRef = Text(value); }},
    {4, [](ShootingInformation &to, const char *value) { to.gpsLongitude = Degrees(value); }},
    {6, [](ShootingInformation &to, const char *) { to.gpsAltitude = 0.0; }}, // only its presence is stored
    {16, [](ShootingInformation &to, const char *value) { to.gpsDirectionRef = Text(value); }},
    {17, [](ShootingInformation &to, const char *value) { to.gpsDirection = Direction(value); }},
};

void ReadGps(quint32 tag, const char *value, ShootingInformation &to)
{
    for (const GpsRow &row : kGpsTags) {
        if (row.tag == tag)
            row.read(to, value);
    }
}

/// Reads an entry that the image-file layer has added to those of the file.
void ReadAdded(const char *name, const char *value, ShootingInformation &to)
{
    if (qstrncmp(name, "LensID", 6) == 0)
        to.lensId = Text(value).trimmed();
    if (qstrcmp(name, "ZenithEs") != 0)
        return;
    float first = 0.0F, second = 0.0F;
    std::sscanf(value, "%f %f", &first, &second);
    to.zenithFirst = static_cast<double>(FiniteOr(first, 0.0F));
    to.zenithSecond = static_cast<double>(FiniteOr(second, 0.0F));
}

QString SummaryLine(const TagRow &row, const char *value)
{
    const QString label = ImageDef::tr(row.label);
    if (row.tag != kPlaneUnitTag)
        return label + QStringLiteral(": \"%0\";").arg(Text(value));
    const UnitRow *unit = UnitOf(value);
    return unit ? label + QLatin1Char(' ') + ImageDef::tr(unit->name) + QLatin1Char(';') : QString();
}

QString ReadEntry(const GFL_EXIF_ENTRY &entry, Readings &to)
{
    const char *value = entry.Value ? entry.Value : "";
    QString summary;
    if (const TagRow *row = FindTag(entry.Tag)) {
        row->read(to, value);
        if (row->label)
            summary = SummaryLine(*row, value);
    } else if (entry.Flag == GFL_EXIF_OWN) {
        ReadAdded(entry.Name ? entry.Name : "", value, to.shooting);
    }
    if (entry.Flag == GFL_EXIF_GPS)
        ReadGps(entry.Tag, value, to.shooting);
    return summary;
}

/// Returns the crop factor from the focal plane's resolution and the picture's size; 0 if any of these is missing.
double RatioOfPlane(const Readings &readings)
{
    if (readings.imageWidth == 0.0F || readings.imageHeight == 0.0F)
        return 0.0;
    // Without a unit the plane's size is 0; without a resolution it is infinite. The quotient is infinite, 0 or NaN.
    const float widthMm = readings.imageWidth * readings.planeUnitMm / readings.planeX;
    const float heightMm = readings.imageHeight * readings.planeUnitMm / readings.planeY;
    return FiniteOr(kFullFrameDiagonalMm / static_cast<double>(std::sqrt(widthMm * widthMm + heightMm * heightMm)),
                    0.0);
}

/// Determines the crop factor and the 35 mm equivalent focal length from the first of these that is known: the camera's
/// value, the camera table, the focal plane.
/// @return whether the result is reliable.
bool SettleFocal(const Readings &readings, CameraProperties &cameras)
{
    ShootingInformation &shooting = readings.shooting;
    if (readings.focal35mm != 0.0) {
        shooting.focal35mm = readings.focal35mm;
        shooting.focalRatio = readings.focal35mm / readings.realFocalMm; // infinite without a real focal length
        return true;
    }
    if (readings.realFocalMm == 0.0) {
        shooting.focal35mm = 50.0;
        shooting.focalRatio = 1.0;
        return false;
    }
    const auto ratioOfCamera = static_cast<double>(cameras.GetSensorSize(shooting.makerName, shooting.modelName));
    const double ratio = ratioOfCamera > 0.0 ? ratioOfCamera : RatioOfPlane(readings);
    shooting.focalRatio = ratio != 0.0 ? ratio : 1.0;
    shooting.focal35mm = readings.realFocalMm * shooting.focalRatio;
    return ratio != 0.0;
}

void SettleExposure(const Readings &readings)
{
    ShootingInformation &shooting = readings.shooting;
    if (readings.shutterSpeed != 0.0F && shooting.exposureTime == 0.0)
        shooting.exposureTime = static_cast<double>(readings.shutterSpeed); // unconverted, although it is a logarithm
    if (shooting.exposureTime == 0.0 || shooting.fNumber == 0.0)
        return;
    shooting.exposureValue =
        FiniteOr(std::log(shooting.fNumber * shooting.fNumber / shooting.exposureTime), 0.0); // NaN for a negative time
}

/// Parses a comment such as "FOV: 73.7 x 53.1 ~ 84.0" after any encoding prefix.
void ReadComment(const GFL_EXIF_ENTRYEX &entry, ShootingInformation &to)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(entry.Data), static_cast<int>(entry.Length));
    const int start = bytes.indexOf("FOV:");
    if (start < 0)
        return;
    QString text = QString::fromLatin1(bytes.mid(start + 5));
    QTextStream stream(&text);
    QString firstWord, secondWord;
    double first = 0.0, second = 0.0, third = 0.0;
    stream >> first >> firstWord >> second >> secondWord >> third;
    to.fovFirst = FiniteOr(first, 0.0);
    to.fovSecond = FiniteOr(second, 0.0);
    if (secondWord == QLatin1String("~"))
        to.fovThird = FiniteOr(third, 0.0);
}

void ReadPrivateRecord(const GFL_EXIF_ENTRYEX &entry, ShootingInformation &to)
{
    constexpr quint32 kLength = 128, kKept = 96;
    if (entry.Length < kLength)
        return; // not a private record
    to.privateKind = entry.Data[0];
    if (to.privateKind >= 8 && to.privateKind <= 10)
        to.privateSubKind = entry.Data[6] & 15;
    std::memcpy(to.privateData, entry.Data + kKept, sizeof to.privateData);
}

void ReadExtended(const GFL_EXIF_DATAEX *list, ShootingInformation &to)
{
    constexpr quint16 kUserComment = 37510, kPrivateRecord = 65535;
    for (const GFL_EXIF_ENTRYEX *entry = list ? list->Root : nullptr; entry; entry = entry->Next) {
        if (!entry->Data || entry->Length > quint32(std::numeric_limits<int>::max()))
            continue;
        if (entry->Tag == kUserComment)
            ReadComment(*entry, to);
        else if (entry->Tag == kPrivateRecord && entry->Block == GFL_EXIF_OWN)
            ReadPrivateRecord(*entry, to);
    }
}

QString Quoted(const char *text)
{
    return (QLatin1Char('"') + Text(text) + QLatin1Char('"')).leftJustified(50);
}

QString DumpLine(const GFL_EXIF_ENTRY &entry)
{
    const bool isLens = entry.Flag == GFL_EXIF_OWN && qstrcmp(entry.Name, "LensID") == 0;
    const QString flag = QStringLiteral("%1").arg(entry.Flag, isLens ? 4 : 2, 10, QLatin1Char('0'));
    const QString tag = QStringLiteral("%1").arg(entry.Tag, 4, 16, QLatin1Char('0'));
    return QStringLiteral("(%1_%2) %3 | %4\n")
        .arg(flag, tag, Quoted(isLens ? "Binary Value" : entry.Value), Quoted(entry.Name));
}

using BitmapOwner = std::unique_ptr<GFL_BITMAP, void (*)(GFL_BITMAP *)>;
using ExifOwner = std::unique_ptr<GFL_EXIF_DATA, void (*)(GFL_EXIF_DATA *)>;

} // namespace

void ImageDef::AnalyseExif(GFL_EXIF_DATA *list, GFL_EXIF_DATAEX *extended)
{
    m_hasExif = false;
    m_exifSummary.clear();
    m_shooting.makerName.clear();
    m_shooting.modelName.clear();
    m_shooting.focalRatio = m_shooting.focal35mm = m_shooting.exposureTime = m_shooting.fNumber = 0.0;
    m_shooting.isoSpeed = m_shooting.orientation = 0;
    m_shooting.timestamp = 0;
    m_shooting.exposureValue = 0.0;
    if (list) {
        const CNumbers cNumbers;
        Readings readings{m_shooting};
        for (quint32 i = 0; i < list->NumberOfItems; ++i)
            m_exifSummary += ReadEntry(list->ItemsList[i], readings);
        m_hasExif = SettleFocal(readings, g_Cameras);
        SettleExposure(readings);
        if (m_shooting.timestamp == -1)
            m_shooting.timestamp = 0; // mktime returns -1 for an invalid date
        ReadExtended(extended, m_shooting);
    }
    if (m_shooting.privateKind == 0)
        m_shooting.software.clear();
}

QString ImageDef::DumpExif()
{
    GFL_LOAD_PARAMS params = {};
    ImageDatas::GetDefaultLoadParams(&params);
    params.Flags |= GFL_LOAD_METADATA | GFL_LOAD_FORCE_COLOR_MODEL;
    params.ColorModel = 256; // a form with four channels; the pixels are not used
    params.DefaultAlpha = 255;
    const QSize box = ImageDatas::settings ? ImageDatas::settings->thumbnailSize : ImageDatas().thumbnailSize;
    GFL_BITMAP *loaded = nullptr;
    const int error =
        gflLoadThumbnailUTF8(m_fileName.toUtf8().constData(), box.width(), box.height(), &loaded, &params, nullptr);
    const BitmapOwner bitmap(loaded, gflFreeBitmap);
    if (error != GFL_NO_ERROR)
        return QStringLiteral("ImageDef::DumpExif() Error\n");
    const ExifOwner exif(gflBitmapGetEXIF(bitmap.get(), 1), gflFreeEXIF);
    if (!exif)
        return QStringLiteral("No Exif\n");
    QString table = QStringLiteral("(  Tag  ) ------------------------Value----------------------|"
                                   "-------------------Description-------------------\n");
    for (quint32 i = 0; i < exif->NumberOfItems; ++i)
        table += DumpLine(exif->ItemsList[i]);
    return table;
}
