// What all formats that are written have in common: pictures come back, in the nearest form that the format holds.
#include "Bitmaps.h"

#include <QtTest>

namespace {

/// A format with a compression, and what it holds.
struct Format {
    const char *name;
    int compression;
    bool holds16, holdsFloat, holdsIntegers, holdsGrey, holdsAlpha;
    double tolerance; // a share of the full range, of samples from 0 to 1
};

constexpr double kExact = 0.0;
constexpr double kRounded = 1.01 / 65535; // single precision may see a half on the other side
constexpr double kMantissa = 0.5 / 128;   // 8 bits, of which the first is set in the greatest channel

const Format kFormats[] = {
    {"tiff", 0, true, true, true, true, true, kExact},        {"tiff", 2, true, true, true, true, true, kExact},
    {"tiff", 4, true, true, true, true, true, kExact},        {"png", 0, true, false, true, true, true, kRounded},
    {"png", -1, true, false, true, true, true, kRounded},     {"png", 99, true, false, true, true, true, kRounded},
    {"psd", 0, true, true, true, true, true, kExact},         {"psd", -1, true, true, true, true, true, kExact},
    {"hdri", 0, false, true, false, false, false, kMantissa}, {"hdri", -1, false, true, false, false, false, kMantissa},
};

} // namespace

class tst_Formats : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gflEnableLZW(1); }
    void writeThenRead_data();
    void writeThenRead();
    void runs();
    void colourDepth();
};

void tst_Formats::writeThenRead_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("bits");
    for (int i = 0; i < int(std::size(kFormats)); ++i)
        for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA})
            for (int bits : {8, 16, 32})
                QTest::addRow("%s, compression %d, type %d, %d bits", kFormats[i].name, kFormats[i].compression, type,
                              bits)
                    << i << type << bits;
}

void tst_Formats::writeThenRead()
{
    QFETCH(int, format);
    QFETCH(int, type);
    QFETCH(int, bits);
    const Format &f = kFormats[format];
    const int heldBits = bits == 32 ? (f.holdsFloat ? 32 : 16) : f.holdsIntegers ? bits : 32;
    const int heldType = type == GFL_GREY ? (f.holdsGrey ? GFL_GREY : GFL_RGB) : f.holdsAlpha ? type : GFL_RGB;
    for (const QSize size : {QSize(1, 1), QSize(1, 7), QSize(3, 1), QSize(31, 17), QSize(20011, 3)}) {
        const BitmapPtr bitmap = RandomBitmap(size.width(), size.height(), type, bits);
        const QByteArray file = SavedBytes(*bitmap, SaveParams(f.name, f.compression));
        QVERIFY2(!file.isEmpty(), gflLastErrorText());
        const BitmapPtr read = LoadFromMemory(file);
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(Difference(*read, *Converted(*bitmap, heldType, heldBits),
                            heldBits == bits && f.holdsIntegers ? 0.0 : f.tolerance),
                 QString());
        // What a format holds comes back as it is.
        const BitmapPtr again = LoadFromMemory(SavedBytes(*read, SaveParams(f.name, f.compression)));
        QCOMPARE(Difference(*again, *read), QString());
    }
}

void tst_Formats::runs()
{
    // Runs of every length around the limits of packing, which random samples never have.
    constexpr int kLongest = 240;
    const int width = kLongest * (kLongest + 1) / 2;
    const BitmapPtr bitmap = NewBitmap(width, 1, GFL_RGB, 8);
    std::uint8_t *pixel = bitmap->Data;
    for (int run = 1; run <= kLongest; ++run)
        for (int i = 0; i < run; ++i, pixel += 3) {
            pixel[0] = run % 2 != 0 ? 255 : 0;
            pixel[1] = pixel[2] = 255;
        }
    for (const char *format : {"hdri", "psd"}) {
        const QByteArray file = SavedBytes(*bitmap, SaveParams(format));
        const BitmapPtr read = LoadFromMemory(file, nullptr, LoadParams());
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(Difference(*read, *bitmap), QString());
        QVERIFY(file.size() < width / 10);
    }
}

void tst_Formats::colourDepth()
{
    const QByteArray rgba("\xC8\x64\x32\x07"), rgb = rgba.left(3); // 200, 100, 50 have a luma of 124.2
    const struct {
        const char *name;
        int from;
        QByteArray pixel;
        int mode, parameters, to;
        QByteArray expected;
    } changes[] = {
        {"RGBA to grey", GFL_RGBA, rgba, GFL_DEPTH_GREY, 0, GFL_GREY, "\x7C"},
        {"RGBA to RGB", GFL_RGBA, rgba, GFL_DEPTH_RGB, 0, GFL_RGB, rgb},
        {"RGB to RGBA", GFL_RGB, rgb, GFL_DEPTH_RGBA, 0, GFL_RGBA, rgb + '\xFF'},
        {"grey to RGB", GFL_GREY, "a", GFL_DEPTH_RGB, 0, GFL_RGB, "aaa"},
        {"black", GFL_RGB, rgb, GFL_DEPTH_BLACK_AND_WHITE, 0, GFL_GREY, QByteArray(1, '\0')},
        {"just black", GFL_RGB, rgb, GFL_DEPTH_BLACK_AND_WHITE, 125, GFL_GREY, QByteArray(1, '\0')},
        {"just white", GFL_RGB, rgb, GFL_DEPTH_BLACK_AND_WHITE, 124, GFL_GREY, "\xFF"},
        {"three levels", GFL_RGBA, rgba, GFL_DEPTH_LEVELS, 3, GFL_RGBA, QByteArray("\xFF\x80\0\x07", 4)},
        {"all levels", GFL_RGB, rgb, GFL_DEPTH_LEVELS, 256, GFL_RGB, rgb},
    };
    for (const auto &row : changes) {
        const BitmapPtr bitmap = NewBitmap(5, 3, row.from, 8, 32);
        for (int y = 0; y < 3; ++y)
            std::copy_n(row.pixel.repeated(5).constData(), 5 * row.pixel.size(),
                        bitmap->Data + y * int(bitmap->BytesPerLine));
        const int error =
            gflChangeColorDepth(bitmap.get(), nullptr, std::uint16_t(row.mode), std::uint16_t(row.parameters));
        QVERIFY2(error == GFL_NO_ERROR && bitmap->Type == row.to, row.name);
        QVERIFY2(bitmap->BytesPerPixel == row.expected.size(), row.name);
        QVERIFY2(PackedPixels(*bitmap) == row.expected.repeated(15), row.name);
    }
    const BitmapPtr deep = RandomBitmap(3, 3, GFL_RGB, 16), bitmap = RandomBitmap(3, 3, GFL_RGB, 8);
    QCOMPARE(gflChangeColorDepth(deep.get(), nullptr, GFL_DEPTH_GREY, 0), int(GFL_ERROR_BAD_BITMAP));
    const QPair<int, int> refused[] = {
        {0, 0}, {6, 0}, {GFL_DEPTH_BLACK_AND_WHITE, 256}, {GFL_DEPTH_LEVELS, 1}, {GFL_DEPTH_LEVELS, 257}};
    for (const auto &[mode, parameters] : refused)
        QCOMPARE(gflChangeColorDepth(bitmap.get(), nullptr, std::uint16_t(mode), std::uint16_t(parameters)),
                 int(GFL_ERROR_BAD_PARAMETERS));
    QCOMPARE(Difference(*bitmap, *RandomBitmap(3, 3, GFL_RGB, 8)), QString());
}

QTEST_GUILESS_MAIN(tst_Formats)
#include "Formats_test.moc"
