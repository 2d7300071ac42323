#include "TestImages.h"

#include "Case.h"
#include "ImageSt.h"
#include "KOmp.h"

#include <QColor>
#include <QtTest>

#include <cmath>
#include <complex>
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

float FloatAt(const KImage &image, int x, int y, int channel)
{
    return reinterpret_cast<const float *>(image.getData(x, y))[channel];
}

double LumaOf(const double *rgb)
{
    return 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
}

/// Computes the unsharp mask of a row in double precision. Only visible pixels count, and only they change.
std::vector<double> Sharpened(const std::vector<double> &row, bool (*isVisible)(int x), float radius, float amount)
{
    const int reach = std::max(1, int(3.0 * double(radius))), last = int(row.size()) - 1;
    const double sigma = double(radius + 0.5f);
    std::vector<double> sharpened;
    for (int x = 0; x <= last; ++x) {
        double sum = 0, weights = 0;
        for (int d = -reach; d <= reach; ++d) {
            const int at = std::clamp(x + d, 0, last);
            const double weight = isVisible(at) ? std::exp(-d * d / (2 * sigma * sigma)) : 0;
            sum += weight * row[size_t(at)];
            weights += weight;
        }
        const double here = row[size_t(x)];
        sharpened.push_back(isVisible(x) ? here + double(amount) * (here - sum / weights) : here);
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
    void unsharpValues();
    void unsharpOfIntegers();
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
        {k8uRgb, [](KImage &i) { i.ConvolveGaussian(INFINITY, s_target); }},
        {k8uRgb, [](KImage &i) { i.unsharp(NAN, 1, s_target); }},
        {k8uRgb, [](KImage &i) { i.unsharp(-1, 1, s_target); }},
        {k8uRgb, [](KImage &i) { i.unsharp(1, NAN, s_target); }},
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
    KImage target;
    for (const FormIndex form : {k8uRgb, k8uRgba}) {
        const Case named(kForms[form].name);
        TestImage image(kForms[form], 37, 5, 1);
        image.FillWithNoise(1);
        qint64 upTo[256] = {}; // samples up to each value
        for (int i = 0; i < 37 * 5 * 3; ++i) {
            const int v = 40 + i * i % 61 * 3; // 40 to 220
            image.SetSample(i / 3 % 37, i / 3 / 37, i % 3, v);
            for (int value = v; value < 256; ++value)
                ++upTo[value];
        }
        const int channels = kForms[form].channels, low = 40, high = 40 + 60 * 3 - (upTo[219] == upTo[255] ? 3 : 0);
        TestImage before(kForms[form], 37, 5, 1);
        image.image.CopyTo(before.image, 0, 0);
        image.image.HistogramAuto(target);
        image.image.HistogramEqualization(image.image); // in place
        for (int i = 0; i < 37 * 5 * channels; ++i) {
            const int x = i / channels % 37, y = i / channels / 37, c = i % channels, v = int(before.Sample(x, y, c));
            QCOMPARE(int(target.getData(x, y)[c]), c == 3 ? v : (v - low) * 255 / (high - low));
            const qint64 above = upTo[v] - upTo[low], all = upTo[255] - upTo[low];
            QCOMPARE(int(image.Sample(x, y, c)), c == 3 ? v : int(std::lround(255.0 * double(above) / double(all))));
        }
    }
    TestImage flat(kForms[k8uRgb], 4, 1), deep(kForms[k16uRgb], 4, 1), gray(kForms[k8uGray], 4, 1);
    FillRow(flat, {9, 9, 9, 9});
    FillRow(deep, {0, 257, 514, 257});
    FillRow(gray, {0, 1, 2, 1});
    const struct {
        TestImage &image;
        void (KImage::*change)(KImage &);
        int result;
    } rows[] = {{flat, &KImage::HistogramAuto, 0}, {flat, &KImage::HistogramEqualization, 9},
                {deep, &KImage::HistogramAuto, 2}, {deep, &KImage::HistogramEqualization, 2}, // only converted
                {gray, &KImage::HistogramAuto, 2}, {gray, &KImage::HistogramEqualization, 2}};
    for (const auto &[image, change, result] : rows) {
        (image.image.*change)(target);
        QCOMPARE(int(*target.getData(2, 0)), result);
    }
}

void tst_KImageTone::dynamicRange()
{
    // Visible values from 0 to 3; the last pixel is transparent.
    const double colors[][3] = {{1, 3, 0.5}, {kNan, kNan, kNan}, {0, 0, 0}, {kInfinity, kInfinity, kInfinity},
                                {0.7, 2, 1}, {90, 90, 90}};
    const auto within = [&](int x, int c) { return std::isnan(colors[x][c]) ? 0 : std::clamp(colors[x][c], 0.0, 3.0); };
    double lumas[6], mean = 1;
    for (int x = 0; x < 6; ++x) {
        const double rgb[] = {within(x, 0), within(x, 1), within(x, 2)};
        lumas[x] = LumaOf(rgb);
        mean *= x < 5 ? std::pow(std::max(lumas[x], 3e-6), 1 / 5.0) : 1; // black counts as a millionth of the range
    }
    const double scale = 0.18 / mean, white = 3 * scale;
    for (const int mode : {KImage::HDR_LINEAR, KImage::HDR_LOGARITHMIC, KImage::HDR_REINHARD}) {
        TestImage image(kForms[k32fRgba], 6, 1, 2);
        for (int i = 0; i < 24; ++i)
            image.SetSample(i / 4, 0, i % 4, i % 4 < 3 ? colors[i / 4][i % 4] : i < 20 ? 0.25 : 0);
        float low, high;
        image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/false);
        QCOMPARE(high, 90.0f);
        image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/true);
        QVERIFY(low == 0 && high == 3);
        image.image.HDR_QuickToneMapper(mode);
        for (int i = 0; i < 24; ++i) {
            const Case named(mode, "pixel", i / 4, "channel", i % 4);
            const double v = i % 4 < 3 ? within(i / 4, i % 4) : 0, luminance = scale * lumas[i / 4];
            const double shoulder = (1 + luminance / (white * white)) / (1 + luminance);
            const double wanted = i % 4 == 3      ? (i < 20 ? 0.25 : 0)
                : mode == KImage::HDR_LINEAR      ? v / 3
                : mode == KImage::HDR_LOGARITHMIC ? std::log1p(v) / std::log1p(3)
                                                  : std::min(v * scale * shoulder, 1.0);
            QVERIFY2(std::abs(image.Sample(i / 4, 0, i % 4) - wanted) < 1e-5, qPrintable(QString::number(wanted)));
        }
        for (const double flat : {0.0, 7.0, kNan}) {
            FillRow(image, std::vector<double>(6, flat));
            image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/true);
            QVERIFY(low == (flat > 0 ? 7 : 0) && high == low);
            image.image.HDR_QuickToneMapper(mode);
            QCOMPARE(image.Sample(0, 0, 0), 0.0);
        }
    }
    TestImage image(kForms[k32fGray], 3, 1);
    FillRow(image, {0.5, 1, 2});
    image.image.HDR_Normalize(0.75f, 1.25f, KImage::HDR_LINEAR);
    QVERIFY(image.Sample(0, 0, 0) == 0 && image.Sample(1, 0, 0) == 0.5 && image.Sample(2, 0, 0) == 1);
}

void tst_KImageTone::colors()
{
    for (const TestForm &form : kForms) {
        const Case named(form.name);
        TestImage image(form, 23, 3, 1), before(form, 23, 3, 1);
        image.FillWithNoise(1);
        before.FillWithNoise(1);
        image.image.adjustColor(1, 1, 1); // changes nothing
        QVERIFY(image.Bytes() == before.Bytes());
        image.image.adjustColor(0.75f, 1.25f, 0.5f);
        for (int i = 0; i < 23 * 3; ++i) {
            const int x = i % 23, y = i / 23;
            double rgb[3];
            for (int c = 0; c < 3; ++c)
                rgb[c] = 0.5 + 1.25 * (0.75 * before.Sample(x, y, form.channels < 3 ? 0 : c) / form.Full() - 0.5);
            for (int c = 0; c < form.channels; ++c) {
                const double mixed = std::max(0.0, (rgb[c % 3] + LumaOf(rgb)) / 2),
                             got = image.Sample(x, y, c) / form.Full();
                const double wanted = c == 3 ? before.Sample(x, y, c) / form.Full()
                    : form.IsFloat()         ? mixed
                                             : std::min(mixed, 1.0);
                QVERIFY(std::abs(got - wanted) < (form.IsFloat() ? 1e-6 : 0.51 / form.Full()));
            }
        }
    }
    // Tints lie on a straight line across the color wheel: here through red, at less saturation. An 8-bit hue is off by
    // up to half a count, which changes a channel by 3 counts.
    TestImage ramp(kForms[k8uGray], 256, 2);
    for (int i = 0; i < 512; ++i)
        ramp.SetSample(i % 256, i / 256, 0, i % 256);
    KImage tinted;
    ramp.image.Colorize(tinted, QColor::fromHsv(330, 255, 255), QColor::fromHsv(60, 128, 255));
    for (int v = 0; v < 256; ++v) {
        const auto from = std::polar(1.0, 330 * M_PI / 180), to = std::polar(128 / 255.0, 60 * M_PI / 180);
        const std::complex<double> point = from + v / 255.0 * (to - from);
        const double hue = std::arg(point) / (2 * M_PI);
        const QColor wanted = QColor::fromHsvF(hue < 0 ? hue + 1 : hue, std::abs(point), v / 255.0);
        const unsigned char *got = tinted.getData(v, 1);
        const int off = std::max({std::abs(got[0] - wanted.red()), std::abs(got[1] - wanted.green()),
                                  std::abs(got[2] - wanted.blue()), 255 - got[3]});
        QVERIFY2(off <= 4, qPrintable(QStringLiteral("%1: %2").arg(v).arg(off)));
    }
    TestImage image(kForms[k8uRgb], 2, 3);
    image.FillWithNoise(1);
    ImageSt gray;
    komp_num_threads = 3;
    image.image.GetGrey(gray);
    komp_num_threads = 1;
    QCOMPARE(QSize(gray.width, gray.height), QSize(2, 3));
    QCOMPARE(int(gray.samples.size()), 6);
    for (int i = 0; i < 6; ++i) {
        const double rgb[] = {image.Sample(i % 2, i / 2, 0), image.Sample(i % 2, i / 2, 1),
                              image.Sample(i % 2, i / 2, 2)};
        QVERIFY(std::abs(double(gray.samples[size_t(i)]) - LumaOf(rgb) / 255) < 0.51 / 255);
    }
}

void tst_KImageTone::gaussian()
{
    for (const TestForm &form : kForms) { // a blurred edge is the integral of the normal distribution
        const Case named(form.name);
        TestImage image(form, 40, 2, 1), blurred(form, 40, 2, 1);
        for (int i = 0; i < 80 * form.channels; ++i)
            image.SetSample(i / form.channels % 40, i / form.channels / 40, i % form.channels,
                            i / form.channels % 40 < 20 ? 0 : form.Full());
        KImage target;
        image.image.ConvolveGaussian(3, target);
        target.CopyTo(blurred.image, 0, 0);
        for (int i = 0; i < 80 * form.channels; ++i) {
            const int x = i / form.channels % 40;
            const double wanted = std::erfc(-(x - 19.5) / 3 / M_SQRT2) / 2;
            QVERIFY(std::abs(blurred.Sample(x, i / form.channels / 40, i % form.channels) / form.Full() - wanted)
                    < 0.006);
        }
        image.image.ConvolveGaussian(0, target);
        target.CopyTo(blurred.image, 0, 0);
        QVERIFY(blurred.Bytes() == image.Bytes());
    }
}

/// Compares rows with the definition: a truncated Gaussian kernel, applied to the row with its ends repeated.
void tst_KImageTone::unsharpValues()
{
    const std::pair<float, float> rows[] = {
        {0.0f, 1}, {0.1f, 1},  {0.66f, 1}, {0.7f, 1},       {2.0f, -0.5f},
        {4.9f, 3}, {12.0f, 1}, {50.1f, 1}, {1.6666666f, 1}, // 3 * radius is just below 5; a float would round to 5
        {60.0f, 1}}; // wider kernels are replaced by a Gaussian of the same variance
    for (int i = 0; i < 30; ++i) {
        const auto &[radius, amount] = rows[i % 10];
        const FormIndex form = i < 10 ? k32fGray : i < 20 ? k32fRgb : k32fRgba;
        const Case named(kForms[form].name, radius, amount);
        const auto isVisible =
            form == k32fRgba ? [](int x) { return x % 7 > 2 && (x < 100 || x > 140); } : [](int) { return true; };
        const int channels = kForms[form].channels;
        TestImage image(kForms[form], 401, 2); // equal rows
        image.FillWithNoise(3);
        for (int k = 0; k < 802 * channels; ++k) {
            const int x = k / channels % 401, c = k % channels;
            const double color = x == 200 ? 9 : image.Sample(x, 0, c); // 9 reveals the truncation of the kernel
            image.SetSample(x, k / channels / 401, c, c < 3 ? (isVisible(x) ? color : 1e3) : isVisible(x) ? 0.5 : 0);
        }
        KImage sharp, sharpLuma, full;
        image.image.unsharp(radius, amount, sharp);
        image.image.unsharpY(radius, amount, sharpLuma);
        image.image.unsharpFull(radius, amount / 50, full);
        std::vector<double> rgb[3], luma;
        for (int x = 0; x < 401; ++x) {
            for (int c = 0; c < 3; ++c)
                rgb[c].push_back(image.Sample(x, 0, channels < 3 ? 0 : c));
            luma.push_back(0.299 * rgb[0].back() + 0.587 * rgb[1].back() + 0.114 * rgb[2].back());
        }
        const std::vector<double> lumaWanted = Sharpened(luma, isVisible, radius, amount);
        for (int c = 0; c < qMin(channels, 3); ++c) {
            const std::vector<double> wanted = Sharpened(rgb[c], isVisible, radius, amount);
            std::vector<double> wantedFull = Sharpened(rgb[c], isVisible, 0.75f * radius, 10.0f * (amount / 50));
            wantedFull = Sharpened(wantedFull, isVisible, 0.5f * radius, 0.4f * (amount / 50));
            wantedFull = Sharpened(wantedFull, isVisible, radius, 0.2f * (amount / 50));
            for (int k = 0; k < 802; ++k) {
                const int y = k / 401;
                const auto x = size_t(k % 401);
                const Case pixel(x, y, c);
                const std::pair<const KImage &, double> results[] = {
                    {sharp, wanted[x]}, {full, wantedFull[x]}, {sharpLuma, rgb[c][x] + lumaWanted[x] - luma[x]}};
                for (const auto &[result, value] : results) {
                    const double tolerance = !isVisible(int(x)) ? 0 : radius < 60 ? 5e-5 : 3e-3;
                    QVERIFY(std::abs(double(FloatAt(result, int(x), y, c)) - value) <= tolerance);
                    if (channels == 4)
                        QCOMPARE(double(FloatAt(result, int(x), y, 3)), image.Sample(int(x), y, 3));
                }
            }
        }
    }
}

/// Integers are sharpened like the same picture in floats, and rounded: twice, if only luminance is sharpened.
void tst_KImageTone::unsharpOfIntegers()
{
    for (const TestForm &form : kForms) {
        const Case named(form.name);
        TestImage image(form, 23, 11, 1), sharp(form, 23, 11, 1);
        image.FillWithNoise(5, 0, 1);
        sharp.FillWithNoise(5, 0, 1); // the same gaps between rows
        for (const auto sharpen : {&KImage::unsharp, &KImage::unsharpY}) {
            KImage target, floats, wanted;
            (image.image.*sharpen)(2, 0, target);
            target.CopyTo(sharp.image, 0, 0);
            QVERIFY(sharp.Bytes() == image.Bytes()); // amount 0 changes nothing
            (image.image.*sharpen)(2, 0.75f, target);
            target.CopyTo(sharp.image, 0, 0);
            image.image.Convert(floats, form.type, 32);
            (floats.*sharpen)(2, 0.75f, wanted);
            for (int i = 0; i < 23 * 11 * form.channels; ++i) {
                const int x = i / form.channels % 23, y = i / form.channels / 23, c = i % form.channels;
                const float *rgb = reinterpret_cast<const float *>(wanted.getData(x, y));
                if (sharpen == &KImage::unsharpY && form.channels > 1 && rgb[0] + 2 * rgb[1] + rgb[2] / 3 < 0.1f)
                    continue; // integers can't represent negative luminance
                const double exact = double(rgb[c]), inRange = form.IsFloat() ? exact : std::clamp(exact, 0.0, 1.0);
                const double off = form.IsFloat() ? 0 : sharpen == &KImage::unsharp || form.channels < 3 ? 0.51 : 6;
                QVERIFY2(std::abs(sharp.Sample(x, y, c) - inRange * form.Full()) <= off,
                         qPrintable(QStringLiteral("%1, %2 in channel %3: %4 instead of %5")
                                        .arg(x)
                                        .arg(y)
                                        .arg(c)
                                        .arg(sharp.Sample(x, y, c))
                                        .arg(inRange * form.Full())));
            }
            sharp.FillWithNoise(5, 0, 1);
        }
    }
}

QTEST_APPLESS_MAIN(tst_KImageTone)
#include "KImage_Tone_test.moc"
