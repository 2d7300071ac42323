// Tests of TIFF, with libtiff as the reference: reads libtiff's files, and checks the contents of the layer's files.
#include "Bitmaps.h"
#include "Case.h"
#include "Files.h"
#include "Table.h"

#include <QtTest>
#include <qfloat16.h>

#include <cmath>
#include <cstring>
#include <tiffio.h>
#include <tuple>

namespace {

constexpr int kWidth = 37, kHeight = 23; // prime, so that tiles and strips extend past the edge

/// File to generate. Samples are pseudo-random over the full range, except in Lab, YCbCr, JPEG and files with a
/// profile.
struct Spec {
    int bits = 8;
    int samples = 3;
    int photometric = PHOTOMETRIC_RGB;
    int compression = COMPRESSION_NONE;
    QByteArray mode = "wl"; // byte order, BigTIFF
    int tile = 0;           // side; 0: strips
    int rowsPerStrip = 5;
    int planar = 0;
    int format = SAMPLEFORMAT_UINT;
    QVector<quint16> extra; // kinds of extra samples
    int predictor = 1;
    int eightBitMap = 0;
    int hasInkProfile = 0;
    int isD65 = 0;           // Lab relative to D65
    double badWhiteY = -1.0; // of a white that is ignored; -1: none
    int unit = RESUNIT_CENTIMETER;
    double density = 100.0;     // horizontal; the vertical one is 50
    int xDpi = 254, yDpi = 127; // expected

    bool IsLumaAndChroma() const { return photometric == PHOTOMETRIC_YCBCR && compression == COMPRESSION_NONE; }
    bool IsLab() const { return photometric == PHOTOMETRIC_CIELAB || photometric == PHOTOMETRIC_ICCLAB; }
};

constexpr double kCyan = 0.8; // the only ink in a file with a profile

/// Returns the file with these fields: "NAME=NUMBER ...".
Spec SpecOf(const QString &fields)
{
    static const QMap<QByteArray, int Spec::*> kIntegers = {{"bits", &Spec::bits},
                                                            {"samples", &Spec::samples},
                                                            {"photometric", &Spec::photometric},
                                                            {"compression", &Spec::compression},
                                                            {"tile", &Spec::tile},
                                                            {"rowsPerStrip", &Spec::rowsPerStrip},
                                                            {"planar", &Spec::planar},
                                                            {"format", &Spec::format},
                                                            {"predictor", &Spec::predictor},
                                                            {"eightBitMap", &Spec::eightBitMap},
                                                            {"hasInkProfile", &Spec::hasInkProfile},
                                                            {"isD65", &Spec::isD65},
                                                            {"unit", &Spec::unit},
                                                            {"xDpi", &Spec::xDpi},
                                                            {"yDpi", &Spec::yDpi}};
    Spec spec;
    for (const QByteArray &field : fields.toLatin1().split(' ')) {
        const QByteArray name = field.left(field.indexOf('=')), value = field.mid(name.size() + 1);
        if (kIntegers.contains(name))
            spec.*kIntegers[name] = value.toInt();
        else if (name == "mode")
            spec.mode = value;
        else if (name == "extra")
            spec.extra.append(value.toUShort());
        else if (name == "badWhiteY" || name == "density")
            (name == "density" ? spec.density : spec.badWhiteY) = value.toDouble();
        else
            qFatal("a TIFF has no field %s", name.constData());
    }
    return spec;
}

/// The colors of kLabColors in Lab relative to D65 (x 0.3127, y 0.329), by the same formulas without conversion to D50.
constexpr double kLabD65[kLabCount][3] = {
    {0, 0, 0}, {100, 0, 0}, {49.88, 49.209, 41.093}, {56.101, -46.237, 31.68}, {41.967, 46.783, -77.334}};

/// Encodes a Lab component as in TIFF 6.0, section 23, and the technical note on ICC Lab.
int LabValue(const Spec &spec, int x, int c)
{
    const double number = spec.isD65 ? kLabD65[x % kLabCount][c] : kLabColors[x % kLabCount].lab[c];
    const bool isCie = spec.photometric == PHOTOMETRIC_CIELAB;
    const int unit = spec.bits == 8 ? 1 : 256, zero = isCie ? 0 : 128 * unit;
    const int lightest = spec.bits == 8 ? 255 : isCie ? 65535 : 65280;
    return int(std::lround(c == 0 ? number / 100 * lightest : number * unit + zero));
}

/// Returns a sample as an integer of spec.bits or, for floats, in units of 1/255. With premultiplied colors,
/// opacity is sometimes 0, otherwise large, and never less than the colors.
quint32 Raw(const Spec &spec, int x, int y, int s)
{
    const quint32 noise =
        (static_cast<quint32>(x) * 7919u + static_cast<quint32>(y) * 104729u + static_cast<quint32>(s) * 1299709u)
        * 2654435761u;
    const quint32 greatest = spec.format == SAMPLEFORMAT_IEEEFP ? 255u : ~0u >> (32 - spec.bits);
    if (spec.IsLab() && s < 3)
        return static_cast<quint32>(LabValue(spec, x, s)) & greatest;
    if (spec.IsLumaAndChroma()) // red by ITU-R BT.601
        return s == 0 ? 76 : s == 1 ? 85 : 255;
    if (spec.hasInkProfile && s < 4)
        return s == 0 ? static_cast<quint32>(kCyan * greatest) : 0;
    if (spec.compression == COMPRESSION_JPEG) // a ramp, which suits JPEG
        return static_cast<quint32>(20 + 3 * x + 2 * y + 30 * s);
    const quint32 value = (noise >> 3) % (greatest == ~0u ? ~0u : greatest + 1);
    const bool premultiplied = spec.extra.contains(EXTRASAMPLE_ASSOCALPHA);
    if (!premultiplied)
        return value;
    const quint32 opacity = (x + y) % 5 == 0 ? 0 : greatest - static_cast<quint32>(x % 3);
    return s == spec.samples - 1 ? opacity : std::min(value, opacity);
}

/// Returns a sample as a fraction of the full range; halves are finite numbers of all magnitudes and both signs.
double Share(const Spec &spec, int x, int y, int s)
{
    if (spec.format == SAMPLEFORMAT_IEEEFP && spec.bits == 16) {
        const auto pattern = quint16(Raw(spec, x, y, s) * 257u & 0xFBFFu);
        qfloat16 half;
        std::memcpy(static_cast<void *>(&half), &pattern, sizeof half);
        return double(float(half));
    }
    const double greatest = spec.format == SAMPLEFORMAT_IEEEFP ? 255.0 : std::exp2(spec.bits) - 1.0;
    return Raw(spec, x, y, s) / greatest;
}

quint16 MapValue(const Spec &spec, quint32 index, int c)
{
    const quint32 value = (index * 197u + static_cast<quint32>(c) * 59u) & 255u;
    return static_cast<quint16>(spec.eightBitMap ? value : value * 257u);
}

/// Packs one row of a strip or tile as in a TIFF: the samples of @p count pixels from @p x0 on.
QByteArray PackRow(const Spec &spec, int x0, int count, int y, int plane)
{
    QByteArray row;
    quint32 bitBuffer = 0;
    int bitCount = 0;
    const auto append = [&row](const void *data, int bytes) { row.append(static_cast<const char *>(data), bytes); };
    for (int x = x0; x < x0 + count; ++x) {
        for (int s = plane < 0 ? 0 : plane; s < (plane < 0 ? spec.samples : plane + 1); ++s) {
            const int clampedX = std::min(x, kWidth - 1), clampedY = std::min(y, kHeight - 1);
            const quint32 raw = Raw(spec, clampedX, clampedY, s);
            if (spec.format == SAMPLEFORMAT_IEEEFP) {
                const double share = Share(spec, clampedX, clampedY, s);
                const float single = static_cast<float>(share);
                const qfloat16 half(single);
                spec.bits == 64 ? append(&share, 8) : spec.bits == 32 ? append(&single, 4) : append(&half, 2);
            } else if (spec.bits % 8 == 0) {
                append(&raw, spec.bits / 8); // assumes a little-endian machine
            } else {
                bitBuffer = bitBuffer << spec.bits | raw;
                for (bitCount += spec.bits; bitCount >= 8; bitCount -= 8)
                    row.append(static_cast<char>(bitBuffer >> (bitCount - 8)));
            }
        }
    }
    if (bitCount > 0)
        row.append(static_cast<char>(bitBuffer << (8 - bitCount)));
    return row;
}

QByteArray PackBlock(const Spec &spec, int x0, int columns, int y0, int rows, int plane)
{
    QByteArray block;
    for (int y = y0; y < y0 + rows; ++y)
        block += PackRow(spec, x0, columns, y, plane);
    return block;
}

void SetFields(TIFF *tiff, const Spec &spec)
{
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, spec.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, spec.samples);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, spec.format);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, spec.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, spec.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, spec.planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (!spec.extra.isEmpty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, spec.extra.size(), spec.extra.constData());
    if (spec.predictor != 1)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, spec.predictor);
    if (spec.IsLumaAndChroma())
        TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
    if (spec.compression == COMPRESSION_JPEG)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (spec.hasInkProfile)
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, InkProfile().size(), InkProfile().constData());
    const float white[] = {0.3127f, spec.isD65 ? 0.329f : float(spec.badWhiteY)};
    if (white[1] >= 0.0f)
        TIFFSetField(tiff, TIFFTAG_WHITEPOINT, white);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, spec.unit);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, spec.density);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 50.0);
    if (spec.tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, spec.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, spec.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, spec.rowsPerStrip);
    }
    if (spec.photometric == PHOTOMETRIC_PALETTE) {
        QVector<quint16> map[3];
        for (quint32 i = 0; i < 1u << spec.bits; ++i)
            for (int c = 0; c < 3; ++c)
                map[c].append(MapValue(spec, i, c));
        TIFFSetField(tiff, TIFFTAG_COLORMAP, map[0].constData(), map[1].constData(), map[2].constData());
    }
}

bool WriteFile(const QString &path, const Spec &spec)
{
    TIFF *tiff = TIFFOpen(path.toUtf8().constData(), spec.mode);
    if (!tiff)
        return false;
    SetFields(tiff, spec);
    bool good = true;
    for (int plane = spec.planar ? 0 : -1; plane < (spec.planar ? spec.samples : 0); ++plane) {
        const auto sample = static_cast<quint16>(std::max(plane, 0));
        const int columns = spec.tile > 0 ? spec.tile : kWidth, rows = spec.tile > 0 ? spec.tile : spec.rowsPerStrip;
        for (int y = 0; y < kHeight; y += rows)
            for (int x = 0; x < kWidth; x += columns) {
                const int height = spec.tile > 0 ? rows : std::min(rows, kHeight - y);
                QByteArray block = PackBlock(spec, x, columns, y, height, plane);
                const auto count = spec.tile > 0
                    ? TIFFWriteTile(tiff, block.data(), quint32(x), quint32(y), 0, sample)
                    : TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, quint32(y), sample), block.data(),
                                            block.size());
                good = good && count >= 0;
            }
    }
    TIFFClose(tiff);
    return good;
}

/// Returns the expected value of channel @p c, by the definitions of TIFF 6.0.
double Expected(const Spec &spec, int x, int y, int c, int channels)
{
    const double opacity = channels == 4 ? Share(spec, x, y, spec.samples - 1) : 1.0;
    if (c == 3)
        return opacity;
    if (spec.IsLab())
        return kLabColors[x % kLabCount].rgb[c];
    if (spec.IsLumaAndChroma())
        return c == 0 ? 1.0 : 0.0;
    if (spec.hasInkProfile)
        return GrayOfCyan(kCyan);
    double value = 0.0;
    switch (spec.photometric) {
    case PHOTOMETRIC_MINISWHITE:
        value = 1.0 - Share(spec, x, y, 0);
        break;
    case PHOTOMETRIC_MINISBLACK:
        value = Share(spec, x, y, 0);
        break;
    case PHOTOMETRIC_PALETTE:
        return (MapValue(spec, Raw(spec, x, y, 0), c) & 255) / 255.0;
    case PHOTOMETRIC_SEPARATED:
        value = (1.0 - Share(spec, x, y, c)) * (1.0 - Share(spec, x, y, 3));
        break;
    default:
        value = Share(spec, x, y, c);
    }
    const bool premultiplied = spec.extra.contains(EXTRASAMPLE_ASSOCALPHA);
    return premultiplied && opacity > 0.0 ? value / opacity : value;
}

} // namespace

class tst_Tiff : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gflEnableLZW(1); }
    void readsWhatLibtiffWrites();
    void writtenFilesAreCorrect();
    void anyThreads();

private:
    void ReadSpec(const Spec &spec, int type, int bits);

    Folder m_folder;
};

void tst_Tiff::readsWhatLibtiffWrites()
{
    const QMap<QByteArray, int> types = {{"gray", GFL_GREY}, {"RGB", GFL_RGB}, {"RGBA", GFL_RGBA}};
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_READ_TIFFS))) {
        const Case named(row[0]);
        ReadSpec(SpecOf(row[3]), types[row[1].toLatin1()], row[2].toInt());
        if (QTest::currentTestFailed())
            return;
    }
}

void tst_Tiff::ReadSpec(const Spec &spec, int type, int bits)
{
    const QString path = m_folder("a.tif");
    QVERIFY(WriteFile(path, spec));
    const BitmapPtr got = Load(path);
    QVERIFY2(got, gflLastErrorText());
    // Values stored at another depth, mixed inks, and colors divided by their opacity are rounded.
    const bool isInk = spec.photometric == PHOTOMETRIC_SEPARATED;
    const bool exact = spec.bits == bits && !isInk && !spec.extra.contains(EXTRASAMPLE_ASSOCALPHA) && bits != 32;
    const double rounding = bits == 32 ? 1e-6 : 0.51 / (std::exp2(bits) - 1.0);
    const double tolerance = spec.IsLab()              ? (bits == 8 ? 0.02 : 0.004)
        : spec.hasInkProfile || spec.IsLumaAndChroma() ? 0.01
        : spec.compression == COMPRESSION_JPEG         ? 0.05
        : exact                                        ? 0.0
        : spec.bits == 16 && bits == 32                ? 0.0
                                                       : rounding;
    QCOMPARE(int(got->Type), type);
    QCOMPARE(int(got->BitsPerComponent), bits);
    const auto expected = [&](int x, int y, int c) { return Expected(spec, x, y, c, ChannelsOf(type)); };
    QCOMPARE(Difference(*got, expected, tolerance + 1e-12), QString());

    GFL_FILE_INFORMATION info;
    QVERIFY2(Describe(path, &info) == GFL_NO_ERROR, gflLastErrorText());
    const bool isPalette = spec.photometric == PHOTOMETRIC_PALETTE;
    const int model = isPalette                 ? GFL_CM_PALETTE
        : isInk                                 ? GFL_CM_CMYK
        : spec.IsLab()                          ? GFL_CM_LAB
        : spec.photometric == PHOTOMETRIC_YCBCR ? GFL_CM_YCBCR
        : spec.samples < 3                      ? GFL_CM_GREY
                                                : GFL_CM_RGB;
    const char *description = spec.tile > 0 ? "TIFF tiled" : isInk ? "TIFF CMYK" : spec.IsLab() ? "TIFF LAB" : "TIFF";
    QCOMPARE(InfoText(info),
             InfoText("tiff", description, {kWidth, kHeight}, isPalette ? 3 : spec.samples, bits, model,
                      {spec.xDpi, spec.yDpi}));
}

void tst_Tiff::writtenFilesAreCorrect()
{
    const QString path = m_folder("a.tif");
    const QMap<int, int> schemes = {{0, COMPRESSION_NONE}, {2, COMPRESSION_LZW}, {4, COMPRESSION_ADOBE_DEFLATE}};
    for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA})
        for (int bits : {8, 16, 32})
            for (int compression : schemes.keys()) {
                const Case named(type, bits, "compression", compression);
                const BitmapPtr bitmap = RandomBitmap(301, 503, type, bits); // many strips at all depths
                bitmap->Xdpi = compression == 2 ? 0 : 300;
                bitmap->Ydpi = compression == 0 ? 0 : 150;
                QVERIFY2(Save(path, *bitmap, SaveParams("tiff", compression)) == GFL_NO_ERROR, gflLastErrorText());
                TIFF *tiff = TIFFOpen(path.toUtf8().constData(), "r");
                quint16 scheme = 0, predictor = 1, extraCount = 0, *extra = nullptr, unit = 0;
                float xDpi = 0, yDpi = 0;
                const int dpiFields = TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &xDpi)
                    + TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &yDpi)
                    + TIFFGetField(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
                TIFFGetField(tiff, TIFFTAG_COMPRESSION, &scheme);
                TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extraCount, &extra);
                if (compression != 0)
                    TIFFGetField(tiff, TIFFTAG_PREDICTOR, &predictor);
                const bool isStraight = extraCount == 1 && extra[0] == EXTRASAMPLE_UNASSALPHA;
                QByteArray row(static_cast<int>(TIFFScanlineSize(tiff)), '\0'), pixels;
                for (quint32 y = 0; y < 503 && TIFFReadScanline(tiff, row.data(), y) > 0; ++y)
                    pixels += row;
                QVERIFY(!TIFFIsBigTIFF(tiff));
                TIFFClose(tiff);
                QCOMPARE(pixels, PackedPixels(*bitmap));
                QCOMPARE(int(scheme), schemes[compression]);
                QCOMPARE(int(predictor), compression == 0 ? 1 : bits == 32 ? 3 : 2);
                QCOMPARE(isStraight, type == GFL_RGBA);
                QCOMPARE(dpiFields, compression == 4 ? 3 : 0); // only if both are known
                QVERIFY(compression != 4 || (xDpi == 300 && yDpi == 150 && unit == RESUNIT_INCH));
            }
}

/// Reads pictures large enough for several threads, intact and with two damaged strips, of which the first is reported.
void tst_Tiff::anyThreads()
{
    constexpr int kSide = 1101;
    const std::tuple<int, int, int> forms[] = {
        {GFL_RGB, 8, 0}, {GFL_RGB, 16, 4}, {GFL_RGBA, 8, 2}, {GFL_GREY, 32, 4}, {GFL_RGB, 8, 50000}};
    for (const auto &[type, bits, compression] : forms) {
        const BitmapPtr bitmap = RandomBitmap(kSide, kSide, type, bits);
        const QByteArray file = SavedBytes(*bitmap, SaveParams("tiff", compression));
        QByteArray damaged = file;
        for (const int share : {4, 8})
            std::memset(damaged.data() + file.size() / 10 * share, 0xA5, 3000);
        QByteArray firstText;
        for (const int threads : {1, 2, 5}) {
            const Case named(type, bits, compression, "threads", threads);
            gflSetThreads(threads);
            int error = GFL_NO_ERROR;
            const BitmapPtr whole = LoadFromMemory(file), rest = LoadFromMemory(damaged, &error);
            const QByteArray text = rest ? "" : gflLastErrorText();
            gflSetThreads(0);
            QVERIFY2(whole, gflLastErrorText());
            QCOMPARE(Difference(*whole, *bitmap), QString());
            if (compression == 4)
                QCOMPARE(error, int(GFL_ERROR_FILE_READ));
            if (threads == 1)
                firstText = text;
            QCOMPARE(text, firstText);
        }
    }
}

QTEST_GUILESS_MAIN(tst_Tiff)
#include "Tiff_test.moc"
