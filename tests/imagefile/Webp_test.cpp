// Tests of WebP, with libwebp's encoder and multiplexer as the reference.
#include "Bitmaps.h"
#include "Blocks.h"
#include "Case.h"

#include <QtTest>

#include <webp/encode.h>
#include <webp/mux.h>

namespace {

constexpr int kWidth = 13, kHeight = 9;

/// Encodes an 8-bit RGB or RGBA bitmap; @p quality -1 means lossless except for the colors of transparent pixels.
QByteArray Encode(const GFL_BITMAP &bitmap, int quality)
{
    const QByteArray pixels = PackedPixels(bitmap);
    const auto *data = reinterpret_cast<const uint8_t *>(pixels.constData());
    const bool hasAlpha = bitmap.Type == GFL_RGBA;
    const auto lossy = hasAlpha ? WebPEncodeRGBA : WebPEncodeRGB;
    const auto lossless = hasAlpha ? WebPEncodeLosslessRGBA : WebPEncodeLosslessRGB;
    const int width = bitmap.Width, height = bitmap.Height, stride = pixels.size() / height;
    uint8_t *bytes = nullptr;
    const size_t size = quality < 0 ? lossless(data, width, height, stride, &bytes)
                                    : lossy(data, width, height, stride, float(quality), &bytes);
    const QByteArray file(reinterpret_cast<char *>(bytes), int(size));
    WebPFree(bytes);
    return file;
}

WebPData Data(const QByteArray &bytes)
{
    return {reinterpret_cast<const uint8_t *>(bytes.constData()), static_cast<size_t>(bytes.size())};
}

QByteArray Assembled(WebPMux *mux)
{
    WebPData data;
    if (WebPMuxAssemble(mux, &data) != WEBP_MUX_OK)
        return QByteArray();
    const QByteArray file(reinterpret_cast<const char *>(data.bytes), static_cast<int>(data.size));
    WebPDataClear(&data);
    WebPMuxDelete(mux);
    return file;
}

QByteArray WithBlocks(const QByteArray &still, const Blocks &blocks)
{
    WebPMux *mux = WebPMuxNew();
    const WebPData image = Data(still);
    WebPMuxSetImage(mux, &image, 1);
    for (const auto &[name, bytes] : {std::pair("ICCP", blocks.icc), {"EXIF", blocks.exif}, {"XMP ", blocks.xmp}}) {
        const WebPData block = Data(bytes);
        WebPMuxSetChunk(mux, name, &block, 1);
    }
    return Assembled(mux);
}

/// Returns an animation of two frames at @p left, @p top on a canvas twice as wide and high as the frames.
QByteArray Animation(const QByteArray &first, const QByteArray &second, int left, int top)
{
    WebPMux *mux = WebPMuxNew();
    for (const QByteArray &still : {first, second}) {
        WebPMuxFrameInfo frame = {};
        frame.bitstream = Data(still);
        frame.x_offset = left;
        frame.y_offset = top;
        frame.duration = 100;
        frame.id = WEBP_CHUNK_ANMF;
        WebPMuxPushFrame(mux, &frame, 1);
    }
    const WebPMuxAnimParams repeats = {};
    WebPMuxSetAnimationParams(mux, &repeats);
    WebPMuxSetCanvasSize(mux, 2 * kWidth, 2 * kHeight);
    return Assembled(mux);
}

} // namespace

class tst_Webp : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatLibwebpWrites();
    void firstFrameOfAnimation();
    void metadata();
    void damaged();
};

void tst_Webp::readsWhatLibwebpWrites()
{
    const struct {
        const char *name;
        int type, quality;
        double tolerance;
    } rows[] = {{"lossless", GFL_RGB, -1, 0.0},
                {"lossless with alpha", GFL_RGBA, -1, 0.0},
                {"lossy", GFL_RGB, 95, 0.1},
                {"lossy with alpha", GFL_RGBA, 95, 0.1}};
    for (const auto &row : rows)
        for (const QSize size : {QSize(1, 3), QSize(kWidth, kHeight), QSize(67, 130)}) {
            const Case named(row.name, size);
            const BitmapPtr bitmap = row.quality < 0 && row.type == GFL_RGB
                ? RandomBitmap(size.width(), size.height(), row.type, 8)
                : SmoothBitmap(size.width(), size.height(), row.type, 8);
            QCOMPARE(BadRead(Encode(*bitmap, row.quality),
                             InfoText("webp", "WebP", size, ChannelsOf(row.type), 8, GFL_CM_RGB), *bitmap,
                             row.tolerance),
                     QString());
        }
}

void tst_Webp::firstFrameOfAnimation()
{
    const BitmapPtr frame = RandomBitmap(kWidth, kHeight, GFL_RGB, 8);
    const QByteArray other = Encode(*RandomBitmap(kWidth, kHeight, GFL_RGB, 8, 2), -1);
    for (const auto &[left, top] : {std::pair(0, 0), {4, 2}, {12, 8}}) {
        const Case named("first frame at", left, top);
        const QByteArray file = Animation(Encode(*frame, -1), other, left, top);
        const auto expected = [&, x0 = left, y0 = top](int x, int y, int c) {
            const bool inside = QRect(x0, y0, kWidth, kHeight).contains(x, y);
            return !inside ? 0.0 : c == 3 ? 1.0 : SampleAt(*frame, x - x0, y - y0, c);
        };
        QCOMPARE(BadRead(file, InfoText("webp", "WebP animation", {2 * kWidth, 2 * kHeight}, 4, 8, GFL_CM_RGB),
                         GFL_RGBA, expected),
                 QString());
    }
}

void tst_Webp::metadata()
{
    const QByteArray still = Encode(*SmoothBitmap(kWidth, kHeight, GFL_RGBA, 8), -1);
    for (const QByteArray &prefix : {QByteArray(), QByteArray("Exif\0\0", 6)}) {
        const Case named("EXIF with prefix", prefix);
        Blocks blocks = SomeBlocks();
        blocks.exif.prepend(prefix);
        const BitmapPtr read = LoadFromMemory(WithBlocks(still, blocks), nullptr, LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(BlocksOf(*read).Text(), SomeBlocks().Text());
    }
}

void tst_Webp::damaged()
{
    const BitmapPtr bitmap = SmoothBitmap(kWidth, kHeight, GFL_RGBA, 8);
    for (int quality : {-1, 90}) {
        const Case named("quality", quality);
        const QByteArray still = Encode(*bitmap, quality);
        QCOMPARE(BadCut(still, still.size() - 1), QString()); // the last byte may be padding
        QCOMPARE(BadFault("webp still", WithBlocks(still, SomeBlocks())), QString());
        QVERIFY(WarningOf(WithBlocks(still, SomeBlocks()).chopped(10)).contains("metadata"));
    }
    const QByteArray animation = Animation(Encode(*bitmap, -1), Encode(*bitmap, -1), 4, 2);
    QCOMPARE(BadCut(animation, animation.lastIndexOf("ANMF") - 1), QString());
    QCOMPARE(BadFault("webp", animation), QString());
}

QTEST_GUILESS_MAIN(tst_Webp)
#include "Webp_test.moc"
