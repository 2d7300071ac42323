// Tests of PNG, with libpng as the reference: every kind of file it writes, profiles that it rejects, truncated files.
#include "Bitmaps.h"
#include "Case.h"

#include <QtTest>

#include <png.h>

namespace {

constexpr int kWidth = 13, kHeight = 9;
constexpr int kKeySample = 1; // the stored value that a tRNS chunk makes transparent

struct Spec {
    int color = PNG_COLOR_TYPE_RGB;
    int bits = 8;
    bool interlaced = false;
    bool transparency = false; // a tRNS chunk
    QByteArray badProfile;

    int Samples() const
    {
        const bool isColor = color != PNG_COLOR_TYPE_PALETTE && (color & PNG_COLOR_MASK_COLOR) != 0;
        return (isColor ? 3 : 1) + ((color & PNG_COLOR_MASK_ALPHA) != 0 ? 1 : 0);
    }
    int Greatest() const { return (1 << bits) - 1; }
    /// Returns an arbitrary sample for the position; sometimes all samples of a pixel are the key.
    int Sample(int x, int y, int c) const
    {
        return (x + y) % 5 == 0 ? kKeySample : (x * 7919 + y * 104729 + c * 3571) % (Greatest() + 1);
    }
};

QByteArray Encode(const Spec &spec)
{
    QByteArray file;
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp p, png_bytep data, size_t size) {
            static_cast<QByteArray *>(png_get_io_ptr(p))->append(reinterpret_cast<char *>(data), int(size));
        },
        nullptr);
    png_set_IHDR(png, info, kWidth, kHeight, spec.bits, spec.color,
                 spec.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    png_color palette[256];
    png_byte opacity[256];
    for (int i = 0; i < 256; ++i) {
        palette[i] = {png_byte(255 - i), png_byte(i / 2), png_byte(i)};
        opacity[i] = i == kKeySample ? 0 : 255;
    }
    if (spec.color == PNG_COLOR_TYPE_PALETTE)
        png_set_PLTE(png, info, palette, spec.Greatest() + 1);
    const png_color_16 key = {0, kKeySample, kKeySample, kKeySample, kKeySample};
    if (spec.transparency)
        png_set_tRNS(png, info, opacity, spec.Greatest() + 1, &key);
    png_write_info(png, info);
    if (!spec.badProfile.isEmpty())
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("iCCP"),
                        reinterpret_cast<png_const_bytep>(spec.badProfile.constData()), size_t(spec.badProfile.size()));
    png_set_packing(png);
    const int passes = spec.interlaced ? png_set_interlace_handling(png) : 1;
    for (int y = 0; y < kHeight * passes; ++y) {
        QByteArray row;
        for (int i = 0; i < kWidth * spec.Samples(); ++i) {
            const int value = spec.Sample(i / spec.Samples(), y % kHeight, i % spec.Samples());
            if (spec.bits == 16)
                row.append(char(value >> 8)); // as stored: big-endian
            row.append(char(value));
        }
        png_write_row(png, reinterpret_cast<png_const_bytep>(row.constData()));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

/// Returns channel @p c (3 for alpha) of a pixel as a fraction of the full range, as the format defines it.
double Expected(const Spec &spec, int x, int y, int c)
{
    const bool isColor = (spec.color & PNG_COLOR_MASK_COLOR) != 0;
    const int sample = spec.Sample(x, y, isColor && spec.color != PNG_COLOR_TYPE_PALETTE ? c % 3 : 0);
    if (c == 3 && (spec.color & PNG_COLOR_MASK_ALPHA) != 0)
        return spec.Sample(x, y, spec.Samples() - 1) / double(spec.Greatest());
    bool isKey = true;
    for (int s = 0; s < spec.Samples(); ++s)
        isKey = isKey && spec.Sample(x, y, s) == kKeySample;
    if (c == 3)
        return spec.transparency && isKey ? 0.0 : 1.0;
    if (spec.color == PNG_COLOR_TYPE_PALETTE)
        return (c == 0 ? 255 - sample : c == 1 ? sample / 2 : sample) / 255.0;
    return sample / double(spec.Greatest());
}

} // namespace

class tst_Png : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatLibpngWrites();
    void badProfileIsIgnored();
    void damaged();

private:
    void Read(const Spec &spec, int type);
};

void tst_Png::readsWhatLibpngWrites()
{
    const struct {
        int color;
        QVector<int> depths;
        bool transparency;
        int type;
    } rows[] = {{PNG_COLOR_TYPE_GRAY, {1}, false, GFL_RGB},
                {PNG_COLOR_TYPE_GRAY, {2, 4, 8, 16}, false, GFL_GREY},
                {PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}, false, GFL_RGB},
                {PNG_COLOR_TYPE_PALETTE, {8}, true, GFL_RGBA},
                {PNG_COLOR_TYPE_GRAY, {4}, true, GFL_RGBA},
                {PNG_COLOR_TYPE_RGB, {8, 16}, false, GFL_RGB},
                {PNG_COLOR_TYPE_RGB, {8, 16}, true, GFL_RGBA},
                {PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}, false, GFL_RGBA},
                {PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}, false, GFL_RGBA}};
    for (const auto &row : rows)
        for (int i = 0; i < 2 * row.depths.size(); ++i)
            Read({row.color, row.depths[i / 2], i % 2 != 0, row.transparency, {}}, row.type);
}

void tst_Png::Read(const Spec &spec, int type)
{
    const Case named("color", spec.color, spec.bits, "bits, interlaced", spec.interlaced);
    const QByteArray file = Encode(spec);
    const bool isPalette = spec.color == PNG_COLOR_TYPE_PALETTE, isColor = (spec.color & PNG_COLOR_MASK_COLOR) != 0;
    const QByteArray info =
        InfoText("png", spec.interlaced ? "PNG interlaced" : "PNG", {kWidth, kHeight},
                 (isPalette ? 3 : spec.Samples()) + (spec.transparency ? 1 : 0), spec.bits == 16 ? 16 : 8,
                 isPalette     ? GFL_CM_PALETTE
                     : isColor ? GFL_CM_RGB
                               : GFL_CM_GREY);
    const auto expected = [&](int x, int y, int c) { return Expected(spec, x, y, c); };
    QCOMPARE(BadRead(file, info, type, expected, 1e-9), QString());
    const BitmapPtr read = LoadFromMemory(file, nullptr, LoadParams()); // read through a row buffer, not in place
    QVERIFY2(read && read->Type == type && read->BitsPerComponent == 8, gflLastErrorText());
    QCOMPARE(Difference(*read, expected, 0.51 / 255), QString());
}

void tst_Png::badProfileIsIgnored()
{
    for (const QByteArray &chunk : {QByteArray("junk"), QByteArray("name\0\0not zlib", 14), QByteArray("n\0\0", 3),
                                    "n" + QByteArray(2, '\0') + qCompress(QByteArray(80 << 20, '\0')).mid(4)}) {
        const Case named(chunk);
        const BitmapPtr read = LoadFromMemory(Encode({PNG_COLOR_TYPE_RGB, 8, false, false, chunk}), nullptr,
                                              LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(read, gflLastErrorText());
        QVERIFY(!gflBitmapHasICCProfile(read.get()));
    }
}

void tst_Png::damaged()
{
    for (bool interlaced : {false, true}) {
        const Case named("interlaced", interlaced);
        const QByteArray file = Encode({PNG_COLOR_TYPE_RGB, 16, interlaced, false, {}});
        const int end = file.size() - 12; // complete even without the end chunk
        QCOMPARE(BadFault("png", file), QString());
        QCOMPARE(BadCut(file, end), QString());
        for (int at = 8; at < end; ++at) // checksums detect any changed bit
            QVERIFY2(!LoadFromMemory(QByteArray(file).replace(at, 1, QByteArray(1, char(file[at] ^ 4)))),
                     qPrintable(QString::number(at)));
    }
}

QTEST_GUILESS_MAIN(tst_Png)
#include "Png_test.moc"
