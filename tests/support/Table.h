// Reads the tables of test cases in .tsv files.
#pragma once

#include <QFile>
#include <QStringList>
#include <QVector>

/// Returns the rows of a file: cells separated by tabs; "-" is an empty cell, "\\n" a line break. Lines that begin with
/// "#" are comments. A file that can't be read or has no rows ends the test.
inline QVector<QStringList> ReadTable(const QString &path)
{
    QVector<QStringList> rows;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("can't open %s", qPrintable(path));
    const QString text = QString::fromUtf8(file.readAll());
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QStringList cells = line.split(QLatin1Char('\t'));
        for (QString &cell : cells)
            cell = cell == QLatin1String("-") ? QString() : cell.replace(QLatin1String("\\n"), QLatin1String("\n"));
        if (!line.startsWith(QLatin1Char('#')))
            rows.append(cells);
    }
    if (rows.isEmpty())
        qFatal("%s has no rows", qPrintable(path));
    return rows;
}
