#include "KImage.h"

#include "Case.h"
#include "TestImages.h"

#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

/// Returns the mean of the source over the area of a target pixel, with bounds in source pixels.
double AreaMean(const TestImage &source, double left, double right, double top, double bottom, int channel)
{
    double sum = 0;
    for (int y = static_cast<int>(top); y < std::min<double>(std::ceil(bottom), source.image.height()); ++y) {
        for (int x = static_cast<int>(left); x < std::min<double>(std::ceil(right), source.image.width()); ++x) {
            const double across = std::min(x + 1.0, right) - std::max<double>(x, left);
            const double down = std::min(y + 1.0, bottom) - std::max<double>(y, top);
            sum += std::max(across, 0.0) * std::max(down, 0.0) * source.Sample(x, y, channel);
        }
    }
    return sum / ((right - left) * (bottom - top));
}

struct Crop {
    float left = -1, right = -2, top = -3, bottom = -4;
};

Crop AutoCrop(const KImage &image)
{
    Crop crop;
    image.GetAutoCrop(crop.left, crop.right, crop.top, crop.bottom);
    return crop;
}

/// Returns the crop of a float RGBA image with the given alpha.
template <typename Alpha> Crop AutoCrop(int width, int height, Alpha alpha)
{
    TestImage image(kForms[k32fRgba], width, height);
    image.Fill([&](int x, int y, int) { return alpha(x, y); });
    return AutoCrop(image.image);
}

} // namespace

class tst_KImageGeometry : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void resizeByDefinition();
    void inPlace();
    void unsupportedForms();
    void cropHasNothingTransparent();
    void knownCrops();
    void cropGuards();
};

void tst_KImageGeometry::resizeByDefinition()
{
    const QSize sizes[][2] = {
        {{5, 5}, {3, 3}},   {{1001, 3}, {7, 3}}, {{37, 41}, {1, 1}}, {{10, 9}, {10, 4}}, {{307, 91}, {61, 7}}, // area
        {{10, 8}, {12, 4}}, {{10, 8}, {5, 9}},   {{1, 1}, {4, 3}},   {{7, 5}, {31, 17}}, {{13, 7}, {53, 29}},  // linear
    };
    const int gaps[][2] = {{4, 0}, {2, 4}, {0, 1}}; // bytes after each row; samples may be unaligned
    for (int i = 0; i < kFormCount * 10 * 3; ++i) {
        const int form = i / 30;
        const QSize from = sizes[i % 10][0], to = sizes[i % 10][1];
        const auto &[sourceGap, targetGap] = gaps[i / 10 % 3];
        TestImage source(kForms[form], from.width(), from.height(), sourceGap);
        TestImage result(kForms[form], to.width(), to.height(), targetGap);
        TestImage before(kForms[form], to.width(), to.height(), targetGap);
        source.FillWithNoise(1);
        result.FillWithNoise(2);
        source.image.Resize(result.image, to.width(), to.height()); // into the wrapped block
        // Area weighting unless a side grows.
        const bool grows = to.width() > from.width() || to.height() > from.height();
        const double stepX = double(from.width()) / to.width(), stepY = double(from.height()) / to.height();
        const auto wanted = [&](int x, int y, int c) {
            return grows ? Bilinear(source, (x + 0.5) * stepX - 0.5, (y + 0.5) * stepY - 0.5, c)
                         : AreaMean(source, x * stepX, (x + 1) * stepX, y * stepY, (y + 1) * stepY, c);
        };
        const Case named("run", i);
        QCOMPARE(Difference(result, wanted, kForms[form].IsFloat() ? 2e-6 : 0.51), QString());
        QVERIFY(result.HasGapsOf(before)); // the whole block is cleared first, gaps included
    }
}

void tst_KImageGeometry::inPlace()
{
    KImage image(1000, 800, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
    for (int i = 0; i < 2; ++i) { // the second call changes nothing
        const Case named("i", i);
        image.m_spareFlag = true;
        image.Resize(image, 500, 400);
        QCOMPARE(QSize(image.width(), image.height()), QSize(500, 400));
        QCOMPARE(image.m_spareFlag, i == 1); // a new record doesn't have the flag
    }
    TestImage wrapped(kForms[k16uRgb], 4, 4, 2);
    wrapped.FillWithNoise(1);
    const auto before = wrapped.Bytes();
    KImage same;
    wrapped.image.Resize(same, 4, 4);
    QVERIFY(same.m_ownsData);
    for (int y = 0; y < 4; ++y)
        QVERIFY(std::equal(same.getData(0, y), same.getData(0, y) + 4 * 6, wrapped.image.getData(0, y)));
    QCOMPARE(int(same.type()) * 100 + same.bitsPerComponent(), GFL_RGB * 100 + 16);
    wrapped.image.Resize(2, 2); // leaves the wrapped block unchanged
    QCOMPARE(wrapped.image.width(), 2);
    QVERIFY(wrapped.image.m_ownsData);
    QVERIFY(wrapped.Bytes() == before);
}

void tst_KImageGeometry::unsupportedForms()
{
    KImage empty, image(4, 4, GFL_RGB, 8, /*clear=*/true, nullptr, 0), target(1, 1, GFL_RGB, 8, true, nullptr, 0);
    QCOMPARE(Thrown([&] { empty.Resize(target, 2, 2); }), QString());
    QCOMPARE(Thrown([&] { empty.Resize(2, 2); }), QString());
    QCOMPARE(target.width(), 1);
    QCOMPARE(Thrown([&] { image.Resize(target, 0, 5); }), QStringLiteral("none"));
    QCOMPARE(Thrown([&] { image.Resize(target, -5, 5); }), QStringLiteral("Invalid Parameter"));
    KImage palette(10, 10, GFL_COLORS, 8, /*clear=*/false, nullptr, 0);
    std::fill_n(palette.getData(0, 0), 100, 9);
    palette.Resize(target, 4, 4); // unsupported forms become zero
    QCOMPARE(int(target.type()), int(GFL_COLORS));
    QCOMPARE(int(*target.getData(3, 3)), 0);
}

void tst_KImageGeometry::cropHasNothingTransparent()
{
    const auto all = [](int, int) { return true; };
    const struct {
        int width, height;
        bool (*isValid)(int x, int y);
        double leastShare; // smallest allowed ratio of the rectangle's area to the image's
    } rows[] = {
        {1, 1, all, 1},
        {2, 2, all, 1},
        {3, 3, all, 1},
        {100, 80, all, 1},
        {101, 31, all, 1},
        {9, 9, [](int, int) { return false; }, 0},
        // An ellipse: the largest rectangle covers half of its bounding box, 2 / pi of the ellipse.
        {301, 200, [](int x, int y) { return std::hypot((x - 150) / 150.5, (y - 99.5) / 100.0) < 1; }, 0.45},
        {301, 200, // slanted
         [](int x, int y) { return y > x * 0.1 && y < 169 + x * 0.1 && x > 20 - y * 0.1 && x < 300 - y * 0.1; }, 0.6},
        {301, 200, [](int x, int y) { return x >= 11 && x < 280 && y >= 7 && y < 190; }, 0.75}, // a rectangle
        {301, 200,                                                                              // a pincushion
         [](int x, int y) { return y >= 30 - std::abs(x - 150) / 6 && x >= 20 - std::abs(y - 100) / 6; }, 0.75},
        {17, 13, [](int x, int y) { return x + y >= 3 && x - y <= 13; }, 0.6},
    };
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        const Crop crop = AutoCrop(row.width, row.height, [&row](int x, int y) {
            const double valid[] = {1, -0.5, std::nan("")}; // any alpha but 0
            return row.isValid(x, y) ? valid[(x + y) % 3] : 0;
        });
        QVERIFY(crop.left >= 0 && crop.top >= 0 && crop.right <= float(row.width) && crop.bottom <= float(row.height));
        for (int y = int(std::ceil(crop.top)); float(y + 1) <= crop.bottom; ++y)
            for (int x = int(std::ceil(crop.left)); float(x + 1) <= crop.right; ++x)
                QVERIFY2(row.isValid(x, y), qPrintable(QStringLiteral("(%1, %2)").arg(x).arg(y)));
        const double area = double(crop.right - crop.left) * double(crop.bottom - crop.top);
        const double most = row.leastShare > 0 ? row.width * row.height : 0;
        QVERIFY2(area >= row.leastShare * most && area <= most, qPrintable(QString::number(area)));
    }
}

void tst_KImageGeometry::knownCrops()
{
    // Columns 0 to 9 and 95 to 99 are transparent. A row at distance d from the top or bottom moves the sides inward by
    // at most d * tan(angle), so rows far enough away move them to column 10 and to 94, the last valid one.
    const Crop crop = AutoCrop(100, 80, [](int x, int) { return x >= 10 && x < 95; });
    QCOMPARE(crop.left, 10.0f);
    QCOMPARE(crop.right, 94.0f);
    // The transparent columns have no valid row, so each one moves top and bottom inward by d / tan(angle), where d is
    // its distance from the side. This is least at 79 degrees: 9 / tan(79) for column 9, less for column 95 with d = 4.
    const float reach = 9.0f / std::tan(79.0f * float(M_PI) / 180.0f);
    QVERIFY(std::fabs(crop.top - reach) < 1e-4f);
    QVERIFY(std::fabs(crop.bottom - (80 - reach)) < 1e-4f);
}

void tst_KImageGeometry::cropGuards()
{
    Crop crop = AutoCrop(KImage());
    QVERIFY(crop.left == -1 && crop.right == -2 && crop.top == -3 && crop.bottom == -4);
    for (int form = 0; form < kFormCount; ++form) {
        const Case named("form", form);
        const KImage image(4, 3, kForms[form].type, kForms[form].bits, /*clear=*/true, nullptr, 0);
        QCOMPARE(Thrown([&] { AutoCrop(image); }),
                 form == k32fRgba ? QStringLiteral("none") : QStringLiteral("Invalid Bitmap"));
    }
}

QTEST_GUILESS_MAIN(tst_KImageGeometry)
#include "KImage_Geometry_test.moc"
