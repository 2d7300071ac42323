// Tests of Radiance HDR, with files built byte by byte.
#include "Bitmaps.h"
#include "Case.h"

#include <QtTest>

#include <cmath>

namespace {

constexpr char kHead[] = "#?RADIANCE\n# made by hand\nFORMAT=32-bit_rle_rgbe\n";

QByteArray File(const QByteArray &lines, const QByteArray &axes, const QByteArray &pixels)
{
    return kHead + lines + "\n" + axes + "\n" + pixels;
}

/// Returns a pixel whose values are r, g, b (0 to 255) times two to the power of @p e.
QByteArray Rgbe(int r, int g, int b, int e = -8)
{
    return QByteArray(1, char(r)) + char(g) + char(b) + char(e + 136);
}

/// Returns one packed row of 9 pixels: red as a run and literal bytes, the other channels as one run each.
QByteArray PackedRow()
{
    return QByteArray("\2\2\0\x09", 4) + "\x84\xC8" + "\5\1\2\3\4\5" + "\x89\x64" + "\x89\x32" + "\x89\x80";
}

QVector<float> Values(const GFL_BITMAP &bitmap)
{
    QVector<float> values;
    for (int y = 0; y < bitmap.Height; ++y)
        for (int i = 0; i < bitmap.Width * 3; ++i)
            values.append(reinterpret_cast<const float *>(bitmap.Data + y * int(bitmap.BytesPerLine))[i]);
    return values;
}

} // namespace

class tst_Hdr : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void reads();
    void rotatedAxes();
    void damaged();
    void extremes();
};

void tst_Hdr::reads()
{
    QVector<float> packed;
    for (int red : {200, 200, 200, 200, 1, 2, 3, 4, 5})
        packed << float(red) / 256 << 100.0f / 256 << 50.0f / 256;
    const QByteArray axes = "-Y 1 +X 2", exposures = "EXPOSURE= 2\nEXPOSURE=+4.0\nEXPOSURE=junk\nEXPOSURE=-1\n";
    const QByteArray runs = Rgbe(128, 128, 128) + QByteArray("\1\1\1\3", 4) + QByteArray("\1\1\1\1", 4);
    // Pixels that resemble the mark of a packed row: 2, 2 and a width below 32,768.
    QByteArray marks;
    QVector<float> marked, narrow;
    for (const QByteArray &pixel : {Rgbe(2, 3, 4), Rgbe(3, 2, 4), Rgbe(2, 2, 128), Rgbe(2, 2, 255)}) {
        marks += pixel.repeated(8);
        for (int i = 0; i < 8; ++i)
            marked << float(pixel[0]) / 256 << float(pixel[1]) / 256 << float(quint8(pixel[2])) / 256;
    }
    for (int i = 0; i < 7; ++i)
        narrow << float(std::ldexp(2.0, 7 - 136)) << float(std::ldexp(2.0, 7 - 136)) << 0.0f;
    const struct {
        const char *name;
        QByteArray file;
        QVector<float> expected;
    } files[] = {
        {"unpacked",
         File("", axes, Rgbe(128, 64, 0) + Rgbe(255, 1, 2, -7)),
         {0.5f, 0.25f, 0.0f, 1.9921875f, 0.0078125f, 0.015625f}},
        {"black with mantissas",
         File("", axes, Rgbe(9, 9, 9, -136) + Rgbe(0, 0, 1, -127)),
         {0, 0, 0, 0, 0, float(std::ldexp(1.0, -127))}},
        {"exposures", File(exposures, axes, Rgbe(128, 64, 0) + Rgbe(8, 8, 8, 0)), {0.0625f, 0.03125f, 0, 1, 1, 1}},
        {"old runs", File("", "-Y 1 +X 260", runs), QVector<float>(3 * 260, 0.5f)},
        {"resembles a packed row", File("", "-Y 4 +X 8", marks), marked},
        {"too narrow to be packed", File("", "-Y 1 +X 7", QByteArray("\2\2\0\7", 4).repeated(7)), narrow},
        {"packed", File("", "-Y 1 +X 9", PackedRow()), packed}};
    for (const auto &file : files) {
        const Case named(file.name);
        GFL_FILE_INFORMATION info;
        const BitmapPtr read = LoadFromMemory(file.file, nullptr, LoadParams(GFL_LOAD_ORIGINAL_DEPTH), &info);
        QVERIFY2(read && read->BitsPerComponent == 32, gflLastErrorText());
        QCOMPARE(Values(*read), file.expected);
        QCOMPARE(InfoText(info), InfoText("hdri", "Radiance HDR", {read->Width, read->Height}, 3, 32, GFL_CM_RGB));
    }
}

void tst_Hdr::rotatedAxes()
{
    const struct {
        const char *axes, *stored; // of the picture with the rows "abc" and "def"
    } turns[] = {{"-Y 2 +X 3", "abcdef"}, {"-Y 2 -X 3", "cbafed"}, {"+Y 2 +X 3", "defabc"}, {"+Y 2 -X 3", "fedcba"},
                 {"+X 3 -Y 2", "adbecf"}, {"+X 3 +Y 2", "daebfc"}, {"-X 3 -Y 2", "cfbead"}, {"-X 3 +Y 2", "fcebda"}};
    for (const auto &turn : turns) {
        QByteArray pixels;
        for (char c : QByteArray(turn.stored))
            pixels += Rgbe(c, 200, 0, 0);
        const BitmapPtr read = LoadFromMemory(File("", turn.axes, pixels));
        QVERIFY2(read && read->Width == 3 && read->Height == 2, turn.axes);
        QByteArray letters;
        for (int i = 0; i < 18; i += 3)
            letters.append(char(Values(*read)[i]));
        QVERIFY2(letters == "abcdef", turn.axes);
    }
}

void tst_Hdr::damaged()
{
    QCOMPARE(BadFault("hdr", kHead), QString());
    const QByteArray packed = File("", "-Y 2 +X 9", PackedRow() + PackedRow());
    QCOMPARE(BadCut(packed, packed.size()), QString());
    const QByteArray plain = File("", "-Y 2 +X 2", Rgbe(1, 2, 3).repeated(4));
    QCOMPARE(BadCut(plain, plain.size()), QString());
}

void tst_Hdr::extremes()
{
    const float infinity = std::numeric_limits<float>::infinity(), huge = std::numeric_limits<float>::max();
    const float given[] = {-1, 0.5f, std::nanf(""), infinity, 1, huge, 1e-39f, 0, 0, 0.999f, 0.999f, 0.01f};
    // The largest mantissa is 255; 0.999 rounds to 1 rather than 255/256, and 0.01 is then stored in steps of 1/128.
    const float most = 255.0f * float(std::ldexp(1.0, 119));
    const QVector<float> expected = {0, 0.5f, 0, most, 0, most, 0, 0, 0, 1.0f, 1.0f, 1.0f / 128};
    const BitmapPtr bitmap = NewBitmap(4, 1, GFL_RGB, 32);
    std::copy(std::begin(given), std::end(given), reinterpret_cast<float *>(bitmap->Data));
    const BitmapPtr read = LoadFromMemory(SavedBytes(*bitmap, SaveParams("hdri")));
    QVERIFY2(read, gflLastErrorText());
    QCOMPARE(Values(*read), expected);
    for (const int width : {7, 8, 32767, 32768}) { // rows of 8 to 32,767 pixels are packed, and begin with 2, 2, width
        const QByteArray file = SavedBytes(*SmoothBitmap(width, 1, GFL_RGB, 8), SaveParams("hdri"));
        const bool isPacked = file.mid(file.indexOf("+X") + 3).contains("\n\2\2" + BigEndian(quint64(width), 2));
        QVERIFY2(isPacked == (width >= 8 && width <= 32767), QByteArray::number(width));
    }
}

QTEST_GUILESS_MAIN(tst_Hdr)
#include "Hdr_test.moc"
