// Runs the program's fitted corrections on pictures whose pixel values are their coordinates. Every pixel of the result
// then holds its source position, which is compared with the lens models in long double.
#include "DngFile.h"
#include "MadeProfiles.h"
#include "ModelOracle.h"
#include "ProgramTest.h"
#include "SpelledProfile.h"
#include "TiffRaster.h"

#include <QtEndian>

#include <cmath>
#include <exiv2/exiv2.hpp>

namespace {

/// Light of the ramps, and of a uniform picture; leaves room for the gain.
constexpr double kLow = 0.1, kRange = 0.6, kFlat = 0.6;
constexpr double kRawGamma = 2.2, kRawBrightness = 2.5; // of the program's raw development

struct Row {
    QVector<ProfileEntry> entries; // of the profile
    OracleBlend blend = {};        // expected; the first entry if empty
    OraclePicture picture = {};
    QMap<QByteArray, QByteArray> metadata = {};
    QString options = "keep --sampling bilinear"_s; // starts with the framing
    Projection projection = Projection::Rectilinear;
    bool isRaw = false;

    void SetSize(int width, int height)
    {
        picture = {};
        picture.wholeWidth = picture.width = width;
        picture.wholeHeight = picture.height = height;
    }
    QSize Size() const { return {picture.width, picture.height}; }
    /// Returns the width of the border in which the picture's edges affect samples.
    double MarginPx() const { return isRaw || options.contains("sharp"_s) ? 4.0 : 0.0; }
    OraclePlaces At(int x, int y, double zoom) const { return OracleAt(blend, picture, projection, zoom, x, y); }
};

/// Returns an entry for a frame of 600 x 400 pixels and the camera body of the DNG files.
ProfileEntry Entry()
{
    ProfileEntry entry = made::Entry();
    entry.make = "Acme"_s;
    entry.model = "Camera 1"_s;
    entry.width = 600.0;
    entry.height = 400.0;
    return entry;
}

ProfileEntry Fisheye(int coefficients)
{
    ProfileEntry entry = Entry();
    entry.kind = ProfileEntry::Kind::Fisheye;
    const double focal = 0.6;
    entry.green = entry.geometry =
        made::Model(focal, 0.505, 0.492, QVector<double>{-0.03, 0.004, -0.0008}.mid(0, coefficients));
    entry.redGreen->focalLengthX = entry.blueGreen->focalLengthX = entry.vignette->focalLengthX = focal;
    entry.redGreen->coefficients = {0.0003};
    entry.vignette->coefficients = {-0.3, 0.05};
    return entry;
}

bool Holds(const OraclePicture &picture, const OraclePlaces &places, double margin)
{
    const double right = picture.width - 1.0 - margin, bottom = picture.height - 1.0 - margin;
    const OraclePoint all[] = {places.red, places.green, places.blue};
    return std::all_of(std::begin(all), std::end(all), [=](const OraclePoint &place) {
        return place.x >= margin && place.y >= margin && place.x <= right && place.y <= bottom;
    });
}

/// Returns the smallest zoom that leaves no pixel empty.
double FillZoom(const Row &row)
{
    double low = 0.5, high = 2.0;
    const QSize size = row.Size();
    for (int i = 0; i < 40; ++i) {
        const double zoom = (low + high) / 2.0;
        bool isFull = true;
        for (int x = 0; x < size.width() && isFull; ++x)
            for (int y = 0; y < size.height(); y += x % (size.width() - 1) == 0 ? 1 : size.height() - 1)
                isFull = isFull && Holds(row.picture, row.At(x, y, zoom), -0.5);
        (isFull ? high : low) = zoom;
    }
    return high;
}

using Ramp = std::function<double(double x, double y)>; // light at a position in the picture

void WriteRamp(const QString &path, const QSize &size, const Ramp &ramp)
{
    TiffRaster raster = BlankRaster(size.width(), size.height(), 3, 32);
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x)
            raster.At(x, y, 0) = raster.At(x, y, 1) = raster.At(x, y, 2) = float(ramp(x, y));
    WriteTiff(path, raster);
}

void WriteDng(const QString &path, const QSize &size, const Ramp &ramp)
{
    constexpr double kNeutral[2][2] = {{0.5, 1.0}, {1.0, 0.75}};
    QByteArray file = DngFile(size, {0.0, 0.0, 0.0});
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double value = ramp(x, y) / kRawBrightness * kNeutral[y % 2][x % 2];
            qToLittleEndian(quint16(std::lround(value * 65535.0)), file.data() + 8 + 2 * (y * size.width() + x));
        }
    }
    WriteFile(path, file);
}

void WriteMetadata(const QString &path, const QMap<QByteArray, QByteArray> &more)
{
    QMap<QByteArray, QByteArray> all = {{"Exif.Image.Make", "Acme"},
                                        {"Exif.Image.Model", "Camera 1"},
                                        {"Exif.Photo.FocalLength", "24/1"},
                                        {"Exif.Photo.FNumber", "4/1"},
                                        {"Exif.Photo.SubjectDistance", "3/1"}};
    for (auto one = more.begin(); one != more.end(); ++one)
        all[one.key()] = one.value();
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    for (auto one = all.begin(); one != all.end(); ++one) {
        if (one.key().startsWith("Exif."))
            image->exifData()[one.key().toStdString()] = one.value().toStdString();
        else
            image->xmpData()[one.key().toStdString()] = one.value().toStdString();
    }
    image->writeMetadata();
}

} // namespace

Q_DECLARE_METATYPE(Row)

class FittedCoordinatesTest : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void everyPixelHasItsSourcePosition_data();
    void everyPixelHasItsSourcePosition();

private:
    void AddOtherFrames();
    std::vector<TiffRaster> Corrected(const Row &row, const QVector<Ramp> &ramps);
};

namespace {

void Add(const char *name, const std::function<void(Row &)> &change)
{
    Row row{{Entry()}};
    row.SetSize(300, 200);
    change(row);
    if (row.blend.isEmpty())
        row.blend = {{row.entries[0], 1.0L}};
    QTest::newRow(name) << row;
}

/// Sets up a picture whose setting lies between those of eight entries. The lower entry of each pair has the weight
/// (1/25 - 1/40) / (1/20 - 1/40) = 0.6 for 25 mm between 20 and 40 mm; 1/2 for 1.5 m between 1 and 3 m; and, for
/// vignetting only, (1/8 - 1/16) / (1/4 - 1/16) = 1/3 for N^2 = 8 between f/2 and f/4.
void SetBetween(Row &row)
{
    row.entries.clear();
    for (int i = 0; i < 8; ++i) {
        ProfileEntry entry = Entry();
        entry.focalMm = i & 4 ? 40.0 : 20.0;
        entry.distanceM = i & 2 ? 3.0 : 1.0;
        entry.apertureApex = i & 1 ? 4.0 : 2.0;
        entry.green->focalLengthX = i & 4 ? 1.7 : 0.9;
        entry.green->coefficients = {i & 4 ? 0.08 : -0.06, i & 2 ? 0.01 : 0.03};
        entry.green->centerX = i & 4 ? 0.503 : 0.509;
        entry.redGreen->scaleFactor = i & 2 ? 1.0008 : 0.9991;
        entry.vignette->coefficients = {-0.1 * (i + 1), 0.02 * i};
        row.entries << entry;
        const long double byAperture = i & 1 ? 2.0L / 3.0L : 1.0L / 3.0L;
        row.blend.append({entry, (i & 4 ? 0.4L : 0.6L) * 0.5L * byAperture});
    }
    row.metadata = {{"Exif.Photo.FocalLength", "25/1"},
                    {"Exif.Photo.SubjectDistance", "3/2"},
                    {"Exif.Photo.FNumber", "282843/100000"}};
}

} // namespace

void FittedCoordinatesTest::everyPixelHasItsSourcePosition_data()
{
    QTest::addColumn<Row>("row");
    Add("half the profile's size", [](Row &) {});
    Add("the profile's size", [](Row &row) { row.SetSize(600, 400); });
    Add("a fifth of the profile's size", [](Row &row) { row.SetSize(120, 80); });
    Add("twice the profile's size", [](Row &row) { row.SetSize(1200, 800); });
    Add("filled", [](Row &row) { row.options = "fill --sampling bilinear"_s; });
    Add("sharp", [](Row &row) { row.options = "keep --sampling sharp"_s; });
    Add("sharp, filled", [](Row &row) { row.options = "fill --sampling sharp"_s; });
    Add("between eight entries", SetBetween);
    Add("large coefficients", [](Row &row) {
        row.entries[0].green->coefficients = {-0.3, 0.2, -0.1};
        row.entries[0].green->tangential1 = 0.012;
        row.entries[0].green->tangential2 = -0.009;
        row.entries[0].redGreen->scaleFactor = 1.005;
        row.entries[0].blueGreen->scaleFactor = 0.995;
    });
    for (int turn = 2; turn <= 8; ++turn)
        Add(qPrintable("stored with orientation %1"_s.arg(turn)),
            [=](Row &row) { row.metadata["Exif.Image.Orientation"] = QByteArray::number(turn); });
    for (int turn : {1, 6})
        Add(qPrintable("camera raw, orientation %1"_s.arg(turn)), [=](Row &row) {
            row.isRaw = true; // raw pixels keep the sensor's orientation
            row.SetSize(90, 60);
            row.metadata["Exif.Image.Orientation"] = QByteArray::number(turn);
        });
    for (int coefficients = 1; coefficients <= 3; ++coefficients)
        Add(qPrintable("fisheye, %1 coefficients"_s.arg(coefficients)),
            [=](Row &row) { row.entries[0] = Fisheye(coefficients); });
    const std::pair<const char *, Projection> projections[] = {{"equidistant", Projection::Equidistant},
                                                               {"stereographic", Projection::Stereographic},
                                                               {"equisolid", Projection::Equisolid}};
    for (const auto &[name, projection] : projections)
        Add(qPrintable("fisheye, "_s + QLatin1String(name)), [name = name, projection = projection](Row &row) {
            row.entries[0] = Fisheye(3);
            row.options += " --projection "_s + QLatin1String(name);
            row.projection = projection;
        });
    AddOtherFrames();
}

void FittedCoordinatesTest::AddOtherFrames()
{
    Add("smaller sensor, from the camera table", [](Row &row) {
        row.entries[0].sensorFormatFactor = 1.0;
        row.metadata = {{"Exif.Image.Make", "Canon"}, {"Exif.Image.Model", "Canon EOS 40D"}};
        row.picture.ratio = 1.0L / 1.622L;
        row.picture.ownCenter = false;
    });
    // The sensor's width is 3,000 px divided by the pixels per centimeter; the profile's frame is 36 mm wide.
    const std::pair<const char *, double> bodies[] = {{"sensor 0.6 times as wide, from EXIF", 0.6},
                                                      {"sensor 1.039 times as wide, from EXIF", 1.039}};
    for (const auto &[name, ratio] : bodies)
        Add(name, [q = ratio](Row &row) {
            row.entries[0].sensorFormatFactor = 1.0;
            row.metadata = {
                {"Exif.Image.Model", "Camera 2"},
                {"Exif.Photo.PixelXDimension", "3000"},
                {"Exif.Photo.PixelYDimension", "2000"},
                {"Exif.Photo.FocalPlaneXResolution", QByteArray::number(int(std::lround(3e6 / (3.6 * q)))) + "/1000"},
                {"Exif.Photo.FocalPlaneResolutionUnit", "3"}};
            row.picture.ratio = q;
            row.picture.ownCenter = false;
        });
    Add("digital zoom", [](Row &row) {
        row.metadata["Exif.Photo.DigitalZoomRatio"] = "2/1";
        row.picture.ratio = 0.5L;
    });
    Add("crop mode", [](Row &row) { // uncropped, 24 mm on this body (factor 1.5) is equivalent to 36 mm
        row.metadata["Exif.Photo.FocalLengthIn35mmFilm"] = "54";
        row.picture.ratio = 36.0L / 54.0L;
    });
    Add("16 : 9", [](Row &row) {
        row.SetSize(320, 180);
        row.picture.ownCenter = false;
    });
    Add("square", [](Row &row) { // cropped from 3 : 2
        row.SetSize(240, 240);
        row.picture.ratio = 2.0L / 3.0L;
        row.picture.ownCenter = false;
    });
    Add("cropped by a raw converter", [](Row &row) { // the right half of the upper two thirds
        row.SetSize(300, 266);
        row.picture.wholeWidth = 600.0L;
        row.picture.wholeHeight = 400.0L;
        row.picture.left = 300.0L;
        row.metadata = {{"Xmp.crs.HasCrop", "True"}, {"Xmp.crs.AlreadyApplied", "True"},
                        {"Xmp.crs.CropLeft", "0.5"}, {"Xmp.crs.CropTop", "0"},
                        {"Xmp.crs.CropRight", "1"},  {"Xmp.crs.CropBottom", "0.665"},
                        {"Xmp.crs.CropAngle", "0"}};
    });
    Add("stored upright after an unknown rotation", [](Row &row) {
        row.SetSize(200, 300);
        row.picture.ownCenter = false;
        row.blend = {{row.entries[0], 1.0L}};
        for (auto model : {&ProfileEntry::green, &ProfileEntry::redGreen, &ProfileEntry::blueGreen})
            (row.blend[0].entry.*model)->tangential1 = (row.blend[0].entry.*model)->tangential2 = 0.0;
    });
}

/// Corrects one picture per ramp in a single run and returns the results.
std::vector<TiffRaster> FittedCoordinatesTest::Corrected(const Row &row, const QVector<Ramp> &ramps)
{
    QString names;
    for (int i = 0; i < ramps.size(); ++i) {
        const QString name = QString::number(i) + (row.isRaw ? ".dng"_s : ".tiff"_s);
        (row.isRaw ? WriteDng : WriteRamp)(Path(name), row.Size(), ramps[i]);
        WriteMetadata(Path(name), row.metadata);
        names += QLatin1Char(' ') + name;
    }
    WriteFile(Path("a.lcp"_s), SpelledProfile(row.entries));
    const ProgramResult result = Run("correct --profile a.lcp --framing "_s + row.options + names);
    if (result.exitCode != 0)
        throw std::runtime_error(result.error.toStdString());
    std::vector<TiffRaster> results;
    for (int i = 0; i < ramps.size(); ++i)
        results.push_back(ReadTiff(Path("%1_corrected.tiff"_s.arg(i))));
    return results;
}

void FittedCoordinatesTest::everyPixelHasItsSourcePosition()
{
    QFETCH(const Row, row);
    const QSize size = row.Size();
    const double right = size.width() - 1.0, bottom = size.height() - 1.0;
    const auto ramp = [](double share) { return kLow + kRange * share; };
    const std::vector<TiffRaster> results =
        Corrected(row,
                  {[=](double x, double) { return ramp(x / right); },
                   [=](double, double y) { return ramp(y / bottom); }, [](double, double) { return kFlat; }});
    const TiffRaster &ofX = results[0], &ofY = results[1], &flat = results[2];
    QCOMPARE(QSize(ofX.width, ofX.height), size);
    const auto light = [&](const TiffRaster &result, int x, int y, int c) {
        const double stored = double(result.At(x, y, c));
        return row.isRaw ? std::pow(stored / 65535.0, kRawGamma) : stored;
    };
    const double zoom = row.options.startsWith("fill"_s) ? FillZoom(row) : 1.0;
    double worst = 0.0, worstGain = 0.0;
    QString where;
    int compared = 0, pixels = 0;
    const int step = qMax(1, size.width() / 75);
    for (int y = 0; y < size.height(); y += step) {
        for (int x = 0; x < size.width(); x += step) {
            ++pixels;
            const OraclePlaces at = row.At(x, y, zoom);
            if (!Holds(row.picture, at, row.MarginPx()))
                continue;
            ++compared;
            const OraclePoint places[] = {at.red, at.green, at.blue};
            for (int c = 0; c < 3; ++c) {
                const double gain = light(flat, x, y, c) / kFlat;
                const double dx = (light(ofX, x, y, c) / gain - kLow) / kRange * right - double(places[c].x);
                const double dy = (light(ofY, x, y, c) / gain - kLow) / kRange * bottom - double(places[c].y);
                if (!(std::hypot(dx, dy) <= worst)) { // true for NaN too
                    worst = std::hypot(dx, dy);
                    where = "off by %1, %2 at %3, %4, channel %5"_s.arg(dx).arg(dy).arg(x).arg(y).arg(c);
                }
                worstGain = std::max(worstGain, std::abs(gain / double(at.gain) - 1.0));
            }
        }
    }
    QVERIFY2(worst < 0.02, qPrintable(where));
    QVERIFY2(worstGain < 1e-4, qPrintable(QString::number(worstGain)));
    QVERIFY2(compared > pixels * 3 / 4, qPrintable("%1 of %2"_s.arg(compared).arg(pixels)));
}

QTEST_GUILESS_MAIN(FittedCoordinatesTest)
#include "FittedCoordinates_test.moc"
