#include "MadeJpeg.h"

#include "KImage.h"
#include "Target.h"

#include <cstdlib>

namespace {

QByteArray Bare()
{
    const KImage image(8, 8, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
    unsigned char *file = nullptr;
    unsigned int size = 0;
    KImage(image).WriteIntoMemory(&file, &size, QStringLiteral("jpeg"), -1);
    const QByteArray jpeg = AsBytes(file, size);
    std::free(file);
    return jpeg;
}

/// Returns an APP1 segment with @p block after the identifier @p mark; empty for an empty block.
QByteArray Segment(const QByteArray &mark, const QByteArray &block)
{
    if (block.isEmpty())
        return {};
    const QByteArray payload = mark + block.left(65533 - mark.size());
    const int length = payload.size() + 2;
    return QByteArray("\xFF\xE1") + static_cast<char>(length >> 8) + static_cast<char>(length & 255) + payload;
}

} // namespace

QByteArray MadeJpeg(const QByteArray &exif, const QByteArray &xmp)
{
    StartKernel();
    static const QByteArray bare = Bare();
    const QByteArray segments =
        Segment(QByteArray("Exif\0\0", 6), exif) + Segment(QByteArray("http://ns.adobe.com/xap/1.0/\0", 29), xmp);
    return QByteArray(bare).insert(2, segments);
}
