#include "KImage.h"

#include "ConversionTables_p.h"
#include "KImage_p.h"

namespace {

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
