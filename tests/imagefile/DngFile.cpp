#include "DngFile.h"
#include "TiffDirectory.h"

#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

enum Type : quint16 { kByte = 1, kText = 2, kShort = 3, kLong = 4, kRational = 5, kBytes = 7, kSignedRational = 10 };

template <class T> QByteArray Numbers(std::initializer_list<T> values)
{
    QByteArray bytes;
    for (T value : values) {
        value = qToLittleEndian(value);
        bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }
    return bytes;
}

/// Returns one field per number: of 16 bits if the number fits and the tag allows it, otherwise of 32 bits.
QVector<TiffField> Plain(const QMap<int, quint32> &values)
{
    QVector<TiffField> fields;
    for (const int tag : values.keys()) {
        const quint32 value = values[tag];
        const bool isShort = value < 65536 && tag != 254 && tag != 330;
        fields.append({quint16(tag), isShort ? kShort : kLong, isShort ? Numbers({quint16(value)}) : Numbers({value})});
    }
    return fields;
}

QByteArray SensorValues(QSize size, const SensorColor &color)
{
    const auto number = [](double share) { return Numbers({quint16(std::lround(share * 65535))}); };
    const QByteArray even = (number(color.red) + number(color.green)).repeated(size.width() / 2);
    const QByteArray odd = (number(color.green) + number(color.blue)).repeated(size.width() / 2);
    return (even + odd).repeated(size.height() / 2);
}

} // namespace

QByteArray PlainTiff(const QMap<int, quint32> &fields, const QByteArray &pixels)
{
    const auto at = quint32(8 + pixels.size());
    return QByteArray("II*\0", 4) + Numbers({at}) + pixels + TiffDirectory(Plain(fields), at, false);
}

QByteArray DngFile(QSize size, const SensorColor &color, const QByteArray &preview, QSize previewSize,
                   const QMap<quint16, QByteArray> &blocks)
{
    QByteArray file("II*\0\0\0\0\0", 8);
    const QByteArray pixels = SensorValues(size, color);
    file += pixels;
    const quint32 previewAt = quint32(file.size());
    file += preview + QByteArray(preview.size() % 2, '\0');
    // Tag 259: 7 means JPEG. Tag 262: 32803 means a color filter array, 6 YCbCr, 2 RGB. Tag 50778: 21 means D65.
    quint32 w = quint32(size.width()), h = quint32(size.height()), bytes = quint32(pixels.size());
    const QMap<int, quint32> whole = {{254, 0},     {256, w},       {257, h},   {258, 16}, {259, 1},
                                      {262, 32803}, {273, 8},       {274, 1},   {277, 1},  {278, h},
                                      {279, bytes}, {50717, 65535}, {50778, 21}};
    QVector<TiffField> fields = Plain(whole);
    if (!preview.isEmpty()) {
        w = quint32(previewSize.width()), h = quint32(previewSize.height()), bytes = quint32(preview.size());
        const bool isJpeg = preview.startsWith("\xFF\xD8");
        const QMap<int, quint32> reduced = {
            {254, 1},         {256, w}, {257, h}, {259, isJpeg ? 7 : 1}, {262, isJpeg ? 6 : 2},
            {273, previewAt}, {277, 3}, {278, h}, {279, bytes}};
        QVector<TiffField> small = Plain(reduced);
        small.insert(3, {258, kShort, Numbers<quint16>({8, 8, 8})});
        fields += Plain({{330, quint32(file.size())}});
        file += TiffDirectory(small, quint32(file.size()), false);
    }
    // XYZ to linear sRGB (IEC 61966-2-1), in ten-thousandths
    QByteArray matrix;
    for (int value : {32406, -15372, -4986, -9689, 18758, 415, 557, -2040, 10570})
        matrix += Numbers<qint32>({value, 10000});
    fields += {{271, kText, QByteArray("Acme", 5)},       {272, kText, QByteArray("Camera 1", 9)},
               {33421, kShort, Numbers<quint16>({2, 2})}, {33422, kByte, QByteArray("\0\1\1\2", 4)},
               {50706, kByte, QByteArray("\1\4\0\0", 4)}, {50708, kText, QByteArray("Acme Camera 1", 14)},
               {50721, kSignedRational, matrix},          {50728, kRational, Numbers<quint32>({1, 2, 1, 1, 3, 4})}};
    for (auto block = blocks.begin(); block != blocks.end(); ++block)
        fields.append({block.key(), kBytes, block.value()});
    std::sort(fields.begin(), fields.end(), [](const TiffField &a, const TiffField &b) { return a.tag < b.tag; });
    file.replace(4, 4, Numbers({quint32(file.size())}));
    return file + TiffDirectory(fields, quint32(file.size()), false);
}
