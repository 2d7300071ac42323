// Copies, channel orders, depths, arithmetic and colour models on planes with foreign steps.
#include "ippi.h"

#include "Plane.h"

#include <algorithm>
#include <cmath>

using namespace primitives;

class tst_Pixels : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void statuses();
    void memory();
    void channelCopies();
    void setting();
    void swapInPlaceWithRepetition();
    void depthRoundTrips();
    void floatRange();
    void scaledArithmetic_data();
    void scaledArithmetic();
    void floatArithmeticInPlace();
    void comparisons();
    void thresholds();
    void hsv();
    void yccDefinition();
    void colorRoundTrips();
};

namespace {

constexpr Size kSize = {13, 5};

template <typename T, int C> auto Reader(Plane<T, C> &plane)
{
    return [&plane](int x, int y, int c) { return plane.At(x, y, c); };
}

} // namespace

void tst_Pixels::statuses()
{
    Plane<Ipp8u, 1> a(4, 4, 1), b(4, 4, 2), before = b;
    Ipp8u *null = nullptr;
    QVERIFY(ippiCopy_8u_C1R(null, 4, b.Data(), 4, {4, 4}) == Status::NullPointer);
    QVERIFY(ippiCopy_8u_C1R(a.Data(), 4, null, 4, {4, 4}) == Status::NullPointer);
    QVERIFY(ippiCopy_8u_C1R(a.Data(), 4, b.Data(), 4, {0, 4}) == Status::BadSize);
    QVERIFY(ippiCopy_8u_C1R(a.Data(), 4, b.Data(), 4, {4, -1}) == Status::BadSize);
    QVERIFY(ippiThreshold_Val_8u_C1R(a.Data(), 4, b.Data(), 4, {-4, 4}, 1, 2, Comparison::Less) == Status::BadSize);
    QVERIFY(ippiThreshold_Val_8u_C1R(a.Data(), 4, b.Data(), 4, {4, 4}, 1, 2, Comparison::Equal) == Status::BadArgument);
    QVERIFY(ippiAdd_8u_C1RSfs(a.Data(), 4, b.Data(), 4, b.Data(), 4, {4, 4}, -1) == Status::BadArgument);
    QVERIFY(ippiAdd_8u_C1RSfs(a.Data(), 4, null, 4, b.Data(), 4, {4, 4}, 1) == Status::NullPointer);
    CompareSamples(b.Size(), 1, Reader(b), Reader(before), 0);
    QVERIFY(b.HasGapsOf(before));
}

void tst_Pixels::memory()
{
    Step step = 0;
    Ipp16u *block = ippiMalloc_16u_C3(5, 7, &step);
    QVERIFY(block && step >= 30 && step % 64 == 0 && reinterpret_cast<quintptr>(block) % 64 == 0);
    std::fill_n(reinterpret_cast<unsigned char *>(block), step * 7, 1);
    ippiFree(block);
    QVERIFY(!ippiMalloc_8u_C1(0, 1, &step));
    QVERIFY(!ippiMalloc_8u_C1(1, -1, &step));
    constexpr int kMax = std::numeric_limits<int>::max();
    QVERIFY(!ippiMalloc_32f_C4(kMax, kMax, &step));
    // Rows of 2^33 + 64 bytes: the product is 2^64 and some gigabytes, which alone could be had.
    QVERIFY(!ippiMalloc_32f_C4((1 << 29) + 4, kMax - 14, &step));
    QVERIFY(!ippsMalloc_8u(std::numeric_limits<std::int64_t>::max()));
    ippsFree(nullptr);
}

void tst_Pixels::channelCopies()
{
    Plane<Ipp16u, 3> rgb(13, 5, 1);
    Plane<Ipp16u, 4> rgba(13, 5, 2), before = rgba;
    ippiCopy_16u_C3AC4R(rgb.Data(), rgb.StepBytes(), rgba.Data(), rgba.StepBytes(), kSize);
    CompareSamples(
        kSize, 4, Reader(rgba), [&](int x, int y, int c) { return c < 3 ? rgb.At(x, y, c) : before.At(x, y, 3); }, 0);
    QVERIFY(rgba.HasGapsOf(before));

    Plane<Ipp16u, 1> plane(13, 5, 3);
    ippiCopy_16u_C4C1R(rgba.Data() + 3, rgba.StepBytes(), plane.Data(), plane.StepBytes(), kSize);
    CompareSamples(
        kSize, 1, Reader(plane), [&](int x, int y, int) { return before.At(x, y, 3); }, 0);

    Plane<Ipp16u, 3> target(13, 5, 4), targetBefore = target;
    ippiCopy_16u_C1C3R(plane.Data(), plane.StepBytes(), target.Data() + 1, target.StepBytes(), kSize);
    CompareSamples(
        kSize, 3, Reader(target),
        [&](int x, int y, int c) { return c == 1 ? plane.At(x, y) : targetBefore.At(x, y, c); }, 0);
    QVERIFY(target.HasGapsOf(targetBefore));
}

void tst_Pixels::setting()
{
    Plane<Ipp32f, 4> image(13, 5, 1), before = image;
    const Ipp32f value[4] = {0.5f, 1, 2, 3};
    ippiSet_32f_C4R(value, image.Data(), image.StepBytes(), kSize);
    CompareSamples(
        kSize, 4, Reader(image), [&](int, int, int c) { return value[c]; }, 0);
    QVERIFY(image.HasGapsOf(before));

    Plane<Ipp32f, 1> plane(13, 5, 2), planeBefore = plane;
    Plane<Ipp8u, 1> mask(13, 5, 3);
    for (int x = 0; x < 13; ++x)
        mask.At(x, 2) = Ipp8u(x % 3);
    ippiSet_32f_C1MR(9.0f, plane.Data(), plane.StepBytes(), kSize, mask.Data(), mask.StepBytes());
    CompareSamples(
        kSize, 1, Reader(plane), [&](int x, int y, int) { return mask.At(x, y) ? 9.0f : planeBefore.At(x, y); }, 0);
    QVERIFY(plane.HasGapsOf(planeBefore));
}

void tst_Pixels::swapInPlaceWithRepetition()
{
    const int order[] = {2, 2, 0};
    Plane<Ipp8u, 4> image(13, 5, 1), before = image;
    ippiSwapChannels_8u_AC4R(image.Data(), image.StepBytes(), image.Data(), image.StepBytes(), kSize, order);
    CompareSamples(
        kSize, 4, Reader(image), [&](int x, int y, int c) { return before.At(x, y, c < 3 ? order[c] : 3); }, 0);
    QVERIFY(image.HasGapsOf(before));
    const int reversed[] = {3, 2, 1, 0};
    Plane<Ipp8u, 4> turned = before;
    ippiSwapChannels_8u_C4IR(turned.Data(), turned.StepBytes(), kSize, reversed);
    CompareSamples(
        kSize, 4, Reader(turned), [&](int x, int y, int c) { return before.At(x, y, 3 - c); }, 0);
    const int foreign[] = {0, 3, 1};
    Plane<Ipp8u, 3> three(2, 1, 1);
    QVERIFY(ippiSwapChannels_8u_C3R(three.Data(), three.StepBytes(), three.Data(), three.StepBytes(), {2, 1}, foreign)
            == Status::BadArgument);
}

void tst_Pixels::depthRoundTrips()
{
    // Every value of an integer depth comes back from the finer ones.
    Plane<Ipp8u, 1> bytes(256, 1), bytesBack(256, 1);
    Plane<Ipp16u, 1> words(256, 256), wordsBack(256, 256);
    Plane<Ipp32f, 1> floats(256, 256);
    for (int v = 0; v < 65536; ++v)
        words.At(v % 256, v / 256) = Ipp16u(v);
    for (int v = 0; v < 256; ++v)
        bytes.At(v, 0) = Ipp8u(v);

    ippiScale_8u32f_C1R(bytes.Data(), 0, floats.Data(), 0, {256, 1}, 0.0f, 1.0f);
    ippiScale_32f8u_C1R(floats.Data(), 0, bytesBack.Data(), 0, {256, 1}, 0.0f, 1.0f);
    CompareSamples({256, 1}, 1, Reader(bytesBack), Reader(bytes), 0);
    ippiScale_8u16u_C1R(bytes.Data(), 0, wordsBack.Data(), 0, {256, 1});
    ippiScale_16u8u_C1R(wordsBack.Data(), 0, bytesBack.Data(), 0, {256, 1}, kScaleFast);
    CompareSamples({256, 1}, 1, Reader(bytesBack), Reader(bytes), 0);

    const Step floatStep = floats.StepBytes(), wordStep = words.StepBytes();
    ippiConvert_16u32f_C1R(words.Data(), wordStep, floats.Data(), floatStep, words.Size());
    CompareSamples(words.Size(), 1, Reader(floats), Reader(words), 0);
    ippiDivC_32f_C1R(floats.Data(), floatStep, 65535.0f, floats.Data(), floatStep, words.Size());
    CompareSamples(
        words.Size(), 1, Reader(floats), [&](int x, int y, int) { return words.At(x, y) / 65535.0; }, 1e-7);
    ippiMulC_32f_C1R(floats.Data(), floatStep, 65535.0f, floats.Data(), floatStep, words.Size());
    ippiConvert_32f16u_C1R(floats.Data(), floatStep, wordsBack.Data(), wordStep, words.Size(), kRoundNear);
    CompareSamples(words.Size(), 1, Reader(wordsBack), Reader(words), 0);
    primitives::Scale16ToFloat<1>(words.Data(), wordStep, floats.Data(), floatStep, words.Size());
    QCOMPARE(floats.At(255, 255), 1.0f);
    primitives::ScaleFloatTo16<1>(floats.Data(), floatStep, wordsBack.Data(), wordStep, words.Size());
    CompareSamples(words.Size(), 1, Reader(wordsBack), Reader(words), 0);

    Plane<Ipp8u, 1> reduced(256, 256);
    ippiScale_16u8u_C1R(words.Data(), wordStep, reduced.Data(), reduced.StepBytes(), words.Size(), kScaleFast);
    CompareSamples(
        words.Size(), 1, Reader(reduced), [&](int x, int y, int) { return words.At(x, y) / 257.0; }, 0.51);
}

void tst_Pixels::floatRange()
{
    const Ipp32f values[] = {-3, -1, 0, 1, 3, 5};
    Ipp8u bytes[6];
    ippiScale_32f8u_C1R(values, 0, bytes, 0, {6, 1}, -1.0f, 3.0f);
    const Ipp8u wanted[] = {0, 0, 64, 128, 255, 255};
    QVERIFY(std::equal(bytes, bytes + 6, wanted));
    const Ipp8u ends[] = {0, 255};
    Ipp32f floats[2];
    ippiScale_8u32f_C1R(ends, 0, floats, 0, {2, 1}, -1.0f, 3.0f);
    QVERIFY(floats[0] == -1.0f && std::fabs(floats[1] - 3.0f) < 1e-6f);
    QVERIFY(ippiScale_32f8u_C1R(values, 0, bytes, 0, {6, 1}, 1.0f, 1.0f) == Status::BadArgument);
}

void tst_Pixels::scaledArithmetic_data()
{
    QTest::addColumn<int>("shift");
    for (int shift : {0, 1, 8, 24, 31})
        QTest::addRow("2^%d", shift) << shift;
}

void tst_Pixels::scaledArithmetic()
{
    QFETCH(int, shift);
    Plane<Ipp8u, 3> a(13, 5, 1), b(13, 5, 2), sum = b, difference = b, product = b;
    const auto wanted = [shift](double exact) { return std::clamp(exact / std::exp2(shift), 0.0, 255.0); };
    ippiAdd_8u_C3RSfs(a.Data(), a.StepBytes(), b.Data(), b.StepBytes(), sum.Data(), sum.StepBytes(), kSize, shift);
    ippiSub_8u_C3RSfs(a.Data(), a.StepBytes(), b.Data(), b.StepBytes(), difference.Data(), b.StepBytes(), kSize, shift);
    ippiMul_8u_C3RSfs(a.Data(), a.StepBytes(), b.Data(), b.StepBytes(), product.Data(), b.StepBytes(), kSize, shift);
    CompareSamples(
        kSize, 3, Reader(sum), [&](int x, int y, int c) { return wanted(b.At(x, y, c) + a.At(x, y, c)); }, 0.5);
    CompareSamples(
        kSize, 3, Reader(difference), [&](int x, int y, int c) { return wanted(b.At(x, y, c) - a.At(x, y, c)); }, 0.5);
    CompareSamples(
        kSize, 3, Reader(product), [&](int x, int y, int c) { return wanted(b.At(x, y, c) * a.At(x, y, c)); }, 0.5);
    QVERIFY(sum.HasGapsOf(b) && difference.HasGapsOf(b) && product.HasGapsOf(b));

    Plane<Ipp16u, 1> wide(13, 5, 3), other(13, 5, 4), widened = wide;
    ippiMul_16u_C1RSfs(wide.Data(), wide.StepBytes(), other.Data(), other.StepBytes(), widened.Data(),
                       widened.StepBytes(), kSize, shift);
    CompareSamples(
        kSize, 1, Reader(widened),
        [&](int x, int y, int) {
            return std::clamp(double(wide.At(x, y)) * other.At(x, y) / std::exp2(shift), 0.0, 65535.0);
        },
        0.5);
}

void tst_Pixels::floatArithmeticInPlace()
{
    Plane<Ipp32f, 1> a(13, 5, 1), b(13, 5, 2), result = b;
    const Step step = a.StepBytes();
    const auto check = [&](auto wanted) {
        CompareSamples(
            kSize, 1, Reader(result), [&](int x, int y, int) { return wanted(double(a.At(x, y)), double(b.At(x, y))); },
            1e-6);
        QVERIFY(result.HasGapsOf(b));
        result = b;
    };
    ippiSub_32f_C1R(a.Data(), step, result.Data(), step, result.Data(), step, kSize);
    check([](double first, double second) { return second - first; });
    ippiAdd_32f_C1R(a.Data(), step, result.Data(), step, result.Data(), step, kSize);
    check([](double first, double second) { return first + second; });
    ippiMul_32f_C1R(a.Data(), step, result.Data(), step, result.Data(), step, kSize);
    check([](double first, double second) { return first * second; });
    for (int i = 0; i < 13 * 5; ++i)
        a.At(i % 13, i / 13) = 0.5f + float(i);
    ippiDiv_32f_C1R(a.Data(), step, result.Data(), step, result.Data(), step, kSize);
    check([](double first, double second) { return second / first; });
}

void tst_Pixels::comparisons()
{
    const Ipp32f values[] = {1, 2, 3, std::nanf("")};
    const std::pair<Comparison, QByteArray> rows[] = {{Comparison::Less, QByteArray("\xff\0\0\0", 4)},
                                                      {Comparison::LessEqual, QByteArray("\xff\xff\0\0", 4)},
                                                      {Comparison::Equal, QByteArray("\0\xff\0\0", 4)},
                                                      {Comparison::GreaterEqual, QByteArray("\0\xff\xff\0", 4)},
                                                      {Comparison::Greater, QByteArray("\0\0\xff\0", 4)}};
    for (const auto &[how, wanted] : rows) {
        QByteArray mask(4, 'x');
        ippiCompareC_32f_C1R(values, 0, 2.0f, reinterpret_cast<Ipp8u *>(mask.data()), 0, {4, 1}, how);
        QCOMPARE(mask, wanted);
    }
}

void tst_Pixels::thresholds()
{
    Plane<Ipp16u, 1> words(13, 5, 1), low = words, high = words;
    ippiThreshold_Val_16u_C1R(words.Data(), words.StepBytes(), low.Data(), low.StepBytes(), kSize, 30000, 7,
                              Comparison::Less);
    ippiThreshold_Val_16u_C1R(high.Data(), high.StepBytes(), high.Data(), high.StepBytes(), kSize, 30000, 7,
                              Comparison::Greater);
    CompareSamples(
        kSize, 1, Reader(low), [&](int x, int y, int) { return words.At(x, y) < 30000 ? 7 : words.At(x, y); }, 0);
    CompareSamples(
        kSize, 1, Reader(high), [&](int x, int y, int) { return words.At(x, y) > 30000 ? 7 : words.At(x, y); }, 0);
}

void tst_Pixels::hsv()
{
    const struct {
        Ipp8u rgb[3];
        double hsv[3]; // degrees, shares
    } rows[] = {
        {{0, 0, 0}, {0, 0, 0}},      {{90, 90, 90}, {0, 0, 90 / 255.0}}, {{255, 0, 0}, {0, 1, 1}},
        {{255, 255, 0}, {60, 1, 1}}, {{0, 255, 0}, {120, 1, 1}},         {{0, 255, 255}, {180, 1, 1}},
        {{0, 0, 255}, {240, 1, 1}},  {{255, 0, 255}, {300, 1, 1}},       {{200, 150, 100}, {30, 0.5, 200 / 255.0}}};
    for (const auto &row : rows) {
        const Ipp8u in[4] = {row.rgb[0], row.rgb[1], row.rgb[2], 77};
        Ipp8u out[4] = {1, 2, 3, 4};
        ippiRGBToHSV_8u_AC4R(in, 4, out, 4, {1, 1});
        for (int c = 0; c < 3; ++c)
            QVERIFY(std::fabs(out[c] - row.hsv[c] * (c == 0 ? 255 / 360.0 : 255)) <= 0.501);
        QCOMPARE(int(out[3]), 4); // untouched
    }
}

void tst_Pixels::yccDefinition()
{
    // White, and blue, as published: 255 / 1.402, C1 = 0.886, C2 = -0.114.
    const Ipp8u rgb[] = {255, 255, 255, 0, 0, 255};
    Ipp8u ycc[6];
    ippiRGBToYCC_8u_C3R(rgb, 6, ycc, 6, {2, 1});
    const double wanted[] = {255 / 1.402, 156, 137, 0.114 * 255 / 1.402, 0.886 * 111.40 + 156, -0.114 * 135.64 + 137};
    for (int i = 0; i < 6; ++i)
        QVERIFY2(std::fabs(ycc[i] - wanted[i]) <= 0.501, qPrintable(QString::number(i)));
}

template <typename T, int C, typename Forth, typename Back> void RoundTrip(Forth forth, Back back, double tolerance)
{
    Plane<T, C> image(61, 31, 1), turned = image;
    forth(turned.Data(), turned.StepBytes(), turned.Data(), turned.StepBytes(), image.Size());
    back(turned.Data(), turned.StepBytes(), turned.Data(), turned.StepBytes(), image.Size());
    CompareSamples(image.Size(), C, Reader(turned), Reader(image), tolerance);
    QVERIFY(turned.HasGapsOf(image));
}

void tst_Pixels::colorRoundTrips()
{
    // Half a count of hue is 6 / 255 / 2 of the chroma, half a count of saturation half of a channel.
    RoundTrip<Ipp8u, 4>(ippiRGBToHSV_8u_AC4R, ippiHSVToRGB_8u_AC4R, 4.5);
    // Half a code of luma is 0.7 counts of each channel, half a code of chroma up to 1.15 more.
    RoundTrip<Ipp8u, 4>(ippiRGBToYCC_8u_AC4R, ippiYCCToRGB_8u_AC4R, 3);
    RoundTrip<Ipp16u, 3>(ippiRGBToYCC_16u_C3R, ippiYCCToRGB_16u_C3R, 3);
    RoundTrip<Ipp32f, 4>(ippiRGBToYCC_32f_AC4R, ippiYCCToRGB_32f_AC4R, 1e-5);
}

QTEST_APPLESS_MAIN(tst_Pixels)
#include "pixels_test.moc"
