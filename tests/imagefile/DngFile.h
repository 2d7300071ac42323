// Small TIFFs built byte by byte, and a minimal DNG: uncompressed values of a Bayer sensor, 16 bits, RGGB.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QSize>

struct SensorColor {
    double red, green, blue; // fractions of saturation, 0 to 1
};

/// Returns a little-endian classic TIFF with the given fields, one number each, and with @p pixels at byte 8.
QByteArray PlainTiff(const QMap<int, quint32> &fields, const QByteArray &pixels);

/// Returns a DNG of one uniform color. The camera's matrix is that of sRGB, so sensor and picture differ only by the
/// white balance; the camera's neutral gray is 0.5, 1, 0.75. The sensor's values start at byte 8, row by row.
/// @p preview, if not empty, has @p previewSize and is either a JPEG or plain RGB pixels. @p blocks are additional
/// fields, by tag.
QByteArray DngFile(QSize size, const SensorColor &color, const QByteArray &preview = QByteArray(),
                   QSize previewSize = QSize(), const QMap<quint16, QByteArray> &blocks = {});
