// TIFF directories built byte by byte.
#pragma once

#include <QByteArray>
#include <QVector>

inline QByteArray TiffNumber(quint32 number, int bytes, bool isBigEndian)
{
    QByteArray result;
    for (int i = 0; i < bytes; ++i)
        result.append(static_cast<char>(number >> 8 * (isBigEndian ? bytes - 1 - i : i)));
    return result;
}

struct TiffField {
    quint16 tag, type;
    QByteArray value; // as stored in the file
};

/// Returns a directory that begins @p at bytes from the base of its offsets, followed by its values.
inline QByteArray TiffDirectory(const QVector<TiffField> &fields, quint32 at, bool big)
{
    QByteArray directory = TiffNumber(quint32(fields.size()), 2, big), values;
    for (const TiffField &field : fields) {
        const int each = field.type == 5 || field.type == 10 ? 8 : field.type == 4 ? 4 : field.type == 3 ? 2 : 1;
        const quint32 valueAt = at + 2 + 12 * quint32(fields.size()) + 4 + quint32(values.size());
        const bool fits = field.value.size() <= 4;
        directory += TiffNumber(field.tag, 2, big) + TiffNumber(field.type, 2, big)
            + TiffNumber(quint32(field.value.size() / each), 4, big)
            + (fits ? field.value.leftJustified(4, '\0') : TiffNumber(valueAt, 4, big));
        if (!fits)
            values += field.value + QByteArray(field.value.size() % 2, '\0');
    }
    return directory + TiffNumber(0, 4, big) + values;
}
