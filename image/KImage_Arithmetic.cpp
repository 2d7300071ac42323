#include "KImage.h"

#include "KImage_p.h"
#include "PixelRuns_p.h"
#include "ippi.h"

#include <cmath>

namespace {

using primitives::Size;
using primitives::Status;
using primitives::Step;

/// Row functions of an image operation, by layout: gray, RGB, RGBA. Their first source is the right-hand operand.
struct ImageOperation {
    Status (*floats[3])(const Ipp32f *, Step, const Ipp32f *, Step, Ipp32f *, Step, Size);
    Status (*bytes[3])(const Ipp8u *, Step, const Ipp8u *, Step, Ipp8u *, Step, Size, int scaleFactor);
    int scaleFactor; // for 8 bits: sums and differences are halved, products divided by 256
};

constexpr ImageOperation kSubtract = {
    {ippiSub_32f_C1R, ippiSub_32f_C3R, ippiSub_32f_C4R}, {ippiSub_8u_C1RSfs, ippiSub_8u_C3RSfs, ippiSub_8u_C4RSfs}, 1};
constexpr ImageOperation kAdd = {
    {ippiAdd_32f_C1R, ippiAdd_32f_C3R, ippiAdd_32f_C4R}, {ippiAdd_8u_C1RSfs, ippiAdd_8u_C3RSfs, ippiAdd_8u_C4RSfs}, 1};
constexpr ImageOperation kMultiply = {
    {ippiMul_32f_C1R, ippiMul_32f_C3R, ippiMul_32f_C4R}, {ippiMul_8u_C1RSfs, ippiMul_8u_C3RSfs, ippiMul_8u_C4RSfs}, 8};

int LayoutIndex(const KImage &image)
{
    return image.type() == GFL_GREY ? 0 : image.type() == GFL_RGB ? 1 : 2;
}

void Apply(const ImageOperation &operation, KImage &image, const KImage &other)
{
    if (IsEmpty(image) || !IsWorkingType(image.type())
        || (image.bitsPerComponent() != 8 && image.bitsPerComponent() != 32))
        KThrow(kInvalidBitmap);
    if (IsEmpty(other) || other.width() != image.width() || other.height() != image.height()
        || other.bitsPerComponent() != image.bitsPerComponent() || other.type() != image.type())
        KThrow(kInvalidParameter);

    const int layout = LayoutIndex(image);
    const bool isFloat = image.bitsPerComponent() == 32;
    ForRuns(other, 0, 0, image.width(), image.height(), image, 0, 0, [&](const void *src, void *dst, int pixels) {
        if (isFloat) {
            auto *samples = static_cast<Ipp32f *>(dst);
            operation.floats[layout](static_cast<const Ipp32f *>(src), 0, samples, 0, samples, 0, {pixels, 1});
        } else {
            auto *samples = static_cast<Ipp8u *>(dst);
            operation.bytes[layout](static_cast<const Ipp8u *>(src), 0, samples, 0, samples, 0, {pixels, 1},
                                    operation.scaleFactor);
        }
    });
}

/// Multiplies a run in place by the constants of its channels.
template <typename T, typename One, typename Many, typename K, typename... Scale>
void MultiplyRun(One &gray, Many &rgb, Many &rgba, int layout, void *run, int pixels, const K k[4], Scale... scale)
{
    T *samples = static_cast<T *>(run);
    if (layout == 0)
        gray(samples, 0, k[0], samples, 0, {pixels, 1}, scale...);
    else
        (layout == 1 ? rgb : rgba)(samples, 0, k, samples, 0, {pixels, 1}, scale...);
}

/// Returns full * factor, truncated and limited to +-2^30; 0 for NaN.
int IntegerFactor(double full, float factor)
{
    constexpr double kLimit = 1 << 30;
    const double product = full * static_cast<double>(factor);
    return std::isnan(product) ? 0 : static_cast<int>(qBound(-kLimit, product, kLimit));
}

} // namespace

KImage &KImage::operator-=(const KImage &other)
{
    Apply(kSubtract, *this, other);
    return *this;
}

KImage &KImage::operator+=(const KImage &other)
{
    Apply(kAdd, *this, other);
    return *this;
}

KImage &KImage::operator*=(const KImage &other)
{
    Apply(kMultiply, *this, other);
    return *this;
}

KImage &KImage::operator*=(float factor)
{
    if (IsEmpty(*this) || !IsWorkingDepth(bitsPerComponent()) || !IsWorkingType(type()))
        KThrow(kInvalidBitmap);

    // Multiply colors by the factor, alpha by the equivalent of 1: for integers that is one less than the divisor, so
    // integer samples lose one part in 256 or 65,536.
    const int k16 = IntegerFactor(65535.0, factor), k8 = IntegerFactor(255.0, factor);
    const float floats[4] = {factor, factor, factor, 1.0f};
    const int words[4] = {k16, k16, k16, 65535};
    const int bytes[4] = {k8, k8, k8, 255};
    const int layout = LayoutIndex(*this), bits = bitsPerComponent();
    ForRuns(*this, 0, 0, width(), height(), *this, 0, 0, [&](const void *, void *run, int pixels) {
        if (bits == 32)
            MultiplyRun<Ipp32f>(ippiMulC_32f_C1R, ippiMulC_32f_C3R, ippiMulC_32f_C4R, layout, run, pixels, floats);
        else if (bits == 16)
            MultiplyRun<Ipp16u>(ippiMulC_16u_C1RSfs, ippiMulC_16u_C3RSfs, ippiMulC_16u_C4RSfs, layout, run, pixels,
                                words, 16);
        else
            MultiplyRun<Ipp8u>(ippiMulC_8u_C1RSfs, ippiMulC_8u_C3RSfs, ippiMulC_8u_C4RSfs, layout, run, pixels, bytes,
                               8);
    });
    return *this;
}
