// Checks the content of the program's output files: depth, channels, compression and the photograph's metadata.
#include "Case.h"
#include "FittedFiles.h"
#include "ProgramRun.h"
#include "Table.h"
#include "TestFiles.h"
#include "TiffRaster.h"
#include "lens_reference.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfStandardAttributes.h>
#include <cmath>
#include <exiv2/exiv2.hpp>
#include <tiffio.h>

namespace {

constexpr int kDeflate = 8; // value of TIFF's Compression tag

/// Returns a picture in which all samples of a row differ; the fourth channel, if any, is half transparent.
TiffRaster Ramp(int channels, int bits)
{
    TiffRaster raster = BlankRaster(60, 40, channels, bits);
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x)
            for (int c = 0; c < channels; ++c) {
                const int code = c == 3 ? 128 : y + x + 60 * c;
                raster.At(x, y, c) = bits == 32 ? float(code) / 256.0f : float(bits == 16 ? 257 * code : code);
            }
    return raster;
}

/// Returns whether a tag describes how the file stores pixels, or is a block whose content is compared tag by tag.
bool IsStorageTag(const std::string &key)
{
    static const char *const names[] = {
        "ImageWidth",   "ImageLength",     "BitsPerSample",     "Compression",     "PhotometricInterpretation",
        "StripOffsets", "SamplesPerPixel", "RowsPerStrip",      "StripByteCounts", "PlanarConfiguration",
        "SampleFormat", "ExtraSamples",    "InterColorProfile", "IPTCNAA",         "XMLPacket",
        "ExifTag",      "GPSTag"};
    if (key == "Exif.Photo.MakerNote" || key == "Exif.MakerNote.Offset") // the note's own tags are compared
        return true;
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char *name) { return key == std::string("Exif.Image.") + name; });
}

/// Returns "key = value" for each tag for which IsStorageTag is false.
template <typename Data> QStringList Texts(const Data &data)
{
    QStringList texts;
    for (const auto &datum : data) {
        if (!IsStorageTag(datum.key()))
            texts << QString::fromStdString(datum.key() + " = " + datum.toString());
    }
    return texts;
}

Exiv2::Image::AutoPtr OpenMetadata(const QString &path)
{
    auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    image->readMetadata();
    return image;
}

/// Fails unless a result has all EXIF and IPTC data and the color profile of its source.
void CompareMetadata(Exiv2::Image &result, Exiv2::Image &source)
{
    const QStringList carried = Texts(result.exifData());
    for (const QString &text : Texts(source.exifData()))
        QVERIFY2(carried.contains(text), qPrintable(text));
    QVERIFY(source.exifData().findKey(Exiv2::ExifKey("Exif.CanonCs.LensType")) != source.exifData().end());
    QCOMPARE(Texts(result.iptcData()), Texts(source.iptcData()));
    const auto profile = [](Exiv2::Image &image) {
        return QByteArray(reinterpret_cast<const char *>(image.iccProfile()->pData_), int(image.iccProfile()->size_));
    };
    QVERIFY(!profile(source).isEmpty());
    QCOMPARE(profile(result), profile(source));
}

void AddMetadata(const QString &path)
{
    const auto image = OpenMetadata(path);
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/written-metadata.tsv"))) {
        const std::string key = row[0].toStdString(), value = row[1].toStdString();
        if (key[0] == 'E')
            image->exifData()[key] = value;
        else if (key[0] == 'X')
            image->xmpData()[key] = value;
        else { // a key may be repeated
            Exiv2::Iptcdatum datum{Exiv2::IptcKey(key)};
            datum = value;
            image->iptcData().add(datum);
        }
    }
    const auto sample = OpenMetadata(QStringLiteral(VITRELUX_SAMPLES "/facade.jpg"));
    Exiv2::DataBuf profile(sample->iccProfile()->pData_, sample->iccProfile()->size_);
    image->setIccProfile(profile);
    image->writeMetadata();
}

/// Writes a uniform tiled picture of 300 x 200 pixels. Samples are 40 % of their range; a and b of Lab are 0.
void WriteTiles(const QString &path, int photometric, int channels, int bits)
{
    constexpr int kSide = 64, kWidth = 300, kHeight = 200;
    TIFF *file = TIFFOpen(path.toUtf8().constData(), "w");
    const std::pair<unsigned, int> fields[] = {{TIFFTAG_IMAGEWIDTH, kWidth},
                                               {TIFFTAG_IMAGELENGTH, kHeight},
                                               {TIFFTAG_BITSPERSAMPLE, bits},
                                               {TIFFTAG_SAMPLESPERPIXEL, channels},
                                               {TIFFTAG_SAMPLEFORMAT, bits == 32 ? 3 : 1},
                                               {TIFFTAG_PLANARCONFIG, 1},
                                               {TIFFTAG_PHOTOMETRIC, photometric},
                                               {TIFFTAG_TILEWIDTH, kSide},
                                               {TIFFTAG_TILELENGTH, kSide}};
    for (const auto &[tag, value] : fields)
        TIFFSetField(file, tag, value);
    const std::uint16_t straight = EXTRASAMPLE_UNASSALPHA;
    if (channels == 2)
        TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &straight);
    QByteArray tile;
    for (int i = 0; i < kSide * kSide * channels; ++i) {
        const float real = 0.4F;
        const auto whole = std::uint32_t(std::lround(0.4 * double((1LL << bits) - 1)));
        const char zero[4] = {};
        const bool isLabColor = photometric == PHOTOMETRIC_CIELAB && i % channels != 0;
        const void *sample = isLabColor ? static_cast<const void *>(zero)
            : bits == 32                ? static_cast<const void *>(&real)
                                        : &whole;
        tile.append(static_cast<const char *>(sample), bits / 8);
    }
    for (std::uint32_t i = 0; i < TIFFNumberOfTiles(file); ++i)
        TIFFWriteEncodedTile(file, i, tile.data(), tile.size());
    TIFFClose(file);
}

} // namespace

class tst_CorrectedMetadata : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void plainRun();
    void formatsKeepMetadata_data();
    void formatsKeepMetadata();
    void kinds_data();
    void kinds();
};

/// Corrects vignetting with a gain of 1 everywhere.
void tst_CorrectedMetadata::plainRun()
{
    Samples::LensProfile profile;
    profile.width = 60;
    profile.height = 40;
    profile.vignette = Samples::LensModel{0.9, 0.51, 0.48, {0, 0, 0}};
    const QByteArray text = QByteArray::fromStdString(ProfileText(profile));
    constexpr int kForms[][2] = {{0, 3}, {8, 3}, {8, 4}, {16, 3}, {16, 4}, {32, 3}, {32, 4}};
    for (const auto &[bits, channels] : kForms) { // 0 bits: JPEG
        const Case named(bits, "bits", channels, "channels");
        const QTemporaryDir folder;
        const QString path = folder.filePath(bits == 0 ? "source.jpg"_s : "source.tiff"_s);
        const TiffRaster raster = Ramp(channels, bits);
        if (bits == 0)
            WriteJpeg(path, 60, 40);
        else
            WriteTiff(path, raster);
        AddMetadata(path);
        const QString profilePath = WriteFile(folder.filePath("p.lcp"_s), text);
        const ProgramResult run = ProgramRun().Run({"correct"_s, "--plain"_s, "--profile"_s, profilePath, path});
        QVERIFY2(run.exitCode == 0, run.error);
        const QString output = QString::fromUtf8(run.output).trimmed();
        const auto source = OpenMetadata(path), result = OpenMetadata(output);
        CompareMetadata(*result, *source);
        QVERIFY(!source->xmpPacket().empty() && result->xmpPacket().empty()); // only fitted results have XMP
        const TiffRaster written = ReadTiff(output);
        QCOMPARE(written.channels, bits == 32 ? 3 : 4);
        QCOMPARE(written.bits, qMax(8, bits));
        QCOMPARE(written.compression, kDeflate);
        for (int i = 0; bits > 0 && i < 60 * 40; ++i) {
            for (int c = 0; c < 3; ++c)
                QCOMPARE(written.At(i % 60, i / 60, c), raster.At(i % 60, i / 60, c));
            QVERIFY(bits == 32 || written.At(i % 60, i / 60, 3) == float((1 << bits) - 1)); // opaque
        }
    }
}

void tst_CorrectedMetadata::formatsKeepMetadata_data()
{
    QTest::addColumn<int>("compression"); // TIFF tag value; -1: another format
    QTest::newRow("--format jpeg --quality 80") << -1;
    QTest::newRow("--format png") << -1;
    QTest::newRow("--compression none") << 1;
    QTest::newRow("--compression lzw") << 5;
    QTest::newRow("--format tiff --compression deflate") << kDeflate;
    QTest::newRow("--compression zstd") << 50000;
    QTest::newRow("--format exr") << -1;
}

/// Corrects a JPEG and writes it in each format. A second run recognizes the first one's output by its XMP.
void tst_CorrectedMetadata::formatsKeepMetadata()
{
    QFETCH(const int, compression);
    const QString options = QString::fromLatin1(QTest::currentDataTag());
    const QTemporaryDir folder;
    const QString path = folder.filePath("source.jpg"_s), profile = folder.filePath("p.lcp"_s);
    WriteJpeg(path, 300, 200);
    AddMetadata(path);
    WriteFile(profile, Profile("EF-S10-22mm f/3.5-4.5 USM"));
    const ProgramResult run =
        ProgramRun().Run(QStringList{"correct"_s, "--profile"_s, profile, path} + options.split(QLatin1Char(' ')));
    QVERIFY2(run.exitCode == 0, run.error);
    const QString output = QString::fromUtf8(run.output).trimmed();
    const ProgramResult again = ProgramRun().Run({"correct"_s, output});
    QVERIFY2(again.exitCode == 0 && again.error.contains("corrected before"), again.error);
    if (options.contains("exr"_s)) {
        QVERIFY2(run.error.contains("most of the EXIF"), run.error);
        const Imf::InputFile file(output.toStdString().c_str());
        const Imf::Header &header = file.header();
        const Imf::Chromaticities colors = Imf::chromaticities(header), srgb; // `srgb` has the default primaries
        QVERIFY((colors.red - srgb.red).length() < 0.001F && (colors.blue - srgb.blue).length() < 0.001F);
        QVERIFY((colors.green - srgb.green).length() < 0.001F && (colors.white - srgb.white).length() < 0.001F);
        QCOMPARE(Imf::expTime(header), 1.0F / 1250);
        QVERIFY(std::abs(Imf::latitude(header) + 33.8599F) < 0.0001F); // 33 degrees, 51.5945 minutes south
        QCOMPARE(Imf::capDate(header), std::string("2020:02:29 12:34:56"));
        return;
    }
    const auto source = OpenMetadata(path), result = OpenMetadata(output);
    CompareMetadata(*result, *source);
    QCOMPARE(result->xmpData()["Xmp.xmp.Rating"].toString(), std::string("4"));
    QCOMPARE(result->exifData()["Exif.Photo.PixelXDimension"].toLong(), 300L);
    if (compression > 0)
        QCOMPARE(int(result->exifData()["Exif.Image.Compression"].toLong()), compression);
    const Exiv2::DataBuf bytes = Exiv2::ExifThumbC(result->exifData()).copy();
    QCOMPARE(bytes.size_ > 0, options.contains("jpeg"_s));
    if (bytes.size_ > 0) {
        const auto thumbnail = Exiv2::ImageFactory::open(bytes.pData_, bytes.size_);
        thumbnail->readMetadata();
        QCOMPARE(QSize(thumbnail->pixelWidth(), thumbnail->pixelHeight()), QSize(160, 107));
    }
}

void tst_CorrectedMetadata::kinds_data()
{
    QTest::addColumn<int>("photometric"); // of a TIFF
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("resultChannels"); // 0: refused; -1: a gray JPEG
    QTest::addColumn<int>("gray");           // in the result, in thousandths of its range
    const QMap<QString, int> photometric = {{"gray"_s, PHOTOMETRIC_MINISBLACK},
                                            {"RGB"_s, PHOTOMETRIC_RGB},
                                            {"CMYK"_s, PHOTOMETRIC_SEPARATED},
                                            {"Lab"_s, PHOTOMETRIC_CIELAB}};
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/picture-kinds.tsv")))
        QTest::newRow(qPrintable(row[0]))
            << photometric[row[1]] << row[2].toInt() << row[3].toInt() << row[4].toInt() << row[5].toInt();
}

/// Corrects uniform tiled pictures; each sample is 40 % of its range.
void tst_CorrectedMetadata::kinds()
{
    QFETCH(const int, photometric);
    QFETCH(const int, channels);
    QFETCH(const int, bits);
    QFETCH(const int, resultChannels);
    QFETCH(const int, gray);
    const QString row = QString::fromLatin1(QTest::currentDataTag());
    const QStringList options = row.mid(row.indexOf(" --"_s) + 1).split(QLatin1Char(' '));
    const QTemporaryDir folder;
    const QString path = folder.filePath("source.tif"_s), profile = folder.filePath("p.lcp"_s);
    WriteTiles(path, photometric, channels, bits);
    WriteMetadata(path, {kLens, "50/1", "8/1"});
    WriteFile(profile, Profile(kLens, /*hasVignetting=*/false));
    QStringList arguments = {"correct"_s, "--profile"_s, profile, path};
    if (row.contains("--"_s))
        arguments += options;
    const ProgramResult run = ProgramRun().Run(arguments);
    QCOMPARE(run.exitCode, resultChannels == 0 ? 1 : 0);
    if (resultChannels == 0) {
        const QString kind = row.section(QLatin1Char(','), 0, 0)
            + (row.contains("tiled"_s)          ? " TIFF files"_s
                   : row.contains("pictures"_s) ? ""_s
                                                : " pictures"_s);
        const bool isConvertible = photometric == PHOTOMETRIC_SEPARATED || photometric == PHOTOMETRIC_CIELAB;
        const QString hint = isConvertible ? "; \"vitrelux correct --convert\" corrects them as sRGB"_s : QString();
        QCOMPARE(run.errorLines, QStringList("vitrelux: %1: %2 are not supported%3"_s.arg(path, kind, hint)));
        return;
    }
    const QString output = QString::fromUtf8(run.output).trimmed();
    if (resultChannels < 0) {
        const QImage image(output);
        QVERIFY(image.isGrayscale() && image.format() == QImage::Format_Grayscale8);
        QVERIFY(std::abs(qGray(image.pixel(150, 100)) - 0.4 * 255) < 1.5 && qGray(image.pixel(0, 0)) == 0);
        return;
    }
    const TiffRaster result = ReadTiff(output);
    QVERIFY(result.channels == resultChannels && result.bits == bits);
    const double full = bits == 32 ? 1.0 : (1 << bits) - 1.0;
    for (int c = 0; c < std::min(3, resultChannels); ++c)
        QVERIFY2(std::abs(double(result.At(150, 100, c)) / full - gray / 1000.0) < 0.004,
                 qPrintable(QString::number(double(result.At(150, 100, c)) / full)));
    if (row.contains("empty"_s))
        QCOMPARE(result.At(0, 0, 3), 0.0F);
}

QTEST_GUILESS_MAIN(tst_CorrectedMetadata)
#include "CorrectedMetadata_test.moc"
