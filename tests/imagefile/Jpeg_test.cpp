// JPEG against libjpeg itself.
#include "Bitmaps.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>

namespace {

/// How libjpeg is to write a file.
struct Spec {
    int width = 67;
    int height = 41;
    J_COLOR_SPACE in = JCS_RGB;
    J_COLOR_SPACE stored = JCS_YCbCr;
    bool progressive = false;
    bool arithmetic = false;
    int restart = 0;      // MCUs between restart markers
    int lumaSampling = 2; // 2: colour at half the resolution
};

template <class Change> Spec With(Change change)
{
    Spec spec;
    change(spec);
    return spec;
}

int ComponentsOf(J_COLOR_SPACE space)
{
    return space == JCS_GRAYSCALE ? 1 : space == JCS_CMYK || space == JCS_YCCK ? 4 : 3;
}

JSAMPLE Sample(int x, int y, int c)
{
    return static_cast<JSAMPLE>(40 + 2 * x + y + 20 * c);
}

QByteArray Encode(const Spec &spec)
{
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_compress(&cinfo);
    unsigned char *data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, &data, &size);
    cinfo.image_width = static_cast<JDIMENSION>(spec.width);
    cinfo.image_height = static_cast<JDIMENSION>(spec.height);
    cinfo.input_components = ComponentsOf(spec.in);
    cinfo.in_color_space = spec.in;
    jpeg_set_defaults(&cinfo);
    jpeg_set_colorspace(&cinfo, spec.stored);
    jpeg_set_quality(&cinfo, 90, TRUE);
    cinfo.comp_info[0].h_samp_factor = cinfo.comp_info[0].v_samp_factor = spec.lumaSampling;
    cinfo.restart_interval = static_cast<unsigned>(spec.restart);
    cinfo.arith_code = spec.arithmetic;
    if (spec.progressive)
        jpeg_simple_progression(&cinfo);
    jpeg_start_compress(&cinfo, TRUE);
    QByteArray row(spec.width * cinfo.input_components, '\0');
    for (int y = 0; y < spec.height; ++y) {
        for (int i = 0; i < row.size(); ++i)
            row[i] = static_cast<char>(Sample(i / cinfo.input_components, y, i % cinfo.input_components));
        JSAMPROW pointer = reinterpret_cast<JSAMPROW>(row.data());
        jpeg_write_scanlines(&cinfo, &pointer, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    QByteArray file(reinterpret_cast<char *>(data), static_cast<int>(size));
    std::free(data);
    return file;
}

/// libjpeg's own decode of a whole file, in grey, RGB or CMYK.
QByteArray Decode(const QByteArray &file, J_COLOR_SPACE space, QSize *size = nullptr)
{
    jpeg_decompress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, reinterpret_cast<const unsigned char *>(file.constData()),
                 static_cast<unsigned long>(file.size()));
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = space;
    jpeg_start_decompress(&cinfo);
    QByteArray pixels;
    QByteArray row(static_cast<int>(cinfo.output_width) * ComponentsOf(space), '\0');
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW pointer = reinterpret_cast<JSAMPROW>(row.data());
        jpeg_read_scanlines(&cinfo, &pointer, 1);
        pixels += row;
    }
    if (size)
        *size = QSize(static_cast<int>(cinfo.output_width), static_cast<int>(cinfo.output_height));
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    return pixels;
}

double RootMeanSquare(const GFL_BITMAP &a, const GFL_BITMAP &b)
{
    double sum = 0.0;
    for (int y = 0; y < a.Height; ++y)
        for (int x = 0; x < a.Width; ++x)
            for (int c = 0; c < a.ComponentsPerPixel; ++c)
                sum += std::pow(SampleAt(a, x, y, c) - SampleAt(b, x, y, c), 2);
    return std::sqrt(sum / (a.Width * a.Height * a.ComponentsPerPixel));
}

} // namespace

Q_DECLARE_METATYPE(Spec)

class tst_Jpeg : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatLibjpegDecodes_data();
    void readsWhatLibjpegDecodes();
    void cmyk();
    void oddEnds_data();
    void oddEnds();
    void cutAnywhere_data();
    void cutAnywhere();
    void damagedInside();
    void writes_data();
    void writes();
    void quality();
    void tooLarge();
};

void tst_Jpeg::readsWhatLibjpegDecodes_data()
{
    QTest::addColumn<Spec>("spec");
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("description");
    QTest::newRow("YCbCr") << Spec() << int(GFL_RGB) << QByteArray("JPEG");
    QTest::newRow("full colour") << With([](Spec &s) { s.lumaSampling = 1; }) << int(GFL_RGB) << QByteArray("JPEG");
    QTest::newRow("RGB") << With([](Spec &s) { s.stored = JCS_RGB, s.lumaSampling = 1; }) << int(GFL_RGB)
                         << QByteArray("JPEG");
    QTest::newRow("grey") << With([](Spec &s) { s.in = s.stored = JCS_GRAYSCALE; }) << int(GFL_GREY)
                          << QByteArray("JPEG");
    QTest::newRow("progressive") << With([](Spec &s) { s.progressive = true; }) << int(GFL_RGB)
                                 << QByteArray("JPEG progressive");
    QTest::newRow("arithmetic") << With([](Spec &s) { s.arithmetic = true; }) << int(GFL_RGB) << QByteArray("JPEG");
    QTest::newRow("restarts") << With([](Spec &s) { s.restart = 2; }) << int(GFL_RGB) << QByteArray("JPEG");
    QTest::newRow("1 x 1") << With([](Spec &s) { s.width = s.height = 1; }) << int(GFL_RGB) << QByteArray("JPEG");
}

void tst_Jpeg::readsWhatLibjpegDecodes()
{
    QFETCH(Spec, spec);
    QFETCH(int, type);
    QFETCH(QByteArray, description);
    const QByteArray file = Encode(spec);
    GFL_BITMAP *loaded = nullptr;
    GFL_FILE_INFORMATION info;
    const GFL_LOAD_PARAMS params = LoadParams(GFL_LOAD_ORIGINAL_DEPTH);
    const int error = gflLoadBitmapFromMemory(reinterpret_cast<const std::uint8_t *>(file.constData()),
                                              static_cast<std::uint32_t>(file.size()), &loaded, &params, &info);
    const BitmapPtr bitmap(loaded);
    QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
    QCOMPARE(int(bitmap->Type), type);
    QCOMPARE(PackedPixels(*bitmap), Decode(file, type == GFL_GREY ? JCS_GRAYSCALE : JCS_RGB));
    QCOMPARE(QByteArray(info.Description), description);
    QCOMPARE(QSize(info.Width, info.Height), QSize(spec.width, spec.height));
    QCOMPARE(int(info.ComponentsPerPixel), ComponentsOf(spec.in));
    QCOMPARE(int(info.BitsPerComponent), 8);
}

void tst_Jpeg::cmyk()
{
    // libjpeg writes the Adobe marker with YCCK and CMYK, by which inks are stored inverted: 255 is none.
    for (J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
        const QByteArray file = Encode(With([=](Spec &s) { s.in = JCS_CMYK, s.stored = stored, s.lumaSampling = 1; }));
        GFL_BITMAP *loaded = nullptr;
        GFL_FILE_INFORMATION info;
        const GFL_LOAD_PARAMS params = LoadParams();
        const int error = gflLoadBitmapFromMemory(reinterpret_cast<const std::uint8_t *>(file.constData()),
                                                  static_cast<std::uint32_t>(file.size()), &loaded, &params, &info);
        const BitmapPtr bitmap(loaded);
        QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
        QCOMPARE(int(info.ColorModel), int(GFL_CM_CMYK));
        QCOMPARE(int(info.ComponentsPerPixel), 4);
        QCOMPARE(int(bitmap->Type), int(GFL_RGB));
        const QByteArray inks = Decode(file, JCS_CMYK);
        for (int i = 0; i < inks.size() / 4; ++i)
            for (int c = 0; c < 3; ++c) {
                const double light = (uchar(inks[4 * i + c]) / 255.0) * (uchar(inks[4 * i + 3]) / 255.0);
                QVERIFY(std::abs(SampleAt(*bitmap, i % info.Width, i / info.Width, c) - light) < 0.51 / 255);
            }
    }
}

void tst_Jpeg::oddEnds_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("same");
    const QByteArray file = Encode(Spec());
    const QByteArray body = file.left(file.size() - 2);
    const QByteArray end = file.right(2);
    QTest::newRow("bytes behind the end") << file + QByteArray(1000, 'x') << file;
    QTest::newRow("junk before the end") << body + QByteArray(50, '\x11') + end << file;
    QTest::newRow("no end marker") << body << file;
    QTest::newRow("a second picture behind") << file + file << file;
}

void tst_Jpeg::oddEnds()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, same);
    int error = 0;
    const BitmapPtr bitmap = LoadFromMemory(file, &error);
    QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
    QCOMPARE(PackedPixels(*bitmap), Decode(same, JCS_RGB));
}

void tst_Jpeg::cutAnywhere_data()
{
    QTest::addColumn<Spec>("spec");
    QTest::newRow("baseline") << Spec();
    QTest::newRow("progressive") << With([](Spec &s) { s.progressive = true; });
    QTest::newRow("restarts") << With([](Spec &s) { s.restart = 1; });
    QTest::newRow("arithmetic") << With([](Spec &s) { s.arithmetic = true; });
}

void tst_Jpeg::cutAnywhere()
{
    QFETCH(Spec, spec);
    const QByteArray file = Encode(spec);
    for (int size = 0; size < file.size() - 2; ++size) { // without the last two bytes, the end marker, see oddEnds
        int error = 0;
        const BitmapPtr bitmap = LoadFromMemory(file.left(size), &error);
        const int expected = size == 1 || size == 2 ? GFL_ERROR_UNKNOWN_FORMAT : GFL_ERROR_FILE_READ;
        QVERIFY2(error == expected && !bitmap, qPrintable(QStringLiteral("cut to %1: error %2").arg(size).arg(error)));
    }
}

void tst_Jpeg::damagedInside()
{
    // An end marker in the middle of the picture: what follows would be grey.
    QByteArray file = Encode(Spec());
    const int middle = file.size() - 200;
    file[middle] = '\xFF';
    file[middle + 1] = '\xD9';
    int error = 0;
    LoadFromMemory(file, &error);
    QCOMPARE(error, int(GFL_ERROR_FILE_READ));

    // A piece between two restart markers is missing: what follows would be at the wrong place.
    file = Encode(With([](Spec &s) { s.restart = 1; }));
    const int third = file.indexOf("\xFF\xD2"), fourth = file.indexOf("\xFF\xD3", third);
    QVERIFY(third > 0 && fourth > third);
    LoadFromMemory(file.remove(third, fourth - third), &error);
    QCOMPARE(error, int(GFL_ERROR_FILE_READ));
}

void tst_Jpeg::writes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QSize>("size");
    for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA})
        for (int bits : {8, 16, 32})
            for (const QSize size : {QSize(1, 1), QSize(67, 41), QSize(128, 16)})
                QTest::addRow("type %d, %d bits, %dx%d", type, bits, size.width(), size.height())
                    << type << bits << size;
}

void tst_Jpeg::writes()
{
    QFETCH(int, type);
    QFETCH(int, bits);
    QFETCH(QSize, size);
    BitmapPtr bitmap = SmoothBitmap(size.width(), size.height(), type, bits);
    bitmap->Xdpi = 300;
    bitmap->Ydpi = 150;
    const QByteArray file = SavedBytes(*bitmap, SaveParams("jpeg", -1, 100));
    QVERIFY2(!file.isEmpty(), gflLastErrorText());
    const J_COLOR_SPACE space = type == GFL_GREY ? JCS_GRAYSCALE : JCS_RGB;
    QSize decodedSize;
    const QByteArray pixels = Decode(file, space, &decodedSize);
    QCOMPARE(decodedSize, size);
    const int channels = ComponentsOf(space);
    for (int i = 0; i < pixels.size(); ++i) { // opacity is left out
        const int pixel = i / channels;
        const double want = SampleAt(*bitmap, pixel % size.width(), pixel / size.width(), i % channels);
        QVERIFY2(std::abs(uchar(pixels[i]) / 255.0 - want) < 0.015, qPrintable(QString::number(i)));
    }
    int error = 0;
    const BitmapPtr read = LoadFromMemory(file, &error);
    QCOMPARE(int(read->Xdpi), 300);
    QCOMPARE(int(read->Ydpi), 150);
}

void tst_Jpeg::quality()
{
    const BitmapPtr bitmap = RandomBitmap(64, 64, GFL_GREY, 8); // the hardest there is
    int lastSize = 0;
    double lastError = 1.0;
    for (int quality : {0, 20, 50, 80, 95, 100}) {
        const QByteArray file = SavedBytes(*bitmap, SaveParams("jpeg", -1, quality));
        int error = 0;
        const BitmapPtr read = LoadFromMemory(file, &error);
        QVERIFY(read);
        const double loss = RootMeanSquare(*read, *bitmap);
        QVERIFY2(file.size() > lastSize && loss < lastError, qPrintable(QString::number(quality)));
        lastSize = file.size();
        lastError = loss;
    }
    QVERIFY(lastError < 0.01);
}

void tst_Jpeg::tooLarge()
{
    const BitmapPtr bitmap = RandomBitmap(65501, 1, GFL_GREY, 8);
    QVERIFY(SavedBytes(*bitmap, SaveParams("jpeg")).isEmpty());
    QVERIFY(QByteArray(gflLastErrorText()).contains("65501"));
}

QTEST_GUILESS_MAIN(tst_Jpeg)
#include "Jpeg_test.moc"
