// Fitted corrections from file to file, judged by the lens models in long double: pictures whose values are their own
// coordinates tell where every pixel was taken from, and even ones how much it was brightened.
#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "MadeProfiles.h"
#include "ModelOracle.h"
#include "SpelledProfile.h"
#include "TestFiles.h"
#include "TiffRaster.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <exiv2/exiv2.hpp>
#include <lcms2.h>

namespace {

using Entries = QVector<ProfileEntry>;
using Params = KVitreluxOne2One::Params;

FakeHost &Host()
{
    return *static_cast<FakeHost *>(QCoreApplication::instance());
}

// --- Profiles ---

QByteArray Text(double value)
{
    return QByteArray::number(value, 'g', 17);
}

SpelledNode Spelled(const char *name, const ProfileModel &model, const QByteArray &term = "RadialDistortParam")
{
    SpelledNode node{name,
                     {{"FocalLengthX", Text(model.focalLengthX)},
                      {"ImageXCenter", Text(model.centerX)},
                      {"ImageYCenter", Text(model.centerY)},
                      {"ScaleFactor", Text(model.scaleFactor)},
                      {"TangentialDistortParam1", Text(model.tangential1)},
                      {"TangentialDistortParam2", Text(model.tangential2)}},
                     {}};
    for (int i = 0; i < model.coefficients.size(); ++i)
        node.values.append(SpelledValue{term + QByteArray::number(i + 1), Text(model.coefficients[i])});
    return node;
}

SpelledNode Spelled(const ProfileEntry &entry)
{
    const bool isFisheye = entry.kind == ProfileEntry::Kind::Fisheye;
    SpelledNode lens = Spelled(isFisheye ? "FisheyeModel" : "PerspectiveModel", *entry.geometry);
    lens.models = {Spelled("ChromaticGreenModel", *entry.green), Spelled("ChromaticRedGreenModel", *entry.redGreen),
                   Spelled("ChromaticBlueGreenModel", *entry.blueGreen),
                   Spelled("VignetteModel", *entry.vignette, "VignetteModelParam")};
    return {"",
            {{"Make", entry.make.toUtf8()},
             {"Model", entry.model.toUtf8()},
             {"ImageWidth", Text(entry.width)},
             {"ImageLength", Text(entry.height)},
             {"SensorFormatFactor", Text(entry.sensorFormatFactor)},
             {"FocalLength", Text(entry.focalMm)},
             {"FocusDistance", Text(entry.distanceM)},
             {"ApertureValue", Text(entry.apertureApex)}},
            {lens}};
}

/// Of a frame of 600 x 400.
ProfileEntry SmallEntry(double focalMm = 24.0)
{
    ProfileEntry entry = made::Entry(focalMm);
    entry.width = 600.0;
    entry.height = 400.0;
    return entry;
}

ProfileEntry FisheyeEntry()
{
    ProfileEntry entry = SmallEntry();
    entry.kind = ProfileEntry::Kind::Fisheye;
    entry.green = entry.geometry = made::Model(0.6, 0.505, 0.492, {-0.03, 0.004, -0.0008});
    return entry;
}

/// Without what is lost where nothing tells the place of the picture in the frame or, not @p isLying, its turn.
ProfileEntry Centered(ProfileEntry entry, bool isLying)
{
    for (auto *model : {&entry.geometry, &entry.green, &entry.redGreen, &entry.blueGreen, &entry.vignette}) {
        (*model)->centerX = (*model)->centerY = 0.5;
        if (!isLying)
            (*model)->tangential1 = (*model)->tangential2 = 0.0;
    }
    return entry;
}

/// All of the frame.
OraclePicture Whole(const QSize &size)
{
    OraclePicture picture = {};
    picture.wholeWidth = picture.width = size.width();
    picture.wholeHeight = picture.height = size.height();
    picture.ratio = 1.0L;
    picture.turn = 1;
    picture.ownCenter = true;
    return picture;
}

/// Two that differ by their distortion alone, so that green's places blend as they are.
Entries Zoom()
{
    ProfileEntry wide = Centered(SmallEntry(20.0), false);
    wide.redGreen->coefficients = wide.blueGreen->coefficients = {0.0};
    wide.redGreen->scaleFactor = wide.blueGreen->scaleFactor = 1.0;
    ProfileEntry tele = wide;
    tele.focalMm = 40.0;
    tele.green->focalLengthX = 2.04;
    tele.green->coefficients = {0.09, -0.02};
    tele.geometry = tele.green;
    return {wide, tele};
}

// --- Pictures ---

template <typename Value> TiffRaster Filled(const QSize &size, int bits, Value value)
{
    TiffRaster raster = BlankRaster(size.width(), size.height(), 3, bits);
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x)
            for (int c = 0; c < 3; ++c)
                raster.At(x, y, c) = float(value(x, y, c));
    return raster;
}

/// Both coordinates, 0 to 1 over the picture: y in the channels of @p yChannels, x in the others.
TiffRaster Coordinates(const QSize &size, int yChannels)
{
    const double right = size.width() - 1.0, bottom = size.height() - 1.0;
    return Filled(size, 32, [=](int x, int y, int c) { return yChannels >> c & 1 ? y / bottom : x / right; });
}

/// Taken with "Maker BODY" at f/4 and 3 m.
void AddShot(const QString &path, double focalMm, int orientation, const QByteArray &profile)
{
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    Exiv2::ExifData &exif = image->exifData();
    exif["Exif.Image.Make"] = "Maker";
    exif["Exif.Image.Model"] = "BODY";
    exif["Exif.Image.Orientation"] = std::uint16_t(orientation);
    exif["Exif.Photo.FocalLength"] = Exiv2::Rational(int(focalMm), 1);
    exif["Exif.Photo.FNumber"] = Exiv2::Rational(4, 1);
    exif["Exif.Photo.SubjectDistance"] = Exiv2::Rational(3, 1);
    if (!profile.isEmpty()) {
        Exiv2::DataBuf icc(reinterpret_cast<const Exiv2::byte *>(profile.constData()), profile.size());
        image->setIccProfile(icc);
    }
    image->writeMetadata();
}

QByteArray RgbProfile(double gamma)
{
    const cmsCIExyY white = {0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1.0}, {0.30, 0.60, 1.0}, {0.15, 0.06, 1.0}};
    cmsToneCurve *curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve *curves[] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(int(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    cmsFreeToneCurve(curve);
    return bytes;
}

struct Shot {
    Entries entries;
    double focalMm = 24.0;
    int orientation = 1;
    QByteArray profile = {}; // ICC
};

using Options = QList<QPair<QString, QString>>;

} // namespace

Q_DECLARE_METATYPE(Entries)
Q_DECLARE_METATYPE(ProfileEntry)

class tst_FittedProcess : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        Host().Clear();
        m_process.setProperty("Correction", "fitted"_s);
    }
    void everyPixelComesFromItsPlace_data();
    void everyPixelComesFromItsPlace();
    void previewIsTheFileScaled();
    void gainIsOfLight_data();
    void gainIsOfLight();
    void grayStaysGray_data();
    void grayStaysGray();

private:
    void *Record(const Options &options);
    QString Put(const TiffRaster &source, const Shot &shot);
    TiffRaster Corrected(const TiffRaster &source, const Shot &shot, const Options &options);

    QTemporaryDir m_dir;
    KVitreluxOne2One m_process;
    QString m_assumed; // of the last run
};

void *tst_FittedProcess::Record(const Options &options)
{
    QDomDocument document;
    QDomElement element = document.createElement("any"_s);
    element.setAttribute("LCPfilename"_s, m_dir.filePath("a.lcp"_s));
    element.setAttribute("Sampling"_s, "bilinear"_s); // which is exact for coordinates
    element.setAttribute("Framing"_s, "keep"_s);
    for (const auto &[name, value] : options)
        element.setAttribute(name, value);
    return m_process.AllocParameters(element);
}

QString tst_FittedProcess::Put(const TiffRaster &source, const Shot &shot)
{
    QList<SpelledNode> nodes;
    for (const ProfileEntry &entry : shot.entries)
        nodes << Spelled(entry);
    WriteFile(m_dir.filePath("a.lcp"_s), SpelledProfile(nodes, Spelling::Attributes));
    const QString path = m_dir.filePath("a.tif"_s);
    WriteTiff(path, source);
    AddShot(path, shot.focalMm, shot.orientation, shot.profile);
    Host().Clear(); // the description of the last picture under this name
    Host().Def(path)->pixels.ID_Read(path, /*nativeDepth=*/true);
    return path;
}

TiffRaster tst_FittedProcess::Corrected(const TiffRaster &source, const Shot &shot, const Options &options)
{
    const QString path = Put(source, shot);
    void *record = Record(options);
    QString output;
    m_process.Process(path, record, output);
    m_assumed = m_process.GetXmlParameters(record).attribute("Assumed"_s);
    m_process.FreeParameters(record);
    return ReadTiff(output);
}

const QMap<QString, Projection> kProjections = {{"rectilinear"_s, Projection::Rectilinear},
                                                {"equidistant"_s, Projection::Equidistant},
                                                {"stereographic"_s, Projection::Stereographic},
                                                {"equisolid"_s, Projection::Equisolid}};
const Options kPlaces = {{"Disto"_s, "1"_s}, {"CA"_s, "1"_s}};
const Options kAll = {{"Disto"_s, "1"_s}, {"CA"_s, "1"_s}, {"Falloff"_s, "1"_s}};

void tst_FittedProcess::everyPixelComesFromItsPlace_data()
{
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("focalMm");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<ProfileEntry>("model"); // that the oracle knows; the frame's ratio is picked by the size
    QTest::addColumn<QString>("projection"); // empty: the default, rectilinear
    const auto row = [](const char *name, const ProfileEntry &entry, const QSize &size, int orientation = 1) {
        QTest::newRow(name) << Entries{entry} << size << 24.0 << orientation << entry << QString();
    };
    row("the profile's size", SmallEntry(), {600, 400});
    row("a fifth", SmallEntry(), {120, 80});
    row("twice", SmallEntry(), {1200, 800});
    row("orientation is of the file, not of the pixels", SmallEntry(), {300, 200}, 6);
    row("fisheye", FisheyeEntry(), {450, 300});
    for (const QString &name : kProjections.keys())
        QTest::newRow(("fisheye, "_s + name).toUtf8())
            << Entries{FisheyeEntry()} << QSize(450, 300) << 24.0 << 1 << FisheyeEntry() << name;
    const Entries own = {SmallEntry()};
    QTest::newRow("stored upright") << own << QSize(200, 300) << 24.0 << 1 << Centered(SmallEntry(), false)
                                    << QString();
    QTest::newRow("wider") << own << QSize(320, 180) << 24.0 << 1 << Centered(SmallEntry(), true) << QString();
    QTest::newRow("square") << own << QSize(240, 240) << 24.0 << 1 << Centered(SmallEntry(), true) << QString();
    QTest::newRow("between") << Zoom() << QSize(300, 200) << 25.0 << 1 << Zoom()[0] << QString();
}

void tst_FittedProcess::everyPixelComesFromItsPlace()
{
    QFETCH(const Entries, entries);
    QFETCH(const QSize, size);
    QFETCH(const double, focalMm);
    QFETCH(const int, orientation);
    QFETCH(const ProfileEntry, model);
    QFETCH(const QString, projection);
    const Projection oracles = kProjections.value(projection, Projection::Rectilinear);
    const Shot shot{entries, focalMm, orientation};
    const Options options = kPlaces + Options{{"Projection"_s, projection}};
    const TiffRaster results[] = {Corrected(Coordinates(size, 0b010), shot, options),
                                  Corrected(Coordinates(size, 0b101), shot, options)};
    constexpr float kGrey = 0.05F;
    const TiffRaster light = Corrected(Filled(size, 32, [=](int, int, int) { return kGrey; }), shot, kAll + options);

    OraclePicture picture = Whole(size);
    if (size.width() == size.height()) // cut from the middle of 3 : 2
        picture.ratio = 2.0L / 3.0L;
    const long double right = size.width() - 1, bottom = size.height() - 1;
    double worst = 0.0, worstGain = 0.0;
    QString where;
    int compared = 0, pixels = 0;
    const int step = qMax(1, size.width() / 150);
    for (int y = 0; y < size.height(); y += step) {
        for (int x = 0; x < size.width(); x += step) {
            OraclePlaces at = OracleAt(model, picture, oracles, 1.0, x, y);
            if (entries.size() == 2) { // at 25 mm: (1/25 - 1/40) / (1/20 - 1/40) = 0.6 of the first
                const OraclePoint tele = OracleAt(entries[1], picture, Projection::Rectilinear, 1.0, x, y).green;
                at.red = at.green = at.blue = {0.6L * at.green.x + 0.4L * tele.x, 0.6L * at.green.y + 0.4L * tele.y};
            }
            const OraclePoint places[] = {at.red, at.green, at.blue};
            for (int c = 0; c < 3; ++c) {
                ++pixels;
                const OraclePoint place = places[c];
                if (entries.size() == 1 && c == 1 && light.At(x, y, 1) > 0.0F)
                    worstGain =
                        std::max(worstGain, std::abs(double(light.At(x, y, 1) / kGrey) / double(at.gain) - 1.0));
                if (place.x < 0 || place.y < 0 || place.x > right || place.y > bottom)
                    continue;
                ++compared;
                const double dx = double(results[c == 1].At(x, y, c) * right - place.x);
                const double dy = double(results[c != 1].At(x, y, c) * bottom - place.y);
                if (!(std::hypot(dx, dy) <= worst)) {
                    worst = std::hypot(dx, dy);
                    where = QStringLiteral("off by %1, %2 at %3, %4, channel %5").arg(dx).arg(dy).arg(x).arg(y).arg(c);
                }
            }
        }
    }
    QVERIFY2(worst < 0.02, qPrintable(where));
    QVERIFY2(worstGain < 1e-4, qPrintable(QString::number(worstGain)));
    QVERIFY2(compared > pixels * 3 / 4, qPrintable(QStringLiteral("%1 of %2").arg(compared).arg(pixels)));
}

// A picture of 1500 x 1001 reduced to 301 x 200, which scales both sides apart: where its pixels come from, beside
// where those of the whole picture do.
void tst_FittedProcess::previewIsTheFileScaled()
{
    const QSize whole(1500, 1001), small(301, 200);
    const Shot shot{{SmallEntry()}};
    const QString path = Put(Coordinates(whole, 0b010), shot);
    OraclePicture picture = Whole(whole);
    const long double scaleX = (long double)whole.width() / small.width();
    const long double scaleY = (long double)whole.height() / small.height();
    void *record = Record(kPlaces);
    double worst = 0.0;
    int compared = 0;
    for (int yChannels : {0b010, 0b101}) {
        KImage image(small.width(), small.height(), GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
        const TiffRaster values = Coordinates(small, yChannels);
        for (int y = 0; y < small.height(); ++y)
            for (int x = 0; x < small.width(); ++x) {
                auto *pixel = reinterpret_cast<float *>(image.getData(x, y));
                for (int c = 0; c < 3; ++c)
                    pixel[c] = values.At(x, y, c);
                pixel[3] = 1.0F;
            }
        m_process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def(path)), &image), record);
        for (int y = 0; y < small.height(); ++y)
            for (int x = 0; x < small.width(); ++x) {
                const auto at = OracleAt(shot.entries[0], picture, Projection::Rectilinear, 1.0,
                                         (x + 0.5L) * scaleX - 0.5L, (y + 0.5L) * scaleY - 0.5L);
                const OraclePoint places[] = {at.red, at.green, at.blue};
                for (int c = 0; c < 3; ++c) {
                    const bool isY = yChannels >> c & 1;
                    const double last = (isY ? small.height() : small.width()) - 1.0;
                    const double place = double(isY ? (places[c].y + 0.5L) / scaleY : (places[c].x + 0.5L) / scaleX);
                    const double expected = qBound(0.0, place - 0.5, last);
                    const auto *pixel = reinterpret_cast<const float *>(image.getData(x, y));
                    if (pixel[3] != 1.0F)
                        continue;
                    ++compared;
                    worst = std::max(worst, std::abs(double(pixel[c]) * last - expected));
                }
            }
    }
    m_process.FreeParameters(record);
    QVERIFY2(worst < 0.05, qPrintable(QString::number(worst)));
    QVERIFY(compared > small.width() * small.height() * 5);
}

void tst_FittedProcess::gainIsOfLight_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<double>("gamma"); // of an ICC profile; 0: none
    QTest::addColumn<bool>("isAssumed");
    QTest::newRow("no profile, 8 bits: sRGB") << 8 << 0.0 << true;
    QTest::newRow("no profile, 16 bits: sRGB") << 16 << 0.0 << true;
    QTest::newRow("no profile, floats: light") << 32 << 0.0 << false;
    QTest::newRow("gamma 1.8, 16 bits") << 16 << 1.8 << false;
    QTest::newRow("gamma 1, 8 bits") << 8 << 1.0 << false;
}

void tst_FittedProcess::gainIsOfLight()
{
    QFETCH(const int, bits);
    QFETCH(const double, gamma);
    QFETCH(const bool, isAssumed);
    using Curve = std::function<double(double)>;
    const bool isSrgb = gamma == 0.0 && bits < 32;
    const double power = gamma > 0.0 ? gamma : 1.0;
    const Curve toLight = [=](double v) {
        return !isSrgb ? std::pow(v, power) : v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    const Curve toStored = [=](double l) {
        return !isSrgb ? std::pow(l, 1.0 / power) : l <= 0.0031308 ? l * 12.92 : 1.055 * std::pow(l, 1 / 2.4) - 0.055;
    };
    // Columns of black, two greys and white; light alone moves nothing.
    const double white = bits == 8 ? 255.0 : bits == 16 ? 65535.0 : 1.0;
    const double levels[] = {0.0, 0.1, 0.45, 1.0};
    const QSize size(300, 200);
    const Shot shot{{SmallEntry()}, 24.0, 1, gamma > 0.0 ? RgbProfile(gamma) : QByteArray()};
    const TiffRaster source =
        Filled(size, bits, [&](int x, int, int) { return std::round(levels[x % 4] * white * 256.0) / 256.0; });
    const TiffRaster result = Corrected(source, shot, {{"Falloff"_s, "1"_s}});
    QVERIFY2(m_assumed.contains("sRGB"_s) == isAssumed, qPrintable(m_assumed));
    ProfileEntry still = shot.entries[0]; // light at the pixel's own place
    still.green = made::Model(1.0, 0.5, 0.5, {});
    OraclePicture picture = Whole(size);
    double worst = 0.0;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const double gain = double(OracleAt(still, picture, Projection::Rectilinear, 1.0, x, y).gain);
            const double was = bits == 32 ? double(source.At(x, y, 1)) : std::round(double(source.At(x, y, 1))) / white;
            const double stored = toStored(toLight(was) * gain) * white;
            const double expected = bits == 32 ? stored : std::min(stored, white);
            worst = std::max(worst, std::abs(double(result.At(x, y, 1)) - expected));
            if (x % 4 == 0)
                QCOMPARE(result.At(x, y, 1), 0.0F);
        }
    const double tolerance = bits == 8 ? 0.51 : bits == 16 ? 8.0 : 1e-4; // rounding; tables to 1/60,000 of the value
    QVERIFY2(worst < tolerance, qPrintable(QString::number(worst)));
}

void tst_FittedProcess::grayStaysGray_data()
{
    QTest::addColumn<int>("bits");
    for (int bits : {8, 16, 32})
        QTest::addRow("%d bits", bits) << bits;
}

void tst_FittedProcess::grayStaysGray()
{
    QFETCH(const int, bits);
    const QSize size(300, 200);
    const double white = bits == 32 ? 1.0 : (1 << bits) - 1.0, right = size.width() - 1.0;
    TiffRaster source = BlankRaster(size.width(), size.height(), 1, bits);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            source.At(x, y, 0) = float(x / right * white);
    const Shot shot{{SmallEntry()}};
    constexpr double kZoom = 1.2; // nothing stays empty
    const TiffRaster result = Corrected(source, shot, kPlaces + Options{{"Framing"_s, QString::number(kZoom)}});
    QVERIFY2(m_assumed.contains("lateral color: the picture is gray"_s), qPrintable(m_assumed));
    QVERIFY(result.channels == 1 && result.bits == bits);
    double worst = 0.0;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const OraclePlaces at = OracleAt(shot.entries[0], Whole(size), Projection::Rectilinear, kZoom, x, y);
            worst = std::max(worst, std::abs(double(result.At(x, y, 0)) - double(at.green.x) / right * white));
        }
    // Rounding of source and result, and 0.01 px.
    QVERIFY2(worst < (bits == 32 ? 0.0 : 1.0) + 0.01 / right * white, qPrintable(QString::number(worst)));
}

int main(int argc, char **argv)
{
    FakeHost host(argc, argv);
    KImage::init(nullptr);
    int failures = 0;
    {
        tst_FittedProcess test;
        failures = QTest::qExec(&test, argc, argv);
    }
    host.Clear();
    KImage::exit();
    return failures;
}

#include "FittedProcess_test.moc"
