#include "ippi.h"

#include "Case.h"
#include "Plane.h"

#include <algorithm>
#include <cmath>

using namespace primitives;

class tst_Filter : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void gaussian();
    void gaussianRefused();
    void median();
    void sobel();
};

void tst_Filter::gaussian()
{
    const struct {
        int width, height, kernelSize;
        float sigma;
    } rows[] = {{1, 1, 3, 1},
                {7, 5, 1, 1},
                {31, 17, 13, 2.5f},
                {2500, 2, 13, 2.5f},
                {5, 3, 41, 6}}; // a kernel wider than the plane
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        const int width = row.width, height = row.height, kernelSize = row.kernelSize;
        const float sigma = row.sigma;
        Plane<Ipp32f, 1> image(width, height, 1), blurred(width, height, 2);
        const Plane<Ipp32f, 1> before = blurred;

        std::int64_t specBytes = 0, bufferBytes = 0;
        QVERIFY(ippiFilterGaussianGetBufferSize(image.Size(), kernelSize, &specBytes, &bufferBytes) == Status::Ok);
        std::vector<unsigned char> specBlock(static_cast<std::size_t>(specBytes));
        std::vector<unsigned char> buffer(static_cast<std::size_t>(bufferBytes));
        auto *spec = reinterpret_cast<GaussianSpec *>(specBlock.data());
        QVERIFY(ippiFilterGaussianInit(kernelSize, sigma, kBorderReplicate, spec) == Status::Ok);
        QVERIFY(ippiFilterGaussianBorder_32f_C1R(image.Data(), image.StepBytes(), blurred.Data(), blurred.StepBytes(),
                                                 image.Size(), spec, buffer.data())
                == Status::Ok);

        // The two-dimensional definition, with edge pixels repeated.
        const int radius = kernelSize / 2;
        const auto weight = [sigma](int dx, int dy) { return std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma)); };
        double sum = 0;
        for (int i = 0; i < kernelSize * kernelSize; ++i)
            sum += weight(i % kernelSize - radius, i / kernelSize - radius);
        CompareSamples(
            image.Size(), 1, [&](int x, int y, int) { return blurred.At(x, y); },
            [&](int x, int y, int) {
                double value = 0;
                for (int i = 0; i < kernelSize * kernelSize; ++i) {
                    const int dx = i % kernelSize - radius, dy = i / kernelSize - radius;
                    value += weight(dx, dy) / sum
                        * double(image.At(std::clamp(x + dx, 0, width - 1), std::clamp(y + dy, 0, height - 1)));
                }
                return value;
            },
            1e-5);
        QVERIFY(blurred.HasGapsOf(before));
    }
}

void tst_Filter::gaussianRefused()
{
    const struct {
        int kernelSize;
        float sigma;
        Status status;
    } rows[] = {{4, 1, Status::BadSize},
                {-3, 1, Status::BadSize},
                {3, 0, Status::BadArgument},
                {3, std::nanf(""), Status::BadArgument}};
    alignas(8) unsigned char block[64];
    auto *spec = reinterpret_cast<GaussianSpec *>(block);
    for (const auto &row : rows) {
        const Case named("row", &row - rows);
        QVERIFY(ippiFilterGaussianInit(row.kernelSize, row.sigma, kBorderReplicate, spec) == row.status);
    }
    std::int64_t bytes = 7;
    QVERIFY(FilterGaussGetBufferSize({1, 1}, 2, &bytes) == Status::BadSize && bytes == 7);
    QVERIFY(ippiFilterGaussianInit(3, 1, kBorderReplicate, nullptr) == Status::NullPointer);
}

void tst_Filter::median()
{
    for (const int mask : {kMask3x3, kMask5x5}) {
        const Case named(mask);
        const int radius = mask / 2;
        Plane<Ipp16s, 1> image(21, 15, 1), filtered(21, 15, 2);
        const Plane<Ipp16s, 1> before = filtered;
        const Size inner = {21 - 2 * radius, 15 - 2 * radius};
        QVERIFY(ippiFilterMedianCross_16s_C1R(&image.At(radius, radius), image.StepBytes(),
                                              &filtered.At(radius, radius), filtered.StepBytes(), inner, MaskSize(mask))
                == Status::Ok);
        CompareSamples(
            inner, 1, [&](int x, int y, int) { return filtered.At(x + radius, y + radius); },
            [&](int x, int y, int) {
                std::vector<Ipp16s> cross;
                for (int d = -radius; d <= radius; ++d) {
                    cross.push_back(image.At(x + radius + d, y + radius));
                    if (d != 0)
                        cross.push_back(image.At(x + radius, y + radius + d));
                }
                std::sort(cross.begin(), cross.end());
                return cross[cross.size() / 2];
            },
            0);
        QVERIFY(filtered.HasGapsOf(before));
    }
    Plane<Ipp16s, 1> image(9, 9, 1), filtered(9, 9, 2);
    QVERIFY(ippiFilterMedianCross_16s_C1R(&image.At(4, 4), image.StepBytes(), &filtered.At(4, 4), filtered.StepBytes(),
                                          {1, 1}, MaskSize(7))
            == Status::BadArgument);
}

void tst_Filter::sobel()
{
    Plane<Ipp16s, 1> image(7, 6), edges(7, 6);
    for (int i = 0; i < 42; ++i) // a step of 100 below row 2; columns also differ, which must have no effect
        image.At(i % 7, i / 7) = static_cast<Ipp16s>((i / 7 > 2 ? 100 : 0) + 10 * (i % 7));
    ippiFilterSobelHoriz_16s_C1R(&image.At(1, 1), image.StepBytes(), &edges.At(1, 1), edges.StepBytes(), {5, 4});
    CompareSamples(
        {5, 4}, 1, [&](int x, int y, int) { return edges.At(x + 1, y + 1); },
        [](int, int y, int) { return y == 1 || y == 2 ? -400 : 0; }, 0);

    for (int x = 0; x < 7; ++x)
        image.At(x, 0) = 32767;
    ippiFilterSobelHoriz_16s_C1R(&image.At(1, 1), image.StepBytes(), &edges.At(1, 1), edges.StepBytes(), {5, 1});
    QCOMPARE(int(edges.At(3, 1)), 32767); // 4 times the difference of the rows, saturated
}

QTEST_APPLESS_MAIN(tst_Filter)
#include "filter_test.moc"
