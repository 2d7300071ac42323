// Tests of OpenEXR files, with the OpenEXR library as the reference.
#include "Bitmaps.h"
#include "Case.h"
#include "Files.h"

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

/// Returns the value at a position in the data window of files written by OpenEXR, which is exact in half precision.
float ValueAt(int x, int y, int c)
{
    return static_cast<float>(x + 8 * y + 64 * c) / 256.0f;
}

enum Kind { ScanLines, Tiles, Layer, LuminanceChroma, GrayAlpha };

/// Writes a file of half-precision samples in the data window; alpha, if any, is 0.5.
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
            : kind == GrayAlpha && c == 0      ? "Y"
                                               : names[c];
        if (kind == GrayAlpha && (c == 1 || c == 2))
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
    void writeThenRead();
    void foreignFiles();
    void damagedFiles();

private:
    Folder m_folder;
};

void tst_Exr::writeThenRead()
{
    const QString path = m_folder("a.exr");
    const int types[] = {GFL_GREY, GFL_RGB, GFL_RGBA}, depths[] = {8, 16, 32};
    for (int i = 0; i < 99; ++i) {
        const Case named("row", i);
        const int compression = i / 9 - 1, type = types[i / 3 % 3], bits = depths[i % 3]; // compression -1: default
        const int stored = compression < 0 ? int(Imf::PIZ_COMPRESSION) : compression;
        // 8 bits are stored as half, 16 and 32 bits as float, except by the methods above 5 (B44, DWA), which store all
        // as half. Lossy methods, from 5 on, have larger errors.
        const double rounding = bits == 8 ? 0x1p-12 : bits == 16 ? 0x1p-25 : 0.0;
        const double tolerance = stored > 5 ? 0.01 : stored == 5 ? std::max(rounding, 0x1p-16) : rounding;
        const BitmapPtr bitmap = stored > 5 ? SmoothBitmap(67, 39, type, bits) : RandomBitmap(67, 39, type, bits);
        bitmap->Xdpi = 300;
        QVERIFY2(Save(path, *bitmap, SaveParams("exr", compression)) == GFL_NO_ERROR, gflLastErrorText());
        const Imf::InputFile witness(path.toStdString().c_str());
        QCOMPARE(int(witness.header().compression()), stored);
        QCOMPARE(int(witness.header().channels().begin().channel().type),
                 int(bits == 8 || stored > 5 ? Imf::HALF : Imf::FLOAT));
        GFL_FILE_INFORMATION info;
        QCOMPARE(Describe(path, &info), int(GFL_NO_ERROR));
        QVERIFY2(QByteArray(info.Description).startsWith("OpenEXR"), info.Description);
        const BitmapPtr got = Load(path);
        QVERIFY2(got && got->Type == type && got->BitsPerComponent == 32 && got->Xdpi == 300, gflLastErrorText());
        // With alpha, colors are stored multiplied by it. The error then doubles, because both product and alpha are
        // rounded; two float operations add theirs.
        const double limit = type == GFL_RGBA ? 2 * tolerance + 0x1p-22 : tolerance;
        const auto multiplied = [&](const GFL_BITMAP &b, int x, int y, int c) {
            return SampleAt(b, x, y, c) * (type == GFL_RGBA ? SampleAt(*bitmap, x, y, 3) : 1.0);
        };
        for (int y = 0; y < 39; ++y)
            for (int x = 0; x < 67; ++x)
                for (int c = 0; c < ChannelsOf(type); ++c)
                    QVERIFY(std::abs(multiplied(*got, x, y, c) - multiplied(*bitmap, x, y, c)) <= limit);
    }
}

void tst_Exr::foreignFiles()
{
    const QString path = m_folder("a.exr");
    const struct {
        const char *name;
        Kind kind;
        QRect data; // the display window is 16 x 12 at (-3, 2)
    } files[] = {
        {"overscan", ScanLines, {-6, 0, 24, 18}},
        {"tiles with reduced versions, part of the picture", Tiles, {1, 5, 7, 6}},
        {"windows that don't overlap", ScanLines, {100, 100, 4, 4}},
        {"layer", Layer, {-3, 2, 16, 12}},
        {"luminance and chroma", LuminanceChroma, {-4, 2, 20, 12}},
        {"gray and alpha", GrayAlpha, {-3, 2, 16, 12}},
    };
    for (const auto &[name, kind, data] : files) {
        WriteForeign(path.toStdString(), kind, {{-3, 2}, {12, 13}},
                     {{data.left(), data.top()}, {data.right(), data.bottom()}});
        const BitmapPtr got = Load(path);
        const bool isChroma = kind == LuminanceChroma, isGray = kind == GrayAlpha;
        QVERIFY2(got && got->Width == 16 && got->Height == 12 && got->Type == (isChroma ? GFL_RGB : GFL_RGBA), name);
        const QRect &window = data;
        const auto expected = [&](int x, int y, int c) {
            const double color = isChroma ? 0.25 * (c + 1) : double(ValueAt(x - 3, y + 2, isGray ? 0 : c)) / 0.5;
            return !window.contains(x - 3, y + 2) ? 0.0 : c == 3 ? 0.5 : color;
        };
        QVERIFY2(Difference(*got, expected, isChroma ? 0.002 : 0.0).isEmpty(), name);
    }
}

void tst_Exr::damagedFiles()
{
    const QString path = m_folder("a.exr");
    WriteForeign(path.toStdString(), Tiles, {{0, 0}, {15, 11}}, {{0, 0}, {15, 11}});
    const QByteArray good = ReadFile(path);
    QCOMPARE(BadCut(good, good.size() / 2), QString()); // the reduced versions at the end are not needed
    int error = 0;
    // A huge or negative number anywhere in the headers gives an error or a picture, but no crash.
    for (int at = 4; at + 4 < 600; ++at)
        for (const char *number : {"\xFF\xFF\xFF\x7F", "\0\0\0\x80", "\0\0\x10\0"})
            LoadFromMemory(QByteArray(good).replace(at, 4, QByteArray(number, 4)), &error);
    // An empty channel list whose length is unchanged: OpenEXR would go on reading inside it and find random lengths.
    const int channels = good.indexOf("chlist") + 11;
    QVERIFY(!LoadFromMemory(QByteArray(good).replace(channels, 1, QByteArray(1, '\0')), &error));
    QVERIFY2(QByteArray(gflLastErrorText()).contains("length doesn't match"), gflLastErrorText());
    const QByteArray deep =
        QByteArray(good).replace(5, 1, QByteArray(1, char(good[5] | 8))); // "non-image" in the version
    QVERIFY(!LoadFromMemory(deep, &error) && error == GFL_ERROR_UNKNOWN_FORMAT);
    QVERIFY2(QByteArray(gflLastErrorText()).contains("deep pixels"), gflLastErrorText());
    const int window = good.indexOf("dataWindow") + 21; // after name, "box2i" and size: left, top, right, bottom
    const std::pair<const char *, const char *> boxes[] = {
        {"\0\0\0\0\0\0\0\0\xFF\x3F\x0F\0\xFF\x3F\x0F\0", "number of tiles"},
        {"\0\0\0\x80\0\0\0\x80\xFF\xFF\xFF\x7F\xFF\xFF\xFF\x7F", "data window"},
        {"\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\x0B\0\0\0", "data window"}};
    for (const auto &[box, why] : boxes) {
        const Case named("data window", QByteArray(box, 16).toHex());
        QVERIFY(!LoadFromMemory(QByteArray(good).replace(window, 16, QByteArray(box, 16)), &error));
        QVERIFY2(error == GFL_ERROR_FILE_READ && QByteArray(gflLastErrorText()).contains(why), gflLastErrorText());
    }
}

QTEST_GUILESS_MAIN(tst_Exr)
#include "Exr_test.moc"
