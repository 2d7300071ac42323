// Pictures with few colors, so that their files are small.
#pragma once

#include <QImage>

/// Returns the picture in 256 adaptive colors, chosen by libjpeg's color quantizer.
QImage WithPalette(const QImage &sheet);
