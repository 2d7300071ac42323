#include "KImage.h"

#include "TestImages.h"

#include <QtTest>

#include <cmath>
#include <functional>

#include <sys/mman.h>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

/// A rectangle of one image and its place in another.
struct Placement {
    int sourceWidth, sourceHeight, x, y;
    int width, height;
    int targetWidth, targetHeight, targetX, targetY;
    int sourcePaddingBytes, targetPaddingBytes;
};

constexpr Placement kPlacements[] = {
    {1, 1, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0},
    {7, 5, 0, 0, 7, 5, 7, 5, 0, 0, 8, 4},
    {31, 17, 5, 3, 13, 11, 29, 23, 7, 12, 12, 16},
    {523, 2, 1, 0, 521, 2, 521, 3, 0, 1, 0, 4}, // a prime width, longer than a run of the conversion
    {19, 3, 2, 1, 17, 2, 18, 2, 1, 0, 1, 3},    // rows that are not aligned to components
};

/// What the two steps give for one pixel, in plain arithmetic on shares of the full range. @p out holds the target's
/// old samples.
void ExpectedPixel(const TestForm &from, const double *in, const TestForm &to, double *out)
{
    double share[4];
    for (int c = 0; c < from.channels; ++c)
        share[c] = in[c] / from.Full();
    double wanted[4] = {share[0], share[0], share[0], 1};
    if (from.channels > 1 && to.channels == 1)
        wanted[0] = 0.299 * share[0] + 0.587 * share[1] + 0.114 * share[2];
    else if (from.channels > 1)
        std::copy_n(share, from.channels, wanted);
    for (int c = 0; c < to.channels; ++c)
        out[c] = (to.IsFloat() ? wanted[c] : std::clamp(wanted[c], 0.0, 1.0)) * to.Full();
}

/// How far an integer may lie from the exact value: half a count for one rounding.
double Tolerance(const TestForm &from, const TestForm &to)
{
    if (to.IsFloat())
        return from.IsFloat() && (to.channels > 1 || from.channels == 1) ? 0 : 2e-7 * 2;
    if (from.bits == 16 && to.bits == 8)
        return 1;                       // the fast hint
    return to.bits == 16 ? 0.9 : 0.505; // grey weights in parts of 65,536 and 32,768
}

struct AlphaDeviation {
    FormIndex from, to;
    double alpha; // negative: stays
};
constexpr AlphaDeviation kAlphaDeviations[] = {
    {k16uGrey, k16uRgba, -1},
    {k16uGrey, k32fRgba, -1},
    {k32fGrey, k16uRgba, 255},
};

void ApplyDeviation(int from, int to, double oldAlpha, double *expected)
{
    for (const AlphaDeviation &deviation : kAlphaDeviations) {
        if (deviation.from == from && deviation.to == to)
            expected[3] = deviation.alpha < 0 ? oldAlpha : deviation.alpha;
    }
}

/// A block of address space of which only touched pages take memory.
class SparseBlock {
public:
    explicit SparseBlock(size_t bytes)
        : m_bytes(bytes),
          m_data(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
    {
    }
    ~SparseBlock() { munmap(m_data, m_bytes); }
    SparseBlock(const SparseBlock &) = delete;
    SparseBlock &operator=(const SparseBlock &) = delete;
    void *Data() const { return m_data == MAP_FAILED ? nullptr : m_data; }

private:
    size_t m_bytes;
    void *m_data;
};

} // namespace

class tst_KImageCopy : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyFormToEveryForm_data();
    void everyFormToEveryForm();
    void values_data();
    void values();
    void notANumberBecomesZero();
    void guards_data();
    void guards();
    void copyToIsClipped_data();
    void copyToIsClipped();
    void convertKeepsAWrappedBlock();
    void convertOfDeepGreyIsOpaque_data();
    void convertOfDeepGreyIsOpaque();
    void beyondFourGiB_data();
    void beyondFourGiB();
};

void tst_KImageCopy::everyFormToEveryForm_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (int from = 0; from < kFormCount; ++from)
        for (int to = 0; to < kFormCount; ++to)
            QTest::addRow("%s to %s", kForms[from].name, kForms[to].name) << from << to;
}

void tst_KImageCopy::everyFormToEveryForm()
{
    QFETCH(int, from);
    QFETCH(int, to);
    const TestForm &fromForm = kForms[from], &toForm = kForms[to];
    for (const Placement &p : kPlacements) {
        TestImage source(fromForm, p.sourceWidth, p.sourceHeight, p.sourcePaddingBytes);
        TestImage target(toForm, p.targetWidth, p.targetHeight, p.targetPaddingBytes);
        TestImage wanted(toForm, p.targetWidth, p.targetHeight, p.targetPaddingBytes);
        source.FillWithNoise(1);
        target.FillWithNoise(2);
        wanted.FillWithNoise(2);
        source.image.CropCopyTo(p.x, p.y, p.width, p.height, target.image, p.targetX, p.targetY);

        for (int y = 0; y < p.height; ++y) {
            for (int x = 0; x < p.width; ++x) {
                double in[4], expected[4];
                for (int c = 0; c < fromForm.channels; ++c)
                    in[c] = source.Sample(p.x + x, p.y + y, c);
                ExpectedPixel(fromForm, in, toForm, expected);
                ApplyDeviation(from, to, wanted.Sample(p.targetX + x, p.targetY + y, toForm.channels - 1), expected);
                for (int c = 0; c < toForm.channels; ++c) {
                    const double got = target.Sample(p.targetX + x, p.targetY + y, c);
                    QVERIFY2(std::fabs(got - expected[c]) <= Tolerance(fromForm, toForm),
                             qPrintable(QStringLiteral("width %1, pixel (%2, %3), channel %4: expected %5, got %6")
                                            .arg(p.width)
                                            .arg(x)
                                            .arg(y)
                                            .arg(c)
                                            .arg(expected[c])
                                            .arg(got)));
                    wanted.SetSample(p.targetX + x, p.targetY + y, c, got);
                }
            }
        }
        QVERIFY2(target.Bytes() == wanted.Bytes(), "something around the rectangle was written");
    }
}

void tst_KImageCopy::values_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<QVector<double>>("in");
    QTest::addColumn<int>("to");
    QTest::addColumn<QVector<double>>("out");
    using V = QVector<double>;
    const auto grey = [](double v) { return V{v}; };
    QTest::newRow("8u to float") << int(k8uGrey) << grey(128) << int(k32fGrey) << grey(double(128.0f / 255.0f));
    QTest::newRow("8u white to float") << int(k8uGrey) << grey(255) << int(k32fGrey) << grey(1);
    QTest::newRow("8u to 16u") << int(k8uGrey) << grey(128) << int(k16uGrey) << grey(32896);
    QTest::newRow("16u white to float") << int(k16uGrey) << grey(65535) << int(k32fGrey) << grey(1);
    QTest::newRow("above white to 8u") << int(k32fGrey) << grey(1.5) << int(k8uGrey) << grey(255);
    QTest::newRow("above white to 16u") << int(k32fGrey) << grey(1.5) << int(k16uGrey) << grey(65535);
    QTest::newRow("below black to 8u") << int(k32fGrey) << grey(-0.1) << int(k8uGrey) << grey(0);
    QTest::newRow("infinite to 16u") << int(k32fGrey) << grey(std::numeric_limits<double>::infinity()) << int(k16uGrey)
                                     << grey(65535);
    QTest::newRow("far above white to 8u") << int(k32fGrey) << grey(1e30) << int(k8uGrey) << grey(255);
    QTest::newRow("spread, opaque") << int(k8uGrey) << grey(10) << int(k8uRgba) << V{10, 10, 10, 255};
    QTest::newRow("red is 76") << int(k8uRgb) << V{255, 0, 0} << int(k8uGrey) << grey(76);
    QTest::newRow("white stays white") << int(k16uRgb) << V{65535, 65535, 65535} << int(k16uGrey) << grey(65535);
    // Too bright for a channel of its own, not so in grey: the colours must not be limited first.
    QTest::newRow("grey before clipping") << int(k32fRgb) << V{2, 0, 0} << int(k8uGrey) << grey(152);
    // Grey of 8 bits, then widened, would be 76 * 257 = 19,532.
    QTest::newRow("grey at the finer depth") << int(k8uRgb) << V{255, 0, 0} << int(k16uGrey) << grey(19595);
    QTest::newRow("alpha 255 of 65,535") << int(k32fGrey) << grey(1) << int(k16uRgba) << V{65535, 65535, 65535, 255};
}

void tst_KImageCopy::values()
{
    QFETCH(int, from);
    QFETCH(QVector<double>, in);
    QFETCH(int, to);
    QFETCH(QVector<double>, out);
    // Enough pixels for the vector forms and their ends.
    constexpr int kPixels = 37;
    TestImage source(kForms[from], kPixels, 1), target(kForms[to], kPixels, 1);
    for (int i = 0; i < kPixels * in.size(); ++i)
        source.SetSample(i / in.size(), 0, i % in.size(), in[i % in.size()]);
    source.image.CropCopyTo(0, 0, kPixels, 1, target.image, 0, 0);
    for (int i = 0; i < kPixels * out.size(); ++i) {
        const double got = target.Sample(i / out.size(), 0, i % out.size()), wanted = out[i % out.size()];
        QVERIFY2(std::fabs(got - wanted) <= (kForms[to].IsFloat() ? 1e-7 * wanted : 0),
                 qPrintable(QStringLiteral("%1 instead of %2").arg(got).arg(wanted)));
    }
}

void tst_KImageCopy::notANumberBecomesZero()
{
    TestImage source(kForms[k32fRgba], 11, 1), bytes(kForms[k8uRgba], 11, 1), words(kForms[k16uRgba], 11, 1);
    for (int i = 0; i < 44; ++i)
        source.SetSample(i / 4, 0, i % 4, std::nan(""));
    source.image.CopyTo(bytes.image, 0, 0);
    source.image.CopyTo(words.image, 0, 0);
    QCOMPARE(std::count(bytes.Bytes().begin(), bytes.Bytes().end(), 0), 44);
    QCOMPARE(std::count(words.Bytes().begin(), words.Bytes().end(), 0), 88);
}

void tst_KImageCopy::guards_data()
{
    QTest::addColumn<std::function<void()>>("call");
    QTest::addColumn<QString>("message");
    const QString bitmap = QStringLiteral("Invalid Bitmap"), parameter = QStringLiteral("Invalid Parameter");
    const auto row = [](const char *name, const QString &message, const std::function<void(KImage &, KImage &)> &call) {
        QTest::newRow(name) << std::function<void()>([call] {
            KImage source(8, 6, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
            KImage target(5, 4, GFL_RGBA, 16, /*clear=*/true, nullptr, 0);
            std::memset(target.getData(0, 0), 0x5A, size_t(4) * target.bytesPerLine());
            const KImage before(target);
            try {
                call(source, target);
            } catch (const KException &) {
                // Only a form that can't be made gives the old content up.
                const bool sameForm = target.m_bitmap && target.type() == GFL_RGBA && target.bitsPerComponent() == 16;
                const size_t bytes = size_t(4) * before.bytesPerLine();
                if (sameForm && std::memcmp(target.getData(0, 0), before.getData(0, 0), bytes) != 0)
                    throw KException(QStringLiteral("the target has changed"), QString());
                throw;
            }
        }) << message;
    };
    const auto crop = [](int x, int y, int width, int height, int targetX, int targetY) {
        return [=](KImage &s, KImage &t) { s.CropCopyTo(x, y, width, height, t, targetX, targetY); };
    };
    row("onto itself", parameter, [](KImage &s, KImage &) { s.CropCopyTo(0, 0, 1, 1, s, 1, 1); });
    row("empty onto itself: the first guard", parameter, [](KImage &, KImage &) {
        KImage empty;
        empty.CropCopyTo(0, 0, 1, 1, empty, 0, 0);
    });
    row("both empty: the source's guard", bitmap, [](KImage &, KImage &) {
        KImage empty, other;
        empty.CropCopyTo(0, 0, 1, 1, other, 0, 0);
    });
    row("source of a palette", bitmap, [](KImage &, KImage &t) {
        KImage(4, 4, GFL_COLORS, 8, /*clear=*/true, nullptr, 0).CropCopyTo(0, 0, 1, 1, t, 0, 0);
    });
    row("source of 24 bits", bitmap, [](KImage &, KImage &t) {
        KImage(4, 4, GFL_RGB, 24, /*clear=*/true, nullptr, 0).CropCopyTo(0, 0, 1, 1, t, 0, 0);
    });
    row("empty target", parameter, [](KImage &s, KImage &) {
        KImage empty;
        s.CropCopyTo(0, 0, 1, 1, empty, 0, 0);
    });
    row("target of a palette", parameter, [](KImage &s, KImage &) {
        KImage palette(4, 4, GFL_COLORS, 8, /*clear=*/true, nullptr, 0);
        s.CropCopyTo(0, 0, 1, 1, palette, 0, 0);
    });
    row("left of the target", parameter, crop(0, 0, 1, 1, -1, 0));
    row("right of the target", parameter, crop(0, 0, 1, 1, 5, 0));
    row("below the target", parameter, crop(0, 0, 1, 1, 0, 4));
    row("left of the source", parameter, crop(-1, 0, 1, 1, 0, 0));
    row("right of the source", parameter, crop(8, 0, 0, 1, 0, 0));
    row("wider than the source", parameter, crop(5, 0, 4, 1, 0, 0));
    row("width that wraps around", parameter, crop(5, 0, std::numeric_limits<int>::max(), 1, 1, 0));
    row("below the source", parameter, crop(0, 6, 1, 1, 0, 0));
    row("above the source", parameter, crop(0, -1, 1, 1, 0, 0));
    row("nothing, below the source", parameter, crop(0, 6, 1, 0, 0, 0));
    row("above the target", parameter, crop(0, 0, 1, 1, 0, -1));
    row("target of 24 bits", parameter, [](KImage &s, KImage &) {
        KImage deep(4, 4, GFL_RGB, 24, /*clear=*/true, nullptr, 0);
        s.CropCopyTo(0, 0, 1, 1, deep, 0, 0);
    });
    row("higher than the source", parameter, crop(0, 5, 1, 2, 0, 0));
    row("beyond the target's rows", parameter, crop(0, 0, 4, 1, 2, 0));
    row("beyond the target's end", parameter, crop(0, 0, 1, 3, 0, 2));
    row("nothing to copy", QStringLiteral("none"), crop(0, 0, 0, -3, 0, 0));
    row("CopyTo of an empty image", bitmap, [](KImage &, KImage &t) { KImage().CopyTo(t, 0, 0); });
    row("CopyTo of a palette", parameter,
        [](KImage &, KImage &t) { KImage(4, 4, GFL_COLORS, 8, /*clear=*/true, nullptr, 0).CopyTo(t, 0, 0); });
    row("CopyTo beside the target", parameter, [](KImage &s, KImage &t) { s.CopyTo(t, 5, 0); });
    row("Convert of an empty image", bitmap, [](KImage &, KImage &t) { KImage().Convert(t, GFL_RGB, 8); });
    row("CopyTo an empty target", parameter, [](KImage &s, KImage &) {
        KImage empty;
        s.CopyTo(empty, 0, 0);
    });
    row("CopyTo left of the target", parameter, [](KImage &s, KImage &t) { s.CopyTo(t, -1, 0); });
    row("CopyTo above the target", parameter, [](KImage &s, KImage &t) { s.CopyTo(t, 0, -1); });
    row("Convert of a palette", bitmap,
        [](KImage &, KImage &t) { KImage(4, 4, GFL_COLORS, 8, /*clear=*/true, nullptr, 0).Convert(t, GFL_RGB, 8); });
    row("Convert to a palette", parameter, [](KImage &s, KImage &t) { s.Convert(t, GFL_COLORS, 8); });
    row("Convert to 12 bits", parameter, [](KImage &s, KImage &t) { s.Convert(t, GFL_RGB, 12); });
    row("Convert of itself, which stays", parameter, [](KImage &s, KImage &) {
        s.ClearBitmap();
        try {
            s.Convert(s, GFL_GREY, 16);
        } catch (const KException &) {
            QCOMPARE(int(s.type()), int(GFL_RGB));
            throw;
        }
    });
}

void tst_KImageCopy::guards()
{
    QFETCH(std::function<void()>, call);
    QFETCH(QString, message);
    QCOMPARE(Thrown(call), message);
}

void tst_KImageCopy::copyToIsClipped_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("rows");
    QTest::newRow("fits") << 1 << 2 << 3 << 2;
    QTest::newRow("one column") << 6 << 0 << 1 << 2;
    QTest::newRow("one row") << 0 << 4 << 3 << 1;
    QTest::newRow("one pixel") << 6 << 4 << 1 << 1;
}

void tst_KImageCopy::copyToIsClipped()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(int, columns);
    QFETCH(int, rows);
    TestImage source(kForms[k8uGrey], 3, 2), target(kForms[k8uGrey], 7, 5);
    for (int i = 0; i < 6; ++i)
        source.SetSample(i % 3, i / 3, 0, 100 + i);
    source.image.CopyTo(target.image, x, y);
    for (int i = 0; i < 35; ++i) {
        const int fromX = i % 7 - x, fromY = i / 7 - y;
        const bool inside = fromX >= 0 && fromX < columns && fromY >= 0 && fromY < rows;
        QCOMPARE(target.Sample(i % 7, i / 7, 0), inside ? 100 + fromY * 3 + fromX : 0);
    }
}

void tst_KImageCopy::convertKeepsAWrappedBlock()
{
    TestImage source(kForms[k16uRgb], 4, 3), target(kForms[k8uRgba], 4, 3, 8);
    source.FillWithNoise(1);
    const unsigned char *block = target.image.m_bitmap->Data;
    source.image.Convert(target.image, GFL_RGBA, 8);
    QCOMPARE(target.image.m_bitmap->Data, block);
    QCOMPARE(target.Sample(3, 2, 3), 255.0);
    source.image.Convert(target.image, GFL_GREY, 8); // another shape: the block is left, whole
    QVERIFY(target.image.m_bitmap->Data != block);
    QCOMPARE(block[3], quint8(255));
}

void tst_KImageCopy::convertOfDeepGreyIsOpaque_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("kept"); // the target has the shape already
    for (int bits : {16, 32})
        for (bool kept : {false, true})
            QTest::addRow("%d bits, %s", bits, kept ? "kept target" : "new target") << bits << kept;
}

// The one pair of forms whose alpha no step fills: a kept target keeps it, in a new one it must not be chance.
void tst_KImageCopy::convertOfDeepGreyIsOpaque()
{
    QFETCH(int, bits);
    QFETCH(bool, kept);
    const KImage grey(3, 2, GFL_GREY, 16, /*clear=*/true, nullptr, 0);
    KImage target(kept ? 3 : 2, kept ? 2 : 3, GFL_RGBA, bits, /*clear=*/true, nullptr, 0); // alpha 0
    grey.Convert(target, GFL_RGBA, bits);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            quint16 deep;
            float real;
            std::memcpy(&deep, target.getData(x, y) + 6, sizeof deep);
            std::memcpy(&real, target.getData(x, y) + (bits == 32 ? 12 : 0), sizeof real);
            const double alpha = bits == 16 ? deep / 65535.0 : double(real);
            QCOMPARE(alpha, kept ? 0.0 : 1.0);
        }
    }
}

void tst_KImageCopy::beyondFourGiB_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("many rows: 5.2 GB") << 8192 << 40000;
    QTest::newRow("rows beyond 2 GiB: 6.4 GB") << 200 * 1000 * 1000 << 2;
}

void tst_KImageCopy::beyondFourGiB()
{
    QFETCH(int, width);
    QFETCH(int, height);
    const size_t bytes = size_t(width) * size_t(height) * 16;
    const SparseBlock block(bytes);
    if (!block.Data())
        QSKIP("no address space");
    KImage large(width, height, GFL_RGBA, 32, /*clear=*/false, block.Data(), int(qint64(width) * 16));
    QCOMPARE(qint64(large.bytesPerLine()), qint64(width) * 16);

    TestImage patch(kForms[k16uRgb], 5, 2), back(kForms[k16uRgb], 5, 2);
    patch.FillWithNoise(3);
    patch.image.CopyTo(large, width - 5, height - 2); // in, with a conversion, up to the very last pixel
    const float *last = reinterpret_cast<const float *>(static_cast<unsigned char *>(block.Data()) + bytes) - 4;
    QCOMPARE(std::lround(last[0] * 65535.0f), std::lround(patch.Sample(4, 1, 0)));
    QCOMPARE(last[3], 1.0f);

    large.CropCopyTo(width - 5, height - 2, 5, 2, back.image, 0, 0);
    QCOMPARE(back.Bytes(), patch.Bytes());
    TestImage same(kForms[k32fRgba], 5, 2);
    large.CropCopyTo(width - 5, height - 2, 5, 2, same.image, 0, 0);
    QCOMPARE(same.Sample(4, 1, 1), double(last[1]));
}

QTEST_GUILESS_MAIN(tst_KImageCopy)
#include "KImage_Copy_test.moc"
