// Text tables: one row per line, cells separated by ";", comments after "#".
#pragma once

#include <QFile>
#include <QMutexLocker>
#include <QStringList>

#include <atomic>

/// Calls @p visit with the untrimmed cells of each line that isn't empty or only a comment. A file that can't be opened
/// counts as empty.
template <typename Visit> void ForEachRow(const QString &fileName, Visit visit)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    const QString text = QString::fromUtf8(file.readAll());
    for (const QStringRef &line : text.splitRef(QLatin1Char('\n'))) {
        const QStringRef row = line.left(line.indexOf(QLatin1Char('#'))); // the whole line if there is no comment
        if (!row.isEmpty())
            visit(row.split(QLatin1Char(';')));
    }
}

/// Runs @p read once for all threads that share @p done; threads that arrive while it runs wait for it.
template <typename Read> void ReadOnce(std::atomic<bool> &done, QMutex &mutex, Read read)
{
    if (done.load(std::memory_order_acquire))
        return;
    const QMutexLocker locker(&mutex);
    if (done.load(std::memory_order_relaxed))
        return; // another thread called read() while this one waited
    read();
    done.store(true, std::memory_order_release);
}
