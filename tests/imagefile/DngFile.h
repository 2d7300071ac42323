// Small TIFFs put together byte by byte, and a minimal DNG: uncompressed values of a Bayer sensor, 16 bits, RGGB.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QSize>

struct SensorColour {
    double red, green, blue; // 0 to 1 of saturation
};

/// A little-endian classic TIFF of the fields given, each of one number, with @p pixels at byte 8.
QByteArray PlainTiff(const QMap<int, quint32> &fields, const QByteArray &pixels);

/// A plain field of one colour. The camera's matrix is that of sRGB, so that nothing but balance stands between sensor
/// and picture; its neutral grey is 0.5, 1, 0.75. @p preview, if not empty, is a JPEG of @p previewSize. @p blocks are
/// further fields of bytes.
QByteArray DngFile(QSize size, const SensorColour &colour, const QByteArray &preview = QByteArray(),
                   QSize previewSize = QSize(), const QMap<quint16, QByteArray> &blocks = {});
