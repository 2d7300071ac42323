#include "KImage.h"

#include "ConversionTables_p.h"
#include "ImageSt.h"
#include "KImage_p.h"
#include "KOmp.h"
#include "PixelRuns_p.h"
#include "ippi.h"
#include "stretch.h"

#include <QColor>

#include <array>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

// --- Histograms ---

/// Allocates @p target in the source's form at 8 bits and calls change(source), which fills it. Gray images and other
/// depths are only converted.
template <typename Change> void ChangeColors8(const KImage &source, KImage &target, Change change)
{
    if (IsEmpty(source) || !IsWorkingType(source.type()))
        KThrow(kInvalidBitmap);
    if (&source == &target) {
        const KImage copy(source); // NOLINT(performance-unnecessary-copy-initialization): the target is the source
        ChangeColors8(copy, target, change);
        return;
    }
    if (source.bitsPerComponent() != 8 || source.type() == GFL_GREY) {
        source.Convert(target, source.type(), 8);
        return;
    }
    target.AllocBitmap(source.width(), source.height(), source.type(), 8, /*clear=*/false, nullptr, 0);
    change(source);
}

using Table8 = std::array<Ipp8u, 256>;

Table8 EqualizingTable(const KImage &image)
{
    const int channels = image.m_bitmap->ComponentsPerPixel;
    std::array<qint64, 256> counts = {};
    for (int y = 0; y < image.height(); ++y) {
        const Ipp8u *pixel = image.getData(0, y);
        for (int x = 0; x < image.width(); ++x, pixel += channels) {
            for (int c = 0; c < 3; ++c)
                ++counts[pixel[c]];
        }
    }
    const qint64 all = qint64(image.width()) * image.height() * 3;
    qint64 lowest = 0, sum = 0; // sample counts: at the lowest value, and up to the current one
    Table8 table;
    for (int v = 0; v < 256; ++v) {
        sum += counts[static_cast<size_t>(v)];
        lowest = lowest ? lowest : sum;
        table[static_cast<size_t>(v)] = all > lowest && sum > 0
            ? static_cast<Ipp8u>(
                std::lround(255.0 * static_cast<double>(sum - lowest) / static_cast<double>(all - lowest)))
            : static_cast<Ipp8u>(v); // a flat picture stays unchanged
    }
    return table;
}

// --- High dynamic range ---

void CheckIsFloat(const KImage &image)
{
    if (IsEmpty(image) || image.bitsPerComponent() != 32 || !IsWorkingType(image.type()))
        KThrow(kInvalidBitmap);
}

/// Calls use(pixel, colorChannels) for each pixel of a float image; @p use may change the pixel.
template <typename Use> void ForFloatPixels(KImage &image, Use use)
{
    const int channels = image.m_bitmap->ComponentsPerPixel, colors = qMin(channels, 3);
    ForRuns(image, 0, 0, image.width(), image.height(), image, 0, 0, [&](const void *, void *run, int pixels) {
        float *pixel = static_cast<float *>(run);
        for (const float *end = pixel + channels * pixels; pixel != end; pixel += channels)
            use(pixel, colors);
    });
}

bool IsVisible(const float *pixel, const KImage &image)
{
    return image.type() != GFL_RGBA || pixel[3] != 0.0f;
}

/// Start and length of an image's range.
struct Range {
    float minimum;
    float length;

    /// Returns the sample, clamped to the range, minus the range's start. NaN counts as the start.
    float Within(float value) const { return value > minimum ? qMin(value - minimum, length) : 0.0f; }
};

void NormalizeLinearly(KImage &image, Range range)
{
    ForFloatPixels(image, [=](float *pixel, int colors) {
        for (int c = 0; c < colors; ++c)
            pixel[c] = range.Within(pixel[c]) / range.length;
    });
}

void NormalizeLogarithmically(KImage &image, Range range)
{
    const float top = std::log1p(range.length);
    ForFloatPixels(image, [=](float *pixel, int colors) {
        for (int c = 0; c < colors; ++c)
            pixel[c] = std::log1p(range.Within(pixel[c])) / top;
    });
}

/// Returns exp(mean(log(luma))) of the visible pixels; black ones count as a millionth of the range.
double LogarithmicMean(KImage &image, Range range)
{
    double sum = 0;
    qint64 count = 0;
    const float floor = range.length * 1e-6f;
    ForFloatPixels(image, [&](const float *pixel, int colors) {
        if (!IsVisible(pixel, image))
            return;
        sum += std::log(static_cast<double>(qMax(floor, range.Within(Luma(pixel, colors)))));
        ++count;
    });
    return count ? std::exp(sum / static_cast<double>(count)) : static_cast<double>(range.length);
}

void NormalizeWithShoulder(KImage &image, Range range)
{
    constexpr double kMiddleGray = 0.18;
    const auto scale = static_cast<float>(kMiddleGray / LogarithmicMean(image, range));
    const float white = scale * range.length;
    ForFloatPixels(image, [=](float *pixel, int colors) {
        for (int c = 0; c < colors; ++c)
            pixel[c] = range.Within(pixel[c]);
        const float luminance = scale * Luma(pixel, colors);
        const float factor = scale * (1 + luminance / (white * white)) / (1 + luminance);
        for (int c = 0; c < colors; ++c)
            pixel[c] = qMin(pixel[c] * factor, 1.0f);
    });
}

constexpr void (*kNormalizers[])(KImage &, Range) = {NormalizeLinearly, NormalizeLogarithmically,
                                                     NormalizeWithShoulder};

// --- Color ---

struct Adjustment {
    float brightness, contrast, saturation;

    void Apply(float *pixel, int colors) const
    {
        constexpr float kMiddle = 0.5f;
        for (int c = 0; c < colors; ++c)
            pixel[c] = kMiddle + contrast * (brightness * pixel[c] - kMiddle);
        const float luma = Luma(pixel, colors);
        for (int c = 0; c < colors; ++c) {
            const float saturated = luma + saturation * (pixel[c] - luma);
            pixel[c] = saturated < 0 ? 0 : saturated;
        }
    }

    bool IsNeutral() const { return brightness == 1 && contrast == 1 && saturation == 1; }
};

/// Hue and saturation as in 8-bit HSV.
struct Tint {
    Ipp8u hue, saturation;
};

/// Returns the tint of each value: the straight line between two points of the color wheel, whose center is gray.
std::array<Tint, 256> TintTable(const QColor &shadows, const QColor &lights)
{
    const auto onWheel = [](const QColor &color) { // the invalid hue of a gray has no effect: its saturation is 0
        return std::polar(color.hsvSaturationF(), 2 * M_PI * color.hsvHueF());
    };
    const std::complex<double> from = onWheel(shadows), to = onWheel(lights);
    std::array<Tint, 256> table;
    for (int v = 0; v < 256; ++v) {
        const std::complex<double> point = from + v / 255.0 * (to - from);
        const double hue = std::arg(point) / (2 * M_PI);
        table[static_cast<size_t>(v)] = {static_cast<Ipp8u>(std::lround(255 * (hue < 0 ? hue + 1 : hue))),
                                         static_cast<Ipp8u>(std::lround(255 * qMin(std::abs(point), 1.0)))};
    }
    return table;
}

} // namespace

void KImage::HistogramAuto(KImage &target)
{
    ChangeColors8(*this, target, [&](const KImage &source) {
        const int channels = source.m_bitmap->ComponentsPerPixel;
        primitives::ColorRange range(channels);
        for (int y = 0; y < source.height(); ++y)
            range.Add(source.getData(0, y), source.width());
        const primitives::Stretch stretch(range.Low(), range.High(), channels);
        for (int y = 0; y < source.height(); ++y)
            stretch.Run(source.getData(0, y), target.getData(0, y), source.width());
    });
}

void KImage::HistogramEqualization(KImage &target)
{
    ChangeColors8(*this, target, [&](const KImage &source) {
        const Table8 table = EqualizingTable(source);
        for (int y = 0; y < source.height(); ++y)
            primitives::MapColors(table.data(), source.m_bitmap->ComponentsPerPixel, source.getData(0, y),
                                  target.getData(0, y), source.width());
    });
}

void KImage::HDR_GetMinMax(float &minimum, float &maximum, bool onlyVisible) const
{
    CheckIsFloat(*this);
    const int channels = m_bitmap->ComponentsPerPixel;
    float least = INFINITY, most = -INFINITY, pixel[4];
    for (int y = 0; y < height(); ++y) {
        for (int x = 0; x < width(); ++x) {
            std::memcpy(pixel, getData(x, y), size_t(channels) * sizeof(float)); // a wrapped row may be unaligned
            for (int c = 0; c < qMin(channels, 3) && (!onlyVisible || IsVisible(pixel, *this)); ++c) {
                least = std::isfinite(pixel[c]) ? qMin(least, pixel[c]) : least;
                most = std::isfinite(pixel[c]) ? qMax(most, pixel[c]) : most;
            }
        }
    }
    minimum = most < least ? 0 : least;
    maximum = most < least ? 0 : most;
}

void KImage::HDR_Normalize(float minimum, float maximum, int mode)
{
    CheckIsFloat(*this);
    if (!std::isfinite(minimum) || !std::isfinite(maximum) || maximum < minimum)
        KThrow(kInvalidParameter);
    if (mode < 0 || mode >= static_cast<int>(std::size(kNormalizers)))
        KThrow(kInvalidParameter);
    constexpr float kLongest = std::numeric_limits<float>::max();
    const Range range = {minimum, qMin(maximum - minimum, kLongest)};
    constexpr float kShortest = 1e-30f; // shorter ranges count as flat, so that no scale overflows
    if (range.length > kShortest) {
        kNormalizers[mode](*this, range);
    } else {
        ForFloatPixels(*this, [](float *pixel, int colors) { std::fill_n(pixel, colors, 0.0f); });
    }
}

void KImage::HDR_QuickToneMapper(int mode)
{
    float minimum, maximum;
    HDR_GetMinMax(minimum, maximum, /*onlyVisible=*/true);
    HDR_Normalize(minimum, maximum, mode);
}

void KImage::adjustColor(float brightness, float contrast, float saturation)
{
    CheckWorkingPixels(*this);
    if (!std::isfinite(brightness) || !std::isfinite(contrast) || !std::isfinite(saturation))
        KThrow(kInvalidParameter);
    const Adjustment adjustment = {brightness, contrast, saturation};
    if (adjustment.IsNeutral())
        return;
    const Form form = FormOf(*this), floats = {kDepth32f, form.layout};
    const Conversion toFloat(form, floats), back(floats, form);
    const int channels = m_bitmap->ComponentsPerPixel;
    ForRuns(*this, 0, 0, width(), height(), *this, 0, 0, [&](const void *src, void *dst, int pixels) {
        RunBlock block;
        float *samples = static_cast<float *>(toFloat.IsIdentity() ? dst : block.bytes);
        toFloat.Converted(src, block, pixels);
        for (int x = 0; x < pixels; ++x)
            adjustment.Apply(samples + x * channels, qMin(channels, 3));
        if (!back.IsIdentity())
            back.ConvertRun(samples, dst, pixels);
    });
}

void KImage::Colorize(KImage &target, QColor shadows, QColor lights)
{
    CheckWorkingPixels(*this);
    if (&target == this || !shadows.isValid() || !lights.isValid())
        KThrow(kInvalidParameter);
    const auto tints = TintTable(shadows, lights);
    target.AllocBitmap(width(), height(), GFL_RGBA, 8, /*clear=*/false, nullptr, 0);
#pragma omp parallel for schedule(static) num_threads(komp_num_threads)
    for (int y = 0; y < height(); ++y) {
        CropCopyTo(0, y, width(), 1, target, 0, y);
        Ipp8u *row = target.getData(0, y);
        ippiRGBToHSV_8u_AC4R(row, 0, row, 0, {width(), 1});
        for (qint64 i = 0; i < 4 * qint64(width()); i += 4) {
            row[i] = tints[row[i + 2]].hue;
            row[i + 1] = tints[row[i + 2]].saturation;
        }
        ippiHSVToRGB_8u_AC4R(row, 0, row, 0, {width(), 1});
    }
}

void KImage::GetGrey(ImageSt &gray)
{
    CheckWorkingPixels(*this);
    if (qint64(width()) * qint64(sizeof(float)) > std::numeric_limits<quint32>::max())
        KThrow(kNotEnoughMemory); // the limit of a KImage row
    try {
        gray.samples.resize(static_cast<size_t>(width()) * static_cast<size_t>(height()));
    } catch (const std::bad_alloc &) {
        KThrow(kNotEnoughMemory);
    }
    gray.width = width();
    gray.height = height();
    const auto strideBytes = static_cast<quint32>(width()) * quint32(sizeof(float));
    KImage plane(width(), height(), GFL_GREY, 32, /*clear=*/false, gray.samples.data(), static_cast<int>(strideBytes));
#pragma omp parallel for schedule(static) num_threads(komp_num_threads)
    for (int y = 0; y < height(); ++y)
        CropCopyTo(0, y, width(), 1, plane, 0, y);
}
