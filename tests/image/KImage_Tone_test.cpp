#include "TestImages.h"

#include "Case.h"
#include "ImageSt.h"
#include "KOmp.h"

#include <QColor>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Fills a one-row image with gray pixels of the given values.
void FillRow(TestImage &image, const std::vector<double> &values, double alpha = 1)
{
    for (size_t x = 0; x < values.size(); ++x) {
        for (int c = 0; c < image.Form().channels; ++c)
            image.SetSample(int(x), 0, c, c == 3 ? alpha * image.Form().Full() : values[x]);
    }
}

double Sample(const KImage &image, int x, int channel)
{
    KImage plane;
    image.ExtractChannel(plane, 32, channel);
    return static_cast<double>(*reinterpret_cast<float *>(plane.getData(x, 0)));
}

/// Computes the unsharp mask of a row in double precision.
std::vector<double> Sharpened(const std::vector<double> &row, float radius, float amount)
{
    const int reach = std::max(1, int(3.0 * double(radius))), last = int(row.size()) - 1;
    const double sigma = double(radius + 0.5f);
    std::vector<double> sharpened;
    for (int x = 0; x <= last; ++x) {
        double sum = 0, weights = 0;
        for (int d = -reach; d <= reach; ++d) {
            const double weight = std::exp(-d * d / (2 * sigma * sigma));
            sum += weight * row[size_t(std::clamp(x + d, 0, last))];
            weights += weight;
        }
        const double here = row[size_t(x)];
        sharpened.push_back(here + double(amount) * (here - sum / weights));
    }
    return sharpened;
}

} // namespace

class tst_KImageTone : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void guards();
    void alpha();
    void histograms();
    void dynamicRange();
    void colors();
    void gaussian();
    void unsharpValues_data();
    void unsharpValues();
    void unsharpOfLuminance();
    void unsharpProperties();
};

void tst_KImageTone::guards()
{
    using Call = void (*)(KImage &);
    static KImage s_other(4, 1, GFL_GREY, 8, true, nullptr, 0), s_target;
    static ImageSt s_gray;
    static float s_low, s_high;
    static double s_number;
    const auto thrown = [](int form, Call call) {
        KImage image;
        if (form >= 0) // otherwise empty
            image.AllocBitmap(4, 1, kForms[form].type, kForms[form].bits, true, nullptr, 0);
        return Thrown([&] { call(image); });
    };
    const Call all[] = {[](KImage &i) { i.CombineAlpha(s_other); },
                        [](KImage &i) { i.BinarizeAlpha(); },
                        [](KImage &i) { i.HDR_QuickToneMapper(0); },
                        [](KImage &i) { i.CircularFiskeyeToSpherical(10, 180, s_target); },
                        [](KImage &i) { i.ScaleByAlpha(); },
                        [](KImage &i) { i.HistogramAuto(s_target); },
                        [](KImage &i) { i.HistogramEqualization(s_target); },
                        [](KImage &i) { i.HDR_GetMinMax(s_low, s_high, true); },
                        [](KImage &i) { i.ConvolveGaussian(1, s_target); },
                        [](KImage &i) { i.unsharpFull(1, 1, s_target); },
                        [](KImage &i) { i.unsharpY(1, 1, s_target); },
                        [](KImage &i) { i.adjustColor(1, 1, 1); },
                        [](KImage &i) { i.GetGrey(s_gray); },
                        [](KImage &i) { i.Colorize(s_target, Qt::red, Qt::blue); },
                        [](KImage &i) { i.GetFisheyeRadiusOffset(s_number, s_number, s_number); },
                        [](KImage &i) { i.CleanFisheyeData(1, 0, 0); },
                        [](KImage &i) { i.CircularCateyeToSpherical(10, 1, 0, 0, s_target); },
                        [](KImage &i) { i.PutPoint(1, 1, 1, 0); },
                        [](KImage &i) { i.Optical(0, 0, 0, 0, 0, 0); },
                        [](KImage &i) { i.Optical2(0, 0, 0, 'R', 1, 0); }};
    for (const Call &call : all) {
        const Case named("call", &call - all);
        QCOMPARE(thrown(-1, call), QStringLiteral("Invalid Bitmap"));
    }
    // Refused: a mask of the same depth, no alpha, no floats, no circle, no columns.
    QCOMPARE(thrown(k8uRgba, all[0]), QStringLiteral("Invalid Bitmap"));
    for (int i = 1; i <= 3; ++i) {
        const Case named("call", i);
        QCOMPARE(thrown(k8uRgb, all[i]), QStringLiteral("Invalid Bitmap"));
    }
    QCOMPARE(thrown(k8uRgb, [](KImage &i) { i.HDR_Normalize(0, 1, 0); }), QStringLiteral("Invalid Bitmap"));
    KImage narrow(0, 3, GFL_RGB, 8, true, nullptr, 0);
    QCOMPARE(Thrown([&] { narrow.GetGrey(s_gray); }), QStringLiteral("Invalid Bitmap"));

    const std::pair<FormIndex, Call> wrong[] = {
        {k16uRgba, [](KImage &i) { i.CombineAlpha(KImage(3, 1, GFL_GREY, 8, true, nullptr, 0)); }},
        {k32fRgb, [](KImage &i) { i.HDR_Normalize(0, 1, 3); }},
        {k32fRgb, [](KImage &i) { i.HDR_Normalize(1, 0, 0); }},
        {k32fRgb, [](KImage &i) { i.HDR_Normalize(0, INFINITY, 0); }},
        {k8uRgb, [](KImage &i) { i.ConvolveGaussian(-1, s_target); }},
        {k8uRgb, [](KImage &i) { i.ConvolveGaussian(1, i); }},
        {k8uRgb, [](KImage &i) { i.unsharp(NAN, 1, s_target); }},
        {k8uRgb, [](KImage &i) { i.unsharpY(1, 1, i); }},
        {k8uRgb, [](KImage &i) { i.Colorize(s_target, QColor(), Qt::red); }},
        {k8uRgb, [](KImage &i) { i.adjustColor(1, INFINITY, 1); }},
        {k8uRgb, [](KImage &i) { i.CleanFisheyeData(0, 0, 0); }},
        {k8uRgb, [](KImage &i) { i.GetCateyeRadiusOffset(s_number, s_number, s_number, -1); }},
        {k8uRgb, [](KImage &i) { i.CircularCateyeToSpherical(1, 1, 0, 0, s_target); }},
        {k8uRgb, [](KImage &i) { i.CircularCateyeToSpherical(10, 1, 0, 0, i); }},
        {k8uRgb, [](KImage &i) { i.CircularFiskeyeToSpherical(10, 0, s_target); }},
        {k8uRgb, [](KImage &i) { i.PutPoint(NAN, 0, 1, 0); }},
        {k8uRgb, [](KImage &i) { i.Optical(INFINITY, 0, 0, 0, 0, 0); }},
        {k8uRgb, [](KImage &i) { i.Optical2(0, 0, 0, 'A', 1, 0); }},
        {k8uRgb, [](KImage &i) { i.Optical2(0, 0, 0, '\0', 1, 0); }},
    };
    for (const auto &row : wrong) {
        const Case named("row", &row - wrong);
        QCOMPARE(thrown(row.first, row.second), QStringLiteral("Invalid Parameter"));
    }
}

void tst_KImageTone::alpha()
{
    for (const FormIndex form : {k8uRgba, k16uRgba, k32fRgba}) {
        const Case named(kForms[form].name);
        const double full = kForms[form].Full(), half = form == k32fRgba ? 0.5 : std::floor(full / 2) + 1;
        TestImage image(kForms[form], 3, 1, 3);
        for (const double low : {form == k32fRgba ? 0.49 : half - 1, form == k32fRgba ? kNan : 0}) {
            const double alphas[] = {low, half, full};
            for (int x = 0; x < 3; ++x)
                image.SetSample(x, 0, 3, alphas[x]);
            image.image.BinarizeAlpha();
            QCOMPARE(image.Sample(0, 0, 3), 0.0);
        }
        QCOMPARE(image.Sample(1, 0, 3), full);

        // A mask of lower depth is converted (16 bits for the float image). In a mask of higher depth, each byte counts
        // as a sample: here the low byte of the second sample applies to the third pixel.
        TestImage mask(kForms[form == k16uRgba ? k8uGray : k16uGray], 3, 1);
        mask.SetSample(form == k8uRgba ? 1 : 2, 0, 0, form == k8uRgba ? 51 : std::floor(mask.Form().Full() / 5));
        image.image.CombineAlpha(mask.image);
        QVERIFY2(std::abs(image.Sample(2, 0, 3) / full - 0.2) < 0.005, kForms[form].name);
        QCOMPARE(image.Sample(1, 0, 3), 0.0);
    }
    const struct {
        FormIndex form;
        double before[4], after[4]; // colors * full / alpha, integers truncated
    } rows[] = {{k8uRgba, {100, 50, 200, 128}, {199, 99, 255, 255}},
                {k16uRgba, {30000, 7, 40000, 32768}, {59999, 13, 65535, 65535}},
                {k32fRgba, {0.25, -0.125, 0.75, 0.5}, {0.5, -0.25, 1.5, 1}}};
    for (const auto &row : rows) {
        TestImage image(kForms[row.form], 2, 1, 1);
        for (int c = 0; c < 4; ++c) {
            image.SetSample(0, 0, c, row.before[c]);
            image.SetSample(1, 0, c, c == 3 ? 0 : row.before[c]);
        }
        image.image.ScaleByAlpha();
        for (int c = 0; c < 4; ++c) {
            QVERIFY2(image.Sample(0, 0, c) == row.after[c], kForms[row.form].name);
            QVERIFY2(image.Sample(1, 0, c) == (c == 3 ? 0 : row.before[c]), kForms[row.form].name);
        }
    }
}

void tst_KImageTone::histograms()
{
    TestImage image(kForms[k8uRgba], 4, 1);
    FillRow(image, {50, 100, 150, 100}, 0.2);
    KImage target;
    image.image.HistogramAuto(target);
    // Equalized: 6 of the 9 samples above 50 are 100, and 6 / 9 * 255 = 170.
    const int stretched[] = {0, 127, 255, 127}, equalized[] = {0, 170, 255, 170};
    for (int x = 0; x < 4; ++x) {
        const Case named("column", x);
        QCOMPARE(int(target.getData(x, 0)[1]), stretched[x]);
        QCOMPARE(int(target.getData(x, 0)[3]), 51);
    }
    image.image.HistogramEqualization(image.image); // in place
    for (int x = 0; x < 4; ++x) {
        const Case named("column", x);
        QCOMPARE(int(image.Sample(x, 0, 2)), equalized[x]);
    }

    TestImage flat(kForms[k8uRgb], 4, 1), deep(kForms[k16uRgb], 4, 1);
    FillRow(flat, {9, 9, 9, 9});
    flat.image.HistogramAuto(target);
    QCOMPARE(int(target.getData(3, 0)[2]), 0);
    FillRow(deep, {0, 257, 514, 257});
    deep.image.HistogramAuto(target);
    QCOMPARE(int(target.getData(2, 0)[0]), 2); // converted, not stretched
}

void tst_KImageTone::dynamicRange()
{
    // With the logarithmic mean of 1, 3, 3e-6, 3e-6, 3 and 0.5, L(v) = 0.18 / mean * v, and white is L(3).
    const double mean = std::pow(1 * 3 * 3e-6 * 3e-6 * 3 * 0.5, 1 / 6.0), scaled = 0.18 / mean, white = 3 * scaled;
    const std::pair<int, double> rows[] = {
        // Expected results for 1 in the range from 0 to 3.
        {KImage::HDR_LINEAR, 1 / 3.0},
        {KImage::HDR_LOGARITHMIC, 0.5},
        {KImage::HDR_REINHARD, scaled * (1 + scaled / (white * white)) / (1 + scaled)}};
    for (const auto &[mode, one] : rows) {
        const Case named("mode", mode);
        TestImage image(kForms[k32fRgba], 7, 1, 2);
        FillRow(image, {1, 3, 0, kNan, kInfinity, 0.5, 90});
        image.SetSample(6, 0, 3, 0); // transparent
        float low, high;
        image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/false);
        QCOMPARE(high, 90.0f);
        image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/true);
        QVERIFY(low == 0 && high == 3);
        image.image.HDR_QuickToneMapper(mode);
        const double wanted[] = {one, 1, 0, 0, 1};
        for (int x = 0; x < 5; ++x)
            QVERIFY2(std::abs(image.Sample(x, 0, 1) - wanted[x]) < 1e-5,
                     qPrintable(QString::number(image.Sample(x, 0, 1))));
        for (const double flat : {0.0, 7.0, kNan}) {
            FillRow(image, std::vector<double>(7, flat));
            image.image.HDR_QuickToneMapper(mode);
            QCOMPARE(image.Sample(0, 0, 0), 0.0);
        }
    }
}

void tst_KImageTone::colors()
{
    for (const TestForm &form : kForms) { // 0.8 * brightness 0.5, then contrast 2 about 0.5: 0.3
        const Case named(form.name);
        TestImage image(form, 1, 1, 1);
        FillRow(image, {std::round(0.8 * 255) / 255 * form.Full()}, 0.4);
        image.image.adjustColor(0.5f, 2.0f, 1.0f);
        QVERIFY(std::abs(image.Sample(0, 0, 0) / form.Full() - 0.3) < 0.003);
        if (form.channels == 4)
            QVERIFY(std::abs(image.Sample(0, 0, 3) / form.Full() - 0.4) < 0.003);
    }
    TestImage image(kForms[k8uRgb], 2, 1);
    image.SetSample(0, 0, 0, 200);
    image.SetSample(1, 0, 1, 100);
    KImage tinted;
    image.image.Colorize(tinted, QColor::fromHsv(350, 255, 255), QColor::fromHsv(10, 255, 255));
    const QColor light = QColor(tinted.getData(0, 0)[0], tinted.getData(0, 0)[1], tinted.getData(0, 0)[2]);
    QVERIFY(std::abs(light.hsvHue() - (350 + 20 * 200 / 255 - 360)) <= 2); // through red, not through cyan
    QCOMPARE(light.value(), 200);
    image.image.adjustColor(1, 1, 0);
    QCOMPARE(image.Sample(0, 0, 2), 60.0); // 0.299 * 200
    ImageSt gray;
    komp_num_threads = 3;
    image.image.GetGrey(gray);
    komp_num_threads = 1;
    QVERIFY(std::abs(gray.samples[1] - 59 / 255.0f) < 1e-6f); // 0.587 * 100, rounded
}

void tst_KImageTone::gaussian()
{
    for (const TestForm &form : kForms) { // a blurred edge is the integral of the normal distribution
        const Case named(form.name);
        TestImage image(form, 40, 1, 1);
        FillRow(image, std::vector<double>(40, form.Full()), 1);
        for (int x = 0; x < 20; ++x) {
            for (int c = 0; c < form.channels; ++c)
                image.SetSample(x, 0, c, 0);
        }
        KImage blurred;
        image.image.ConvolveGaussian(3, blurred);
        for (int x = 8; x < 32; ++x)
            QVERIFY(std::abs(Sample(blurred, x, form.channels - 1) - std::erfc(-(x - 19.5) / 3 / M_SQRT2) / 2) < 0.006);
    }
}

void tst_KImageTone::unsharpValues_data()
{
    QTest::addColumn<float>("radius");
    QTest::addColumn<float>("amount");
    const std::pair<float, float> rows[] = {
        {0.0f, 1}, {0.1f, 1},  {0.66f, 1}, {0.7f, 1},      {2.0f, -0.5f},
        {4.9f, 3}, {12.0f, 1}, {50.1f, 1}, {1.6666666f, 1}}; // 3 * radius is just below 5; a float would round to 5
    for (const auto &[radius, amount] : rows)
        QTest::addRow("radius %g, amount %g", double(radius), double(amount)) << radius << amount;
}

/// Compares a row with the definition: a truncated Gaussian kernel, applied to the row with its ends repeated.
void tst_KImageTone::unsharpValues()
{
    QFETCH(float, radius);
    QFETCH(float, amount);
    TestImage image(kForms[k32fGray], 401, 1);
    image.FillWithNoise(3);
    image.SetSample(200, 0, 0, 9); // reveals the truncation of the kernel
    const auto row = [](const TestImage &of) {
        std::vector<double> values;
        for (int x = 0; x < 401; ++x)
            values.push_back(of.Sample(x, 0, 0));
        return values;
    };
    KImage target;
    image.image.unsharp(radius, amount, target);
    std::vector<double> wanted = Sharpened(row(image), radius, amount);
    for (int x = 0; x < 401; ++x)
        QVERIFY2(std::abs(Sample(target, x, 0) - wanted[size_t(x)]) < 2e-5, qPrintable(QString::number(x)));

    image.image.unsharpFull(radius, amount / 50, target);
    wanted = Sharpened(row(image), 0.75f * radius, 10.0f * (amount / 50));
    wanted = Sharpened(Sharpened(wanted, 0.5f * radius, 0.4f * (amount / 50)), radius, 0.2f * (amount / 50));
    for (int x = 0; x < 401; ++x)
        QVERIFY2(std::abs(Sample(target, x, 0) - wanted[size_t(x)]) < 2e-5, qPrintable(QString::number(x)));
}

/// Colors of equal luminance stay unchanged; gray is sharpened like a gray image.
void tst_KImageTone::unsharpOfLuminance()
{
    TestImage image(kForms[k32fRgb], 60, 1), plane(kForms[k32fGray], 60, 1);
    for (int x = 0; x < 60; ++x) {
        const double colorful = x < 40 && x % 2 ? 0.5 : 0; // red and blue have weights of 0.299 and 0.114 in luminance
        const double values[] = {0.4 + 0.114 * colorful, 0.4, 0.4 - 0.299 * colorful};
        plane.SetSample(x, 0, 0, x < 50 ? 0.4 : 0.5);
        for (int c = 0; c < 3; ++c)
            image.SetSample(x, 0, c, x < 50 ? values[c] : 0.5);
    }
    KImage target, sharpPlane;
    image.image.unsharpY(1, 2, target);
    plane.image.unsharp(1, 2, sharpPlane);
    QVERIFY(std::abs(Sample(sharpPlane, 50, 0) - 0.5) > 0.05);
    for (int x = 0; x < 60; ++x) {
        for (int c = 0; c < 3; ++c) {
            const double wanted = x < 46 ? image.Sample(x, 0, c) : Sample(sharpPlane, x, 0);
            QVERIFY2(std::abs(Sample(target, x, c) - wanted) < 1e-4,
                     qPrintable(QStringLiteral("pixel %1, channel %2").arg(x).arg(c)));
        }
    }
}

void tst_KImageTone::unsharpProperties()
{
    for (int form = 0; form < kFormCount; ++form) {
        const Case named(kForms[form].name);
        TestImage image(kForms[form], 23, 11, 1);
        image.FillWithNoise(5, 0, 1);
        KImage same, sharp, other;
        image.image.unsharp(2, 0, same);
        image.image.unsharpY(2, 0, other);
        for (int y = 0; y < 11; ++y) {
            const size_t rowBytes = size_t(23 * kForms[form].channels * kForms[form].bits / 8);
            QVERIFY(std::memcmp(same.getData(0, y), image.image.getData(0, y), rowBytes) == 0);
            QVERIFY(std::memcmp(other.getData(0, y), image.image.getData(0, y), rowBytes) == 0);
        }
        if (kForms[form].channels != 4)
            continue;
        // A uniform area next to transparent pixels of extreme colors stays uniform; those pixels stay unchanged.
        for (const float radius : {1.5f, 9.0f}) { // the direct kernel, and the wide one
            for (int x = 0; x < 23; ++x) {
                for (int y = 0; y < 11; ++y) {
                    for (int c = 0; c < 4; ++c)
                        image.SetSample(x, y, c,
                                        x < 12                           ? kForms[form].Full() * (c == 3 ? 1 : 0.5)
                                            : c == 3                     ? 0
                                            : form == k32fRgba && y == 5 ? kNan
                                                                         : kForms[form].Full());
                }
            }
            image.image.unsharp(radius, 3, sharp);
            for (int x = 0; x < 23; ++x)
                QVERIFY2(std::abs(Sample(sharp, x, 1) - (x < 12 ? 0.5 : 1)) < 0.004, qPrintable(QString::number(x)));
        }
        image.FillWithNoise(5, 0, 1);
        for (int x = 0; x < 23 * 11; ++x)
            image.SetSample(x % 23, x / 23, 3, 0);
        for (const auto sharpen : {&KImage::unsharpFull, &KImage::unsharpY}) { // nothing is visible
            (image.image.*sharpen)(2, 1, sharp);
            QVERIFY(std::memcmp(sharp.getData(0, 0), image.image.getData(0, 0), 23) == 0);
        }
    }
}

QTEST_APPLESS_MAIN(tst_KImageTone)
#include "KImage_Tone_test.moc"
