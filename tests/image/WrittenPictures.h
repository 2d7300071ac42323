// Small picture files for tests of file descriptions and of the image cache.
#pragma once

#include "Bitmaps.h"
#include "Files.h"
#include "ImageDatas.h"
#include "KImageLoader.h"

#include <QTemporaryDir>

/// Writes random pixels, or a ramp for JPEG. Returns @p path; empty if the write failed.
inline QString WritePicture(const QString &path, const char *format, int width, int height, int type = GFL_RGB,
                            int bits = 8)
{
    const bool isJpeg = qstrcmp(format, "jpeg") == 0;
    const BitmapPtr bitmap = isJpeg ? SmoothBitmap(width, height, type, bits) : RandomBitmap(width, height, type, bits);
    const GFL_SAVE_PARAMS params = SaveParams(format);
    return gflSaveBitmapUTF8(path.toUtf8().constData(), bitmap.get(), &params) == GFL_NO_ERROR ? path : QString();
}

/// Returns the known image of a path, or describes the file without a thumbnail; null if it isn't a picture.
inline ImageDef *Picture(const QString &path)
{
    ImageDef *image = nullptr;
    ImageDef::IsAPicture(path, image, /*withThumbnail=*/false);
    return image;
}
