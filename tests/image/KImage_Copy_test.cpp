#include "KImage.h"

#include "Case.h"
#include "Table.h"
#include "TestImages.h"

#include <QtTest>

#include <cmath>

#include <sys/mman.h>

namespace {

/// Rectangle of one image and its position in another.
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
    {523, 2, 1, 0, 521, 2, 521, 3, 0, 1, 0, 4}, // a prime width, more pixels than are converted at a time
    {19, 3, 2, 1, 17, 2, 18, 2, 1, 0, 1, 3},    // rows that don't start at multiples of the component size
};

/// Computes the expected pixel in plain arithmetic on fractions of the full range: converts the channels, then the
/// depth.
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

/// Returns the largest permitted error of a sample; for integers, half a count per rounding.
double Tolerance(const TestForm &from, const TestForm &to)
{
    if (to.IsFloat())
        return from.IsFloat() && (to.channels > 1 || from.channels == 1) ? 0 : 2e-7 * 2;
    if (from.bits == 16 && to.bits == 8)
        return 1;                       // fast conversion may be off by one
    return to.bits == 16 ? 0.9 : 0.505; // gray weights are multiples of 1/65,536 or 1/32,768
}

/// Block of address space in which only accessed pages take memory.
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
    void everyFormToEveryForm();
    void noIntegersBeyondTheRange();
    void guards();
    void copyToIsClipped();
    void convertOfDeepGrayIsOpaque();
    void beyondFourGiB();
};

void tst_KImageCopy::everyFormToEveryForm()
{
    for (int pair = 0; pair < kFormCount * kFormCount; ++pair) {
        const int from = pair / kFormCount, to = pair % kFormCount;
        const TestForm &fromForm = kForms[from], &toForm = kForms[to];
        for (const Placement &p : kPlacements) {
            TestImage source(fromForm, p.sourceWidth, p.sourceHeight, p.sourcePaddingBytes);
            TestImage target(toForm, p.targetWidth, p.targetHeight, p.targetPaddingBytes);
            TestImage wanted(toForm, p.targetWidth, p.targetHeight, p.targetPaddingBytes);
            source.FillWithNoise(1);
            target.FillWithNoise(2);
            wanted.FillWithNoise(2);
            source.image.CropCopyTo(p.x, p.y, p.width, p.height, target.image, p.targetX, p.targetY);

            const Case named(fromForm.name, toForm.name, "placement", &p - kPlacements);
            const auto expected = [&](int x, int y, int c) {
                x -= p.targetX;
                y -= p.targetY;
                if (x < 0 || y < 0 || x >= p.width || y >= p.height)
                    return target.Sample(x + p.targetX, y + p.targetY, c); // compared below, byte by byte
                double in[4], out[4];
                for (int k = 0; k < fromForm.channels; ++k)
                    in[k] = source.Sample(p.x + x, p.y + y, k);
                ExpectedPixel(fromForm, in, toForm, out);
                if (from == k16uGray && (to == k16uRgba || to == k32fRgba)) // these conversions leave alpha as it was
                    out[3] = wanted.Sample(p.targetX + x, p.targetY + y, 3);
                if (from == k32fGray && to == k16uRgba)
                    out[3] = 255;
                return out[c];
            };
            QCOMPARE(Difference(target, expected, Tolerance(fromForm, toForm)), QString());
            wanted.Fill([&](int x, int y, int c) {
                const bool isInside =
                    x >= p.targetX && x < p.targetX + p.width && y >= p.targetY && y < p.targetY + p.height;
                return (isInside ? target : wanted).Sample(x, y, c);
            });
            QVERIFY2(target.Bytes() == wanted.Bytes(), "pixels around the rectangle were written");
        }
    }
}

void tst_KImageCopy::noIntegersBeyondTheRange()
{
    const std::pair<double, int> rows[] = {{std::nan(""), 0}, {-1e30, 0},  {-0.1, 0},
                                           {1.5, 255},        {1e30, 255}, {INFINITY, 255}};
    for (const auto &[value, byte] : rows) {
        const Case named(value, byte);
        TestImage source(kForms[k32fRgba], 11, 1), bytes(kForms[k8uRgba], 11, 1), words(kForms[k16uRgba], 11, 1);
        source.Fill([in = value](int, int, int) { return in; });
        source.image.CopyTo(bytes.image, 0, 0);
        source.image.CopyTo(words.image, 0, 0);
        QCOMPARE(std::count(bytes.Bytes().begin(), bytes.Bytes().begin() + 44, byte), 44);
        QCOMPARE(std::count(words.Bytes().begin(), words.Bytes().begin() + 88, byte), 88);
    }
}

void tst_KImageCopy::guards()
{
    const QString bitmap = QStringLiteral("Invalid Bitmap"), parameter = QStringLiteral("Invalid Parameter");
    KImage source(8, 6, GFL_RGB, 8, /*clear=*/true, nullptr, 0), target(5, 4, GFL_RGBA, 16, /*clear=*/true, nullptr, 0);
    KImage palette(4, 4, GFL_COLORS, 8, /*clear=*/true, nullptr, 0), deep(4, 4, GFL_RGB, 24, true, nullptr, 0);
    KImage empty, other;
    std::memset(target.getData(0, 0), 0x5A, size_t(4) * target.bytesPerLine());
    const KImage before(target);
    const QMap<QString, KImage *> images = {{QStringLiteral("source"), &source},
                                            {QStringLiteral("target"), &target},
                                            {QStringLiteral("palette"), &palette},
                                            {QStringLiteral("empty"), &empty},
                                            {QStringLiteral("other"), &other}};
    for (const QStringList &crop : ReadTable(QStringLiteral(CROPS))) {
        const Case named(crop);
        const auto n = [&crop](int i) { return crop[i].toInt(); };
        QCOMPARE(Thrown([&] { images[crop[0]]->CropCopyTo(n(2), n(3), n(4), n(5), *images[crop[1]], n(6), n(7)); }),
                 crop[8]);
    }
    QCOMPARE(Thrown([&] { empty.CopyTo(target, 0, 0); }), bitmap);
    QCOMPARE(Thrown([&] { palette.CopyTo(target, 0, 0); }), parameter);
    QCOMPARE(Thrown([&] { source.CopyTo(empty, 0, 0); }), parameter);
    for (const QPoint at : {QPoint(5, 0), QPoint(-1, 0), QPoint(0, -1)}) {
        const Case named(at);
        QCOMPARE(Thrown([&] { source.CopyTo(target, at.x(), at.y()); }), parameter);
    }
    QCOMPARE(Thrown([&] { empty.Convert(target, GFL_RGB, 8); }), bitmap);
    QCOMPARE(Thrown([&] { palette.Convert(target, GFL_RGB, 8); }), bitmap);
    QCOMPARE(Thrown([&] { source.Convert(source, GFL_GREY, 16); }), parameter);
    QCOMPARE(int(source.type()), int(GFL_RGB)); // unchanged
    QCOMPARE(std::memcmp(target.getData(0, 0), before.getData(0, 0), size_t(4) * before.bytesPerLine()), 0);
    // Only an unsupported form discards the old content.
    QCOMPARE(Thrown([&] { source.Convert(target, GFL_COLORS, 8); }), parameter);
    QCOMPARE(Thrown([&] { source.Convert(target, GFL_RGB, 12); }), parameter);
}

void tst_KImageCopy::copyToIsClipped()
{
    const struct {
        int x, y, columns, rows;
    } places[] = {{1, 2, 3, 2}, {6, 0, 1, 2}, {0, 4, 3, 1}, {6, 4, 1, 1}};
    for (const auto &place : places) {
        const Case named("column", place.x, "row", place.y);
        TestImage source(kForms[k8uGray], 3, 2), target(kForms[k8uGray], 7, 5);
        source.Fill([](int x, int y, int) { return 100 + x + 3 * y; });
        source.image.CopyTo(target.image, place.x, place.y);
        const auto wanted = [&place](int x, int y, int) {
            const int fromX = x - place.x, fromY = y - place.y;
            const bool inside = fromX >= 0 && fromX < place.columns && fromY >= 0 && fromY < place.rows;
            return inside ? 100 + fromY * 3 + fromX : 0;
        };
        QCOMPARE(Difference(target, wanted), QString());
    }
}

/// No step of this conversion sets alpha: a target that already has the right size and form keeps its alpha; a newly
/// allocated one must be opaque.
void tst_KImageCopy::convertOfDeepGrayIsOpaque()
{
    for (const int i : {0, 1, 2, 3}) {
        const Case named(i);
        const bool isDeep = i & 1, isKept = i & 2; // kept: the target already has the right size
        const KImage gray(3, 2, GFL_GREY, 16, /*clear=*/true, nullptr, 0);
        KImage target(isKept ? 3 : 2, isKept ? 2 : 3, GFL_RGBA, isDeep ? 16 : 32, true, nullptr, 0); // alpha 0
        gray.Convert(target, GFL_RGBA, isDeep ? 16 : 32);
        KImage alpha;
        target.ExtractAlpha(alpha, 8);
        for (int x = 0; x < 6; ++x)
            QCOMPARE(int(*alpha.getData(x % 3, x / 3)), isKept ? 0 : 255);
    }
}

void tst_KImageCopy::beyondFourGiB()
{
    const std::pair<int, int> sizes[] = {{8192, 40000}, {200 * 1000 * 1000, 2}}; // rows of the last exceed 2 GiB
    for (const auto &[width, height] : sizes) {
        const Case named(width, height);
        const size_t bytes = size_t(width) * size_t(height) * 16;
        const SparseBlock block(bytes);
        if (!block.Data())
            QSKIP("not enough address space");
        KImage large(width, height, GFL_RGBA, 32, /*clear=*/false, block.Data(), int(qint64(width) * 16));
        QCOMPARE(qint64(large.bytesPerLine()), qint64(width) * 16);

        TestImage patch(kForms[k16uRgb], 5, 2), back(kForms[k16uRgb], 5, 2);
        patch.FillWithNoise(3);
        patch.image.CopyTo(large, width - 5, height - 2); // converts, and ends at the very last pixel
        const float *last = reinterpret_cast<const float *>(static_cast<unsigned char *>(block.Data()) + bytes) - 4;
        QCOMPARE(std::lround(last[0] * 65535.0f), std::lround(patch.Sample(4, 1, 0)));
        QCOMPARE(last[3], 1.0f);

        large.CropCopyTo(width - 5, height - 2, 5, 2, back.image, 0, 0);
        QCOMPARE(back.Bytes(), patch.Bytes());
        TestImage same(kForms[k32fRgba], 5, 2);
        large.CropCopyTo(width - 5, height - 2, 5, 2, same.image, 0, 0);
        QCOMPARE(same.Sample(4, 1, 1), double(last[1]));
    }
}

QTEST_GUILESS_MAIN(tst_KImageCopy)
#include "KImage_Copy_test.moc"
