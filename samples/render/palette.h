// Pictures with few colors, so that their files are small.
#pragma once

#include <QImage>

/// The picture in 256 colors chosen for it, by the color quantizer of libjpeg.
QImage WithPalette(const QImage &sheet);
