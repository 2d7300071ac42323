#include "ippi.h"

#include "Case.h"
#include "Plane.h"

#include <cmath>

using namespace primitives;

class tst_Rotate : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void pastTheCache();
    void rightAngles();
    void rampAtAnyAngle();
    void refused();
};

namespace {

using Image = Plane<Ipp32f, 4>;

Status Rotate(Image &src, Image &dst, double angle, double shiftX, double shiftY)
{
    const Size from = src.Size(), to = dst.Size();
    return ippiRotate_32f_C4R(src.Data(), from, src.StepBytes(), {0, 0, from.width, from.height}, dst.Data(),
                              dst.StepBytes(), {0, 0, to.width, to.height}, angle, shiftX, shiftY, kCubic);
}

} // namespace

void tst_Rotate::pastTheCache()
{
    const std::pair<int, int> rows[] = {
        {608, 0}, {607, 4}, {607, 1}}; // rows aligned to cache lines; not aligned; pixels not aligned to 16 bytes
    for (const auto &[rowCount, offsetFloats] : rows) {
        const int width = 523, height = rowCount;
        Image image(width, height, 1);
        const Step step = height * 16;
        auto *block = reinterpret_cast<Ipp32f *>(ippsMalloc_8u(step * width + 16));
        Ipp32f *turned = block + offsetFloats;
        ippiRotate_32f_C4R(image.Data(), image.Size(), image.StepBytes(), {0, 0, width, height}, turned, step,
                           {0, 0, height, width}, 90.0, 0.0, width - 1, kCubic);
        CompareSamples(
            {height, width}, 4, [&](int x, int y, int c) { return turned[(y * height + x) * 4 + c]; },
            [&](int x, int y, int c) { return image.At(width - 1 - y, x, c); }, 0);
        ippsFree(block);
    }
}

void tst_Rotate::rightAngles()
{
    const struct {
        int quarters, shiftX, shiftY;
    } rows[] = {{0, 3, -2}, // leaves a margin
                {2, 30, 4}, {-2, 7, 29}, {1, 2, 40}, {5, 0, 43}, {3, 36, -3}, {1, 100000, 0}};
    for (int i = 0; i < 14; ++i) {
        const auto &row = rows[i % 7];
        const int width = i < 7 ? 13 : 47, height = i < 7 ? 5 : 33;
        const Case named("row", i % 7, width, height);
        Image image(width, height, 1), target(41, 44, 2), wanted = target;
        const auto cosine = static_cast<int>(std::lround(std::cos(row.quarters * M_PI / 2)));
        const auto sine = static_cast<int>(std::lround(std::sin(row.quarters * M_PI / 2)));
        for (int y = 0; y < height; ++y) { // target of each source pixel
            for (int x = 0; x < width; ++x) {
                const int toX = cosine * x + sine * y + row.shiftX, toY = -sine * x + cosine * y + row.shiftY;
                for (int c = 0; c < 4 && toX >= 0 && toX < 41 && toY >= 0 && toY < 44; ++c)
                    wanted.At(toX, toY, c) = image.At(x, y, c);
            }
        }
        QVERIFY(Rotate(image, target, row.quarters * 90.0, row.shiftX, row.shiftY) == Status::Ok);
        CompareSamples(target.Size(), 4, Reader(target), Reader(wanted), 0);
        QVERIFY(target.HasGapsOf(wanted));
    }
}

void tst_Rotate::rampAtAnyAngle()
{
    const double rows[][3] = {{30, 4, 20}, {-123.4, 25.5, 30.25}, {90, 0.5, 30}, {0, 0.25, -0.75}};
    constexpr int kSide = 31;
    constexpr float kUntouched = -77;
    const Rect part = {6, 1, kSide - 8, kSide - 4}; // of the source
    const auto ramp = [](double x, double y, int c) { return 2 * x - 3 * y + c; };
    for (const auto &[angle, shiftX, shiftY] : rows) {
        const Case named(angle, shiftX, shiftY);
        const double startX = shiftX, startY = shiftY; // lambdas can't capture structured bindings
        Image image(kSide, kSide), target(kSide, kSide);
        for (int i = 0; i < kSide * kSide * 4; ++i) {
            image.At(i / 4 % kSide, i / 4 / kSide, i % 4) = float(ramp(i / 4 % kSide, i / 4 / kSide, i % 4));
            target.At(i / 4 % kSide, i / 4 / kSide, i % 4) = kUntouched;
        }
        QVERIFY(ippiRotate_32f_C4R(image.Data(), image.Size(), image.StepBytes(), part, target.Data(),
                                   target.StepBytes(), {0, 0, kSide, kSide}, angle, shiftX, shiftY, kCubic)
                == Status::Ok);

        // Cubic interpolation reproduces a linear ramp, except near the edges, where pixels are repeated. Nothing is
        // written more than half a pixel beyond the centers of the edge pixels.
        const double cosine = std::cos(angle * M_PI / 180), sine = std::sin(angle * M_PI / 180);
        int inside = 0, holes = 0;
        CompareSamples(
            target.Size(), 4, Reader(target),
            [&](int x, int y, int c) {
                const double fromX = cosine * (x - startX) - sine * (y - startY);
                const double fromY = sine * (x - startX) + cosine * (y - startY);
                const double margin = std::min({fromX - part.x, fromY - part.y, part.x + part.width - 1 - fromX,
                                                part.y + part.height - 1 - fromY});
                if (margin < -0.501)
                    return double(kUntouched);
                inside += margin >= 1;
                holes += margin > -0.499 && target.At(x, y, c) == kUntouched;
                return margin >= 1 ? ramp(fromX, fromY, c) : double(target.At(x, y, c));
            },
            1e-3);
        QVERIFY(inside > 100);
        QCOMPARE(holes, 0);
    }
}

void tst_Rotate::refused()
{
    const double nan = std::nan(""), inf = std::numeric_limits<double>::infinity();
    const struct {
        double angle, shift;
        int width, interpolation;
        Status status;
    } rows[] = {{nan, 0, 3, 4, Status::BadArgument}, {90, inf, 3, 4, Status::BadArgument},
                {90, 1e30, 3, 4, Status::Ok}, // exceeds int: no pixel comes from the source
                {90, 1e12, 3, 4, Status::Ok},        {90, 0, 3, 2, Status::BadArgument}, // linear
                {90, 0, 0, 4, Status::BadSize}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        Image image(3, 3, 1), target(3, 3, 2), before = target;
        QVERIFY(ippiRotate_32f_C4R(image.Data(), {3, 3}, image.StepBytes(), {0, 0, row.width, 3}, target.Data(),
                                   target.StepBytes(), {0, 0, 3, 3}, row.angle, row.shift, 0.0,
                                   static_cast<Interpolation>(row.interpolation))
                == row.status);
        CompareSamples(target.Size(), 4, Reader(target), Reader(before), 0);
    }
}

QTEST_APPLESS_MAIN(tst_Rotate)
#include "rotate_test.moc"
