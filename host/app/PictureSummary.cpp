#include "PictureSummary.h"

#include "ImageDef.h"
#include "PictureHeader.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>

#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>

namespace {

QString Number(double value, int digits = 6)
{
    const QString text = QString::number(value, 'g', digits);
    return text.contains(QLatin1Char('e')) ? QString::number(value, 'f', 8)
                                           : text; // no exponent, for example for a position near the equator
}

/// Rounds a value for scripts, to remove digits that are only rounding errors.
double Rounded(double value, int digits = 6)
{
    return Number(value, digits).toDouble();
}

constexpr quint32 kGpsLatitudeRef = 1, kGpsLatitude = 2, kGpsStatus = 9;

/// The file's EXIF, for facts missing from ShootingInformation.
class FileExif {
public:
    explicit FileExif(const QString &path)
        : m_texts(gflLoadEXIFUTF8(path.toUtf8().constData(), 1), gflFreeEXIF),
          m_values(gflLoadEXIF2UTF8(path.toUtf8().constData(), 1), gflFreeEXIF2)
    {
    }

    /// Returns whether the EXIF has the entry; entries of the GPS block don't count.
    bool Has(quint32 tag) const { return Find(tag, /*ofGps=*/false); }
    /// Returns a number or fraction; 0 if there is none.
    double Number(quint32 tag) const
    {
        const GFL_EXIF_ENTRY *entry = Find(tag, /*ofGps=*/false);
        const QStringList parts = QString::fromUtf8(entry ? entry->Value : "").split(QLatin1Char('/'));
        const double number = parts.size() == 2 ? parts[0].toDouble() / parts[1].toDouble() : parts[0].toDouble();
        return std::isfinite(number) ? number : 0.0;
    }
    QString GpsText(quint32 tag) const
    {
        const GFL_EXIF_ENTRY *entry = Find(tag, /*ofGps=*/true);
        return QString::fromUtf8(entry ? entry->Value : "").trimmed();
    }
    /// Returns whether the first fraction of a GPS entry has a nonzero denominator. GpsText() can't tell: for a
    /// fraction 0/0 it also returns "0".
    bool IsGpsNumber(quint32 tag) const
    {
        constexpr std::size_t kDenominatorAt = 4, kFractionSize = 8; // bytes
        for (const GFL_EXIF_ENTRYEX *entry = m_values ? m_values->Root : nullptr; entry; entry = entry->Next) {
            quint32 denominator = 0;
            if (entry->Block != GFL_EXIF_GPS || entry->Tag != tag || entry->Length < kFractionSize)
                continue;
            std::memcpy(&denominator, entry->Data + kDenominatorAt, sizeof denominator);
            return denominator != 0;
        }
        return false;
    }

private:
    const GFL_EXIF_ENTRY *Find(quint32 tag, bool ofGps) const
    {
        for (quint32 i = 0; m_texts && i < m_texts->NumberOfItems; ++i) {
            const GFL_EXIF_ENTRY &entry = m_texts->ItemsList[i];
            if (entry.Tag == tag && (entry.Flag == GFL_EXIF_GPS) == ofGps && entry.Value)
                return &entry;
        }
        return nullptr;
    }

    std::unique_ptr<GFL_EXIF_DATA, void (*)(GFL_EXIF_DATA *)> m_texts;
    std::unique_ptr<GFL_EXIF_DATAEX, void (*)(GFL_EXIF_DATAEX *)> m_values;
};

/// Describes a picture as the image kernel does, even one that the kernel refuses, such as a gray picture.
std::unique_ptr<ImageDef> Describe(const QString &path)
{
    ImageDef *made = nullptr;
    if (ImageDef::CreateAPicture(path, made, /*withThumbnail=*/false))
        return std::unique_ptr<ImageDef>(made);
    const QByteArray name = path.toUtf8();
    auto image = std::make_unique<ImageDef>();
    image->m_fileName = path;
    const std::unique_ptr<GFL_EXIF_DATA, void (*)(GFL_EXIF_DATA *)> exif(gflLoadEXIFUTF8(name.constData(), 1),
                                                                         gflFreeEXIF);
    const std::unique_ptr<GFL_EXIF_DATAEX, void (*)(GFL_EXIF_DATAEX *)> raw(gflLoadEXIF2UTF8(name.constData(), 1),
                                                                            gflFreeEXIF2);
    image->AnalyseExif(exif.get(), raw.get());
    image->m_metaData.SetExifex(raw.get());
    image->m_hasIcc = gflHasICCProfileUTF8(name.constData());
    image->m_hasIptc = gflHasIPTCUTF8(name.constData());
    image->m_hasXmp = gflHasXMPUTF8(name.constData());
    return image;
}

void AddFile(const GFL_FILE_INFORMATION &info, PictureSummary *facts)
{
    const QString format = QString::fromUtf8(info.Description);
    *facts << PictureFact{QStringLiteral("Size"), QStringLiteral("%1 x %2 pixels").arg(info.Width).arg(info.Height),
                          QStringLiteral("width"), info.Width};
    *facts << PictureFact{QString(), QString(), QStringLiteral("height"), info.Height};
    *facts << PictureFact{QStringLiteral("Depth"),
                          QStringLiteral("%1 bits, %2 channel%3")
                              .arg(info.BitsPerComponent)
                              .arg(info.ComponentsPerPixel)
                              .arg(QLatin1String(info.ComponentsPerPixel == 1 ? "" : "s")),
                          QStringLiteral("depth"), int(info.BitsPerComponent)};
    *facts << PictureFact{QString(), QString(), QStringLiteral("channels"), int(info.ComponentsPerPixel)};
    *facts << PictureFact{QStringLiteral("Format"), format, QStringLiteral("format"), format};
}

void AddCamera(const ShootingInformation &shooting, PictureSummary *facts)
{
    QStringList names{shooting.makerName, shooting.modelName};
    names.removeAll(QString());
    if (!names.isEmpty())
        *facts << PictureFact{QStringLiteral("Camera"), names.join(QLatin1String(", ")), QString(), {}};
    if (!shooting.makerName.isEmpty())
        *facts << PictureFact{QString(), QString(), QStringLiteral("maker"), shooting.makerName};
    if (!shooting.modelName.isEmpty())
        *facts << PictureFact{QString(), QString(), QStringLiteral("model"), shooting.modelName};
}

const char *NameOfLensKind(int kind)
{
    constexpr const char *kNames[] = {"standard", "fisheye", "tilt/shift"};
    return kind >= 0 && kind < 3 ? kNames[kind] : nullptr;
}

void AddLens(const ImageDef &image, PictureSummary *facts)
{
    const ShootingInformation &shooting = image.m_shooting;
    if (!shooting.lensId.isEmpty()) {
        const QStringList names = ImageDef::g_Lenses.findLensList(shooting.makerName, shooting.lensId);
        const QString known = names.isEmpty() ? QStringLiteral("not in the table") : names.join(QLatin1String("; "));
        *facts << PictureFact{QStringLiteral("Lens"), QStringLiteral("%1 (%2)").arg(known, shooting.lensId),
                              QStringLiteral("lensId"), shooting.lensId};
        *facts << PictureFact{QString(), QString(), QStringLiteral("lenses"), QJsonArray::fromStringList(names)};
    }
    if (!image.HasExif())
        return;
    const char *listed = NameOfLensKind(ImageDef::IsFisheyeLens(shooting.makerName, shooting.lensId));
    const QString kind = QLatin1String(listed                   ? listed
                                           : image.Model() == 1 ? "fisheye, by its focal length"
                                                                : "unknown");
    *facts << PictureFact{QStringLiteral("Lens kind"), kind, QStringLiteral("lensKind"), kind};
}

/// Adds the focal length from the file's EXIF: the one in ShootingInformation is not reliable if the ratio to 35 mm
/// film is unknown.
void AddRealFocalLength(const FileExif &exif, PictureSummary *facts)
{
    constexpr quint32 kFocalLength = 37386;
    const double real = exif.Number(kFocalLength);
    if (real > 0.0)
        *facts << PictureFact{QStringLiteral("Focal length"), Number(real) + QLatin1String(" mm"),
                              QStringLiteral("focalLength"), Rounded(real)};
}

void AddFocalLengths(const ImageDef &image, const FileExif &exif, PictureSummary *facts)
{
    if (!image.HasExif())
        return AddRealFocalLength(exif, facts);
    const double equivalent = image.m_shooting.focal35mm;
    const double real = equivalent / image.m_shooting.focalRatio; // 0 if only the equivalent is given
    QStringList texts;
    if (std::isfinite(real) && real > 0.0) {
        texts << Number(real) + QLatin1String(" mm");
        *facts << PictureFact{QString(), QString(), QStringLiteral("focalLength"), Rounded(real)};
    }
    texts << Number(equivalent, 4) + QLatin1String(" mm on a frame of 36 x 24 mm");
    *facts << PictureFact{QStringLiteral("Focal length"), texts.join(QLatin1String(", ")),
                          QStringLiteral("focalLength35mm"), Rounded(equivalent)};
}

/// Returns "1/160 s" or "2.5 s".
QString Seconds(double time)
{
    return (time < 0.3 ? QStringLiteral("1/%1 s").arg(Number(1.0 / time, 4))
                       : QStringLiteral("%1 s").arg(Number(time, 4)));
}

/// Returns the exposure time in seconds; 0 if unknown. Without an ExposureTime entry, ShootingInformation contains the
/// raw ShutterSpeedValue, which is a logarithm: -log2 of the seconds (APEX, EXIF 2.3, annex C).
double ExposureTime(const ShootingInformation &shooting, const FileExif &exif)
{
    constexpr quint32 kExposureTime = 33434, kShutterSpeed = 37377;
    if (exif.Number(kExposureTime) != 0.0 || !exif.Has(kShutterSpeed))
        return shooting.exposureTime;
    return std::exp2(-exif.Number(kShutterSpeed));
}

void AddExposure(const ShootingInformation &shooting, const FileExif &exif, PictureSummary *facts)
{
    const double exposureTime = ExposureTime(shooting, exif);
    QStringList texts;
    const auto add = [&](const char *key, double value, const QString &text) {
        if (!text.isEmpty())
            texts << text;
        *facts << PictureFact{QString(), QString(), QLatin1String(key),
                              Rounded(value)}; // some values have only float precision
    };
    if (exposureTime > 0.0 && std::isfinite(exposureTime))
        add("exposureTime", exposureTime, Seconds(exposureTime));
    if (shooting.fNumber > 0.0)
        add("fNumber", shooting.fNumber, QLatin1String("f/") + Number(shooting.fNumber, 3));
    if (shooting.isoSpeed > 0)
        add("iso", shooting.isoSpeed, QStringLiteral("ISO %1").arg(shooting.isoSpeed));
    if (shooting.exposureBias != 0.0F)
        add("exposureBias", static_cast<double>(shooting.exposureBias),
            QStringLiteral("bias %1").arg(Number(static_cast<double>(shooting.exposureBias), 3)));
    const double exposureValue = std::log2(shooting.fNumber * shooting.fNumber / exposureTime);
    if (std::isfinite(exposureValue) && exposureValue != 0.0)
        add("exposureValue", exposureValue, QString());
    if (!texts.isEmpty())
        *facts << PictureFact{QStringLiteral("Exposure"), texts.join(QLatin1String(", ")), QString(), {}};
}

/// Returns the time of the camera's clock, which ShootingInformation treats as local time without daylight saving.
QDateTime CameraClock(qint64 timestamp)
{
    const std::time_t time = timestamp;
    std::tm local = {};
    if (!localtime_r(&time, &local))
        return QDateTime();
    const long offset = local.tm_gmtoff;
    local.tm_isdst = 0;
    const qint64 saving = std::mktime(&local) - timestamp;
    return QDateTime::fromSecsSinceEpoch(timestamp - saving, Qt::OffsetFromUTC, static_cast<int>(offset));
}

void AddDate(const ShootingInformation &shooting, PictureSummary *facts)
{
    const QDateTime date = CameraClock(shooting.timestamp);
    constexpr int kFirstYear = 1826; // the year of the first photograph; an unset clock gives an earlier year
    if (shooting.timestamp == 0 || date.date().year() < kFirstYear)
        return;
    *facts << PictureFact{QStringLiteral("Taken"), date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                          QStringLiteral("date"), date.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))};
}

void AddPlace(const ShootingInformation &shooting, const FileExif &exif, PictureSummary *facts)
{
    constexpr double kUnknown = ShootingInformation::kUnknownPlace;
    if (shooting.gpsLatitude == kUnknown || shooting.gpsLongitude == kUnknown)
        return;
    // Without a GPS fix, cameras write zeros without N or S, zeros with a status of no reception, or fractions 0/0.
    const bool isZero = shooting.gpsLatitude == 0.0 && shooting.gpsLongitude == 0.0;
    if (isZero
        && (exif.GpsText(kGpsLatitudeRef).isEmpty() || exif.GpsText(kGpsStatus) == QLatin1String("V")
            || !exif.IsGpsNumber(kGpsLatitude)))
        return;
    const QString north = QStringLiteral("%1\u00b0 %2").arg(Number(shooting.gpsLatitude, 8), shooting.gpsLatitudeRef);
    const QString east = QStringLiteral("%1\u00b0 %2").arg(Number(shooting.gpsLongitude, 8), shooting.gpsLongitudeRef);
    const double latitudeSign = shooting.gpsLatitudeRef.startsWith(QLatin1Char('S')) ? -1.0 : 1.0;
    const double longitudeSign = shooting.gpsLongitudeRef.startsWith(QLatin1Char('W')) ? -1.0 : 1.0;
    *facts << PictureFact{QStringLiteral("Place"), north + QLatin1String(", ") + east, QStringLiteral("latitude"),
                          latitudeSign * Rounded(shooting.gpsLatitude, 10)};
    *facts << PictureFact{QString(), QString(), QStringLiteral("longitude"),
                          longitudeSign * Rounded(shooting.gpsLongitude, 10)};
}

void AddDirection(const ShootingInformation &shooting, PictureSummary *facts)
{
    if (shooting.gpsDirection == ShootingInformation::kUnknownPlace)
        return;
    *facts << PictureFact{
        QStringLiteral("Direction"),
        QStringLiteral("%1\u00b0 %2").arg(Number(shooting.gpsDirection), shooting.gpsDirectionRef).trimmed(),
        QStringLiteral("direction"), shooting.gpsDirection};
}

void AddOrientation(int orientation, PictureSummary *facts)
{
    constexpr const char *kNames[] = {"upright",
                                      "mirrored",
                                      "to be rotated by 180\u00b0",
                                      "mirrored, to be rotated by 180\u00b0",
                                      "mirrored, to be rotated by 90\u00b0 counterclockwise",
                                      "to be rotated by 90\u00b0 clockwise",
                                      "mirrored, to be rotated by 90\u00b0 clockwise",
                                      "to be rotated by 90\u00b0 counterclockwise"};
    if (orientation < 1 || orientation > 8)
        return;
    *facts << PictureFact{QStringLiteral("Orientation"),
                          QStringLiteral("%1 (%2)").arg(QString::fromUtf8(kNames[orientation - 1])).arg(orientation),
                          QStringLiteral("orientation"), orientation};
}

void AddMetadata(const ImageDef &image, PictureSummary *facts)
{
    QStringList names;
    const auto add = [&names](bool has, const char *name) {
        if (has)
            names << QLatin1String(name);
    };
    add(image.m_metaData.Exifex() != nullptr, "EXIF");
    add(image.m_hasIcc, "ICC");
    add(image.m_hasIptc, "IPTC");
    add(image.m_hasXmp, "XMP");
    *facts << PictureFact{QStringLiteral("Metadata"),
                          names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", ")),
                          QStringLiteral("metadata"), QJsonArray::fromStringList(names)};
}

} // namespace

PictureSummary SummaryOfPicture(const QString &path, const PictureHeader &header)
{
    PictureSummary facts;
    AddFile(header.Information(), &facts);
    const std::unique_ptr<ImageDef> image = Describe(path);
    AddCamera(image->m_shooting, &facts);
    AddLens(*image, &facts);
    const FileExif exif(path);
    AddFocalLengths(*image, exif, &facts);
    AddExposure(image->m_shooting, exif, &facts);
    AddDate(image->m_shooting, &facts);
    AddPlace(image->m_shooting, exif, &facts);
    AddDirection(image->m_shooting, &facts);
    AddOrientation(image->m_shooting.orientation, &facts);
    AddMetadata(*image, &facts);
    return facts;
}

QString ExifTable(const QString &path)
{
    ImageDef image;
    image.m_fileName = path;
    return image.DumpExif();
}
