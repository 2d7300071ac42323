// The log that a host and its plug-ins share: lines to listeners and, when asked, to a file.
#pragma once

#include <QFile>
#include <QMutex>
#include <QObject>
#include <QTextStream>

/// Any thread may log: a mutex keeps each line whole. The mutex is held while the signals are emitted and is not
/// recursive, so a directly connected slot that logs again deadlocks; connect such a listener queued.
class KLog : public QObject {
    Q_OBJECT
public:
    /// Makes @p instance the process's log, or a new one for null. Either way exit() deletes it.
    static void init(KLog *instance);
    static void exit();
    static KLog *ms_instance;

    KLog();
    ~KLog() override;

    /// One line: the text, carriage return and line feed, no time and no level. Listeners get it, the file too if
    /// logging to it is on; @p id goes to listeners only.
    void Log(const QString &text);
    void Log(int id, const QString &text);
    void Log(const char *format, ...) __attribute__((format(printf, 2, 3)));
    void Log(int id, const char *format, ...) __attribute__((format(printf, 3, 4)));

    /// Main thread only. Reports a file that can't be opened in a message box, or as a Qt warning in a program without
    /// QApplication. Logging then counts as on all the same, and its lines reach the listeners.
    void EnableLogToFile(const QString &fileName, bool append);
    void DisableLogToFile();
    /// Empties the file.
    void Clear();

Q_SIGNALS:
    void Logged(int id, const QString &log);
    void Logged(const QString &log);

private:
    void WriteLine(const QString &text); // with m_mutex held

    QMutex m_mutex;
    QFile m_file;
    QTextStream m_stream; // behind m_file: it flushes into it when destroyed
    bool m_logToFile = false;
    int m_depth = 0; // " | " marks ahead of each line
};
