#include "Plane.h"

#include "Case.h"
#include "filter.h"
#include "gaussian.h"
#include "memory.h"
#include "stretch.h"

#include <memory>

using namespace primitives;

class tst_Gaussian : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void matchesConvolution();
    void refusedAndExtreme();
    void stretchMatchesFormula();
};

/// Compares with a convolution truncated at 6 sigma, on noise with an edge, with values from 0 to 1.
void tst_Gaussian::matchesConvolution()
{
    const struct {
        int width, height;
        float sigma;
        double tolerance;
    } rows[] = {{61, 43, 1.7f, 1e-3},   // direct
                {61, 43, 3.5f, 3e-3},   // the narrowest grid
                {150, 131, 4.8f, 3e-3}, // spacing 2
                {150, 131, 5.0f, 1e-3}, // spacing 3
                {37, 900, 8.1f, 1e-3},  // several blocks of nodes
                {23, 17, 30.0f, 1e-3},  // wider than the plane
                {1, 1, 7.0f, 1e-3},     {97, 1, 7.0f, 1e-3},
                {2500, 9, 3.0f, 1e-3},  {2500, 9, 6.0f, 1e-3}}; // wider than the parts that are summed at a time
    for (const auto &[width, height, sigma, tolerance] : rows) {
        const Case named(width, height, sigma, tolerance);
        Plane<Ipp32f, 1> image(width, height, 1), fast(width, height, 2), plain(width, height, 3);
        const Plane<Ipp32f, 1> before = fast;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                image.At(x, y) = (x + y > 40 ? 0.5f : 0.0f) + 0.25f * (image.At(x, y) + 0.5f);
        }
        QVERIFY(GaussianBlur(image.Data(), image.StepBytes(), fast.Data(), fast.StepBytes(), image.Size(), sigma)
                == Status::Ok);
        const int kernelSize = 2 * static_cast<int>(6 * sigma) + 1;
        std::int64_t bytes = 0;
        FilterGaussGetBufferSize(image.Size(), kernelSize, &bytes);
        const std::unique_ptr<void, void (*)(void *)> buffer(Allocate(bytes), Free);
        FilterGaussBorder(image.Data(), image.StepBytes(), plain.Data(), plain.StepBytes(), image.Size(), kernelSize,
                          sigma, kBorderReplicate, buffer.get());
        CompareSamples(
            image.Size(), 1, [&](int x, int y, int) { return fast.At(x, y); },
            [&](int x, int y, int) { return plain.At(x, y); }, tolerance);
        QVERIFY(fast.HasGapsOf(before));
    }
}

void tst_Gaussian::refusedAndExtreme()
{
    Plane<Ipp32f, 1> image(20, 20, 1), blurred(20, 20, 2);
    const auto blur = [&](float sigma) {
        return GaussianBlur(image.Data(), image.StepBytes(), blurred.Data(), blurred.StepBytes(), image.Size(), sigma);
    };
    QVERIFY(blur(0) == Status::BadArgument);
    QVERIFY(blur(std::nanf("")) == Status::BadArgument);
    QVERIFY(blur(1e30f) == Status::Ok);
    // So wide that only the repeated edges matter: the result is the mean of the four corners everywhere.
    const float corners = (image.At(0, 0) + image.At(19, 0) + image.At(0, 19) + image.At(19, 19)) / 4;
    QVERIFY(std::fabs(blurred.At(3, 11) - corners) < 1e-3f);
}

void tst_Gaussian::stretchMatchesFormula()
{
    std::vector<Ipp8u> src(4 * 259), got(src.size()), plain(src.size());
    for (std::size_t i = 0; i < src.size(); ++i)
        src[i] = static_cast<Ipp8u>(i % 4 == 3 ? i : i / 4); // every value in every color
    for (int low = 0; low < 256; low += 3) {
        for (int high = low; high < 256; ++high) {
            const Stretch stretch(static_cast<Ipp8u>(low), static_cast<Ipp8u>(high), 4);
            stretch.Run(src.data(), got.data(), 259);
            stretch.RunPlain(src.data(), plain.data(), 259);
            QVERIFY(got == plain);
            for (std::size_t i = 0; i < src.size(); ++i) {
                const int above = std::clamp(src[i] - low, 0, high - low);
                const int wanted = i % 4 == 3 ? src[i]
                    : high > low              ? above * 255 / (high - low)
                    : src[i] > low            ? 255
                                              : 0;
                if (got[i] != wanted)
                    QFAIL(qPrintable(QStringLiteral("%1 of %2 to %3: %4").arg(src[i]).arg(low).arg(high).arg(got[i])));
            }
        }
    }
    ColorRange range(4);
    range.Add(src.data() + 4 * 30, 67); // alpha spans 3 to 255, the colors only 30 to 96
    QCOMPARE(int(range.Low()), 30);
    QCOMPARE(int(range.High()), 96);
}

QTEST_APPLESS_MAIN(tst_Gaussian)
#include "gaussian_test.moc"
