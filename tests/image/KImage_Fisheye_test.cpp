#include "FisheyeFrame.h"
#include "TestImages.h"

#include "Case.h"
#include "KOmp.h"

#include <QtTest>

namespace {

/// Fills the circle at an offset from the middle with waves that differ between channels.
void RenderCircle(TestImage &frame, double radius, double offsetX, double offsetY)
{
    const double middleX = (frame.image.width() - 1) / 2.0 + offsetX;
    const double middleY = (frame.image.height() - 1) / 2.0 + offsetY;
    for (int y = 0; y < frame.image.height(); ++y) {
        for (int x = 0; x < frame.image.width(); ++x) {
            const double inside = std::clamp(radius + 0.5 - std::hypot(x - middleX, y - middleY), 0.0, 1.0);
            for (int c = 0; c < frame.Form().channels; ++c) {
                const double light = 0.6 + 0.1 * std::sin(x * 0.1 * (c + 1)) + 0.1 * std::sin(y * 0.08);
                frame.SetSample(x, y, c, (c == 3 ? 0.5 : inside * light) * frame.Form().Full());
            }
        }
    }
}

} // namespace

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
    for (unsigned seed = 0; seed < 100; ++seed) {
        const FisheyeFrame frame(480, 320, seed);
        double radius, x, y;
        frame.image.GetFisheyeRadiusOffset(radius, x, y);
        const double off =
            std::max({std::abs(radius - frame.radius), std::abs(x - frame.offsetX), std::abs(y - frame.offsetY)});
        found += off <= 0.005 * 320;
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
            for (int i = 0; i < row.width * row.height * 4; ++i) {
                if (i % 4 == 3 || !(row.low < row.high))
                    frame.SetSample(i / 4 % row.width, i / 4 / row.width, i % 4, i % 4 == 3 ? alpha : row.low);
            }
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
        RenderCircle(frame, radius, offsetX, offsetY);
        if (i % 2) {
            frame.image.CircularCateyeToSpherical(120, radius, offsetX, offsetY, target.image);
        } else {
            frame.image.GetFisheyeRadiusOffset(radius, offsetX, offsetY);
            QVERIFY(std::abs(radius - 150) < 0.5 && std::hypot(offsetX - 7.3, offsetY + 5.6) < 0.5);
            frame.image.CircularFiskeyeToSpherical(120, 200, target.image);
        }
        for (int k = 0; k < 120 * 60 * 4; ++k) {
            const int x = k / 4 % 120, y = k / 4 / 120, c = k % 4;
            const double longitude = ((x + 0.5) / 120 - 0.5) * 2 * M_PI, latitude = (0.5 - (y + 0.5) / 60) * M_PI;
            const double right = std::cos(latitude) * std::sin(longitude), up = std::sin(latitude);
            const double angle = std::acos(std::cos(latitude) * std::cos(longitude));
            const double scale = radius * angle / half / std::hypot(right, up);
            const double fromX = 199.5 + offsetX + scale * right, fromY = 164.5 + offsetY - scale * up;
            const bool isInside = angle <= half && fromY >= -0.5 && fromY <= 329.5 && fromX <= 399.5;
            const double share = c == 3 && frame.Form().channels < 4
                ? 1
                : Bilinear(frame, fromX, fromY, qMin(c, frame.Form().channels - 1)) / frame.Form().Full();
            const double got = target.Sample(x, y, c) / target.Form().Full();
            QVERIFY2(std::abs(got - (isInside ? share : 0)) < (form == k8uRgb ? 2.5e-3 : 2e-4),
                     qPrintable(QStringLiteral("%1, %2 in channel %3: %4").arg(x).arg(y).arg(c).arg(got)));
        }
    }
}

void tst_KImageFisheye::cleans()
{
    for (const FormIndex form : {k8uGray, k16uRgba, k32fRgb}) {
        const Case named(kForms[form].name);
        TestImage frame(kForms[form], 41, 31, 3), threaded(kForms[form], 41, 31, 3);
        frame.FillWithNoise(1, 0.25);
        threaded.FillWithNoise(1, 0.25);
        frame.image.CleanFisheyeData(12.5, 4, -3);
        komp_num_threads = 3;
        threaded.image.CleanFisheyeData(12.5, 4, -3);
        komp_num_threads = 1;
        QVERIFY(frame.Bytes() == threaded.Bytes());
        TestImage noise(kForms[form], 41, 31, 3);
        noise.FillWithNoise(1, 0.25);
        for (int i = 0; i < 41 * 31; ++i) {
            const int x = i % 41, y = i / 41;
            const bool isOutside = std::hypot(x - 24, y - 12) > 12.5;
            for (int c = 0; c < kForms[form].channels; ++c)
                QVERIFY2(frame.Sample(x, y, c) == (isOutside ? 0.0 : noise.Sample(x, y, c)),
                         qPrintable(QStringLiteral("%1, %2 in channel %3").arg(x).arg(y).arg(c)));
        }
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
        for (int i = 0; i < 31 * 23 * form.channels; ++i) {
            const int x = i / form.channels % 31, y = i / form.channels / 31, c = i % form.channels;
            const double cover = std::clamp(5.75 - std::hypot(x - 19.3, y - 4.6), 0.0, 1.0) * 179 / 255;
            const double old = before.Sample(x, y, c), color = form.channels == 1 ? luma : rgba[c];
            QVERIFY(std::abs(image.Sample(x, y, c) - (old + (color * form.Full() - old) * cover))
                    < (form.IsFloat() ? 2e-6 : 0.6));
            before.SetSample(x, y, c, image.Sample(x, y, c));
        }
        QVERIFY(image.Bytes() == before.Bytes());
    }
    TestImage broken(kForms[k32fRgb], 9, 9, 1);
    broken.SetSample(4, 4, 0, std::nan(""));
    broken.image.PutPoint(4, 4, 3, int(0xFFFF0000));
    QCOMPARE(broken.Sample(4, 4, 0), 1.0); // overwrites even NaN
}

/// Compares each pixel with the definition: the radius r, in half diagonals, maps to scale r (1 + k1 r^2 + k2 r^4 + k3
/// r^6), or that to r.
void tst_KImageFisheye::bends()
{
    const struct {
        float k1, k2, k3, offsetX, offsetY;
        char channel; // of Optical2; 0: Optical
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
            const double k1 = double(row.k1), k2 = double(row.k2), k3 = double(row.k3), r2 = r * r;
            return double(row.scale) * r * (1 + k1 * r2 + k2 * r2 * r2 + k3 * r2 * r2 * r2);
        };
        const double centerX = 20 + double(row.offsetX), centerY = 14 + double(row.offsetY);
        for (int k = 0; k < 41 * 29 * form.channels; ++k) {
            const int x = k / form.channels % 41, y = k / form.channels / 41, c = k % form.channels;
            const double r = std::hypot(x - centerX, y - centerY) / (std::hypot(41, 29) / 2);
            double from = forth(r), low = 0, high = 3;
            for (int step = 0; step < 60 && row.direction; ++step) // bisection
                (forth(from = (low + high) / 2) < r ? low : high) = from;
            const double factor = r > 0 ? from / r : 1;
            const double fromX = centerX + factor * (x - centerX), fromY = centerY + factor * (y - centerY);
            const bool isInside = fromX >= -0.5 && fromX <= 40.5 && fromY >= -0.5 && fromY <= 28.5;
            const double wanted = only >= 0 && c != only ? source.Sample(x, y, c)
                : isInside || only >= 0                  ? Bilinear(source, fromX, fromY, c)
                                                         : 0;
            QVERIFY2(std::abs(image.Sample(x, y, c) - wanted) < 1e-4 * form.Full() + (form.IsFloat() ? 0 : 0.5),
                     qPrintable(QStringLiteral("%1, %2 in channel %3").arg(x).arg(y).arg(c)));
        }
    }
    TestImage image(kForms[k32fRgb], 9, 9, 1);
    image.FillWithNoise(1);
    image.image.Optical(-20, 0, 0, 0, 0, 1);
    QCOMPARE(image.Sample(6, 4, 0), 0.0);       // the only inverse is a negative radius, on the other side
    image.image.Optical(-9, 0, 0, 1e30f, 0, 1); // with the center far away: must not crash
}

QTEST_GUILESS_MAIN(tst_KImageFisheye)
#include "KImage_Fisheye_test.moc"
