// OpenEXR through the layer, with the format's own library as witness.
#include "Bitmaps.h"

#include <QTemporaryDir>
#include <QtTest>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfOutputFile.h>
#include <ImfRgbaFile.h>
#include <ImfTiledOutputFile.h>

#include <cmath>

namespace {

// What a foreign file holds at a place of its data window; exact as half.
float ValueAt(int x, int y, int c)
{
    return static_cast<float>(x + 8 * y + 64 * c) / 256.0f;
}

enum Kind { ScanLines, Tiles, Layer, LuminanceChroma, GreyAlpha };

/// A file of half pixels in the data window; alpha is 0.5 where there is any.
void WriteForeign(const std::string &path, Kind kind, const Imath::Box2i &display, const Imath::Box2i &data)
{
    const int width = data.max.x - data.min.x + 1, height = data.max.y - data.min.y + 1;
    Imf::Header header(display, data);
    std::vector<Imf::Rgba> pixels;
    for (int y = data.min.y; y <= data.max.y; ++y)
        for (int x = data.min.x; x <= data.max.x; ++x)
            pixels.emplace_back(ValueAt(x, y, 0), ValueAt(x, y, 1), ValueAt(x, y, 2), 0.5f);
    if (kind == LuminanceChroma) {
        std::fill(pixels.begin(), pixels.end(), Imf::Rgba(0.25f, 0.5f, 0.75f, 1.0f));
        Imf::RgbaOutputFile file(path.c_str(), header, Imf::WRITE_YC);
        file.setFrameBuffer(pixels.data() - data.min.x - data.min.y * width, 1, std::size_t(width));
        file.writePixels(height);
        return;
    }
    Imf::FrameBuffer buffer;
    const char *const names[] = {"R", "G", "B", "A"};
    for (int c = 0; c < 4; ++c) {
        const std::string name = kind == Layer ? std::string("left.") + names[c]
            : kind == GreyAlpha && c == 0      ? "Y"
                                               : names[c];
        if (kind == GreyAlpha && (c == 1 || c == 2))
            continue;
        header.channels().insert(name, Imf::Channel(Imf::HALF));
        buffer.insert(
            name, Imf::Slice::Make(Imf::HALF, reinterpret_cast<half *>(pixels.data()) + c, data, sizeof(Imf::Rgba)));
    }
    if (kind == Tiles) {
        header.setTileDescription(Imf::TileDescription(5, 3, Imf::MIPMAP_LEVELS));
        Imf::TiledOutputFile file(path.c_str(), header);
        file.setFrameBuffer(buffer);
        for (int level = 0; level < file.numLevels(); ++level)
            file.writeTiles(0, file.numXTiles(level) - 1, 0, file.numYTiles(level) - 1, level);
        return;
    }
    header.lineOrder() = Imf::DECREASING_Y;
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(buffer);
    file.writePixels(height);
}

} // namespace

class tst_Exr : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writeThenRead_data();
    void writeThenRead();
    void foreignFiles_data();
    void foreignFiles();
    void damagedFiles();
};

void tst_Exr::writeThenRead_data()
{
    QTest::addColumn<int>("compression"); // -1: default
    QTest::addColumn<int>("bits");
    for (int compression = -1; compression < 10; ++compression)
        for (int bits : {8, 16, 32})
            QTest::addRow("%d, %d bits", compression, bits) << compression << bits;
}

void tst_Exr::writeThenRead()
{
    QFETCH(int, compression);
    QFETCH(int, bits);
    const int stored = compression < 0 ? int(Imf::PIZ_COMPRESSION) : compression;
    // Of half, and of 16 bits as float; the worst of the methods that lose.
    const double rounding = bits == 8 ? 0x1p-12 : bits == 16 ? 0x1p-25 : 0.0;
    const double tolerance = stored > 5 ? 0.01 : stored == 5 ? std::max(rounding, 0x1p-16) : rounding;
    QTemporaryDir folder;
    const QByteArray path = folder.filePath(QStringLiteral("a.exr")).toUtf8();
    for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA}) {
        const BitmapPtr bitmap = stored > 5 ? SmoothBitmap(67, 39, type, bits) : RandomBitmap(67, 39, type, bits);
        bitmap->Xdpi = 300;
        const GFL_SAVE_PARAMS params = SaveParams("exr", compression);
        QVERIFY2(gflSaveBitmapUTF8(path.constData(), bitmap.get(), &params) == GFL_NO_ERROR, gflLastErrorText());
        const Imf::InputFile witness(path.constData());
        QCOMPARE(int(witness.header().compression()), stored);
        QCOMPARE(int(witness.header().channels().begin().channel().type),
                 int(bits == 8 || stored > 5 ? Imf::HALF : Imf::FLOAT));
        int error = 0;
        const BitmapPtr got = Load(QString::fromUtf8(path), &error);
        QVERIFY2(got && got->Type == type && got->BitsPerComponent == 32 && got->Xdpi == 300, gflLastErrorText());
        for (int i = 0; i < 67 * 39 * ChannelsOf(type); ++i) {
            const int c = i % ChannelsOf(type), x = i / ChannelsOf(type) % 67, y = i / ChannelsOf(type) / 67;
            const double alpha = type == GFL_RGBA ? SampleAt(*bitmap, x, y, 3) : 1.0;
            // Twice with alpha: of the product and of alpha; and two operations on floats.
            const double limit = type == GFL_RGBA ? 2 * tolerance + 0x1p-22 : tolerance;
            const double difference = std::abs(SampleAt(*got, x, y, c) - SampleAt(*bitmap, x, y, c));
            QVERIFY2(difference * alpha <= limit,
                     qPrintable(QStringLiteral("%1, %2: off by %3").arg(x).arg(y).arg(difference)));
        }
    }
}

void tst_Exr::foreignFiles_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QRect>("data"); // the display window is 16 x 12 at (-3, 2)
    QTest::newRow("overscan") << int(ScanLines) << QRect(-6, 0, 24, 18);
    QTest::newRow("tiles with reduced versions, a part of the picture") << int(Tiles) << QRect(1, 5, 7, 6);
    QTest::newRow("windows that don't meet") << int(ScanLines) << QRect(100, 100, 4, 4);
    QTest::newRow("layer") << int(Layer) << QRect(-3, 2, 16, 12);
    QTest::newRow("luminance and chroma") << int(LuminanceChroma) << QRect(-4, 2, 20, 12);
    QTest::newRow("grey and alpha") << int(GreyAlpha) << QRect(-3, 2, 16, 12);
}

void tst_Exr::foreignFiles()
{
    QFETCH(int, kind);
    QFETCH(QRect, data);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.exr"));
    WriteForeign(path.toStdString(), Kind(kind), {{-3, 2}, {12, 13}},
                 {{data.left(), data.top()}, {data.right(), data.bottom()}});
    int error = 0;
    const BitmapPtr got = Load(path, &error);
    QVERIFY2(got, gflLastErrorText());
    QCOMPARE(QSize(got->Width, got->Height), QSize(16, 12));
    QCOMPARE(int(got->Type), int(kind == LuminanceChroma ? GFL_RGB : GFL_RGBA));
    for (int y = 2; y < 14; ++y)
        for (int x = -3; x < 13; ++x)
            for (int c = 0; c < got->ComponentsPerPixel; ++c) {
                const double stored = kind == LuminanceChroma ? 0.25 * (c + 1)
                    : c == 3                                  ? 0.5
                                                              : double(ValueAt(x, y, kind == GreyAlpha ? 0 : c)) / 0.5;
                const double want = data.contains(x, y) ? stored : 0.0;
                QVERIFY(std::abs(SampleAt(*got, x + 3, y - 2, c) - want) <= (kind == LuminanceChroma ? 0.002 : 0.0));
            }
}

void tst_Exr::damagedFiles()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.exr"));
    WriteForeign(path.toStdString(), Tiles, {{0, 0}, {15, 11}}, {{0, 0}, {15, 11}});
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray good = file.readAll();
    int error = 0;
    for (int size = 4; size < good.size() / 2; ++size) // behind that are reduced versions, which nobody needs
        QVERIFY2(!LoadFromMemory(good.left(size), &error) && error != GFL_NO_ERROR, qPrintable(QString::number(size)));
    // Every number of the headers made huge or negative: an error or a picture, nothing else.
    for (int at = 4; at + 4 < 600; ++at)
        for (const char *number : {"\xFF\xFF\xFF\x7F", "\0\0\0\x80", "\0\0\x10\0"})
            LoadFromMemory(QByteArray(good).replace(at, 4, QByteArray(number, 4)), &error);
    const int window = good.indexOf("dataWindow") + 22; // name, "box2i", size: then left, top, right, bottom
    for (const char *box :
         {"\0\0\0\0\0\0\0\0\xFF\x3F\x0F\0\xFF\x3F\x0F\0", "\0\0\0\x80\0\0\0\x80\xFF\xFF\xFF\x7F\xFF\xFF\xFF\x7F",
          "\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\x0B\0\0\0"}) {
        QVERIFY(!LoadFromMemory(QByteArray(good).replace(window, 16, QByteArray(box, 16)), &error));
        QVERIFY(error == GFL_ERROR_FILE_READ || error == GFL_ERROR_NO_MEMORY);
    }
}

QTEST_GUILESS_MAIN(tst_Exr)
#include "Exr_test.moc"
