// Tests of OpenEXR files, with the OpenEXR library as the reference.
#include "Bitmaps.h"
#include "Case.h"
#include "Files.h"
#include "MetadataFiles.h"
#include "Table.h"

#include <QtTest>

#include <ImfChannelList.h>
#include <ImfFloatAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>
#include <ImfTiledOutputFile.h>

#include <cmath>

namespace {

/// Returns the value that WriteForeign stores at a position of the data window. It is exact in half precision.
float ValueAt(int x, int y, int c)
{
    return static_cast<float>(x + 8 * y + 64 * c) / 256.0f;
}

enum Kind { ScanLines, Tiles, LuminanceChroma, Parts };

/// Writes a file with the given channels of half-precision samples in the data window; alpha, if any, is 0.5.
void WriteForeign(const std::string &path, Kind kind, const Imath::Box2i &display, const Imath::Box2i &data,
                  const QByteArray &channels = "R G B A", float dpi = 0.0f)
{
    const int width = data.max.x - data.min.x + 1, height = data.max.y - data.min.y + 1;
    Imf::Header header(display, data);
    Imf::addXDensity(header, dpi);
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
    for (const QByteArray &name : channels.split(' ')) {
        const int c = std::max(QByteArray("RGBA").indexOf(name.back()), 0);
        header.channels().insert(name.constData(), Imf::Channel(Imf::HALF));
        buffer.insert(
            name.constData(),
            Imf::Slice::Make(Imf::HALF, reinterpret_cast<half *>(pixels.data()) + c, data, sizeof(Imf::Rgba)));
    }
    if (kind == Tiles) {
        header.setTileDescription(Imf::TileDescription(5, 3, Imf::MIPMAP_LEVELS));
        Imf::TiledOutputFile file(path.c_str(), header);
        file.setFrameBuffer(buffer);
        for (int level = 0; level < file.numLevels(); ++level)
            file.writeTiles(0, file.numXTiles(level) - 1, 0, file.numYTiles(level) - 1, level);
        return;
    }
    if (kind == Parts) { // the second one is empty
        header.setName("first");
        header.setType(Imf::SCANLINEIMAGE);
        Imf::Header second = header;
        second.setName("second");
        const Imf::Header headers[] = {header, second};
        Imf::MultiPartOutputFile file(path.c_str(), headers, 2);
        Imf::OutputPart part(file, 0);
        part.setFrameBuffer(buffer);
        part.writePixels(height);
        return;
    }
    header.lineOrder() = Imf::DECREASING_Y;
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(buffer);
    file.writePixels(height);
}

/// Returns "NAME=VALUE; " for each optional attribute, sorted by name.
QString AttributesOf(const Imf::Header &header)
{
    QString text;
    for (auto at = header.begin(); at != header.end(); ++at) {
        const QString name = QLatin1String(at.name()) + QLatin1Char('=');
        if (const auto *number = dynamic_cast<const Imf::FloatAttribute *>(&at.attribute()))
            text += name + QString::asprintf("%g; ", double(number->value()));
        else if (const auto *words = dynamic_cast<const Imf::StringAttribute *>(&at.attribute()))
            text += name + QString::fromStdString(words->value() + "; ");
        else if (const auto *colors = dynamic_cast<const Imf::ChromaticitiesAttribute *>(&at.attribute())) {
            const auto &[red, green, blue, white] = colors->value();
            text += name
                + QString::asprintf("%g,%g %g,%g %g,%g %g,%g; ", double(red.x), double(red.y), double(green.x),
                                    double(green.y), double(blue.x), double(blue.y), double(white.x), double(white.y));
        }
    }
    return text.remove(QLatin1String("pixelAspectRatio=1; ")).remove(QLatin1String("screenWindowWidth=1; "));
}

} // namespace

class tst_Exr : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writeThenRead();
    void attributes();
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
        // 8-bit samples are stored as half, deeper ones as float. The methods above 5 (B44, DWA) store all samples as
        // half. The methods from 5 on are lossy and have larger errors.
        const double rounding = bits == 8 ? 0x1p-12 : bits == 16 ? 0x1p-25 : 0.0;
        const double tolerance = stored > 5 ? 0.01 : stored == 5 ? std::max(rounding, 0x1p-16) : rounding;
        const BitmapPtr bitmap = stored > 5 ? SmoothBitmap(67, 39, type, bits) : RandomBitmap(67, 39, type, bits);
        bitmap->Xdpi = 300;
        QVERIFY2(Save(path, *bitmap, SaveParams("exr", compression)) == GFL_NO_ERROR, gflLastErrorText());
        const Imf::InputFile witness(path.toStdString().c_str());
        QCOMPARE(int(witness.header().compression()), stored);
        QVERIFY(witness.isComplete()); // has its table of chunks
        QCOMPARE(int(witness.header().channels().begin().channel().type),
                 int(bits == 8 || stored > 5 ? Imf::HALF : Imf::FLOAT));
        const BitmapPtr got = Load(path);
        QVERIFY2(got && got->Type == type && got->BitsPerComponent == 32 && got->Xdpi == 300, gflLastErrorText());
        // With alpha, colors are stored multiplied by it. The error then doubles, because both the product and alpha
        // are rounded; two float operations add their own errors.
        const double limit = type == GFL_RGBA ? 2 * tolerance + 0x1p-22 : tolerance;
        const auto multiplied = [&](const GFL_BITMAP &b, int x, int y, int c) {
            return SampleAt(b, x, y, c) * (type == GFL_RGBA ? SampleAt(*bitmap, x, y, 3) : 1.0);
        };
        for (int y = 0; y < 39; ++y)
            for (int x = 0; x < 67; ++x)
                for (int c = 0; c < ChannelsOf(type); ++c)
                    QVERIFY(std::abs(multiplied(*got, x, y, c) - multiplied(*bitmap, x, y, c)) <= limit);
    }
    const float given[] = {1e9f, -1e9f, 65504, 0.1f}, halves[] = {65504, -65504, 65504, 0.0999755859375f}; // IEEE 754
    const BitmapPtr bright = NewBitmap(4, 1, GFL_GREY, 32);
    std::copy(std::begin(given), std::end(given), reinterpret_cast<float *>(bright->Data));
    GFL_SAVE_PARAMS params = SaveParams("exr");
    params.Flags |= GFL_SAVE_HALF_FLOATS;
    QCOMPARE(Save(path, *bright, params), int(GFL_NO_ERROR));
    const BitmapPtr got = Load(path);
    QVERIFY(got && PackedPixels(*got) == QByteArray(reinterpret_cast<const char *>(halves), sizeof halves));
}

void tst_Exr::attributes()
{
    const QByteArray jpeg = SavedBytes(*SmoothBitmap(8, 6, GFL_RGB, 8), SaveParams("jpeg"));
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_EXR_ATTRIBUTES))) {
        const Case named(row[0]);
        const auto image = OpenImage(jpeg);
        for (const QString &field : row[0].split(QLatin1Char(' ')))
            image->exifData()["Exif." + field.section(QLatin1Char('='), 0, 0).toStdString()].setValue(
                field.section(QLatin1Char('='), 1).replace(QLatin1Char('_'), QLatin1Char(' ')).toStdString());
        const BitmapPtr bitmap = LoadFromMemory(WrittenBy(*image), nullptr, LoadParams(GFL_LOAD_METADATA));
        gflClearWarningText();
        QCOMPARE(Save(m_folder("a.exr"), *bitmap, SaveParams("exr")), int(GFL_NO_ERROR));
        QCOMPARE(QString::fromUtf8(gflLastWarningText()), QLatin1String("metadata is left out: ") + row[2]);
        QCOMPARE(AttributesOf(Imf::InputFile(m_folder("a.exr").toStdString().c_str()).header()).trimmed(), row[1]);
    }
}

void tst_Exr::foreignFiles()
{
    const QString path = m_folder("a.exr");
    const QByteArrayList kinds = {"lines", "tiles", "chroma", "parts"};
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_EXR_FILES))) {
        const Case named(row[0]);
        QVERIFY(kinds.contains(row[1].toLatin1()));
        const auto kind = Kind(kinds.indexOf(row[1].toLatin1()));
        const QStringList place = row[2].split(QLatin1Char(' '));
        const QRect window(place[0].toInt(), place[1].toInt(), place[2].toInt(), place[3].toInt());
        const QByteArray channels = row[3].toLatin1();
        const int model = row[5].toInt();
        const float density = row[6].toFloat();
        WriteForeign(path.toStdString(), kind, {{-3, 2}, {12, 13}},
                     {{window.left(), window.top()}, {window.right(), window.bottom()}}, channels, density);
        const int dpi = density > 0 && density < 65535 ? qRound(density) : 0;
        const bool isChroma = kind == LuminanceChroma, isGray = channels.contains('Y') && !isChroma,
                   hasAlpha = channels.contains('A');
        const auto expected = [&](int x, int y, int c) {
            const double color = isChroma ? 0.25 * (c + 1) : double(ValueAt(x - 3, y + 2, isGray ? 0 : c));
            const bool isThere = isChroma || isGray || channels.contains("RGBA"[c]);
            return !window.contains(x - 3, y + 2) || !isThere ? 0.0 : c == 3 ? 0.5 : hasAlpha ? color / 0.5 : color;
        };
        const QByteArray info = InfoText("exr", "OpenEXR", {16, 12}, row[4].toInt(), 32, model, {dpi, dpi});
        const int type = hasAlpha ? GFL_RGBA : model == GFL_CM_GREY ? GFL_GREY : GFL_RGB;
        QCOMPARE(BadRead(ReadFile(path), info, type, expected, isChroma ? 0.002 : 0.0), QString());
    }
}

void tst_Exr::damagedFiles()
{
    const QString path = m_folder("a.exr");
    WriteForeign(path.toStdString(), Tiles, {{0, 0}, {15, 11}}, {{0, 0}, {15, 11}});
    const QByteArray good = ReadFile(path);
    QCOMPARE(BadCut(good, good.size() / 2), QString()); // the reduced versions at the end are not needed
    QCOMPARE(BadFault("exr", good), QString());
}

QTEST_GUILESS_MAIN(tst_Exr)
#include "Exr_test.moc"
