// A small JPEG with given blocks of metadata.
#pragma once

#include <QByteArray>

/// Returns a gray JPEG of 8 x 8 pixels with the given blocks. Empty blocks are left out; blocks that don't fit into a
/// segment (64 KB) are truncated.
QByteArray MadeJpeg(const QByteArray &exif, const QByteArray &xmp = {});
