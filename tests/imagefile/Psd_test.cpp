// Tests of Photoshop files, built byte by byte.
#include "Bitmaps.h"
#include "Case.h"
#include "Table.h"

#include <QtTest>

#include <cmath>
#include <cstring>

namespace {

constexpr int kWidth = 11, kHeight = 5;
constexpr quint16 kBits = 0x52E0; // a row with 1 bit per pixel; 5 bits are left over
constexpr double kCyan = 0.8;     // the only ink in a file with a profile

enum Mode { Binary = 0, Gray = 1, Indexed = 2, Rgb = 3, Cmyk = 4, Multichannel = 7, Duotone = 8, Lab = 9 };

struct Spec {
    int mode = Rgb;
    int channels = 3;
    int bits = 8;
    bool isPacked = false;
    bool isLarge = false;
    int layers = 0; // number of layers in the file: negative if the fourth channel is opacity
    QByteArray profile;
    QByteArray blocks = {}; // additional layer information

    /// Returns a stored sample as a fraction of the full range: arbitrary, except in Lab and in CMYK with a profile.
    double Share(int x, int y, int c) const
    {
        const double *lab = kLabColors[x % kLabCount].lab;
        if (mode == Lab)
            return c == 0 ? lab[0] / 100 : (lab[c] + 128) / 255;
        if (mode == Cmyk && !profile.isEmpty())
            return c == 0 ? 1.0 - kCyan : 1.0;
        return ((x * 31 + y * 17 + c * 57) % 101) / 100.0;
    }
};

QByteArray Sample(const Spec &spec, int x, int y, int c)
{
    if (spec.bits == 32) {
        const float value = float(spec.Share(x, y, c));
        quint32 bits;
        std::memcpy(&bits, &value, sizeof bits);
        return BigEndian(bits, 4);
    }
    return BigEndian(quint64(std::lround(spec.Share(x, y, c) * ((1 << spec.bits) - 1))), spec.bits / 8);
}

QByteArray Row(const Spec &spec, int y, int c)
{
    if (spec.bits == 1)
        return BigEndian(kBits, 2);
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
        resources = "8BIM" + BigEndian(0x040F0000, 4) + BigEndian(quint64(spec.profile.size()), 4) + spec.profile
            + QByteArray(spec.profile.size() % 2, '\0');
    if (spec.mode == Indexed)
        for (int i = 0; i < 768; ++i) // red falls, green rises, blue is 7
            palette.append(char(i < 256 ? 255 - i : i < 512 ? i : 7));
    const QByteArray layers = !spec.blocks.isEmpty() ? BigEndian(0, length + 4) + spec.blocks // no layers, no mask
        : spec.layers == 0                           ? QByteArray()
                                                     : BigEndian(2, length) + BigEndian(quint64(spec.layers), 2);
    QByteArray file = "8BPS" + BigEndian(spec.isLarge ? 2 : 1, 2) + BigEndian(0, 6)
        + BigEndian(quint64(spec.channels), 2) + BigEndian(kHeight, 4) + BigEndian(kWidth, 4)
        + BigEndian(quint64(spec.bits), 2) + BigEndian(quint64(spec.mode), 2) + BigEndian(quint64(palette.size()), 4)
        + palette + BigEndian(quint64(resources.size()), 4) + resources + BigEndian(quint64(layers.size()), length)
        + layers + BigEndian(spec.isPacked ? 1 : 0, 2);
    QByteArray sizes, pixels;
    for (int c = 0; c < spec.channels; ++c)
        for (int y = 0; y < kHeight; ++y) {
            QByteArray row = Row(spec, y, c);
            if (spec.isPacked) // if the first byte repeats: a no-op byte, a run of two, and the rest
                row = row[0] == row[1] ? QByteArray("\x80\xFF", 2) + row[0] + char(row.size() - 3) + row.mid(2)
                                       : QByteArray(1, char(row.size() - 1)) + row;
            sizes += BigEndian(quint64(row.size()), spec.isLarge ? 4 : 2);
            pixels += row;
        }
    return file + (spec.isPacked ? sizes : QByteArray()) + pixels;
}

/// Returns whether the colors contain at least the white that blending at this opacity adds.
bool IsBlended(const Spec &spec, int x, int y)
{
    const double levels = spec.bits == 32 ? 1e6 : (1 << spec.bits) - 1;
    const auto level = [&](int c) { return std::lround(spec.Share(x, y, c) * levels); };
    return std::min({level(0), level(1), level(2)}) + level(3) >= std::lround(levels);
}

/// Returns the expected value of channel @p c of a pixel, as a fraction of the full range.
double Expected(const Spec &spec, int x, int y, int c)
{
    const double share = spec.Share(x, y, c);
    switch (spec.mode) {
    case Binary:
        return (kBits >> (15 - x) & 1) != 0 ? 0.0 : 1.0;
    case Indexed: {
        const int index = int(std::lround(spec.Share(x, y, 0) * 255));
        return (c == 0 ? 255 - index : c == 1 ? index : 7) / 255.0;
    }
    case Gray:
    case Duotone:
        return spec.Share(x, y, c == 3 ? 1 : 0);
    case Lab:
        return kLabColors[x % kLabCount].rgb[c];
    case Cmyk: // stored inverted
        if (!spec.profile.isEmpty())
            return GrayOfCyan(kCyan);
        return c == 3 ? spec.Share(x, y, 4) : share * spec.Share(x, y, 3);
    default:
        break;
    }
    if (c == 3 || spec.layers >= 0 || spec.Share(x, y, 3) <= 0.0 || !IsBlended(spec, x, y))
        return share;
    const double whiteTakenOut = 1.0 - (1.0 - share) / spec.Share(x, y, 3);
    return spec.bits == 32 ? whiteTakenOut : std::min(1.0, std::max(0.0, whiteTakenOut));
}

} // namespace

class tst_Psd : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void reads();
    void writes();
    void mergedPicture();
    void damaged();

private:
    void Read(const Spec &spec, int type);
};

void tst_Psd::reads()
{
    for (int i = 0; i < 12; ++i) {
        const int bits = 8 << i / 4, mode = i % 2 ? Rgb : Gray;
        Read({mode, i % 2 ? 3 : 1, bits, i % 4 > 1, bits == 16, 0, {}}, i % 2 ? GFL_RGB : GFL_GREY);
    }
    Read({Binary, 1, 1, false, false, 0, {}}, GFL_RGB);
    Read({Indexed, 1, 8, false, false, 0, {}}, GFL_RGB);
    Read({Duotone, 1, 8, false, false, 0, {}}, GFL_GREY);
    Read({Cmyk, 4, 8, false, false, 0, {}}, GFL_RGB);
    Read({Cmyk, 4, 8, false, false, 0, InkProfile()}, GFL_RGB);
    Read({Lab, 3, 8, false, false, 0, {}}, GFL_RGB);
    Read({Lab, 3, 16, false, false, 0, {}}, GFL_RGB);
    Read({Cmyk, 5, 16, true, true, 0, {}}, GFL_RGB); // a selection
    Read({Gray, 2, 16, false, false, 0, {}}, GFL_GREY);
    Read({Rgb, 4, 16, false, false, -1, {}}, GFL_RGBA);                             // opacity of layers
    Read({Rgb, 6, 32, false, true, -3, {}}, GFL_RGBA);                              // and selections
    Read({Rgb, 5, 8, true, false, 2, {}}, GFL_RGB);                                 // selections only
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_PSD_BLOCKS))) { // name, version, opacity, bytes
        const Case named(row[0]);
        const bool hasOpacity = row[2] == QLatin1String("opacity");
        const QByteArray blocks = QByteArray::fromHex(row[3].toLatin1());
        Read({Rgb, 4, 16, true, row[1] == QLatin1String("PSB"), hasOpacity ? -1 : 0, {}, blocks},
             hasOpacity ? GFL_RGBA : GFL_RGB);
    }
}

void tst_Psd::Read(const Spec &spec, int type)
{
    const QByteArray model = spec.mode == Cmyk ? " CMYK" : spec.mode == Lab ? " LAB" : "";
    const int models[] = {GFL_CM_GREY, GFL_CM_GREY, GFL_CM_PALETTE, GFL_CM_RGB, GFL_CM_CMYK, -1,
                          -1,          -1,          GFL_CM_GREY,    GFL_CM_LAB};
    const QByteArray info =
        InfoText("psd", (spec.isLarge ? "PSB" : "PSD") + model, {kWidth, kHeight},
                 spec.mode == Indexed ? 3 : spec.channels, std::max(8, spec.bits), models[spec.mode]);
    const double levels = spec.bits < 16 ? 255 : spec.bits == 16 ? 65535 : 1e6;
    // Removing white magnifies the rounding errors of both stored numbers by up to a factor of 100.
    const double tolerance = spec.mode == Lab ? (spec.bits == 8 ? 0.02 : 0.004)
        : !spec.profile.isEmpty()             ? 0.01
                                              : 1.51 / levels * (spec.layers < 0 ? 100 : 1);
    const auto expected = [&](int x, int y, int c) { return Expected(spec, x, y, c); };
    const Case named("mode", spec.mode, spec.bits, "bits");
    QCOMPARE(BadRead(Encode(spec), info, type, expected, tolerance), QString());
}

/// Compares whole files with what the format's description specifies.
void tst_Psd::writes()
{
    const BitmapPtr bitmap = NewBitmap(4, 1, GFL_GREY, 16);
    bitmap->Xdpi = 300;
    bitmap->Ydpi = 150;
    const quint16 samples[] = {0x0101, 0x0101, 0x0101, 0x0203};
    std::copy(std::begin(samples), std::end(samples), reinterpret_cast<quint16 *>(bitmap->Data));
    // Gray without color data; the resolution resource; no layers.
    const QByteArray head = "384250530001000000000000000100000001000000040010000100000000"
                            "0000001C3842494D03ED000000000010012C000000010001009600000001000100000000",
                     bytes = head + "00000101010101010203", packed = head + "00010005FB01010203";
    QCOMPARE(SavedBytes(*bitmap, SaveParams("psd", 0)).toHex().toUpper(), bytes);
    QCOMPARE(SavedBytes(*bitmap, SaveParams("psd", 1)).toHex().toUpper(), packed);
}

/// Pictures with alpha are written as a layer, and blended with white for other programs. Reading either gives the same
/// picture except for rounding; the blend is used if the opacity of the layer as a whole is below 100 %.
void tst_Psd::mergedPicture()
{
    for (const int bits : {8, 16, 32})
        for (const int compression : {0, 1}) {
            const Case named(bits, "bits, compression", compression);
            const BitmapPtr bitmap = RandomBitmap(31, 17, GFL_RGBA, bits);
            QByteArray file = SavedBytes(*bitmap, SaveParams("psd", compression));
            const int opacity = file.indexOf("8BIMnorm\xFF") + 8;
            const BitmapPtr exact = LoadFromMemory(file);
            QByteArray renamed = file; // 8 bytes more in the layer's name, and in the lengths of the sections around it
            const int section = bits == 8 ? opacity - 60 : opacity - 76; // deeper samples have a block of their own
            for (const int at : {section, opacity - 56, opacity + 4})
                renamed.replace(at, 4, BigEndian(qFromBigEndian<quint32>(renamed.constData() + at) + 8, 4));
            renamed[opacity + 16] = char(renamed[opacity + 16] + 8);
            const BitmapPtr renamedPicture = LoadFromMemory(renamed.insert(opacity + 17, "abcdefgh"));
            QVERIFY(renamedPicture && Difference(*renamedPicture, *bitmap).isEmpty());
            const BitmapPtr merged = LoadFromMemory(QByteArray(file).replace(opacity, 1, "\xFE"));
            // Upper, left, lower, right side; signature, mode, clipping, hidden; bytes of mask and ranges.
            for (const int at : {-47, -43, -39, -35, -8, -1, 1, 2, 11, 15}) {
                const Case namedInside("changed at", at);
                QByteArray changed = file;
                changed[opacity + at] = char(changed[opacity + at] ^ 2);
                const BitmapPtr got = LoadFromMemory(changed);
                QVERIFY(got && Difference(*got, *merged).isEmpty() && !Difference(*got, *exact).isEmpty());
            }
            QVERIFY(exact && Difference(*exact, *bitmap).isEmpty() && merged && merged->Type == GFL_RGBA);
            const auto expected = [&](int x, int y, int c) { // pixels of low opacity aren't compared
                return SampleAt(*bitmap, x, y, 3) < 0.1 ? SampleAt(*merged, x, y, c) : SampleAt(*bitmap, x, y, c);
            };
            QCOMPARE(Difference(*merged, expected, bits == 8 ? 0.03 : 0.0003), QString());
        }
}

void tst_Psd::damaged()
{
    // PSB from 30,001 pixels per side on, and for rows that may need more than 65,535 bytes after packing (one more for
    // every 128 begun); no file above 300,000 pixels.
    const struct {
        int width, height, bits, compression, version;
    } rows[] = {{30000, 1, 8, 1, 1},  {30001, 1, 8, 1, 2},  {1, 30000, 8, 1, 1},  {1, 30001, 8, 1, 2},
                {16256, 1, 32, 1, 1}, {16257, 1, 32, 1, 2}, {16257, 1, 32, 0, 1}, {300000, 1, 8, 1, 2},
                {1, 300000, 8, 0, 2}, {300001, 1, 8, 1, 0}, {1, 300001, 8, 1, 0}};
    for (const auto &row : rows) {
        const Case named(row.width, row.height, row.bits, "bits, compression", row.compression);
        const BitmapPtr bitmap = SmoothBitmap(row.width, row.height, GFL_GREY, row.bits);
        const QByteArray file = SavedBytes(*bitmap, SaveParams("psd", row.compression));
        QCOMPARE(file.isEmpty() ? 0 : int(file[5]), row.version);
    }
    QCOMPARE(BadFault("psd", Encode({Rgb, 3, 8, true, false, 0, {}})), QString());
    for (bool isPacked : {false, true}) {
        const Case named("packed", isPacked);
        const QByteArray file = Encode({Rgb, 4, 16, isPacked, isPacked, -1, QByteArray(33, 'p')});
        QCOMPARE(BadCut(file, file.size()), QString());
    }
}

QTEST_GUILESS_MAIN(tst_Psd)
#include "Psd_test.moc"
