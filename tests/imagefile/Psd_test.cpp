// Photoshop files that are put together byte by byte, and inks with a profile in every format that has them.
#include "Bitmaps.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cstdio> // before jpeglib.h, which needs FILE
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>
#include <lcms2.h>
#include <tiffio.h>

namespace {

constexpr int kWidth = 7, kHeight = 5;

enum Mode { Binary = 0, Grey = 1, Indexed = 2, Rgb = 3, Cmyk = 4, Multichannel = 7, Duotone = 8, Lab = 9 };

QByteArray Number(quint64 number, int bytes)
{
    QByteArray out;
    for (int i = bytes; i-- > 0;)
        out.append(char(number >> (8 * i)));
    return out;
}

struct Spec {
    int mode = Rgb;
    int channels = 3;
    int bits = 8;
    bool isPacked = false;
    bool isLarge = false;
    int layers = 0; // as the file counts them: negative when the fourth channel is opacity
    QByteArray profile;

    /// Any function of the place.
    double Share(int x, int y, int c) const { return ((x * 31 + y * 17 + c * 57) % 101) / 100.0; }
};

QByteArray Sample(const Spec &spec, int x, int y, int c)
{
    if (spec.bits == 32) {
        const float value = float(spec.Share(x, y, c));
        quint32 bits;
        std::memcpy(&bits, &value, sizeof bits);
        return Number(bits, 4);
    }
    return Number(quint64(std::lround(spec.Share(x, y, c) * ((1 << spec.bits) - 1))), spec.bits / 8);
}

QByteArray Row(const Spec &spec, int y, int c)
{
    if (spec.bits == 1)
        return QByteArray(1, char(0x52)); // 01010010: one bit is left over
    QByteArray row;
    for (int x = 0; x < kWidth; ++x)
        row += Sample(spec, x, y, c);
    return row;
}

QByteArray Encode(const Spec &spec)
{
    const int length = spec.isLarge ? 8 : 4;
    QByteArray resources, palette;
    if (!spec.profile.isEmpty())
        resources = "8BIM" + Number(0x040F0000, 4) + Number(quint64(spec.profile.size()), 4) + spec.profile
            + QByteArray(spec.profile.size() % 2, '\0');
    if (spec.mode == Indexed)
        for (int i = 0; i < 768; ++i) // red falls, green rises, blue is 7
            palette.append(char(i < 256 ? 255 - i : i < 512 ? i : 7));
    const QByteArray layers = spec.layers == 0 ? QByteArray() : Number(2, length) + Number(quint64(spec.layers), 2);
    QByteArray file = "8BPS" + Number(spec.isLarge ? 2 : 1, 2) + Number(0, 6) + Number(quint64(spec.channels), 2)
        + Number(kHeight, 4) + Number(kWidth, 4) + Number(quint64(spec.bits), 2) + Number(quint64(spec.mode), 2)
        + Number(quint64(palette.size()), 4) + palette + Number(quint64(resources.size()), 4) + resources
        + Number(quint64(layers.size()), length) + layers + Number(spec.isPacked ? 1 : 0, 2);
    QByteArray sizes, pixels;
    for (int c = 0; c < spec.channels; ++c)
        for (int y = 0; y < kHeight; ++y) {
            QByteArray row = Row(spec, y, c);
            if (spec.isPacked) // a byte that stands for nothing, the first one as a run of two where it repeats, the
                               // rest
                row = row[0] == row[1] ? QByteArray("\x80\xFF", 2) + row[0] + char(row.size() - 3) + row.mid(2)
                                       : QByteArray(1, char(row.size() - 1)) + row;
            sizes += Number(quint64(row.size()), spec.isLarge ? 4 : 2);
            pixels += row;
        }
    return file + (spec.isPacked ? sizes : QByteArray()) + pixels;
}

/// Colour @p c of a pixel by the plain formulas.
double Expected(const Spec &spec, int x, int y, int c)
{
    const double share = spec.Share(x, y, c);
    switch (spec.mode) {
    case Binary:
        return (0x52 >> (7 - x) & 1) != 0 ? 0.0 : 1.0;
    case Indexed: {
        const int index = int(std::lround(spec.Share(x, y, 0) * 255));
        return (c == 0 ? 255 - index : c == 1 ? index : 7) / 255.0;
    }
    case Grey:
    case Duotone:
        return spec.Share(x, y, c == 3 ? 1 : 0);
    case Cmyk: // stored is what the inks leave
        return c == 3 ? spec.Share(x, y, 4) : share * spec.Share(x, y, 3);
    default:
        break;
    }
    if (c == 3 || spec.layers >= 0 || spec.Share(x, y, 3) <= 0.0)
        return share;
    const double whiteTakenOut = 1.0 - (1.0 - share) / spec.Share(x, y, 3);
    return spec.bits == 32 ? whiteTakenOut : std::min(1.0, std::max(0.0, whiteTakenOut));
}

/// A profile by which any ink makes the same grey: lightness falls with black, and by a third for each colour.
QByteArray InkProfile()
{
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1); // in which 65,280 is a lightness of 100, and 32,768 a colour of 0
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline *pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage *table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number *in, cmsUInt16Number *out, void *) -> cmsInt32Number {
            const double colours = (in[0] + in[1] + in[2]) / 3.0 / 65535.0;
            out[0] = cmsUInt16Number(std::lround((1.0 - in[3] / 65535.0) * (1.0 - colours) * 65280.0));
            out[1] = out[2] = 32768;
            return 1;
        },
        nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsWriteTag(profile, cmsSigAToB1Tag, pipeline);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(int(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsPipelineFree(pipeline);
    cmsCloseProfile(profile);
    return bytes;
}

QByteArray TiffOfInks(const QString &path, int cyan)
{
    TIFF *tiff = TIFFOpen(path.toUtf8().constData(), "w");
    const QByteArray profile = InkProfile();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, profile.size(), profile.constData());
    const quint16 inks[] = {quint16(cyan * 257), 0, 0, 0};
    TIFFWriteEncodedStrip(tiff, 0, const_cast<quint16 *>(inks), sizeof inks);
    TIFFClose(tiff);
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray JpegOfInks(int cyan)
{
    jpeg_compress_struct cinfo = {};
    jpeg_error_mgr error;
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_compress(&cinfo);
    unsigned char *data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, &data, &size);
    cinfo.image_width = cinfo.image_height = 1;
    cinfo.input_components = 4;
    cinfo.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, 100, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    const QByteArray profile = InkProfile();
    jpeg_write_icc_profile(&cinfo, reinterpret_cast<const JOCTET *>(profile.constData()), unsigned(profile.size()));
    JSAMPLE inks[] = {JSAMPLE(255 - cyan), 255, 255, 255}; // Adobe's: 255 is none
    JSAMPROW row = inks;
    jpeg_write_scanlines(&cinfo, &row, 1);
    jpeg_finish_compress(&cinfo);
    const QByteArray file(reinterpret_cast<char *>(data), int(size));
    jpeg_destroy_compress(&cinfo);
    std::free(data);
    return file;
}

} // namespace

Q_DECLARE_METATYPE(Spec)

class tst_Psd : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void reads_data();
    void reads();
    void lab();
    void damaged_data();
    void damaged();
    void cutAnywhere();
    void inkProfiles_data();
    void inkProfiles();
};

void tst_Psd::reads_data()
{
    QTest::addColumn<Spec>("spec");
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("description");
    const auto row = [](const char *name, const Spec &spec, int type, const char *description = "PSD") {
        QTest::newRow(name) << spec << type << QByteArray(description);
    };
    for (bool isPacked : {false, true})
        for (int bits : {8, 16, 32})
            for (int mode : {Grey, Rgb})
                QTest::addRow("mode %d, %d bits%s", mode, bits, isPacked ? ", packed" : "")
                    << Spec{mode, mode == Rgb ? 3 : 1, bits, isPacked, bits == 16, 0, {}}
                    << int(mode == Rgb ? GFL_RGB : GFL_GREY) << QByteArray(bits == 16 ? "PSB" : "PSD");
    row("bits", {Binary, 1, 1, false, false, 0, {}}, GFL_RGB);
    row("indexed", {Indexed, 1, 8, false, false, 0, {}}, GFL_RGB);
    row("duotone", {Duotone, 1, 8, false, false, 0, {}}, GFL_GREY);
    row("inks", {Cmyk, 4, 8, false, false, 0, {}}, GFL_RGB, "PSD CMYK");
    row("inks of 16 bits and opacity", {Cmyk, 5, 16, true, true, 0, {}}, GFL_RGBA, "PSB CMYK");
    row("grey and opacity", {Grey, 2, 16, false, false, 0, {}}, GFL_RGBA);
    row("opacity", {Rgb, 4, 8, false, false, 0, {}}, GFL_RGBA);
    row("opacity of layers", {Rgb, 4, 16, false, false, -1, {}}, GFL_RGBA);
    row("opacity of layers and selections", {Rgb, 6, 32, false, true, -3, {}}, GFL_RGBA, "PSB");
    row("selections", {Rgb, 5, 8, true, false, 2, {}}, GFL_RGB);
}

void tst_Psd::reads()
{
    QFETCH(Spec, spec);
    const QByteArray file = Encode(spec);
    GFL_BITMAP *loaded = nullptr;
    GFL_FILE_INFORMATION info;
    const GFL_LOAD_PARAMS params = LoadParams(GFL_LOAD_ORIGINAL_DEPTH);
    const int error = gflLoadBitmapFromMemory(reinterpret_cast<const std::uint8_t *>(file.constData()),
                                              static_cast<std::uint32_t>(file.size()), &loaded, &params, &info);
    const BitmapPtr read(loaded);
    QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
    QTEST(int(read->Type), "type");
    QTEST(QByteArray(info.Description), "description");
    QCOMPARE(int(info.BitsPerComponent), std::max(8, spec.bits));
    QCOMPARE(int(info.ComponentsPerPixel), spec.mode == Indexed ? 3 : spec.channels);
    QCOMPARE(int(info.ColorModel), spec.mode == Cmyk ? 3 : spec.mode == Rgb ? 0 : spec.mode == Indexed ? 2 : 1);
    const double levels = spec.bits < 16 ? 255 : spec.bits == 16 ? 65535 : 1e6;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (int c = 0; c < read->ComponentsPerPixel; ++c) {
                // Taking white out magnifies the rounding of both numbers that are stored.
                const double opacity = spec.layers < 0 ? std::max(spec.Share(x, y, 3), 1e-9) : 1.0;
                const double limit = 1.51 / levels / opacity;
                QVERIFY2(std::abs(SampleAt(*read, x, y, c) - Expected(spec, x, y, c)) < limit,
                         qPrintable(QStringLiteral("%1 %2 %3: %4, expected %5")
                                        .arg(x)
                                        .arg(y)
                                        .arg(c)
                                        .arg(SampleAt(*read, x, y, c))
                                        .arg(Expected(spec, x, y, c))));
            }
}

void tst_Psd::lab()
{
    for (int bits : {8, 16}) {
        QByteArray file = Encode({Lab, 3, bits, false, false, 0, {}});
        const int full = (1 << bits) - 1, bytes = bits / 8, first = file.size() - 3 * kWidth * kHeight * bytes;
        for (int i = 0; i < kLabCount; ++i)
            for (int c = 0; c < 3; ++c) {
                const double share = c == 0 ? kLabColours[i].lab[0] / 100 : (kLabColours[i].lab[c] + 128) / 255;
                file.replace(first + (c * kWidth * kHeight + i) * bytes, bytes,
                             Number(quint64(std::lround(share * full)), bytes));
            }
        int error = 0;
        const BitmapPtr read = LoadFromMemory(file, &error);
        QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
        QCOMPARE(int(read->BitsPerComponent), bits);
        for (int i = 0; i < kLabCount; ++i)
            for (int c = 0; c < 3; ++c)
                QVERIFY(std::abs(SampleAt(*read, i, 0, c) - kLabColours[i].rgb[c]) < (bits == 8 ? 0.02 : 0.004));
    }
}

void tst_Psd::damaged_data()
{
    QTest::addColumn<int>("at");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, int at, quint64 number, int bytes, int error) {
        QTest::newRow(name) << at << Number(number, bytes) << error;
    };
    row("version", 4, 3, 2, GFL_ERROR_UNKNOWN_FORMAT);
    row("no channels", 12, 0, 2, GFL_ERROR_FILE_READ);
    row("two channels of RGB", 12, 2, 2, GFL_ERROR_FILE_READ);
    row("channels", 12, 57, 2, GFL_ERROR_FILE_READ);
    row("no rows", 14, 0, 4, GFL_ERROR_FILE_READ);
    row("rows", 14, 0xFFFFFFFF, 4, GFL_ERROR_FILE_READ);
    row("gigapixels", 14, (quint64(100000) << 32) + 100000, 8, GFL_ERROR_FILE_READ);
    row("12 bits", 22, 12, 2, GFL_ERROR_UNKNOWN_FORMAT);
    row("CMYK of 3 channels", 24, 4, 2, GFL_ERROR_FILE_READ);
    row("channels without meaning", 24, 7, 2, GFL_ERROR_UNKNOWN_FORMAT);
    row("no palette", 24, 2, 2, GFL_ERROR_FILE_READ);
    for (int at : {26, 30, 34}) // colour data, resources, layers
        row(qPrintable(QStringLiteral("section at %1").arg(at)), at, 0xFFFFFFFF, 4, GFL_ERROR_FILE_READ);
    row("compression", 38, 3, 2, GFL_ERROR_UNKNOWN_FORMAT);
    row("size of a row", 40, 0xFFFF, 2, GFL_ERROR_FILE_READ);
    row("a row too short", 40, 3, 2, GFL_ERROR_FILE_READ);
    row("a run too long", 40 + 2 * 3 * kHeight, 0x81, 1, GFL_ERROR_FILE_READ);
}

void tst_Psd::damaged()
{
    QFETCH(int, at);
    QFETCH(QByteArray, bytes);
    const QByteArray good = Encode({Rgb, 3, 8, true, false, 0, {}});
    int error = 0;
    QVERIFY(LoadFromMemory(good, &error));
    QVERIFY(!LoadFromMemory(QByteArray(good).replace(at, bytes.size(), bytes), &error));
    QTEST(error, "expected");
}

void tst_Psd::cutAnywhere()
{
    for (bool isPacked : {false, true}) {
        const QByteArray file = Encode({Rgb, 4, 16, isPacked, isPacked, -1, QByteArray(33, 'p')});
        for (int size = 0; size < file.size(); ++size) {
            int error = 0;
            QVERIFY2(!LoadFromMemory(file.left(size), &error), qPrintable(QString::number(size)));
        }
    }
}

void tst_Psd::inkProfiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTemporaryDir folder;
    constexpr int kCyan = 204; // 80 %
    QByteArray psd = Encode({Cmyk, 4, 8, false, false, 0, InkProfile()});
    for (int c = 0; c < 4; ++c)
        psd[psd.size() - (4 - c) * kWidth * kHeight] = c == 0 ? char(255 - kCyan) : '\xFF';
    QTest::newRow("PSD") << psd;
    QTest::newRow("TIFF") << TiffOfInks(folder.filePath(QStringLiteral("a.tif")), kCyan);
    QTest::newRow("JPEG") << JpegOfInks(kCyan);
}

void tst_Psd::inkProfiles()
{
    QFETCH(QByteArray, file);
    int error = 0;
    const BitmapPtr read = LoadFromMemory(file, &error);
    QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
    // Lightness 100 * (1 - 0.8 / 3), through CIE 15's formula and the curve of sRGB.
    const double light = std::pow((73.333 + 16) / 116, 3), expected = 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    for (int c = 0; c < 3; ++c)
        QVERIFY2(std::abs(SampleAt(*read, 0, 0, c) - expected) < 0.01,
                 qPrintable(QStringLiteral("%1, expected %2").arg(SampleAt(*read, 0, 0, c)).arg(expected)));
}

QTEST_GUILESS_MAIN(tst_Psd)
#include "Psd_test.moc"
