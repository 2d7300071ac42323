// The log shared by a host and its plug-ins: lines go to listeners and, on request, to a file.
#pragma once

#include <QFile>
#include <QMutex>
#include <QObject>
#include <QTextStream>

/// The process's log. Any thread may log; a mutex keeps lines from mixing. The mutex is held while signals are emitted
/// and is not recursive, so a directly connected slot that logs again deadlocks: use a queued connection for such a
/// listener.
class KLog : public QObject {
    Q_OBJECT
public:
    /// Makes @p instance the process's log; null creates one. exit() deletes it in both cases.
    static void init(KLog *instance);
    static void exit();
    static KLog *ms_instance;

    KLog();
    ~KLog() override;

    /// Logs one line, without time or level. Listeners receive the text; the file, if enabled, also gets a carriage
    /// return and a line feed. Only listeners receive @p id.
    void Log(const QString &text);
    void Log(int id, const QString &text);
    void Log(const char *format, ...) __attribute__((format(printf, 2, 3)));
    void Log(int id, const char *format, ...) __attribute__((format(printf, 3, 4)));

    /// Starts logging to a file; main thread only. If the file can't be opened, shows a message box, or prints a Qt
    /// warning if there is no QApplication. Logging then remains enabled, and listeners still receive the lines.
    void EnableLogToFile(const QString &fileName, bool append);
    void DisableLogToFile();
    /// Empties the file.
    void Clear();

Q_SIGNALS:
    void Logged(int id, const QString &log);
    void Logged(const QString &log);

private:
    void WriteLine(const QString &text); // call with m_mutex held

    QMutex m_mutex;
    QFile m_file;
    QTextStream m_stream; // declared after m_file, because the stream's destructor flushes into the file
    bool m_logToFile = false;
    int m_depth = 0; // number of " | " marks before each line
};
