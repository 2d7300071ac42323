#include "Blocks.h"

#include <lcms2.h>

namespace {

/// Returns the same profile on each call; new ones would differ, because lcms2 stores the creation time.
QByteArray SomeProfile()
{
    static const QByteArray made = ProfileBytes(cmsCreate_sRGBProfile());
    return made;
}

} // namespace

Blocks SomeBlocks(int orientation)
{
    Blocks blocks;
    blocks.xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
                 "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"/></x:xmpmeta>";
    // Byte order, 42, offset of the directory; one entry: tag 274, type 3, count 1; no next directory.
    blocks.exif = QByteArray("II*\0\x8\0\0\0\x1\0\x12\x1\x3\0\x1\0\0\0", 18) + char(orientation) + QByteArray(7, '\0');
    blocks.icc = SomeProfile();
    return blocks;
}

Blocks BlocksOf(const GFL_BITMAP &bitmap)
{
    Blocks blocks;
    blocks.icc = TakeBytes(gflBitmapGetICCProfileEx(&bitmap), gflFreeICCProfile);
    blocks.xmp = TakeBytes(gflBitmapGetXMPEx(&bitmap), gflFreeXMP);
    if (GFL_EXIF_DATAEX *exif = gflBitmapGetEXIF2(&bitmap)) {
        for (const GFL_EXIF_ENTRYEX *entry = exif->Root; entry; entry = entry->Next)
            if (entry->Tag == 274 && entry->Data)
                blocks.exif = SomeBlocks(entry->Data[0]).exif;
        gflFreeEXIF2(exif);
    }
    return blocks;
}
