#include "TestImages.h"

#include "Case.h"
#include "ImageSt.h"
#include "KOmp.h"
#include "Table.h"

#include <QColor>
#include <QtTest>

#include <cmath>
#include <complex>
#include <limits>
#include <map>
#include <tuple>

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Fills a one-row image with gray pixels of the given values.
void FillRow(TestImage &image, const std::vector<double> &values)
{
    image.Fill([&](int x, int, int c) { return c == 3 ? image.Form().Full() : values[size_t(x)]; });
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
                        [](KImage &i) { i.GetGrey(s_gray); },
                        [](KImage &i) { i.GetFisheyeRadiusOffset(s_number, s_number, s_number); }};
    for (const Call &call : all) {
        const Case named("call", &call - all);
        QCOMPARE(thrown(-1, call), QStringLiteral("Invalid Bitmap"));
    }
    // Refused: a mask of the same depth, and images without alpha, floats, a circle or columns.
    QCOMPARE(thrown(k8uRgba, all[0]), QStringLiteral("Invalid Bitmap"));
    for (int i = 1; i <= 3; ++i) {
        const Case named("call", i);
        QCOMPARE(thrown(k8uRgb, all[i]), QStringLiteral("Invalid Bitmap"));
    }
    KImage narrow(0, 3, GFL_RGB, 8, true, nullptr, 0);
    QCOMPARE(Thrown([&] { narrow.GetGrey(s_gray); }), QStringLiteral("Invalid Bitmap"));

    const Call otherSize = [](KImage &i) { i.CombineAlpha(KImage(3, 1, GFL_GREY, 8, true, nullptr, 0)); };
    QCOMPARE(thrown(k16uRgba, otherSize), QStringLiteral("Invalid Parameter"));

    using A = const QVector<float> &; // arguments
    const std::map<std::string, void (*)(KImage &, A, KImage & target)> functions = {
        {"HDR_Normalize", [](KImage &i, A a, KImage &) { i.HDR_Normalize(a[0], a[1], int(a[2])); }},
        {"ConvolveGaussian", [](KImage &i, A a, KImage &to) { i.ConvolveGaussian(a[0], to); }},
        {"unsharp", [](KImage &i, A a, KImage &to) { i.unsharp(a[0], a[1], to); }},
        {"unsharpY", [](KImage &i, A a, KImage &to) { i.unsharpY(a[0], a[1], to); }},
        {"unsharpFull", [](KImage &i, A a, KImage &to) { i.unsharpFull(a[0], a[1], to); }},
        {"Colorize",
         [](KImage &i, A a, KImage &to) { i.Colorize(to, a[0] ? Qt::red : QColor(), a[1] ? Qt::red : QColor()); }},
        {"adjustColor", [](KImage &i, A a, KImage &) { i.adjustColor(a[0], a[1], a[2]); }},
        {"CleanFisheyeData", [](KImage &i, A a, KImage &) { i.CleanFisheyeData(a[0], a[1], a[2]); }},
        {"Cateye", [](KImage &i, A a, KImage &) { i.GetCateyeRadiusOffset(s_number, s_number, s_number, a[0]); }},
        {"CateyeToSphere",
         [](KImage &i, A a, KImage &to) { i.CircularCateyeToSpherical(int(a[0]), a[1], a[2], a[3], to); }},
        {"FisheyeToSphere", [](KImage &i, A a, KImage &to) { i.CircularFiskeyeToSpherical(int(a[0]), a[1], to); }},
        {"PutPoint", [](KImage &i, A a, KImage &) { i.PutPoint(a[0], a[1], a[2], 0); }},
        {"Optical", [](KImage &i, A a, KImage &) { i.Optical(a[0], a[1], a[2], a[3], a[4], 0); }},
        {"Optical2", [](KImage &i, A a, KImage &) { i.Optical2(a[0], a[1], a[2], char(a[3]), a[4], 0); }},
    };
    for (const QStringList &row : ReadTable(QStringLiteral(REFUSED_CALLS))) {
        const Case named(row);
        QVector<float> arguments;
        for (const QString &number : row[2].split(QLatin1Char(' ')))
            arguments.append(number.toFloat());
        KImage image, target;
        if (row[1] != QLatin1String("empty"))
            image.AllocBitmap(4, 1, GFL_RGB, row[1].toInt(), true, nullptr, 0);
        KImage &to = row[3] == QLatin1String("itself") ? image : target;
        QCOMPARE(Thrown([&] { functions.at(row[0].toStdString())(image, arguments, to); }), row[4]);
    }
}

void tst_KImageTone::alpha()
{
    for (const FormIndex form : {k8uRgba, k16uRgba, k32fRgba}) {
        const Case named(kForms[form].name);
        const double full = kForms[form].Full(), half = form == k32fRgba ? 0.5 : std::floor(full / 2) + 1;
        TestImage image(kForms[form], 3, 1, 3);
        for (const double low : {form == k32fRgba ? 0.49 : half - 1, form == k32fRgba ? kNan : 0}) {
            image.Fill([&](int x, int, int) { return x == 0 ? low : x == 1 ? half : full; });
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
        image.Fill([&row](int x, int, int c) { return x == 1 && c == 3 ? 0 : row.before[c]; });
        image.image.ScaleByAlpha();
        const auto wanted = [&row](int x, int, int c) { return x == 0 ? row.after[c] : c == 3 ? 0 : row.before[c]; };
        QCOMPARE(Difference(image, wanted), QString());
    }
}

void tst_KImageTone::histograms()
{
    KImage target;
    for (const FormIndex form : {k8uRgb, k8uRgba}) {
        const Case named(kForms[form].name);
        TestImage image(kForms[form], 37, 5, 1), before(kForms[form], 37, 5, 1);
        qint64 upTo[256] = {}; // number of color samples up to each value
        before.Fill([&upTo](int x, int y, int c) {
            const int v = c == 3 ? x : 40 + (x * x + y * y + c * 7) % 61 * 3;
            for (int value = c == 3 ? 256 : v; value < 256; ++value)
                ++upTo[value];
            return v;
        });
        before.image.CopyTo(image.image, 0, 0);
        const int low = 40, high = 220;
        QVERIFY(upTo[low] > 0 && upTo[high - 1] < upTo[high]);
        image.image.HistogramAuto(target);
        const auto stretched = [&](int x, int y, int c) {
            const int v = int(before.Sample(x, y, c));
            return c == 3 ? v : (v - low) * 255 / (high - low);
        };
        QCOMPARE(Difference(TestImage(kForms[form], target), stretched), QString());
        image.image.HistogramEqualization(image.image); // in place
        const auto equalized = [&](int x, int y, int c) {
            const double v = before.Sample(x, y, c);
            return c == 3 ? v : std::round(255.0 * double(upTo[int(v)] - upTo[low]) / double(upTo[255] - upTo[low]));
        };
        QCOMPARE(Difference(image, equalized), QString());
    }
    // HistogramAuto makes a flat picture black; HistogramEqualization leaves it as it is. Other depths and gray are
    // only converted.
    for (const auto &[form, value, stretched] : {std::tuple(k8uRgb, 9, 0), {k16uRgb, 514, 2}, {k8uGray, 2, 2}}) {
        const Case named(kForms[form].name);
        TestImage image(kForms[form], 3, 1);
        image.Fill([flat = value](int, int, int) { return flat; });
        image.image.HistogramAuto(target);
        QCOMPARE(int(*target.getData(2, 0)), stretched);
        image.image.HistogramEqualization(target);
        QCOMPARE(int(*target.getData(2, 0)), form == k8uRgb ? 9 : 2);
    }
}

void tst_KImageTone::dynamicRange()
{
    // Visible values from 0 to 3; the last pixel is transparent.
    const double colors[][3] = {{1, 3, 0.5}, {kNan, kNan, kNan}, {0, 0, 0}, {kInfinity, kInfinity, kInfinity},
                                {0.7, 2, 1}, {90, 90, 90}};
    double within[6][3], mean = 1;
    for (int x = 0; x < 6; ++x) {
        for (int c = 0; c < 3; ++c)
            within[x][c] = std::isnan(colors[x][c]) ? 0 : std::clamp(colors[x][c], 0.0, 3.0);
        mean *=
            x < 5 ? std::pow(std::max(LumaOf(within[x]), 3e-6), 0.2) : 1; // black counts as a millionth of the range
    }
    const double scale = 0.18 / mean, white = 3 * scale;
    for (const int mode : {KImage::HDR_LINEAR, KImage::HDR_LOGARITHMIC, KImage::HDR_REINHARD}) {
        const Case named("mode", mode);
        TestImage image(kForms[k32fRgba], 6, 1, 2);
        image.Fill([&](int x, int, int c) { return c < 3 ? colors[x][c] : x < 5 ? 0.25 : 0; });
        float low, high;
        image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/false);
        QVERIFY(low == 0 && high == 90);
        image.image.HDR_GetMinMax(low, high, /*onlyVisible=*/true);
        QVERIFY(low == 0 && high == 3);
        image.image.HDR_QuickToneMapper(mode);
        const auto wanted = [&](int x, int, int c) {
            if (c == 3)
                return x < 5 ? 0.25 : 0;
            const double v = within[x][c], luminance = scale * LumaOf(within[x]);
            return mode == KImage::HDR_LINEAR ? v / 3
                : mode == KImage::HDR_LOGARITHMIC
                ? std::log1p(v) / std::log1p(3)
                : std::min(v * scale * (1 + luminance / (white * white)) / (1 + luminance), 1.0);
        };
        QCOMPARE(Difference(image, wanted, 1e-5), QString());
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
    QCOMPARE(Difference(image, [](int x, int, int) { return x / 2.0; }), QString());
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
        const auto wanted = [&](int x, int y, int c) {
            double rgb[3];
            for (int k = 0; k < 3; ++k)
                rgb[k] = 0.5 + 1.25 * (0.75 * before.Sample(x, y, form.channels < 3 ? 0 : k) / form.Full() - 0.5);
            const double mixed = std::max(0.0, (rgb[c % 3] + LumaOf(rgb)) / 2);
            return c == 3 ? before.Sample(x, y, c) : form.IsFloat() ? mixed : std::min(mixed, 1.0) * form.Full();
        };
        QCOMPARE(Difference(image, wanted, form.IsFloat() ? 1e-6 : 0.51), QString());
    }
    // Tints lie on a straight line across the color wheel, here through red. An 8-bit hue is off by up to half a count,
    // which changes a channel by 3 counts.
    TestImage ramp(kForms[k8uGray], 256, 2);
    ramp.Fill([](int x, int, int) { return x; });
    KImage tinted;
    ramp.image.Colorize(tinted, QColor::fromHsv(330, 255, 255), QColor::fromHsv(60, 128, 255));
    const auto tint = [](int v, int, int c) {
        const auto from = std::polar(1.0, 330 * M_PI / 180), to = std::polar(128 / 255.0, 60 * M_PI / 180);
        const std::complex<double> point = from + v / 255.0 * (to - from);
        const double hue = std::arg(point) / (2 * M_PI);
        const QColor color = QColor::fromHsvF(hue < 0 ? hue + 1 : hue, std::abs(point), v / 255.0);
        const int rgba[] = {color.red(), color.green(), color.blue(), 255};
        return rgba[c];
    };
    QCOMPARE(Difference(TestImage(kForms[k8uRgba], tinted), tint, 4), QString());

    TestImage image(kForms[k8uRgb], 2, 3), plane(kForms[k32fGray], 2, 3);
    image.FillWithNoise(1);
    ImageSt gray;
    komp_num_threads = 3;
    image.image.GetGrey(gray);
    komp_num_threads = 1;
    QCOMPARE(QSize(gray.width, gray.height), QSize(2, 3));
    QCOMPARE(int(gray.samples.size()), 6);
    image.image.CopyTo(plane.image, 0, 0); // tested separately
    QCOMPARE(Difference(plane, [&](int x, int y, int) { return double(gray.samples[size_t(2 * y + x)]); }), QString());
}

void tst_KImageTone::gaussian()
{
    for (int i = 0; i < 2 * kFormCount; ++i) { // a blurred edge is the integral of the normal distribution
        const TestForm &form = kForms[i / 2];
        const Case named(form.name, "gap", i % 2);
        TestImage image(form, 40, 2, i % 2);
        image.Fill([&form](int x, int, int) { return x < 20 ? 0 : form.Full(); });
        KImage target;
        image.image.ConvolveGaussian(3, target);
        const auto blurred = [&form](int x, int, int) {
            return form.Full() * std::erfc(-(x - 19.5) / 3 / M_SQRT2) / 2;
        };
        QCOMPARE(Difference(TestImage(form, target), blurred, 0.006 * form.Full()), QString());
        image.image.ConvolveGaussian(0, target);
        QCOMPARE(Difference(TestImage(form, target), Reader(image)), QString());
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
        TestImage image(kForms[form], 401, 2); // equal rows
        image.FillWithNoise(3);
        image.Fill([&](int x, int, int c) {
            const double color = x == 200 ? 9 : image.Sample(x, 0, c); // 9 reveals the truncation of the kernel
            return c == 3 ? (isVisible(x) ? 0.5 : 0) : isVisible(x) ? color : 1e5;
        });
        KImage sharp, sharpLuma, full;
        image.image.unsharp(radius, amount, sharp);
        image.image.unsharpY(radius, amount, sharpLuma);
        image.image.unsharpFull(radius, amount / 50, full);
        std::vector<double> channels[4], luma, once[4], thrice[4];
        for (int x = 0; x < 401; ++x) {
            for (int c = 0; c < 4; ++c)
                channels[c].push_back(image.Sample(x, 0, c < kForms[form].channels ? c : 0));
            const double rgb[] = {channels[0].back(), channels[1].back(), channels[2].back()};
            luma.push_back(LumaOf(rgb));
        }
        const std::vector<double> lumaOnce = Sharpened(luma, isVisible, radius, amount);
        for (int c = 0; c < 4; ++c) {
            once[c] = Sharpened(channels[c], isVisible, radius, amount);
            thrice[c] = Sharpened(channels[c], isVisible, 0.75f * radius, 10.0f * (amount / 50));
            thrice[c] = Sharpened(thrice[c], isVisible, 0.5f * radius, 0.4f * (amount / 50));
            thrice[c] = Sharpened(thrice[c], isVisible, radius, 0.2f * (amount / 50));
        }
        const double tolerance = radius < 60 ? 5e-5 : 3e-3;
        const auto from = [](const std::vector<double>(&wanted)[4]) {
            return [&wanted](int x, int, int c) { return wanted[c][size_t(x)]; };
        };
        QCOMPARE(Difference(TestImage(kForms[form], sharp), from(once), tolerance), QString());
        QCOMPARE(Difference(TestImage(kForms[form], full), from(thrice), tolerance), QString());
        const auto shifted = [&](int k, int, int c) {
            const auto x = size_t(k);
            return channels[c][x] + (c < 3 ? lumaOnce[x] - luma[x] : 0);
        };
        QCOMPARE(Difference(TestImage(kForms[form], sharpLuma), shifted, tolerance), QString());
    }
}

/// Integers are sharpened like the same picture in floats, and rounded.
void tst_KImageTone::unsharpOfIntegers()
{
    for (const TestForm &form : kForms) {
        const Case named(form.name);
        TestImage image(form, 23, 11, 1);
        image.FillWithNoise(5, 0, 1);
        KImage target, floats, sharp;
        for (const auto sharpen : {&KImage::unsharp, &KImage::unsharpY}) { // amount 0 changes nothing
            (image.image.*sharpen)(2, 0, target);
            QCOMPARE(Difference(TestImage(form, target), Reader(image)), QString());
        }
        image.image.unsharp(2, 0.75f, target);
        image.image.Convert(floats, form.type, 32);
        floats.unsharp(2, 0.75f, sharp);
        const TestImage exact({"", form.type, 32, form.channels}, sharp);
        const auto wanted = [&](int x, int y, int c) {
            const double share = exact.Sample(x, y, c);
            return form.IsFloat() ? share : std::clamp(share, 0.0, 1.0) * form.Full();
        };
        QCOMPARE(Difference(TestImage(form, target), wanted, form.IsFloat() ? 0 : 0.51), QString());
    }
}

QTEST_APPLESS_MAIN(tst_KImageTone)
#include "KImage_Tone_test.moc"
