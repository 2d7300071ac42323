// Small TIFFs built byte by byte, and a minimal DNG: uncompressed values of a Bayer sensor, 16 bits, RGGB.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QSize>

struct SensorColor {
    double red, green, blue; // 0 to 1 of saturation
};

/// Returns a little-endian classic TIFF of the given fields, each of one number, with @p pixels at byte 8.
QByteArray PlainTiff(const QMap<int, quint32> &fields, const QByteArray &pixels);

/// Returns a uniform field of one color. The camera's matrix is that of sRGB, so only the balance separates sensor and
/// picture; its neutral gray is 0.5, 1, 0.75. The sensor's values start at byte 8, row by row. @p preview, if not
/// empty, is a JPEG of @p previewSize or its RGB pixels. @p blocks are additional byte fields.
QByteArray DngFile(QSize size, const SensorColor &color, const QByteArray &preview = QByteArray(),
                   QSize previewSize = QSize(), const QMap<quint16, QByteArray> &blocks = {});
