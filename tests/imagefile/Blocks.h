// Metadata blocks as formats store them, for tests of formats that store blocks unchanged.
#pragma once

#include "Bitmaps.h"

struct Blocks {
    QByteArray icc, xmp;
    QByteArray exif; // a TIFF

    /// Returns all blocks as one string, for comparisons.
    QByteArray Text() const { return icc.toHex() + '\n' + xmp + '\n' + exif.toHex(); }
};

/// Returns the bytes of an ICC profile or XMP packet and frees it with @p release; empty for null.
template <class Data> QByteArray TakeBytes(Data *data, void (*release)(Data *))
{
    const QByteArray bytes = data ? QByteArray(reinterpret_cast<char *>(data->Data), int(data->Length)) : QByteArray();
    release(data);
    return bytes;
}

/// Returns an ICC profile made by lcms2, an XMP packet, and EXIF with only an orientation.
Blocks SomeBlocks(int orientation = 6);

/// Returns the blocks of a loaded bitmap, but with the EXIF of SomeBlocks for the bitmap's orientation; no EXIF if the
/// bitmap has no orientation.
Blocks BlocksOf(const GFL_BITMAP &bitmap);
