// Pictures in few colours, so that their files stay small.
#pragma once

#include <QImage>

/// The picture in 256 colours chosen for it, by the colour quantizer of libjpeg.
QImage WithPalette(const QImage &sheet);
