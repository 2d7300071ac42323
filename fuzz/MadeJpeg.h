// A small JPEG that contains given blocks of metadata.
#pragma once

#include <QByteArray>

/// Returns a gray JPEG of 8 x 8 pixels with the blocks, up to 64 KB each; empty ones are left out.
QByteArray MadeJpeg(const QByteArray &exif, const QByteArray &xmp = {});
