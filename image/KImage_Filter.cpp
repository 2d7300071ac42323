#include "KImage.h"

#include "ConversionTables_p.h"
#include "KImage_p.h"
#include "PixelRuns_p.h"
#include "PixelSampler_p.h"
#include "gaussian.h"
#include "ippi.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using primitives::Size;
using primitives::Status;

void CheckStatus(Status status)
{
    if (status == Status::NoMemory)
        KThrow(kNotEnoughMemory);
}

Size SizeOf(const KImage &image)
{
    return {image.width(), image.height()};
}

float *Floats(const KImage &plane)
{
    return reinterpret_cast<float *>(plane.getData(0, 0));
}

KImage NewPlane(const KImage &like)
{
    return KImage(like.width(), like.height(), GFL_GREY, 32, /*clear=*/false, nullptr, 0);
}

void BlurPlane(const KImage &plane, KImage &blurred, float sigma)
{
    CheckStatus(primitives::GaussianBlur(Floats(plane), plane.bytesPerLine(), Floats(blurred), blurred.bytesPerLine(),
                                         SizeOf(plane), sigma));
}

// --- Unsharp mask ---

/// Kernels up to this size are applied directly; wider ones, whose cost would grow with their size, are replaced by a
/// Gaussian of the same variance.
constexpr int kLargestPlainKernel = 301;

class UnsharpBlur {
public:
    explicit UnsharpBlur(float radius)
        : m_kernelSize(qMax(3, 2 * static_cast<int>(3.0 * double(qMin(radius, primitives::kLargestSigma))) + 1)),
          m_sigma(radius + 0.5f)
    {
    }

    void Apply(const KImage &plane, KImage &blurred) const
    {
        if (m_kernelSize > kLargestPlainKernel)
            BlurPlane(plane, blurred, SigmaOfCutKernel());
        else
            Convolve(plane, blurred);
    }

private:
    /// Returns the standard deviation of the truncated Gaussian.
    float SigmaOfCutKernel() const
    {
        double sum = 1, squares = 0;
        for (int d = 1; d <= m_kernelSize / 2; ++d) {
            const double relative = d / static_cast<double>(m_sigma), weight = 2 * std::exp(-0.5 * relative * relative);
            sum += weight;
            squares += weight * d * d;
        }
        return static_cast<float>(std::sqrt(squares / sum));
    }

    void Convolve(const KImage &plane, KImage &blurred) const
    {
        std::int64_t specBytes = 0, bufferBytes = 0;
        ippiFilterGaussianGetBufferSize(SizeOf(plane), m_kernelSize, &specBytes, &bufferBytes);
        using Block = std::unique_ptr<Ipp8u, void (*)(void *)>;
        const Block specBlock(ippsMalloc_8u(specBytes), ippsFree), buffer(ippsMalloc_8u(bufferBytes), ippsFree);
        if (!specBlock || !buffer)
            KThrow(kNotEnoughMemory);
        auto *spec = reinterpret_cast<primitives::GaussianSpec *>(specBlock.get());
        ippiFilterGaussianInit(m_kernelSize, m_sigma, primitives::kBorderReplicate, spec);
        ippiFilterGaussianBorder_32f_C1R(Floats(plane), plane.bytesPerLine(), Floats(blurred), blurred.bytesPerLine(),
                                         SizeOf(plane), spec, buffer.get());
    }

    int m_kernelSize;
    float m_sigma;
};

/// Visible pixels of an RGBA image, and the visible share of each pixel's neighborhood. A blur over the visible pixels
/// is divided by that share.
class Visibility {
public:
    Visibility(const KImage &image, const UnsharpBlur &blur)
        : m_hidden(image.width(), image.height(), GFL_GREY, 8, /*clear=*/true, nullptr, 0), m_share(NewPlane(image))
    {
        KImage alpha, visible(image.width(), image.height(), GFL_GREY, 32, /*clear=*/true, nullptr, 0);
        image.ExtractAlpha(alpha, 32);
        KImage mask(image.width(), image.height(), GFL_GREY, 8, /*clear=*/false, nullptr, 0);
        ippiCompareC_32f_C1R(Floats(alpha), alpha.bytesPerLine(), 0.0f, mask.getData(0, 0), mask.bytesPerLine(),
                             SizeOf(image), primitives::Comparison::Greater);
        ippiSet_32f_C1MR(1.0f, Floats(visible), visible.bytesPerLine(), SizeOf(image), mask.getData(0, 0),
                         mask.bytesPerLine());
        ippiCompareC_32f_C1R(Floats(visible), visible.bytesPerLine(), 0.0f, m_hidden.getData(0, 0),
                             m_hidden.bytesPerLine(), SizeOf(image), primitives::Comparison::Equal);
        blur.Apply(visible, m_share);
        Fill(m_share, 1.0f); // avoid a division by zero
    }

    /// Sets the hidden pixels of a plane.
    void Fill(KImage &plane, float value) const
    {
        ippiSet_32f_C1MR(value, Floats(plane), plane.bytesPerLine(), SizeOf(plane), m_hidden.getData(0, 0),
                         m_hidden.bytesPerLine());
    }

    void DivideByShare(KImage &blurred) const
    {
        ippiDiv_32f_C1R(Floats(m_share), m_share.bytesPerLine(), Floats(blurred), blurred.bytesPerLine(),
                        Floats(blurred), blurred.bytesPerLine(), SizeOf(blurred));
    }

    bool IsHidden(int x, int y) const { return *m_hidden.getData(x, y) != 0; }

private:
    KImage m_hidden;
    KImage m_share;
};

/// Unsharp mask for the first channels of an image, in place.
class Sharpener {
public:
    Sharpener(KImage &image, float radius, float amount) : m_image(image), m_blur(radius), m_amount(amount)
    {
        if (image.type() == GFL_RGBA)
            m_visibility = std::make_unique<Visibility>(image, m_blur);
    }

    void Run(int channels)
    {
        KImage blurred = NewPlane(m_image);
        for (int c = 0; c < channels; ++c) {
            KImage plane;
            m_image.ExtractChannel(plane, 32, c);
            if (m_visibility) {
                KImage visible(plane);
                m_visibility->Fill(visible, 0.0f);
                m_blur.Apply(visible, blurred);
                m_visibility->DivideByShare(blurred);
            } else {
                m_blur.Apply(plane, blurred);
            }
            AddDifference(blurred, plane);
            m_image.SetChannel(plane, c);
        }
    }

private:
    void AddDifference(const KImage &blurred, KImage &plane) const
    {
        for (int y = 0; y < plane.height(); ++y) {
            const auto *low = reinterpret_cast<const float *>(blurred.getData(0, y));
            auto *row = reinterpret_cast<float *>(plane.getData(0, y));
            for (int x = 0; x < plane.width(); ++x) {
                const float sharpened = row[x] + m_amount * (row[x] - low[x]);
                if (std::isfinite(sharpened) && !(m_visibility && m_visibility->IsHidden(x, y)))
                    row[x] = sharpened;
            }
        }
    }

    KImage &m_image;
    UnsharpBlur m_blur;
    float m_amount;
    std::unique_ptr<Visibility> m_visibility;
};

void CheckUnsharp(const KImage &image, const KImage &target, float radius, float amount)
{
    CheckWorkingPixels(image);
    if (&target == &image || !std::isfinite(radius) || radius < 0 || !std::isfinite(amount))
        KThrow(kInvalidParameter);
}

/// Conversions to PhotoYCC and back: [depth][is RGBA].
constexpr RunStep kToYcc[3][2] = {{steps::Run<ippiRGBToYCC_8u_C3R>, steps::Run<ippiRGBToYCC_8u_AC4R>},
                                  {steps::Run<ippiRGBToYCC_16u_C3R>, steps::Run<ippiRGBToYCC_16u_AC4R>},
                                  {steps::Run<ippiRGBToYCC_32f_C3R>, steps::Run<ippiRGBToYCC_32f_AC4R>}};
constexpr RunStep kFromYcc[3][2] = {{steps::Run<ippiYCCToRGB_8u_C3R>, steps::Run<ippiYCCToRGB_8u_AC4R>},
                                    {steps::Run<ippiYCCToRGB_16u_C3R>, steps::Run<ippiYCCToRGB_16u_AC4R>},
                                    {steps::Run<ippiYCCToRGB_32f_C3R>, steps::Run<ippiYCCToRGB_32f_AC4R>}};

void ConvertColors(KImage &image, const RunStep (&table)[3][2])
{
    const RunStep step = table[FormOf(image).depth][image.type() == GFL_RGBA ? 1 : 0];
    ForRuns(image, 0, 0, image.width(), image.height(), image, 0, 0,
            [=](const void *src, void *dst, int pixels) { step(src, dst, pixels); });
}

/// Restores the pixels that sharpening must not change (hidden ones and those whose result isn't finite), because the
/// conversion to another color model rounds them.
void RestorePixels(const KImage &image, KImage &sharpened)
{
    const int channels = image.m_bitmap->ComponentsPerPixel;
    const size_t pixelBytes = image.m_bitmap->BytesPerPixel;
    WithSampler(image, [&](const auto &sampler) {
        using T = typename std::decay_t<decltype(sampler)>::Component;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                unsigned char *pixel = sharpened.getData(x, y);
                bool isKept = channels == 4 && !(LoadComponent<T>(pixel + 3 * sizeof(T)) > 0);
                for (size_t c = 0; c < 3; ++c)
                    isKept = isKept || !std::isfinite(LoadComponent<T>(pixel + c * sizeof(T)));
                if (isKept)
                    std::memcpy(pixel, image.getData(x, y), pixelBytes);
            }
        }
    });
}

} // namespace

void KImage::ConvolveGaussian(float sigma, KImage &target) const
{
    CheckWorkingPixels(*this);
    if (&target == this || !(sigma >= 0) || !std::isfinite(sigma))
        KThrow(kInvalidParameter);
    Convert(target, type(), bitsPerComponent());
    if (!(sigma > 0))
        return;
    const bool isPlane = type() == GFL_GREY && bitsPerComponent() == 32;
    if (isPlane && HasAlignedRows(*this) && HasAlignedRows(target)) {
        BlurPlane(*this, target, sigma);
        return;
    }
    KImage plane, blurred = NewPlane(*this);
    for (int c = 0; c < m_bitmap->ComponentsPerPixel; ++c) {
        ExtractChannel(plane, 32, c);
        BlurPlane(plane, blurred, sigma);
        target.SetChannel(blurred, c);
    }
}

void KImage::unsharp(float radius, float amount, KImage &target)
{
    CheckUnsharp(*this, target, radius, amount);
    Convert(target, type(), bitsPerComponent());
    if (amount != 0.0f)
        Sharpener(target, radius, amount).Run(qMin<int>(m_bitmap->ComponentsPerPixel, 3));
}

void KImage::unsharpY(float radius, float amount, KImage &target)
{
    CheckUnsharp(*this, target, radius, amount);
    if (type() == GFL_GREY || amount == 0.0f) {
        unsharp(radius, amount, target);
        return;
    }
    Convert(target, type(), bitsPerComponent());
    ConvertColors(target, kToYcc);
    Sharpener(target, radius, amount).Run(/*channels=*/1);
    ConvertColors(target, kFromYcc);
    RestorePixels(*this, target);
}

void KImage::unsharpFull(float radius, float amount, KImage &target)
{
    unsharp(0.75f * radius, 10.0f * amount, target);
    KImage second;
    target.unsharp(0.5f * radius, 0.4f * amount, second);
    second.unsharp(radius, 0.2f * amount, target);
}
