#include "KImage.h"

#include "ConversionTables_p.h"
#include "KImage_p.h"
#include "KOmp.h"
#include "PixelRuns_p.h"

namespace {

bool IsInside(int position, int size)
{
    return position >= 0 && position < size;
}

/// Returns whether @p count pixels from @p position, which must be inside, end within @p size. Adds in 64 bits, because
/// the sum may not fit in 32.
bool Fits(int position, int count, int size)
{
    return static_cast<qint64>(position) + count <= size;
}

/// Returns how many of @p count pixels starting at @p position lie within @p size.
int ClippedCount(int position, int count, int size)
{
    return static_cast<int>(qMin<qint64>(static_cast<qint64>(count) + position, size) - position);
}

/// Checks the arguments for placing a whole image in another at (x, y).
void CheckPlacement(const KImage &image, const KImage &target, int x, int y)
{
    if (IsEmpty(image))
        KThrow(kInvalidBitmap);
    if (IsEmpty(target))
        KThrow(kInvalidParameter);
    if (!IsWorkingType(image.type()) || !IsWorkingType(target.type()))
        KThrow(kInvalidParameter);
    if (!IsInside(x, target.width()) || !IsInside(y, target.height()))
        KThrow(kInvalidParameter);
}

/// Makes a new target opaque if the conversion (16-bit gray to RGBA) would leave its alpha undefined.
void FillUndefinedAlpha(const KImage &source, KImage &target)
{
    if (!IsWorkingDepth(source.bitsPerComponent()) || !IsWorkingDepth(target.bitsPerComponent())
        || !IsWorkingType(target.type()))
        return; // CropCopyTo rejects it
    const AlphaException *exception = FindAlphaException(FormOf(source), FormOf(target));
    if (!exception || !exception->leavesAlpha)
        return;
    const primitives::Size size = {target.width(), target.height()};
    constexpr Ipp16u kOpaque16u[] = {0, 0, 0, 65535};
    constexpr Ipp32f kOpaque32f[] = {0, 0, 0, 1};
    unsigned char *pixels = target.getData(0, 0);
    if (target.bitsPerComponent() == 16)
        ippiSet_16u_C4R(kOpaque16u, reinterpret_cast<Ipp16u *>(pixels), target.bytesPerLine(), size);
    else
        ippiSet_32f_C4R(kOpaque32f, reinterpret_cast<Ipp32f *>(pixels), target.bytesPerLine(), size);
}

/// Computes t - (t - s) * alpha for the colors of pixels with @p C channels. The alpha of pixel i is alpha[4 * i].
/// Integers are truncated toward zero and clamped: a float alpha may lie outside 0 to 1.
template <typename T, int C> void BlendRun(const float *alpha, const void *source, void *target, int pixels)
{
    constexpr int kColors = C == 4 ? 3 : C; // NOLINT(bugprone-branch-clone): the branches are equal only for C = 3
    const T *s = static_cast<const T *>(source);
    T *t = static_cast<T *>(target);
    for (int i = 0; i < pixels; ++i) {
        for (int c = i * C; c < i * C + kColors; ++c) {
            const float old = t[c];
            t[c] = primitives::Truncate<T>(old - (old - static_cast<float>(s[c])) * alpha[4 * i]);
        }
    }
}

using BlendStep = void (*)(const float *alpha, const void *source, void *target, int pixels);
constexpr BlendStep kBlendSteps[3][3] = {
    {BlendRun<Ipp8u, 1>, BlendRun<Ipp8u, 3>, BlendRun<Ipp8u, 4>},
    {BlendRun<Ipp16u, 1>, BlendRun<Ipp16u, 3>, BlendRun<Ipp16u, 4>},
    {BlendRun<Ipp32f, 1>, BlendRun<Ipp32f, 3>, BlendRun<Ipp32f, 4>},
};

} // namespace

void KImage::CropCopyTo(int x, int y, int width, int height, KImage &target, int targetX, int targetY) const
{
    if (&target == this)
        KThrow(kInvalidParameter);
    if (IsEmpty(*this) || !IsWorkingDepth(bitsPerComponent()) || !IsWorkingType(type()))
        KThrow(kInvalidBitmap);
    if (IsEmpty(target) || !IsWorkingType(target.type()) || !IsWorkingDepth(target.bitsPerComponent()))
        KThrow(kInvalidParameter);
    if (!IsInside(targetX, target.width()) || !IsInside(targetY, target.height()))
        KThrow(kInvalidParameter);
    if (!IsInside(x, this->width()) || !Fits(x, width, this->width()))
        KThrow(kInvalidParameter);
    if (!IsInside(y, this->height()) || !Fits(y, height, this->height()))
        KThrow(kInvalidParameter);
    if (!Fits(targetX, width, target.width()) || !Fits(targetY, height, target.height()))
        KThrow(kInvalidParameter); // would write beyond the target's rows
    if (width < 1 || height < 1)
        return;

    // The first access to the pages of a large target takes longer than the conversion, and threads speed it up too.
    constexpr qint64 kPixelsWorthThreads = 1 << 20;
    const int threads = static_cast<qint64>(width) * height < kPixelsWorthThreads ? 1 : komp_num_threads;
    const Form from = FormOf(*this), to = FormOf(target);
    if (from == to) {
        // Plain bytes, in one piece per thread where rows have no gaps.
        const int rowsEach = (height - 1) / threads + 1;
#pragma omp parallel for schedule(static) num_threads(threads)
        for (int row = 0; row < height; row += rowsEach)
            primitives::CopyBytes(getData(x, y + row), bytesPerLine(), target.getData(targetX, targetY + row),
                                  target.bytesPerLine(), static_cast<qint64>(width) * m_bitmap->BytesPerPixel,
                                  qMin(rowsEach, height - row));
        return;
    }
    const Conversion conversion(from, to);
    const auto convert = [&](const void *src, void *dst, int pixels) { conversion.ConvertRun(src, dst, pixels); };
#pragma omp parallel for schedule(static) num_threads(threads)
    for (int row = 0; row < height; ++row)
        ForRuns(*this, x, y + row, width, 1, target, targetX, targetY + row, convert);
}

void KImage::CopyTo(KImage &target, int x, int y) const
{
    CheckPlacement(*this, target, x, y);
    CropCopyTo(0, 0, ClippedCount(x, width(), target.width()), ClippedCount(y, height(), target.height()), target, x,
               y);
}

void KImage::Convert(KImage &target, unsigned short type, int bitsPerComponent) const
{
    if (IsEmpty(*this) || !IsWorkingType(this->type()))
        KThrow(kInvalidBitmap);
    if (&target == this)
        KThrow(kInvalidParameter); // before the old pixels are freed
    const bool keepsBlock = target.m_bitmap && HasShape(*target.m_bitmap, width(), height(), type, bitsPerComponent);
    target.AllocBitmap(width(), height(), type, bitsPerComponent, /*clear=*/false, nullptr, 0);
    if (!keepsBlock)
        FillUndefinedAlpha(*this, target);
    CropCopyTo(0, 0, width(), height(), target, 0, 0);
}

void KImage::BlendTo(KImage &target, int x, int y)
{
    CheckPlacement(*this, target, x, y);
    if (type() != GFL_RGBA) {
        CopyTo(target, x, y);
        return;
    }
    if (!IsWorkingDepth(bitsPerComponent()))
        KThrow(kInvalidBitmap);
    if (!IsWorkingDepth(target.bitsPerComponent()))
        KThrow(kInvalidParameter);
    if (&target == this) { // rows would be read while others are written
        KImage(*this).BlendTo(target, x, y);
        return;
    }
    const int columns = ClippedCount(x, width(), target.width());
    const int rows = ClippedCount(y, height(), target.height());
    const Form from = FormOf(*this), to = FormOf(target);
    const Conversion toTarget(from, to), toFloat(from, {kDepth32f, kRgba});
    const auto blend = [&](const void *src, void *dst, int pixels) {
        RunBlock colors, floats;
        const void *converted = toTarget.Converted(src, colors, pixels);
        const auto *rgba = static_cast<const float *>(toFloat.Converted(src, floats, pixels));
        kBlendSteps[to.depth][to.layout](rgba + 3, converted, dst, pixels);
    };
#pragma omp parallel for schedule(static) num_threads(komp_num_threads)
    for (int row = 0; row < rows; ++row)
        ForRuns(*this, 0, row, columns, 1, target, x, y + row, blend);
}
