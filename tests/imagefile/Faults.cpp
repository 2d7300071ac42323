// Damaged files made from good ones by the edits in faults.tsv.
#include "Bitmaps.h"
#include "Files.h"

namespace {

QByteArray BytesOf(const QByteArray &cell)
{
    const int times = cell.indexOf('#');
    const QByteArray text = cell.mid(0, times);
    const QByteArray bytes =
        text.startsWith('\'') ? text.mid(1).replace('_', ' ').replace('|', '\n') : QByteArray::fromHex(text);
    return bytes.repeated(times < 0 ? 1 : cell.mid(times + 1).toInt());
}

int PlaceOf(const QByteArray &place, const QByteArray &file)
{
    const int plus = place.indexOf('+'), isLast = place.startsWith('$') ? 1 : 0;
    const QByteArray mark = BytesOf(place.mid(isLast, plus - isLast));
    return (isLast != 0 ? file.lastIndexOf(mark) : file.indexOf(mark)) + place.mid(plus + 1).toInt();
}

QByteArray Edited(QByteArray file, const QByteArray &edit)
{
    if (edit.startsWith('>'))
        return file + BytesOf(edit.mid(1));
    if (edit.startsWith('-')) {
        const int comma = edit.indexOf(','), place = PlaceOf(edit.mid(1, comma - 1), file);
        return file.remove(place, PlaceOf(edit.mid(comma + 1), file) - place);
    }
    if (edit.startsWith('<'))
        return file.left(PlaceOf(edit.mid(1), file));
    const int sign = std::max(edit.indexOf('='), edit.indexOf('^')), place = PlaceOf(edit.left(sign), file);
    const QByteArray bytes = BytesOf(edit.mid(sign + 1));
    return edit[sign] == '=' ? file.replace(place, bytes.size(), bytes) : file.insert(place, bytes);
}

} // namespace

QString BadFault(const QByteArray &kind, const QByteArray &good)
{
    int rows = 0;
    for (const QByteArray &line : ReadFile(QStringLiteral(VITRELUX_FAULTS)).split('\n')) {
        const QByteArrayList cells = line.split('\t'); // kind, edits, error, text
        if (cells.size() != 4 || cells[0] != kind)
            continue;
        ++rows;
        QByteArray file = good;
        for (const QByteArray &edit : cells[1].split(' '))
            file = Edited(file, edit);
        int error = 0;
        if (LoadFromMemory(file, &error) || error != cells[2].toInt()
            || !QByteArray(gflLastErrorText()).contains(cells[3]))
            return QString::asprintf("%s: error %d, %s", line.constData(), error, gflLastErrorText());
    }
    return rows > 0 ? QString() : QStringLiteral("no rows");
}
