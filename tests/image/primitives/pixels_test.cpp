// Cases that the tests of KImage don't cover: rejected arguments, memory, comparisons and color models.
#include "ippi.h"

#include "Case.h"
#include "Plane.h"
#include "gaussian.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

using namespace primitives;

class tst_Pixels : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void statuses();
    void missingPointers();
    void memory();
    void comparisons();
    void hsv();
    void yccDefinition();
    void colorRoundTrips();
};

void tst_Pixels::statuses()
{
    Plane<Ipp8u, 1> a(4, 4, 1), b(4, 4, 2), before = b;
    Ipp8u *null = nullptr;
    QVERIFY(ippiCopy_8u_C1R(a.Data(), 4, b.Data(), 4, {4, -1}) == Status::BadSize);
    QVERIFY(ippiThreshold_Val_8u_C1R(a.Data(), 4, b.Data(), 4, {-4, 4}, 1, 2, Comparison::Less) == Status::BadSize);
    QVERIFY(ippiThreshold_Val_8u_C1R(a.Data(), 4, b.Data(), 4, {4, 4}, 1, 2, Comparison::Equal) == Status::BadArgument);
    QVERIFY(ippiAdd_8u_C1RSfs(a.Data(), 4, b.Data(), 4, b.Data(), 4, {4, 4}, -1) == Status::BadArgument);
    QVERIFY(ippiAdd_8u_C1RSfs(a.Data(), 4, null, 4, b.Data(), 4, {4, 4}, 1) == Status::NullPointer);
    const int foreign[] = {0, 3, 1}; // the last of three channels is channel 2
    QVERIFY(ippiSwapChannels_8u_C3R(a.Data(), 3, b.Data(), 3, {1, 1}, foreign) == Status::BadArgument);
    const Ipp32f values[] = {0, 1};
    QVERIFY(ippiScale_32f8u_C1R(values, 0, b.Data(), 0, {2, 1}, 1.0f, 1.0f) == Status::BadArgument); // empty range
    QVERIFY(ippiMulC_8u_C1RSfs(a.Data(), 4, 3, b.Data(), 4, {4, 4}, 32) == Status::BadArgument);
    QVERIFY(ippiCompareC_32f_C1R(values, 0, 2.0f, b.Data(), 0, {2, 1}, Comparison(5)) == Status::BadArgument);
    CompareSamples(b.Size(), 1, Reader(b), Reader(before), 0);
    QVERIFY(b.HasGapsOf(before));
}

namespace {

struct Pointer { // to anything
    void *block;
    template <typename T> operator T *() const { return static_cast<T *>(block); }
};

} // namespace

/// Calls functions without one of their pointers, or with a width or height of 0.
void tst_Pixels::missingPointers()
{
    using P = std::vector<Pointer>;
    using S = primitives::Size;
    const std::tuple<const char *, int, Status (*)(const P &, S)> rows[] = {
        {"copy", 2, [](const P &p, S s) { return ippiCopy_8u_C1R(p[0], 4, p[1], 4, s); }},
        {"set", 2, [](const P &p, S s) { return ippiSet_32f_C4R(p[0], p[1], 16, s); }},
        {"swap", 3, [](const P &p, S s) { return ippiSwapChannels_8u_C3R(p[0], 4, p[1], 4, s, p[2]); }},
        {"add", 3, [](const P &p, S s) { return ippiAdd_32f_C1R(p[0], 4, p[1], 4, p[2], 4, s); }},
        {"constants", 3, [](const P &p, S s) { return ippiMulC_8u_C3RSfs(p[0], 3, p[1], p[2], 3, s, 8); }},
        {"kernel size", 2, [](const P &p, S s) { return FilterGaussianGetBufferSize(s, 3, p[0], p[1]); }},
        {"kernel and buffer size", 1, [](const P &p, S s) { return FilterGaussGetBufferSize(s, 3, p[0]); }},
        {"filter", 4, [](const P &p, S s) { return FilterGaussianBorder(p[0], 4, p[1], 4, s, p[2], p[3]); }},
        {"blur", 2, [](const P &p, S s) { return GaussianBlur(p[0], 64, p[1], 64, s, 1); }},
        {"decompose", 3, [](const P &p, S s) { return LuDecompose(p[0], 4, p[1], p[2], 4, s.width * s.height); }},
        {"solve", 4,
         [](const P &p, S s) { return LuBackSubstitute(p[0], 4, p[1], p[2], 4, p[3], 4, s.width, s.height); }},
        {"rotate", 2,
         [](const P &p, S s) {
             const Rect all = {0, 0, s.width, s.height};
             return RotateFloat4(p[0], s, 16, {0, 0, 1, 1}, p[1], 16, all, 0, 0, 0, kCubic);
         }},
        {"resize size", 2, [](const P &p, S s) { return ResizeGetSize(s, s, kResizeLinear, 0, p[0], p[1]); }},
        {"prepare area", 1, [](const P &p, S s) { return ResizeSuperInit(s, s, p[0]); }},
        {"prepare linear", 1, [](const P &p, S s) { return ResizeLinearInit(s, s, p[0], nullptr); }},
        {"resize buffer", 2, [](const P &p, S s) { return ResizeGetBufferSize(p[0], s, 1, p[1]); }}};
    for (const auto &[name, pointers, run] : rows)
        for (int missing = 0; missing <= pointers; ++missing)
            for (const S size : {S{1, 1}, S{0, 1}, S{1, 0}}) {
                const Case named(name, "pointer", missing, "width", size.width);
                alignas(64) float blocks[4][1024] = {{1}}; // the first begins with a regular matrix
                P given = {{blocks[0]}, {blocks[1]}, {blocks[2]}, {blocks[3]}, {}};
                given[std::size_t(missing)].block = nullptr;
                const Status expected = size.width * size.height == 1 ? Status::Ok : Status::BadSize;
                QVERIFY(run(given, size) == (missing < pointers ? Status::NullPointer : expected));
            }
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
    // Rows of 2^33 + 64 bytes: the size exceeds 2^64 by 8 GiB, which could be allocated if the overflow went unnoticed.
    QVERIFY(!ippiMalloc_32f_C4((1 << 29) + 4, kMax - 14, &step));
    QVERIFY(!ippsMalloc_8u(std::numeric_limits<std::int64_t>::max()));
    ippsFree(nullptr);
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
        const Case named("comparison", int(how));
        QByteArray mask(4, 'x');
        ippiCompareC_32f_C1R(values, 0, 2.0f, reinterpret_cast<Ipp8u *>(mask.data()), 0, {4, 1}, how);
        QCOMPARE(mask, wanted);
    }
}

void tst_Pixels::hsv()
{
    const struct {
        Ipp8u rgb[3];
        double hsv[3]; // hue in degrees; saturation and value as fractions
    } rows[] = {
        {{0, 0, 0}, {0, 0, 0}},      {{90, 90, 90}, {0, 0, 90 / 255.0}}, {{255, 0, 0}, {0, 1, 1}},
        {{255, 255, 0}, {60, 1, 1}}, {{0, 255, 0}, {120, 1, 1}},         {{0, 255, 255}, {180, 1, 1}},
        {{0, 0, 255}, {240, 1, 1}},  {{255, 0, 255}, {300, 1, 1}},       {{200, 150, 100}, {30, 0.5, 200 / 255.0}}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        const Ipp8u in[4] = {row.rgb[0], row.rgb[1], row.rgb[2], 77};
        Ipp8u out[4] = {1, 2, 3, 4};
        ippiRGBToHSV_8u_AC4R(in, 4, out, 4, {1, 1});
        for (int c = 0; c < 3; ++c)
            QVERIFY(std::fabs(out[c] - row.hsv[c] * (c == 0 ? 255 / 360.0 : 255)) <= 0.501);
        QCOMPARE(int(out[3]), 4); // unchanged
    }
}

void tst_Pixels::yccDefinition()
{
    // White and blue by the published formulas: Y / 1.402, 111.40 (B - Y) + 156 and 135.64 (R - Y) + 137. For blue,
    // B - Y is 0.886 and R - Y is -0.114.
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
    // Half a count of hue changes a channel by 6 / 255 / 2 of the chroma, half a count of saturation by half a count.
    RoundTrip<Ipp8u, 4>(ippiRGBToHSV_8u_AC4R, ippiHSVToRGB_8u_AC4R, 4.5);
    // Half a code of luma changes each channel by 0.7 counts, half a code of chroma by up to 1.15 more.
    RoundTrip<Ipp8u, 4>(ippiRGBToYCC_8u_AC4R, ippiYCCToRGB_8u_AC4R, 3);
    RoundTrip<Ipp16u, 3>(ippiRGBToYCC_16u_C3R, ippiYCCToRGB_16u_C3R, 3);
    RoundTrip<Ipp32f, 4>(ippiRGBToYCC_32f_AC4R, ippiYCCToRGB_32f_AC4R, 1e-5);
}

QTEST_APPLESS_MAIN(tst_Pixels)
#include "pixels_test.moc"
