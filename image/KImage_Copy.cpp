#include "KImage.h"

#include "ConversionTables_p.h"
#include "KImage_p.h"

namespace {

void SetOpaque8u(void *dst, int pixels, int alpha)
{
    const Ipp8u value[4] = {0, 0, 0, static_cast<Ipp8u>(alpha)};
    ippiSet_8u_C4R(value, static_cast<Ipp8u *>(dst), 0, {pixels, 1});
}

void SetOpaque16u(void *dst, int pixels, int alpha)
{
    const Ipp16u value[4] = {0, 0, 0, static_cast<Ipp16u>(alpha)};
    ippiSet_16u_C4R(value, static_cast<Ipp16u *>(dst), 0, {pixels, 1});
}

void SetOpaque32f(void *dst, int pixels, int)
{
    const Ipp32f value[4] = {0, 0, 0, 1};
    ippiSet_32f_C4R(value, static_cast<Ipp32f *>(dst), 0, {pixels, 1});
}

/// How runs of one form become runs of another.
class Conversion {
public:
    Conversion(Form from, Form to)
    {
        constexpr decltype(&SetOpaque8u) kSetOpaque[] = {SetOpaque8u, SetOpaque16u, SetOpaque32f};
        const AlphaRule alpha = AlphaRuleOf(from, to);
        m_alpha = alpha.value8or16;
        m_setOpaque = alpha.set ? kSetOpaque[to.depth] : nullptr;

        const RunStep depthFirst = kDepthSteps[from.depth][to.depth][from.layout];
        const RunStep depthLast = kDepthSteps[from.depth][to.depth][to.layout];
        if (from.depth == to.depth)
            m_last = kChannelSteps[to.depth][from.layout][to.layout];
        else if (from.layout == to.layout)
            m_last = depthFirst;
        else if (to.depth < from.depth && to.layout < from.layout) { // grey at the finer of the two depths
            m_first = kChannelSteps[from.depth][from.layout][to.layout];
            m_last = depthLast;
        } else {
            m_first = depthFirst;
            m_last = kChannelSteps[to.depth][from.layout][to.layout];
        }
    }

    void ConvertRun(const void *src, void *dst, int pixels) const
    {
        alignas(64) unsigned char between[kRunPixels * kMaxBytesPerPixel];
        if (m_first)
            m_first(src, between, pixels);
        if (m_setOpaque)
            m_setOpaque(dst, pixels, m_alpha);
        m_last(m_first ? between : src, dst, pixels);
    }

private:
    RunStep m_first = nullptr;
    RunStep m_last = nullptr;
    void (*m_setOpaque)(void *, int, int) = nullptr;
    int m_alpha = 0;
};

bool IsEmpty(const KImage &image)
{
    return !image.m_bitmap || !image.m_bitmap->Data;
}

/// Whether [position, position + count) lies in [0, size), for a position inside; in 64 bits, since the sum may not
/// fit.
bool Fits(int position, int count, int size)
{
    return static_cast<qint64>(position) + count <= size;
}

bool IsInside(int position, int size)
{
    return position >= 0 && position < size;
}

/// How many of @p count pixels at @p position fit into @p size.
int Clipped(int position, int count, int size)
{
    return static_cast<int>(qMin<qint64>(static_cast<qint64>(count) + position, size) - position);
}

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
        KThrow(kInvalidParameter); // it would be written beyond the target's rows

    const Form from = FormOf(*m_bitmap), to = FormOf(*target.m_bitmap);
    if (from == to) {
        // Plain bytes, in one piece where rows follow each other without gaps.
        primitives::CopyBytes(getData(x, y), bytesPerLine(), target.getData(targetX, targetY), target.bytesPerLine(),
                              static_cast<qint64>(width) * m_bitmap->BytesPerPixel, height);
        return;
    }
    const Conversion conversion(from, to);
    for (int row = 0; row < height; ++row) {
        for (int column = 0, pixels; column < width; column += pixels) {
            pixels = qMin(kRunPixels, width - column);
            conversion.ConvertRun(getData(x + column, y + row), target.getData(targetX + column, targetY + row),
                                  pixels);
        }
    }
}

void KImage::CopyTo(KImage &target, int x, int y) const
{
    if (IsEmpty(*this))
        KThrow(kInvalidBitmap);
    if (IsEmpty(target))
        KThrow(kInvalidParameter);
    if (!IsWorkingType(type()) || !IsWorkingType(target.type()))
        KThrow(kInvalidParameter);
    if (!IsInside(x, target.width()) || !IsInside(y, target.height()))
        KThrow(kInvalidParameter);
    CropCopyTo(0, 0, Clipped(x, width(), target.width()), Clipped(y, height(), target.height()), target, x, y);
}

void KImage::Convert(KImage &target, unsigned short type, int bitsPerComponent) const
{
    if (IsEmpty(*this) || !IsWorkingType(this->type()))
        KThrow(kInvalidBitmap);
    if (&target == this)
        KThrow(kInvalidParameter); // before the pixels are given up
    target.AllocBitmap(width(), height(), type, bitsPerComponent, /*clear=*/false, nullptr, 0);
    CropCopyTo(0, 0, width(), height(), target, 0, 0);
}
