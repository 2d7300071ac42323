#include "KImage.h"

#include "KImage_p.h"
#include "ippi.h"

#include <QImage>
#include <QPixmap>

namespace {

/// Channel order that converts the bytes B, G, R, A of a QImage pixel to R, G, B, A, and back.
constexpr int kSwapRedAndBlue[] = {2, 1, 0, 3};

} // namespace

KImage::KImage(const QImage &image) : KImage()
{
    FromQImage(image);
}

void KImage::FromQImage(const QImage &image)
{
    if (image.format() != QImage::Format_RGB32 && image.format() != QImage::Format_ARGB32)
        KThrow(kInvalidParameter);
    AllocBitmap(image.width(), image.height(), GFL_RGBA, 8, /*clear=*/false, nullptr, 0);
    primitives::SwapChannels<Ipp8u, 4, 4>(image.constBits(), image.bytesPerLine(), getData(0, 0), bytesPerLine(),
                                          {width(), height()}, kSwapRedAndBlue);
}

void KImage::ToQImage(QImage &image)
{
    if (IsEmpty(*this))
        return;
    image = QImage(width(), height(), QImage::Format_ARGB32);
    if (image.isNull())
        return;
    uchar *bits = image.bits();
    KImage wrapped(width(), height(), GFL_RGBA, 8, /*clear=*/false, bits, image.bytesPerLine());
    Convert(wrapped, GFL_RGBA, 8); // fills bits, because a target of this size and form keeps its block
    ippiSwapChannels_8u_C4IR(bits, image.bytesPerLine(), {width(), height()}, kSwapRedAndBlue);
}

void KImage::ToQPixmap(QPixmap &pixmap)
{
    QImage image;
    ToQImage(image);
    pixmap = QPixmap::fromImage(image);
}
