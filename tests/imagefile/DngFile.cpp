#include "DngFile.h"

#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

enum Type : quint16 { kByte = 1, kText = 2, kShort = 3, kLong = 4, kRational = 5, kBytes = 7, kSignedRational = 10 };

struct Field {
    quint16 tag;
    Type type;
    QByteArray bytes;
};

template <class T> QByteArray Numbers(std::initializer_list<T> values)
{
    QByteArray bytes;
    for (T value : values) {
        value = qToLittleEndian(value);
        bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
    }
    return bytes;
}

Field Short(quint16 tag, int value)
{
    return {tag, kShort, Numbers({quint16(value)})};
}

Field Long(quint16 tag, int value)
{
    return {tag, kLong, Numbers({quint32(value)})};
}

/// Appends values and directory; gives the directory's place.
quint32 AddDirectory(const QVector<Field> &fields, QByteArray *file)
{
    QByteArray directory = Numbers({quint16(fields.size())});
    for (const Field &field : fields) {
        const bool isRational = field.type == kRational || field.type == kSignedRational;
        const int typeBytes = field.type == kShort ? 2 : field.type == kLong ? 4 : isRational ? 8 : 1;
        directory += Numbers({field.tag, quint16(field.type)}) + Numbers({quint32(field.bytes.size() / typeBytes)});
        if (field.bytes.size() <= 4) {
            directory += field.bytes.leftJustified(4, '\0');
        } else {
            directory += Numbers({quint32(file->size())});
            *file += field.bytes + QByteArray(field.bytes.size() % 2, '\0');
        }
    }
    const auto at = static_cast<quint32>(file->size());
    *file += directory + Numbers({quint32(0)});
    return at;
}

QByteArray SensorValues(QSize size, const SensorColour &colour)
{
    const auto number = [](double share) { return Numbers({quint16(std::lround(share * 65535))}); };
    const QByteArray even = (number(colour.red) + number(colour.green)).repeated(size.width() / 2);
    const QByteArray odd = (number(colour.green) + number(colour.blue)).repeated(size.width() / 2);
    return (even + odd).repeated(size.height() / 2);
}

} // namespace

QByteArray DngFile(QSize size, const SensorColour &colour, const QByteArray &preview, QSize previewSize,
                   const QMap<quint16, QByteArray> &blocks)
{
    QByteArray file("II*\0\0\0\0\0", 8);
    const int pixelsAt = file.size();
    const QByteArray pixels = SensorValues(size, colour);
    file += pixels;
    const int previewAt = file.size();
    file += preview + QByteArray(preview.size() % 2, '\0');
    QVector<Field> fields = {Long(254, 0),
                             Long(256, size.width()),
                             Long(257, size.height()),
                             Short(258, 16),
                             Short(259, 1),
                             Short(262, 32803), // colour filters
                             {271, kText, QByteArray("Acme", 5)},
                             {272, kText, QByteArray("Camera 1", 9)},
                             Long(273, pixelsAt),
                             Short(274, 1),
                             Short(277, 1),
                             Long(278, size.height()),
                             Long(279, pixels.size())};
    if (!preview.isEmpty())
        fields.append(Long(330,
                           static_cast<int>(AddDirectory({Long(254, 1),
                                                          Long(256, previewSize.width()),
                                                          Long(257, previewSize.height()),
                                                          {258, kShort, Numbers<quint16>({8, 8, 8})},
                                                          Short(259, 7),
                                                          Short(262, 6),
                                                          Long(273, previewAt),
                                                          Short(277, 3),
                                                          Long(278, previewSize.height()),
                                                          Long(279, preview.size())},
                                                         &file))));
    // XYZ to linear sRGB (IEC 61966-2-1), in ten-thousandths
    QByteArray matrix;
    for (int value : {32406, -15372, -4986, -9689, 18758, 415, 557, -2040, 10570})
        matrix += Numbers<qint32>({value, 10000});
    fields += {{33421, kShort, Numbers<quint16>({2, 2})},
               {33422, kByte, QByteArray("\0\1\1\2", 4)},
               {50706, kByte, QByteArray("\1\4\0\0", 4)},
               {50708, kText, QByteArray("Acme Camera 1", 14)},
               Long(50717, 65535),
               {50721, kSignedRational, matrix},
               {50728, kRational, Numbers<quint32>({1, 2, 1, 1, 3, 4})},
               Short(50778, 21)}; // D65
    for (auto block = blocks.begin(); block != blocks.end(); ++block)
        fields.append({block.key(), kBytes, block.value()});
    std::sort(fields.begin(), fields.end(), [](const Field &a, const Field &b) { return a.tag < b.tag; });
    return file.replace(4, 4, Numbers({AddDirectory(fields, &file)}));
}
