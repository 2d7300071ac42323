// Fitted corrections of the process object: the preview and files compared with the lens models in long double, the
// gain in linear light, gray pictures, bands on several threads, and the formats of results.
#include "Case.h"
#include "ComputePreview.h"
#include "CorrectionRecord.h"
#include "FakeHost.h"
#include "Files.h"
#include "FittedBands.h"
#include "MadeProfiles.h"
#include "ModelOracle.h"
#include "SpelledProfile.h"
#include "Table.h"
#include "TestFiles.h"
#include "Thrown.h"
#include "TiffRaster.h"

#include <QColorSpace>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <exiv2/exiv2.hpp>
#include <limits>

namespace {

using Params = KVitreluxOne2One::Params;

// --- Profiles ---

/// Returns an entry for a 600 x 400 frame.
ProfileEntry SmallEntry()
{
    ProfileEntry entry = made::Entry();
    entry.width = 600.0;
    entry.height = 400.0;
    return entry;
}

// --- Pictures ---

template <typename Do> void ForEachPixel(const QSize &size, Do action)
{
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            action(x, y);
}

template <typename Value> TiffRaster Filled(const QSize &size, int bits, Value value, int channels = 3)
{
    TiffRaster raster = BlankRaster(size.width(), size.height(), channels, bits);
    ForEachPixel(size, [&](int x, int y) {
        for (int c = 0; c < channels; ++c)
            raster.At(x, y, c) = float(value(x, y, c));
    });
    return raster;
}

/// Returns an opaque float picture for a preview.
template <typename Value> KImage *Preview(KImage &image, const QSize &size, Value value)
{
    image.AllocBitmap(size.width(), size.height(), GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    ForEachPixel(size, [&](int x, int y) {
        for (int c = 0; c < 4; ++c)
            reinterpret_cast<float *>(image.getData(x, y))[c] = c < 3 ? float(value(x, y, c)) : 1.0F;
    });
    return &image;
}

/// Returns the source positions and the gain for a position in an uncropped picture.
OraclePlaces At(const QSize &whole, long double x, long double y, double zoom = 1.0,
                const ProfileEntry &entry = SmallEntry())
{
    OraclePicture picture = {};
    picture.wholeWidth = picture.width = whole.width();
    picture.wholeHeight = picture.height = whole.height();
    picture.ratio = 1.0L;
    picture.turn = 1;
    picture.ownCenter = true;
    return OracleAt({{entry, 1.0L}}, picture, Projection::Rectilinear, zoom, x, y);
}

/// Returns a picture whose values are the coordinates, scaled to 0..1: y in the channels of the bit mask @p yChannels,
/// x in the others.
TiffRaster Coordinates(const QSize &size, int yChannels)
{
    const double right = size.width() - 1.0, bottom = size.height() - 1.0;
    return Filled(size, 32, [=](int x, int y, int c) { return yChannels >> c & 1 ? y / bottom : x / right; });
}

/// Adds EXIF data for "Maker BODY" at 24 mm, f/4 and 3 m, and the ICC profile @p profile unless it is empty.
void AddShot(const QString &path, const QByteArray &profile)
{
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    Exiv2::ExifData &exif = image->exifData();
    exif["Exif.Image.Make"] = "Maker";
    exif["Exif.Image.Model"] = "BODY";
    exif["Exif.Photo.FocalLength"] = Exiv2::Rational(24, 1);
    exif["Exif.Photo.FNumber"] = Exiv2::Rational(4, 1);
    exif["Exif.Photo.SubjectDistance"] = Exiv2::Rational(3, 1);
    if (!profile.isEmpty()) {
        Exiv2::DataBuf icc(reinterpret_cast<const Exiv2::byte *>(profile.constData()), profile.size());
        image->setIccProfile(icc);
    }
    image->writeMetadata();
}

/// Returns an ICC profile, empty if @p gamma is 0. Profiles store gamma in multiples of 1/256.
QByteArray RgbProfile(double gamma)
{
    return gamma > 0.0 ? QColorSpace(QColorSpace::Primaries::SRgb, float(gamma)).iccProfile() : QByteArray();
}

using Curve = std::function<double(double)>; // from 0 to 1

// IEC 61966-2-1
double SrgbToLight(double v)
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double LightToSrgb(double light)
{
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

using Options = QList<QPair<QString, QString>>;

} // namespace

class tst_FittedProcess : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        Host().Clear();
        m_process.setProperty("Correction", "fitted"_s);
    }
    void previewIsTheFileScaled();
    void previewGain();
    void gainMultipliesLight();
    void pixelsOfTheHost();
    void grayStaysGray();
    void independentOfThreadCount();
    void readsOnlyAnnouncedRows();
    void formats();
    void recordOfResult();

private:
    void *Record(const Options &options);
    QString Put(const TiffRaster &source, const QByteArray &iccProfile = {});
    TiffRaster Corrected(const TiffRaster &source, const Options &options, const QByteArray &iccProfile = {});

    QTemporaryDir m_dir;
    KVitreluxOne2One m_process;
    QString m_assumed; // assumptions that the last run reported
};

void *tst_FittedProcess::Record(const Options &options)
{
    QDomDocument document;
    QDomElement element = document.createElement("any"_s);
    element.setAttribute("LCPfilename"_s, m_dir.filePath("a.lcp"_s));
    element.setAttribute("Sampling"_s, "bilinear"_s); // exact for coordinates
    element.setAttribute("Framing"_s, "keep"_s);
    for (const auto &[name, value] : options)
        element.setAttribute(name, value);
    return m_process.AllocParameters(element);
}

QString tst_FittedProcess::Put(const TiffRaster &source, const QByteArray &iccProfile)
{
    WriteFile(m_dir.filePath("a.lcp"_s), SpelledProfile({SmallEntry()}));
    const QString path = m_dir.filePath("a.tif"_s);
    WriteTiff(path, source);
    AddShot(path, iccProfile);
    Host().Clear(); // forgets the description of the previous picture with this name
    Host().Def(path)->pixels.ID_Read(path, /*nativeDepth=*/true);
    return path;
}

TiffRaster tst_FittedProcess::Corrected(const TiffRaster &source, const Options &options, const QByteArray &iccProfile)
{
    const QString path = Put(source, iccProfile);
    void *record = Record(options);
    QString output;
    m_process.Process(path, record, output);
    m_assumed = m_process.GetXmlParameters(record).attribute("Assumed"_s);
    m_process.FreeParameters(record);
    return ReadTiff(output);
}

// A 1500 x 1001 picture is reduced to 301 x 200, with different horizontal and vertical scales. Source positions must
// match those of the whole picture.
void tst_FittedProcess::previewIsTheFileScaled()
{
    const QSize whole(1500, 1001), small(301, 200);
    auto *def = static_cast<KIImageDef *>(Host().Def(Put(Coordinates(whole, 0b010))));
    const long double scaleX = (long double)whole.width() / small.width();
    const long double scaleY = (long double)whole.height() / small.height();
    void *record = Record({{"Disto"_s, "1"_s}, {"CA"_s, "1"_s}});
    double worst = 0.0;
    int compared = 0;
    for (int yChannels : {0b010, 0b101}) {
        KImage image;
        const TiffRaster values = Coordinates(small, yChannels);
        Preview(image, small, [&](int x, int y, int c) { return values.At(x, y, c); });
        m_process.Process(qMakePair(def, &image), record);
        ForEachPixel(small, [&](int x, int y) {
            const auto at = At(whole, (x + 0.5L) * scaleX - 0.5L, (y + 0.5L) * scaleY - 0.5L);
            const auto *pixel = reinterpret_cast<const float *>(image.getData(x, y));
            const OraclePoint places[] = {at.red, at.green, at.blue};
            for (int c = 0; c < 3 && pixel[3] == 1.0F; ++c) {
                const bool isY = yChannels >> c & 1;
                const double last = (isY ? small.height() : small.width()) - 1.0;
                const double place = double(isY ? (places[c].y + 0.5L) / scaleY : (places[c].x + 0.5L) / scaleX);
                ++compared;
                worst = std::max(worst, std::abs(double(pixel[c]) * last - qBound(0.0, place - 0.5, last)));
            }
        });
    }
    m_process.FreeParameters(record);
    QVERIFY2(worst < 0.05, qPrintable(QString::number(worst)));
    QVERIFY(compared > small.width() * small.height() * 5);
}

/// As on the page, the worker renders a reduced copy of a file with sRGB values.
void tst_FittedProcess::previewGain()
{
    for (const int code : {30, 110, 190}) { // the last reaches white
        const Case named(code);
        const QSize whole(600, 400), small(151, 101);
        const auto flat = [code](int, int, int) { return code; };
        auto *def = static_cast<KIImageDef *>(Host().Def(Put(Filled(whole, 8, flat))));
        KImage image;
        Preview(image, small, [code](int, int, int) { return code / 255.0; });
        void *record = Record({{"Disto"_s, "1"_s}, {"CA"_s, "1"_s}, {"Falloff"_s, "1"_s}});
        ComputePreview worker(&m_process, nullptr);
        worker.setImage(def, &image, static_cast<Params *>(record));
        worker.start();
        QVERIFY(worker.wait(60000) && worker.Report() && !worker.Report()->done.isEmpty());
        QImage shown;
        worker.getPreview(shown);
        m_process.FreeParameters(record);
        QCOMPARE(shown.size(), small);
        double worst = 0.0;
        int compared = 0;
        ForEachPixel(small, [&](int x, int y) {
            const auto at = At(whole, (x + 0.5L) * whole.width() / small.width() - 0.5L,
                               (y + 0.5L) * whole.height() / small.height() - 0.5L);
            const double expected = std::min(255.0, 255.0 * LightToSrgb(SrgbToLight(code / 255.0) * double(at.gain)));
            const QRgb pixel = shown.pixel(x, y);
            if (qAlpha(pixel) != 255)
                return;
            ++compared;
            for (int got : {qRed(pixel), qGreen(pixel), qBlue(pixel)})
                worst = std::max(worst, std::abs(got - expected));
        });
        QVERIFY2(worst < 1.0, qPrintable(QString::number(worst)));
        QVERIFY(compared > small.width() * small.height() / 2);
    }
}

void tst_FittedProcess::gainMultipliesLight()
{
    const struct {
        const char *name;
        int bits;
        double gamma; // of an ICC profile; 0: none
    } rows[] = {{"no profile: sRGB", 8, 0.0},
                {"no profile: sRGB", 16, 0.0},
                {"no profile, floats: linear light", 32, 0.0},
                {"profile", 16, 1.75},
                {"profile", 8, 1.0}};
    for (const auto &[name, bits, gamma] : rows) {
        const Case named(name, bits, gamma);
        const bool isSrgb = gamma == 0.0 && bits < 32;
        const double power = gamma > 0.0 ? gamma : 1.0;
        const Curve toLight = isSrgb ? Curve(SrgbToLight) : [=](double v) { return std::pow(v, power); };
        const Curve toStored = isSrgb ? Curve(LightToSrgb) : [=](double light) { return std::pow(light, 1.0 / power); };
        // Columns of black, two grays and white. Vignetting correction moves no pixel.
        const double white = bits == 8 ? 255.0 : bits == 16 ? 65535.0 : 1.0;
        const double levels[] = {0.0, 0.1, 0.45, 1.0};
        const QSize size(300, 200);
        const TiffRaster source =
            Filled(size, bits, [&](int x, int, int) { return std::round(levels[x % 4] * white * 256.0) / 256.0; });
        const TiffRaster result = Corrected(source, {{"Falloff"_s, "1"_s}}, RgbProfile(gamma));
        QVERIFY2(m_assumed.contains("sRGB"_s) == isSrgb, qPrintable(m_assumed));
        ProfileEntry still = SmallEntry(); // moves no pixel, so the gain depends on the pixel's own position
        still.green = made::Model(1.0, 0.5, 0.5, {});
        double worst = 0.0, black = 0.0;
        ForEachPixel(size, [&, bits = bits](int x, int y) {
            const double stored = double(source.At(x, y, 1)), got = double(result.At(x, y, 1));
            const double was = bits == 32 ? stored : std::round(stored) / white;
            const double expected = toStored(toLight(was) * double(At(size, x, y, 1.0, still).gain)) * white;
            worst = std::max(worst, std::abs(got - (bits == 32 ? expected : std::min(expected, white))));
            black = x % 4 ? black : std::max(black, std::abs(got));
        });
        // Tables are accurate to 1/60,000; codes are rounded.
        const double tolerance = bits == 32 ? 1e-4 : 0.5 + white / 60000.0;
        QVERIFY2(worst < tolerance && black == 0.0, qPrintable("%1 %2"_s.arg(worst).arg(black)));
    }
}

/// A host may return pixels of a different size than the file's, as after developing a raw image.
void tst_FittedProcess::pixelsOfTheHost()
{
    const TiffRaster small = Coordinates(QSize(300, 200), 0b010);
    const TiffRaster wanted = Corrected(small, {{"Disto"_s, "1"_s}});
    Put(small);
    KImage pixels(Host().Def(m_dir.filePath("a.tif"_s))->pixels);
    const QString path = Put(Coordinates(QSize(600, 400), 0b010));
    void *record = Record({{"Disto"_s, "1"_s}});
    QString output;
    pixels.Convert(Host().Def(path)->pixels, pixels.type(), pixels.bitsPerComponent());
    m_process.Process(path, record, output);
    QVERIFY(ReadTiff(output).values == wanted.values);
    m_process.FreeParameters(record);
}

void tst_FittedProcess::grayStaysGray()
{
    for (const int bits : {8, 16, 32}) {
        const Case named(bits);
        const QSize size(300, 200);
        const double white = bits == 32 ? 1.0 : (1 << bits) - 1.0, right = size.width() - 1.0;
        const TiffRaster source = Filled(
            size, bits, [=](int x, int, int) { return x / right * white; }, /*channels=*/1);
        constexpr double kZoom = 1.2; // leaves no empty pixels
        const TiffRaster result =
            Corrected(source, {{"Disto"_s, "1"_s}, {"CA"_s, "1"_s}, {"Framing"_s, QString::number(kZoom)}});
        QVERIFY2(m_assumed.contains("lateral color: the picture is gray"_s), qPrintable(m_assumed));
        QVERIFY(result.channels == 1 && result.bits == bits);
        double worst = 0.0;
        ForEachPixel(size, [&](int x, int y) {
            const double place = double(At(size, x, y, kZoom).green.x);
            worst = std::max(worst, std::abs(double(result.At(x, y, 0)) - place / right * white));
        });
        // Rounding of source and result, plus 0.01 px.
        QVERIFY2(worst < (bits == 32 ? 0.0 : 1.0) + 0.01 / right * white, qPrintable(QString::number(worst)));
    }
}

/// At any depth, the file doesn't depend on the number of threads that render and compress its bands.
void tst_FittedProcess::independentOfThreadCount()
{
    for (const int bits : {8, 16, 32}) {
        const int white = bits == 32 ? 1 : (1 << bits) - 1;
        const auto mixed = [white](int x, int y, int c) {
            return white * ((x * 79 + y * 1047 + c * 31) % 251 / 250.0);
        };
        const QString path = Put(Filled(QSize(331, 601), bits, mixed));
        void *record = Record({{"Disto"_s, "1"_s}, {"CA"_s, "1"_s}, {"Sampling"_s, "sharp"_s}});
        QByteArray first;
        for (const int threads : {1, 2, 5}) {
            const Case named("bits", bits, "threads", threads);
            gflSetThreads(threads);
            QString output;
            m_process.Process(path, record, output);
            gflSetThreads(0);
            const QByteArray file = ReadFile(output);
            QVERIFY(!file.isEmpty() && (threads == 1 || file == first));
            first = file;
        }
        m_process.FreeParameters(record);
    }
}

/// Source rows are filled only when they are waited for, so reading any other row would change the result.
void tst_FittedProcess::readsOnlyAnnouncedRows()
{
    for (const auto &[size, bits] :
         {std::pair(QSize(640, 430), 8), std::pair(QSize(430, 640), 8), std::pair(QSize(430, 640), 32)})
        for (const double bend : {0.05, -0.05, -1.2, 1.5})
            for (const Sampling sampling : {Sampling::Sharp, Sampling::Bilinear}) {
                const Case named(size, bits, bend, sampling == Sampling::Sharp);
                FittedPlan plan;
                Correction &correction = plan.fit.correction;
                correction.width = size.width();
                correction.height = size.height();
                const double radius2 = size.width() * size.width() + size.height() * size.height();
                correction.geometry.emplace();
                correction.geometry->centerX = size.width() / 2.0;
                correction.geometry->centerY = size.height() / 2.0;
                correction.geometry->factor = RadialCurve(radius2, {1.0, 1.0 + bend}); // linear in the radius squared
                KImage codes(size.width(), size.height(), GFL_RGB, 8, /*clear=*/true, nullptr, 0), whole;
                KImage arriving(size.width(), size.height(), GFL_RGB, bits, /*clear=*/true, nullptr, 0);
                for (int y = 0; y < size.height(); ++y)
                    for (int i = 0; i < 3 * size.width(); ++i)
                        codes.getData(0, y)[i] = static_cast<unsigned char>(64 + i * 7 % 50 + y % 90);
                codes.Convert(whole, GFL_RGB, bits);
                QVector<int> waits;
                const auto result = [&](const KImage &source, const FittedBands::WaitForRows &wait) {
                    FittedBands bands(plan, sampling, source, wait);
                    QByteArray bytes;
                    for (int row = 0; row < size.height(); row += GFL_FAST_ROWS) {
                        KImage band(size.width(), qMin(GFL_FAST_ROWS, size.height() - row), bands.ResultType(),
                                    bands.ResultBits(), /*clear=*/true, nullptr, 0);
                        bands.Fill(band, row);
                        bytes.append(reinterpret_cast<const char *>(band.getData(0, 0)),
                                     int(band.bytesPerLine()) * band.height());
                    }
                    return bytes;
                };
                const auto arrive = [&](int rows) {
                    waits << rows;
                    whole.CropCopyTo(0, 0, size.width(), rows, arriving, 0, 0);
                    return rows;
                };
                QVERIFY(result(arriving, arrive) == result(whole, nullptr));
                QVERIFY(std::abs(bend) > 0.1 || waits.first() < size.height() / 2);
                QVERIFY(waits.contains(size.height())); // damage at the end must be noticed
            }
}

/// Corrects a flat picture, so that positions don't affect the values.
void tst_FittedProcess::formats()
{
    for (const QStringList &row : ReadTable(QStringLiteral(FORMATS))) {
        const Case named(row);
        const int bits = row[1].toInt(), channels = row[2].toInt(), resultBits = row[4].toInt();
        const double gamma = row[3].toDouble(), value = row[5].toDouble();
        const QString format = row[0].section(QLatin1Char(','), 0, 0);
        TiffRaster source = BlankRaster(300, 200, channels, bits);
        for (size_t i = 0; i < source.values.size(); ++i)
            source.values[i] =
                float((channels == 4 && i % 4 == 3 ? 0.5 : 0.4) * (bits == 32 ? 1.0 : (1 << bits) - 1.0));
        if (bits == 32) // the tables have no entry for NaN
            std::fill_n(source.values.begin(), source.values.size() / 8, std::numeric_limits<float>::quiet_NaN());
        const QString path = Put(source, RgbProfile(gamma));
        const bool leavesEmpty = row[0].contains("empty"_s);
        void *record = Record({{"Disto"_s, "1"_s},
                               {"Framing"_s, leavesEmpty ? "all"_s : "1.2"_s},
                               {"Format"_s, format},
                               {"Quality"_s, "100"_s}});
        QString output;
        m_process.Process(path, record, output);
        const QDomElement element = m_process.GetXmlParameters(record);
        m_process.FreeParameters(record);
        QVERIFY(Host().Def(path)->acceptedPending && !gflAcceptsPendingRows()); // only while the picture is locked
        QCOMPARE(element.attribute("Format"_s), format);
        QCOMPARE(element.attribute("Assumed"_s), row[6]);
        QVERIFY2(output.endsWith("a_corrected."_s + (format == "jpeg"_s ? "jpg"_s : format)), qPrintable(output));
        // OpenEXR's channel list has the sample type after each name: 1 is half float, 2 is float.
        const QByteArray list("channels\0chlist", 16), file = ReadFile(output);
        const int first = file.indexOf(list) + list.size() + 5;
        QVERIFY(format != "exr"_s || file[file.indexOf('\0', first) + 1] == (bits == 8 ? 1 : 2));
        KImage result;
        result.ID_Read(output, /*nativeDepth=*/true);
        QCOMPARE(int(result.bitsPerComponent()), resultBits);
        const bool hasAlpha = (channels == 4 || leavesEmpty) && format != "jpeg"_s;
        QCOMPARE(int(result.type()), int(hasAlpha ? GFL_RGBA : channels == 1 ? GFL_GREY : GFL_RGB));
        KImage floats;
        result.Convert(floats, GFL_RGBA, 32);
        for (int y = leavesEmpty ? 100 : bits == 32 ? 40 : 0; y < (leavesEmpty ? 101 : 200); ++y) { // none empty or NaN
            const auto *pixel = reinterpret_cast<const float *>(floats.getData(y + 50, y));
            for (int c = 0; c < 3; ++c) // twice the rounding error of 8 bits
                QVERIFY2(std::abs(double(pixel[c]) - value) < 0.004, qPrintable(QString::number(double(pixel[c]))));
            QVERIFY(std::abs(pixel[3] - (channels == 4 && hasAlpha ? 0.5F : 1.0F)) < 0.001F);
        }
        QCOMPARE(reinterpret_cast<const float *>(floats.getData(150, 0))[3] == 0.0F, hasAlpha && leavesEmpty);
    }
}

/// The record of a correction, in a picture in which the vignetting had already been corrected.
void tst_FittedProcess::recordOfResult()
{
    FitResult fit;
    fit.distortion = true;
    fit.profile = WriteFile(m_dir.filePath("my.abc.lcp"_s), "abc"); // whose digest is in RFC 1321
    fit.entries = "24 mm"_s;
    fit.zoom = 1.23456789;
    FitOptions options;
    options.profile = fit.profile;
    options.amountDistortion = 0.506;
    options.amountChromatic = 0.0;
    options.again = true;
    options.typed.focalMm = 23.5;
    PictureFacts facts;
    facts.vignettingDone = {true, "XMP lens profile"_s};
    const auto text = [&] {
        QStringList lines;
        for (const auto &[key, value] : CorrectionRecord(fit, facts, options, "image/png"_s))
            lines << key.mid(4) + QLatin1Char('=') + value;
        return lines.filter(QRegularExpression("^(?!vitrelux.Version=.)"_s)).join(QLatin1Char('\n'))
            + QLatin1Char('\n');
    };
    QCOMPARE(text(), QString::fromUtf8(ReadFile(QStringLiteral(RECORD))));
    fit.profile = "lensfun:Maker/Lens 1/2"_s; // not a path
    QVERIFY2(text().contains("Profile=lensfun:Maker/Lens 1/2\nvitrelux.ProfileName=Maker/Lens 1/2\n"
                             "vitrelux.ProfileDigest=\n"_s),
             qPrintable(text()));
    fit.profile = "/absent.lcp"_s;
    QCOMPARE(Thrown(text), "cannot read \"/absent.lcp\": No such file or directory"_s);
}

int main(int argc, char **argv)
{
    const FakeHost host(argc, argv);
    tst_FittedProcess test;
    return QTest::qExec(&test, argc, argv);
}

#include "FittedProcess_test.moc"
