#include "FisheyeFrame.h"
#include "TestImages.h"

#include "Case.h"
#include "KOmp.h"

#include <QPointF>
#include <QtTest>

namespace {

/// Frame of an equidistant 180-degree lens: gray, with bright spots in known directions (in degrees).
constexpr double kRadius = 150, kOffsetX = 7.3, kOffsetY = -5.6;
constexpr struct {
    double longitude, latitude;
} kSpots[] = {{0, 0}, {40, 0}, {-65, 10}, {20, 45}, {-30, -40}, {80, -20}};

void RenderSpots(TestImage &frame)
{
    const double middleX = (frame.image.width() - 1) / 2.0 + kOffsetX;
    const double middleY = (frame.image.height() - 1) / 2.0 + kOffsetY;
    for (int y = 0; y < frame.image.height(); ++y) {
        for (int x = 0; x < frame.image.width(); ++x) {
            double light = 0.3;
            for (const auto &spot : kSpots) {
                const double longitude = spot.longitude * M_PI / 180, latitude = spot.latitude * M_PI / 180;
                const double right = std::cos(latitude) * std::sin(longitude), up = std::sin(latitude);
                const double fromAxis = std::hypot(right, up);
                const double angle = std::acos(std::cos(latitude) * std::cos(longitude));
                const double scale = fromAxis > 0 ? kRadius * angle / (M_PI / 2) / fromAxis : 0;
                const double away = std::hypot(x - middleX - scale * right, y - middleY + scale * up);
                light += 0.6 * std::exp(-away * away / 2 / 2.25);
            }
            light *= std::clamp(kRadius + 0.5 - std::hypot(x - middleX, y - middleY), 0.0, 1.0);
            for (int c = 0; c < frame.Form().channels; ++c)
                frame.SetSample(x, y, c, (c == 3 ? 1 : light) * frame.Form().Full());
        }
    }
}

/// Returns the centroid, in pixels, of the light above gray near a position.
QPointF SpotNear(const TestImage &image, double x, double y)
{
    double sum = 0, sumX = 0, sumY = 0;
    for (int row = int(y) - 7; row <= int(y) + 8; ++row) {
        for (int column = int(x) - 7; column <= int(x) + 8; ++column) {
            const double light = qMax(0.0, image.Sample(column, row, 1) / image.Form().Full() - 0.35);
            sum += light;
            sumX += light * column;
            sumY += light * row;
        }
    }
    return {sumX / sum, sumY / sum};
}

} // namespace

class tst_KImageFisheye : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheCircle();
    void findsNoCircle();
    void sphere();
    void cleans();
    void paintsAndBends();
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

void tst_KImageFisheye::sphere()
{
    for (int i = 0; i < 6; ++i) {
        const Case named("i", i);
        const FormIndex form = i < 2 ? k8uRgb : i < 4 ? k16uGray : k32fRgba;
        TestImage frame(kForms[form], 400, 330, 1), target(kForms[form == k8uRgb ? k8uRgba : k32fRgba], 600, 300);
        RenderSpots(frame);
        if (i % 2)
            frame.image.CircularCateyeToSpherical(600, kRadius, kOffsetX, kOffsetY, target.image);
        else // detects the circle
            frame.image.CircularFiskeyeToSpherical(600, 180, target.image);
        for (const auto &spot : kSpots) {
            const QPointF wanted((spot.longitude / 360 + 0.5) * 600 - 0.5, (0.5 - spot.latitude / 180) * 300 - 0.5);
            const QPointF off = SpotNear(target, wanted.x(), wanted.y()) - wanted;
            QVERIFY2(std::hypot(off.x(), off.y()) < 0.5,
                     qPrintable(QStringLiteral("%1, %2").arg(off.x()).arg(off.y())));
        }
        QCOMPARE(target.Sample(10, 150, 3), 0.0); // outside the lens's field of view
        QCOMPARE(target.Sample(300, 10, 3), target.Form().Full());
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

void tst_KImageFisheye::paintsAndBends()
{
    for (const TestForm &form : kForms) {
        const Case named(form.name);
        TestImage image(form, 101, 81, 1);
        image.image.PutPoint(70, 50, 5, int(0xFF00FF00));
        image.image.PutPoint(1e30f, -1e30f, 4, -1); // far outside: must not crash
        const double green = form.channels == 1 ? 0.587 : 1;
        QVERIFY(std::abs(image.Sample(70, 50, form.channels == 1 ? 0 : 1) / form.Full() - green) < 0.003);
        QCOMPARE(image.Sample(70, 56, 0), 0.0);

        // The point at r, in half diagonals, moves to r (1 + k r^2), and back.
        const double unit = std::hypot(101, 81) / 2, r = std::hypot(20, 10) / unit, factor = 1 + 0.2 * r * r;
        const int channel = form.channels == 1 ? 0 : 1;
        const auto center = [&] {
            double sum = 0, sumX = 0;
            for (int i = 0; i < 101 * 81; ++i) {
                sum += image.Sample(i % 101, i / 101, channel);
                sumX += image.Sample(i % 101, i / 101, channel) * (i % 101);
            }
            return sumX / sum;
        };
        image.image.Optical(0.2f, 0, 0, 0, 0, 1);
        QVERIFY2(std::abs(center() - (50 + 20 * factor)) < 0.3, qPrintable(QString::number(center())));
        image.image.Optical(0.2f, 0, 0, 0, 0, 0);
        QVERIFY2(std::abs(center() - 70) < 0.2, qPrintable(QString::number(center())));
        if (form.channels == 1)
            continue;
        image.image.Optical2(0, 0, 0, 'G', 0.8f, 0); // samples at 0.8 times the radius
        QVERIFY2(std::abs(center() - (50 + 20 / 0.8)) < 0.3, qPrintable(QString::number(center())));
    }
    TestImage broken(kForms[k32fRgb], 9, 9, 1);
    broken.SetSample(4, 4, 0, std::nan(""));
    broken.image.PutPoint(4, 4, 3, int(0xFFFF0000));
    QCOMPARE(broken.Sample(4, 4, 0), 1.0); // overwrites even NaN
    TestImage image(kForms[k32fRgb], 9, 9, 1);
    image.FillWithNoise(1);
    image.image.Optical(-20, 0, 0, 0, 0, 1);
    QCOMPARE(image.Sample(6, 4, 0), 0.0);       // the only inverse is a negative radius, on the other side
    image.image.Optical(-9, 0, 0, 1e30f, 0, 1); // with the center far away: must not crash
}

QTEST_GUILESS_MAIN(tst_KImageFisheye)
#include "KImage_Fisheye_test.moc"
