#include "FisheyeFrame.h"
#include "TestImages.h"

#include "Case.h"
#include "KOmp.h"

#include <QtTest>

class tst_KImageFisheye : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheCircle();
    void findsNoCircle();
    void sphere();
    void cleans();
    void paints();
    void bends();
};

void tst_KImageFisheye::findsTheCircle()
{
    int found = 0;
    double sums[3] = {}; // of signed errors: radius, x, y
    for (unsigned seed = 0; seed < 100; ++seed) {
        const FisheyeFrame frame(480, 320, seed);
        double radius, x, y;
        frame.image.GetFisheyeRadiusOffset(radius, x, y);
        const double errors[] = {radius - frame.radius, x - frame.offsetX, y - frame.offsetY};
        const bool isFound =
            std::all_of(errors, errors + 3, [](double error) { return std::abs(error) <= 0.005 * 320; });
        found += isFound;
        for (int i = 0; i < 3; ++i)
            sums[i] += isFound ? errors[i] : 0;
        if (seed % 10 > 0)
            continue;
        // A nominal radius may be off by up to 20 %.
        for (const auto &[share, isNear] : {std::pair(1.18, true), {1.22, false}, {0.82, true}, {0.78, false}}) {
            double near, nearX, nearY;
            frame.image.GetCateyeRadiusOffset(near, nearX, nearY, radius / share);
            QVERIFY2((near > 0) == isNear, qPrintable(QString::number(share)));
        }
    }
    QVERIFY2(found >= 95, qPrintable(QString::number(found)));
    for (const double sum : sums) // no bias
        QVERIFY2(std::abs(sum) < 0.1 * found, qPrintable(QString::number(sum)));
}

void tst_KImageFisheye::findsNoCircle()
{
    const double nan = std::nan(""), infinity = INFINITY;
    const struct {
        int width, height;
        double low, high; // of the noise
    } rows[] = {{1, 1, 0, 1},     {500, 1, 0, 1},         {200, 150, 0, 0},     {200, 150, 1, 1},
                {200, 150, 0, 1}, {200, 150, 1e30, 1e38}, {200, 150, nan, nan}, {200, 150, infinity, infinity}};
    for (const auto &row : rows) {
        const Case named(row.width, row.height, row.low, row.high);
        for (const double alpha : {1.0, 0.0}) {
            TestImage frame(kForms[k32fRgba], row.width, row.height, 1);
            if (row.low < row.high)
                frame.FillWithNoise(3, row.low, row.high);
            frame.Fill([&](int x, int y, int c) {
                return c == 3 ? alpha : row.low < row.high ? frame.Sample(x, y, c) : row.low;
            });
            double radius = -1, x = -1, y = -1;
            frame.image.GetFisheyeRadiusOffset(radius, x, y);
            QVERIFY(radius == 0 && x == 0 && y == 0);
        }
    }
}

/// Compares each pixel with the equidistant lens, whose distance from the center is proportional to the angle.
void tst_KImageFisheye::sphere()
{
    for (int i = 0; i < 6; ++i) {
        const FormIndex form = i < 2 ? k8uRgb : i < 4 ? k16uGray : k32fRgba;
        const Case named(kForms[form].name, i % 2 ? "given circle, larger than the frame" : "detected circle");
        TestImage frame(kForms[form], 400, 330, 1), target(kForms[form == k8uRgb ? k8uRgba : k32fRgba], 120, 60);
        double radius = i % 2 ? 190 : 150, offsetX = 7.3, offsetY = -5.6, half = i % 2 ? M_PI / 2 : M_PI / 1.8;
        frame.Fill([&, offsetX, offsetY](int x, int y, int c) { // a circle filled with waves
            const double away = std::hypot(x - 199.5 - offsetX, y - 164.5 - offsetY);
            const double light = 0.6 + 0.1 * std::sin(x * 0.1 * (c + 1)) + 0.1 * std::sin(y * 0.08);
            return frame.Form().Full() * (c == 3 ? 0.5 : light * std::clamp(radius + 0.5 - away, 0.0, 1.0));
        });
        if (i % 2) {
            frame.image.CircularCateyeToSpherical(120, radius, offsetX, offsetY, target.image);
        } else {
            frame.image.GetFisheyeRadiusOffset(radius, offsetX, offsetY);
            QVERIFY(std::abs(radius - 150) < 0.5 && std::hypot(offsetX - 7.3, offsetY + 5.6) < 0.5);
            frame.image.CircularFiskeyeToSpherical(120, 200, target.image);
        }
        const auto wanted = [&](int x, int y, int c) {
            const double longitude = ((x + 0.5) / 120 - 0.5) * 2 * M_PI, latitude = (0.5 - (y + 0.5) / 60) * M_PI;
            const double right = std::cos(latitude) * std::sin(longitude), up = std::sin(latitude);
            const double angle = std::acos(std::cos(latitude) * std::cos(longitude));
            const double scale = radius * angle / half / std::hypot(right, up);
            const double fromX = 199.5 + offsetX + scale * right, fromY = 164.5 + offsetY - scale * up;
            if (angle > half || fromY < -0.5 || fromY > 329.5 || fromX > 399.5)
                return 0.0;
            const double full = frame.Form().Full(), newFull = target.Form().Full();
            return c == 3 && form != k32fRgba
                ? newFull
                : Bilinear(frame, fromX, fromY, form == k16uGray ? 0 : c) / full * newFull;
        };
        QCOMPARE(Difference(target, wanted, form == k8uRgb ? 0.6 : 2e-4), QString());
    }
}

void tst_KImageFisheye::cleans()
{
    for (const FormIndex form : {k8uGray, k16uRgba, k32fRgb}) {
        const Case named(kForms[form].name);
        TestImage frame(kForms[form], 41, 31, 3), noise(kForms[form], 41, 31, 3);
        frame.FillWithNoise(1, 0.25);
        noise.FillWithNoise(1, 0.25);
        komp_num_threads = 3;
        frame.image.CleanFisheyeData(12.5, 4, -3);
        komp_num_threads = 1;
        const auto wanted = [&](int x, int y, int c) {
            return std::hypot(x - 24, y - 12) > 12.5 ? 0.0 : noise.Sample(x, y, c);
        };
        QCOMPARE(Difference(frame, wanted), QString());
    }
}

void tst_KImageFisheye::paints()
{
    const double rgba[] = {1, 0.4, 0.2, 1}, luma = 0.299 + 0.587 * 0.4 + 0.114 * 0.2;
    for (const TestForm &form : kForms) {
        const Case named(form.name);
        TestImage image(form, 31, 23, 1), before(form, 31, 23, 1);
        image.FillWithNoise(1, 0, 1);
        before.FillWithNoise(1, 0, 1);
        image.image.PutPoint(19.3f, 4.6f, 5.25f, int(0xB3FF6633)); // cut off at the top; alpha is 179 / 255
        image.image.PutPoint(1e30f, -1e30f, 4, -1);                // far outside: must not crash
        const auto wanted = [&](int x, int y, int c) {
            const double cover = std::clamp(5.75 - std::hypot(x - 19.3, y - 4.6), 0.0, 1.0) * 179 / 255;
            return before.Sample(x, y, c) * (1 - cover) + (form.channels == 1 ? luma : rgba[c]) * form.Full() * cover;
        };
        QCOMPARE(Difference(image, wanted, form.IsFloat() ? 2e-6 : 0.6), QString());
        QVERIFY(image.HasGapsOf(before));
    }
    TestImage broken(kForms[k32fRgb], 9, 9, 1);
    broken.SetSample(4, 4, 0, std::nan(""));
    broken.image.PutPoint(4, 4, 3, int(0xFFFF0000));
    QCOMPARE(broken.Sample(4, 4, 0), 1.0); // overwrites even NaN
}

/// Compares each pixel with the definition: the radius r, in half diagonals, maps to
/// scale * r * (1 + k1 r^2 + k2 r^4 + k3 r^6), or the other way around.
void tst_KImageFisheye::bends()
{
    const struct {
        float k1, k2, k3, offsetX, offsetY;
        char channel; // argument of Optical2; 0: the row tests Optical
        float scale;
        int direction;
    } rows[] = {{0.2f, 0, 0, 0, 0, 0, 1, 1},
                {-0.15f, 0.1f, 0.05f, 3.5f, -2, 0, 1, 0},
                {-0.1f, 0.1f, 0.05f, -4, 2.5f, 0, 1, 1},
                {0, 0, 0, 0, 0, 'R', 0.8f, 0},
                {0.1f, -0.05f, 0.02f, 0, 0, 'G', 1.1f, 0},
                {0.1f, 0.05f, 0.02f, 0, 0, 'B', 0.9f, 1},
                {-0.02f, 0, 0, 0, 0, 'A', 0.8f, 1}};
    for (int i = 0; i < 7 * kFormCount; ++i) {
        const TestForm &form = kForms[i / 7];
        const auto &row = rows[i % 7];
        const Case named(form.name, "row", i % 7);
        const int only = row.channel ? int(QByteArray("RGBA").indexOf(row.channel)) : -1;
        if (only >= form.channels)
            continue;
        TestImage source(form, 41, 29, 1), image(form, 41, 29, 1);
        source.FillWithNoise(1, 0, 1);
        image.FillWithNoise(1, 0, 1);
        if (row.channel)
            image.image.Optical2(row.k1, row.k2, row.k3, row.channel, row.scale, row.direction);
        else
            image.image.Optical(row.k1, row.k2, row.k3, row.offsetX, row.offsetY, row.direction);
        const auto forth = [&row](double r) {
            const double r2 = r * r;
            return double(row.scale) * r * (1 + r2 * (double(row.k1) + r2 * (double(row.k2) + r2 * double(row.k3))));
        };
        const double centerX = 20 + double(row.offsetX), centerY = 14 + double(row.offsetY);
        const auto wanted = [&](int x, int y, int c) {
            const double r = std::hypot(x - centerX, y - centerY) / (std::hypot(41, 29) / 2);
            double from = forth(r), low = 0, high = 3;
            for (int step = 0; step < 60 && row.direction; ++step) // bisection
                (forth(from = (low + high) / 2) < r ? low : high) = from;
            const double factor = r > 0 ? from / r : 1;
            const double fromX = centerX + factor * (x - centerX), fromY = centerY + factor * (y - centerY);
            const bool isInside = fromX >= -0.5 && fromX <= 40.5 && fromY >= -0.5 && fromY <= 28.5;
            if (only >= 0 && c != only)
                return source.Sample(x, y, c);
            return isInside || only >= 0 ? Bilinear(source, fromX, fromY, c) : 0;
        };
        QCOMPARE(Difference(image, wanted, 1e-4 * form.Full() + (form.IsFloat() ? 0 : 0.5)), QString());
    }
    TestImage image(kForms[k32fRgb], 9, 9, 1);
    image.FillWithNoise(1);
    image.image.Optical(-20, 0, 0, 0, 0, 1);
    QCOMPARE(image.Sample(6, 4, 0), 0.0); // the only solution is a negative radius, on the other side of the center
    image.image.Optical(-9, 0, 0, 1e30f, 0, 1); // with the center far away: must not crash
}

QTEST_GUILESS_MAIN(tst_KImageFisheye)
#include "KImage_Fisheye_test.moc"
