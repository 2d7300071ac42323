// Metadata of picture files, read and written by Exiv2 or read through the layer, for tests.
#pragma once

#include "Bitmaps.h"

#include <exiv2/exiv2.hpp>

/// Returns an image with the metadata of a file's bytes, which must outlive it. Throws Exiv2::AnyError.
inline Exiv2::Image::AutoPtr OpenImage(const QByteArray &file)
{
    auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte *>(file.constData()), file.size());
    image->readMetadata();
    return image;
}

/// Writes an image's metadata with Exiv2 and returns the bytes of the file.
inline QByteArray WrittenBy(Exiv2::Image &image)
{
    image.writeMetadata();
    image.io().open();
    const Exiv2::DataBuf bytes = image.io().read(static_cast<long>(image.io().size()));
    return QByteArray(reinterpret_cast<const char *>(bytes.pData_), static_cast<int>(bytes.size_));
}

/// Returns a bitmap with only the metadata of a file; null if it can't be read.
inline BitmapPtr LoadMetadata(const QString &path)
{
    GFL_BITMAP *bitmap = nullptr;
    gflLoadMetadataUTF8(path.toUtf8().constData(), &bitmap);
    return BitmapPtr(bitmap);
}
